// Activity kinds (program, process, bundle and block rows, nested blocks) and
// the process attributes (PROCESS, PROCESS_TOPOL_ATTR, PROCESS_GRAPH_ATTR).
#include <gtest/gtest.h>

#include <algorithm>

#include "backendrun.h"

namespace {

using Lines = std::vector<std::string>;

class KindStore : public StoreTest {
protected:
    // An activity of a diagram (a process's or a block's), of the kind as
    // "Implementation"."Type".
    static DvnfEntity& Act(ImportRun& run, DvnfAttributeData diagram, const char* name, long kind = 5) {
        const DvnfString key("");
        DvnfEntity* activity = nullptr;
        switch (kind) {
            case 1: activity = &run.data.CreateProgramActivityByOID(diagram, key); break;
            case 2: activity = &run.data.CreateProcessActivityByOID(diagram, key); break;
            case 3: activity = &run.data.CreateBlockActivityByOID(diagram, key); break;
            case 4: activity = &run.data.CreateBundleActivityByOID(diagram, key); break;
            default: activity = &run.data.CreateInfoActivityByOID(diagram, key); break;
        }
        activity->Name(DvnfString(name));
        activity->Flags(7);
        return *activity;
    }
    static DvnfEntity& Act(ImportRun& run, DvnfEntity& owner, const char* name, long kind = 5) {
        return Act(run, owner.AttributeData()("Diagram"), name, kind);
    }
    // The implementation object of an activity ("AsProgram", ...).
    static DvnfEntity& Impl(DvnfEntity& activity, const char* as) {
        return activity.AttributeData()("Implementation")(as).AsEntity();
    }
    static void Link(ImportRun& run, DvnfEntity& entity, const char* link, const char* type, const char* target) {
        run.data.AddLinkByName(entity, DvnfString(link), DvnfString(type), DvnfString(target), true, false);
    }
    Lines Rows(const std::string& sql) { return QueryRows(Db(), sql); }
    // Rows of a kind table with the name of their activity in front.
    Lines KindRows(const std::string& table, const std::string& columns) {
        Lines rows = Rows("SELECT a.NAME, " + columns + " FROM DVBT." + table +
                          " t JOIN DVBT.ACTIVITY a ON a.AID = t.AID");
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    static size_t Count(const Lines& lines, const std::string& line) {
        return static_cast<size_t>(std::count(lines.begin(), lines.end(), line));
    }
    // Rows of the kind and extent tables that no ACTIVITY row owns.
    std::string Orphans() {
        std::string sql = "SELECT COUNT(*) FROM (";
        const char* tables[] = {"ACTIVITY_EXTENT", "PROGRAM_ACTIVITY", "PROCESS_ACTIVITY", "BUNDLE_ACTIVITY",
                                "BLOCK_ACTIVITY"};
        for (const char* t : tables)
            sql += std::string(t == tables[0] ? "" : " UNION ALL ") + "SELECT AID FROM DVBT." + t +
                   " WHERE AID NOT IN (SELECT AID FROM DVBT.ACTIVITY)";
        return QueryValue(Db(), sql + ") x");
    }
};

// ------------------------------------------------------------------ program activities

TEST_P(KindStore, AProgramActivityFindsItsProgramAndItsServerInEachShapeOfItsName) {
    AddProgram(Db(), "PR1", "checkord");
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystemGroup(Db(), "G2", "Other");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    AddSystem(Db(), "S2", "REMOTE", "G2");
    AddServer(Db(), "PE_SERVER", "PES1", "PES1", "S1");
    AddServer(Db(), "USER_PE_SERVER", "U1", "UPES", "S2");
    struct Case {
        const char* activity;
        const char* server;         // the dotted name; null: no link
        const char* withGroups;     // PE_SERVER while groups exist
        const char* withoutGroups;  // PE_SERVER once none is left
    };
    const Case cases[] = {
        {"None", nullptr, "<null>", "<null>"},
        {"Server", "PES1", "PES1", "<null>"},
        {"UserServer", "UPES", "U1", "<null>"},
        {"WithSystem", "PES1.DVNSYS", "PES1", "<null>"},
        {"UserWithSystem", "UPES.REMOTE", "U1", "<null>"},
        {"WithGroup", "PES1.DVNSYS.Other", "PES1", "<null>"},
        {"WrongSystem", "PES1.REMOTE", "<null>", "<null>"},
        {"NoSuchSystem", "PES1.GHOST", "<null>", "<null>"},
        {"NoSuchGroup", "PES1.DVNSYS.Nowhere", "<null>", "<null>"},
        {"NoSuchServer", "GHOST", "<null>", "<null>"},
        {"EmptyPart", "PES1..SYS_GRP", "<null>", "<null>"},
    };
    for (bool groups : {true, false}) {
        SCOPED_TRACE(groups);
        if (!groups) Exec("DELETE FROM DVBT.SYSTEM_GROUP");
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        for (const Case& c : cases) {
            DvnfEntity& program = Impl(Act(run, order, c.activity, 1), "AsProgram");
            Link(run, program, "ReferencesProgram", "Program", "checkord");
            if (c.server) Link(run, program, "ReferencesPEServer", "Server", c.server);
        }
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);  // 51184 is no warning
        Lines expected, reported;
        for (const Case& c : cases) {
            expected.push_back(std::string(c.activity) + "|PR1|" + (groups ? c.withGroups : c.withoutGroups));
            if ((groups ? c.withGroups : c.withoutGroups) == std::string("<null>") && c.server)
                reported.push_back(std::string("51184|") + c.server + "|" + c.activity);
        }
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID, t.PE_SERVER"), expected);
        const Lines messages = run.Messages();
        Lines found;
        std::copy_if(messages.begin(), messages.end(), std::back_inserter(found),
                     [](const std::string& m) { return m.rfind("51184|", 0) == 0; });
        EXPECT_EQ(found, reported);
    }
}

TEST_P(KindStore, AProgramActivityWithoutItsProgramKeepsOnlyItsActivityRow) {
    AddProgram(Db(), "PR1", "checkord");
    ImportRun run(true);
    DvnfEntity& order = run.Add("Process", "Order");
    // Synchronization 1 and 2 trade places, absent is 1, any other leaves NULL.
    const std::pair<const char*, long> synchronizations[] = {{"Sync1", 1}, {"Sync2", 2}, {"Sync7", 7}, {"Sync", -1}};
    for (const auto& [name, value] : synchronizations) {
        DvnfEntity& program = Impl(Act(run, order, name, 1), "AsProgram");
        if (value >= 0) program.AttributeData()("Synchronization") = value;
        Link(run, program, "ReferencesProgram", "Program", "checkord");
    }
    // A program that the link gives by key alone.
    DvnfEntity& byKey = Impl(Act(run, order, "ByKey", 1), "AsProgram");
    run.data.AddLinkByOID(byKey, DvnfString("ReferencesProgram"), DvnfString("Program"), DvnfString("PR1"));
    byKey.AttributeData()("PEServerFromInput") = "server";
    Link(run, Impl(Act(run, order, "Unknown", 1), "AsProgram"), "ReferencesProgram", "Program", "nothere");
    Act(run, order, "NoLink", 1);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    EXPECT_EQ(Count(messages, "51105|nothere"), 1u);
    EXPECT_EQ(Count(messages, "51105|"), 1u);  // the link that names nothing
    EXPECT_EQ(Count(messages, "51015|Unknown"), 1u);
    EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID, t.PES_CONT_MEMBER, t.SYNCHRONIZATION"),
              (Lines{"ByKey|PR1|server|1", "Sync1|PR1|<null>|2", "Sync2|PR1|<null>|1", "Sync7|PR1|<null>|<null>",
                     "Sync|PR1|<null>|1"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.ACTIVITY WHERE ACTIVITY_KIND = 1"), "7");
}

// ------------------------------------------------------------------ process activities

TEST_P(KindStore, AProcessActivityHoldsTheCalledNameOrAMemberAndAProcessMayCallItself) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);  // the second import replaces the process
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        DvnfEntity& call = Impl(Act(run, order, "Call", 2), "AsProcess");
        Link(run, call, "ReferencesProcess", "Process", "Invoice");
        Link(run, call, "ReferencesSystem", "System", "DVNSYS");
        DvnfEntity& member = Impl(Act(run, order, "ByMember", 2), "AsProcess");
        member.AttributeData()("ProcessFromInput") = "which";
        member.AttributeData()("SystemFromInput") = "where";
        Link(run, member, "ReferencesProcess", "Process", "Invoice");  // the member wins
        DvnfEntity& ghost = Impl(Act(run, order, "BadSystem", 2), "AsProcess");
        Link(run, ghost, "ReferencesProcess", "Process", "Invoice");
        Link(run, ghost, "ReferencesSystem", "System", "GHOST");
        Act(run, order, "Nothing", 2);
        Link(run, Impl(Act(run, order, "Self", 2), "AsProcess"), "ReferencesProcess", "Process", "Order");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Order", "51015|Call", "51015|ByMember", "51015|BadSystem",
                                         "51106|GHOST", "51015|Nothing", "51015|Self", "51011|Order",
                                         round == 0 ? "51014|Order" : "51046|Order"}));
        EXPECT_EQ(KindRows("PROCESS_ACTIVITY", "t.PROCESS, t.PROC_CONT_MEMBER, t.SYSTEM, t.SYSTEM_CONT_MEMBER"),
                  (Lines{"BadSystem|Invoice|<null>|<null>|<null>", "ByMember|<null>|which|<null>|where",
                         "Call|Invoice|<null>|S1|<null>", "Self|Order|<null>|<null>|<null>"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.ACTIVITY"), "5");
        EXPECT_EQ(Orphans(), "0");
    }
}

// ------------------------------------------------------------------ blocks

TEST_P(KindStore, BlocksNestThreeDeepWithTheirOwnActivitiesAndTransactionsStayBalanced) {
    AddProgram(Db(), "PR1", "checkord");
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);  // the second import replaces all of it
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        Act(run, order, "Work");
        DvnfEntity& b1 = Act(run, order, "B1", 3);
        Impl(b1, "AsBlock").AttributeData()("RcCreation") = 0L;
        Impl(b1, "AsBlock").AttributeData()("WindowLayout")("ZoomFactor") = 150L;
        DvnfAttributeData d1 = Impl(b1, "AsBlock").AttributeData()("Diagram");
        Act(run, d1, "Work");
        DvnfEntity& b2 = Act(run, d1, "B2", 3);
        Impl(b2, "AsBlock").AttributeData()("RcCreation") = 2L;
        Impl(b2, "AsBlock").AttributeData()("WindowLayout")("ShowConditions") = 3L;
        DvnfAttributeData d2 = Impl(b2, "AsBlock").AttributeData()("Diagram");
        Act(run, d2, "Work");
        DvnfEntity& b3 = Act(run, d2, "B3", 3);  // no "WindowLayout", no "RcCreation"
        DvnfAttributeData d3 = Impl(b3, "AsBlock").AttributeData()("Diagram");
        Link(run, Impl(Act(run, d3, "Work", 1), "AsProgram"), "ReferencesProgram", "Program", "checkord");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_FALSE(Db().InTransaction());
        EXPECT_EQ(run.Messages(),
                  (Lines{"51010|Order", "51015|Work", "51015|B1", "51012|B1", "51015|Work", "51015|B2", "51012|B2",
                         "51015|Work", "51015|B3", "51012|B3", "51015|Work", "51013|B3", "51013|B2", "51013|B1",
                         "51011|Order", round == 0 ? "51014|Order" : "51046|Order"}));
        // Each Work in its own block, with its extent from the second pass.
        Lines activities = Rows("SELECT a.NAME, b.NAME, e.DONE_BY FROM DVBT.ACTIVITY a LEFT JOIN DVBT.ACTIVITY b ON "
                                "b.AID = a.INSIDE_BLOCK LEFT JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = a.AID");
        std::sort(activities.begin(), activities.end());
        EXPECT_EQ(activities,
                  (Lines{"B1|<null>|<null>", "B2|B1|<null>", "B3|B2|<null>", "Work|<null>|12", "Work|B1|12",
                         "Work|B2|12", "Work|B3|12"}));
        EXPECT_EQ(KindRows("BLOCK_ACTIVITY", "t.RETURN_CODE_SET, t.ZOOM_FACTOR, t.SHOW_CONNECTORS, "
                                             "t.SHOW_EXIT_COND, t.SHOW_TRANS_COND, t.SHOW_TEXT_ANNOTAT"),
                  (Lines{"B1|3|150|1|0|0|0", "B2|1|<null>|1|0|1|0", "B3|1|<null>|1|0|0|1"}));
        EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID"), (Lines{"Work|PR1"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PROCESS"), "1");
        EXPECT_EQ(Orphans(), "0");
    }
}

