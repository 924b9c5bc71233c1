// dvnbt import of nodes, queue managers and program execution agents on both
// databases: the two defaults, the queue manager names no two definitions
// share, deletions under both source options, the agent's person and held
// rows.
#include <gtest/gtest.h>

#include "importtest.h"

namespace {

using Lines = std::vector<std::string>;

const char* const kBase =
    "Domain \"domain\" {}\n"
    "SystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";

using NodesImport = DvnbtImportTest;

TEST_P(NodesImport, ARunWithoutANodeMakesTheDefaultOnceAndNodesStay) {
    // One node: no default, the platform mapped, the description cut.
    const std::string longText(300, 'd');
    CliResult one = Import(std::string(kBase) + "Node \"N1\" { OperatingSystem = 0; Description = \"" + longText +
                           "\"; Documentation = \"doc\"; }\n");
    ASSERT_EQ(one.status, 0) << one.err;
    EXPECT_EQ(Missing(one, {Line(51027, "N1")}), "");
    EXPECT_NE(one.out.find("Node N1...\n"), std::string::npos) << one.out;
    EXPECT_EQ(Rows("SELECT NAME, OPERATING_SYSTEM, LENGTH(DESCRIPTION), DOCUMENTATION, CHECKED_OUT FROM DVBT.NODE"),
              (Lines{"N1|2|254|doc|0"}));

    // No node: "Default Node" on WINNT (5), said once; the next such run is silent.
    CliResult first = Import(kBase);
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(Missing(first, {Line(51027, "Default Node")}), "");
    EXPECT_NE(first.out.find("Node Default Node...\n"), std::string::npos) << first.out;
    CliResult second = Import(kBase, {"--no-overwrite"});
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.err.find("Default Node"), std::string::npos) << second.err;
    EXPECT_EQ(second.out.find("Node Default Node"), std::string::npos) << second.out;
    EXPECT_EQ(Rows("SELECT NAME, OPERATING_SYSTEM FROM DVBT.NODE ORDER BY NAME"),
              (Lines{"Default Node|5", "N1|2"}));

    // A platform the map does not know counts as left out; overwrite off
    // keeps the row; a held row stays; a node is never deleted.
    Expect(3, "Node \"N1\" { OperatingSystem = 9; }\n", {Line(51059, "N1")});
    EXPECT_EQ(Value("SELECT OPERATING_SYSTEM FROM DVBT.NODE WHERE NAME = 'N1'"), "5");
    EXPECT_EQ(Missing(Import("Node \"N1\" { OperatingSystem = 1; }\n", {"--no-overwrite"}), {Line(51091, "N1")}), "");
    EXPECT_EQ(Value("SELECT OPERATING_SYSTEM FROM DVBT.NODE WHERE NAME = 'N1'"), "5");
    for (const Lines& options : {Lines{}, Lines{"--mark-changes"}}) {
        Expect(3, "delete Node \"N1\";\n", {Line(51257, "N1")}, options);
    }
    ExecAll(Db(), {"UPDATE DVBT.NODE SET CHECKED_OUT_BY = 'ANNA' WHERE NAME = 'N1'"});
    Expect(3, "Node \"N1\" { OperatingSystem = 1; }\n", {Line(51154, "N1", "ANNA")});
    EXPECT_EQ(Rows("SELECT NAME, OPERATING_SYSTEM, CHECKED_OUT FROM DVBT.NODE ORDER BY NAME"),
              (Lines{"Default Node|5|0", "N1|5|0"}));
}

