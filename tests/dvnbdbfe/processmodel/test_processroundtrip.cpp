// A process with every construct, imported and loaded back, gives its own
// canonical text, and two repositories that hold it give the same text.
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "../roundtrip.h"

namespace {

// Written as the load gives it back: durations in seconds, the defaults
// that the store sets written out.
const char* const kOrder = R"(
Category "Sales";
DataStructure "Default Data Structure";
DataStructure "OrderData" { Members [ DataStructureMember "Number" { Name = "Number"; Type = 1; } ] }
Process "Sub" {
  RcCreation = 2; PromptAtProcessStart = false;
  WindowLayout { ShowConnectors = 0; ShowConditions = 0; }
  ProcessHasInputStr -> "Default Data Structure";
  ProcessHasOutputStr -> "Default Data Structure";
}
Process "Order" {
  Description = "Handle one order";
  Documentation = "Two lines\nof text";
  Icon = "ordicon";
  ValidFrom = "2026-01-01";
  RcCreation = 1;
  PromptAtProcessStart = true;
  DataFromInputContainer = false;
  OrganizationFromInput = "Number";
  RoleFromInput = "Number";
  AdministratorFromInput = "Number";
  NotifyDuration { Seconds = 3600; }
  ProcessDefault {
    AuditDB = 2; AuditHX = 3; NotificationMode = 1; RefreshPolicy = 1; Autonomy = 5;
    KeepWorkitems { Type = 2; Seconds = 600; }
    KeepProcesses { Type = 1; }
  }
  ActivityDefault {
    CheckoutPossible = true; EnforceImmedExecution = false; IncludeProcessAssignment = true;
    PreferLocalUsers = false; PreferNonAbsentUsers = true; SelectLeastWorkload = false;
    Substitution = true; NotificationSubstitution = false; DuplicateNotification = true;
    AuditFilterDB = "ALL"; AuditFilterHX = "NONE";
  }
  PaperColor { Red = 255; Green = 0; Blue = 128; }
  ActivityColor { Red = 0; Green = 0; Blue = 0; }
  ActivityFont { Name = "Arial"; Size = 10; Style = 2; }
  ExitConditionFont { Name = "Courier"; }
  WindowLayout { ZoomFactor = 150; Paper { Xpos = 1; Ypos = 2; Width = 300; Height = 400; } ShowConnectors = 1; ShowConditions = 3; }
  InputContainer { Members [ { Name = "Address"; Value = "x"; } { Name = "Number"; Value = "0"; } ] }
  OutputContainer { Members [ { Name = "Number"; Value = "1"; } ] }
  Diagram {
    Activities [
      Activity "Ask" {
        Implementation { Type = 5; }
        Start { Condition = "OR"; Manual = true; }
        Exit { Manual = false; }
        NotifyType = 3; NotificationFromInput = "Number"; DecisionFromInput = "Number";
        ExpirationFromInput = "Number";
        Priority { PriorityType = 1; FromInput = "Number"; }
        DoneBy { AssignType = 3; PersonsFromInput [ "p1" "p2" ] }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
      Activity "Bill" {
        Implementation { Type = 2; AsProcess = ProcessImplementation { SystemFromInput = "Number"; ReferencesProcess -> "Sub"; } }
        Start { Condition = "OR"; Manual = false; }
        Exit { Manual = true; }
        Priority { PriorityType = 0; }
        NotifyType = 4;
        DoneBy { AssignType = 8; StarterOf = "Pack.Inner.Label"; }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
      Activity "Check" {
        Implementation { Type = 5; }
        Description = "look";
        Layout { Xpos = 10; Ypos = 20; Width = 30; Height = 40; }
        NamePos { Xpos = 11; Ypos = 21; }
        Start { Condition = "AND"; Manual = true; }
        Exit { Condition = "RC = 0"; ConditionPos { Xpos = 5; Ypos = 6; } Manual = false; }
        Priority { PriorityType = 2; Number = 5; }
        NotifyType = 1;
        NotifyDuration { Seconds = 60; }
        DecisionDuration { Seconds = 120; }
        ExpirationDuration { Seconds = 900; }
        DoneBy {
          AssignType = 1; MembersFromInput [ "a" "b" ] OrganizationFromInput = "Number"; IncludeType = 2;
          LevelFrom = 1; LevelTo = 3;
        }
        ActivityDefault { CheckoutPossible = false; AuditFilterDB = "SOME"; }
        InputContainer { Members [ { Name = "Number"; Value = "7"; } ] }
        ActivityHasInputStr -> "OrderData";
        ActivityHasOutputStr -> "Default Data Structure";
      }
      Activity "Notify" {
        Implementation {
          Type = 4;
          AsBundle = BundleImplementation {
            InstantiatingMember = "Number"; NrOfInstancesFromInput = "Number";
            RestartOption = 2; PromptForPlanning = true; PlanningMode = 2; Assignment = 1; RcCreation = 1;
            Diagram {
              Activities [
                Activity "Mail" {
                  Implementation { Type = 5; }
                  Start { Condition = "OR"; Manual = true; } Exit { Manual = false; }
                  DoneBy { AssignType = 4; }
                  ActivityHasInputStr -> "Default Data Structure";
                  ActivityHasOutputStr -> "Default Data Structure";
                }
              ]
            }
          }
        }
        Start { Condition = "OR"; }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
      Activity "Pack" {
        Implementation {
          Type = 3;
          AsBlock = BlockImplementation {
            WindowLayout { ZoomFactor = 50; ShowConnectors = 2; ShowConditions = 1; }
            Diagram {
              Activities [
                Activity "Inner" {
                  Implementation {
                    Type = 3;
                    AsBlock = BlockImplementation {
                      WindowLayout { ShowConnectors = 0; ShowConditions = 0; }
                      Diagram {
                        Activities [
                          Activity "Label" {
                            Implementation { Type = 5; }
                            Start { Condition = "OR"; Manual = true; } Exit { Manual = false; }
                            DoneBy { AssignType = 11; MgrOrganizationFromInput = "Number"; IncludeType = 1; }
                            ActivityHasInputStr -> "Default Data Structure";
                            ActivityHasOutputStr -> "Default Data Structure";
                          }
                        ]
                        Sources [ Source "1" { Layout { Xpos = 1; Ypos = 2; } } ]
                        DataConnectors [ DataConnector { Type = 0; DataFromSource -> "1"; DataToActivity -> "Label"; } ]
                        TextAnnotations [ TextAnnotation "Deep" { Text = "inside"; } ]
                      }
                    }
                  }
                  Start { Condition = "OR"; }
                  ActivityHasInputStr -> "Default Data Structure";
                  ActivityHasOutputStr -> "Default Data Structure";
                }
                Activity "Wrap" {
                  Implementation { Type = 5; }
                  Start { Condition = "OR"; Manual = true; } Exit { Manual = false; }
                  DoneBy { AssignType = 5; }
                  ActivityHasInputStr -> "Default Data Structure";
                  ActivityHasOutputStr -> "Default Data Structure";
                }
              ]
              ControlConnectors [
                ControlConnector { ConnectorSpec = 1; ControlFromActivity -> "Wrap"; ControlToActivity -> "Inner"; }
              ]
            }
          }
        }
        Start { Condition = "OR"; }
        ActivityHasInputStr -> "Default Data Structure";
        ActivityHasOutputStr -> "Default Data Structure";
      }
    ]
    Sources [ Source "1" { } Source "2" { Layout { Xpos = 10; Ypos = 20; } } ]
    Sinks [ Sink "1" { Layout { Xpos = 400; Ypos = 20; } } ]
    ControlConnectors [
      ControlConnector {
        ConnectorSpec = 1; Name = "go"; Description = "when checked";
        Condition = "Number > 0";
        ConditionPos { Xpos = 7; Ypos = 8; }
        BendPoints [ { Xpos = 50; Ypos = 60; } { Xpos = 5; Ypos = 6; } ]
        ControlFromActivity -> "Check";
        ControlToActivity -> "Pack";
      }
      ControlConnector { ConnectorSpec = 2; ControlFromActivity -> "Pack"; ControlToActivity -> "Bill"; }
    ]
    DataConnectors [
      DataConnector {
        Type = 0; Name = "in";
        Mappings [ { From = "Address"; To = "Number"; } { From = "Number"; To = "Number"; } ]
        BendPoints [ { Xpos = 9; Ypos = 9; } { Xpos = 1; Ypos = 1; } ]
        DataFromSource -> "2";
        DataToActivity -> "Check";
      }
      DataConnector { Type = 0; DataFromActivity -> "Bill"; DataToSink -> "1"; }
      DataConnector { Type = 1; DataFromActivity -> "Check"; DataToActivity -> "Check"; }
    ]
    TextAnnotations [
      TextAnnotation "A note" { Text = "first by name"; }
      TextAnnotation "Note" {
        Text = "Bills go out on Fridays";
        Color { Red = 1; Green = 2; Blue = 3; }
        BackgroundColor { Red = 255; Green = 255; Blue = 255; }
        Font { Name = "Arial"; Size = 8; Style = 1; }
        Layout { Xpos = 1; Ypos = 2; Width = 3; Height = 4; }
      }
    ]
  }
  ProcessHasCategory -> "Sales";
  ProcessHasInputStr -> "OrderData";
  ProcessHasOutputStr -> "Default Data Structure";
}
)";

class ProcessRoundTrip : public RoundTripTest {
protected:
    // What the repository holds, loaded as an export loads it, and written.
    std::string Loaded() {
        LoadRun run(Db());
        run.fe.Categories(DvnString(""));
        run.fe.DataStructures(DvnString(""));
        run.fe.Processes(DvnString(""));
        return DvnTRXWriter(run.data).Write();
    }
};

TEST_P(ProcessRoundTrip, AProcessWithEveryConstructComesBackAsItWasWritten) {
    const std::string canonical = Canonical(kOrder);
    ASSERT_EQ(Import(kOrder), 0);
    const std::string loaded = Loaded();
    EXPECT_EQ(loaded, canonical);
    // Imported again, with fresh keys, the repository gives the same text.
    ASSERT_EQ(Import(kOrder), 0);
    EXPECT_EQ(Loaded(), loaded);
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProcessRoundTrip);

}  // namespace