// ------------------------------------------------------------------ bundles

TEST_P(KindStore, ABundleStoresItsPatternActivityInsideItAndItsSettings) {
    ImportRun run(true);
    DvnfEntity& order = run.Add("Process", "Order");
    struct Case {
        const char* bundle;
        std::vector<std::pair<const char*, long>> numbers;
        const char* member;  // "InstantiatingMember"; null: none
        bool fromInput;      // "NrOfInstancesFromInput"
    };
    const Case cases[] = {
        {"Set",
         {{"RestartOption", 2}, {"PlanningMode", 3}, {"Assignment", 2}, {"NrOfInstances", 4}, {"RcCreation", 0}},
         "Number",
         false},
        {"Defaults", {}, "n", true},
        {"Outside", {{"RestartOption", 5}, {"PlanningMode", 9}, {"Assignment", 0}, {"RcCreation", 7}}, "n", false},
        {"NoMember", {{"RcCreation", 2}}, nullptr, false},
    };
    for (const Case& c : cases) {
        DvnfEntity& bundle = Impl(Act(run, order, c.bundle, 4), "AsBundle");
        DvnfAttributeData attributes = bundle.AttributeData();
        for (const auto& [name, value] : c.numbers) attributes(name) = value;
        if (c.member) attributes("InstantiatingMember") = c.member;
        if (c.fromInput) attributes("NrOfInstancesFromInput") = "count";
        if (std::string(c.bundle) == "Set") attributes("PromptForPlanning") = false;
        Act(run, attributes("Diagram"), "Mail").AttributeData()("Description") = c.bundle;
    }
    // A pattern activity that takes no part in the save is not found.
    DvnfEntity& unsaved = Impl(Act(run, order, "Unsaved", 4), "AsBundle");
    unsaved.AttributeData()("InstantiatingMember") = "n";
    Act(run, unsaved.AttributeData()("Diagram"), "Mail").State(DvnfObject::StateNone);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    EXPECT_EQ(Count(messages, "51108|NoMember"), 1u);
    EXPECT_EQ(Count(messages, "51107|Mail"), 1u);
    EXPECT_EQ(Rows("SELECT a.NAME, p.NAME, p.DESCRIPTION, t.RESTART_OPTION, t.PROMPT_FOR_PLANG, t.PLANNING_MODE, "
                   "t.ASGNMNT_ALGORITHM, t.INSTANTIATION_FLD, t.NMBR_OF_INSTANCES, t.NMBR_OF_INST_MBR, "
                   "t.RETUN_CODE_SETTING FROM DVBT.BUNDLE_ACTIVITY t JOIN DVBT.ACTIVITY a ON a.AID = t.AID LEFT JOIN "
                   "DVBT.ACTIVITY p ON p.AID = t.PATTERN_ACTIVITY AND p.INSIDE_BLOCK = t.AID ORDER BY a.NAME"),
              (Lines{"Defaults|Mail|Defaults|1|1|1|1|n|<null>|count|1",
                     "Outside|Mail|Outside|<null>|1|<null>|<null>|n|0|<null>|<null>",
                     "Set|Mail|Set|2|0|3|2|Number|4|<null>|3"}));
    // Each stored pattern stands inside its bundle, with its extent; the
    // bundle without a member keeps its pattern all the same.
    EXPECT_EQ(Rows("SELECT b.NAME, COUNT(e.AID) FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY b ON b.AID = a.INSIDE_BLOCK "
                   "LEFT JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = a.AID GROUP BY b.NAME ORDER BY b.NAME"),
              (Lines{"Defaults|1", "NoMember|1", "Outside|1", "Set|1"}));
}

