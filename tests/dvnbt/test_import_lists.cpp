// dvnbt import of the four kinds of list and of tool sets on both databases:
// the columns each takes from a file, what an update keeps, the icons of a
// tool set and their deletion, names with quotes. The life of a list's row
// that every store shares: tests/dvnbdbbe/test_frame.cpp.
#include <gtest/gtest.h>

#include "importtest.h"

namespace {

class ImportLists : public DvnbtImportTest {
protected:
    // CLERK, who may define staff and models, imports.
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G1", .password = "pw", .staff = 1,
                         .processModeling = 1});
        importer = "clerk";
    }
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    // name|type|owner|filter|sort|threshold|mark|description (work lists: and the beep).
    Lines Lists(const std::string& table) {
        return Rows("SELECT NAME, TYPE, OWNER, FILTER, SORT_CRITERIA, THRESHOLD, CHECKED_OUT, DESCRIPTION" +
                    std::string(table == "WORK_LIST" ? ", BEEP_OPTION" : "") + " FROM DVBT." + table +
                    " ORDER BY NAME");
    }
    // name|process|block|bundle|info|program|mark|description
    Lines ToolSets() {
        return Rows("SELECT NAME, PROC_ACT_NAME, BLK_ACT_NAME, BUN_ACT_NAME, INFO_ACT_NAME, PROG_ACT_NAME, "
                    "CHECKED_OUT, DESCRIPTION FROM DVBT.TOOL_SET_DEFAULT ORDER BY NAME");
    }
    // tool set|icon|process|block|bundle|info|program
    Lines Icons() {
        return Rows("SELECT TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, IS_PROG_ACT "
                    "FROM DVBT.TOOL_SET_ICONS ORDER BY TOOL_SET_NAME, NAME");
    }
};

TEST_P(ImportLists, ListsTakeTypeOwnerAndSettingsAndAnUpdateKeepsOnlyTheSettingsLeftOut) {
    // lists.trx: four work lists, and one list of each other kind. An owner
    // who is not a person is no error.
    CliResult first = Expect(0, ReadData("lists.trx"), {Line(51009, "Open"), Line(51006, "Open")});
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
    const std::string key = Value("SELECT LIST_ID FROM DVBT.WORK_LIST WHERE NAME = 'Open'");
    EXPECT_EQ(key.size(), 32u);
    EXPECT_NE(key, Value("SELECT LIST_ID FROM DVBT.ACT_INSTANCE_LIST WHERE NAME = 'Open'"));

    // An update in place: filter and threshold left out stay, the sort
    // order given is written, the description and the beep left out go;
    // "Type" 2 keeps the owner, another number keeps type and owner.
    Exec("UPDATE DVBT.PRC_TEMPLATE_LIST SET TYPE = 1, OWNER = 'P1'");
    Expect(0,
           "Worklist \"Open\" { ListCommon { Type = 2; OrderBy = \"NAME\"; } }\n"
           "Worklist \"Lost\" { ListCommon { Type = 1; Owner = \"Clerk\"; Where = \"\"; } }\n"
           "TemplatesList \"Odd\" { ListCommon { Type = 7; } }\n",
           {Line(51045, "Open"), Line(51044, "Odd")}, {"--mark-changes"});
    EXPECT_EQ(Lists("WORK_LIST"), (Lines{"Lost|1|P1|<null>|<null>|<null>|3|<null>|0",
                                         "Open|2|P1|STATE = 'READY'|NAME|0|3|<null>|0",
                                         "Plain|2|<null>|<null>|<null>|<null>|0|<null>|1",
                                         "Quiet|2|<null>|<null>|<null>|<null>|0|<null>|0"}));
    EXPECT_EQ(Lists("PRC_TEMPLATE_LIST"), (Lines{"Odd|1|P1|<null>|<null>|<null>|3|<null>"}));
    EXPECT_EQ(Value("SELECT LIST_ID FROM DVBT.WORK_LIST WHERE NAME = 'Open'"), key);
}

