// Processes: replacement in an import, change in place in the editor,
// deletion, activities in two passes with their columns, staff assignment,
// support tools and container values, and the stored forms of durations and
// time events.
#include <array>

#include "../storetests.h"

namespace {

class ProcessStore : public ModelStore {
protected:
    // The messages of the file's import over the roles Clerk and Manager,
    // the organization Shipping and the person CLERK; warnings expected.
    Lines SavedWithStaff(const char* file) {
        AddRole(Db(), "R1", "Clerk");
        AddRole(Db(), "R2", "Manager");
        AddOrganization(Db(), "O1", "Shipping");
        AddPerson(Db(), TestPerson{"P1", "CLERK", "G", "pw"});
        ImportRun run(true);
        Read(run, file);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 4);
        return run.Messages();
    }
};

TEST_P(ProcessStore, ANewProcessHasOneRowUnderItsOwnNameWithItsActivitiesAndContainerValues) {
    const std::string longValue(32673, 'v');
    for (bool source : {true, false}) {
        SCOPED_TRACE(source);
        Exec("DELETE FROM DVBT.PROCESS");
        ImportRun run(source);
        Read(run, "new-process.trx");
        DvnfEntity& order = run.data.GetEntityByName(DvnfString("Process"), DvnfString("Order"));
        DvnfAttributeData member = order.AttributeData()("InputContainer")("Members").NewSetElement();
        member("Name") = "Long";
        member("Value") = longValue;
        // Without the containers flag the new row still loses its first-pass mark.
        run.data.GetEntityByName(DvnfString("Process"), DvnfString("Bare")).Flags(1);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Bare", "51011|Bare", "51014|Bare", "51010|Order", "51015|Check",
                                         "51015|Pack", "51011|Order", "51014|Order"}));
        EXPECT_EQ(order.State(), 3);
        const std::string mark = source ? "0" : "5";
        EXPECT_EQ(Marks("PROCESS"), (Lines{"Bare|" + mark, "Order|" + mark}));
        const std::string pid = Pid("Order");
        EXPECT_EQ(Rows("SELECT INPUT_OR_OUTPUT, DOTTED_NAME, LENGTH(INITIAL_VALUE) FROM DVBT.PRC_CONTAINER WHERE "
                       "PID = '" + pid + "' ORDER BY INPUT_OR_OUTPUT, DOTTED_NAME"),
                  (Lines{"1|Long|32672", "1|Number|2", "2|Result|2"}));
        EXPECT_EQ(Rows("SELECT a.NAME, a.ACTIVITY_KIND, a.INSIDE_BLOCK, LENGTH(a.DESCRIPTION), e.DONE_BY, "
                       "e.START_OPTION, e.EXIT_OPTION FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = "
                       "a.AID WHERE a.PID = '" + pid + "' ORDER BY a.NAME"),
                  (Lines{"Check|2|-|254|12|1|2", "Pack|2|-|-|12|1|2"}));
        // One value twice is one row; two values of one name are two.
        EXPECT_EQ(Rows("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.ACT_CONTAINER ORDER BY INITIAL_VALUE"),
                  (Lines{"Number|1", "Number|2"}));
    }
}

