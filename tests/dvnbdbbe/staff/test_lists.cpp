// Lists saved one by one: the table named by the caller decides where a list
// goes and how it is reported. Imports of lists: tests/dvnbt/test_import_lists.cpp.
#include <gtest/gtest.h>

#include "backendrun.h"
#include "testenv.h"

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

TEST_P(ListStore, AnOwnerWhoIsNoPersonIsTracedAndTheListKeptWithoutOne) {
    // A user id with a quote, and a person left as a tombstone.
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'O''NEIL', 0), ('P2', 'GONE', 4)");
    TraceCapture trace;
    BackEndRun run(true);
    auto owned = [&](const char* name, const char* owner) {
        DvnfAttributeData common = run.Add("Worklist", name).AttributeData()("ListCommon");
        common("Type") = 1L;
        if (owner) common("Owner") = owner;
    };
    owned("Quoted", "o'neil");
    owned("Tombstoned", "GONE");
    owned("Nobody", nullptr);
    EXPECT_EQ(run.be.SaveWorkLists(Db(), true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51009|Nobody", "51009|Quoted", "51009|Tombstoned"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, TYPE, OWNER FROM DVBT.WORK_LIST ORDER BY NAME"),
              (Lines{"Nobody|1|<null>", "Quoted|1|P1", "Tombstoned|1|<null>"}));
    const std::string text = trace.Text();
    EXPECT_NE(text.find("List owner GONE not found in database"), std::string::npos) << text;
    EXPECT_NE(text.find("List owner <null> not found in database"), std::string::npos) << text;
    EXPECT_EQ(text.find("List owner o'neil"), std::string::npos) << text;
    EXPECT_NE(text.find("Work List Quoted..."), std::string::npos) << text;

    // An owner who cannot be looked for fails the list: it is not stored as ownerless.
    Exec("DROP TABLE DVBT.PERSON");
    BackEndRun failed(true);
    DvnfAttributeData common = failed.Add("Worklist", "Quoted").AttributeData()("ListCommon");
    common("Type") = 1L;
    common("Owner") = "o'neil";
    EXPECT_EQ(failed.be.SaveWorkLists(Db(), true), 8);
    const Lines messages = failed.Messages();
    ASSERT_EQ(messages.size(), 2u) << testing::PrintToString(messages);
    EXPECT_EQ(messages[0].rfind("51368|", 0), 0u) << messages[0];
    EXPECT_EQ(messages[1], "51341|Quoted");
    EXPECT_EQ(QueryValue(Db(), "SELECT OWNER FROM DVBT.WORK_LIST WHERE NAME = 'Quoted'"), "P1");
}

DVN_INSTANTIATE_BOTH_BACKENDS(ListStore);

}  // namespace
