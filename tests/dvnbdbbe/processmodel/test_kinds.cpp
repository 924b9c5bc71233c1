// Activity kinds (program, process, bundle and block rows, nested blocks) and
// the process attributes (PROCESS, PROCESS_TOPOL_ATTR, PROCESS_GRAPH_ATTR).
#include "../storetests.h"

namespace {

class KindStore : public ModelStore {
protected:
    // Rows of a kind table with the name of their activity in front.
    Lines KindRows(const std::string& table, const std::string& columns) {
        return Sorted("SELECT a.NAME, " + columns + " FROM DVBT." + table + " t JOIN DVBT.ACTIVITY a ON a.AID = t.AID");
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
    // Activity, the dotted name of its server (null: no link), and PE_SERVER
    // while groups exist; once none is left, no server is found.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"None", nullptr, "-"},          {"Server", "PES1", "PES1"},          {"UserServer", "UPES", "U1"},
        {"WithSystem", "PES1.DVNSYS", "PES1"}, {"UserWithSystem", "UPES.REMOTE", "U1"},
        {"WithGroup", "PES1.DVNSYS.Other", "PES1"}, {"WrongSystem", "PES1.REMOTE", "-"},
        {"NoSuchSystem", "PES1.GHOST", "-"}, {"NoSuchGroup", "PES1.DVNSYS.Nowhere", "-"},
        {"NoSuchServer", "GHOST", "-"},  {"EmptyPart", "PES1..SYS_GRP", "-"},
    };
    for (bool groups : {true, false}) {
        SCOPED_TRACE(groups);
        if (!groups) Exec("DELETE FROM DVBT.SYSTEM_GROUP");
        ImportRun run(true);
        DvnfEntity& order = run.Add("Process", "Order");
        Lines expected, reported;
        for (const auto& [activity, server, found] : cases) {
            DvnfEntity& program = Impl(Act(run, order, activity, 1), "AsProgram");
            Link(run, program, "ReferencesProgram", "Program", "checkord");
            if (server) Link(run, program, "ReferencesPEServer", "Server", server);
            const std::string stored = groups ? found : "-";
            expected.push_back(std::string(activity) + "|PR1|" + stored);
            if (stored == "-" && server) reported.push_back(std::string("51184|") + server + "|" + activity);
        }
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);  // 51184 is no warning
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID, t.PE_SERVER"), expected);
        Lines found = run.Messages();
        found.erase(std::remove_if(found.begin(), found.end(), [](auto& m) { return m.rfind("51184|", 0) != 0; }),
                    found.end());
        EXPECT_EQ(found, reported);
    }
}

TEST_P(KindStore, AProgramActivityWithoutItsProgramKeepsOnlyItsActivityRow) {
    AddProgram(Db(), "PR1", "checkord");
    ImportRun run(true);
    Read(run, "program-activities.trx");
    // A program that the link gives by key alone.
    run.data.AddLinkByOID(Impl(run.data.GetEntityByName(DvnfString("Activity"), DvnfString("ByKey")), "AsProgram"),
                          DvnfString("ReferencesProgram"), DvnfString("Program"), DvnfString("PR1"));
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    EXPECT_EQ(Count(messages, "51105|nothere"), 1u);
    EXPECT_EQ(Count(messages, "51105|"), 1u);  // the link that names nothing
    EXPECT_EQ(Count(messages, "51015|Unknown"), 1u);
    EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID, t.PES_CONT_MEMBER, t.SYNCHRONIZATION"),
              (Lines{"ByKey|PR1|server|1", "Sync1|PR1|-|2", "Sync2|PR1|-|1", "Sync7|PR1|-|-", "Sync|PR1|-|1"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.ACTIVITY WHERE ACTIVITY_KIND = 1"), "7");
}

// ------------------------------------------------------------------ process activities

TEST_P(KindStore, AProcessActivityHoldsTheCalledNameOrAMemberAndAProcessMayCallItself) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);  // the second import replaces the process
        ImportRun run(true);
        Read(run, "process-activities.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Order", "51015|Call", "51015|ByMember", "51015|BadSystem",
                                         "51106|GHOST", "51015|Nothing", "51015|Self", "51011|Order",
                                         round == 0 ? "51014|Order" : "51046|Order"}));
        EXPECT_EQ(KindRows("PROCESS_ACTIVITY", "t.PROCESS, t.PROC_CONT_MEMBER, t.SYSTEM, t.SYSTEM_CONT_MEMBER"),
                  (Lines{"BadSystem|Invoice|-|-|-", "ByMember|-|which|-|where", "Call|Invoice|-|S1|-",
                         "Self|Order|-|-|-"}));
        EXPECT_EQ(Count("ACTIVITY"), "5");
    }
}

// ------------------------------------------------------------------ blocks

