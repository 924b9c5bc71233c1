// dvnbt import of the topology on both databases. The domain, the system
// group and systems: their layered settings (defaults at the domain, null
// below), the one domain and group, names of 8 characters, identifiers, the
// primary system, and what keeps a system from going. Nodes, queue managers
// and program execution agents: the two defaults, the queue manager names no
// two definitions share, the agent's person. Servers: every kind with its
// columns, the system a server belongs to, what is checked before an insert.
// For each, deletions under both source options and held rows.
#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "importtest.h"

namespace {

using Lines = std::vector<std::string>;

const char* const kBase =
    "Domain \"domain\" {}\n"
    "SystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";

// The common settings columns, in the order the expectations give them.
const char* const kCommonColumns =
    "SYSTEM_QUALIFIER, OPERATION_MODE, SESSION_EXP_TIME, SESS_EXP_CHK_INTV, UNIFIED_LOGON, MAX_INVALID_LOGON, "
    "LOGON_BLOCK_TIME, UNLIMTD_MX_QMSG_SZ, MAX_QRY_MSG_SIZE, IMPORT_OBJ_CNTR, STOP_ON_ERROR, ROLLBACK_ON_ERROR, "
    "RESET_TO_DEFAULT, IGNORE_REF_ERR, OVERWRITE, MSG_LAYER_REF_INT, MSG_RETAIN_PERIOD, ERR_RETAIN_PERIOD, "
    "CLIENT_MSG_EXP_TIM, CHECK_INT_OTHERS, EXTERNAL_RESTART, EXTRNL_RSTRT_CNTXT, RESPONSE_WAIT_TIME, "
    "MSG_RETRY_LIMIT, DESCRIPTION, DOCUMENTATION";

class Topology : public DvnbtImportTest {
protected:
    // The rows of a settings table of the level object of that name, without its key.
    Lines Settings(const std::string& table, const std::string& levelTable, const std::string& key,
                   const std::string& name, const std::string& columns = "*") {
        Lines rows = Rows("SELECT " + columns + " FROM DVBT." + table + " WHERE " + key + " IN (SELECT " + key +
                          " FROM DVBT." + levelTable + " WHERE NAME = '" + name + "')" +
                          (table.ends_with("SVR_ATTR") && columns != "COUNT(*)" ? " ORDER BY SERVER_TYPE" : ""));
        if (columns == "*")
            for (auto& row : rows) row.erase(0, row.find('|') + 1);
        return rows;
    }
    Lines SystemSettings(const std::string& family, const std::string& name, const std::string& columns = "*") {
        return Settings("SYSTEM_" + family + "_ATTR", "SYSTEM", "SYSTEM_ID", name, columns);
    }
    // A row of n columns that are all null.
    static std::string Nulls(int n) {
        std::string row = "<null>";
        for (int i = 1; i < n; ++i) row += "|<null>";
        return row;
    }
};

TEST_P(Topology, TheDomainHoldsEveryDefaultAndTheGroupNullsAndEachIsTheOnlyOneOfItsKind) {
    CliResult r = Expect(0, kBase, {Line(51023, "domain"), Line(51024, "SYS_GRP")});
    EXPECT_NE(r.out.find("SystemGroup SYS_GRP second pass ...\n"), std::string::npos) << r.out;

    // The domain: every settings column at its default.
    EXPECT_EQ(Rows(std::string("SELECT EXT_VERIFICATION, UNLIMITED_MSG_SIZE, MAX_MSG_SIZE, CHECKED_OUT, ") +
                   kCommonColumns + " FROM DVBT.DV_DOMAIN"),
              (Lines{"0|0|1000000|0|DVN|1|360|360|0|3|0|0|1000000|0|1|0|0|0|0|360|604800|604800|900|360|1|<null>|"
                     "120|5|<null>|<null>"}));
    // The group: its own columns, and null in every settings column of its
    // row and its rows, of which there are ten all the same.
    EXPECT_EQ(Rows("SELECT g.NAME, g.PRIMARY_SG, g.CHECKED_OUT, g.PARENT_SYSTEM_GRP, d.NAME FROM DVBT.SYSTEM_GROUP g "
                   "JOIN DVBT.DV_DOMAIN d ON d.DOMAIN_ID = g.DV_DOMAIN"),
              (Lines{"SYS_GRP|1|0|<null>|domain"}));
    EXPECT_EQ(Rows(std::string("SELECT ") + kCommonColumns + " FROM DVBT.SYSTEM_GROUP"), (Lines{Nulls(26)}));
    // Each family of settings rows: the domain's, and the group's as many nulls.
    Lines servers, nulls;
    for (int kind = 1; kind <= 7; ++kind) {
        servers.push_back(std::to_string(kind) + "|1|1|<null>|1|1|<null>|<null>|0|300");
        nulls.push_back(std::to_string(kind) + "|" + Nulls(9));
    }
    for (const auto& [family, atDomain, atGroup] : std::vector<std::tuple<std::string, Lines, Lines>>{
             {"PRC", {"1|1|0|1|0|0|1|0|1|0|0|0|1|1|1|0|0|1|1|1|<null>|<null>"}, {Nulls(22)}},
             {"PRG", {"1|1|1|1|1|1|1|1"}, {Nulls(8)}},
             {"SVS", {"1|1|<null>|<null>|1|6|1|0|0|0|1|1|<null>|<null>|1|0|100|100|10|1|1|60|3600|ANYTIME|3600|60"},
              {Nulls(26)}},
             {"SVR", servers, nulls}}) {
        EXPECT_EQ(Settings("DV_DOMAIN_" + family + "_ATTR", "DV_DOMAIN", "DOMAIN_ID", "domain"), atDomain) << family;
        EXPECT_EQ(Settings("SYSTEMGRP_" + family + "_ATTR", "SYSTEM_GROUP", "SYSTEM_GROUP_ID", "SYS_GRP"), atGroup)
            << family;
    }

    // A second domain or group is refused and writes nothing, not even a
    // settings row; deleting the one there is, under either source option,
    // is refused too.
    Expect(3, "Domain \"other\" {}\nSystemGroup \"OTHER\" { GroupIsInDomain -> \"other\"; }\n",
           {Line(51127, "other"), Line(51128, "OTHER")});
    for (const char* table : {"DV_DOMAIN", "SYSTEM_GROUP", "DV_DOMAIN_PRC_ATTR", "SYSTEMGRP_PRC_ATTR"})
        EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM DVBT.") + table), "1") << table;
    for (auto options : {Lines{}, Lines{"--mark-changes"}})
        Expect(3, "delete Domain \"domain\";\ndelete SystemGroup \"SYS_GRP\";\n",
               {Line(51269, "domain"), Line(51254, "SYS_GRP")}, options);
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT FROM DVBT.DV_DOMAIN UNION ALL SELECT NAME, CHECKED_OUT "
                   "FROM DVBT.SYSTEM_GROUP ORDER BY 1"),
              (Lines{"SYS_GRP|0", "domain|0"}));

    // Overwrite off leaves the group and its settings as they are.
    Expect(0, "SystemGroup \"SYS_GRP\" { OperationDefault { MessageRetryLimit = 7; } "
              "ProgramDefault { Trusted = false; } }\n", {Line(51088, "SYS_GRP")}, {"--no-overwrite"});
    EXPECT_EQ(Value("SELECT MSG_RETRY_LIMIT FROM DVBT.SYSTEM_GROUP"), "<null>");
    EXPECT_EQ(Settings("SYSTEMGRP_PRG_ATTR", "SYSTEM_GROUP", "SYSTEM_GROUP_ID", "SYS_GRP"), (Lines{Nulls(8)}));
}

