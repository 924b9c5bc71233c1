// Domains, system groups and systems loaded back with their settings: each
// level gets its own columns only, by the readings undone.
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "../roundtrip.h"

namespace {

class TopologyLoad : public RoundTripTest {};

const char* const kGroupAndSystem = R"(
SystemGroup "SYS_GRP" { GroupIsInDomain -> "domain"; AuditQueueName = "AQ";
  ProcessDefault { AuditDB = 1; RefreshPolicy = 0; Autonomy = 5; }
  ActivityDefault { Substitution = false; }
}
System "DVNSYS" { SystemIdentifier = 17; PrimarySystem = true; SystemIsInSystemGroup -> "SYS_GRP";
  OperationDefault { SystemQualifier = "ABC"; ExternalRestart = 1; ExternalRestartContext = "ctx";
    ClientMessageExpirationTime { Type = 1; } CheckIntervalOtherSystems { Minutes = 2; } }
  ServerDefault { ExecutionServer { ServerCommon { ExternalControl = 2; ExternalControlContext = "c";
      StartTime { Every = 1; AtHours = 6; AtMinutes = 30; } } ProcessBehaviour = 2; }
    ProgramExecutionServer { Platform = 4; ImplementationSupport = 3;
      PEADefault { TaskingMode = 1; MaximumTasksStarted = 20; } } }
  PEADefault { TaskingMode = 0; MaximumTasksStarted = 9; }
}
)";