TEST_P(KindStore, BlocksNestThreeDeepWithTheirOwnActivitiesAndTransactionsStayBalanced) {
    AddProgram(Db(), "PR1", "checkord");
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);  // the second import replaces all of it
        ImportRun run(true);
        Read(run, "blocks.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_FALSE(Db().InTransaction());
        EXPECT_EQ(run.Messages(),
                  (Lines{"51010|Order", "51015|Work", "51015|B1", "51012|B1", "51015|Work", "51015|B2", "51012|B2",
                         "51015|Work", "51015|B3", "51012|B3", "51015|Work", "51013|B3", "51013|B2", "51013|B1",
                         "51011|Order", round == 0 ? "51014|Order" : "51046|Order"}));
        // Each Work in its own block, with its extent from the second pass.
        EXPECT_EQ(Sorted("SELECT a.NAME, b.NAME, e.DONE_BY FROM DVBT.ACTIVITY a LEFT JOIN DVBT.ACTIVITY b ON b.AID = "
                         "a.INSIDE_BLOCK LEFT JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = a.AID"),
                  (Lines{"B1|-|-", "B2|B1|-", "B3|B2|-", "Work|-|12", "Work|B1|12", "Work|B2|12", "Work|B3|12"}));
        // Each connector joins the activities of its own diagram, though
        // every diagram has a "Work".
        EXPECT_EQ(Sorted("SELECT f.NAME, t.NAME, b.NAME FROM DVBT.CONTROL_CONNECTOR c JOIN DVBT.ACTIVITY f ON f.AID = "
                         "c.FROM_ACTIVITY JOIN DVBT.ACTIVITY t ON t.AID = c.TO_ACTIVITY LEFT JOIN DVBT.ACTIVITY b ON "
                         "b.AID = c.INSIDE_BLOCK WHERE COALESCE(f.INSIDE_BLOCK, '') = COALESCE(c.INSIDE_BLOCK, '') "
                         "AND COALESCE(t.INSIDE_BLOCK, '') = COALESCE(c.INSIDE_BLOCK, '')"),
                  (Lines{"Work|B1|-", "Work|B2|B1", "Work|B3|B2"}));
        EXPECT_EQ(KindRows("BLOCK_ACTIVITY", "t.RETURN_CODE_SET, t.ZOOM_FACTOR, t.SHOW_CONNECTORS, "
                                             "t.SHOW_EXIT_COND, t.SHOW_TRANS_COND, t.SHOW_TEXT_ANNOTAT"),
                  (Lines{"B1|3|150|1|0|0|0", "B2|1|-|1|0|1|0", "B3|1|-|1|0|0|1"}));
        EXPECT_EQ(KindRows("PROGRAM_ACTIVITY", "t.PROGRAM_ID"), (Lines{"Work|PR1"}));
        EXPECT_EQ(Count("PROCESS"), "1");
    }
}

// ------------------------------------------------------------------ bundles