TEST_P(Topology, ASystemOverridesItsGroupAndEachReadingStoresItsForm) {
    // The readings at the system and at the domain, side by side.
    const std::string settings = ReadData("settings.trx");
    // A "Type" of 3 is not known: a warning, and the column as if not given.
    Expect(3,
           "Domain \"domain\" { " + settings + " }\n" +
               "SystemGroup \"SYS_GRP\" { OperationDefault { MessageRetryLimit = 7; } }\n" +
               "System \"DVNSYS\" { SystemIdentifier = 17; SystemIsInSystemGroup -> \"SYS_GRP\"; " + settings + " }\n",
           {Line(51910, "domain", "OperationDefault.MessageRetainPeriod.Type", "3"),
            Line(51910, "DVNSYS", "OperationDefault.MessageRetainPeriod.Type", "3")});
    const char* columns =
        "SYSTEM_QUALIFIER, MSG_RETRY_LIMIT, OPERATION_MODE, CLIENT_MSG_EXP_TIM, MSG_RETAIN_PERIOD, "
        "ERR_RETAIN_PERIOD, RESPONSE_WAIT_TIME, UNLIMTD_MX_QMSG_SZ, MAX_QRY_MSG_SIZE, SESSION_EXP_TIME, "
        "SESS_EXP_CHK_INTV";
    // At the domain a period of no seconds or an unknown type gives the
    // default; at the system it is null, and so is what the system leaves out.
    EXPECT_EQ(Rows(std::string("SELECT ") + columns + " FROM DVBT.DV_DOMAIN"),
              (Lines{"ABCDEFGH|9|3|900|604800|999999999|185|0|4096|3600|360"}));
    EXPECT_EQ(Rows(std::string("SELECT ") + columns + " FROM DVBT.SYSTEM"),
              (Lines{"ABCDEFGH|9|3|<null>|<null>|999999999|185|0|4096|3600|<null>"}));
    EXPECT_EQ(Rows("SELECT MSG_RETRY_LIMIT, SYSTEM_QUALIFIER FROM DVBT.SYSTEM_GROUP"), (Lines{"7|<null>"}));
    // ExternalControl 7 is 1, 2 is 2; the time event in its stored form.
    EXPECT_EQ(SystemSettings("SVR", "DVNSYS", "SERVER_TYPE, EXTERNAL_CONTROL, START_TIME, CHECK_INTERVAL"),
              (Lines{"1|1|EVERY MONTH ON MONDAY AT 14.05|<null>", "2|<null>|<null>|<null>", "3|<null>|<null>|<null>",
                     "4|2|<null>|<null>", "5|<null>|<null>|<null>", "6|<null>|<null>|<null>",
                     "7|<null>|<null>|<null>"}));
    // Platform 0 is stored 2; bits 1 and 4; a maximum only with its mode 1.
    EXPECT_EQ(SystemSettings("SVS", "DVNSYS",
                             "PES_PLATFORM, PES_SUPPORT_EXE, PES_SUPPORT_DLL, PES_SUPPORT_EXTRNL, PES_TASKING_MODE, "
                             "PES_MAX_PROG_STRT, PES_DLL_LOAD_MODE, PES_MAX_DLL_LOADED, PEA_TASKING_MODE, "
                             "DIST_RECEIVE_TIME"),
              (Lines{"2|1|0|1|3|<null>|2|4|<null>|<null>"}));

    // Re-imported without a setting: the column goes back to null.
    Expect(0, "System \"DVNSYS\" { SystemIdentifier = 17; ProcessDefault { Autonomy = 5; } }\n",
           {Line(51057, "DVNSYS")});
    EXPECT_EQ(Rows(std::string("SELECT ") + columns + " FROM DVBT.SYSTEM"), (Lines{Nulls(11)}));
    EXPECT_EQ(SystemSettings("SVR", "DVNSYS", "EXTERNAL_CONTROL, START_TIME")[0], "<null>|<null>");
    EXPECT_EQ(Value("SELECT SYSTEM_IDENTIFIER FROM DVBT.SYSTEM"), "17");
}

