// The data structure store: structure rows in a first pass, their ordered
// members in a second, forward and backward references between structures,
// deletion with both source options and its refusals and cascades, the
// fallback to "Default Data Structure". Re-import: tests/dvnbt/test_import.cpp.
#include <gtest/gtest.h>

#include "backendrun.h"
#include "testenv.h"

namespace {

struct Member {
    const char* name;
    long type = 0;
    const char* sub = nullptr;  // target of "HasSubStructure"
    long cardinality = -1;      // -1: not defined
    const char* description = nullptr;
};

class DataStructureStore : public RepositoryTest {
protected:
    // A structure as a parsed file gives it: each member an entity of its
    // own, a sub-structure linked by name (a skeleton when not defined).
    static DvnfEntity& Structure(BackEndRun& run, const char* name, const std::vector<Member>& members) {
        DvnfEntity& structure = run.Add("DataStructure", name);
        for (const Member& m : members) {
            DvnfAttributeData element = structure.AttributeData()("Members").NewSetElement();
            element("Name") = m.name;
            element("Type") = m.type;
            if (m.cardinality >= 0) element("Cardinality") = m.cardinality;
            if (m.description) element("Description") = m.description;
            DvnfEntity& member = element.AsEntity();
            member.Name(DvnfString(m.name));
            if (m.sub)
                run.data.AddLinkByName(member, DvnfString("HasSubStructure"), DvnfString("DataStructure"),
                                       DvnfString(m.sub), true, true);
        }
        return structure;
    }
    static void Delete(BackEndRun& run, const char* name) {
        run.Add("DataStructure", name).State(DvnfObject::StateDeleted);
    }
    // name|mark|description of every structure but the default one.
    std::vector<std::string> Structures() {
        return QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.DATA_STRUCTURE "
                               "WHERE NAME <> 'Default Data Structure' ORDER BY NAME");
    }
    // structure|member|sequence|type name|data type|array size|length, in order.
    std::vector<std::string> Members() {
        return QueryRows(Db(),
                         "SELECT s.NAME, m.MEMBER, m.SEQUENCE_NO, t.NAME, m.DATA_TYPE, m.ARRAY_SIZE, m.LENGTH "
                         "FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s ON s.DSID = m.DSID "
                         "LEFT JOIN DVBT.DATA_STRUCTURE t ON t.DSID = m.TYPE_DS ORDER BY s.NAME, m.SEQUENCE_NO");
    }
    std::string Key(const std::string& name) {
        return QueryValue(Db(), "SELECT DSID FROM DVBT.DATA_STRUCTURE WHERE NAME = '" + name + "'");
    }
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    // Order uses Address (before it by name) and Party (after it); Party
    // uses Order back.
    static void OrderModel(BackEndRun& run) {
        Structure(run, "Address", {{"Street"}, {"Zip", 1, nullptr, 5}});
        Structure(run, "Order", {{"Customer", 4, "Party"},
                                 {"ShipTo", 4, "Address"},
                                 {"Lines", 2, nullptr, 20, "order lines"},
                                 {"Amount", 3},
                                 {"Odd", 9}});
        Structure(run, "Party", {{"Orders", 4, "Order", 10}});
    }
};

