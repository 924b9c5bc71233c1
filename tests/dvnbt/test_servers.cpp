// dvnbt import of servers on both databases: every kind with its columns,
// the system a server belongs to, what is checked before an insert, and
// deletions, with a system or alone, under both source options.
#include <gtest/gtest.h>

#include "importtest.h"

namespace {

using Lines = std::vector<std::string>;

// DVNSYS, the system a server falls back to, is not the first row:
// systems are stored in the order of their names.
const char* const kBase =
    "Domain \"domain\" {}\n"
    "SystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n"
    "System \"ASYS\" { SystemIdentifier = 4; }\n"
    "System \"DVNSYS\" { SystemIdentifier = 1; }\n"
    "System \"SYS2\" { SystemIdentifier = 2; }\n"
    "System \"SYS3\" { SystemIdentifier = 3; }\n";

// One server of every kind in DVNSYS, each column given.
const char* const kEveryKind = R"(
Server "CLN.DVNSYS.SYS_GRP" { Type = 1; Description = "cleans"; Documentation = "doc";
  ServerDefault { CleanupServer { CleanupTime { Minutes = 2; } CleanupDelayTime { Seconds = 0; }
    ServerCommon { AttachMode = 1; StartMode = 2; StartTime { Every = 1; AtHours = 6; AtMinutes = 30; }
      CheckInterval { Seconds = 0; } InstanceMode = 0; NrOfInstances = 3; ExternalControl = 2;
      ExternalControlContext = "ctx"; } } } }
Server "DST.DVNSYS.SYS_GRP" { Type = 2;
  ServerDefault { DistributionServer { DistributionReceiveTime { AnyTime = true; } } } }
Server "EXE.DVNSYS.SYS_GRP" { Type = 3; ServerDefault { ExecutionServer { ProcessBehaviour = 2;
  ImmediateCleanup = true; LeastWorkloadSupport = false; NavigationTransactionThreshold = 7;
  ServerCommon { InstanceMode = 5; } } } }
Server "GW.DVNSYS.SYS_GRP" { Type = 4;
  ServerDefault { GatewayServer { ServerCommon { ExternalControl = 7; StopTime { Every = 2; On = 1; } } } } }
Server "MOD.DVNSYS.SYS_GRP" { Type = 5; }
Server "SCH.DVNSYS.SYS_GRP" { Type = 6; ServerDefault { SchedulingServer {
  NotificationCheckInterval { Minutes = 1; } SuspensionCheckInterval { Hours = 1; }
  CreateNotificationItemsThreshold = 5; DeleteNotificationItemsThreshold = 6; } } }
Server "PES1.DVNSYS.SYS_GRP" { Type = 7; ServerDefault { ProgramExecutionServer { Platform = 4;
  UserSupport = 1; ImplementationSupport = 3; PEADefault { TaskingMode = 0; DllLoadMode = 2; SupportMode = 1;
  MaximumTasksStarted = 20; MaximumDllsLoaded = 4; } } } }
Server "UP1.DVNSYS.SYS_GRP" { Type = 8; UPESContext { HXSystem = 1; MessageFormat = 2;
  PhysicalQueueName = "PQ"; QueueManagerName = "QM"; Version = 4; } }
)";

class Servers : public DvnbtImportTest {
protected:
    // The repository gets its administrator, who imports from then on.
    void AddAdmin() {
        AddPerson(Db(), {.id = "P0", .userId = "ADMIN", .systemGroup = Value("SELECT SYSTEM_GROUP_ID FROM DVBT.SYSTEM_GROUP"),
                         .password = "pw", .staff = 1, .topology = 1, .processModeling = 1});
        importer = "admin";
    }
    // The servers of a table with the name of their system, by name.
    Lines InSystems(const std::string& table, const std::string& columns = "v.CHECKED_OUT") {
        return Rows("SELECT v.NAME, y.NAME, " + columns + " FROM DVBT." + table +
                    " v LEFT JOIN DVBT.SYSTEM y ON y.SYSTEM_ID = v.SYSTEM ORDER BY v.NAME");
    }
};