TEST_P(KindStore, ABundleStoresItsPatternActivityInsideItAndItsSettings) {
    ImportRun run(true);
    Read(run, "bundles.trx");
    // A pattern activity that takes no part in the save is not found.
    for (DvnfEntity* activity : run.data.AllEntities())
        if (activity->Name() == "Mail" && activity->AttributeData()("Description").AsString("").str().empty())
            activity->State(DvnfObject::StateNone);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    EXPECT_EQ(Count(messages, "51108|NoMember"), 1u);
    EXPECT_EQ(Count(messages, "51107|Mail"), 1u);
    EXPECT_EQ(Rows("SELECT a.NAME, p.NAME, p.DESCRIPTION, t.RESTART_OPTION, t.PROMPT_FOR_PLANG, t.PLANNING_MODE, "
                   "t.ASGNMNT_ALGORITHM, t.INSTANTIATION_FLD, t.NMBR_OF_INSTANCES, t.NMBR_OF_INST_MBR, "
                   "t.RETUN_CODE_SETTING FROM DVBT.BUNDLE_ACTIVITY t JOIN DVBT.ACTIVITY a ON a.AID = t.AID LEFT JOIN "
                   "DVBT.ACTIVITY p ON p.AID = t.PATTERN_ACTIVITY AND p.INSIDE_BLOCK = t.AID ORDER BY a.NAME"),
              (Lines{"Defaults|Mail|Defaults|1|1|1|1|n|-|count|1",
                     "Outside|Mail|Outside|-|1|-|-|n|0|-|-",
                     "Set|Mail|Set|2|0|3|2|Number|4|-|3"}));
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
    Read(run, "process-attributes.trx");
    run.data.AddLinkByOID(run.data.GetEntityByName(DvnfString("Process"), DvnfString("Container")),
                          DvnfString("ProcessHasCategory"), DvnfString("Category"), DvnfString("C1"));
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
    const Lines messages = run.Messages();
    for (const char* expected : {"51112|Missing", "51113|Missing", "51114|Missing", "51115|Missing"})
        EXPECT_EQ(Count(messages, expected), 1u) << expected;
    EXPECT_EQ(Count(messages, "51014|Missing"), 1u);

    const std::string byName = " p JOIN DVBT.PROCESS n ON n.PID = p.PID ORDER BY n.NAME";
    EXPECT_EQ(Rows("SELECT NAME, CATID, ADMINISTRATOR, ROLE, ORGANIZATION, PADM_CONT_MEMBER, ROLE_CONT_MEMBER, "
                   "ORG_CONT_MEMBER, DATA_FROM_IN_CONT, VALID_FROM, PROMPT_AT_PRC_STRT, RC_CREATION, "
                   "LENGTH(DESCRIPTION), DOCUMENTATION FROM DVBT.PROCESS ORDER BY NAME"),
              (Lines{"Bare|-|-|-|-|-|-|-|-|-|0|1|-|-", "Container|C1|-|-|-|-|-|-|1|-|0|-|-|-",
                     "Full|C1|P1|R1|O1|-|-|-|-|2026-01-01|1|3|254|how", "Members|-|-|-|-|adm|rol|org|0|-|0|1|-|-",
                     "Missing|-|-|-|-|-|-|-|-|-|0|1|-|-"}));
    EXPECT_EQ(Rows("SELECT n.NAME, p.NOTIFICATION_INTVL, p.NOT_CONT_MEMBER, p.WRITE_AUDIT_LOG, p.HX_AUDIT_LOG, "
                   "p.NOTIFICATION_MODE, p.REFRESH_POLICY, p.KEEP_FIN_WRKITM_TI, p.KEEP_FIN_PRC_TIME, "
                   "p.STAFF_AUTONOMY, p.NOTIFICAT_AUTONOMY, p.ADMIN_AUTONOMY, p.CONTROL_AUTONOMY, "
                   "p.TERMINATE_ON_ERROR, p.SUBSTITUTION, p.CHECKOUT_POSSIBLE, p.PREFER_LOCAL_USERS, "
                   "p.AUDIT_EVENTS_TO_DB FROM DVBT.PROCESS_TOPOL_ATTR" + byName),
              (Lines{"Bare|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-", "Container|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-|-",
                     "Full|3600|-|3|4|2|2|999999999|86400|1|0|1|0|-|1|0|-|ALL",
                     "Members|-|who|-|-|-|1|0|-|0|0|0|0|-|-|-|-|-", "Missing|-|-|-|-|-|-|-|-|1|1|1|1|-|-|-|-|-"}));
    EXPECT_EQ(Rows("SELECT n.NAME, p.ZOOM_FACTOR, p.VIEW_REF_PT_XPOS, p.VIEW_REF_PT_YPOS, p.PAPER_SIZE_WIDTH, "
                   "p.PAPER_SIZE_HEIGHT, p.SHOW_CONNECTORS, p.SHOW_EXIT_COND, p.SHOW_TRANS_COND, p.SHOW_TEXT_ANNOTAT, "
                   "p.PAPER_COLOR, p.EXIT_COND_COLOR, p.DATA_COLOR, p.ACT_NAME_FONT, p.ACT_FONT_SIZE, "
                   "p.ACT_FONT_STYLE, p.EXIT_COND_FONT FROM DVBT.PROCESS_GRAPH_ATTR" + byName),
              (Lines{"Bare|-|-|-|-|-|1|0|0|1|-|-|-|-|-|-|-", "Container|-|-|-|-|-|1|0|0|1|-|-|-|-|-|-|-",
                     "Full|150|3|4|-|-|0|1|0|0|255128000|7|-|Arial|10|-|-", "Members|10|-|-|-|-|3|0|0|1|-|-|-|-|-|-|-",
                     "Missing|200|-|-|-|-|1|0|0|0|-|-|-|-|-|-|-"}));
}

TEST_P(KindStore, AnEditorSaveWithoutTheAttributesLoadedKeepsTheAttributeRows) {
    AddCategory(Db(), "C1", "Sales");
    Imported("order-attributes.trx");
    const std::string attributes = "SELECT p.CATID, p.DESCRIPTION, g.ZOOM_FACTOR, t.CONTROL_AUTONOMY FROM DVBT.PROCESS "
                                   "p JOIN DVBT.PROCESS_GRAPH_ATTR g ON g.PID = p.PID JOIN DVBT.PROCESS_TOPOL_ATTR t "
                                   "ON t.PID = p.PID";
    ASSERT_EQ(Rows(attributes), (Lines{"C1|kept|150|1"}));
    for (int flags : {0, 7}) {
        SCOPED_TRACE(flags);
        BackEndRun run(true);
        DvnfEntity& order = Loaded(run, Pid("Order"), "Order");
        order.State(DvnfObject::StateChanged);
        order.Flags(flags);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        // Loaded, the attributes (none now) are written: all goes.
        EXPECT_EQ(Rows(attributes), (Lines{flags ? "-|-|-|-" : "C1|kept|150|1"}));
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(KindStore);

}  // namespace