// ------------------------------------------------------------------ process attributes

TEST_P(KindStore, ProcessAttributesFillTheRowAndTheTopologyAndGraphRowsThroughTheirTables) {
    AddCategory(Db(), "C1", "Sales");
    AddPerson(Db(), TestPerson{"P1", "ADMIN", "G", "pw"});
    AddRole(Db(), "R1", "Clerk");
    AddOrganization(Db(), "O1", "Shipping");
    ImportRun run(true);
    auto staffLinks = [&](DvnfEntity& process, const char* person, const char* role, const char* organization) {
        Link(run, process, "ProcessHasAdministrator", "Person", person);
        Link(run, process, "ProcessHasRole", "Role", role);
        Link(run, process, "ProcessHasOrganization", "Organization", organization);
    };
    auto members = [](DvnfAttributeData a) {
        a("AdministratorFromInput") = "adm";
        a("RoleFromInput") = "rol";
        a("OrganizationFromInput") = "org";
    };

    DvnfEntity& full = run.Add("Process", "Full");
    Link(run, full, "ProcessHasCategory", "Category", "Sales");
    staffLinks(full, "ADMIN", "Clerk", "Shipping");
    DvnfAttributeData a = full.AttributeData();
    a("ValidFrom") = "2026-01-01";
    a("PromptAtProcessStart") = true;
    a("RcCreation") = 0L;
    a("Description") = std::string(300, 'd');
    a("Documentation") = "how";
    a("NotifyDuration")("Hours") = 1L;
    a("ProcessDefault")("AuditDB") = 1L;
    a("ProcessDefault")("AuditHX") = 3L;
    a("ProcessDefault")("NotificationMode") = 1L;
    a("ProcessDefault")("RefreshPolicy") = 0L;
    a("ProcessDefault")("KeepWorkitems")("Type") = 1L;
    a("ProcessDefault")("KeepProcesses")("Type") = 2L;
    a("ProcessDefault")("KeepProcesses")("Days") = 1L;
    a("ProcessDefault")("Autonomy") = 5L;
    a("ActivityDefault")("Substitution") = true;
    a("ActivityDefault")("CheckoutPossible") = false;
    a("ActivityDefault")("AuditFilterDB") = "ALL";
    a("WindowLayout")("ZoomFactor") = 150L;
    a("WindowLayout")("Paper")("Xpos") = 3L;
    a("WindowLayout")("Paper")("Ypos") = 4L;
    a("WindowLayout")("Paper")("Width") = 500L;  // without its height: neither
    a("WindowLayout")("ShowConnectors") = 1L;
    a("WindowLayout")("ShowConditions") = 2L;
    a("WindowLayout")("ShowTextAnnotations") = false;
    a("PaperColor")("Red") = 255L;
    a("PaperColor")("Green") = 128L;
    a("PaperColor")("Blue") = 0L;
    a("ExitConditionColor")("Blue") = 7L;
    a("ActivityFont")("Name") = "Arial";
    a("ActivityFont")("Size") = 10L;

    DvnfEntity& byMember = run.Add("Process", "Members");
    DvnfAttributeData m = byMember.AttributeData();  // a handle of its own: = would copy
    members(m);
    m("DataFromInputContainer") = false;
    m("NotificationFromInput") = "who";
    m("RcCreation") = 2L;
    m("ProcessDefault")("Autonomy") = 0L;
    m("ProcessDefault")("AuditDB") = 9L;  // outside the table
    m("ProcessDefault")("KeepWorkitems")("Type") = 0L;
    m("ProcessDefault")("KeepProcesses")("Type") = 2L;  // a sum of 0
    m("ProcessDefault")("RefreshPolicy") = 1L;
    m("WindowLayout")("ZoomFactor") = 5L;
    m("WindowLayout")("ShowConnectors") = 3L;
    m("WindowLayout")("ShowConditions") = 9L;
    m("WindowLayout")("ShowTextAnnotations") = true;

    // The staff comes from the input container: links and members pass.
    DvnfEntity& container = run.Add("Process", "Container");
    run.data.AddLinkByOID(container, DvnfString("ProcessHasCategory"), DvnfString("Category"), DvnfString("C1"));
    staffLinks(container, "ADMIN", "Clerk", "Shipping");
    members(container.AttributeData());
    container.AttributeData()("DataFromInputContainer") = true;
    container.AttributeData()("RcCreation") = 5L;  // outside the table
    container.AttributeData()("NotifyDuration")("Hours") = 0L;

    DvnfEntity& missing = run.Add("Process", "Missing");
    Link(run, missing, "ProcessHasCategory", "Category", "Nothing");
    staffLinks(missing, "NOBODY", "Ghost", "Nowhere");
    members(missing.AttributeData());  // the link names a target: no member
    missing.AttributeData()("ProcessDefault")("Autonomy") = 15L;
    missing.AttributeData()("ProcessDefault")("KeepWorkitems")("Type") = 3L;
    missing.AttributeData()("WindowLayout")("ZoomFactor") = 500L;

    run.Add("Process", "Bare");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    for (const char* expected : {"51112|Missing", "51113|Missing", "51114|Missing", "51115|Missing"})
        EXPECT_EQ(Count(messages, expected), 1u) << expected;
    EXPECT_EQ(Count(messages, "51014|Missing"), 1u);

    const std::string byName = " p JOIN DVBT.PROCESS n ON n.PID = p.PID ORDER BY n.NAME";
    EXPECT_EQ(Rows("SELECT NAME, CATID, ADMINISTRATOR, ROLE, ORGANIZATION, PADM_CONT_MEMBER, ROLE_CONT_MEMBER, "
                   "ORG_CONT_MEMBER, DATA_FROM_IN_CONT, VALID_FROM, PROMPT_AT_PRC_STRT, RC_CREATION, "
                   "LENGTH(DESCRIPTION), DOCUMENTATION FROM DVBT.PROCESS ORDER BY NAME"),
              (Lines{
                  "Bare|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|<null>|<null>",
                  "Container|C1|<null>|<null>|<null>|<null>|<null>|<null>|1|<null>|0|<null>|<null>|<null>",
                  "Full|C1|P1|R1|O1|<null>|<null>|<null>|<null>|2026-01-01|1|3|254|how",
                  "Members|<null>|<null>|<null>|<null>|adm|rol|org|0|<null>|0|1|<null>|<null>",
                  "Missing|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|0|1|<null>|<null>",
              }));
    EXPECT_EQ(Rows("SELECT n.NAME, p.NOTIFICATION_INTVL, p.NOT_CONT_MEMBER, p.WRITE_AUDIT_LOG, p.HX_AUDIT_LOG, "
                   "p.NOTIFICATION_MODE, p.REFRESH_POLICY, p.KEEP_FIN_WRKITM_TI, p.KEEP_FIN_PRC_TIME, "
                   "p.STAFF_AUTONOMY, p.NOTIFICAT_AUTONOMY, p.ADMIN_AUTONOMY, p.CONTROL_AUTONOMY, "
                   "p.TERMINATE_ON_ERROR, p.SUBSTITUTION, p.CHECKOUT_POSSIBLE, p.PREFER_LOCAL_USERS, "
                   "p.AUDIT_EVENTS_TO_DB FROM DVBT.PROCESS_TOPOL_ATTR" + byName),
              (Lines{
                  "Bare|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|"
                  "<null>|<null>|<null>|<null>",
                  "Container|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|"
                  "<null>|<null>|<null>|<null>|<null>",
                  "Full|3600|<null>|3|4|2|2|999999999|86400|1|0|1|0|<null>|1|0|<null>|ALL",
                  "Members|<null>|who|<null>|<null>|<null>|1|0|<null>|0|0|0|0|<null>|<null>|<null>|<null>|<null>",
                  "Missing|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|1|1|1|1|<null>|<null>|<null>|"
                  "<null>|<null>",
              }));
    EXPECT_EQ(Rows("SELECT n.NAME, p.ZOOM_FACTOR, p.VIEW_REF_PT_XPOS, p.VIEW_REF_PT_YPOS, p.PAPER_SIZE_WIDTH, "
                   "p.PAPER_SIZE_HEIGHT, p.SHOW_CONNECTORS, p.SHOW_EXIT_COND, p.SHOW_TRANS_COND, p.SHOW_TEXT_ANNOTAT, "
                   "p.PAPER_COLOR, p.EXIT_COND_COLOR, p.DATA_COLOR, p.ACT_NAME_FONT, p.ACT_FONT_SIZE, "
                   "p.ACT_FONT_STYLE, p.EXIT_COND_FONT FROM DVBT.PROCESS_GRAPH_ATTR" + byName),
              (Lines{
                  "Bare|<null>|<null>|<null>|<null>|<null>|1|0|0|1|<null>|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Container|<null>|<null>|<null>|<null>|<null>|1|0|0|1|<null>|<null>|<null>|<null>|<null>|<null>|"
                  "<null>",
                  "Full|150|3|4|<null>|<null>|0|1|0|0|255128000|7|<null>|Arial|10|<null>|<null>",
                  "Members|10|<null>|<null>|<null>|<null>|3|0|0|1|<null>|<null>|<null>|<null>|<null>|<null>|<null>",
                  "Missing|200|<null>|<null>|<null>|<null>|1|0|0|0|<null>|<null>|<null>|<null>|<null>|<null>|<null>",
              }));
}