TEST_P(Servers, EveryKindKeepsItsColumnsAndFindsItsSystem) {
    ASSERT_EQ(Import(kBase).status, 0);
    // A system by link, by the full name, not found, not named; a kind that
    // is not known; a name of nine characters.
    const std::string more =
        "Server \"LNK.NOPE.SYS_GRP\" { Type = 4; ServerIsInSystem -> \"SYS2\"; }\n"
        "Server \"FQN.SYS2\" { Type = 4; }\n"
        "Server \"LOST.NOWHERE.SYS_GRP\" { Type = 4; }\n"
        "Server \"PLAIN\" { Type = 4; }\n"
        "Server \"WHAT.DVNSYS\" { Type = 9; }\n"
        "Server \"EXECUTION9.DVNSYS\" { Type = 3; }\n";
    CliResult r = Expect(4, kEveryKind + more, {});
    EXPECT_EQ(Missing(r, {Line(51031, "CLN"), Line(51032, "DST"), Line(51033, "EXE"), Line(51034, "GW"),
                          Line(51035, "MOD"), Line(51036, "SCH"), Line(51133, "PES1"), Line(51193, "UP1"),
                          Line(51103, "NOWHERE"), Line(51920, "WHAT.DVNSYS", "9"), Line(51126, "EXECUTION9"),
                          Line(51033, "EXECUTIO")}),
              "");
    EXPECT_EQ(InSystems("CLEANUP_SERVER",
                        "CLEANUP_TIME, CLEANUP_DELAY_TIME, ATTACH_MODE, START_MODE, START_TIME, STOP_TIME, "
                        "CHECK_INTERVAL, INSTANCE_MODE, NUMBER_OF_INSTANCS, EXTERNAL_CONTROL, EXTRNL_CNTRL_CNTXT, "
                        "v.DESCRIPTION, v.DOCUMENTATION, v.CHECKED_OUT, v.CHECKED_OUT_BY"),
              (Lines{"CLN|DVNSYS|120|0|2|1|EVERY DAY AT 6.30|<null>|0|2|3|2|ctx|cleans|doc|0|<null>"}));
    EXPECT_EQ(InSystems("DISTRIBUTION_SRV", "DIST_RECEIVE_TIME, ATTACH_MODE"), (Lines{"DST|DVNSYS|ANYTIME|<null>"}));
    EXPECT_EQ(InSystems("EXECUTION_SERVER",
                        "PROCESS_BEHAVIOR, IMMEDIATE_CLEANUP, LEAST_WORKLOAD_SUP, NAV_TRAN_THRESH, INSTANCE_MODE"),
              (Lines{"EXE|DVNSYS|2|1|0|7|1", "EXECUTIO|DVNSYS|<null>|<null>|<null>|<null>|<null>"}));
    EXPECT_EQ(InSystems("GATEWAY_SERVER", "EXTERNAL_CONTROL, STOP_TIME"),
              (Lines{"FQN|SYS2|<null>|<null>", "GW|DVNSYS|1|EVERY MONTH ON MONDAY", "LNK|SYS2|<null>|<null>",
                     "LOST|DVNSYS|<null>|<null>", "PLAIN|DVNSYS|<null>|<null>"}));
    EXPECT_EQ(InSystems("MODELLING_SERVER", "CHECK_INTERVAL, v.DESCRIPTION"), (Lines{"MOD|DVNSYS|<null>|<null>"}));
    EXPECT_EQ(InSystems("SCHEDULING_SERVER",
                        "NOTIFICATION_INTVL, SUSPENSION_INTVL, CRE_NOT_ITM_THRESH, DEL_NOT_ITM_THRESH"),
              (Lines{"SCH|DVNSYS|60|3600|5|6"}));
    // ImplementationSupport 3: the program and the library, not the external.
    EXPECT_EQ(InSystems("PE_SERVER",
                        "PLATFORM, USER_SUPPORT, SUPPORT_EXE, SUPPORT_DLL, SUPPORT_EXTERNAL, TASKING_MODE, "
                        "DLL_LOAD_MODE, SUPPORT_MODE, MAX_PROGR_STARTED, MAX_DLLS_LOADED"),
              (Lines{"PES1|DVNSYS|5|2|1|1|0|3|1|2|20|4"}));
    EXPECT_EQ(InSystems("USER_PE_SERVER", "HXSYSTEM, MESSAGE_FORMAT, PHYSICALQUEUE, QMGRNAME, v.VERSION, "
                                          "v.RELEASE, v.MOD_LEVEL"),
              (Lines{"UP1|DVNSYS|1|<null>|PQ|QM|4|2|2"}));

    // Again: each row found, the cut name too.
    CliResult again = Import(kEveryKind + more);
    EXPECT_EQ(Missing(again, {Line(51063, "CLN"), Line(51065, "EXECUTIO"), Line(51134, "PES1"),
                              Line(51197, "UP1")}),
              "");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.EXECUTION_SERVER"), "2");

    // A second program execution server in a system: kept out with
    // overwrite off, else it takes the one row.
    const std::string second = "Server \"PES2.DVNSYS.SYS_GRP\" { Type = 7; }\n";
    Expect(0, second, {Line(51135, "PES2")}, {"--no-overwrite"});
    EXPECT_EQ(InSystems("PE_SERVER", "PLATFORM"), (Lines{"PES1|DVNSYS|5"}));
    CliResult renamed = Import(second);
    EXPECT_EQ(Missing(renamed, {Line(51134, "PES2")}), "");
    EXPECT_EQ(InSystems("PE_SERVER", "PLATFORM"), (Lines{"PES2|DVNSYS|<null>"}));
}

