// Data structures: rows in a first pass and their ordered members in a
// second, references forward and backward, the fallback to "Default Data
// Structure", and deletion with its refusals and cascades.
#include "../storetests.h"

namespace {

struct Member {
    const char* name;
    long type = 0;
    const char* sub = nullptr;  // target of "HasSubStructure"
    long cardinality = -1;      // -1: not defined
    const char* description = nullptr;
};

class DataStructureStore : public ModelStore {
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
    // structure|member|sequence|type name|data type|array size|description, in order.
    Lines Members() {
        return Rows("SELECT s.NAME, m.MEMBER, m.SEQUENCE_NO, t.NAME, m.DATA_TYPE, m.ARRAY_SIZE, m.DESCRIPTION "
                    "FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s ON s.DSID = m.DSID "
                    "LEFT JOIN DVBT.DATA_STRUCTURE t ON t.DSID = m.TYPE_DS ORDER BY s.NAME, m.SEQUENCE_NO");
    }
};

TEST_P(DataStructureStore, StructuresReferringForwardAndBackwardAreStoredWithOrderedMembers) {
    // Order uses Address (before it by name) and Party (after it); Party
    // uses Order back. Links names a structure defined nowhere, none at all,
    // and one member name twice.
    BackEndRun run(true);
    Structure(run, "Address", {{"Street"}, {"Zip", 1, nullptr, 5}});
    Structure(run, "Order", {{"Customer", 4, "Party"}, {"ShipTo", 4, "Address"}, {"Lines", 2, nullptr, 20, "lines"},
                             {"Odd", 9}});
    Structure(run, "Party", {{"Orders", 4, "Order", 10}});
    Structure(run, "Links", {{"Ghost", 4, "Nowhere"}, {"Plain", 4}, {"Dup", 0}, {"Dup", 1, nullptr, 3}});
    // The default structure stands in: a message, not a failure.
    EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51021|Address", "51021|Links", "51021|Order", "51021|Party", "51022|Street",
                                     "51022|Zip", "51102|Nowhere", "51022|Ghost", "51022|Plain", "51022|Dup",
                                     "51054|Dup", "51022|Customer", "51022|ShipTo", "51022|Lines", "51022|Odd",
                                     "51022|Orders"}));
    // The mark that tells the passes apart is gone.
    EXPECT_EQ(Marks("DATA_STRUCTURE"), (Lines{"Address|0", "Links|0", "Order|0", "Party|0"}));
    // The later member of one name wins.
    EXPECT_EQ(Members(), (Lines{"Address|Street|1|-|1|-|-", "Address|Zip|2|-|5|5|-",
                                "Links|Ghost|1|Default Data Structure|7|-|-",
                                "Links|Plain|2|Default Data Structure|7|-|-", "Links|Dup|4|-|5|3|-",
                                "Order|Customer|1|Party|7|-|-", "Order|ShipTo|2|Address|7|-|-",
                                "Order|Lines|3|-|6|20|lines", "Order|Odd|4|-|1|-|-", "Party|Orders|1|Order|7|10|-"}));

    // Without the right the members of a stored structure are not touched either.
    const Lines stored = Members();
    BackEndRun denied(true);
    Structure(denied, "Order", {{"B"}});
    EXPECT_EQ(denied.be.SaveDataStructures(Db(), false), 4);
    EXPECT_EQ(Members(), stored);
}

