// The dvnbt program: options, exit statuses, ping and init on both databases,
// and no database password in what it prints or traces.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include "dvnfcorn.h"
#include "dvnschema.h"
#include "repositorydb.h"
#include "testdb.h"
#include "testenv.h"

namespace {

TEST(Dvnbt, HelpAndEveryUsageErrorEndsWithTheHint) {
    CliResult help = RunDvnbt({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("usage: dvnbt"), std::string::npos);
    EXPECT_EQ(RunDvnbt({"import", "--help"}).out, help.out);

    // The program's own and each command's own; nothing is opened for any.
    for (auto args : std::vector<std::vector<std::string>>{
             {}, {"--bogus", "ping"}, {"frobnicate"}, {"--db", "a.db", "--dsn", "x", "ping"}, {"ping", "--db"},
             {"--user", "a", "ping", "--user", "b"}, {"ping", "extra"}, {"init", "--force"}, {"schema-script"},
             {"schema-script", "oracle"}, {"import"}, {"import", "--bogus", "f.trx"}, {"import", "a.trx", "b.trx"},
             {"export", "Bogus"}, {"export", "--id", "X"}, {"export", "--deep", "Category"},
             {"export", "--group", "roles", "Role"}, {"export", "--group", "nothing"},
             {"export", "--server-kind", "pe", "Category"}, {"export", "-o"}, {"export", "--bogus"},
         }) {
        CliResult r = RunDvnbt(args);
        EXPECT_EQ(r.status, 2) << testing::PrintToString(args);
        EXPECT_EQ(r.err.rfind("dvnbt: ", 0), 0u) << r.err;
        EXPECT_TRUE(r.err.ends_with("\nTry 'dvnbt --help'.\n")) << testing::PrintToString(args) << ": " << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 2) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
    EXPECT_FALSE(std::filesystem::exists("a.db"));
}

class DvnbtDb : public DbTest {};

TEST_P(DvnbtDb, PingReachesTheNamedOrProfiledDatabase) {
    // --db needs no data sources at all; the options may follow the command.
    const std::vector<std::string> noOdbc{"ODBCSYSINI=/nonexistent", "ODBCINI=/nonexistent/odbc.ini"};
    if (!IsPostgres()) {
        // A file that is not there is not made, by ping nor by import: only init makes one.
        TrxFiles files;
        const std::string trx = files.Write("Category \"A\" {}\n");
        using Args = std::vector<std::string>;
        for (const Args& args : {Args{"ping", "--db", DbFile()}, Args{"import", "--initial-load", "--db", DbFile(), trx}}) {
            CliResult missing = RunDvnbt(args, noOdbc);
            EXPECT_EQ(missing.status, 1);
            EXPECT_EQ(missing.err, "dvnbt: database file " + DbFile() + " does not exist, so it holds no repository: "
                                   "run 'dvnbt --db " + DbFile() + " init' to create one\n");
        }
        EXPECT_FALSE(std::filesystem::exists(DbFile()));
        Db();  // an empty database file
    }
    std::vector<std::string> after = DvnbtArgs({});
    after.insert(after.begin(), "ping");
    CliResult r = RunDvnbt(after, IsPostgres() ? std::vector<std::string>{} : noOdbc);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(IsPostgres() ? "product: PostgreSQL" : "product: SQLite"), std::string::npos) << r.out;
    EXPECT_TRUE(IsPostgres() || std::filesystem::exists(DbFile()));

    // Without options the machine profile names the data source.
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + "\n");
    EXPECT_EQ(RunDvnbt({"ping"}).status, 0);

    CliResult noFolder = RunDvnbt({"--db", "/nonexistent/x.db", "ping"});
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_NE(noFolder.err.find("dvnbt: database file /nonexistent/x.db does not exist"), std::string::npos)
        << noFolder.err;
}