TEST_P(DataStructureStore, StructuresReferringForwardAndBackwardAreStoredWithOrderedMembers) {
    for (bool source : {true, false}) {
        Exec("DELETE FROM DVBT.DATA_STRUCTURE_MBR");
        Exec("DELETE FROM DVBT.DATA_STRUCTURE WHERE NAME <> 'Default Data Structure'");
        BackEndRun run(source);
        OrderModel(run);
        Structure(run, "Links", {{"Ghost", 4, "Nowhere"}, {"Plain", 4}, {"Dup", 0}, {"Dup", 1, nullptr, 3}})
            .AttributeData()("Description") = "with odd members";
        testing::internal::CaptureStdout();
        // An unknown sub-structure is replaced by the default one: a warning
        // to the user, not a failure of the member.
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out.substr(0, out.find("Structure Address second pass")),
                  "Structure Address...\n\nStructure Links...\n\nStructure Order...\n\nStructure Party...\n\n");
        EXPECT_NE(out.find("Structure Order second pass ...\n\nStructure member Customer...\n\n"), std::string::npos);
        EXPECT_EQ(run.Messages(),
                  (std::vector<std::string>{"51021|Address", "51021|Links", "51021|Order", "51021|Party",
                                            "51022|Street", "51022|Zip", "51102|Nowhere", "51022|Ghost",
                                            "51022|Plain", "51022|Dup", "51054|Dup", "51022|Customer",
                                            "51022|ShipTo", "51022|Lines", "51022|Amount", "51022|Odd",
                                            "51022|Orders"}));
        const std::string mark = source ? "0" : "5";
        EXPECT_EQ(Structures(), (std::vector<std::string>{"Address|" + mark + "|<null>",
                                                          "Links|" + mark + "|with odd members",
                                                          "Order|" + mark + "|<null>", "Party|" + mark + "|<null>"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.DATA_STRUCTURE WHERE CHECKED_OUT = 9"), "0");
        EXPECT_EQ(Members(), (std::vector<std::string>{
                                 "Address|Street|1|<null>|1|<null>|<null>",
                                 "Address|Zip|2|<null>|5|5|<null>",
                                 "Links|Ghost|1|Default Data Structure|7|<null>|<null>",
                                 "Links|Plain|2|Default Data Structure|7|<null>|<null>",
                                 "Links|Dup|4|<null>|5|3|<null>",  // the later member of one name wins
                                 "Order|Customer|1|Party|7|<null>|<null>",
                                 "Order|ShipTo|2|Address|7|<null>|<null>",
                                 "Order|Lines|3|<null>|6|20|<null>",
                                 "Order|Amount|4|<null>|3|<null>|<null>",
                                 "Order|Odd|5|<null>|1|<null>|<null>",
                                 "Party|Orders|1|Order|7|10|<null>",
                             }));
        EXPECT_EQ(QueryValue(Db(), "SELECT DESCRIPTION FROM DVBT.DATA_STRUCTURE_MBR WHERE MEMBER = 'Lines'"),
                  "order lines");
        EXPECT_EQ(Key("Order").size(), 32u);
    }
}

TEST_P(DataStructureStore, DeletionIsPhysicalOrATombstoneAndHeldOrMissingRowsAreReported) {
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT, DESCRIPTION) VALUES ('K1', 'Old', 0, 'kept')");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K2', 'Older', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT, CHECKED_OUT_BY) VALUES ('K3', 'Held', 0, 'ADMIN')");
    {
        BackEndRun run(false);  // marking: the row stays as a tombstone
        run.be.SetOverwriteOption(false);  // a deletion goes on regardless
        Delete(run, "Old");
        Delete(run, "Nowhere");
        Delete(run, "Held");
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51148|Held|ADMIN", "51273|DELETE STRUCTURE Nowhere",
                                                            "51053|Old"}));
    }
    EXPECT_EQ(QueryRows(Db(), "SELECT DSID, CHECKED_OUT, DESCRIPTION FROM DVBT.DATA_STRUCTURE WHERE NAME = 'Old'"),
              (std::vector<std::string>{"K1|4|kept"}));
    {
        BackEndRun run(true);  // clean: the row goes
        Delete(run, "Older");
        Structure(run, "Held", {{"m"}});
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 4);
        // The held structure is refused in each pass.
        EXPECT_EQ(run.Messages(),
                  (std::vector<std::string>{"51148|Held|ADMIN", "51221|Older", "51148|Held|ADMIN"}));
    }
    EXPECT_EQ(Structures(), (std::vector<std::string>{"Held|0|<null>", "Old|4|kept"}));
    EXPECT_TRUE(Members().empty());  // the held structure got no members
}

