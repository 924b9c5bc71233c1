// The dvnbt program: options, exit statuses, ping on both databases.
#include <gtest/gtest.h>

#include <filesystem>

#include "testdb.h"
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

}  // namespace
