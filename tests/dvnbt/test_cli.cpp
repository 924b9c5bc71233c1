// The dvnbt program: options, exit statuses, ping on both databases.
#include <gtest/gtest.h>

#include <filesystem>

#include "testdb.h"
#include "testenv.h"

namespace {

TEST(Dvnbt, HelpVersionAndUsageErrors) {
    CliResult help = RunDvnbt({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("usage: dvnbt"), std::string::npos);
    EXPECT_NE(help.out.find("ping"), std::string::npos);
    CliResult version = RunDvnbt({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.rfind("dvnbt ", 0), 0u);

    for (auto args : std::vector<std::vector<std::string>>{
             {}, {"--bogus", "ping"}, {"frobnicate"}, {"--db"}, {"--db", "a.db", "--dsn", "x", "ping"}, {"ping", "extra"}}) {
        CliResult r = RunDvnbt(args);
        EXPECT_EQ(r.status, 2) << testing::PrintToString(args);
        EXPECT_EQ(r.err.rfind("dvnbt: ", 0), 0u) << r.err;
        EXPECT_TRUE(r.out.empty());
    }
}

TEST(Dvnbt, PingCreatesAFreshEmbeddedDatabaseWithoutAnyOdbcConfiguration) {
    auto dir = std::filesystem::temp_directory_path() / ("dvnbt_cli_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    std::string file = (dir / "fresh.db").string();
    // No data sources at all: --db must not need them.
    CliResult r = RunDvnbt({"--db", file, "ping"}, {"ODBCSYSINI=/nonexistent", "ODBCINI=/nonexistent/odbc.ini"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("product: SQLite"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("connect: "), std::string::npos);
    EXPECT_NE(r.out.find("Database=" + file), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("prefix: DVBT.\n"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(file));

    CliResult bad = RunDvnbt({"--db", (dir / "missing_dir" / "x.db").string(), "ping"});
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.err.find("dvnbt: cannot open database file"), std::string::npos) << bad.err;
    std::filesystem::remove_all(dir);
}

class DvnbtDb : public DbTest {};

TEST_P(DvnbtDb, PingReachesTheNamedOrProfiledDatabaseAndHidesThePassword) {
    CliResult r = IsPostgres() ? RunDvnbt({"--dsn", DataSource(), "ping"}) : RunDvnbt({"--db", DbFile(), "ping"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find(IsPostgres() ? "product: PostgreSQL" : "product: SQLite"), std::string::npos) << r.out;
    EXPECT_EQ(r.out.find("PWD="), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("prefix: DVBT."), std::string::npos);

    // Without options the machine profile names the data source.
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + "\n");
    CliResult viaProfile = RunDvnbt({"ping"}, {"DVN_PROFILE=" + profile.Path()});
    EXPECT_EQ(viaProfile.status, 0) << viaProfile.err;

    CliResult unknown = RunDvnbt({"--dsn", "dvnbt_no_such_dsn", "ping"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_NE(unknown.err.find("dvnbt: cannot open data source dvnbt_no_such_dsn: "), std::string::npos)
        << unknown.err;
    CliResult noProfile = RunDvnbt({"ping"}, {"DVN_PROFILE=/nonexistent/profile"});
    EXPECT_EQ(noProfile.status, 1);
    EXPECT_NE(noProfile.err.find("/nonexistent/profile"), std::string::npos) << noProfile.err;
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtDb);

}  // namespace
