// dvnbt init on both databases: creates, refuses a second time without
// changing anything, recreates when asked.
#include <gtest/gtest.h>

#include "testdb.h"
#include "testenv.h"

namespace {

class DvnbtInit : public DbTest {};

TEST_P(DvnbtInit, CreatesRefusesASecondTimeAndRecreatesWhenAsked) {
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

    EXPECT_EQ(RunDvnbt(DvnbtArgs({"init", "--force"})).status, 2);
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtInit);

}  // namespace
