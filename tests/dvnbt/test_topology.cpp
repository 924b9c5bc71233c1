// dvnbt import of the topology on both databases: the domain, the system
// group and systems, their layered settings (defaults at the domain, null
// below), the one domain and group, names of 8 characters, identifiers, the
// primary system, and what keeps a system from going.
#include <gtest/gtest.h>

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
    CliResult r = Import(kBase);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(Missing(r, {Line(51023, "domain"), Line(51024, "SYS_GRP")}), "");
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
    for (auto options : {Lines{}, Lines{"--mark-changes"}}) {
        Expect(3, "delete Domain \"domain\";\ndelete SystemGroup \"SYS_GRP\";\n",
               {Line(51269, "domain"), Line(51254, "SYS_GRP")}, options);
    }
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT FROM DVBT.DV_DOMAIN UNION ALL SELECT NAME, CHECKED_OUT "
                   "FROM DVBT.SYSTEM_GROUP ORDER BY 1"),
              (Lines{"SYS_GRP|0", "domain|0"}));

    // Overwrite off leaves the group and its settings as they are.
    Expect(0,
           "SystemGroup \"SYS_GRP\" { OperationDefault { MessageRetryLimit = 7; } "
           "ProgramDefault { Trusted = false; } }\n",
           {Line(51088, "SYS_GRP")}, {"--no-overwrite"});
    EXPECT_EQ(Value("SELECT MSG_RETRY_LIMIT FROM DVBT.SYSTEM_GROUP"), "<null>");
    EXPECT_EQ(Settings("SYSTEMGRP_PRG_ATTR", "SYSTEM_GROUP", "SYSTEM_GROUP_ID", "SYS_GRP"), (Lines{Nulls(8)}));
}

