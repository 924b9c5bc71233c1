// Programs through dvnbt import: the general settings, a row per platform
// group and a service per platform, their mappings, overwrite, structures,
// and the refusals and failures of a program.
#include <fstream>
#include <sstream>

#include "../storetests.h"
#include "testenv.h"

namespace {

class ProgramStore : public StoreTest {
protected:
    CliResult Import(const std::string& trx, std::vector<std::string> options = {}, const std::string& user = "") {
        std::vector<std::string> args{"import"};
        if (user.empty()) args.push_back("--initial-load");
        else args.insert(args.begin(), {"--user", user});
        args.insert(args.end(), options.begin(), options.end());
        args.push_back(files.Write(trx));
        return RunDvnbt(DvnbtArgs(args), {"DVNBT_PASSWORD=pw"});
    }
    static std::string Line(long number, const char* a1, const char* a2 = nullptr) {
        return DvnfMessageHandler::Format(number, DvnString(a1), a2 ? DvnString(a2) : DvnString()).str() + "\n";
    }
    static size_t Count(const std::string& text, const std::string& line) {
        size_t n = 0;
        for (size_t at = text.find(line); at != std::string::npos; at = text.find(line, at + 1)) ++n;
        return n;
    }
    Lines Rows(const std::string& columns, const std::string& table, const std::string& order = "p.NAME") {
        return Dashed(QueryRows(Db(), "SELECT p.NAME, " + columns + " FROM DVBT." + table +
                                          " x JOIN DVBT.PROGRAM p ON p.PROGRAM_ID = x.PROGRAM_ID ORDER BY " + order));
    }
    // name|table of every platform row, and name|platform of every service.
    Lines Platforms() {
        Lines all;
        for (const char* table : {"WINNT_EXTENT", "WIN95_EXTENT", "NK2_EXTENT", "KRX_EXTENT", "HPUX_EXTENT",
                                  "SOLARIS_EXTENT"})
            for (const std::string& row : Rows("x.PATH_AND_FILE_NAME", table)) all.push_back(table + ("|" + row));
        for (const std::string& row : Rows("x.PLATFORM", "EXTERNAL_SERVICE", "p.NAME, x.PLATFORM"))
            all.push_back("SERVICE|" + row);
        std::sort(all.begin(), all.end());
        return all;
    }
    // A file of tests/data/dvnbdbbe as text.
    static std::string Data(const char* name) {
        std::ostringstream text;
        text << std::ifstream(DataFile(name)).rdbuf();
        return text.str();
    }
    TrxFiles files;
};

TEST_P(ProgramStore, EveryPlatformGroupAndEveryMappedValueReachesItsColumns) {
    const CliResult r = Import(Data("programs-columns.trx"));
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* name : {"General", "User1", "User7", "Plain", "Services"})
        EXPECT_NE(r.err.find(Line(51020, name)), std::string::npos) << r.err;

    // The general settings (structures: StructuresComeFromTheLinkOrTheDefault).
    EXPECT_EQ(Dashed(QueryRows(Db(), "SELECT NAME, DS_FROM_ACTIVITY, UNATTENDED, EXECUTION_USER, EXECUTION_MODE, "
                                     "INPUT_ACCESS, OUTPUT_ACCESS, TRUST_MODE, USER_DEFINED_ICON, CHECKED_OUT, "
                                     "CHECKED_OUT_BY, DESCRIPTION, DOCUMENTATION FROM DVBT.PROGRAM ORDER BY NAME")),
              (Lines{"General|1|1|1|2|1|0|1|ICON8CHR|0|-|checks|all of it", "Plain|0|0|-|-|-|-|-|-|0|-|-|-",
                     "Services|0|0|-|-|-|-|-|-|0|-|-|-", "User1|0|0|2|1|-|-|-|-|0|-|-|-",
                     "User7|0|0|-|1|-|-|-|-|0|-|-|-"}));