TEST_P(Topology, AutonomyIsAllFourABitSetOrNothing) {
    std::string file = kBase;
    for (const char* value : {"15", "5", "0", "9", ""}) {
        std::string name = std::string("A") + (*value ? value : "none");
        file += "System \"" + name + "\" { SystemIdentifier = " + std::to_string(file.size() + 1) +
                "; ProcessDefault { " + (*value ? std::string("Autonomy = ") + value + "; " : std::string()) +
                "KeepProcesses { Type = 1; } KeepWorkitems { Type = 2; Minutes = 0; } } }\n";
    }
    Expect(0, file, {});
    EXPECT_EQ(Rows("SELECT s.NAME, p.STAFF_AUTONOMY, p.NOTIFICAT_AUTONOMY, p.ADMIN_AUTONOMY, p.CONTROL_AUTONOMY, "
                   "p.KEEP_FIN_PRC_TIME, p.KEEP_FIN_WRKITM_TI, p.TERMINATE_ON_ERROR FROM DVBT.SYSTEM s "
                   "JOIN DVBT.SYSTEM_PRC_ATTR p ON p.SYSTEM_ID = s.SYSTEM_ID ORDER BY s.NAME"),
              (Lines{"A0|0|0|0|0|999999999|<null>|<null>", "A15|1|1|1|1|999999999|<null>|<null>",
                     "A5|1|0|1|0|999999999|<null>|<null>", "A9|1|0|0|1|999999999|<null>|<null>",
                     "Anone|<null>|<null>|<null>|<null>|999999999|<null>|<null>"}));
    // At the domain: only control, whatever TERMINATE_ON_ERROR the file says.
    EXPECT_EQ(Settings("DV_DOMAIN_PRC_ATTR", "DV_DOMAIN", "DOMAIN_ID", "domain",
                       "STAFF_AUTONOMY, NOTIFICAT_AUTONOMY, ADMIN_AUTONOMY, CONTROL_AUTONOMY, TERMINATE_ON_ERROR"),
              (Lines{"0|0|0|1|1"}));
}

