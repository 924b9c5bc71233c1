// Load of lists and tool sets: a file imported and loaded back gives its
// canonical text up to the differences docs/lists.md lists; keys of one
// kind of list, owners, beeps, tombstones and the keys of tool sets.
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "../roundtrip.h"

namespace {

using Lines = std::vector<std::string>;

class ListLoad : public RoundTripTest {
protected:
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    std::string Loaded() {
        LoadRun run(Db());
        run.fe.Lists(DvnString(""));
        run.fe.ToolSet(DvnString(""));
        return DvnTRXWriter(run.data).Write();
    }
};

TEST_P(ListLoad, ListsAndToolSetsComeBackAsWrittenUpToTheDocumentedDifferences) {
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'CLERK', 0)");
    const std::string input = R"(
ActivitiesList "Mine" { Description = "Own"; ListCommon { Type = 1; Owner = "CLERK"; Where = "STATE = 'READY'"; OrderBy = "NAME"; Threshold = 0; } }
ProcessInstancesList "Public" { ListCommon { Type = 2; Threshold = 7; } }
TemplatesList "Bare";
Worklist "Beeping" { ListCommon { Type = 1; Owner = "LOST"; Beep = true; } }
Worklist "Mine" { ListCommon { Type = 2; Where = "X"; } }
ToolSet "Plain";
ToolSet "O'Brien" { Description = "Icons"; DefaultInfoActivityIcon = "info";
  ProcessActivityIcons [ "b" "a" ] ProgramActivityIcons [ "a" "Z" ] }
)";
    ASSERT_EQ(Import(input), 0);
    // "Type" 2 where absent, "Faehler" for a lost owner, "Beep" on every
    // work list, the default icons filled in, an icon in two sets in the
    // later one only, icons sorted by name.
    const std::string expected = R"(
ActivitiesList "Mine" { Description = "Own"; ListCommon { Type = 1; Owner = "CLERK"; Where = "STATE = 'READY'"; OrderBy = "NAME"; Threshold = 0; } }
ProcessInstancesList "Public" { ListCommon { Type = 2; Threshold = 7; } }
TemplatesList "Bare" { ListCommon { Type = 2; } }
Worklist "Beeping" { ListCommon { Type = 1; Owner = "Faehler"; Beep = true; } }
Worklist "Mine" { ListCommon { Type = 2; Where = "X"; Beep = false; } }
ToolSet "Plain" { DefaultProcessActivityIcon = "dvnbprca"; DefaultBlockActivityIcon = "dvnbblka";
  DefaultBundleActivityIcon = "dvnbbnda"; DefaultInfoActivityIcon = "dvnbinfa"; DefaultProgramActivityIcon = "dvnbprga"; }
ToolSet "O'Brien" { Description = "Icons"; DefaultProcessActivityIcon = "dvnbprca"; DefaultBlockActivityIcon = "dvnbblka";
  DefaultBundleActivityIcon = "dvnbbnda"; DefaultInfoActivityIcon = "info"; DefaultProgramActivityIcon = "dvnbprga";
  ProcessActivityIcons [ "b" ] ProgramActivityIcons [ "Z" "a" ] }
)";
    const std::string loaded = Loaded();
    EXPECT_EQ(loaded, Canonical(expected));
    // What was loaded, stored again over itself, loads the same.
    ASSERT_EQ(Import(loaded), 0);
    EXPECT_EQ(Loaded(), loaded);
}

