// A file imported and loaded back gives its own canonical text, up to the
// differences that docs/load.md lists, and two repositories that hold it give
// the same text.
#include <gtest/gtest.h>

#include "loadrun.h"
#include "roundtrip.h"

namespace {

// What the process corpus (test_corpus.cpp) does not hold, written as the
// load gives it back: the defaults that the store sets written out.
const char* const kOrder = R"(
DataStructure "Default Data Structure";
Process "Sub" {
  RcCreation = 2; PromptAtProcessStart = false;
  WindowLayout { ShowConnectors = 0; ShowConditions = 0; }
  ProcessHasInputStr -> "Default Data Structure";
  ProcessHasOutputStr -> "Default Data Structure";
}
Process "Order" {
  ValidFrom = "2026-01-01";
  RcCreation = 1;
  PromptAtProcessStart = true;
  WindowLayout { ShowConnectors = 1; ShowConditions = 3; }
  Diagram {
    Activities [
      Activity "Ask" {
        Implementation { Type = 5; }
        Start { Condition = "OR"; Manual = true; }
        Exit { Manual = false; }
        NotifyType = 3; NotificationFromInput = "Number"; DecisionFromInput = "Number";
        ExpirationFromInput = "Number";
        Priority { PriorityType = 1; FromInput = "Number"; }
        DoneBy { AssignType = 11; MgrOrganizationFromInput = "Number"; IncludeType = 1; }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
      Activity "Bill" {
        Implementation { Type = 2; AsProcess = ProcessImplementation { SystemFromInput = "Number"; ReferencesProcess -> "Sub"; } }
        Start { Condition = "OR"; Manual = false; }
        Exit { Manual = true; }
        Priority { PriorityType = 0; }
        NotifyType = 4;
        DoneBy { AssignType = 5; }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
    ]
    TextAnnotations [
      TextAnnotation "Note" {
        Text = "Bills go out on Fridays";
        Color { Red = 1; Green = 2; Blue = 3; }
        BackgroundColor { Red = 255; Green = 255; Blue = 255; }
        Font { Name = "Arial"; Size = 8; Style = 1; }
        Layout { Xpos = 1; Ypos = 2; Width = 3; Height = 4; }
      }
    ]
  }
  ProcessHasInputStr -> "Default Data Structure";
  ProcessHasOutputStr -> "Default Data Structure";
}
)";

class RoundTrip : public RoundTripTest {
protected:
    // Categories, structures and processes of the repository, loaded as an
    // export loads them into fresh core data, and written.
    std::string Loaded() {
        LoadRun run(Db());
        run.fe.Categories(DvnString(""));
        run.fe.DataStructures(DvnString(""));
        run.fe.Processes(DvnString(""));
        return DvnTRXWriter(run.data).Write();
    }
};

TEST_P(RoundTrip, CategoriesAndStructuresComeBackAsTheyWereWritten) {
    // Forward and backward references between structures, every kind of
    // member, texts with line breaks and beyond ASCII; the default structure
    // stands in every repository.
    const std::string input = R"(
Category "Sales" { Description = "Customer orders"; Documentation = "Line one\nLine two"; }
Category "Empty";
Category "Caf\xC3\xA9" { Description = "\xC3\xA9t\xC3\xA9"; }
DataStructure "Address" {
  Description = "Where";
  Documentation = "Kept whole";
  Members [
    DataStructureMember "Street" { Name = "Street"; Type = 0; Cardinality = 2; Description = "s"; Documentation = "d"; }
    DataStructureMember "Zip" { Name = "Zip"; Type = 1; }
  ]
}
DataStructure "Order" {
  Members [
    DataStructureMember "Customer" { Name = "Customer"; Type = 4; HasSubStructure -> "Party"; }
    DataStructureMember "Amount" { Name = "Amount"; Type = 3; }
    DataStructureMember "Lines" { Name = "Lines"; Type = 2; Cardinality = 20; }
    DataStructureMember "ShipTo" { Name = "ShipTo"; Type = 4; HasSubStructure -> "Address"; }
  ]
}
DataStructure "Party" {
  Members [ DataStructureMember "Orders" { Name = "Orders"; Type = 4; Cardinality = 10; HasSubStructure -> "Order"; } ]
}
DataStructure "Default Data Structure";
)";
    ASSERT_EQ(Import(input), 0);
    EXPECT_EQ(Loaded(), Canonical(input));
}

TEST_P(RoundTrip, WhatTheStoreChangesComesBackChanged) {
    const std::string cut(254, 'x');
    const std::string input = R"(
Category "Blank" { Description = ""; }
Category "Obsolete" { Description = "soon gone"; }
DataStructure "Diff" {
  Description = ")" + cut + R"(yyyy";
  Members [
    DataStructureMember "NoType" { Name = "NoType"; }
    DataStructureMember "Loose" { Name = "Loose"; Type = 4; }
    DataStructureMember "Renamed" { Name = "Other"; Type = 1; }
    DataStructureMember "Big" { Name = "Big"; Type = 7; }
  ]
}
)";
    ASSERT_EQ(Import(input), 0);
    // A deletion kept as a tombstone comes back as a deletion.
    ASSERT_EQ(Import("delete Category \"Obsolete\";", false), 0);
    const std::string expected = R"(
Category "Blank";
delete Category "Obsolete";
DataStructure "Diff" {
  Description = ")" + cut + R"(";
  Members [
    DataStructureMember "NoType" { Name = "NoType"; Type = 0; }
    DataStructureMember "Loose" { Name = "Loose"; Type = 4; HasSubStructure -> "Default Data Structure"; }
    DataStructureMember "Other" { Name = "Other"; Type = 1; }
    DataStructureMember "Big" { Name = "Big"; Type = 0; }
  ]
}
DataStructure "Default Data Structure";
)";
    EXPECT_EQ(Loaded(), Canonical(expected));
}

TEST_P(RoundTrip, AProcessComesBackAsItWasWritten) {
    const std::string canonical = Canonical(kOrder);
    ASSERT_EQ(Import(kOrder), 0);
    const std::string loaded = Loaded();
    EXPECT_EQ(loaded, canonical);
    // Imported again, with fresh keys, the repository gives the same text.
    ASSERT_EQ(Import(kOrder), 0);
    EXPECT_EQ(Loaded(), loaded);
}

DVN_INSTANTIATE_BOTH_BACKENDS(RoundTrip);

}  // namespace