TEST_P(ProcessStore, AnImportReplacesAProcessWithOverwriteOnAndLeavesItOffHeldOrWhenItCannotWriteIt) {
    Imported("order-check.trx");
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
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT, CHECKED_OUT_BY FROM DVBT.PROCESS"), (Lines{"Order|3|-"}));
    // The old process went with all below it.
    EXPECT_EQ(Rows("SELECT a.PID, a.NAME, e.DONE_BY FROM DVBT.ACTIVITY a LEFT JOIN DVBT.ACTIVITY_EXTENT e ON e.AID = "
                   "a.AID"),
              (Lines{newPid + "|Pack|12"}));

    // Overwrite off, then a row that a user holds: nothing changes.
    for (const char* holder : {"", "SOMEONE"}) {
        if (*holder) Exec(std::string("UPDATE DVBT.PROCESS SET CHECKED_OUT_BY = '") + holder + "'");
        ImportRun run(true);
        run.be.SetOverwriteOption(*holder != '\0');
        run.be.SetCurrentUser(DvnString("ADMIN"));
        DvnfEntity& order = run.Add("Process", "Order");
        Act(run, order, "Other");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), *holder ? 4 : 0);
        EXPECT_EQ(run.Messages(), (Lines{*holder ? "51145|Order|SOMEONE" : "51078|Order"}));
        EXPECT_EQ(order.Name(), "Order");
    }
    EXPECT_EQ(Rows("SELECT PID, NAME, CHECKED_OUT, CHECKED_OUT_BY FROM DVBT.PROCESS"),
              (Lines{newPid + "|Order|3|SOMEONE"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"Pack"}));

    // A replacement that cannot write its graph row keeps the old process whole and free.
    Exec("UPDATE DVBT.PROCESS SET CHECKED_OUT_BY = NULL");
    Refuse("INSERT", "PROCESS_GRAPH_ATTR");
    ImportRun run(true);
    run.be.SetCurrentUser(DvnString("ADMIN"));
    DvnfEntity& order = run.Add("Process", "Order");
    Act(run, order, "Ship");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
    const Lines messages = run.Messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.front(), "51010|Order");
    EXPECT_EQ(messages.back(), "51342|Order");
    EXPECT_EQ(order.Name(), "Order");
    EXPECT_EQ(Rows("SELECT PID, NAME, CHECKED_OUT_BY FROM DVBT.PROCESS"), (Lines{newPid + "|Order|-"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"Pack"}));
}

TEST_P(ProcessStore, ADeletionRemovesTheProcessWithAllBelowItOrLeavesATombstone) {
    Imported("order-check.trx");
    // A tombstone keeps what is below it; a deletion for good takes it, and
    // then there is nothing to delete.
    for (const char* expected : {"51046|Order", "51218|Order", "51273|DELETE PROCESS Order"}) {
        const bool marking = expected[4] == '6';
        ImportRun run(!marking);
        run.Delete("Process", "Order");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{expected}));
        if (marking) {
            EXPECT_EQ(Marks("PROCESS"), (Lines{"Order|4"}));
            EXPECT_EQ(Count("ACTIVITY_EXTENT"), "1");
        }
    }
    for (const char* table : {"PROCESS", "ACTIVITY", "ACTIVITY_EXTENT", "PRC_CONTAINER", "PROCESS_GRAPH_ATTR"})
        EXPECT_EQ(Count(table), "0") << table;
}

TEST_P(ProcessStore, AnEditorSaveWritesOnlyWhatChangedKeepsTheKeyOnARenameAndRefusesANameThatIsTaken) {
    Imported("order-billing.trx");
    const std::string pid = Pid("Order");
    Exec("UPDATE DVBT.PROCESS SET DESCRIPTION = 'kept'");
    {
        // An unchanged process with one changed activity and one new one.
        BackEndRun run(true);
        DvnfEntity& order = Loaded(run, pid, "Order");
        order.AttributeData()("Icon") = "NEW";
        DvnfEntity& check = Act(run, order, "Check", 5, Aid("Check"));
        check.AttributeData()("Description") = "checking";
        check.State(DvnfObject::StateChanged);
        Act(run, order, "Pack", 5, Aid("Pack")).State(DvnfObject::StateUnchanged);
        Act(run, order, "Ship");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51047|Check", "51015|Ship", "51046|Order"}));
    }
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT, DESCRIPTION, USER_DEFINED_ICON FROM DVBT.PROCESS ORDER BY NAME"),
              (Lines{"Billing|0|kept|-", "Order|3|kept|-"}));
    EXPECT_EQ(Rows("SELECT NAME, DESCRIPTION FROM DVBT.ACTIVITY ORDER BY NAME"),
              (Lines{"Check|checking", "Pack|packing", "Ship|-"}));

    for (const char* name : {"Billing", "Invoice"}) {
        BackEndRun run(true);
        Loaded(run, pid, name).State(DvnfObject::StateChanged);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        EXPECT_EQ(run.Messages(), (Lines{std::string(name) == "Billing" ? "51078|Billing" : "51046|Invoice"}));
    }
    EXPECT_EQ(Pid("Invoice"), pid);
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Billing|0", "Invoice|3"}));
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
    EXPECT_EQ(Count("CONTROL_CONNECTOR"), "0");
    EXPECT_EQ(Count("SOURCE"), "0");
    EXPECT_EQ(Rows("SELECT AID FROM DVBT.ACT_CONTAINER"), (Lines{"X"}));
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Flow|3"}));
}

