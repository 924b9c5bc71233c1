// The dvnbt program: options, exit statuses, ping on both databases.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "dvnfcorn.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

TEST(Dvnbt, HelpAndUsageErrors) {
    CliResult help = RunDvnbt({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("usage: dvnbt"), std::string::npos);

    for (auto args : std::vector<std::vector<std::string>>{
             {}, {"--bogus", "ping"}, {"frobnicate"}, {"--db", "a.db", "--dsn", "x", "ping"}}) {
        CliResult r = RunDvnbt(args);
        EXPECT_EQ(r.status, 2) << testing::PrintToString(args);
        EXPECT_EQ(r.err.rfind("dvnbt: ", 0), 0u) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
}

class DvnbtDb : public DbTest {};

TEST_P(DvnbtDb, PingReachesTheNamedOrProfiledDatabase) {
    // --db needs no data sources at all, and creates the file.
    const std::vector<std::string> noOdbc{"ODBCSYSINI=/nonexistent", "ODBCINI=/nonexistent/odbc.ini"};
    CliResult r = RunDvnbt(DvnbtArgs({"ping"}), IsPostgres() ? std::vector<std::string>{} : noOdbc);
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
    EXPECT_NE(noFolder.err.find("dvnbt: cannot open database file"), std::string::npos) << noFolder.err;
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
        EXPECT_EQ(r.result.out.find("PWD"), std::string::npos) << r.result.out;
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
        EXPECT_NE(failed.result.err.find(DvnfMessageHandler::Format(51366, DvnString(DataSource())).str()),
                  std::string::npos)
            << failed.result.err;
        EXPECT_TRUE(rows().empty());
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtCredentials);

}  // namespace