TEST_P(NodesImport, NoTwoQueueManagersShareANameButTheDefaultStandsInNoOnesWay) {
    // An empty table gets the default, without a node, named DVNQM.
    CliResult empty = Import(kBase);
    ASSERT_EQ(empty.status, 0) << empty.err;
    EXPECT_EQ(Missing(empty, {Line(51026, "Default Queue Manager")}), "");
    EXPECT_EQ(Rows("SELECT NAME, NODE, SYSTEM_SEL, QUEUE_MANAGER_NAME FROM DVBT.QUEUE_MANAGER"),
              (Lines{"Default Queue Manager|<null>|1|DVNQM"}));

    // A queue manager without "Name" takes DVNQM all the same; its node by
    // the link; a table with a row gets no further default.
    CliResult first = Import("Node \"Default Node\" {}\n"
                             "QueueManager \"QM1\" { System = 1; QueueManagerRunsOnNode -> \"Default Node\"; }\n");
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(Missing(first, {Line(51026, "QM1")}), "");
    ASSERT_EQ(Import(kBase).status, 0);
    EXPECT_EQ(Rows("SELECT q.NAME, n.NAME, q.SYSTEM_SEL, q.QUEUE_MANAGER_NAME FROM DVBT.QUEUE_MANAGER q "
                   "LEFT JOIN DVBT.NODE n ON n.NODE_ID = q.NODE ORDER BY q.NAME"),
              (Lines{"Default Queue Manager|<null>|1|DVNQM", "QM1|Default Node|1|DVNQM"}));

    // A second without "Name", or one that gives a name in use: refused,
    // nothing written; an update may not take another's name either.
    ASSERT_EQ(Import("QueueManager \"QM4\" { Name = \"MQ4\"; }\n").status, 0);
    struct Case {
        const char* text;
        Lines lines;
    } cases[] = {
        {"QueueManager \"QM2\" {}\n", {Line(51090, "QM2"), Line(51322, "QM2")}},
        {"QueueManager \"QM3\" { Name = \"DVNQM\"; }\n", {Line(51090, "QM3"), Line(51322, "QM3")}},
        {"QueueManager \"QM1\" { Name = \"MQ4\"; }\n", {Line(51090, "QM1"), Line(51354, "QM1")}},
    };
    for (const Case& c : cases) {
        CliResult r = Import(c.text);
        EXPECT_EQ(r.status, 4) << c.text << r.err;
        EXPECT_EQ(Missing(r, c.lines), "");
    }
    EXPECT_EQ(Rows("SELECT NAME, QUEUE_MANAGER_NAME FROM DVBT.QUEUE_MANAGER ORDER BY NAME"),
              (Lines{"Default Queue Manager|DVNQM", "QM1|DVNQM", "QM4|MQ4"}));

    // An unknown node (52009 too: the file names it only): "Default Node"
    // while there is one, else the live node of the lowest key; a tombstone
    // is no default, neither for a node nor for a system's queue manager
    // (keys below those of new rows).
    Expect(3, "QueueManager \"QM4\" { Name = \"MQ4\"; QueueManagerRunsOnNode -> \"Nowhere\"; }\n",
           {Line(51122, "Nowhere"), Line(51058, "QM4")});
    EXPECT_EQ(Value("SELECT n.NAME FROM DVBT.QUEUE_MANAGER q JOIN DVBT.NODE n ON n.NODE_ID = q.NODE "
                    "WHERE q.NAME = 'QM4'"),
              "Default Node");
    ExecAll(Db(), {"DELETE FROM DVBT.NODE", "DELETE FROM DVBT.QUEUE_MANAGER"});
    for (const char* row : {"'00A', 'GONE', 4", "'00C', 'LATER', 0", "'00B', 'FIRST', 0"}) {
        ExecAll(Db(), {(std::string("INSERT INTO DVBT.NODE (NODE_ID, NAME, CHECKED_OUT) VALUES (") + row + ")").c_str(),
                       (std::string("INSERT INTO DVBT.QUEUE_MANAGER (QUEUE_MANAGER_ID, NAME, CHECKED_OUT) VALUES (") +
                        row + ")").c_str()});
    }
    Expect(3,
           std::string(kBase) +
               "Node \"N9\" {}\n"
               "QueueManager \"QM9\" { Name = \"MQ9\"; QueueManagerRunsOnNode -> \"Nowhere\"; }\n"
               "System \"S9\" {}\n",
           {});
    EXPECT_EQ(Rows("SELECT NODE FROM DVBT.QUEUE_MANAGER WHERE NAME = 'QM9' UNION ALL "
                   "SELECT QUEUE_MANAGER FROM DVBT.SYSTEM WHERE NAME = 'S9'"),
              (Lines{"00B", "00B"}));
}

