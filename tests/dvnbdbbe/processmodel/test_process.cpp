// Processes: replacement in an import, change in place in the editor,
// deletion, activities in two passes with their columns, staff assignment,
// support tools and container values, and the stored forms of durations and
// time events.
#include <gtest/gtest.h>

#include <algorithm>

#include "backendrun.h"

namespace {

using Lines = std::vector<std::string>;

// A container member as a file gives it.
struct Value {
    const char* name;
    std::string value;
};

class ProcessStore : public StoreTest {
protected:
    // An activity of the process's diagram; kind as "Implementation"."Type".
    template <class Run>
    static DvnfEntity& Act(Run& run, DvnfEntity& owner, const char* name, long kind = 5, const char* oid = "") {
        DvnfAttributeData diagram = owner.AttributeData()("Diagram");
        const DvnfString key(oid);
        DvnfEntity* activity = nullptr;
        switch (kind) {
            case 1: activity = &run.data.CreateProgramActivityByOID(diagram, key); break;
            case 3: activity = &run.data.CreateBlockActivityByOID(diagram, key); break;
            default: activity = &run.data.CreateInfoActivityByOID(diagram, key); break;
        }
        activity->Name(DvnfString(name));
        activity->Flags(7);
        return *activity;
    }
    // Links to the default structure, so that containers are kept.
    template <class Run>
    static void Structures(Run& run, DvnfEntity& entity, const char* prefix) {
        for (const char* way : {"HasInputStr", "HasOutputStr"})
            Link(run, entity, (std::string(prefix) + way).c_str(), "DataStructure", "Default Data Structure");
    }
    template <class Run>
    static void Link(Run& run, DvnfEntity& entity, const char* link, const char* type, const char* target) {
        run.data.AddLinkByName(entity, DvnfString(link), DvnfString(type), DvnfString(target), true, false);
    }
    static void Container(DvnfEntity& entity, const char* container, const std::vector<Value>& values) {
        for (const Value& v : values) {
            DvnfAttributeData member = entity.AttributeData()(container)("Members").NewSetElement();
            member("Name") = v.name;
            member("Value") = v.value;
        }
    }
    std::string Pid(const char* name) {
        return QueryValue(Db(), std::string("SELECT PID FROM DVBT.PROCESS WHERE NAME = '") + name + "'");
    }
    std::string Aid(const char* name) {
        return QueryValue(Db(), std::string("SELECT AID FROM DVBT.ACTIVITY WHERE NAME = '") + name + "'");
    }
    Lines Rows(const std::string& sql) { return QueryRows(Db(), sql); }
    // In byte order, whatever the collation of the database.
    Lines Sorted(const std::string& sql) {
        Lines rows = QueryRows(Db(), sql);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    // Rows of the activity tables that no ACTIVITY row owns.
    std::string Orphans() {
        std::string sql = "SELECT COUNT(*) FROM (";
        const char* tables[] = {"ACTIVITY_EXTENT", "ACT_CONTAINER", "ACTIVITY_BY_ROLE", "ACT_HAS_SUP_TOOL",
                                "BLOCK_ACTIVITY"};
        for (const char* t : tables)
            sql += std::string(t == tables[0] ? "" : " UNION ALL ") + "SELECT AID FROM DVBT." + t +
                   " WHERE AID NOT IN (SELECT AID FROM DVBT.ACTIVITY)";
        return QueryValue(Db(), sql + ") x");
    }
};

TEST_P(ProcessStore, ANewProcessHasOneRowUnderItsOwnNameWithItsActivitiesAndContainerValues) {
    const std::string longValue(32673, 'v');
    for (bool source : {true, false}) {
        SCOPED_TRACE(source);
        Exec("DELETE FROM DVBT.PROCESS");
        ImportRun run(source);
        DvnfEntity& order = run.Add("Process", "Order");
        Structures(run, order, "Process");
        Container(order, "InputContainer", {{"Number", "17"}, {"Empty", ""}, {"Long", longValue}});
        Container(order, "OutputContainer", {{"Result", "ok"}});
        DvnfEntity& check = Act(run, order, "Check");
        Structures(run, check, "Activity");
        Container(check, "InputContainer", {{"Number", "1"}, {"Number", "2"}, {"Number", "1"}});
        check.AttributeData()("Description") = std::string(300, 'd');
        Act(run, order, "Pack");  // no structure: the default, its containers dropped
        // Without the containers flag the new row still loses its first-pass mark.
        run.Add("Process", "Bare").Flags(1);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Bare", "51011|Bare", "51014|Bare", "51010|Order", "51015|Check",
                                         "51015|Pack", "51011|Order", "51014|Order"}));
        EXPECT_EQ(run.data.GetEntityByName(DvnfString("Process"), DvnfString("Order")).State(), 3);
        const std::string mark = source ? "0" : "5";
        EXPECT_EQ(Marks("PROCESS"), (Lines{"Bare|" + mark, "Order|" + mark}));
        const std::string pid = Pid("Order");
        EXPECT_EQ(Rows("SELECT INPUT_OR_OUTPUT, DOTTED_NAME, LENGTH(INITIAL_VALUE) FROM DVBT.PRC_CONTAINER WHERE "
                       "PID = '" + pid + "' ORDER BY INPUT_OR_OUTPUT, DOTTED_NAME"),
                  (Lines{"1|Long|32672", "1|Number|2", "2|Result|2"}));
        EXPECT_EQ(Rows("SELECT a.NAME, a.ACTIVITY_KIND, a.INSIDE_BLOCK, LENGTH(a.DESCRIPTION), e.DONE_BY, "
                       "e.START_OPTION, e.EXIT_OPTION FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = "
                       "a.AID WHERE a.PID = '" + pid + "' ORDER BY a.NAME"),
                  (Lines{"Check|2|<null>|254|12|1|2", "Pack|2|<null>|<null>|12|1|2"}));
        // One value twice is one row; two values of one name are two.
        EXPECT_EQ(Rows("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.ACT_CONTAINER ORDER BY INITIAL_VALUE"),
                  (Lines{"Number|1", "Number|2"}));
    }
}

