// The login of dvnbt on both databases: who may replace a repository.
#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "repositorydb.h"
#include "staffrows.h"
#include "testenv.h"

namespace {

// dvnbt with a terminal of its own on standard input and output, as a person
// at a keyboard would run it: once the password prompt shows, `typed` is
// written to the terminal.
struct TerminalRun {
    int status = -1;            // exit status, or 128 + the signal
    std::string screen;         // everything the terminal showed
    bool echoWhilePrompting = true;
    bool echoAfterwards = false;
};

TerminalRun RunOnTerminal(const std::vector<std::string>& args, const std::vector<std::string>& env,
                          const std::string& typed) {
    TerminalRun run;
    int master = -1, slave = -1;
    if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) {
        ADD_FAILURE() << "no terminal";
        return run;
    }
    pid_t pid = fork();
    if (pid == 0) {
        setsid();
        ioctl(slave, TIOCSCTTY, 0);
        dup2(slave, 0);
        dup2(slave, 1);
        dup2(slave, 2);
        close(master);
        for (const std::string& e : env) putenv(const_cast<char*>(e.c_str()));
        unsetenv("DVNBT_PASSWORD");
        std::string program = std::string(DVN_BINARY_DIR) + "/tools/dvnbt/dvnbt";
        std::vector<char*> argv{program.data()};
        for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    // The parent keeps the terminal open, to read its settings after the end.
    auto readSome = [&](int timeoutMs) {
        pollfd p{master, POLLIN, 0};
        if (poll(&p, 1, timeoutMs) <= 0) return false;
        char buf[512];
        ssize_t n = read(master, buf, sizeof buf);
        if (n <= 0) return false;
        run.screen.append(buf, static_cast<size_t>(n));
        return true;
    };
    while (run.screen.find("Password for") == std::string::npos && readSome(20000)) {
    }
    usleep(100 * 1000);  // the prompt is written before the echo goes off
    termios t{};
    tcgetattr(slave, &t);
    run.echoWhilePrompting = (t.c_lflag & ECHO) != 0;
    if (write(master, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) ADD_FAILURE() << "write";
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) readSome(100);
    while (readSome(0)) {
    }
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    tcgetattr(slave, &t);
    run.echoAfterwards = (t.c_lflag & ECHO) != 0;
    close(master);
    close(slave);
    return run;
}

class DvnbtLogin : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystemGroup(Db(), "G2", "OTHER_GRP");
    }
    // dvnbt on this test's database, then the given arguments.
    CliResult Run(std::vector<std::string> args, const std::vector<std::string>& env = {}) {
        std::vector<std::string> all = IsPostgres() ? std::vector<std::string>{"--dsn", DataSource()}
                                                    : std::vector<std::string>{"--db", DbFile()};
        all.insert(all.end(), args.begin(), args.end());
        return RunDvnbt(all, env);
    }
    // A TRX file of two categories, kept for the test.
    std::string CategoryFile() {
        std::string path = (std::filesystem::temp_directory_path() / ("dvnbt_login_" + std::to_string(getpid()) + ".trx")).string();
        std::ofstream(path) << "Category \"Claims\" {}\nCategory \"Loans\" {}\n";
        return path;
    }
    std::string Count(const char* table) { return QueryValue(Db(), "SELECT COUNT(*) FROM " + prefix.str() + table); }
    std::string Persons() { return QueryValue(Db(), "SELECT COUNT(*) FROM " + prefix.str() + "PERSON"); }
    void AddAdministrator(const char* id, const char* userId, const char* groupId, const char* password) {
        AddRole(Db(), "R_" + std::string(id), "System administrator");
        AddPerson(Db(), {.id = id, .userId = userId, .systemGroup = groupId, .password = password});
        AddRelation(Db(), "ROLE_INCL_PERSON", "R_" + std::string(id), id);
    }
};