TEST_P(NodesImport, AQueueManagerInUseStaysAndATombstoneChangesOnlyTheMark) {
    ASSERT_EQ(Import(std::string(kBase) +
                     "Node \"Default Node\" {}\n"
                     "QueueManager \"USED\" { Name = \"MQU\"; Description = \"used\"; }\n"
                     "QueueManager \"FREE\" { Name = \"MQF\"; Description = \"free\"; "
                     "QueueManagerRunsOnNode -> \"Default Node\"; }\n"
                     "System \"S1\" { SystemHasQueueManager -> \"USED\"; }\n")
                  .status,
              0);
    const std::string deletions = "delete QueueManager \"USED\";\ndelete QueueManager \"FREE\";\n";
    Expect(3, deletions + "delete QueueManager \"NONE\";\n",
           {Line(51256, "USED", "S1"), Line(51058, "FREE"), Line(51273, "DELETE QUEUE_MANAGER NONE")},
           {"--mark-changes"});
    EXPECT_EQ(Rows("SELECT q.NAME, q.CHECKED_OUT, q.QUEUE_MANAGER_NAME, q.DESCRIPTION, n.NAME, q.SYSTEM_SEL "
                   "FROM DVBT.QUEUE_MANAGER q LEFT JOIN DVBT.NODE n ON n.NODE_ID = q.NODE ORDER BY q.NAME"),
              (Lines{"FREE|4|MQF|free|Default Node|1", "USED|0|MQU|used|<null>|1"}));

    // Clean: the tombstone goes for good, the used one still stays; a
    // held row is not touched.
    ExecAll(Db(), {"UPDATE DVBT.QUEUE_MANAGER SET CHECKED_OUT_BY = 'ANNA' WHERE NAME = 'USED'"});
    CliResult held = Import("QueueManager \"USED\" { Name = \"MQU\"; }\n");
    EXPECT_EQ(Missing(held, {Line(51153, "USED", "ANNA")}), "");
    ExecAll(Db(), {"UPDATE DVBT.QUEUE_MANAGER SET CHECKED_OUT_BY = NULL"});
    Expect(3, deletions, {Line(51256, "USED", "S1"), Line(51224, "FREE")});
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.QUEUE_MANAGER"), (Lines{"USED"}));
}