TEST_P(ProcessStore, WithoutItsAttributesAnActivityKeepsExtentToolsAndContainers) {
    AddProgram(Db(), "G1", "editor");
    AddRole(Db(), "R1", "Clerk");
    {
        ImportRun run(true);
        Read(run, "kept-activity.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Order", "51015|Check", "51105|nowhere", "51011|Order",
                                         "51014|Order"}));
    }
    const std::string aid = Aid("Check");
    const std::string all = "SELECT e.DONE_BY, e.PRIORITY, t.PROGRAM_ID, c.INITIAL_VALUE, r.ROLE FROM "
                            "DVBT.ACTIVITY_EXTENT e, DVBT.ACT_HAS_SUP_TOOL t, DVBT.ACT_CONTAINER c, "
                            "DVBT.ACTIVITY_BY_ROLE r WHERE e.AID = '" + aid + "' AND t.AID = e.AID AND c.AID = e.AID "
                            "AND r.AID = e.AID";
    EXPECT_EQ(Rows(all), (Lines{"1|7|G1|v|R1"}));
    BackEndRun run(true);
    DvnfEntity& order = run.data.CreateEntity(DvnfString("Process"), DvnfString(Pid("Order").c_str()),
                                              DvnfString("Order"));
    order.State(DvnfObject::StateUnchanged);
    DvnfEntity& check = Act(run, order, "Check", 5, aid);
    check.State(DvnfObject::StateChanged);
    check.Flags(0);
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
    EXPECT_EQ(Rows(all), (Lines{"1|7|G1|v|R1"}));
}

TEST_P(ProcessStore, ActivityColumnsAndStaffAssignmentFollowTheirAttributes) {
    const Lines messages = SavedWithStaff("activity-columns.trx");
    for (const char* expected : {"51118|ABCDEFGHI", "51132|Ghost", "51130|Persons.Inner"})
        EXPECT_EQ(Count(messages, expected), 1u) << expected;
    EXPECT_EQ(Rows("SELECT a.NAME, a.USER_DEFINED_ICON, LENGTH(a.EXIT_CONDITION), a.START_CONDITION, a.XPOS, a.YPOS, "
                   "a.NAME_XPOS, a.NAME_YPOS, e.DONE_BY, e.MIN_LEVEL, e.MAX_LEVEL, e.ORGANIZATION, e.INCL_CHILD_ORG, "
                   "e.FIRST_NOT_TARGET, e.NOTIFICATION_INTVL FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e ON "
                   "e.AID = a.AID ORDER BY a.NAME"),
              (Lines{"BadPath|-|-|1|-|-|-|-|8|-|-|-|-|-|-", "Icon8|ABCDEFGH|-|1|-|-|-|-|12|-|-|-|-|-|-",
                     "Icon9|-|-|1|-|-|-|-|12|-|-|-|-|-|-", "Layout|-|4097|2|10|-|0|3|12|-|-|-|-|2|0",
                     "Members|-|-|1|-|-|-|-|1|2|5|O1|1|-|-", "Persons|-|-|1|-|-|-|-|3|-|-|-|-|-|-",
                     "Starter|-|-|1|-|-|-|-|8|-|-|-|-|-|-", "Type0|-|-|1|-|-|-|-|12|-|-|-|-|-|-",
                     "Type13|-|-|1|-|-|-|-|12|-|-|-|-|-|-"}));
    auto of = [&](const char* table, const char* column) {
        return Rows(std::string("SELECT a.NAME, t.") + column + " FROM DVBT." + table +
                    " t JOIN DVBT.ACTIVITY a ON a.AID = t.AID ORDER BY a.NAME, t." + column);
    };
    EXPECT_EQ(of("ACTIVITY_BY_ROLE", "ROLE"), (Lines{"Members|R1", "Members|R2"}));
    EXPECT_EQ(of("ACT_BY_ROLE_F_CONT", "CONTAINER_MEMBER"), (Lines{"Members|who"}));
    EXPECT_EQ(of("ACTIVITY_BY_PERSON", "PERSON_ID"), (Lines{"Persons|P1"}));
    EXPECT_EQ(of("ACT_BY_PERS_F_CONT", "CONTAINER_MEMBER"), (Lines{"Persons|Clerk1"}));
    EXPECT_EQ(Value("SELECT e.STARTER_OF_AID FROM DVBT.ACTIVITY_EXTENT e JOIN DVBT.ACTIVITY a ON a.AID = e.AID WHERE "
                    "a.NAME = 'Starter'"),
              Aid("Persons"));
}

