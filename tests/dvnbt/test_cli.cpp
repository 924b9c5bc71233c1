// The dvnbt program: options, exit statuses, ping on both databases.
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
             {},
             {"--bogus", "ping"},
             {"frobnicate"},
             {"--db", "a.db", "--dsn", "x", "ping"},
             {"ping", "--db", "a.db", "--dsn", "x"},
             {"ping", "--db"},
             {"--user", "a", "ping", "--user", "b"},
             {"ping", "extra"},
             {"init", "--force"},
             {"schema-script"},
             {"schema-script", "oracle"},
             {"import"},
             {"import", "--bogus", "f.trx"},
             {"import", "a.trx", "b.trx"},
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
        // A file that is not there is not made: only init makes one.
        CliResult missing = RunDvnbt({"ping", "--db", DbFile()}, noOdbc);
        EXPECT_EQ(missing.status, 1);
        EXPECT_EQ(missing.err, "dvnbt: database file " + DbFile() + " does not exist, so it holds no repository: run "
                                   "'dvnbt --db " + DbFile() + " init' to create one\n");
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
    CliResult viaProfile = RunDvnbt({"ping"});
    EXPECT_EQ(viaProfile.status, 0) << viaProfile.err;

    CliResult unknown = RunDvnbt({"--dsn", "dvnbt_no_such_dsn", "ping"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_NE(unknown.err.find("dvnbt: cannot open data source dvnbt_no_such_dsn: "), std::string::npos)
        << unknown.err;
    CliResult noFolder = RunDvnbt({"--db", "/nonexistent/x.db", "ping"});
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_NE(noFolder.err.find("dvnbt: database file /nonexistent/x.db does not exist"), std::string::npos)
        << noFolder.err;
}

TEST_P(DvnbtDb, ImportSaysOnceWhyItCannotStartAndStoresNothing) {
    TrxFiles files;
    const std::string trx = files.Write("Category \"Sales\" {}\n");
    const std::string hint = IsPostgres() ? "'dvnbt --dsn \"" + DataSource() + "\" init'" : "'dvnbt --db " + DbFile() + " init'";
    // A file that is not there stays so.
    if (!IsPostgres()) {
        CliResult missing = RunDvnbt({"import", "--initial-load", "--db", DbFile(), trx});
        EXPECT_EQ(missing.status, 1);
        EXPECT_NE(missing.err.find("holds no repository: run " + hint + " to create one\n"), std::string::npos)
            << missing.err;
        EXPECT_FALSE(std::filesystem::exists(DbFile()));
    }
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
}

TEST_P(DvnbtDb, AReadOnlyRepositoryFileGivesOneErrorAndNoFailurePerObject) {
    if (IsPostgres()) GTEST_SKIP() << "a file of its own is SQLite's";
    ASSERT_EQ(RunDvnbt(DvnbtArgs({"init"})).status, 0);
    TrxFiles files;
    const std::string trx = files.Write("Category \"A\" {}\nCategory \"B\" {}\n");
    std::filesystem::permissions(files.Folder(), std::filesystem::perms::all);  // readable by anybody
    std::filesystem::permissions(trx, std::filesystem::perms::owner_read | std::filesystem::perms::others_read);
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(DbFile()).parent_path();
    // Root writes any file: the run goes as nobody, who may read only.
    const int uid = geteuid() == 0 ? 65534 : -1;
    fs::permissions(folder, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                fs::perms::others_read | fs::perms::others_exec);
    for (const auto& entry : fs::directory_iterator(folder))
        fs::permissions(entry.path(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    if (uid < 0) fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    CliResult r = DvnbtProcess(DvnbtArgs({"import", "--initial-load", trx}), {}, uid).Wait();
    fs::permissions(folder, fs::perms::owner_all);
    for (const auto& entry : fs::directory_iterator(folder))
        fs::permissions(entry.path(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err.rfind("dvnbt: cannot ", 0), 0u) << r.err;
    EXPECT_NE(r.err.find("database file " + DbFile() + ": "), std::string::npos) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtDb);

class DvnbtCredentials : public RepositoryTest {};

TEST_P(DvnbtCredentials, TheDatabasePasswordReachesEveryConnectionAndIsNeverShown) {
    // SQLite takes any user and password; PostgreSQL needs a role that must
    // give its password, or a wrong one would not fail.
    PgRole role{"someone", "sqlitepw4711"};
    if (IsPostgres()) {
        role = PgSecretRole();
        if (role.user.empty()) GTEST_SKIP() << "the test server has no role that needs a password (scripts/pg-temp.sh)";
        GrantToSecretRole();
    }
    TrxFiles files;
    const std::string traceFile = files.Folder() + "/trace.txt";
    const std::string sales = files.Write("Category \"Sales\" {}\n");
    struct Run {
        CliResult result;
        std::string trace;
    };
    auto run = [&](const std::vector<std::string>& args, const std::string& password) {
        std::filesystem::remove(traceFile);
        std::vector<std::string> all{"--db-user", role.user};
        all.insert(all.end(), args.begin(), args.end());
        Run r{RunDvnbt(DvnbtArgs(all), {"DVNBT_DB_PASSWORD=" + password, "DVN_TRACE=1", "DVN_TRACE_FILE=" + traceFile}),
              ""};
        std::ifstream in(traceFile);
        std::stringstream text;
        text << in.rdbuf();
        r.trace = text.str();
        // Whatever happened, the password shows nowhere.
        if (!password.empty()) {
            for (const std::string* where : {&r.result.out, &r.result.err, &r.trace})
                EXPECT_EQ(where->find(password), std::string::npos) << *where;
        }
        const size_t pwd = r.result.out.find("PWD=");
        if (pwd != std::string::npos) {
            EXPECT_EQ(r.result.out.substr(pwd, 12), "PWD=********");
        }
        return r;
    };
    auto rows = [&] { return QueryRows(Db(), "SELECT NAME FROM DVBT.CATEGORY"); };

    Run ping = run({"ping"}, role.password);
    EXPECT_EQ(ping.result.status, 0) << ping.result.err;
    EXPECT_NE(ping.result.out.find("connect: "), std::string::npos) << ping.result.out;
    Run imported = run({"import", "--initial-load", sales}, role.password);
    EXPECT_EQ(imported.result.status, 0) << imported.result.err;
    EXPECT_NE(imported.trace.find("Finished with Process Model import"), std::string::npos) << imported.trace;
    EXPECT_EQ(rows(), (std::vector<std::string>{"Sales"}));
    if (!IsPostgres()) return;

    EXPECT_NE(ping.result.out.find("UID=" + role.user + ";"), std::string::npos) << ping.result.out;
    const std::string refusal = "password authentication failed for user \"" + role.user + "\"";
    for (const std::string& wrong : {"wrong" + role.password, std::string("")}) {
        SCOPED_TRACE(wrong);
        Run refused = run({"ping"}, wrong);
        EXPECT_EQ(refused.result.status, 1);
        EXPECT_EQ(refused.result.err.rfind("dvnbt: cannot open data source " + DataSource() + ": ", 0), 0u)
            << refused.result.err;
        EXPECT_NE(refused.result.err.find(wrong.empty() ? "no password supplied" : refusal), std::string::npos)
            << refused.result.err;
        // The import fails as a whole before anything is read or stored.
        ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});
        Run failed = run({"import", "--initial-load", sales}, wrong);
        EXPECT_EQ(failed.result.status, 1);
        EXPECT_EQ(failed.result.err.rfind("dvnbt: cannot open data source " + DataSource() + ": ", 0), 0u)
            << failed.result.err;
        EXPECT_TRUE(rows().empty());
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtCredentials);

}  // namespace