TEST_P(ProcessStore, AnImportReplacesAProcessWithOverwriteOnAndLeavesItOffOrHeld) {
    {
        ImportRun run(true);
        Act(run, run.Add("Process", "Order"), "Check");
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string oldPid = Pid("Order");
    {
        // A marking run over a clean row; the holder stamp of the run goes.
        ImportRun run(false);
        run.be.SetCurrentUser(DvnString("ADMIN"));
        Act(run, run.Add("Process", "Order"), "Pack");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Order", "51015|Pack", "51011|Order", "51046|Order"}));
    }
    const std::string newPid = Pid("Order");
    EXPECT_NE(newPid, oldPid);
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT, CHECKED_OUT_BY FROM DVBT.PROCESS"), (Lines{"Order|3|<null>"}));
    // The old process went with all below it.
    EXPECT_EQ(Rows("SELECT a.NAME, e.DONE_BY FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = a.AID "
                   "WHERE a.PID = '" + newPid + "'"),
              (Lines{"Pack|12"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.ACTIVITY"), "1");
    EXPECT_EQ(Orphans(), "0");

    {
        ImportRun run(true);
        run.be.SetOverwriteOption(false);
        DvnfEntity& order = run.Add("Process", "Order");
        Act(run, order, "Other");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51078|Order"}));
        EXPECT_EQ(order.Name(), "Order");
    }
    Exec("UPDATE DVBT.PROCESS SET CHECKED_OUT_BY = 'SOMEONE'");
    {
        ImportRun run(true);
        run.be.SetCurrentUser(DvnString("ADMIN"));
        Act(run, run.Add("Process", "Order"), "Other");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51145|Order|SOMEONE"}));
    }
    EXPECT_EQ(Rows("SELECT PID, NAME, CHECKED_OUT, CHECKED_OUT_BY FROM DVBT.PROCESS"),
              (Lines{newPid + "|Order|3|SOMEONE"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"Pack"}));
}

TEST_P(ProcessStore, AReplacementThatCannotWriteItsGraphRowKeepsTheOldProcessWholeAndFree) {
    {
        ImportRun run(true);
        Act(run, run.Add("Process", "Order"), "Check");
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string oldPid = Pid("Order");
    if (IsPostgres()) {
        Exec("CREATE FUNCTION DVBT.REFUSE() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE EXCEPTION 'refused'; "
             "END $$");
        Exec("CREATE TRIGGER REFUSE BEFORE INSERT ON DVBT.PROCESS_GRAPH_ATTR FOR EACH ROW EXECUTE FUNCTION "
             "DVBT.REFUSE()");
    } else {
        Exec("CREATE TRIGGER DVBT.REFUSE BEFORE INSERT ON PROCESS_GRAPH_ATTR BEGIN SELECT RAISE(ABORT, 'refused'); "
             "END");
    }
    ImportRun run(true);
    run.be.SetCurrentUser(DvnString("ADMIN"));
    DvnfEntity& order = run.Add("Process", "Order");
    Act(run, order, "Pack");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
    const Lines messages = run.Messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.front(), "51010|Order");
    EXPECT_EQ(messages.back(), "51342|Order");
    EXPECT_EQ(order.Name(), "Order");
    EXPECT_EQ(Rows("SELECT PID, NAME, CHECKED_OUT_BY FROM DVBT.PROCESS"), (Lines{oldPid + "|Order|<null>"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"Check"}));
}

TEST_P(ProcessStore, ADeletionRemovesTheProcessWithAllBelowItOrLeavesATombstone) {
    {
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        Container(order, "OutputContainer", {{"Result", "ok"}});
        Structures(run, order, "Process");
        Act(run, order, "Check");
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    {
        ImportRun run(false);
        run.Delete("Process", "Order");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51046|Order"}));
        EXPECT_EQ(Marks("PROCESS"), (Lines{"Order|4"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.ACTIVITY_EXTENT"), "1");
    }
    for (const char* expected : {"51218|Order", "51273|DELETE PROCESS Order"}) {
        ImportRun run(true);
        run.Delete("Process", "Order");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{expected}));
    }
    for (const char* table : {"PROCESS", "ACTIVITY", "ACTIVITY_EXTENT", "PRC_CONTAINER", "PROCESS_GRAPH_ATTR"})
        EXPECT_EQ(QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table), "0") << table;
}

TEST_P(ProcessStore, AnEditorRenameKeepsTheKeyAndRefusesANameThatIsTaken) {
    {
        ImportRun run(true);
        run.Add("Process", "Order");
        run.Add("Process", "Billing");
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string pid = Pid("Order");
    for (const char* name : {"Billing", "Invoice"}) {
        BackEndRun run(true);
        DvnfEntity& order = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString(name));
        order.State(DvnfObject::StateChanged);
        order.Flags(7);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        EXPECT_EQ(run.Messages(), (Lines{std::string(name) == "Billing" ? "51078|Billing" : "51046|Invoice"}));
    }
    EXPECT_EQ(Pid("Invoice"), pid);
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Billing|0", "Invoice|3"}));
}

TEST_P(ProcessStore, AnEditorSaveWritesOnlyWhatChangedAndMarksTheProcessChanged) {
    {
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        Act(run, order, "Check");
        Act(run, order, "Pack").AttributeData()("Description") = "packing";
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string pid = Pid("Order");
    Exec("UPDATE DVBT.PROCESS SET DESCRIPTION = 'kept'");
    {
        // An unchanged process with one changed activity and one new one.
        BackEndRun run(true);
        DvnfEntity& order = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString("Order"));
        order.AttributeData()("Icon") = "NEW";
        order.State(DvnfObject::StateUnchanged);
        order.Flags(7);
        DvnfEntity& check = Act(run, order, "Check", 5, Aid("Check").c_str());
        check.AttributeData()("Description") = "checking";
        check.State(DvnfObject::StateChanged);
        Act(run, order, "Pack", 5, Aid("Pack").c_str()).State(DvnfObject::StateUnchanged);
        Act(run, order, "Ship");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51047|Check", "51015|Ship", "51046|Order"}));
    }
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT, DESCRIPTION, USER_DEFINED_ICON FROM DVBT.PROCESS"),
              (Lines{"Order|3|kept|<null>"}));
    EXPECT_EQ(Rows("SELECT NAME, DESCRIPTION FROM DVBT.ACTIVITY ORDER BY NAME"),
              (Lines{"Check|checking", "Pack|packing", "Ship|<null>"}));
}

TEST_P(ProcessStore, AnActivityDeletedInTheEditorTakesAllBelowItAndABlockItsWholeInside) {
    // B1 holds B2, which holds A3; X stays. A connector from X to B1, one
    // inside B2 and a source inside B1 name what goes.
    for (const char* sql : {
             "INSERT INTO DVBT.PROCESS (PID, NAME, CHECKED_OUT) VALUES ('P1', 'Flow', 0)",
             "INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK, ACTIVITY_KIND) VALUES ('B1', 'B1', 'P1', NULL, "
             "4), ('B2', 'B2', 'P1', 'B1', 4), ('A3', 'A3', 'P1', 'B2', 2), ('X', 'X', 'P1', NULL, 2)",
             "INSERT INTO DVBT.BLOCK_ACTIVITY (AID) VALUES ('B1'), ('B2')",
             "INSERT INTO DVBT.ACTIVITY_EXTENT (AID) VALUES ('A3'), ('X')",
             "INSERT INTO DVBT.ACT_CONTAINER (AID, INPUT_OR_OUTPUT, DOTTED_NAME, INITIAL_VALUE) VALUES ('A3', 1, "
             "'n', 'v'), ('X', 1, 'n', 'v')",
             "INSERT INTO DVBT.ACTIVITY_BY_ROLE (AID, ROLE) VALUES ('B2', 'R1'), ('A3', 'R1')",
             "INSERT INTO DVBT.CONTROL_CONNECTOR (PID, FROM_ACTIVITY, TO_ACTIVITY, INSIDE_BLOCK) VALUES ('P1', 'X', "
             "'B1', NULL), ('P1', 'A3', 'A3', 'B2')",
             "INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('S1', 1, 'P1', 'B1')"})
        Exec(sql);
    BackEndRun run(true);
    DvnfEntity& flow = run.data.CreateEntity(DvnfString("Process"), DvnfString("P1"), DvnfString("Flow"));
    flow.State(DvnfObject::StateUnchanged);
    Act(run, flow, "B1", 3, "B1").State(DvnfObject::StateDeleted);
    Act(run, flow, "X", 5, "X").State(DvnfObject::StateUnchanged);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51177|B1", "51046|Flow"}));
    EXPECT_EQ(Rows("SELECT AID FROM DVBT.ACTIVITY"), (Lines{"X"}));
    EXPECT_EQ(Orphans(), "0");
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CONTROL_CONNECTOR"), "0");
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.SOURCE"), "0");
    EXPECT_EQ(Rows("SELECT AID FROM DVBT.ACT_CONTAINER"), (Lines{"X"}));
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Flow|3"}));
}

TEST_P(ProcessStore, WithoutItsAttributesAnActivityKeepsExtentToolsAndContainers) {
    AddProgram(Db(), "G1", "editor");
    AddRole(Db(), "R1", "Clerk");
    {
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        DvnfEntity& check = Act(run, order, "Check");
        Structures(run, check, "Activity");
        Container(check, "InputContainer", {{"n", "v"}});
        check.AttributeData()("DoneBy")("AssignType") = 1L;
        Link(run, check, "DoneByRoleMember", "Role", "Clerk");
        Link(run, check, "HasSupportTool", "Program", "editor");
        Link(run, check, "HasSupportTool", "Program", "nowhere");
        check.AttributeData()("Priority")("PriorityType") = 2L;
        check.AttributeData()("Priority")("Number") = 7L;
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Order", "51015|Check", "51105|nowhere", "51011|Order",
                                         "51014|Order"}));
    }
    const std::string aid = Aid("Check");
    const Lines kept = Rows("SELECT e.DONE_BY, e.PRIORITY, t.PROGRAM_ID, c.INITIAL_VALUE, r.ROLE FROM "
                            "DVBT.ACTIVITY_EXTENT e, DVBT.ACT_HAS_SUP_TOOL t, DVBT.ACT_CONTAINER c, "
                            "DVBT.ACTIVITY_BY_ROLE r WHERE e.AID = '" + aid + "' AND t.AID = e.AID AND c.AID = e.AID "
                            "AND r.AID = e.AID");
    EXPECT_EQ(kept, (Lines{"1|7|G1|v|R1"}));
    BackEndRun run(true);
    DvnfEntity& order = run.data.CreateEntity(DvnfString("Process"), DvnfString(Pid("Order").c_str()),
                                              DvnfString("Order"));
    order.State(DvnfObject::StateUnchanged);
    DvnfEntity& check = Act(run, order, "Check", 5, aid.c_str());
    check.State(DvnfObject::StateChanged);
    check.Flags(0);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
    EXPECT_EQ(Rows("SELECT e.DONE_BY, e.PRIORITY, t.PROGRAM_ID, c.INITIAL_VALUE, r.ROLE FROM "
                   "DVBT.ACTIVITY_EXTENT e, DVBT.ACT_HAS_SUP_TOOL t, DVBT.ACT_CONTAINER c, DVBT.ACTIVITY_BY_ROLE r "
                   "WHERE e.AID = '" + aid + "' AND t.AID = e.AID AND c.AID = e.AID AND r.AID = e.AID"),
              kept);
}

TEST_P(ProcessStore, ActivityColumnsAndStaffAssignmentFollowTheirAttributes) {
    AddRole(Db(), "R1", "Clerk");
    AddRole(Db(), "R2", "Manager");
    AddOrganization(Db(), "O1", "Shipping");
    AddPerson(Db(), TestPerson{"P1", "CLERK", "G", "pw"});
    ImportRun run(true);
    DvnfEntity& order = run.Add("Process", "Order");
    Act(run, order, "Icon8").AttributeData()("Icon") = "ABCDEFGH";
    Act(run, order, "Icon9").AttributeData()("Icon") = "ABCDEFGHI";
    DvnfEntity& layout = Act(run, order, "Layout");
    layout.AttributeData()("Exit")("Condition") = std::string(5000, 'c');
    layout.AttributeData()("Start")("Condition") = "AND";
    layout.AttributeData()("Layout")("Xpos") = 10L;
    layout.AttributeData()("NamePos")("Ypos") = 3L;
    layout.AttributeData()("NotifyType") = 2L;
    for (long type : {0L, 13L}) {
        DvnfEntity& none = Act(run, order, ("Type" + std::to_string(type)).c_str());
        none.AttributeData()("DoneBy")("AssignType") = type;
        Link(run, none, "DoneByRoleMember", "Role", "Clerk");
    }
    DvnfEntity& members = Act(run, order, "Members");
    DvnfAttributeData doneBy = members.AttributeData()("DoneBy");
    doneBy("AssignType") = 1L;
    doneBy("LevelFrom") = 2L;
    doneBy("LevelTo") = 5L;
    doneBy("MembersFromInput").NewSetElement() = "who";
    for (const char* role : {"Clerk", "Ghost", "Manager"}) Link(run, members, "DoneByRoleMember", "Role", role);
    Link(run, members, "DoneByOrg", "Organization", "Shipping");
    DvnfEntity& persons = Act(run, order, "Persons");
    persons.AttributeData()("DoneBy")("AssignType") = 3L;
    persons.AttributeData()("DoneBy")("PersonsFromInput").NewSetElement() = "Clerk1";
    for (const char* person : {"CLERK", "NOBODY"}) Link(run, persons, "DoneByPerson", "Person", person);
    for (const char* path : {"Persons", "Persons.Inner"}) {
        DvnfEntity& starter = Act(run, order, std::string(path).find('.') == std::string::npos ? "Starter" : "BadPath");
        starter.AttributeData()("DoneBy")("AssignType") = 8L;
        starter.AttributeData()("DoneBy")("StarterOf") = path;
    }
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    for (const char* expected : {"51118|ABCDEFGHI", "51132|Ghost", "51130|Persons.Inner"})
        EXPECT_EQ(std::count(messages.begin(), messages.end(), expected), 1) << expected;
    EXPECT_EQ(Rows("SELECT a.NAME, a.USER_DEFINED_ICON, LENGTH(a.EXIT_CONDITION), a.START_CONDITION, a.XPOS, a.YPOS, "
                   "a.NAME_XPOS, a.NAME_YPOS, e.DONE_BY, e.MIN_LEVEL, e.MAX_LEVEL, e.ORGANIZATION, e.INCL_CHILD_ORG, "
                   "e.FIRST_NOT_TARGET, e.NOTIFICATION_INTVL FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e ON "
                   "e.AID = a.AID ORDER BY a.NAME"),
              (Lines{
                  "BadPath|<null>|<null>|1|<null>|<null>|<null>|<null>|8|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Icon8|ABCDEFGH|<null>|1|<null>|<null>|<null>|<null>|12|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Icon9|<null>|<null>|1|<null>|<null>|<null>|<null>|12|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Layout|<null>|4097|2|10|<null>|0|3|12|<null>|<null>|<null>|<null>|2|0",
                  "Members|<null>|<null>|1|<null>|<null>|<null>|<null>|1|2|5|O1|1|<null>|<null>",
                  "Persons|<null>|<null>|1|<null>|<null>|<null>|<null>|3|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Starter|<null>|<null>|1|<null>|<null>|<null>|<null>|8|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Type0|<null>|<null>|1|<null>|<null>|<null>|<null>|12|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Type13|<null>|<null>|1|<null>|<null>|<null>|<null>|12|<null>|<null>|<null>|<null>|<null>|<null>",
              }));
    auto of = [&](const char* table, const char* column) {
        return Rows(std::string("SELECT a.NAME, t.") + column + " FROM DVBT." + table +
                    " t JOIN DVBT.ACTIVITY a ON a.AID = t.AID ORDER BY a.NAME, t." + column);
    };
    EXPECT_EQ(of("ACTIVITY_BY_ROLE", "ROLE"), (Lines{"Members|R1", "Members|R2"}));
    EXPECT_EQ(of("ACT_BY_ROLE_F_CONT", "CONTAINER_MEMBER"), (Lines{"Members|who"}));
    EXPECT_EQ(of("ACTIVITY_BY_PERSON", "PERSON_ID"), (Lines{"Persons|P1"}));
    EXPECT_EQ(of("ACT_BY_PERS_F_CONT", "CONTAINER_MEMBER"), (Lines{"Persons|Clerk1"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT STARTER_OF_AID FROM DVBT.ACTIVITY_EXTENT e JOIN DVBT.ACTIVITY a ON a.AID = "
                               "e.AID WHERE a.NAME = 'Starter'"),
              Aid("Persons"));
}

TEST_P(ProcessStore, CoordinatorsManagersAndPersonsToNotifyAreResolvedOrWarnedAbout) {
    AddRole(Db(), "R1", "Clerk");
    AddOrganization(Db(), "O1", "Shipping");
    AddPerson(Db(), TestPerson{"P1", "CLERK", "G", "pw"});
    ImportRun run(true);
    DvnfEntity& order = run.Add("Process", "Order");
    order.AttributeData()("Icon") = "TOOLONGICON";
    Link(run, order, "ProcessHasInputStr", "DataStructure", "Missing");
    struct Case {
        const char* name;
        long assignType;         // 0: no "DoneBy"
        const char* link;        // to the target below
        const char* type;
        const char* target;
        const char* fromInput;   // attribute under "DoneBy" and its value
        const char* value;
    };
    const Case cases[] = {
        {"Coord", 2, "DoneByRoleCoordinator", "Role", "Clerk", nullptr, nullptr},
        {"CoordIn", 2, nullptr, nullptr, nullptr, "CoordinatorFromInput", "boss"},
        {"NoCoord", 2, nullptr, nullptr, nullptr, nullptr, nullptr},
        {"Mgr", 11, "DoneByMgrOrganization", "Organization", "Shipping", nullptr, nullptr},
        {"MgrIn", 11, nullptr, nullptr, nullptr, "MgrOrganizationFromInput", "org"},
        {"BadOrg", 11, "DoneByMgrOrganization", "Organization", "Nowhere", nullptr, nullptr},
        {"Notify", 0, "NotifiedPerson", "Person", "CLERK", nullptr, nullptr},
        {"NotifyNobody", 0, "NotifiedPerson", "Person", "NOBODY", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        DvnfEntity& activity = Act(run, order, c.name);
        DvnfAttributeData attributes = activity.AttributeData();
        if (c.assignType) attributes("DoneBy")("AssignType") = c.assignType;
        if (c.fromInput) attributes("DoneBy")(c.fromInput) = c.value;
        if (c.link) Link(run, activity, c.link, c.type, c.target);
        if (!c.assignType) attributes("NotifyType") = 5L;
    }
    DvnfAttributeData notify = run.data.GetEntityByName(DvnfString("Activity"), DvnfString("Notify")).AttributeData();
    notify("ExpirationDuration")("Hours") = 1L;
    notify("DecisionFromInput") = "d";
    notify("Priority")("PriorityType") = 1L;
    notify("Priority")("FromInput") = "prio";
    notify("Start")("Manual") = true;
    notify("Exit")("Manual") = true;
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    for (const char* expected :
         {"51118|TOOLONGICON", "51102|Missing", "51168|NoCoord", "51131|Nowhere", "51136|NOBODY|NotifyNobody"})
        EXPECT_EQ(std::count(messages.begin(), messages.end(), expected), 1) << expected;
    EXPECT_EQ(Rows("SELECT USER_DEFINED_ICON, INPUT_DS, OUTPUT_DS FROM DVBT.PROCESS"),
              (Lines{"<null>|DEFAULT_DATA_STRUCTURE|DEFAULT_DATA_STRUCTURE"}));
    EXPECT_EQ(Rows("SELECT a.NAME, e.DONE_BY, e.ORGANIZATION, e.ORG_CONT_MEMBER, e.FIRST_NOT_TARGET, "
                   "e.FIRST_NOT_ASSGMNT, e.SCND_NOT_CONT_MBR, e.EXPIRATION_INTVL, e.PRIO_CONT_MEMBER, "
                   "e.PRIO_FROM_INPUT, e.START_OPTION, e.EXIT_OPTION FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e "
                   "ON e.AID = a.AID ORDER BY a.NAME"),
              (Lines{
                  "BadOrg|11|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "Coord|2|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "CoordIn|2|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "Mgr|11|O1|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "MgrIn|11|<null>|org|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "NoCoord|2|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
                  "Notify|12|<null>|<null>|4|P1|d|3600|prio|0|1|1",
                  "NotifyNobody|12|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|2",
              }));
    EXPECT_EQ(Rows("SELECT a.NAME, r.ROLE FROM DVBT.ACTIVITY_BY_ROLE r JOIN DVBT.ACTIVITY a ON a.AID = r.AID"),
              (Lines{"Coord|R1"}));
    EXPECT_EQ(Rows("SELECT a.NAME, r.CONTAINER_MEMBER FROM DVBT.ACT_BY_ROLE_F_CONT r JOIN DVBT.ACTIVITY a ON "
                   "a.AID = r.AID"),
              (Lines{"CoordIn|boss"}));
}

TEST_P(ProcessStore, TextsFromAFileMatchOnlyThemselvesWhateverQuotesWildcardsOrCase) {
    const std::vector<Value> values = {{"n_1", "v%"}, {"nx1", "vv"}, {"it's", "O'Neil"}, {"Case", "a"},
                                       {"case", "a"}, {"Case", "A"}, {"%", "_"},         {"x", "%"}};
    for (int round = 0; round < 2; ++round) {
        // The second round replaces the process of the same odd name.
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Bob's 100% _order_");
        Structures(run, order, "Process");
        Container(order, "InputContainer", values);
        DvnfEntity& check = Act(run, order, "it's");
        Structures(run, check, "Activity");
        Container(check, "OutputContainer", values);
        check.AttributeData()("DoneBy")("AssignType") = 1L;
        for (const char* member : {"m_1", "mx1", "M_1", "it's"})
            check.AttributeData()("DoneBy")("MembersFromInput").NewSetElement() = member;
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const Lines stored = {"%|_", "Case|A", "Case|a", "case|a", "it's|O'Neil", "n_1|v%", "nx1|vv", "x|%"};
    EXPECT_EQ(Sorted("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.PRC_CONTAINER"), stored);
    EXPECT_EQ(Sorted("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.ACT_CONTAINER"), stored);
    EXPECT_EQ(Sorted("SELECT CONTAINER_MEMBER FROM DVBT.ACT_BY_ROLE_F_CONT"),
              (Lines{"M_1", "it's", "m_1", "mx1"}));
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Bob's 100% _order_|0"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"it's"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProcessStore);

// ------------------------------------------------------------------ stored forms

TEST(StoredForms, DurationsAreSecondsWrappedTo32BitsAndTimeEventsAreExactTexts) {
    DvnConvCoreDbBe be;
    const char* units[] = {"Years", "Months", "Weeks", "Days", "Hours", "Minutes", "Seconds"};
    struct Duration {
        std::vector<long> counts;  // in the order of units; -1: not given
        long seconds;
    };
    const Duration durations[] = {
        {{1, 1, 1, 1, 1, 1, 1}, 34822861},
        {{}, 0},
        {{-1, -1, -1, -1, -1, -1, 0}, 0},
        {{68, -1, -1, 10}, 2145312000},
        {{69}, -2118983296},          // 2175984000 does not fit in 32 bits
        {{-1, -1, -1, -1, -1, -1, 2147483647}, 2147483647},
        {{-1, -1, -1, -1, -1, 1, 2147483647}, -2147483589},
    };
    int n = 0;
    for (const Duration& d : durations) {
        const std::string name = "P" + std::to_string(++n);
        DvnfEntity& e = be.CoreData()->CreateEntity(DvnfString("Process"), DvnfString(""), DvnfString(name.c_str()));
        DvnfAttributeData period = e.AttributeData()("NotifyDuration");
        for (size_t i = 0; i < d.counts.size(); ++i)
            if (d.counts[i] >= 0) period(units[i]) = d.counts[i];
        EXPECT_EQ(be.SetTimeInterval(period), d.seconds) << d.seconds;
    }
    struct Event {
        long every, on, hours, minutes;  // -1: not given
        const char* text;
    };
    const Event events[] = {
        {-1, -1, -1, -1, "ANYTIME"},
        {-1, 3, -1, -1, "EVERY WEDNESDAY"},
        {2, 1, 14, 5, "EVERY MONTH ON MONDAY AT 14.05"},
        {-1, -1, 7, -1, " AT 7.00"},
        {-1, -1, -1, 30, " AT 30"},
        {9, -1, -1, -1, "EVERY "},
        {1, -1, 9, 5, "EVERY DAY AT 9.05"},
        {4, 7, -1, -1, "EVERY YEAR ON SUNDAY"},
        {3, 8, -1, 0, "EVERY WEEK ON  AT 00"},
    };
    for (const Event& ev : events) {
        const std::string name = "E" + std::to_string(++n);
        DvnfEntity& e = be.CoreData()->CreateEntity(DvnfString("Process"), DvnfString(""), DvnfString(name.c_str()));
        DvnfAttributeData event = e.AttributeData()("Start");
        const std::pair<const char*, long> parts[] = {
            {"Every", ev.every}, {"On", ev.on}, {"AtHours", ev.hours}, {"AtMinutes", ev.minutes}};
        for (const auto& [name, value] : parts)
            if (value >= 0) event(name) = value;
        EXPECT_EQ(std::string(be.SetTimeEvent(event).c_str()), ev.text);
    }
}

}  // namespace
