// dvnbt import of the four kinds of list and of tool sets on both databases:
// the columns each takes from a file, what an update keeps, deletions under
// both source options, held rows, names with quotes, and the rights.
#include <gtest/gtest.h>

#include "dvnfcorn.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

// The four list tables with their entity type, messages and keyword.
struct ListTable {
    const char* type;
    const char* table;
    const char* kind;  // in the refusal of the staff right
    long added, updated, held, deleted;
    const char* keyword;
};
const ListTable kListTables[] = {
    {"ActivitiesList", "ACT_INSTANCE_LIST", "Activity Instance List", 51006, 51042, 51141, 51214,
     "DELETE ACTIVITIES_LIST "},
    {"ProcessInstancesList", "PRC_INSTANCE_LIST", "Process Instance List", 51007, 51043, 51142, 51215,
     "DELETE PROCESS_INSTANCES_LIST "},
    {"TemplatesList", "PRC_TEMPLATE_LIST", "Process Template List", 51008, 51044, 51143, 51216,
     "DELETE TEMPLATE_LIST "},
    {"Worklist", "WORK_LIST", "Work List", 51009, 51045, 51144, 51217, "DELETE WORKLIST "},
};

class ImportLists : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G1", .password = "pw", .staff = 1});
        AddPerson(Db(), {.id = "P2", .userId = "MODELER", .systemGroup = "G1", .password = "pw",
                         .processModeling = 1});
        AddPerson(Db(), {.id = "P3", .userId = "OWNER", .systemGroup = "G1", .password = "pw", .staff = 1,
                         .topology = 1, .processModeling = 1});
    }
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    // dvnbt import of the text, logged in as the user (password "pw").
    CliResult Import(const std::string& text, const std::string& user, std::vector<std::string> options = {}) {
        std::vector<std::string> args{"--user", user, "import"};
        args.insert(args.end(), options.begin(), options.end());
        args.push_back(files.Write(text));
        return RunDvnbt(DvnbtArgs(args), {"DVNBT_PASSWORD=pw"});
    }
    static std::string Line(long number, const std::string& a1 = "", const std::string& a2 = "") {
        return DvnfMessageHandler::Format(number, a1.empty() ? DvnString() : DvnString(a1),
                                          a2.empty() ? DvnString() : DvnString(a2))
                   .str() +
               "\n";
    }
    static size_t Count(const std::string& text, const std::string& line) {
        size_t n = 0;
        for (size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) ++n;
        return n;
    }
    // name|type|owner|filter|sort|threshold|mark|description (work lists: and the beep).
    Lines Lists(const std::string& table) {
        return QueryRows(Db(), "SELECT NAME, TYPE, OWNER, FILTER, SORT_CRITERIA, THRESHOLD, CHECKED_OUT, DESCRIPTION" +
                                   std::string(table == "WORK_LIST" ? ", BEEP_OPTION" : "") + " FROM DVBT." + table +
                                   " ORDER BY NAME");
    }
    // name|process|block|bundle|info|program|mark|description
    Lines ToolSets() {
        return QueryRows(Db(),
                         "SELECT NAME, PROC_ACT_NAME, BLK_ACT_NAME, BUN_ACT_NAME, INFO_ACT_NAME, PROG_ACT_NAME, "
                         "CHECKED_OUT, DESCRIPTION FROM DVBT.TOOL_SET_DEFAULT ORDER BY NAME");
    }
    // tool set|icon|process|block|bundle|info|program
    Lines Icons() {
        return QueryRows(Db(),
                         "SELECT TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, IS_PROG_ACT "
                         "FROM DVBT.TOOL_SET_ICONS ORDER BY TOOL_SET_NAME, NAME");
    }
    TrxFiles files;
};