TEST_P(Topology, NothingIsWrittenWithoutADomainOrGroupAndNamesAreKeptToEightCharacters) {
    // No domain: the group cannot be written; no group: the system neither.
    Expect(4, "SystemGroup \"SYS_GRP\" {}\nSystem \"DVNSYS\" { SystemIdentifier = 1; }\n",
           {Line(51320, "SYS_GRP"), Line(51321, "DVNSYS")});
    for (const char* table : {"SYSTEM_GROUP", "SYSTEM", "SYSTEMGRP_SVR_ATTR", "SYSTEM_SVR_ATTR"})
        EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM DVBT.") + table), "0") << table;

    // A group and a system of nine characters: reported, and found again
    // by their first eight on a second import.
    const std::string file =
        "Domain \"domain\" {}\n"
        "SystemGroup \"SYS_GROUP\" { GroupHasParentGroup -> \"NOPARENT\"; }\n"
        "System \"DVNSYSTEM\" { SystemIdentifier = 5; SystemIsInSystemGroup -> \"SYS_GROUP\";"
        " SystemRunsOnNode -> \"NowhereNode\"; SystemHasQueueManager -> \"NoManager\"; }\n"
        "System \"PLAIN\" { SystemIdentifier = 6; SystemIsInSystemGroup -> \"NOGROUP\"; }\n";
    for (int run = 0; run < 2; ++run) {
        SCOPED_TRACE(run);
        CliResult r = Expect(3, file, {Line(51124, "SYS_GROUP"), Line(51125, "DVNSYSTEM")});
        EXPECT_TRUE(Has(r, Line(run ? 51056 : 51024, "SYS_GROU")) && Has(r, Line(run ? 51057 : 51025, "DVNSYSTE")))
            << r.err;
        // A parent not in the table; a link to a group, node or queue
        // manager that is not there: the row is written with the fallback.
        EXPECT_EQ(Missing(r, {Line(51119, "SYS_GROUP"), Line(51104, "NOGROUP"), Line(51122, "NowhereNode"),
                              Line(51123, "DVNSYSTE")}),
                  "");
        EXPECT_EQ(r.err.find("51371"), std::string::npos) << r.err;
    }
    // The node and queue manager fall back to the defaults the run made.
    EXPECT_EQ(Rows("SELECT s.NAME, g.NAME, n.NAME, q.NAME, s.SYSTEM_IDENTIFIER FROM DVBT.SYSTEM s "
                   "JOIN DVBT.SYSTEM_GROUP g ON g.SYSTEM_GROUP_ID = s.SYSTEM_GROUP "
                   "JOIN DVBT.NODE n ON n.NODE_ID = s.NODE JOIN DVBT.QUEUE_MANAGER q "
                   "ON q.QUEUE_MANAGER_ID = s.QUEUE_MANAGER ORDER BY s.NAME"),
              (Lines{"DVNSYSTE|SYS_GROU|Default Node|Default Queue Manager|5",
                     "PLAIN|SYS_GROU|Default Node|Default Queue Manager|6"}));
    EXPECT_EQ(Rows("SELECT NAME, PARENT_SYSTEM_GRP, CHECKED_OUT FROM DVBT.SYSTEM_GROUP"), (Lines{"SYS_GROU|<null>|0"}));
}

TEST_P(Topology, OneSystemIsPrimaryAndEachHasANumberNoOtherHas) {
    // No "PrimarySystem" in an empty table: no primary system.
    Expect(0, kBase + std::string("System \"NONE\" { SystemIdentifier = 1; }\n"), {});
    // The first that says so becomes primary; a second one is told which
    // system is; the primary one stays primary when it says otherwise.
    Expect(0, "System \"A\" { SystemIdentifier = 2; PrimarySystem = true; }\n"
              "System \"B\" { SystemIdentifier = 3; PrimarySystem = true; }\n", {Line(51173, "A", "B")});
    Expect(0, "System \"A\" { SystemIdentifier = 2; PrimarySystem = false; }\n", {Line(51174, "A")});
    EXPECT_EQ(Rows("SELECT NAME, PRIMARY_SYSTEM FROM DVBT.SYSTEM ORDER BY NAME"), (Lines{"A|1", "B|0", "NONE|0"}));

    // A new system whose number another holds: refused, nothing written.
    Expect(4, "System \"C\" { SystemIdentifier = 2; }\n", {Line(51371, "C"), Line(51321, "C")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM WHERE NAME = 'C'"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM_PRC_ATTR"), "3");
    // Nor may an existing one take it.
    EXPECT_EQ(Missing(Import("System \"B\" { SystemIdentifier = 2; }\n"), {Line(51371, "B"), Line(51353, "B")}), "");
    EXPECT_EQ(Value("SELECT SYSTEM_IDENTIFIER FROM DVBT.SYSTEM WHERE NAME = 'B'"), "3");

    // Without a number: a draw no other system holds, also in a second
    // process that draws the same numbers; an update keeps it.
    ASSERT_EQ(Import("System \"R1\" {}\n").status, 0);
    Expect(0, "System \"R2\" {}\n", {});
    const std::string r1 = Value("SELECT SYSTEM_IDENTIFIER FROM DVBT.SYSTEM WHERE NAME = 'R1'");
    EXPECT_NE(r1, Value("SELECT SYSTEM_IDENTIFIER FROM DVBT.SYSTEM WHERE NAME = 'R2'"));
    ASSERT_EQ(Import("System \"R1\" { Description = \"again\"; }\n").status, 0);
    EXPECT_EQ(Value("SELECT SYSTEM_IDENTIFIER FROM DVBT.SYSTEM WHERE NAME = 'R1'"), r1);
    EXPECT_EQ(Value("SELECT COUNT(DISTINCT SYSTEM_IDENTIFIER) FROM DVBT.SYSTEM"),
              Value("SELECT COUNT(*) FROM DVBT.SYSTEM"));
}