TEST_P(KindStore, AnEditorSaveWithoutTheAttributesLoadedKeepsTheAttributeRows) {
    AddCategory(Db(), "C1", "Sales");
    {
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        Link(run, order, "ProcessHasCategory", "Category", "Sales");
        order.AttributeData()("Description") = "kept";
        order.AttributeData()("WindowLayout")("ZoomFactor") = 150L;
        order.AttributeData()("ProcessDefault")("Autonomy") = 15L;
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const Lines before = Rows("SELECT p.CATID, p.DESCRIPTION, g.ZOOM_FACTOR, t.CONTROL_AUTONOMY FROM DVBT.PROCESS p "
                              "JOIN DVBT.PROCESS_GRAPH_ATTR g ON g.PID = p.PID JOIN DVBT.PROCESS_TOPOL_ATTR t ON "
                              "t.PID = p.PID");
    ASSERT_EQ(before, (Lines{"C1|kept|150|1"}));
    for (int flags : {0, 7}) {
        SCOPED_TRACE(flags);
        BackEndRun run(true);
        const std::string pid = QueryValue(Db(), "SELECT PID FROM DVBT.PROCESS");
        DvnfEntity& order = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString("Order"));
        order.State(DvnfObject::StateChanged);
        order.Flags(flags);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        // Loaded, the attributes (none now) are written: all goes.
        EXPECT_EQ(Rows("SELECT p.CATID, p.DESCRIPTION, g.ZOOM_FACTOR, t.CONTROL_AUTONOMY FROM DVBT.PROCESS p JOIN "
                       "DVBT.PROCESS_GRAPH_ATTR g ON g.PID = p.PID JOIN DVBT.PROCESS_TOPOL_ATTR t ON t.PID = p.PID"),
                  flags ? Lines{"<null>|<null>|<null>|<null>"} : before);
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(KindStore);

}  // namespace
