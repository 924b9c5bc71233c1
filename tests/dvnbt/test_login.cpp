// The login of dvnbt on both databases: who may replace or load a
// repository; and a team file as the initial load of a fresh repository,
// whose persons become the users, each logging in with the password of the
// file and working under its own rights.
#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "dvnfcorn.h"
#include "importtest.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

// dvnbt on a terminal of its own, as a person at a keyboard runs it: once the
// password prompt shows, `typed` is written to the terminal. The master side
// reports the terminal's settings when the prompt shows and after the end.
struct TerminalRun {
    int status = -1;     // exit status, or 128 + the signal
    std::string screen;  // everything the terminal showed
    bool echoWhilePrompting = true, echoAfterwards = false;
};

TerminalRun RunOnTerminal(std::vector<std::string> args, const std::string& typed) {
    TerminalRun run;
    int master = -1;
    pid_t pid = forkpty(&master, nullptr, nullptr, nullptr);
    if (pid == 0) {
        unsetenv("DVNBT_PASSWORD");
        std::string program = std::string(DVN_BINARY_DIR) + "/tools/dvnbt/dvnbt";
        std::vector<char*> argv{program.data()};
        for (std::string& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    auto echo = [&] {
        termios t{};
        return tcgetattr(master, &t) == 0 && (t.c_lflag & ECHO) != 0;
    };
    auto readSome = [&](int timeoutMs) {
        pollfd p{master, POLLIN, 0};
        char buf[512];
        ssize_t n = poll(&p, 1, timeoutMs) > 0 ? read(master, buf, sizeof buf) : 0;
        if (n > 0) run.screen.append(buf, static_cast<size_t>(n));
        return n > 0;
    };
    while (run.screen.find("Password for") == std::string::npos && readSome(20000)) {
    }
    run.echoWhilePrompting = echo();
    EXPECT_EQ(write(master, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) readSome(100);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    run.echoAfterwards = echo();
    close(master);
    return run;
}

// ANNA administers in OTHER_GRP; BORIS and Jürgen model in SYS_GRP, the default group.
class DvnbtLogin : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystemGroup(Db(), "G2", "OTHER_GRP");
        AddRole(Db(), "R1", "System administrator");
        AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G2", .password = "anna-pw"});
        AddRelation(Db(), "ROLE_INCL_PERSON", "R1", "P1");
        AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "boris-pw",
                         .processModeling = 1});
        // Jürgen, stored as the store folds his name.
        AddPerson(Db(), {.id = "P3", .userId = "J\xC3\xBCRGEN", .systemGroup = "G1", .password = "j-pw",
                         .processModeling = 1});
    }
    std::string Count(const char* table) { return QueryValue(Db(), "SELECT COUNT(*) FROM DVBT." + std::string(table)); }
};