    // Each table with its own columns: "Type" 1, 2, 4 become 2, 1, 3 and 3
    // is left; the start options count only for type 1 (stored 2).
    const std::string common =
        "x.IMPLEMENTATION_TYP, x.PATH_AND_FILE_NAME, x.ENTRY_POINT, x.COMMAND_LINE_PARM, x.WORKING_DIR, "
        "x.ENVIRONMENT, x.INHERIT_ENV, x.KEEP_LOADED, x.FENCED, x.DLL_V2_COMPAT";
    EXPECT_EQ(Rows(common + ", x.STYLE, x.START_IN_FOREGRND", "WINNT_EXTENT"),
              (Lines{"General|2|c:\\a.exe|main|-v|c:\\|A=1|1|0|1|0|2|1", "Services|3|NONE|-|-|-|-|-|-|-|-|1|0"}));
    EXPECT_EQ(Rows("x.IMPLEMENTATION_TYP, x.PATH_AND_FILE_NAME, x.STYLE, x.START_IN_FOREGRND", "WIN95_EXTENT"),
              (Lines{"General|1|w95|1|0", "Plain|-|untyped|-|-", "Services|3|NONE|1|0"}));
    EXPECT_EQ(Rows("x.IMPLEMENTATION_TYP, x.PATH_AND_FILE_NAME, x.AUTOMATIC_CLOSE, x.STYLE, x.START_IN_FOREGRND",
                   "NK2_EXTENT"),
              (Lines{"General|2|nk|0|3|0", "Plain|2|d|0|1|0", "Services|3|NONE|0|1|0", "User1|2|b|1|4|0",
                     "User7|1|c|0|1|0"}));
    for (const auto& [table, general] : {std::pair{"KRX_EXTENT", "3|NONE|-"}, {"HPUX_EXTENT", "2|/h|1"},
                                         {"SOLARIS_EXTENT", "-|/s|-"}})
        EXPECT_EQ(Rows("x.IMPLEMENTATION_TYP, x.PATH_AND_FILE_NAME, x.RUN_IN_XTERM", table),
                  (Lines{std::string("General|") + general, "Services|3|NONE|-"}));

    // Services by platform number, "TR880" as 6 with no table; durations by
    // their type: 0, without limit, the units in seconds (all 0: without
    // limit), a type not known leaves the column; none given: without limit.
    EXPECT_EQ(Rows("x.PLATFORM, x.SERVICE, x.SERVICE_TYPE, x.EXECUTABLE, x.EXECUTABLE_TYPE, x.INVOCATION_TYPE, "
                   "x.LOCAL_USER, x.SECURITY_CHECKING, x.CODEPAGE, x.DURATION, x.MAPPING, x.MAPPING_TYPE, "
                   "x.FORWARD_MAPPING, x.BACKWARD_MAPPING, x.FORWARD_MAP_PARAM, x.BACKWARD_MAP_PARAM",
                   "EXTERNAL_SERVICE", "x.PLATFORM"),
              (Lines{"Services|1|n|-|-|-|-|1|0|-|999999999|1|-|-|-|-|-",
                     "Services|2|k|-|-|-|-|1|1|-|93600|1|-|-|-|-|-",
                     "Services|3|h|-|-|-|-|1|1|-|999999999|1|-|-|-|-|-",
                     "Services|4|-|-|-|-|-|1|1|-|999999999|0|-|-|-|-|-",
                     "Services|5|svc|st|ex|et|it|0|1|437|0|1|mt|fm|bm|fp|bp",
                     "Services|6|tr|-|-|-|-|1|1|-|120|1|-|-|-|-|-", "Services|7|s|-|-|-|-|1|1|-|-|1|-|-|-|-|-"}));
}

