// Lists saved one by one: the table named by the caller decides where a list
// goes and how it is reported. Imports of lists: tests/dvnbt/test_import_lists.cpp.
#include <gtest/gtest.h>

#include "backendrun.h"

namespace {

using Lines = std::vector<std::string>;

class ListStore : public StoreTest {};

TEST_P(ListStore, TheTableNamedSelectsRowAndMessagesAndAnyOtherTableIsRefused) {
    BackEndRun run(true);
    DvnfEntity& list = run.Add("TemplatesList", "Mine");
    list.AttributeData()("ListCommon")("Threshold") = 3L;
    EXPECT_EQ(run.be.SaveList(Db(), list, "PRC_INSTANCE_LIST"), 0);
    EXPECT_EQ(run.be.SaveList(Db(), list, "PRC_TEMPLATE_LIST"), 0);
    EXPECT_EQ(run.be.SaveList(Db(), list, "WORK_LIST"), 8);
    EXPECT_EQ(run.be.SaveList(Db(), list, "ACT_INSTANCE_LIST"), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51007|Mine", "51008|Mine", "51006|Mine"}));
    for (const char* table : {"ACT_INSTANCE_LIST", "PRC_INSTANCE_LIST", "PRC_TEMPLATE_LIST"})
        EXPECT_EQ(QueryRows(Db(), std::string("SELECT NAME, TYPE, THRESHOLD FROM DVBT.") + table),
                  (Lines{"Mine|2|3"}))
            << table;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.WORK_LIST"), "0");

    // A work list on its own save, which gives no beep 0 also on an update.
    Exec("INSERT INTO DVBT.WORK_LIST (LIST_ID, NAME, BEEP_OPTION, CHECKED_OUT) VALUES ('W1', 'Mine', 1, 0)");
    EXPECT_EQ(run.be.SaveWorkList(Db(), list), 0);
    EXPECT_EQ(QueryRows(Db(), "SELECT LIST_ID, BEEP_OPTION, THRESHOLD FROM DVBT.WORK_LIST"), (Lines{"W1|0|3"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(ListStore);

}  // namespace