TEST_P(ImportLists, ListsTakeTypeOwnerAndSettingsAndAnUpdateKeepsOnlyTheSettingsLeftOut) {
    CliResult first = Import(
        "Worklist \"Open\" { Description = \"Mine\";\n"
        "  ListCommon { Type = 1; Owner = \"clerk\"; Where = \"STATE = 'READY'\"; OrderBy = \"PRIORITY\";\n"
        "               Threshold = 0; Beep = true; } }\n"
        "Worklist \"Lost\" { ListCommon { Type = 1; Owner = \"NOBODY\"; Where = \"A = 1\"; } }\n"
        "Worklist \"Plain\" { Beep = true; }\n"
        "Worklist \"Quiet\" { Beep = true; ListCommon { Beep = false; } }\n"
        "ActivitiesList \"Open\" { ListCommon { Where = \"X > 1\"; Threshold = 5; } }\n"
        "ProcessInstancesList \"Running\" { ListCommon { Type = 2; Owner = \"CLERK\"; } }\n"
        "TemplatesList \"Odd\" { ListCommon { Type = 3; Owner = \"CLERK\"; } }\n",
        "clerk");
    // An owner who is not a person is no error.
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.err.find(Line(51009, "Open")), std::string::npos) << first.err;
    EXPECT_NE(first.err.find(Line(51006, "Open")), std::string::npos) << first.err;
    EXPECT_NE(first.out.find("Work list Open...\n"), std::string::npos) << first.out;
    EXPECT_NE(first.out.find("Activity instance list Open...\n"), std::string::npos) << first.out;
    // One name in two tables: two lists. No "Type": public; 3: neither type nor owner.
    EXPECT_EQ(Lists("WORK_LIST"), (Lines{"Lost|1|<null>|A = 1|<null>|<null>|0|<null>|0",
                                         "Open|1|P1|STATE = 'READY'|PRIORITY|0|0|Mine|1",
                                         "Plain|2|<null>|<null>|<null>|<null>|0|<null>|1",
                                         "Quiet|2|<null>|<null>|<null>|<null>|0|<null>|0"}));
    EXPECT_EQ(Lists("ACT_INSTANCE_LIST"), (Lines{"Open|2|<null>|X > 1|<null>|5|0|<null>"}));
    EXPECT_EQ(Lists("PRC_INSTANCE_LIST"), (Lines{"Running|2|<null>|<null>|<null>|<null>|0|<null>"}));
    EXPECT_EQ(Lists("PRC_TEMPLATE_LIST"), (Lines{"Odd|<null>|<null>|<null>|<null>|<null>|0|<null>"}));
    const std::string key = QueryValue(Db(), "SELECT LIST_ID FROM DVBT.WORK_LIST WHERE NAME = 'Open'");
    EXPECT_EQ(key.size(), 32u);
    EXPECT_NE(key, QueryValue(Db(), "SELECT LIST_ID FROM DVBT.ACT_INSTANCE_LIST WHERE NAME = 'Open'"));

    // An update in place: filter and threshold left out stay, the sort
    // order given is written, the description and the beep left out go;
    // "Type" 2 keeps the owner, another number keeps type and owner.
    Exec("UPDATE DVBT.PRC_TEMPLATE_LIST SET TYPE = 1, OWNER = 'P1'");
    CliResult second = Import(
        "Worklist \"Open\" { ListCommon { Type = 2; OrderBy = \"NAME\"; } }\n"
        "Worklist \"Lost\" { ListCommon { Type = 1; Owner = \"Clerk\"; Where = \"\"; } }\n"
        "TemplatesList \"Odd\" { ListCommon { Type = 7; } }\n",
        "clerk", {"--mark-changes"});
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_NE(second.err.find(Line(51045, "Open")), std::string::npos) << second.err;
    EXPECT_NE(second.err.find(Line(51044, "Odd")), std::string::npos) << second.err;
    EXPECT_EQ(Lists("WORK_LIST"), (Lines{"Lost|1|P1|<null>|<null>|<null>|3|<null>|0",
                                         "Open|2|P1|STATE = 'READY'|NAME|0|3|<null>|0",
                                         "Plain|2|<null>|<null>|<null>|<null>|0|<null>|1",
                                         "Quiet|2|<null>|<null>|<null>|<null>|0|<null>|0"}));
    EXPECT_EQ(Lists("PRC_TEMPLATE_LIST"), (Lines{"Odd|1|P1|<null>|<null>|<null>|3|<null>"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT LIST_ID FROM DVBT.WORK_LIST WHERE NAME = 'Open'"), key);
}

TEST_P(ImportLists, DeletionHeldRowsAndTheStaffRightHoldForEveryKindOfList) {
    std::string lists;
    for (const ListTable& t : kListTables)
        for (const char* name : {"Kept", "Gone", "Held"}) lists += std::string(t.type) + " \"" + name + "\" {}\n";
    ASSERT_EQ(Import(lists, "clerk").status, 0);

    // Held rows are refused, with the holder, and left as they were.
    std::string changes;
    for (const ListTable& t : kListTables) {
        Exec(std::string("UPDATE DVBT.") + t.table + " SET CHECKED_OUT_BY = 'ADMIN' WHERE NAME = 'Held'");
        changes += std::string(t.type) + " \"Held\" { Description = \"new\"; }\n" + "delete " + t.type +
                   " \"Gone\";\ndelete " + t.type + " \"Nowhere\";\n";
    }
    // Marking changes: a deletion leaves a tombstone, reported as updated.
    CliResult marked = Import(changes, "clerk", {"--mark-changes"});
    EXPECT_EQ(marked.status, 3) << marked.err;
    for (const ListTable& t : kListTables) {
        SCOPED_TRACE(t.table);
        EXPECT_EQ(Count(marked.err, Line(t.held, "Held", "ADMIN")), 1u) << marked.err;
        EXPECT_EQ(Count(marked.err, Line(t.updated, "Gone")), 1u) << marked.err;
        EXPECT_EQ(Count(marked.err, Line(51273, t.keyword + std::string("Nowhere"))), 1u) << marked.err;
        EXPECT_EQ(QueryRows(Db(), std::string("SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.") + t.table +
                                      " ORDER BY NAME"),
                  (Lines{"Gone|4|<null>", "Held|0|<null>", "Kept|0|<null>"}));
    }

    // A clean run removes the tombstones for good; a missing row is no error.
    std::string removals;
    for (const ListTable& t : kListTables)
        removals += std::string("delete ") + t.type + " \"Gone\";\ndelete " + t.type + " \"Nowhere\";\n";
    CliResult removed = Import(removals, "clerk");
    EXPECT_EQ(removed.status, 0) << removed.err;
    for (const ListTable& t : kListTables) {
        SCOPED_TRACE(t.table);
        EXPECT_EQ(Count(removed.err, Line(t.deleted, "Gone")), 1u) << removed.err;
        EXPECT_EQ(Count(removed.err, Line(51273, t.keyword + std::string("Nowhere"))), 1u) << removed.err;
        EXPECT_EQ(QueryRows(Db(), std::string("SELECT NAME FROM DVBT.") + t.table + " ORDER BY NAME"),
                  (Lines{"Held", "Kept"}));
    }

    // Without the staff right each kind is refused once and nothing changes.
    std::string fresh;
    for (const ListTable& t : kListTables) fresh += std::string(t.type) + " \"Fresh\" {}\n";
    CliResult refused = Import(changes + fresh, "modeler");
    EXPECT_EQ(refused.status, 3) << refused.err;
    for (const ListTable& t : kListTables) {
        SCOPED_TRACE(t.table);
        EXPECT_EQ(Count(refused.err, Line(51166, t.kind)), 1u) << refused.err;
        EXPECT_EQ(QueryRows(Db(), std::string("SELECT NAME, CHECKED_OUT FROM DVBT.") + t.table + " ORDER BY NAME"),
                  (Lines{"Held|0", "Kept|0"}));
    }
    EXPECT_EQ(refused.err.find(" added."), std::string::npos) << refused.err;
}

TEST_P(ImportLists, AToolSetGetsDefaultIconsAndItsIconsByNameWithTheFlagOfTheLastKind) {
    CliResult first = Import(
        "ToolSet \"Bare\" {}\n"
        "ToolSet \"Full\" { Description = \"Editor\"; DefaultProcessActivityIcon = \"proc\";\n"
        "  DefaultProgramActivityIcon = \"prog\";\n"
        "  ProcessActivityIcons [ \"a\" \"shared\" ] InfoActivityIcons [ \"i\" ]\n"
        "  ProgramActivityIcons [ \"shared\" \"b\" ] }\n",
        "modeler");
    EXPECT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.err.find(Line(51037, "Full")), std::string::npos) << first.err;
    EXPECT_NE(first.out.find("Tool Set Full...\n"), std::string::npos) << first.out;
    EXPECT_EQ(ToolSets(), (Lines{"Bare|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|0|<null>",
                                 "Full|proc|dvnbblka|dvnbbnda|dvnbinfa|prog|0|Editor"}));
    const Lines icons{"Full|a|1|0|0|0|0", "Full|b|0|0|0|0|1", "Full|i|0|0|0|1|0", "Full|shared|0|0|0|0|1"};
    EXPECT_EQ(Icons(), icons);

    // Overwrite off: the tool set and its icons stay as they are.
    const std::string changed =
        "ToolSet \"Full\" { BlockActivityIcons [ \"a\" \"c\" ] }\nToolSet \"Bare\" { BundleActivityIcons [ \"n\" ] }\n";
    CliResult kept = Import(changed, "modeler", {"--no-overwrite"});
    EXPECT_EQ(kept.status, 0) << kept.err;
    EXPECT_EQ(Count(kept.err, Line(51101, "Full")), 1u) << kept.err;
    EXPECT_EQ(Icons(), icons);

    // Overwriting: the defaults left out come back, an icon named again is
    // rewritten, one left out stays, a new one comes.
    CliResult overwritten = Import(changed, "modeler", {"--mark-changes"});
    EXPECT_EQ(overwritten.status, 0) << overwritten.err;
    EXPECT_NE(overwritten.err.find(Line(51069, "Full")), std::string::npos) << overwritten.err;
    EXPECT_EQ(ToolSets(), (Lines{"Bare|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|3|<null>",
                                 "Full|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|3|<null>"}));
    const Lines rewritten{"Bare|n|0|0|1|0|0", "Full|a|0|1|0|0|0", "Full|b|0|0|0|0|1", "Full|c|0|1|0|0|0",
                          "Full|i|0|0|0|1|0", "Full|shared|0|0|0|0|1"};
    EXPECT_EQ(Icons(), rewritten);

    // A tombstone is reported as updated and as not found; its icons stay.
    CliResult tombstone = Import("delete ToolSet \"Full\";\n", "modeler", {"--mark-changes"});
    EXPECT_EQ(tombstone.status, 0) << tombstone.err;
    const size_t updated = tombstone.err.find(Line(51069, "Full"));
    EXPECT_NE(updated, std::string::npos) << tombstone.err;
    EXPECT_GT(tombstone.err.find(Line(51273, "DELETE TOOL_SET Full")), updated) << tombstone.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT CHECKED_OUT FROM DVBT.TOOL_SET_DEFAULT WHERE NAME = 'Full'"), "4");
    EXPECT_EQ(Icons(), rewritten);

    // Deleted for good, it takes its icons along: a new tool set of that
    // name starts without them. A missing one is no error.
    CliResult removed = Import("delete ToolSet \"Full\";\ndelete ToolSet \"Nowhere\";\n", "modeler");
    EXPECT_EQ(removed.status, 0) << removed.err;
    EXPECT_NE(removed.err.find(Line(51237, "Full")), std::string::npos) << removed.err;
    EXPECT_NE(removed.err.find(Line(51273, "DELETE TOOL_SET Nowhere")), std::string::npos) << removed.err;
    EXPECT_EQ(Icons(), (Lines{"Bare|n|0|0|1|0|0"}));
    ASSERT_EQ(Import("ToolSet \"Full\" {}\n", "modeler").status, 0);
    EXPECT_EQ(Icons(), (Lines{"Bare|n|0|0|1|0|0"}));
    EXPECT_EQ(ToolSets().size(), 2u);
}

TEST_P(ImportLists, ToolSetNamesAndIconsWithQuotesAreFoundAgainAndTheModellingRightGuardsThem) {
    const std::string quoted = "ToolSet \"O'Brien's\" { InfoActivityIcons [ \"it's\" \"x\" ] }\n";
    ASSERT_EQ(Import(quoted, "modeler").status, 0);
    // Found again by name and icon: updated in place, no second row.
    CliResult again = Import(quoted + "ToolSet \"Other\" { InfoActivityIcons [ \"it's\" ] }\n", "modeler");
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_NE(again.err.find(Line(51069, "O'Brien's")), std::string::npos) << again.err;
    EXPECT_EQ(Icons(), (Lines{"O'Brien's|it's|0|0|0|1|0", "O'Brien's|x|0|0|0|1|0", "Other|it's|0|0|0|1|0"}));

    // An icon that cannot be stored fails alone: the tool set and its other
    // icons are written.
    const std::string wide(300, 'w');
    CliResult failed = Import("ToolSet \"Wide\" { ProcessActivityIcons [ \"" + wide + "\" \"ok\" ] }\n", "modeler");
    EXPECT_EQ(failed.status, 4) << failed.err;
    EXPECT_EQ(Count(failed.err, "\n51368: "), 1u) << failed.err;
    EXPECT_NE(failed.err.find(Line(51037, "Wide")), std::string::npos) << failed.err;
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME FROM DVBT.TOOL_SET_ICONS WHERE TOOL_SET_NAME = 'Wide'"), (Lines{"ok"}));
    Exec("DELETE FROM DVBT.TOOL_SET_ICONS WHERE TOOL_SET_NAME = 'Wide'");
    Exec("DELETE FROM DVBT.TOOL_SET_DEFAULT WHERE NAME = 'Wide'");

    // Without the modelling right: refused once, nothing written or removed.
    CliResult refused =
        Import("ToolSet \"New\" {}\nToolSet \"Newer\" {}\ndelete ToolSet \"O'Brien's\";\n", "clerk");
    EXPECT_EQ(refused.status, 3) << refused.err;
    EXPECT_EQ(Count(refused.err, Line(51165, "Tool Set")), 1u) << refused.err;
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME FROM DVBT.TOOL_SET_DEFAULT ORDER BY NAME"),
              (Lines{"O'Brien's", "Other"}));

    // Deleted for good by a name with a quote, icons and all, and only its own.
    CliResult removed = Import("delete ToolSet \"O'Brien's\";\n", "modeler");
    EXPECT_EQ(removed.status, 0) << removed.err;
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME FROM DVBT.TOOL_SET_DEFAULT"), (Lines{"Other"}));
    EXPECT_EQ(Icons(), (Lines{"Other|it's|0|0|0|1|0"}));
}

TEST_P(ImportLists, TheExampleStoresItsWorkListAndToolSet) {
    CliResult r = RunDvnbt(DvnbtArgs({"--user", "owner", "import", std::string(DVN_SOURCE_DIR) + "/examples/order.trx"}),
                           {"DVNBT_PASSWORD=pw"});
    EXPECT_EQ(r.err.find("Work List"), std::string::npos) << r.err;  // the staff right is there
    EXPECT_EQ(r.err.find("Tool Set"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find(" Open orders is not stored"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find(" Default is not stored"), std::string::npos) << r.err;
    EXPECT_EQ(Lists("WORK_LIST"), (Lines{"Open orders|1|P1|STATE = 'READY'|<null>|<null>|0|<null>|0"}));
    EXPECT_EQ(Icons(), (Lines{"Default|dvnbprga|0|0|0|0|1", "Default|prgbig|0|0|0|0|1"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(ImportLists);

}  // namespace