TEST_P(DataStructureStore, AStructureStillInUseIsRefusedWithEitherSourceOption) {
    // ByMember is the type of a member of Holder, ByHeldMember of one of
    // HeldHolder, which is to be deleted too but is held by a user: the
    // cascade fails, and that counts as a use.
    for (const char* sql : {
             "INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('K1', 'ByProcess', 0), "
             "('K2', 'ByActivity', 0), ('K3', 'ByProgram', 0), ('K4', 'ByMember', 0), ('K5', 'Holder', 0), "
             "('K6', 'ByHeldMember', 0)",
             "INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT, CHECKED_OUT_BY) "
             "VALUES ('K7', 'HeldHolder', 0, 'ADMIN')",
             "INSERT INTO DVBT.DATA_STRUCTURE_MBR (MEMBER, DSID, SEQUENCE_NO, TYPE_DS, DATA_TYPE) "
             "VALUES ('part', 'K5', 1, 'K4', 7), ('p', 'K7', 1, 'K6', 7)",
             "INSERT INTO DVBT.PROCESS (PID, NAME, OUTPUT_DS, CHECKED_OUT) VALUES ('P1', 'Ordering', 'K1', 0)",
             "INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, OUTPUT_DS) VALUES ('A1', 'Check', 'P1', 'K2')",
             "INSERT INTO DVBT.PROGRAM (PROGRAM_ID, NAME, INPUT_DS, CHECKED_OUT) VALUES ('G1', 'checkord', 'K3', 0)"})
        Exec(sql);
    const Lines all = Marks("DATA_STRUCTURE");
    for (bool source : {true, false}) {
        BackEndRun run(source);
        for (const char* name : {"ByProcess", "ByActivity", "ByProgram", "ByMember", "ByHeldMember", "HeldHolder"})
            run.Delete("DataStructure", name);
        // The holder is in the file but not to be deleted.
        Structure(run, "Holder", {{"part", 4, "ByMember"}}).State(DvnfObject::StateUnchanged);
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51245|ByActivity|Check", "51148|HeldHolder|ADMIN",
                                         "51247|ByHeldMember|HeldHolder|p", "51247|ByMember|Holder|part",
                                         "51244|ByProcess|Ordering", "51246|ByProgram|checkord",
                                         "51148|HeldHolder|ADMIN"}));
    }
    EXPECT_EQ(Marks("DATA_STRUCTURE"), all);
}

TEST_P(DataStructureStore, AStructureAndItsUsersAreDeletedInOneRunWhateverTheOrderOfTheirNames) {
    for (bool source : {true, false}) {
        SCOPED_TRACE(source);
        Exec("DELETE FROM DVBT.DATA_STRUCTURE_MBR");
        Exec("DELETE FROM DVBT.DATA_STRUCTURE WHERE NAME <> 'Default Data Structure'");
        {
            // In a marking run the user first by name is a tombstone by the
            // time its structure comes, which no longer counts.
            BackEndRun run(true);
            Read(run, "structures-in-use.trx");
            ASSERT_EQ(run.be.SaveDataStructures(Db(), true), 0);
        }
        BackEndRun run(source);
        for (const char* name : {"Alpha", "Beta", "Yankee", "Zulu", "Ping", "Pong", "Self"})
            run.Delete("DataStructure", name);
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0);
        // A user met through the reference test is deleted at once, and the
        // loop passes over it when it comes to it.
        const std::string gone = source ? "51221|" : "51053|";
        EXPECT_EQ(run.Messages(), (Lines{gone + "Alpha", gone + "Beta", gone + "Pong", gone + "Ping", gone + "Self",
                                         gone + "Zulu", gone + "Yankee"}));
        if (source) {
            EXPECT_EQ(Marks("DATA_STRUCTURE"), (Lines{"Kept|0"}));
            EXPECT_EQ(Members().size(), 1u);  // the members went with their structures
        } else {
            EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.DATA_STRUCTURE WHERE CHECKED_OUT = 4"), "7");
            EXPECT_EQ(Members().size(), 9u);  // a tombstone keeps its members
        }
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(DataStructureStore);

}  // namespace

// A structure whose first-pass mark the database refuses to clear has its
// members written, but the save fails (the mark says the structure is
// unfinished); the next run clears the mark.
TEST_P(DataStructureStore, AMarkTheDatabaseRefusesToClearFailsTheSaveAndTheNextRunClearsIt) {
    Refuse("UPDATE", "DATA_STRUCTURE");
    {
        BackEndRun run(true);
        Structure(run, "Address", {{"Street"}});
        EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 8);
        Lines messages = run.Messages();
        ASSERT_EQ(messages.size(), 3u) << testing::PrintToString(messages);
        EXPECT_EQ(messages[1].rfind("51368|", 0), 0u) << messages[1];
        EXPECT_NE(messages[1].find("refused"), std::string::npos) << messages[1];
        EXPECT_EQ(messages[0] + " " + messages[2], "51021|Address 51022|Street");
        EXPECT_NE(Marks("DATA_STRUCTURE"), (Lines{"Address|0"}));
        EXPECT_EQ(Members(), (Lines{"Address|Street|1|-|1|-|-"}));
    }
    Refuse("UPDATE", "DATA_STRUCTURE", false);
    BackEndRun run(true);
    Structure(run, "Address", {{"Street"}});
    EXPECT_EQ(run.be.SaveDataStructures(Db(), true), 0) << testing::PrintToString(run.Messages());
    EXPECT_EQ(Marks("DATA_STRUCTURE"), (Lines{"Address|0"}));
    EXPECT_EQ(Members(), (Lines{"Address|Street|1|-|1|-|-"}));
}