TEST_P(Topology, ASystemInUseStaysUnderEitherSourceOptionAndOneNotInUseGoesWithItsSettings) {
    std::string systems = kBase;
    for (const char* name : {"PRIM", "PERS", "EXEC", "PES", "UPES", "FREE", "GONE"})
        systems += "System \"" + std::string(name) + "\" { SystemIdentifier = " + std::to_string(systems.size()) +
                   (std::string(name) == "PRIM" ? "; PrimarySystem = true; }\n" : "; }\n");
    Expect(0, systems, {});
    auto key = [&](const std::string& name) {
        return Value("SELECT SYSTEM_ID FROM DVBT.SYSTEM WHERE NAME = '" + name + "'");
    };
    AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G", .password = "pw", .mark = 4});
    ExecAll(Db(), {("UPDATE DVBT.PERSON SET SYSTEM = '" + key("PERS") + "'").c_str()});
    for (const auto& [table, values, system] : std::vector<std::array<std::string, 3>>{
             {"EXECUTION_SERVER", "'E1', 'EXE', 4", "EXEC"}, {"PE_SERVER", "'E2', 'PE1', 0", "PES"},
             {"USER_PE_SERVER", "'E3', 'UP1', 0", "UPES"}})
        ExecAll(Db(), {("INSERT INTO DVBT." + table + " (SERVER_ID, NAME, CHECKED_OUT, SYSTEM) VALUES (" + values +
                        ", '" + key(system) + "')").c_str()});
    const std::string deletions = "delete System \"PRIM\";\ndelete System \"PERS\";\ndelete System \"EXEC\";\n"
                                  "delete System \"PES\";\ndelete System \"UPES\";\n";
    // Marking: the tombstoned execution server no longer holds its system.
    Expect(3, deletions + "delete System \"FREE\";\n",
           {Line(51248, "PRIM"), Line(51250, "PERS", "CLERK"), Line(51252, "PES", "PE1"), Line(51253, "UPES", "UP1"),
            Line(51057, "EXEC"), Line(51057, "FREE")}, {"--mark-changes"});
    // A tombstone keeps its settings rows.
    EXPECT_EQ(SystemSettings("SVR", "FREE", "COUNT(*)"), (Lines{"7"}));
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT FROM DVBT.SYSTEM WHERE NAME IN ('EXEC', 'FREE', 'PRIM') ORDER BY NAME"),
              (Lines{"EXEC|4", "FREE|4", "PRIM|0"}));

    // Clean: every one of them stays, the execution server counting now.
    ExecAll(Db(), {"UPDATE DVBT.SYSTEM SET CHECKED_OUT = 0"});
    Expect(3, deletions + "delete System \"GONE\";\n",
           {Line(51248, "PRIM"), Line(51250, "PERS", "CLERK"), Line(51251, "EXEC", "EXE"), Line(51252, "PES", "PE1"),
            Line(51253, "UPES", "UP1"), Line(51223, "GONE")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM"), "6");
    // A system deleted for good takes its settings rows with it.
    for (const char* family : {"PRC", "PRG", "SVS", "SVR"})
        EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM DVBT.SYSTEM_") + family + "_ATTR"),
                  std::string(std::string(family) == "SVR" ? "42" : "6"))
            << family;
}

DVN_INSTANTIATE_BOTH_BACKENDS(Topology);

using NodesImport = DvnbtImportTest;

TEST_P(NodesImport, ARunWithoutANodeMakesTheDefaultOnceAndNodesStay) {
    // One node: no default, the platform mapped, the description cut.
    const std::string longText(300, 'd');
    CliResult one = Expect(0, std::string(kBase) + "Node \"N1\" { OperatingSystem = 0; Description = \"" + longText +
                                  "\"; Documentation = \"doc\"; }\n", {Line(51027, "N1")});
    EXPECT_NE(one.out.find("Node N1...\n"), std::string::npos) << one.out;
    EXPECT_EQ(Rows("SELECT NAME, OPERATING_SYSTEM, LENGTH(DESCRIPTION), DOCUMENTATION, CHECKED_OUT FROM DVBT.NODE"),
              (Lines{"N1|2|254|doc|0"}));

    // No node: "Default Node" on WINNT (5), said once (its progress line:
    // ExitStatusFollowsTheLevelUnderTheRightsOfTheUser); the next such run is silent.
    Expect(0, kBase, {Line(51027, "Default Node")});
    CliResult second = Expect(0, kBase, {}, {"--no-overwrite"});
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
    for (const Lines& options : {Lines{}, Lines{"--mark-changes"}})
        Expect(3, "delete Node \"N1\";\n", {Line(51257, "N1")}, options);
    ExecAll(Db(), {"UPDATE DVBT.NODE SET CHECKED_OUT_BY = 'ANNA' WHERE NAME = 'N1'"});
    Expect(3, "Node \"N1\" { OperatingSystem = 1; }\n", {Line(51154, "N1", "ANNA")});
    EXPECT_EQ(Rows("SELECT NAME, OPERATING_SYSTEM, CHECKED_OUT FROM DVBT.NODE ORDER BY NAME"),
              (Lines{"Default Node|5|0", "N1|5|0"}));
}