TEST_P(DataStructureStore, AStructureStillInUseIsRefusedWithEitherSourceOption) {
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K1', 'ByProcess', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K2', 'ByActivity', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K3', 'ByProgram', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K4', 'ByMember', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K5', 'Holder', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE_MBR (MEMBER, DSID, SEQUENCE_NO, TYPE_DS, DATA_TYPE) "
         "VALUES ('part', 'K5', 1, 'K4', 7)");
    // A holder that is to be deleted too but is held by a user: the cascade
    // fails, and that counts as a use.
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K6', 'ByHeldMember', 0)");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT, CHECKED_OUT_BY) "
         "VALUES ('K7', 'HeldHolder', 0, 'ADMIN')");
    Exec("INSERT INTO DVBT.DATA_STRUCTURE_MBR (MEMBER, DSID, SEQUENCE_NO, TYPE_DS, DATA_TYPE) "
         "VALUES ('p', 'K7', 1, 'K6', 7)");
    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, OUTPUT_DS, CHECKED_OUT) VALUES ('P1', 'Ordering', 'K1', 0)");
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, OUTPUT_DS) VALUES ('A1', 'Check', 'P1', 'K2')");
    Exec("INSERT INTO DVBT.PROGRAM (PROGRAM_ID, NAME, INPUT_DS, CHECKED_OUT) VALUES ('G1', 'checkord', 'K3', 0)");
    for (bool source : {true, false}) {
        BackEndRun run(source);
        for (const char* name : {"ByProcess", "ByActivity", "ByProgram", "ByMember", "ByHeldMember", "HeldHolder"})
            Delete(run, name);
        // The holder is in the file but not to be deleted.
        Structure(run, "Holder", {{"part", 4, "ByMember"}}).State(DvnfObject::StateUnchanged);
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 4);
        EXPECT_EQ(run.Messages(),
                  (std::vector<std::string>{"51245|ByActivity|Check", "51148|HeldHolder|ADMIN",
                                            "51247|ByHeldMember|HeldHolder|p", "51247|ByMember|Holder|part",
                                            "51244|ByProcess|Ordering", "51246|ByProgram|checkord",
                                            "51148|HeldHolder|ADMIN"}));
        // The failed cascade leaves the holder to the loop.
        EXPECT_EQ(run.data.GetEntityByName(DvnfString("DataStructure"), DvnfString("HeldHolder")).State(),
                  DvnfObject::StateDeleted);
    }
    EXPECT_EQ(Structures(), (std::vector<std::string>{"ByActivity|0|<null>", "ByHeldMember|0|<null>",
                                                      "ByMember|0|<null>", "ByProcess|0|<null>",
                                                      "ByProgram|0|<null>", "HeldHolder|0|<null>",
                                                      "Holder|0|<null>"}));

    // A holder that is already a tombstone does not count in a marking run.
    Exec("UPDATE DVBT.DATA_STRUCTURE SET CHECKED_OUT = 4 WHERE NAME = 'Holder'");
    BackEndRun run(false);
    Delete(run, "ByMember");
    EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0);
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51053|ByMember"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT CHECKED_OUT FROM DVBT.DATA_STRUCTURE WHERE NAME = 'ByMember'"), "4");
}

