// Servers loaded back: every kind with the columns it holds, by the readings
// undone, named by their full names (the server of examples/order.trx:
// test_nodes.cpp).
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "../roundtrip.h"

namespace {

const char* const kBase =
    "Domain \"domain\" {}\n"
    "SystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n"
    "System \"DVNSYS\" { SystemIdentifier = 1; SystemIsInSystemGroup -> \"SYS_GRP\"; }\n";

// Every kind, each with its links and what it may hold.
const char* const kServers = R"(
Server "CLN.DVNSYS.SYS_GRP" { Type = 1; Description = "cleans"; Documentation = "doc";
  ServerDefault { CleanupServer { CleanupTime { Minutes = 2; } CleanupDelayTime { Seconds = 0; }
    ServerCommon { AttachMode = 1; StartMode = 2; StartTime { Every = 1; AtHours = 6; AtMinutes = 30; }
      CheckInterval { Seconds = 0; } InstanceMode = 0; NrOfInstances = 3; ExternalControl = 2;
      ExternalControlContext = "ctx"; } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "DST.DVNSYS.SYS_GRP" { Type = 2;
  ServerDefault { DistributionServer { DistributionReceiveTime { AnyTime = true; } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "EXE.DVNSYS.SYS_GRP" { Type = 3; ServerDefault { ExecutionServer { ProcessBehaviour = 2;
  ImmediateCleanup = true; LeastWorkloadSupport = false; NavigationTransactionThreshold = 7;
  ServerCommon { InstanceMode = 1; } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "GW.DVNSYS.SYS_GRP" { Type = 4;
  ServerDefault { GatewayServer { ServerCommon { ExternalControl = 1; StopTime { Every = 2; On = 1; } } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "MOD.DVNSYS.SYS_GRP" { Type = 5; ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "SCH.DVNSYS.SYS_GRP" { Type = 6; ServerDefault { SchedulingServer {
  NotificationCheckInterval { Seconds = 60; } SuspensionCheckInterval { Seconds = 3600; }
  CreateNotificationItemsThreshold = 5; DeleteNotificationItemsThreshold = 6; } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "PES1.DVNSYS.SYS_GRP" { Type = 7; ServerDefault { ProgramExecutionServer { Platform = 4;
  UserSupport = 1; ImplementationSupport = 3; PEADefault { TaskingMode = 0; DllLoadMode = 2; SupportMode = 1;
  MaximumTasksStarted = 20; MaximumDllsLoaded = 4; } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
Server "UP1.DVNSYS.SYS_GRP" { Type = 8; UPESContext { HXSystem = 1; MessageFormat = 1;
  PhysicalQueueName = "PQ"; QueueManagerName = "QM"; Version = 4; Release = 2; Level = 2; }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
)";

using ServerLoad = RoundTripTest;

TEST_P(ServerLoad, EveryKindComesBackAsTheFileGaveItButForItsStoredForms) {
    ASSERT_EQ(Import(std::string(kBase) + kServers), 0);
    LoadRun run(Db());
    run.fe.Servers(DvnString(""));
    // In the order of the kinds, each with its own progress message.
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51527|EXE", "51530|SCH", "51529|MOD", "51528|GW",
                                                        "51526|DST", "51525|CLN", "51532|PES1", "51570|UP1"}));
    // A duration comes back in seconds, a time event with "AnyTime".
    const std::string expected = Replaced(kServers, {{"CleanupTime { Minutes = 2; }", "CleanupTime { Seconds = 120; }"},
                                                     {"StartTime { Every = 1;", "StartTime { AnyTime = false; Every = 1;"},
                                                     {"StopTime { Every = 2;", "StopTime { AnyTime = false; Every = 2;"}});
    EXPECT_EQ(DvnTRXWriter(run.data).Write(), Canonical(expected));

    // By kind and key; a key without a row is reported where the kind has a message.
    const std::string key = QueryValue(Db(), "SELECT SERVER_ID FROM DVBT.EXECUTION_SERVER");
    LoadRun one(Db());
    one.fe.Servers(23, DvnString(key));
    one.fe.Servers(23, DvnString("nokey"));
    one.fe.Servers(26, DvnString("nokey"));
    one.fe.Servers(30, DvnString("nokey"));
    one.fe.Servers(27, DvnString(""));
    EXPECT_EQ(one.Messages(), (std::vector<std::string>{"51527|EXE", "51563|nokey", "51568|nokey"}));
    EXPECT_EQ(one.Count("Server"), 1u);
}

DVN_INSTANTIATE_BOTH_BACKENDS(ServerLoad);

}  // namespace