TEST_P(Servers, ChecksBeforeAnInsertAndWarningsReachTheCaller) {
    // No system at all: each kind's own message, nothing written.
    Expect(4, "Server \"X\" { Type = 1; }\nServer \"Y\" { Type = 7; }\nServer \"Z\" { Type = 8; }\n",
           {Line(51327, "X"), Line(51369, "Y"), Line(51375, "Z")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.CLEANUP_SERVER"), "0");
    // Neither the profile's system nor a named one: the first there is.
    ASSERT_EQ(Import("Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n"
                     "System \"ONLY\" { SystemIdentifier = 9; }\nServer \"PLAIN\" { Type = 4; }\n")
                  .status,
              0);
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"PLAIN|ONLY|0"}));

    ASSERT_EQ(Import(kBase).status, 0);
    AddAdmin();
    const std::string group = Value("SELECT SYSTEM_GROUP_ID FROM DVBT.SYSTEM_GROUP");
    AddPerson(Db(), {.id = "P1", .userId = "PESX", .systemGroup = group, .password = "pw"});
    ASSERT_EQ(Import("Server \"PESY.SYS2\" { Type = 7; }\nServer \"BOTH.SYS3\" { Type = 7; }\n").status, 0);
    AddPerson(Db(), {.id = "P2", .userId = "PESY", .systemGroup = group, .password = "pw"});
    // One cleanup and one scheduling server per group; a new program
    // execution server may not bear a person's name (in any case), an
    // updated one is not tested; a user defined one not the name of a
    // program execution server of its system. Each is a warning.
    CliResult r = Expect(3,
                         "Server \"CLN.DVNSYS\" { Type = 1; }\nServer \"CLN2.SYS2\" { Type = 1; }\n"
                         "Server \"SCH.SYS2\" { Type = 6; }\nServer \"SCH2.SYS3\" { Type = 6; }\n"
                         "Server \"pesx.DVNSYS\" { Type = 7; }\nServer \"PESY.SYS2\" { Type = 7; }\n",
                         {});
    EXPECT_EQ(Missing(r, {Line(51031, "CLN"), Line(51175, "CLN2"), Line(51036, "SCH"), Line(51176, "SCH2"),
                          Line(51188, "pesx"), Line(51134, "PESY")}),
              "");
    Expect(3, "Server \"BOTH.SYS3\" { Type = 8; }\n", {Line(51191, "SYS3", "BOTH")});
    EXPECT_EQ(InSystems("CLEANUP_SERVER"), (Lines{"CLN|DVNSYS|0"}));
    EXPECT_EQ(InSystems("SCHEDULING_SERVER"), (Lines{"SCH|SYS2|0"}));
    EXPECT_EQ(InSystems("PE_SERVER"), (Lines{"BOTH|SYS3|0", "PESY|SYS2|0"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.USER_PE_SERVER"), "0");

    // A row a user holds is left as it is.
    ExecAll(Db(), {"UPDATE DVBT.CLEANUP_SERVER SET CHECKED_OUT_BY = 'BOB'"});
    Expect(3, "Server \"CLN.DVNSYS\" { Type = 1; Description = \"new\"; }\n", {Line(51159, "CLN", "BOB")});
    EXPECT_EQ(Value("SELECT DESCRIPTION FROM DVBT.CLEANUP_SERVER"), "<null>");
}

TEST_P(Servers, ASystemGoesWithItsServersAndAServerInUseStays) {
    ASSERT_EQ(Import(kBase).status, 0);
    ASSERT_EQ(Import("Server \"EXE.DVNSYS\" { Type = 3; ServerDefault { ExecutionServer {"
                     " NavigationTransactionThreshold = 7; } } }\n"
                     "Server \"PES1.DVNSYS\" { Type = 7; }\nServer \"UP1.DVNSYS\" { Type = 8; }\n"
                     "Server \"GW.DVNSYS\" { Type = 4; }\nServer \"PES2.SYS2\" { Type = 7; }\n")
                  .status,
              0);
    // An activity holds the key of PES2.
    const std::string used = Value("SELECT SERVER_ID FROM DVBT.PE_SERVER WHERE NAME = 'PES2'");
    ExecAll(Db(), {("INSERT INTO DVBT.PROGRAM_ACTIVITY (AID, PE_SERVER) VALUES ('A1', '" + used + "')").c_str()});
    const std::string deletions =
        "delete System \"DVNSYS\";\n"
        "delete Server \"EXE.DVNSYS\";\ndelete Server \"PES1.DVNSYS\";\ndelete Server \"UP1.DVNSYS\";\n"
        "delete Server \"GW.DVNSYS\";\ndelete Server \"PES2.SYS2\";\ndelete Server \"NONE.SYS2\";\n";

    // Marking: the servers become tombstones, which change nothing but
    // their mark, and no longer hold the system.
    CliResult marking = Expect(3, deletions, {}, {"--mark-changes"});
    EXPECT_EQ(Missing(marking, {Line(51065, "EXE"), Line(51134, "PES1"), Line(51197, "UP1"), Line(51261, "GW"),
                                Line(51057, "DVNSYS"), Line(51267, "PES2")}),
              "");
    // Each server is handled once, found by its name in its system: only
    // the one that is not there is reported so.
    EXPECT_EQ(marking.err.find("51273"), marking.err.rfind("51273")) << marking.err;
    EXPECT_EQ(Missing(marking, {Line(51273, "DELETE SERVER NONE")}), "");
    EXPECT_EQ(InSystems("EXECUTION_SERVER", "v.CHECKED_OUT, NAV_TRAN_THRESH"), (Lines{"EXE|DVNSYS|4|7"}));
    EXPECT_EQ(InSystems("PE_SERVER"), (Lines{"PES1|DVNSYS|4", "PES2|SYS2|0"}));
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"GW|DVNSYS|0"}));
    EXPECT_EQ(Value("SELECT CHECKED_OUT FROM DVBT.SYSTEM WHERE NAME = 'DVNSYS'"), "4");

    // Clean: the servers go for good, then the system; the gateway server,
    // never deleted, stays behind.
    for (const char* table : {"SYSTEM", "EXECUTION_SERVER", "PE_SERVER", "USER_PE_SERVER"})
        ExecAll(Db(), {(std::string("UPDATE DVBT.") + table + " SET CHECKED_OUT = 0").c_str()});
    CliResult clean = Expect(3, deletions, {});
    EXPECT_EQ(Missing(clean, {Line(51231, "EXE"), Line(51235, "PES1"), Line(51236, "UP1"), Line(51261, "GW"),
                              Line(51223, "DVNSYS"), Line(51267, "PES2")}),
              "");
    EXPECT_EQ(clean.err.find("51273"), clean.err.rfind("51273")) << clean.err;
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.EXECUTION_SERVER"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.USER_PE_SERVER"), "0");
    EXPECT_EQ(InSystems("PE_SERVER"), (Lines{"PES2|SYS2|0"}));
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"GW|<null>|0"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM WHERE NAME = 'DVNSYS'"), "0");
}

DVN_INSTANTIATE_BOTH_BACKENDS(Servers);

}  // namespace