TEST_P(NodesImport, NoTwoQueueManagersShareANameButTheDefaultStandsInNoOnesWay) {
    // An empty table gets the default, without a node, named DVNQM.
    Expect(0, kBase, {Line(51026, "Default Queue Manager")});
    EXPECT_EQ(Rows("SELECT NAME, NODE, SYSTEM_SEL, QUEUE_MANAGER_NAME FROM DVBT.QUEUE_MANAGER"),
              (Lines{"Default Queue Manager|<null>|1|DVNQM"}));

    // A queue manager without "Name" takes DVNQM all the same; its node by
    // the link; a table with a row gets no further default.
    Expect(0, "Node \"Default Node\" {}\n"
              "QueueManager \"QM1\" { System = 1; QueueManagerRunsOnNode -> \"Default Node\"; }\n", {Line(51026, "QM1")});
    ASSERT_EQ(Import(kBase).status, 0);
    EXPECT_EQ(Rows("SELECT q.NAME, n.NAME, q.SYSTEM_SEL, q.QUEUE_MANAGER_NAME FROM DVBT.QUEUE_MANAGER q "
                   "LEFT JOIN DVBT.NODE n ON n.NODE_ID = q.NODE ORDER BY q.NAME"),
              (Lines{"Default Queue Manager|<null>|1|DVNQM", "QM1|Default Node|1|DVNQM"}));

    // A second without "Name", or one that gives a name in use: refused,
    // nothing written; an update may not take another's name either.
    ASSERT_EQ(Import("QueueManager \"QM4\" { Name = \"MQ4\"; }\n").status, 0);
    Expect(4, "QueueManager \"QM2\" {}\n", {Line(51090, "QM2"), Line(51322, "QM2")});
    Expect(4, "QueueManager \"QM3\" { Name = \"DVNQM\"; }\n", {Line(51090, "QM3"), Line(51322, "QM3")});
    Expect(4, "QueueManager \"QM1\" { Name = \"MQ4\"; }\n", {Line(51090, "QM1"), Line(51354, "QM1")});
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
    for (const char* row : {"'00A', 'GONE', 4", "'00C', 'LATER', 0", "'00B', 'FIRST', 0"})
        for (const char* table : {"NODE (NODE_ID", "QUEUE_MANAGER (QUEUE_MANAGER_ID"})
            ExecAll(Db(),
                    {(std::string("INSERT INTO DVBT.") + table + ", NAME, CHECKED_OUT) VALUES (" + row + ")").c_str()});
    Expect(3, std::string(kBase) + "Node \"N9\" {}\nQueueManager \"QM9\" { Name = \"MQ9\"; " +
                  "QueueManagerRunsOnNode -> \"Nowhere\"; }\nSystem \"S9\" {}\n", {});
    EXPECT_EQ(Rows("SELECT NODE FROM DVBT.QUEUE_MANAGER WHERE NAME = 'QM9' UNION ALL "
                   "SELECT QUEUE_MANAGER FROM DVBT.SYSTEM WHERE NAME = 'S9'"),
              (Lines{"00B", "00B"}));
}

TEST_P(NodesImport, AQueueManagerInUseStaysAndATombstoneChangesOnlyTheMark) {
    Expect(0, std::string(kBase) + "Node \"Default Node\" {}\n" +
                  "QueueManager \"USED\" { Name = \"MQU\"; Description = \"used\"; }\n" +
                  "QueueManager \"FREE\" { Name = \"MQF\"; Description = \"free\"; " +
                  "QueueManagerRunsOnNode -> \"Default Node\"; }\nSystem \"S1\" { SystemHasQueueManager -> \"USED\"; }\n",
           {});
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
    EXPECT_EQ(Missing(Import("QueueManager \"USED\" { Name = \"MQU\"; }\n"), {Line(51153, "USED", "ANNA")}), "");
    ExecAll(Db(), {"UPDATE DVBT.QUEUE_MANAGER SET CHECKED_OUT_BY = NULL"});
    Expect(3, deletions, {Line(51256, "USED", "S1"), Line(51224, "FREE")});
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.QUEUE_MANAGER"), (Lines{"USED"}));
}