TEST_P(DvnbtDb, ImportSaysOnceWhyItCannotStartUntilInitMakesTheRepository) {
    TrxFiles files;
    const std::string trx = files.Write("Category \"Sales\" {}\n");
    const std::string hint = IsPostgres() ? "'dvnbt --dsn \"" + DataSource() + "\" init'" : "'dvnbt --db " + DbFile() + " init'";
    // An empty database: the tables are missing, and init is named, once.
    Db();
    CliResult empty = RunDvnbt(DvnbtArgs({"import", "--initial-load", trx}));
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.out, "");
    const std::string source = IsPostgres() ? "data source " + DataSource() : "database file " + DbFile();
    EXPECT_EQ(empty.err, "dvnbt: " + source + " holds no repository: run " + hint + " to create one\n");

    // A server that cannot be reached: the driver's reason, as ping gives it.
    const std::string away = IsPostgres() ? DataSource() + ";Port=1" : std::string("dvnbt_no_such_dsn");
    CliResult ping = RunDvnbt({"--dsn", away, "ping"});
    CliResult import = RunDvnbt({"--dsn", away, "import", trx});
    EXPECT_EQ(import.status, 1);
    EXPECT_EQ(import.err, ping.err);
    EXPECT_NE(import.err.find("dvnbt: cannot open data source " + away + ": "), std::string::npos) << import.err;
    EXPECT_GT(import.err.size(), ("dvnbt: cannot open data source " + away + ": \n").size()) << import.err;
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), 0u);

    // init makes the repository, refuses a second time, and recreates when asked.
    CliResult first = RunDvnbt(DvnbtArgs({"init"}));
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(first.out.rfind("Created the repository schema", 0), 0u) << first.out;
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('C1', 'Kept', 0)"});

    CliResult second = RunDvnbt(DvnbtArgs({"init"}));
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.out, "");
    EXPECT_EQ(second.err.rfind("dvnbt: The repository schema exists already", 0), 0u) << second.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.CATEGORY"), "Kept");

    // A repository without persons needs no login to be replaced.
    CliResult again = RunDvnbt(DvnbtArgs({"init", "--recreate"}));
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(again.out.rfind("Dropping the existing repository schema", 0), 0u) << again.out;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.DATA_STRUCTURE"), "Default Data Structure");
}

TEST_P(DvnbtDb, AReadOnlyRepositoryFileGivesOneErrorAndNoFailurePerObject) {
    if (IsPostgres()) GTEST_SKIP() << "a file of its own is SQLite's";
    ASSERT_EQ(RunDvnbt(DvnbtArgs({"init"})).status, 0);
    TrxFiles files;
    const std::string trx = files.Write("Category \"A\" {}\nCategory \"B\" {}\n");
    namespace fs = std::filesystem;
    using P = fs::perms;
    fs::permissions(files.Folder(), P::all);  // readable by anybody
    fs::permissions(trx, P::owner_read | P::others_read);
    // The repository's folder, then each file in it.
    auto modes = [folder = fs::path(DbFile()).parent_path()](P dir, P file) {
        fs::permissions(folder, dir);
        for (const auto& entry : fs::directory_iterator(folder)) fs::permissions(entry.path(), file);
    };
    // Root writes any file: the run goes as nobody, who may read only.
    const int uid = geteuid() == 0 ? 65534 : -1;
    const P readable = P::owner_read | P::group_read | P::others_read;
    modes(uid < 0 ? P::owner_read | P::owner_exec : P::owner_all | readable | P::group_exec | P::others_exec, readable);
    CliResult r = DvnbtProcess(DvnbtArgs({"import", "--initial-load", trx}), {}, uid).Wait();
    modes(P::owner_all, P::owner_read | P::owner_write);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err.rfind("dvnbt: cannot ", 0), 0u) << r.err;
    EXPECT_NE(r.err.find("database file " + DbFile() + ": "), std::string::npos) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtDb);

// No database password reaches what dvnbt prints or traces, whatever its
// spelling and whichever road brings it: in the data source, from
// --db-user and $DVNBT_DB_PASSWORD, or from the machine profile.
class DvnbtSecrets : public RepositoryTest {
protected:
    // dvnbt with the trace on at every level into a file of its own (its
    // text in `trace`); expects the exit status, and no secret anywhere.
    CliResult Expect(int status, const std::vector<std::string>& args, std::vector<std::string> env,
                     const std::vector<std::string>& secrets) {
        const std::string file = files.Folder() + "/trace" + std::to_string(++runs) + ".txt";
        env.push_back("DVN_TRACE=1");
        env.push_back("DVN_TRACE_FILE=" + file);
        CliResult r = RunDvnbt(args, env);
        std::stringstream text;
        text << std::ifstream(file).rdbuf();
        trace = text.str();
        const std::string what = testing::PrintToString(args);
        EXPECT_EQ(r.status, status) << what << "\n" << r.err;
        // A failed open traces the driver's error text.
        EXPECT_TRUE(status == 0 || trace.find("Exception In Open Database") != std::string::npos) << what << trace;
        for (const std::string& secret : secrets)
            for (const std::string* where : {&r.out, &r.err, &trace})
                EXPECT_TRUE(secret.empty() || where->find(secret) == std::string::npos) << what << "\n" << *where;
        // A password that the connection got is shown as stars.
        const size_t pwd = r.out.find("PWD=");
        EXPECT_TRUE(pwd == std::string::npos || r.out.find_first_of(";\n", pwd) == pwd + 4 ||
                    r.out.substr(pwd, 12) == "PWD=********")
            << r.out;
        return r;
    }

    TrxFiles files;
    std::string trace;
    int runs = 0;
};