TEST_P(ListLoad, AKeyIsMissedOnlyWhenNoTableHoldsItAndRowsReadAsTheirColumnsSay) {
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'CLERK', 4)");
    Exec("INSERT INTO DVBT.WORK_LIST (LIST_ID, NAME, TYPE, OWNER, BEEP_OPTION, CHECKED_OUT) VALUES "
         "('W1', 'Loud', 2, 'P1', 2, 0), ('W2', 'Gone', 1, 'P1', 1, 4)");
    Exec("INSERT INTO DVBT.ACT_INSTANCE_LIST (LIST_ID, NAME, TYPE, OWNER, THRESHOLD, CHECKED_OUT) VALUES "
         "('A1', 'Odd', NULL, 'P1', NULL, 5), ('A2', 'Owned', 3, 'P1', 0, 3)");
    {
        LoadRun run(Db());
        run.fe.Lists(DvnString("W1"));
        run.fe.Lists(DvnString("A2"));
        run.fe.Lists(DvnString("W2"));
        EXPECT_EQ(run.Messages(), (Lines{"51507|Loud", "51504|Owned", "51507|Gone"}));
        // TYPE 2: public whatever OWNER holds; any beep but 0 is on.
        const DvnfAttributeDataReader loud = run.Get("Worklist", "W1").AttributeData()("ListCommon");
        EXPECT_EQ(Defined(loud, {"Type", "Owner", "Beep", "Threshold"}), "Type=2 Beep=true");
        // Any other type is owned; a tombstoned person is still its owner.
        EXPECT_EQ(Defined(run.Get("ActivitiesList", "A2").AttributeData()("ListCommon"),
                          {"Type", "Owner", "Threshold"}),
                  "Type=1 Owner=CLERK Threshold=0");
        EXPECT_EQ(run.Get("ActivitiesList", "A2").State(), DvnfObject::StateChanged);
        // A tombstone is bare.
        const DvnfEntity& gone = run.Get("Worklist", "W2");
        EXPECT_EQ(gone.State(), DvnfObject::StateDeleted);
        EXPECT_FALSE(gone.AttributeData()("ListCommon").IsValid());
    }
    {
        // No type: neither type nor owner; no threshold.
        LoadRun run(Db());
        run.fe.OtherLists(0, DvnString("A1"));
        run.fe.Lists(DvnString("nowhere"));
        run.fe.WorkList(DvnString("A1"));
        EXPECT_EQ(run.Messages(), (Lines{"51504|Odd", "51543|nowhere", "51540|nowhere", "51541|nowhere",
                                         "51542|nowhere", "51543|A1"}));
        EXPECT_EQ(Defined(run.Get("ActivitiesList", "A1").AttributeData()("ListCommon"),
                          {"Type", "Owner", "Threshold"}),
                  "");
    }
}

TEST_P(ListLoad, EachLoadOfAToolSetMakesANewKeyAndATombstoneKeepsItsAttributes) {
    Exec("INSERT INTO DVBT.TOOL_SET_DEFAULT (NAME, PROC_ACT_NAME, BLK_ACT_NAME, BUN_ACT_NAME, INFO_ACT_NAME, "
         "PROG_ACT_NAME, CHECKED_OUT) VALUES ('It''s', 'p', 'b', 'n', 'i', 'g', 4)");
    Exec("INSERT INTO DVBT.TOOL_SET_ICONS (TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, "
         "IS_PROG_ACT) VALUES ('It''s', 'both', 1, 0, 0, 0, 1)");
    LoadRun first(Db()), second(Db());
    first.fe.ToolSet(DvnString("It's"));
    second.fe.ToolSet(DvnString("It's"));
    first.fe.ToolSet(DvnString("Nowhere"));
    EXPECT_EQ(first.Messages(), (Lines{"51531|It's", "51567|Nowhere"}));
    auto only = [](LoadRun& run) -> DvnfEntity& {
        auto& entities = run.data.GetEntities(DvnfString("ToolSet"));
        EXPECT_EQ(entities.size(), 1u);
        return entities.begin()->second->Entity();
    };
    DvnfEntity& a = only(first);
    DvnfEntity& b = only(second);
    EXPECT_NE(a.OID().str(), b.OID().str());
    EXPECT_EQ(a.State(), DvnfObject::StateDeleted);
    const DvnfAttributeDataReader attributes = a.AttributeData();
    EXPECT_EQ(Defined(attributes, {"DefaultProcessActivityIcon", "DefaultProgramActivityIcon"}),
              "DefaultProcessActivityIcon=p DefaultProgramActivityIcon=g");
    // An icon marked for two kinds stands in both sets.
    EXPECT_EQ(attributes("ProcessActivityIcons").NumberOfElements(), 1);
    EXPECT_EQ(attributes("ProgramActivityIcons").NumberOfElements(), 1);
    EXPECT_FALSE(attributes("InfoActivityIcons").IsValid());
}

DVN_INSTANTIATE_BOTH_BACKENDS(ListLoad);

}  // namespace