// A row of an activity's support tools or staff assignment that the database
// refuses is reported and fails the save, whichever table refuses it.
TEST_P(ProcessStore, AnAssignmentOrToolRowTheDatabaseRefusesFailsTheSave) {
    SavedWithStaff("activity-columns.trx");
    AddProgram(Db(), "G1", "editor");
    const std::pair<const char*, const char*> cases[] = {
        {"ACT_HAS_SUP_TOOL", "kept-activity.trx"},     {"ACTIVITY_BY_ROLE", "kept-activity.trx"},
        {"ACT_BY_ROLE_F_CONT", "activity-columns.trx"}, {"ACTIVITY_BY_PERSON", "activity-columns.trx"},
        {"ACT_BY_PERS_F_CONT", "activity-columns.trx"}};
    for (const auto& [table, file] : cases) {
        SCOPED_TRACE(table);
        Refuse("INSERT", table);
        ImportRun run(true);
        run.be.SetOverwriteOption(true);
        Read(run, file);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
        const Lines messages = run.Messages();
        EXPECT_EQ(std::count_if(messages.begin(), messages.end(),
                                [](const std::string& m) { return m.rfind("51368|", 0) == 0; }),
                  1)
            << testing::PrintToString(messages);
        Refuse("INSERT", table, false);
    }
}

TEST_P(ProcessStore, CoordinatorsManagersAndPersonsToNotifyAreResolvedOrWarnedAbout) {
    const Lines messages = SavedWithStaff("activity-staff.trx");
    for (const char* expected :
         {"51118|TOOLONGICON", "51102|Missing", "51168|NoCoord", "51131|Nowhere", "51136|NOBODY|NotifyNobody"})
        EXPECT_EQ(Count(messages, expected), 1u) << expected;
    EXPECT_EQ(Rows("SELECT USER_DEFINED_ICON, INPUT_DS, OUTPUT_DS FROM DVBT.PROCESS"),
              (Lines{"-|DEFAULT_DATA_STRUCTURE|DEFAULT_DATA_STRUCTURE"}));
    EXPECT_EQ(Rows("SELECT a.NAME, e.DONE_BY, e.ORGANIZATION, e.ORG_CONT_MEMBER, e.FIRST_NOT_TARGET, "
                   "e.FIRST_NOT_ASSGMNT, e.SCND_NOT_CONT_MBR, e.EXPIRATION_INTVL, e.PRIO_CONT_MEMBER, "
                   "e.PRIO_FROM_INPUT, e.START_OPTION, e.EXIT_OPTION FROM DVBT.ACTIVITY a JOIN DVBT.ACTIVITY_EXTENT e "
                   "ON e.AID = a.AID ORDER BY a.NAME"),
              (Lines{"BadOrg|11|-|-|-|-|-|-|-|0|1|2", "Coord|2|-|-|-|-|-|-|-|0|1|2", "CoordIn|2|-|-|-|-|-|-|-|0|1|2",
                     "Mgr|11|O1|-|-|-|-|-|-|0|1|2", "MgrIn|11|-|org|-|-|-|-|-|0|1|2", "NoCoord|2|-|-|-|-|-|-|-|0|1|2",
                     "Notify|12|-|-|4|P1|d|3600|prio|0|1|1", "NotifyNobody|12|-|-|-|-|-|-|-|0|1|2"}));
    EXPECT_EQ(Rows("SELECT a.NAME, r.ROLE FROM DVBT.ACTIVITY_BY_ROLE r JOIN DVBT.ACTIVITY a ON a.AID = r.AID"),
              (Lines{"Coord|R1"}));
    EXPECT_EQ(Rows("SELECT a.NAME, r.CONTAINER_MEMBER FROM DVBT.ACT_BY_ROLE_F_CONT r JOIN DVBT.ACTIVITY a ON "
                   "a.AID = r.AID"),
              (Lines{"CoordIn|boss"}));
}

