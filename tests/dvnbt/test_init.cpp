// dvnbt init on both databases: creates, refuses a second time without
// changing anything, recreates when asked.
#include <gtest/gtest.h>

#include "dvnschema.h"
#include "testdb.h"
#include "testenv.h"

namespace {

class DvnbtInit : public DbTest {
protected:
    CliResult Run(std::vector<std::string> args) {
        std::vector<std::string> all = IsPostgres() ? std::vector<std::string>{"--dsn", DataSource()}
                                                    : std::vector<std::string>{"--db", DbFile()};
        all.insert(all.end(), args.begin(), args.end());
        return RunDvnbt(all);
    }
};

TEST_P(DvnbtInit, CreatesRefusesASecondTimeAndRecreatesWhenAsked) {
    CliResult first = Run({"init"});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.out.find("Created the repository schema: 81 tables"), std::string::npos) << first.out;
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), 81u);
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('C1', 'Kept', 0)"});

    CliResult second = Run({"init"});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.out, "");
    EXPECT_EQ(second.err.rfind("dvnbt: The repository schema exists already", 0), 0u) << second.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.CATEGORY"), "Kept");

    CliResult again = Run({"init", "--recreate"});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(again.out.rfind("Dropping the existing repository schema (81 tables)", 0), 0u) << again.out;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.DATA_STRUCTURE"), "Default Data Structure");

    EXPECT_EQ(Run({"init", "--force"}).status, 2);
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtInit);

TEST(DvnbtSchemaScript, PrintsWhatInitRuns) {
    CliResult lite = RunDvnbt({"schema-script", "sqlite"});
    EXPECT_EQ(lite.status, 0);
    EXPECT_EQ(lite.out, DvnSchema::Script(DvnSchema::SQLite));
    EXPECT_EQ(RunDvnbt({"schema-script", "oracle"}).status, 2);
}

}  // namespace