TEST_P(ImportLists, AToolSetGetsDefaultIconsAndItsIconsByNameWithTheFlagOfTheLastKind) {
    CliResult first = Expect(0, "ToolSet \"Bare\" {}\nToolSet \"Full\" { Description = \"Editor\"; "
                                "DefaultProcessActivityIcon = \"proc\"; DefaultProgramActivityIcon = \"prog\";\n"
                                "  ProcessActivityIcons [ \"a\" \"shared\" ] InfoActivityIcons [ \"i\" ]\n"
                                "  ProgramActivityIcons [ \"shared\" \"b\" ] }\n", {Line(51037, "Full")});
    EXPECT_NE(first.out.find("Tool Set Full...\n"), std::string::npos) << first.out;
    EXPECT_EQ(ToolSets(), (Lines{"Bare|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|0|<null>",
                                 "Full|proc|dvnbblka|dvnbbnda|dvnbinfa|prog|0|Editor"}));
    const Lines icons{"Full|a|1|0|0|0|0", "Full|b|0|0|0|0|1", "Full|i|0|0|0|1|0", "Full|shared|0|0|0|0|1"};
    EXPECT_EQ(Icons(), icons);

    // Overwrite off: the tool set and its icons stay as they are.
    const std::string changed =
        "ToolSet \"Full\" { BlockActivityIcons [ \"a\" \"c\" ] }\nToolSet \"Bare\" { BundleActivityIcons [ \"n\" ] }\n";
    CliResult kept = Expect(0, changed, {}, {"--no-overwrite"});
    EXPECT_EQ(Count(kept.err, Line(51101, "Full")), 1u) << kept.err;
    EXPECT_EQ(Icons(), icons);

    // Overwriting: the defaults left out come back, an icon named again is
    // rewritten, one left out stays, a new one comes.
    Expect(0, changed, {Line(51069, "Full")}, {"--mark-changes"});
    EXPECT_EQ(ToolSets(), (Lines{"Bare|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|3|<null>",
                                 "Full|dvnbprca|dvnbblka|dvnbbnda|dvnbinfa|dvnbprga|3|<null>"}));
    const Lines rewritten{"Bare|n|0|0|1|0|0", "Full|a|0|1|0|0|0", "Full|b|0|0|0|0|1", "Full|c|0|1|0|0|0",
                          "Full|i|0|0|0|1|0", "Full|shared|0|0|0|0|1"};
    EXPECT_EQ(Icons(), rewritten);

    // A tombstone is reported as updated and as not found; its icons stay.
    CliResult tombstone = Expect(0, "delete ToolSet \"Full\";\n", {}, {"--mark-changes"});
    const size_t updated = tombstone.err.find(Line(51069, "Full"));
    EXPECT_NE(updated, std::string::npos) << tombstone.err;
    EXPECT_GT(tombstone.err.find(Line(51273, "DELETE TOOL_SET Full")), updated) << tombstone.err;
    EXPECT_EQ(Value("SELECT CHECKED_OUT FROM DVBT.TOOL_SET_DEFAULT WHERE NAME = 'Full'"), "4");
    EXPECT_EQ(Icons(), rewritten);

    // Deleted for good, it takes its icons along: a new tool set of that
    // name starts without them. A missing one is no error.
    Expect(0, "delete ToolSet \"Full\";\ndelete ToolSet \"Nowhere\";\n",
           {Line(51237, "Full"), Line(51273, "DELETE TOOL_SET Nowhere")});
    EXPECT_EQ(Icons(), (Lines{"Bare|n|0|0|1|0|0"}));
    ASSERT_EQ(Import("ToolSet \"Full\" {}\n").status, 0);
    EXPECT_EQ(Icons(), (Lines{"Bare|n|0|0|1|0|0"}));
    EXPECT_EQ(ToolSets().size(), 2u);
}

TEST_P(ImportLists, ToolSetNamesAndIconsWithQuotesAreFoundAgain) {
    const std::string quoted = "ToolSet \"O'Brien's\" { InfoActivityIcons [ \"it's\" \"x\" ] }\n";
    ASSERT_EQ(Import(quoted).status, 0);
    // Found again by name and icon: updated in place, no second row.
    Expect(0, quoted + "ToolSet \"Other\" { InfoActivityIcons [ \"it's\" ] }\n", {Line(51069, "O'Brien's")});
    EXPECT_EQ(Icons(), (Lines{"O'Brien's|it's|0|0|0|1|0", "O'Brien's|x|0|0|0|1|0", "Other|it's|0|0|0|1|0"}));

    // An icon that cannot be stored fails alone: the tool set and its other
    // icons are written.
    const std::string wide(300, 'w');
    CliResult failed = Expect(4, "ToolSet \"Wide\" { ProcessActivityIcons [ \"" + wide + "\" \"ok\" ] }\n", {});
    EXPECT_EQ(Count(failed.err, "\n51368: "), 1u) << failed.err;
    EXPECT_EQ(Missing(failed, {Line(51037, "Wide")}), "");
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.TOOL_SET_ICONS WHERE TOOL_SET_NAME = 'Wide'"), (Lines{"ok"}));
    ExecAll(Db(), {"DELETE FROM DVBT.TOOL_SET_ICONS WHERE TOOL_SET_NAME = 'Wide'",
                   "DELETE FROM DVBT.TOOL_SET_DEFAULT WHERE NAME = 'Wide'"});

    // Deleted for good by a name with a quote, icons and all, and only its own.
    Expect(0, "delete ToolSet \"O'Brien's\";\n", {});
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.TOOL_SET_DEFAULT"), (Lines{"Other"}));
    EXPECT_EQ(Icons(), (Lines{"Other|it's|0|0|0|1|0"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(ImportLists);

}  // namespace
