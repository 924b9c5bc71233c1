// Nodes, queue managers, program execution agents and the server of
// examples/order.trx loaded back: the example's round trip through the
// canonical writer, an agent named by its person, and the agent's maxima only
// with their mode.
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "../roundtrip.h"

namespace {

class NodesLoad : public RoundTripTest {};

TEST_P(NodesLoad, TheExampleComesBackButForTheDocumentedDifferences) {
    // The level of the whole import is not this test's: the example holds
    // kinds of other families too.
    ImportFile(std::string(DVN_SOURCE_DIR) + "/examples/order.trx");
    LoadRun run(Db());
    run.fe.Nodes(DvnString(""));
    run.fe.QueueManager(DvnString(""));
    run.fe.PeAgent(DvnString(""));
    run.fe.Servers(DvnString(""));
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51521|Default Node", "51520|Default Queue Manager",
                                                        "51523|ADMIN", "51532|PES1"}));
    // The example's nodes, queue managers, agents and server, with what the load
    // adds: the queue managers of a node, the systems of a queue manager
    // and "System" 1. The targets of links are known by name only.
    const std::string expected = R"(
Node "Default Node" { OperatingSystem = 4; NodeRunsQueueManager -> "Default Queue Manager"; }
QueueManager "Default Queue Manager" {
  Name = "DVNQM"; System = 1;
  QueueManagerRunsOnNode -> "Default Node";
  QueueManagerIsInSystem -> "DVNSYS";
}
PEAgent "ADMIN" { PEADefault { SupportMode = 1; } PEAHasPerson -> "ADMIN"; }
Server "PES1.DVNSYS.SYS_GRP" { Type = 7;
  ServerDefault { ProgramExecutionServer { Platform = 4; PEADefault { TaskingMode = 1; MaximumTasksStarted = 20; } } }
  ServerIsInSystem -> "DVNSYS"; ServerIsInSystemGroup -> "SYS_GRP"; }
)";
    // The targets only linked are skeletons, which the writer leaves out.
    EXPECT_EQ(DvnTRXWriter(run.data).Write(), Canonical(expected));
}

TEST_P(NodesLoad, AnAgentIsNamedByItsPersonAndKeepsAMaximumOnlyWithItsMode) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "ALICE", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "BOB", .systemGroup = "G1", .password = "pw", .mark = 4});
    ExecAll(Db(), {"INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, TASKING_MODE, MAX_PROGR_STARTED, "
                   "DLL_LOAD_MODE, MAX_DLLS_LOADED, SUPPORT_MODE, CHECKED_OUT) VALUES ('A1', 'P1', 2, 5, 3, 7, 9, 0)",
                   "INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, TASKING_MODE, CHECKED_OUT) "
                   "VALUES ('A2', 'P2', 1, 4)",
                   "INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, CHECKED_OUT) VALUES ('A3', 'GONE', 0)"});
    LoadRun run(Db());
    run.fe.PeAgent(DvnString(""));
    run.fe.PeAgent(DvnString("nokey"));
    // An agent whose person is a tombstone is named by it all the same;
    // one whose person is gone by its key.
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51523|ALICE", "51523|BOB", "51523|A3", "51559|nokey"}));
    DvnfEntity& alice = run.Get("PEAgent", "A1");
    EXPECT_EQ(alice.Name().str(), "ALICE");
    EXPECT_EQ(Defined(alice.AttributeData()("PEADefault"),
                      {"TaskingMode", "MaximumTasksStarted", "DllLoadMode", "MaximumDllsLoaded", "SupportMode"}),
              "TaskingMode=1 MaximumTasksStarted=5 DllLoadMode=0");
    DvnfEntity& bob = run.Get("PEAgent", "A2");
    EXPECT_EQ(bob.Name().str(), "BOB");
    EXPECT_EQ(bob.State(), DvnfObject::StateDeleted);
    EXPECT_FALSE(bob.AttributeData()("PEADefault").IsValid());
    EXPECT_EQ(run.Count("Person"), 1u);  // ALICE, by the link
}

DVN_INSTANTIATE_BOTH_BACKENDS(NodesLoad);

}  // namespace