TEST_P(ProgramStore, OverwriteWritesThePlatformsAnewAndOverwriteOffChangesNothing) {
    ASSERT_EQ(Import(Data("programs-overwrite.trx")).status, 0);
    const Lines kept = Rows("x.PATH_AND_FILE_NAME", "NK2_EXTENT");
    EXPECT_EQ(Platforms(), (Lines{"KRX_EXTENT|Calc|/calc", "NK2_EXTENT|Kept|kept", "SERVICE|Calc|2", "SERVICE|Calc|5",
                                  "SERVICE|Calc|6", "SERVICE|Kept|1", "WINNT_EXTENT|Calc|calc.exe"}));

    // KRX and the service of TR880 are dropped, WIN95 comes: in place,
    // under the same key, marked as changed; a new program is marked new.
    const std::string key = QueryValue(Db(), "SELECT PROGRAM_ID FROM DVBT.PROGRAM WHERE NAME = 'Calc'");
    const CliResult changed = Import(R"(
Program "Calc" { WINNT { Type = 1; PathAndFilename = "calc2.exe"; External { Service = "w2"; } }
                 WIN95 { Type = 1; PathAndFilename = "calc95.exe"; } }
Program "Fresh" { WINNT { Type = 1; PathAndFilename = "f.exe"; } }
)",
                                     {"--mark-changes"});
    ASSERT_EQ(changed.status, 0) << changed.err;
    EXPECT_NE(changed.err.find(Line(51052, "Calc")), std::string::npos) << changed.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT PROGRAM_ID FROM DVBT.PROGRAM WHERE NAME = 'Calc'"), key);
    EXPECT_EQ(Platforms(), (Lines{"NK2_EXTENT|Kept|kept", "SERVICE|Calc|5", "SERVICE|Kept|1",
                                  "WIN95_EXTENT|Calc|calc95.exe", "WINNT_EXTENT|Calc|calc2.exe",
                                  "WINNT_EXTENT|Fresh|f.exe"}));
    EXPECT_EQ(Rows("x.SERVICE", "EXTERNAL_SERVICE"), (Lines{"Calc|w2", "Kept|n"}));
    EXPECT_EQ(Marks("PROGRAM"), (Lines{"Calc|3", "Fresh|5", "Kept|0"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT DESCRIPTION FROM DVBT.PROGRAM WHERE NAME = 'Calc'"), "<null>");

    // Overwrite off: the rows stay as they are, platforms and services too.
    const Lines before = Platforms();
    const CliResult off = Import(R"(Program "Calc" { Description = "other"; NK2 { Type = 4; } })", {"--no-overwrite"});
    EXPECT_EQ(off.status, 0) << off.err;
    EXPECT_NE(off.err.find(Line(51084, "Calc")), std::string::npos) << off.err;
    EXPECT_EQ(Platforms(), before);
    EXPECT_EQ(Marks("PROGRAM"), (Lines{"Calc|3", "Fresh|5", "Kept|0"}));
    EXPECT_EQ(Rows("x.PATH_AND_FILE_NAME", "NK2_EXTENT"), kept);
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PROGRAM WHERE CHECKED_OUT = 9"), "0");
}

TEST_P(ProgramStore, StructuresComeFromTheLinkOrTheDefault) {
    const std::string defaultKey =
        QueryValue(Db(), "SELECT DSID FROM DVBT.DATA_STRUCTURE WHERE NAME = 'Default Data Structure'");
    const CliResult r = Import(R"(
DataStructure "Order" { Members [ DataStructureMember "n" { Name = "n"; Type = 1; } ] }
Program "Linked" { ProgramHasInputStr -> "Order"; ProgramHasOutputStr -> "Nowhere"; }
Program "Unlinked" {}
)");
    EXPECT_EQ(r.status, 3) << r.err;
    EXPECT_EQ(Count(r.err, Line(51102, "Nowhere")), 1u) << r.err;
    EXPECT_NE(r.err.find(Line(51020, "Linked")), std::string::npos) << r.err;
    const std::string order = QueryValue(Db(), "SELECT DSID FROM DVBT.DATA_STRUCTURE WHERE NAME = 'Order'");
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, INPUT_DS, OUTPUT_DS FROM DVBT.PROGRAM ORDER BY NAME"),
              (Lines{"Linked|" + order + "|" + defaultKey, "Unlinked|" + defaultKey + "|" + defaultKey}));

    // Without the default row: no link gives null and no message; a link to
    // a structure without a row has only the target's key, which a name in
    // a file does not give: null too, after the message.
    Exec("DELETE FROM DVBT.DATA_STRUCTURE WHERE NAME = 'Default Data Structure'");
    const CliResult bare = Import(R"(
Program "Unlinked" {}
Program "Lost" { ProgramHasInputStr -> "Nowhere"; }
)");
    EXPECT_EQ(bare.status, 3) << bare.err;
    EXPECT_EQ(Count(bare.err, "Data structure "), 1u) << bare.err;
    EXPECT_NE(bare.err.find(Line(51102, "Nowhere")), std::string::npos) << bare.err;
    EXPECT_EQ(Dashed(QueryRows(Db(), "SELECT NAME, INPUT_DS, OUTPUT_DS FROM DVBT.PROGRAM WHERE NAME <> 'Linked' ORDER "
                                     "BY NAME")),
              (Lines{"Lost|-|-", "Unlinked|-|-"}));
}

TEST_P(ProgramStore, RefusalsAndFailuresLeaveTheRestStored) {
    // A missing path: that group is not written (8), the rest is; icons of
    // 8 characters are kept, of 9 refused.
    const CliResult r = Import(Data("programs-refusals.trx"));
    EXPECT_EQ(r.status, 4) << r.err;
    EXPECT_NE(r.err.find(Line(51118, "ABCDEFGHI")), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(Line(51020, "NoPath")), std::string::npos) << r.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT USER_DEFINED_ICON FROM DVBT.PROGRAM WHERE NAME = 'NoPath'"), "<null>");
    EXPECT_EQ(Platforms(), (Lines{"KRX_EXTENT|NoPath|/k", "NK2_EXTENT|Gone|g", "NK2_EXTENT|Tomb|tb",
                                  "SERVICE|Gone|1", "SERVICE|NoPath|5", "SERVICE|Tomb|1", "SERVICE|Used|5",
                                  "WINNT_EXTENT|Tool|t", "WINNT_EXTENT|Used|u"}));

    // A program that an activity runs, or has as a support tool, stays with
    // either source option; a held one is refused.
    Exec("INSERT INTO DVBT.PROGRAM_ACTIVITY (AID, PROGRAM_ID) SELECT 'A1', PROGRAM_ID FROM DVBT.PROGRAM "
         "WHERE NAME = 'Used'");
    Exec("INSERT INTO DVBT.ACT_HAS_SUP_TOOL (AID, PROGRAM_ID) SELECT 'A2', PROGRAM_ID FROM DVBT.PROGRAM "
         "WHERE NAME = 'Tool'");
    Exec("UPDATE DVBT.PROGRAM SET CHECKED_OUT_BY = 'ADMIN' WHERE NAME = 'NoPath'");
    const Lines platforms = Platforms();
    for (bool marking : {false, true}) {
        SCOPED_TRACE(marking);
        const CliResult refused = Import("delete Program \"Used\";\ndelete Program \"Tool\";\n"
                                         "Program \"NoPath\" { Icon = \"ICON8CHR\"; }\n",
                                         marking ? Lines{"--mark-changes"} : Lines{});
        EXPECT_EQ(refused.status, 3) << refused.err;
        EXPECT_NE(refused.err.find(Line(51243, "Used")), std::string::npos) << refused.err;
        EXPECT_NE(refused.err.find(Line(51243, "Tool")), std::string::npos) << refused.err;
        EXPECT_NE(refused.err.find(Line(51147, "NoPath", "ADMIN")), std::string::npos) << refused.err;
        EXPECT_EQ(Marks("PROGRAM"), (Lines{"Gone|0", "NoPath|0", "Tomb|0", "Tool|0", "Used|0"}));
        EXPECT_EQ(Platforms(), platforms);
    }

    // A tombstone keeps its platform rows and services; a deletion for good
    // takes them along.
    ASSERT_EQ(Import("delete Program \"Tomb\";\n", {"--mark-changes"}).status, 0);
    const CliResult gone = Import("delete Program \"Gone\";\n");
    EXPECT_EQ(gone.status, 0) << gone.err;
    EXPECT_NE(gone.err.find(Line(51220, "Gone")), std::string::npos) << gone.err;
    EXPECT_EQ(Marks("PROGRAM"), (Lines{"NoPath|0", "Tomb|4", "Tool|0", "Used|0"}));
    EXPECT_EQ(Platforms(), (Lines{"KRX_EXTENT|NoPath|/k", "NK2_EXTENT|Tomb|tb", "SERVICE|NoPath|5", "SERVICE|Tomb|1",
                                  "SERVICE|Used|5", "WINNT_EXTENT|Tool|t", "WINNT_EXTENT|Used|u"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.NK2_EXTENT WHERE PROGRAM_ID NOT IN "
                               "(SELECT PROGRAM_ID FROM DVBT.PROGRAM)"),
              "0");

    // Without the modelling right: refused once, nothing stored.
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G1", .password = "pw", .staff = 1});
    const CliResult denied = Import("Program \"A\" {}\nProgram \"B\" {}\n", {}, "clerk");
    EXPECT_EQ(denied.status, 3) << denied.err;
    EXPECT_EQ(Count(denied.err, Line(51165, "Program")), 1u) << denied.err;
    EXPECT_EQ(Marks("PROGRAM").size(), 4u);
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProgramStore);

}  // namespace