TEST_P(NodesImport, AnAgentBelongsToOnePersonAndIsFoundByItEvenWhenThePersonIsGone) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "ALICE", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "BOB", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P0", .userId = "ANNA", .systemGroup = "G1", .password = "pw", .staff = 1, .topology = 1});
    importer = "anna";
    const std::string columns =
        "SELECT NAME, ASSOC_USER, TASKING_MODE, MAX_PROGR_STARTED, DLL_LOAD_MODE, MAX_DLLS_LOADED, SUPPORT_MODE, "
        "CHECKED_OUT, DESCRIPTION FROM DVBT.PE_AGENT";
    auto alice = [&] { return Rows(columns + " WHERE ASSOC_USER = 'P1'"); };

    // The person by the link, its user id folded; a maximum only with its
    // mode 1. (A file that names a person it does not define warns: 52009.)
    CliResult added = Expect(3, "PEAgent \"alice\" { PEAHasPerson -> \"alice\"; Description = \"d\"; PEADefault { "
                                "TaskingMode = 1; MaximumTasksStarted = 5; DllLoadMode = 0; MaximumDllsLoaded = 7; "
                                "SupportMode = 1; } }\n"
                                "PEAgent \"BOB\" { PEAHasPerson -> \"BOB\"; PEADefault { TaskingMode = 5; } }\n",
                             {Line(51029, "alice"), Line(51029, "BOB")});
    EXPECT_NE(added.out.find("PE_AGENT alice...\n"), std::string::npos) << added.out;
    EXPECT_EQ(Rows(columns + " ORDER BY NAME"), (Lines{"ALICE|P1|2|5|3|<null>|2|0|d", "BOB|P2|<null>|<null>|<null>|<null>|<null>|0|<null>"}));

    // A second agent of one person is the same row; an agent without a
    // person, or for one not stored, is refused.
    Expect(4, "PEAgent \"second\" { PEAHasPerson -> \"ALICE\"; PEADefault { SupportMode = 0; } }\n"
              "PEAgent \"nobody\" { PEAHasPerson -> \"NOBODY\"; }\nPEAgent \"alone\" {}\n",
           {Line(51061, "ALICE"), Line(51372, "nobody"), Line(51325, "nobody"), Line(51372, "alone"),
            Line(51325, "alone")});
    EXPECT_EQ(alice(), (Lines{"ALICE|P1|<null>|<null>|<null>|<null>|1|0|<null>"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.PE_AGENT"), "2");

    // Deleting: a tombstone changes only the mark; a held row stays; clean
    // removes the row. Deleting BOB with the agent in one file: the agent
    // goes, the person that it named stays until the next run.
    // 3, 52009: the file names the person without defining it.
    Expect(3, "PEAgent \"a\" { PEAHasPerson -> \"ALICE\"; Description = \"kept\"; PEADefault { TaskingMode = 2; } }\n", {});
    EXPECT_EQ(Missing(Import("delete PEAgent \"alice\";\n", {"--mark-changes"}), {Line(51061, "alice")}), "");
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

// DVNSYS, the system a server falls back to, is not the first row:
// systems are stored in the order of their names.
const std::string kSystems = std::string(kBase) + "System \"ASYS\" { SystemIdentifier = 4; }\n" +
                             "System \"DVNSYS\" { SystemIdentifier = 1; }\nSystem \"SYS2\" { SystemIdentifier = 2; }\n" +
                             "System \"SYS3\" { SystemIdentifier = 3; }\n";

const std::string kServers = ReadData("servers.trx");

class Servers : public DvnbtImportTest {
protected:
    // The servers of a table with the name of their system, by name.
    Lines InSystems(const std::string& table, const std::string& columns = "v.CHECKED_OUT") {
        return Rows("SELECT v.NAME, y.NAME, " + columns + " FROM DVBT." + table +
                    " v LEFT JOIN DVBT.SYSTEM y ON y.SYSTEM_ID = v.SYSTEM ORDER BY v.NAME");
    }
};

TEST_P(Servers, EveryKindKeepsItsColumnsAndFindsItsSystem) {
    ASSERT_EQ(Import(kSystems).status, 0);
    // servers.trx: one server of every kind in DVNSYS, each column given;
    // then a system by link, by the full name, not found, not named; a kind
    // that is not known; a name of nine characters.
    Expect(4, kServers,
           {Line(51031, "CLN"), Line(51032, "DST"), Line(51033, "EXE"), Line(51034, "GW"), Line(51035, "MOD"),
            Line(51036, "SCH"), Line(51133, "PES1"), Line(51193, "UP1"), Line(51103, "NOWHERE"),
            Line(51920, "WHAT.DVNSYS", "9"), Line(51126, "EXECUTION9"), Line(51033, "EXECUTIO")});
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
    EXPECT_EQ(Missing(Import(kServers),
                      {Line(51063, "CLN"), Line(51065, "EXECUTIO"), Line(51134, "PES1"), Line(51197, "UP1")}),
              "");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.EXECUTION_SERVER"), "2");

    // A second program execution server in a system: kept out with
    // overwrite off, else it takes the one row.
    const std::string second = "Server \"PES2.DVNSYS.SYS_GRP\" { Type = 7; }\n";
    Expect(0, second, {Line(51135, "PES2")}, {"--no-overwrite"});
    EXPECT_EQ(InSystems("PE_SERVER", "PLATFORM"), (Lines{"PES1|DVNSYS|5"}));
    EXPECT_EQ(Missing(Import(second), {Line(51134, "PES2")}), "");
    EXPECT_EQ(InSystems("PE_SERVER", "PLATFORM"), (Lines{"PES2|DVNSYS|<null>"}));
}

TEST_P(Servers, ChecksBeforeAnInsertAndWarningsReachTheCaller) {
    // No system at all: each kind's own message, nothing written.
    Expect(4, "Server \"X\" { Type = 1; }\nServer \"Y\" { Type = 7; }\nServer \"Z\" { Type = 8; }\n",
           {Line(51327, "X"), Line(51369, "Y"), Line(51375, "Z")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.CLEANUP_SERVER"), "0");
    // Neither the profile's system nor a named one: the first there is.
    Expect(0, std::string(kBase) + "System \"ONLY\" { SystemIdentifier = 9; }\nServer \"PLAIN\" { Type = 4; }\n", {});
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"PLAIN|ONLY|0"}));

    ASSERT_EQ(Import(kSystems).status, 0);
    // The repository gets its administrator, who imports from then on.
    const std::string group = Value("SELECT SYSTEM_GROUP_ID FROM DVBT.SYSTEM_GROUP");
    AddPerson(Db(), {.id = "P0", .userId = "ADMIN", .systemGroup = group, .password = "pw", .staff = 1, .topology = 1,
                     .processModeling = 1});
    importer = "admin";
    AddPerson(Db(), {.id = "P1", .userId = "PESX", .systemGroup = group, .password = "pw"});
    ASSERT_EQ(Import("Server \"PESY.SYS2\" { Type = 7; }\nServer \"BOTH.SYS3\" { Type = 7; }\n").status, 0);
    AddPerson(Db(), {.id = "P2", .userId = "PESY", .systemGroup = group, .password = "pw"});
    // One cleanup and one scheduling server per group; a new program
    // execution server may not bear a person's name (in any case), an
    // updated one is not tested; a user defined one not the name of a
    // program execution server of its system. Each is a warning.
    Expect(3,
           "Server \"CLN.DVNSYS\" { Type = 1; }\nServer \"CLN2.SYS2\" { Type = 1; }\nServer \"SCH.SYS2\" { Type = 6; }\n"
           "Server \"SCH2.SYS3\" { Type = 6; }\nServer \"pesx.DVNSYS\" { Type = 7; }\nServer \"PESY.SYS2\" { Type = 7; }\n",
           {Line(51031, "CLN"), Line(51175, "CLN2"), Line(51036, "SCH"), Line(51176, "SCH2"), Line(51188, "pesx"),
            Line(51134, "PESY")});
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
    ASSERT_EQ(Import(kSystems).status, 0);
    Expect(0, "Server \"EXE.DVNSYS\" { Type = 3; ServerDefault { ExecutionServer { "
              "NavigationTransactionThreshold = 7; } } }\n"
              "Server \"PES1.DVNSYS\" { Type = 7; }\nServer \"UP1.DVNSYS\" { Type = 8; }\n"
              "Server \"GW.DVNSYS\" { Type = 4; }\nServer \"PES2.SYS2\" { Type = 7; }\n", {});
    // An activity holds the key of PES2.
    const std::string used = Value("SELECT SERVER_ID FROM DVBT.PE_SERVER WHERE NAME = 'PES2'");
    ExecAll(Db(), {("INSERT INTO DVBT.PROGRAM_ACTIVITY (AID, PE_SERVER) VALUES ('A1', '" + used + "')").c_str()});
    const std::string deletions =
        "delete System \"DVNSYS\";\n"
        "delete Server \"EXE.DVNSYS\";\ndelete Server \"PES1.DVNSYS\";\ndelete Server \"UP1.DVNSYS\";\n"
        "delete Server \"GW.DVNSYS\";\ndelete Server \"PES2.SYS2\";\ndelete Server \"NONE.SYS2\";\n";

    // Marking: the servers become tombstones, which change nothing but
    // their mark, and no longer hold the system.
    CliResult marking = Expect(3, deletions,
                               {Line(51065, "EXE"), Line(51134, "PES1"), Line(51197, "UP1"), Line(51261, "GW"),
                                Line(51057, "DVNSYS"), Line(51267, "PES2"), Line(51273, "DELETE SERVER NONE")},
                               {"--mark-changes"});
    // Each server is handled once, found by its name in its system: only
    // the one that is not there is reported so.
    EXPECT_EQ(marking.err.find("51273"), marking.err.rfind("51273")) << marking.err;
    EXPECT_EQ(InSystems("EXECUTION_SERVER", "v.CHECKED_OUT, NAV_TRAN_THRESH"), (Lines{"EXE|DVNSYS|4|7"}));
    EXPECT_EQ(InSystems("PE_SERVER"), (Lines{"PES1|DVNSYS|4", "PES2|SYS2|0"}));
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"GW|DVNSYS|0"}));
    EXPECT_EQ(Value("SELECT CHECKED_OUT FROM DVBT.SYSTEM WHERE NAME = 'DVNSYS'"), "4");

    // Clean: the servers go for good, then the system; the gateway server,
    // never deleted, stays behind.
    for (const char* table : {"SYSTEM", "EXECUTION_SERVER", "PE_SERVER", "USER_PE_SERVER"})
        ExecAll(Db(), {(std::string("UPDATE DVBT.") + table + " SET CHECKED_OUT = 0").c_str()});
    CliResult clean = Expect(3, deletions, {Line(51231, "EXE"), Line(51235, "PES1"), Line(51236, "UP1"),
                                            Line(51261, "GW"), Line(51223, "DVNSYS"), Line(51267, "PES2")});
    EXPECT_EQ(clean.err.find("51273"), clean.err.rfind("51273")) << clean.err;
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.EXECUTION_SERVER") + Value("SELECT COUNT(*) FROM DVBT.USER_PE_SERVER"),
              "00");
    EXPECT_EQ(InSystems("PE_SERVER"), (Lines{"PES2|SYS2|0"}));
    EXPECT_EQ(InSystems("GATEWAY_SERVER"), (Lines{"GW|<null>|0"}));
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM WHERE NAME = 'DVNSYS'"), "0");
}

DVN_INSTANTIATE_BOTH_BACKENDS(Servers);

}  // namespace