TEST_P(DvnbtLogin, OnlyAValidLoginOfTheRightKindChangesARepositoryWithUsers) {
    TrxFiles files;
    const std::string file = files.Write("Category \"Claims\" {}\n");
    const std::vector<std::string> recreate{"init", "--recreate"};
    struct Refused {
        std::vector<std::string> args, env;
        const char* why;
    };
    for (const Refused& r : std::vector<Refused>{
             {recreate, {}, "no user given"},
             {recreate, {"DVNBT_USER=anna"}, "no password for ANNA"},
             {{"--user", "anna", "--system-group", "OTHER_GRP", "init", "--recreate"}, {"DVNBT_PASSWORD=wrong"},
              "login refused: unknown user ANNA"},
             // An unknown user; quotes stay text.
             {{"--user", "x' OR 'x'='x", "init", "--recreate"}, {"DVNBT_PASSWORD=x' OR 'x'='x"}, "login refused"},
             // The right password in the default group, where ANNA is not.
             {{"--user", "anna", "init", "--recreate"}, {"DVNBT_PASSWORD=anna-pw"}, "in system group SYS_GRP"},
             {{"--user", "boris", "init", "--recreate"}, {"DVNBT_PASSWORD=boris-pw"}, "needs a system administrator"},
             {{"--user", "boris", "import", "--initial-load", file}, {"DVNBT_PASSWORD=boris-pw"}, "BORIS is not one"},
             // Letters a-z fold in any case, a letter outside ASCII only as the
             // person's name has it (the README tells why); jürgen logs in:
             // DvnbtTeam.
             {{"--user", "J\xC3\x9CRGEN", "import", file}, {"DVNBT_PASSWORD=j-pw"},
              "login refused: unknown user J\xC3\x9CRGEN"},
         }) {
        CliResult result = RunDvnbt(DvnbtArgs(r.args), r.env);
        EXPECT_EQ(result.status, 1) << r.why;
        EXPECT_NE(result.err.find(r.why), std::string::npos) << result.err;
        EXPECT_TRUE(result.out.empty()) << result.out;
        // Nothing was touched.
        EXPECT_EQ(Count("PERSON"), "3") << r.why;
        EXPECT_EQ(Count("CATEGORY") + Count("VERSION"), "00") << r.why;
    }

    // The user from the environment, the group from the machine profile.
    ProfileFile profile("current = Work\n[Work]\nSystemGroup = OTHER_GRP\n");
    CliResult done = RunDvnbt(DvnbtArgs(recreate), {"DVNBT_USER=Anna", "DVNBT_PASSWORD=anna-pw"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Count("PERSON"), "0");
}

// On a terminal the password is asked for without echo; the echo comes back
// after the answer and also when the person interrupts the prompt.
TEST_P(DvnbtLogin, ThePasswordPromptHidesWhatIsTypedAndAlwaysRestoresTheEcho) {
    const std::vector<std::string> args = DvnbtArgs({"--user", "anna", "--system-group", "OTHER_GRP", "init", "--recreate"});

    TerminalRun interrupted = RunOnTerminal(args, "\x03");
    EXPECT_FALSE(interrupted.echoWhilePrompting);
    EXPECT_EQ(interrupted.status, 128 + SIGINT) << interrupted.screen;
    EXPECT_TRUE(interrupted.echoAfterwards);
    EXPECT_EQ(Count("PERSON"), "3");

    TerminalRun answered = RunOnTerminal(args, "anna-pw\n");
    EXPECT_FALSE(answered.echoWhilePrompting);
    EXPECT_EQ(answered.status, 0) << answered.screen;
    EXPECT_NE(answered.screen.find("Password for ANNA"), std::string::npos) << answered.screen;
    EXPECT_EQ(answered.screen.find("anna-pw"), std::string::npos) << answered.screen;
    EXPECT_TRUE(answered.echoAfterwards);
    EXPECT_EQ(Count("PERSON"), "0");
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtLogin);

class DvnbtTeam : public DvnbtImportTest {
protected:
    // dvnbt import, logged in as user with password when user is given.
    CliResult Import(Lines args, const std::string& user = "", const std::string& password = "") {
        args.insert(args.begin(), "import");
        return Run(args, user, password);
    }
    // Whether the refusal of the kind, as dvnbt prints it, is on standard error.
    static bool Refused(const CliResult& r, long number, const char* kind) {
        return r.err.find(DvnfMessageHandler::Format(number, DvnString(kind)).str() + "\n") != std::string::npos;
    }
};

TEST_P(DvnbtTeam, ThePersonsOfTheInitialLoadLogInWithTheirPasswordsAndRights) {
    // The topology that the persons name comes first, as it is stored.
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    const std::string team = files.Write(
        "Level \"1\" { Name = \"Clerk\"; }\n"
        "Person \"admin\" { Password = \"s3cret\"; AuthorizedForStaff = true; "
        "PersonHasRole -> \"System administrator\"; }\n"
        "Person \"clerk\" { Password = \"clerk-pw\"; AuthorizedForStaff = true; }\n"
        "Person \"j\\xC3\\xBCrgen\" { Password = \"j-pw\"; AuthorizedForProcessModeling = true; }\n"
        "Role \"System administrator\" {}\n");
    CliResult load = Import({"--initial-load", team});
    ASSERT_EQ(load.status, 0) << load.err;
    // No password is stored in clear.
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PERSON WHERE PASSWORD NOT LIKE 'pbkdf2-sha256$%'"), "0");

    // The administrator may load again; a clerk may not.
    EXPECT_EQ(Import({"--initial-load", team}, "admin", "s3cret").status, 0);
    CliResult clerkLoad = Import({"--initial-load", team}, "clerk", "clerk-pw");
    EXPECT_NE(clerkLoad.status, 0);
    EXPECT_NE(clerkLoad.err.find("CLERK is not one"), std::string::npos) << clerkLoad.err;
    CliResult wrong = Import({team}, "clerk", "s3cret");
    EXPECT_NE(wrong.err.find("login refused"), std::string::npos) << wrong.err;

    // Each works under the rights of the file: the clerk may define staff
    // but no categories, Jürgen (a name beyond ASCII) the other way round.
    const std::string category = files.Write("Category \"Sales\" {}\n");
    CliResult clerk = Import({category}, "clerk", "clerk-pw");
    EXPECT_EQ(clerk.status, 3) << clerk.err;
    EXPECT_TRUE(Refused(clerk, 51165, "Category")) << clerk.err;
    CliResult juergen = Import({category}, "j\xC3\xBCrgen", "j-pw");
    EXPECT_EQ(juergen.status, 0) << juergen.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "1");
    EXPECT_TRUE(Refused(Import({files.Write("Level \"2\" {}\n")}, "j\xC3\xBC" "rgen", "j-pw"), 51166, "Level"));

    // A re-import without a password resets it to the default.
    EXPECT_EQ(Import({files.Write("Person \"clerk\" { AuthorizedForStaff = true; }\n")}, "clerk", "clerk-pw").status,
              0);
    EXPECT_TRUE(Refused(Import({category}, "clerk", "marmoset"), 51165, "Category"));
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtTeam);

}  // namespace