TEST_P(ProcessStore, TextsFromAFileMatchOnlyThemselvesWhateverQuotesWildcardsOrCase) {
    for (int round = 0; round < 2; ++round) {
        // The second round replaces the process of the same odd name.
        ImportRun run(true);
        Read(run, "odd-texts.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const Lines stored = {"%|_", "Case|A", "Case|a", "case|a", "it's|O'Neil", "n_1|v%", "nx1|vv", "x|%"};
    EXPECT_EQ(Sorted("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.PRC_CONTAINER"), stored);
    EXPECT_EQ(Sorted("SELECT DOTTED_NAME, INITIAL_VALUE FROM DVBT.ACT_CONTAINER"), stored);
    EXPECT_EQ(Sorted("SELECT CONTAINER_MEMBER FROM DVBT.ACT_BY_ROLE_F_CONT"), (Lines{"M_1", "it's", "m_1", "mx1"}));
    EXPECT_EQ(Marks("PROCESS"), (Lines{"Bob's 100% _order_|0"}));
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"it's"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProcessStore);

// ------------------------------------------------------------------ stored forms

TEST(StoredForms, DurationsAreSecondsWrappedTo32BitsAndTimeEventsAreExactTexts) {
    DvnConvCoreDbBe be;
    int n = 0;
    auto attributes = [&](const char* name) {
        return be.CoreData()
            ->CreateEntity(DvnfString("Process"), DvnfString(""), DvnfString(std::to_string(++n).c_str()))
            .AttributeData()(name);
    };
    // Counts of years, months, weeks, days, hours, minutes, seconds; -1: not given.
    const std::pair<std::vector<long>, long> durations[] = {
        {{1, 1, 1, 1, 1, 1, 1}, 34822861},   {{}, 0}, {{68, -1, -1, 10}, 2145312000},
        {{69}, -2118983296},  // 2175984000 does not fit in 32 bits
        {{-1, -1, -1, -1, -1, -1, 2147483647}, 2147483647}, {{-1, -1, -1, -1, -1, 1, 2147483647}, -2147483589},
    };
    for (const auto& [counts, seconds] : durations) {
        DvnfAttributeData period = attributes("NotifyDuration");
        const char* units[] = {"Years", "Months", "Weeks", "Days", "Hours", "Minutes", "Seconds"};
        for (size_t i = 0; i < counts.size(); ++i)
            if (counts[i] >= 0) period(units[i]) = counts[i];
        EXPECT_EQ(be.SetTimeInterval(period), seconds) << seconds;
    }
    // "Every", "On", "AtHours", "AtMinutes"; -1: not given.
    const std::pair<std::array<long, 4>, const char*> events[] = {
        {{-1, -1, -1, -1}, "ANYTIME"}, {{-1, 3, -1, -1}, "EVERY WEDNESDAY"}, {{9, -1, -1, -1}, "EVERY "},
        {{2, 1, 14, 5}, "EVERY MONTH ON MONDAY AT 14.05"}, {{-1, -1, 7, -1}, " AT 7.00"}, {{-1, -1, -1, 30}, " AT 30"},
        {{4, 7, -1, -1}, "EVERY YEAR ON SUNDAY"}, {{3, 8, -1, 0}, "EVERY WEEK ON  AT 00"},
    };
    for (const auto& [parts, text] : events) {
        DvnfAttributeData event = attributes("Start");
        const char* names[] = {"Every", "On", "AtHours", "AtMinutes"};
        for (size_t i = 0; i < 4; ++i)
            if (parts[i] >= 0) event(names[i]) = parts[i];
        EXPECT_EQ(std::string(be.SetTimeEvent(event).c_str()), text);
    }
}

}  // namespace