TEST_P(DvnbtLogin, ReplacingARepositoryWithUsersNeedsAnAdministratorsLogin) {
    AddAdministrator("P1", "ANNA", "G2", "anna-pw");
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "boris-pw", .staff = 1});
    struct Refused {
        std::vector<std::string> args, env;
        const char* why;
    };
    for (const Refused& r : std::vector<Refused>{
             {{"init", "--recreate"}, {}, "no user given"},
             {{"init", "--recreate"}, {"DVNBT_USER=anna"}, "no password for ANNA"},
             {{"--user", "anna", "--system-group", "OTHER_GRP", "init", "--recreate"}, {"DVNBT_PASSWORD=wrong"},
              "login refused: unknown user ANNA"},
             {{"--user", "nobody", "--system-group", "OTHER_GRP", "init", "--recreate"}, {"DVNBT_PASSWORD=anna-pw"},
              "login refused"},
             // The right password in the default group, where ANNA is not.
             {{"--user", "anna", "init", "--recreate"}, {"DVNBT_PASSWORD=anna-pw"}, "in system group SYS_GRP"},
             {{"--user", "boris", "init", "--recreate"}, {"DVNBT_PASSWORD=boris-pw"},
              "needs a system administrator"},
         }) {
        CliResult result = Run(r.args, r.env);
        EXPECT_EQ(result.status, 1) << r.why;
        EXPECT_NE(result.err.find(r.why), std::string::npos) << result.err;
        EXPECT_EQ(Persons(), "2") << r.why;  // nothing was touched
    }

    // The user from the environment, the group from the machine profile.
    ProfileFile profile("current = Work\n[Work]\nSystemGroup = OTHER_GRP\n");
    CliResult done = Run({"init", "--recreate"}, {"DVNBT_USER=Anna", "DVNBT_PASSWORD=anna-pw"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Persons(), "0");
}

TEST_P(DvnbtLogin, ARepositoryWithoutPersonsNeedsNoLoginToBeReplaced) {
    CliResult done = Run({"init", "--recreate"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Persons(), "0");
}

TEST_P(DvnbtLogin, AnImportRunsUnderTheLoggedInUsersRights) {
    const std::string file = CategoryFile();
    AddPerson(Db(), {.id = "P1", .userId = "MODELLER", .systemGroup = "G1", .password = "m", .processModeling = 1});
    // A wrong password or an unknown user changes nothing.
    for (const char* user : {"DVNBT_USER=modeller", "DVNBT_USER=stranger"}) {
        CliResult wrong = Run({"import", "--initial-load", file}, {user, "DVNBT_PASSWORD=wrong"});
        EXPECT_EQ(wrong.status, 1) << user;
        EXPECT_NE(wrong.err.find("login refused"), std::string::npos) << wrong.err;
        EXPECT_TRUE(wrong.out.empty()) << wrong.out;
        EXPECT_EQ(Count("CATEGORY"), "0");
        EXPECT_EQ(Count("VERSION"), "0");
    }
    // The right password: the modelling right stores the categories, but an
    // initial load on a repository with users is an administrator's.
    const std::vector<std::string> modeller = {"DVNBT_USER=modeller", "DVNBT_PASSWORD=m"};
    CliResult notAdmin = Run({"import", "--initial-load", file}, modeller);
    EXPECT_EQ(notAdmin.status, 1);
    EXPECT_NE(notAdmin.err.find("MODELLER is not one"), std::string::npos) << notAdmin.err;
    EXPECT_EQ(Count("VERSION"), "0");
    CliResult stored = Run({"import", file}, modeller);
    EXPECT_EQ(stored.status, 0) << stored.err;
    EXPECT_EQ(Count("CATEGORY"), "2");
    std::filesystem::remove(file);
}

// On a terminal the password is asked for without echo; the echo comes back
// after the answer and also when the person interrupts the prompt.
TEST_P(DvnbtLogin, ThePasswordPromptHidesWhatIsTypedAndAlwaysRestoresTheEcho) {
    AddAdministrator("P1", "ANNA", "G1", "anna-pw");
    std::vector<std::string> args = IsPostgres() ? std::vector<std::string>{"--dsn", DataSource()}
                                                 : std::vector<std::string>{"--db", DbFile()};
    args.insert(args.end(), {"--user", "anna", "init", "--recreate"});

    TerminalRun interrupted = RunOnTerminal(args, {}, "\x03");
    EXPECT_FALSE(interrupted.echoWhilePrompting);
    EXPECT_EQ(interrupted.status, 128 + SIGINT) << interrupted.screen;
    EXPECT_TRUE(interrupted.echoAfterwards);
    EXPECT_EQ(Persons(), "1");

    TerminalRun answered = RunOnTerminal(args, {}, "anna-pw\n");
    EXPECT_FALSE(answered.echoWhilePrompting);
    EXPECT_EQ(answered.status, 0) << answered.screen;
    EXPECT_NE(answered.screen.find("Password for ANNA"), std::string::npos) << answered.screen;
    EXPECT_EQ(answered.screen.find("anna-pw"), std::string::npos) << answered.screen;
    EXPECT_TRUE(answered.echoAfterwards);
    EXPECT_EQ(Persons(), "0");
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtLogin);