TEST_P(DataStructureStore, AStructureAndItsUsersAreDeletedInOneRunWhateverTheOrderOfTheirNames) {
    for (bool source : {true, false}) {
        Exec("DELETE FROM DVBT.DATA_STRUCTURE_MBR");
        Exec("DELETE FROM DVBT.DATA_STRUCTURE WHERE NAME <> 'Default Data Structure'");
        {
            // Alpha uses Beta (the user first by name), Zulu uses Yankee (the
            // user last), Ping and Pong use each other and Self uses itself.
            BackEndRun run(true);
            Structure(run, "Alpha", {{"b", 4, "Beta"}});
            Structure(run, "Beta", {{"x"}});
            Structure(run, "Yankee", {{"y"}});
            Structure(run, "Zulu", {{"y1", 4, "Yankee"}, {"y2", 4, "Yankee"}});
            Structure(run, "Ping", {{"to", 4, "Pong"}});
            Structure(run, "Pong", {{"back", 4, "Ping"}});
            Structure(run, "Self", {{"next", 4, "Self"}});
            Structure(run, "Kept", {{"k"}});
            ASSERT_EQ(run.be.SaveDataStructures(Db(), true), 0);
        }
        BackEndRun run(source);
        for (const char* name : {"Alpha", "Beta", "Yankee", "Zulu", "Ping", "Pong", "Self"}) Delete(run, name);
        testing::internal::CaptureStdout();
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0);
        testing::internal::GetCapturedStdout();
        const std::string gone = source ? "51221|" : "51053|";
        // A user met through the reference test is deleted at once, and
        // the loop passes over it when it comes to it.
        EXPECT_EQ(run.Messages(),
                  (std::vector<std::string>{gone + "Alpha", gone + "Beta", gone + "Pong", gone + "Ping",
                                            gone + "Self", gone + "Zulu", gone + "Yankee"}));
        EXPECT_EQ(run.data.GetEntityByName(DvnfString("DataStructure"), DvnfString("Zulu")).State(),
                  DvnfObject::StateNone);
        if (source) {
            EXPECT_EQ(Structures(), (std::vector<std::string>{"Kept|0|<null>"}));
            // The members went with their structures.
            EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.DATA_STRUCTURE_MBR"), "1");
        } else {
            EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.DATA_STRUCTURE WHERE CHECKED_OUT = 4"), "7");
            EXPECT_EQ(Members().size(), 9u);  // a tombstone keeps its members
        }
    }
}

TEST_P(DataStructureStore, WithoutTheRightNothingIsWrittenAndExistingMembersStay) {
    {
        BackEndRun run(true);
        Structure(run, "Order", {{"A"}});
        ASSERT_EQ(run.be.SaveDataStructures(Db(), true), 0);
    }
    BackEndRun run(true);
    Structure(run, "Order", {{"B"}});
    Structure(run, "Other", {{"C"}});
    EXPECT_EQ(run.be.SaveDataStructures(Db(), false), 4);
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51165|Data Structure"}));
    EXPECT_EQ(Structures(), (std::vector<std::string>{"Order|0|<null>"}));
    EXPECT_EQ(Members(), (std::vector<std::string>{"Order|A|1|<null>|1|<null>|<null>"}));
}

TEST_P(DataStructureStore, ADatabaseFailureIsReportedPerStructureAndTheRunGoesOn) {
    Exec("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K1', 'Gone', 0)");
    Exec("DROP TABLE DVBT.DATA_STRUCTURE_MBR");
    TraceCapture trace;
    BackEndRun run(true);
    Structure(run, "A", {{"m"}});
    Structure(run, "B", {{"n"}});
    Delete(run, "Gone");
    EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 8);
    // Both rows are written; each second pass fails on its members.
    EXPECT_EQ(run.handler.Count(51021), 2u);
    EXPECT_EQ(run.handler.Count(51022), 0u);
    // The reference test of the deletion fails: the structure is not
    // updatable this time, and its row stays.
    EXPECT_EQ(run.handler.Count(51349), 1u);
    EXPECT_EQ(run.handler.Count(51368), 3u);
    EXPECT_EQ(Structures(), (std::vector<std::string>{"A|0|<null>", "B|0|<null>", "Gone|0|<null>"}));
    const std::string text = trace.Text();
    EXPECT_NE(text.find("Exception reading table DATA_STRUCTURE: rc ="), std::string::npos);
    EXPECT_NE(text.find("Exception opening table DATA_STRUCTURE_MBR: rc ="), std::string::npos);
    EXPECT_EQ(text.find("Exception updating table DATA_STRUCTURE_MBR"), std::string::npos);
}

DVN_INSTANTIATE_BOTH_BACKENDS(DataStructureStore);

}  // namespace