TEST_P(DvnbtSecrets, NoPasswordOfTheDataSourceTheCommandLineOrTheProfileIsPrinted) {
    const std::string trx = files.Write("Category \"Claims\" {}\n");
    int n = 0;
    for (const std::string spelling : {"PWD=", "pwd=", "Password=", "PASSWORD="}) {
        const std::string secret = "Zq7s3cret" + std::to_string(++n);
        SCOPED_TRACE(spelling);
        // A data source that opens: the password is not needed by either
        // test server, and neither refuses it.
        const std::string good = DataSource() + ";" + spelling + secret;
        CliResult ping = Expect(0, {"--dsn", good, "ping"}, {}, {secret});
        EXPECT_NE(ping.out.find("connect: "), std::string::npos) << ping.out;
        Expect(0, {"--dsn", good, "import", "--initial-load", trx}, {}, {secret});

        // One that does not open: the data source is named, its password
        // hidden, by ping and by an import before it logs in.
        for (const std::string command : {"ping", "import"}) {
            std::vector<std::string> args{"--dsn", "dvnbt_no_such_dsn;" + spelling + secret, command};
            if (command == "import") args.push_back(trx);
            CliResult refused = Expect(1, args, {}, {secret});
            EXPECT_NE(refused.err.find("cannot open data source dvnbt_no_such_dsn;" + spelling + "********"),
                      std::string::npos)
                << refused.err;
        }
    }
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.CATEGORY"), "Claims");

    const std::string secret = "Kx9dbs3cret";
    const std::vector<std::string> env{"DVNBT_DB_PASSWORD=" + secret};
    // --db-user with the password from the environment, on a data source
    // that does not open (one that opens: TheDatabasePasswordReachesEveryConnection).
    Expect(1, {"--dsn", "dvnbt_no_such_dsn", "--db-user", "postgres", "import", trx}, env, {secret});

    // The data source of the machine profile, with a password of its own:
    // the detail trace of the open says that a password was given, masked.
    const std::string profiled = "Pr0fs3cret";
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + ";Password=" + profiled +
                        "\n");
    using Args = std::vector<std::string>;
    for (const Args& args : {Args{"--db-user", "postgres", "ping"},
                             Args{"--db-user", "postgres", "import", "--initial-load", trx}}) {
        Expect(0, args, env, {secret, profiled});
        EXPECT_NE(trace.find("open database with userid: postgres and password: ********\n"), std::string::npos)
            << trace;
    }
}

TEST_P(DvnbtSecrets, TheDatabasePasswordReachesEveryConnection) {
    // SQLite takes any user and password; PostgreSQL needs a role that must
    // give its password, or a wrong one would not fail.
    PgRole role{"someone", "sqlitepw4711"};
    if (IsPostgres()) {
        role = PgSecretRole();
        if (role.user.empty()) GTEST_SKIP() << "the test server has no role that needs a password (scripts/pg-temp.sh)";
        GrantToSecretRole();
    }
    const std::string sales = files.Write("Category \"Sales\" {}\n");
    auto run = [&](int status, std::vector<std::string> args, const std::string& password) {
        args.insert(args.begin(), {"--db-user", role.user});
        return Expect(status, DvnbtArgs(args), {"DVNBT_DB_PASSWORD=" + password}, {password});
    };
    auto rows = [&] { return QueryRows(Db(), "SELECT NAME FROM DVBT.CATEGORY"); };

    CliResult ping = run(0, {"ping"}, role.password);
    EXPECT_NE(ping.out.find("connect: "), std::string::npos) << ping.out;
    run(0, {"import", "--initial-load", sales}, role.password);
    EXPECT_NE(trace.find("Finished with Process Model import"), std::string::npos) << trace;
    EXPECT_EQ(rows(), (std::vector<std::string>{"Sales"}));
    if (!IsPostgres()) return;

    EXPECT_NE(ping.out.find("UID=" + role.user + ";"), std::string::npos) << ping.out;
    const std::string cannot = "dvnbt: cannot open data source " + DataSource() + ": ";
    for (const std::string& wrong : {"wrong" + role.password, std::string("")}) {
        SCOPED_TRACE(wrong);
        CliResult refused = run(1, {"ping"}, wrong);
        EXPECT_EQ(refused.err.rfind(cannot, 0), 0u) << refused.err;
        EXPECT_NE(refused.err.find(wrong.empty() ? "no password supplied"
                                                 : "password authentication failed for user \"" + role.user + "\""),
                  std::string::npos)
            << refused.err;
        // The import fails as a whole before anything is read or stored.
        ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});
        EXPECT_EQ(run(1, {"import", "--initial-load", sales}, wrong).err.rfind(cannot, 0), 0u);
        EXPECT_TRUE(rows().empty());
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtSecrets);

}  // namespace