TEST_P(Topology, ASystemOverridesItsGroupAndEachReadingStoresItsForm) {
    // The readings at the system and at the domain, side by side.
    const std::string settings =
        "OperationDefault { SystemQualifier = \"ABCDEFGHIJ\"; MessageRetryLimit = 9; OperationMode = 2;"
        "  ClientMessageExpirationTime { Type = 2; Days = 0; }"
        "  MessageRetainPeriod { Type = 3; Days = 1; } ErrorRetainPeriod { Type = 1; }"
        "  ResponseWaitTime { Minutes = 3; Seconds = 5; } UnlimitedQueryMessageSize = false;"
        "  MaxQueryMessageSize = 4096; }"
        "SessionDefault { SessionExpirationTime { Type = 2; Hours = 1; } }"
        "ServerDefault { ExecutionServer { ServerCommon { ExternalControl = 7;"
        "      StartTime { Every = 2; On = 1; AtHours = 14; AtMinutes = 5; } } }"
        "  CleanupServer { ServerCommon { ExternalControl = 2; } }"
        "  ProgramExecutionServer { Platform = 0; ImplementationSupport = 5;"
        "    PEADefault { TaskingMode = 0; MaximumTasksStarted = 20; DllLoadMode = 1; MaximumDllsLoaded = 4; } } }";
    CliResult r = Import(std::string("Domain \"domain\" { ") + settings + " }\n" +
                         "SystemGroup \"SYS_GRP\" { OperationDefault { MessageRetryLimit = 7; } }\n" +
                         "System \"DVNSYS\" { SystemIdentifier = 17; SystemIsInSystemGroup -> \"SYS_GRP\"; " +
                         settings + " }\n");
    // A "Type" of 3 is not known: a warning, and the column as if not given.
    EXPECT_EQ(r.status, 3) << r.err;
    EXPECT_EQ(Missing(r, {Line(51910, "domain", "OperationDefault.MessageRetainPeriod.Type", "3"),
                          Line(51910, "DVNSYS", "OperationDefault.MessageRetainPeriod.Type", "3")}),
              "");
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
    ASSERT_EQ(Import(kBase).status, 0);
    std::string file;
    for (const char* value : {"15", "5", "0", "9", ""}) {
        std::string name = std::string("A") + (*value ? value : "none");
        file += "System \"" + name + "\" { SystemIdentifier = " + std::to_string(file.size() + 1) +
                "; ProcessDefault { " + (*value ? std::string("Autonomy = ") + value + "; " : std::string()) +
                "KeepProcesses { Type = 1; } KeepWorkitems { Type = 2; Minutes = 0; } } }\n";
    }
    CliResult r = Import(file);
    ASSERT_EQ(r.status, 0) << r.err;
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

TEST_P(Topology, NamesAreKeptToEightCharactersAndLinksFallBack) {
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
    EXPECT_EQ(Rows("SELECT NAME, PARENT_SYSTEM_GRP, CHECKED_OUT FROM DVBT.SYSTEM_GROUP"),
              (Lines{"SYS_GROU|<null>|0"}));
}

TEST_P(Topology, WithoutADomainOrGroupNothingIsWritten) {
    // No domain: the group cannot be written; no group: the system neither.
    Expect(4, "SystemGroup \"SYS_GRP\" {}\nSystem \"DVNSYS\" { SystemIdentifier = 1; }\n",
           {Line(51320, "SYS_GRP"), Line(51321, "DVNSYS")});
    for (const char* table : {"SYSTEM_GROUP", "SYSTEM", "SYSTEMGRP_SVR_ATTR", "SYSTEM_SVR_ATTR"})
        EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM DVBT.") + table), "0") << table;
}

TEST_P(Topology, OneSystemIsPrimaryAndEachHasANumberNoOtherHas) {
    ASSERT_EQ(Import(kBase).status, 0);
    // No "PrimarySystem" in an empty table: no primary system.
    ASSERT_EQ(Import("System \"NONE\" { SystemIdentifier = 1; }\n").status, 0);
    // The first that says so becomes primary; a second one is told which
    // system is; the primary one stays primary when it says otherwise.
    Expect(0,
           "System \"A\" { SystemIdentifier = 2; PrimarySystem = true; }\n"
           "System \"B\" { SystemIdentifier = 3; PrimarySystem = true; }\n",
           {Line(51173, "A", "B")});
    Expect(0, "System \"A\" { SystemIdentifier = 2; PrimarySystem = false; }\n", {Line(51174, "A")});
    EXPECT_EQ(Rows("SELECT NAME, PRIMARY_SYSTEM FROM DVBT.SYSTEM ORDER BY NAME"),
              (Lines{"A|1", "B|0", "NONE|0"}));

    // A new system whose number another holds: refused, nothing written.
    Expect(4, "System \"C\" { SystemIdentifier = 2; }\n", {Line(51371, "C"), Line(51321, "C")});
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM WHERE NAME = 'C'"), "0");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM_PRC_ATTR"), "3");
    // Nor may an existing one take it.
    CliResult moved = Import("System \"B\" { SystemIdentifier = 2; }\n");
    EXPECT_EQ(Missing(moved, {Line(51371, "B"), Line(51353, "B")}), "");
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
    ASSERT_EQ(Import(kBase + std::string("System \"PRIM\" { SystemIdentifier = 1; PrimarySystem = true; }\n"
                                         "System \"PERS\" { SystemIdentifier = 2; }\n"
                                         "System \"EXEC\" { SystemIdentifier = 3; }\n"
                                         "System \"PES\" { SystemIdentifier = 4; }\n"
                                         "System \"UPES\" { SystemIdentifier = 5; }\n"
                                         "System \"FREE\" { SystemIdentifier = 6; }\n"
                                         "System \"GONE\" { SystemIdentifier = 7; }\n"))
                  .status,
              0);
    auto key = [&](const char* name) { return Value(std::string("SELECT SYSTEM_ID FROM DVBT.SYSTEM WHERE NAME = '") +
                                                    name + "'"); };
    AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G", .password = "pw", .mark = 4});
    ExecAll(Db(), {("UPDATE DVBT.PERSON SET SYSTEM = '" + key("PERS") + "'").c_str(),
                   ("INSERT INTO DVBT.EXECUTION_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('E1', 'EXE', '" +
                    key("EXEC") + "', 4)").c_str(),
                   ("INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('E2', 'PE1', '" +
                    key("PES") + "', 0)").c_str(),
                   ("INSERT INTO DVBT.USER_PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('E3', 'UP1', '" +
                    key("UPES") + "', 0)").c_str()});
    const std::string deletions = "delete System \"PRIM\";\ndelete System \"PERS\";\ndelete System \"EXEC\";\n"
                                  "delete System \"PES\";\ndelete System \"UPES\";\n";
    // Marking: the tombstoned execution server no longer holds its system.
    CliResult marking = Expect(3, deletions + "delete System \"FREE\";\n", {}, {"--mark-changes"});
    for (const std::string& line : {Line(51248, "PRIM"), Line(51250, "PERS", "CLERK"), Line(51252, "PES", "PE1"),
                                    Line(51253, "UPES", "UP1"), Line(51057, "EXEC"), Line(51057, "FREE")})
        EXPECT_TRUE(Has(marking, line)) << line << marking.err;
    // A tombstone keeps its settings rows.
    EXPECT_EQ(SystemSettings("SVR", "FREE", "COUNT(*)"), (Lines{"7"}));
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT FROM DVBT.SYSTEM WHERE NAME IN ('EXEC', 'FREE', 'PRIM') ORDER BY NAME"),
              (Lines{"EXEC|4", "FREE|4", "PRIM|0"}));

    // Clean: every one of them stays, the execution server counting now.
    ExecAll(Db(), {"UPDATE DVBT.SYSTEM SET CHECKED_OUT = 0"});
    CliResult clean = Expect(3, deletions + "delete System \"GONE\";\n", {});
    for (const std::string& line : {Line(51248, "PRIM"), Line(51250, "PERS", "CLERK"), Line(51251, "EXEC", "EXE"),
                                    Line(51252, "PES", "PE1"), Line(51253, "UPES", "UP1"), Line(51223, "GONE")})
        EXPECT_TRUE(Has(clean, line)) << line << clean.err;
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.SYSTEM"), "6");
    // A system deleted for good takes its settings rows with it.
    for (const char* family : {"PRC", "PRG", "SVS", "SVR"})
        EXPECT_EQ(Value(std::string("SELECT COUNT(*) FROM DVBT.SYSTEM_") + family + "_ATTR"),
                  std::string(std::string(family) == "SVR" ? "42" : "6"))
            << family;
}

DVN_INSTANTIATE_BOTH_BACKENDS(Topology);

}  // namespace