TEST_P(TopologyLoad, AGroupAndASystemComeBackWithTheirOwnSettingsOnly) {
    ASSERT_EQ(Import(std::string("Domain \"domain\" {}\n") + kGroupAndSystem), 0);
    LoadRun run(Db());
    run.fe.SystemGroups(DvnString(""));
    run.fe.Systems(DvnString(""));
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51518|SYS_GRP", "51519|DVNSYS"}));
    // What differs from the file: the version numbers come back, a duration
    // in seconds, a time event with its "AnyTime", the agent's maximum that
    // its tasking mode did not let the store keep is gone, and the system
    // takes the default node and queue manager that the import made. What is
    // only linked is a skeleton, which the writer leaves out.
    const std::string expected = Replaced(
        kGroupAndSystem,
        {{"SystemIdentifier = 17;", "SystemIdentifier = 17; Version = 3; Release = 3; Level = 0;"},
         {"CheckIntervalOtherSystems { Minutes = 2; }", "CheckIntervalOtherSystems { Seconds = 120; }"},
         {"StartTime { Every = 1;", "StartTime { AnyTime = false; Every = 1;"},
         {"PEADefault { TaskingMode = 0; MaximumTasksStarted = 9; }", "PEADefault { TaskingMode = 0; }"},
         {"SystemIsInSystemGroup -> \"SYS_GRP\";", "SystemIsInSystemGroup -> \"SYS_GRP\"; "
          "SystemRunsOnNode -> \"Default Node\"; SystemHasQueueManager -> \"Default Queue Manager\";"}});
    EXPECT_EQ(DvnTRXWriter(run.data).Write(), Canonical(expected));

    // Imported again without settings, the group has no groups of settings;
    // a key not found is reported.
    ASSERT_EQ(Import("Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" {}\n"), 0);
    LoadRun bare(Db());
    bare.fe.SystemGroups(DvnString(""));
    bare.fe.Systems(DvnString("nokey"));
    bare.fe.DvDomains(DvnString("nokey"));
    EXPECT_EQ(bare.Messages(), (std::vector<std::string>{"51518|SYS_GRP", "51555|nokey", "51553|nokey"}));
    const DvnfAttributeDataReader group =
        bare.data.GetEntities(DvnfString("SystemGroup")).begin()->second->Entity().AttributeData();
    for (const char* name : {"ServerDefault", "PEADefault", "ProcessDefault", "ActivityDefault", "ProgramDefault",
                             "ImportDefault", "OperationDefault", "SessionDefault"})
        EXPECT_FALSE(group(name).IsValid()) << name;
}

TEST_P(TopologyLoad, TheDomainShowsItsDefaultsAndEachColumnIsReadItsOwnWay) {
    ASSERT_EQ(Import(std::string("Domain \"domain\" {}\n") + kGroupAndSystem), 0);
    LoadRun run(Db());
    run.fe.DvDomains(DvnString(""));
    const DvnfAttributeDataReader domain = run.data.GetEntities(DvnfString("Domain")).begin()->second->Entity().AttributeData();
    // The defaults the store wrote.
    EXPECT_EQ(Defined(domain("ProcessDefault"), {"AuditDB", "RefreshPolicy", "Autonomy", "NotificationMode"}),
              "AuditDB=0 RefreshPolicy=1 Autonomy=8 NotificationMode=0");
    EXPECT_EQ(Defined(domain("ServerDefault")("DistributionServer")("DistributionReceiveTime"), {"AnyTime"}),
              "AnyTime=true");
    EXPECT_EQ(Defined(domain("ServerDefault")("ProgramExecutionServer"), {"Platform", "ImplementationSupport"}),
              "Platform=5");

    // Columns as another writer may leave them.
    ExecAll(Db(), {"UPDATE DVBT.DV_DOMAIN_PRC_ATTR SET WRITE_AUDIT_LOG = 3, REFRESH_POLICY = 2, STAFF_AUTONOMY = 1",
                   "UPDATE DVBT.DV_DOMAIN SET CLIENT_MSG_EXP_TIM = 999999999, CHECK_INT_OTHERS = 999999999, "
                   "OPERATION_MODE = 7, SYSTEM_QUALIFIER = 'AB   ', EXTERNAL_RESTART = 1, EXTRNL_RSTRT_CNTXT = 'x', "
                   "UNLIMTD_MX_QMSG_SZ = 1, UNLIMITED_MSG_SIZE = 1",
                   "UPDATE DVBT.DV_DOMAIN_SVR_ATTR SET START_TIME = 'ANYTIME', STOP_TIME = 'EVERY DAY AT 7.05', "
                   "EXTERNAL_CONTROL = 2, EXTRNL_CNTRL_CNTXT = NULL WHERE SERVER_TYPE = 4",
                   "UPDATE DVBT.DV_DOMAIN_SVS_ATTR SET PES_SUPPORT_EXE = 1, PES_SUPPORT_EXTRNL = 1, "
                   "PEA_MAX_PROG_STRT = 4, PES_MAX_PROG_STRT = 6"});
    LoadRun again(Db());
    again.fe.DvDomains(DvnString(""));
    const DvnfAttributeDataReader changed =
        again.data.GetEntities(DvnfString("Domain")).begin()->second->Entity().AttributeData();
    EXPECT_EQ(Defined(changed("ProcessDefault"), {"AuditDB", "RefreshPolicy", "Autonomy"}),
              "AuditDB=1 RefreshPolicy=0 Autonomy=9");
    const DvnfAttributeDataReader operation = changed("OperationDefault");
    EXPECT_EQ(Defined(operation, {"OperationMode", "SystemQualifier", "ExternalRestart", "ExternalRestartContext",
                                  "UnlimitedQueryMessageSize", "MaxQueryMessageSize"}),
              "SystemQualifier=AB ExternalRestart=2 UnlimitedQueryMessageSize=true");
    EXPECT_EQ(Defined(operation("ClientMessageExpirationTime"), {"Type", "Seconds"}), "Type=1");
    EXPECT_EQ(Defined(operation("CheckIntervalOtherSystems"), {"Type", "Seconds"}), "Seconds=999999999");
    EXPECT_EQ(Defined(changed, {"UnlimitedMessageSize", "MaximumMessageSize"}), "UnlimitedMessageSize=true");
    const DvnfAttributeDataReader cleanup = changed("ServerDefault")("CleanupServer")("ServerCommon");
    EXPECT_FALSE(cleanup("StartTime").IsValid());
    EXPECT_EQ(Defined(cleanup("StopTime"), {"Every", "AtHours", "AtMinutes"}), "Every=1 AtHours=7 AtMinutes=5");
    EXPECT_EQ(Defined(cleanup, {"ExternalControl", "ExternalControlContext"}),
              "ExternalControl=2 ExternalControlContext=");
    // The agent's maximum only with its mode given as 1; the server's always.
    EXPECT_EQ(Defined(changed("PEADefault"), {"TaskingMode", "MaximumTasksStarted"}), "TaskingMode=2");
    EXPECT_EQ(Defined(changed("ServerDefault")("ProgramExecutionServer"), {"ImplementationSupport"}),
              "ImplementationSupport=5");
    EXPECT_EQ(Defined(changed("ServerDefault")("ProgramExecutionServer")("PEADefault"),
                      {"TaskingMode", "MaximumTasksStarted"}),
              "TaskingMode=2 MaximumTasksStarted=6");
}

DVN_INSTANTIATE_BOTH_BACKENDS(TopologyLoad);

}  // namespace