TEST_P(NodesImport, AnAgentBelongsToOnePersonAndIsFoundByItEvenWhenThePersonIsGone) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "ALICE", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "BOB", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P0", .userId = "ANNA", .systemGroup = "G1", .password = "pw", .staff = 1,
                     .topology = 1});
    importer = "anna";
    const std::string columns =
        "SELECT NAME, ASSOC_USER, TASKING_MODE, MAX_PROGR_STARTED, DLL_LOAD_MODE, MAX_DLLS_LOADED, SUPPORT_MODE, "
        "CHECKED_OUT, DESCRIPTION FROM DVBT.PE_AGENT";
    auto alice = [&] { return Rows(columns + " WHERE ASSOC_USER = 'P1'"); };

    // The person by the link, its user id folded; a maximum only with its
    // mode 1. (A file that names a person it does not define warns: 52009.)
    CliResult added = Expect(3,
                             "PEAgent \"alice\" { PEAHasPerson -> \"alice\"; Description = \"d\";\n"
                             "  PEADefault { TaskingMode = 1; MaximumTasksStarted = 5; DllLoadMode = 0;"
                             " MaximumDllsLoaded = 7; SupportMode = 1; } }\n"
                             "PEAgent \"BOB\" { PEAHasPerson -> \"BOB\"; PEADefault { TaskingMode = 5; } }\n",
                             {Line(51029, "alice"), Line(51029, "BOB")});
    EXPECT_NE(added.out.find("PE_AGENT alice...\n"), std::string::npos) << added.out;
    EXPECT_EQ(Rows(columns + " ORDER BY NAME"), (Lines{"ALICE|P1|2|5|3|<null>|2|0|d", "BOB|P2|<null>|<null>|<null>|<null>|<null>|0|<null>"}));

    // A second agent of one person is the same row; an agent without a
    // person, or for one not stored, is refused.
    Expect(4,
           "PEAgent \"second\" { PEAHasPerson -> \"ALICE\"; PEADefault { SupportMode = 0; } }\n"
           "PEAgent \"nobody\" { PEAHasPerson -> \"NOBODY\"; }\n"
           "PEAgent \"alone\" {}\n",
           {Line(51061, "ALICE"), Line(51372, "nobody"), Line(51325, "nobody"), Line(51372, "alone"),
            Line(51325, "alone")});
    EXPECT_EQ(alice(), (Lines{"ALICE|P1|<null>|<null>|<null>|<null>|1|0|<null>"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.PE_AGENT"), "2");

    // Deleting: a tombstone changes only the mark; a held row stays; clean
    // removes the row. Deleting BOB with the agent in one file: the agent
    // goes, the person that it named stays until the next run.
    ASSERT_EQ(Import("PEAgent \"a\" { PEAHasPerson -> \"ALICE\"; Description = \"kept\"; "
                     "PEADefault { TaskingMode = 2; } }\n")
                  .status,
              3);  // 52009: the file names the person without defining it
    CliResult marked = Import("delete PEAgent \"alice\";\n", {"--mark-changes"});
    EXPECT_EQ(Missing(marked, {Line(51061, "alice")}), "");
    EXPECT_EQ(alice(), (Lines{"ALICE|P1|1|<null>|<null>|<null>|<null>|4|kept"}));
    ExecAll(Db(), {"UPDATE DVBT.PE_AGENT SET CHECKED_OUT_BY = 'ANNA' WHERE ASSOC_USER = 'P1'"});
    EXPECT_EQ(Missing(Import("delete PEAgent \"alice\";\n"), {Line(51156, "alice", "ANNA")}), "");
    ExecAll(Db(), {"UPDATE DVBT.PE_AGENT SET CHECKED_OUT_BY = NULL"});
    Expect(3, "delete Person \"BOB\";\ndelete PEAgent \"BOB\";\ndelete PEAgent \"alice\";\n",
           {Line(51227, "BOB"), Line(51227, "alice")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.PE_AGENT"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.PERSON WHERE USERID = 'BOB'"), "1");

    // A person gone before its agent: the agent is found by the user id it
    // was stored under, under either source option.
    for (const Lines& options : {Lines{"--mark-changes"}, Lines{}}) {
        AddPerson(Db(), {.id = "P3", .userId = "CAROL", .systemGroup = "G1", .password = "pw"});
        ASSERT_EQ(Import("PEAgent \"carol\" { PEAHasPerson -> \"CAROL\"; }\n").status, 3);
        ExecAll(Db(), {"DELETE FROM DVBT.PERSON WHERE PERSON_ID = 'P3'"});
        Expect(0, "delete PEAgent \"carol\";\ndelete PEAgent \"dave\";\n",
               {Line(options.empty() ? 51227 : 51061, "carol"), Line(51273, "DELETE PROGRAM_EXECUTION_AGENT dave")},
               options);
        EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.PE_AGENT WHERE CHECKED_OUT <> 4"), "0");
        ExecAll(Db(), {"DELETE FROM DVBT.PE_AGENT"});
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(NodesImport);

}  // namespace
