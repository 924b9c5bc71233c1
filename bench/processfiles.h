// The processes of the process benchmarks (import, export, load): the
// workload of activity kinds and process attributes, written as TRX from
// core data, and the rows of what it names that no file of it defines
// (roles, programs, the server), put in by SQL.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "dvnbdbif.h"
#include "dvnfffdn.h"
#include "benchrun.h"

namespace bench {

// The roles and programs the processes name, as rows of the repository.
constexpr int kRoles = 10, kPrograms = 10;

inline DvnfString Label(const char* format, int n) {
    char text[32];
    std::snprintf(text, sizeof text, format, n);
    return DvnfString(text);
}

// Roles "Role0".., programs "Tool0".. and the program execution server
// "PES1.DVNSYS" (its system and system group) as rows of a fresh repository.
inline void InsertProcessRows(CDatabase& db) {
    for (int r = 0; r < kRoles; ++r)
        db.ExecuteSQL(("INSERT INTO DVBT.ROLE (ROLE_ID, NAME, CHECKED_OUT) VALUES ('BR" + std::to_string(r) +
                       "', 'Role" + std::to_string(r) + "', 0)").c_str());
    for (int g = 0; g < kPrograms; ++g)
        db.ExecuteSQL(("INSERT INTO DVBT.PROGRAM (PROGRAM_ID, NAME, CHECKED_OUT) VALUES ('BG" + std::to_string(g) +
                       "', 'Tool" + std::to_string(g) + "', 0)").c_str());
    db.ExecuteSQL("INSERT INTO DVBT.SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME, CHECKED_OUT) VALUES ('BSG', 'SYS_GRP', 0)");
    db.ExecuteSQL("INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP, CHECKED_OUT) VALUES ('BSY', 'DVNSYS', "
                  "'BSG', 0)");
    db.ExecuteSQL("INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('BPS', 'PES1', 'BSY', 0)");
}

// A fresh repository for the process benchmarks: db opened on the data
// source, the schema created, the rows the processes name put in, and the
// machine profile of the process pointed at the data source, as `dvnbt
// --db` does, so that what reads through the profile (the editor's loads,
// lookups by key) reaches it; no profile file is read. False, said on
// standard error, when it does not open. ForgetRepository undoes the
// profile.
inline bool OpenProcessRepository(const char* backend, const std::string& dataSource, CDatabase& db) {
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
        std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
        return false;
    }
    DvnSchema::Create(db, true);
    InsertProcessRows(db);
    setenv("DVN_PROFILE", TempFile("bench_profile", 0, ".profile").c_str(), 1);
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(dataSource));
    return true;
}

inline void ForgetRepository() {
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString());
    unsetenv("DVN_PROFILE");
}

// ---- the workload of activity kinds and process attributes
// n processes of 100 activities: 50 program activities (program and server
// rows put in by SQL), 20 information activities and a block holding 10
// activities and a block, which holds 10 and a block of 7 (three deep); 150
// control connectors with 3 bend points and 50 data connectors with 5
// mappings; every process attribute given.
constexpr int kKindActivities = 100;

inline void ProcessAttributes(DvnfAttributeData a) {
    a("Description") = "A generated process";
    a("Documentation") = "Every attribute of a process, for the benchmark.";
    a("ValidFrom") = "2026-01-01";
    a("PromptAtProcessStart") = true;
    a("RcCreation") = 1L;
    a("NotifyDuration")("Hours") = 4L;
    DvnfAttributeData defaults = a("ProcessDefault");
    defaults("AuditDB") = 1L;
    defaults("AuditHX") = 2L;
    defaults("NotificationMode") = 1L;
    defaults("RefreshPolicy") = 0L;
    defaults("KeepWorkitems")("Type") = 1L;
    defaults("KeepProcesses")("Type") = 2L;
    defaults("KeepProcesses")("Days") = 30L;
    defaults("Autonomy") = 5L;
    for (const char* flag : {"IncludeProcessAssignment", "PreferLocalUsers", "Substitution", "CheckoutPossible"})
        a("ActivityDefault")(flag) = true;
    a("ActivityDefault")("AuditFilterDB") = "ALL";
    a("WindowLayout")("ZoomFactor") = 120L;
    a("WindowLayout")("Paper")("Width") = 800L;
    a("WindowLayout")("Paper")("Height") = 600L;
    a("WindowLayout")("ShowConditions") = 1L;
    for (const char* color : {"PaperColor", "ActivityColor", "ControlConnectorColor", "DataConnectorColor"}) {
        a(color)("Red") = 10L;
        a(color)("Green") = 20L;
        a(color)("Blue") = 30L;
    }
    for (const char* font : {"ActivityFont", "ExitConditionFont", "TransitionConditionFont"}) {
        a(font)("Name") = "Sans";
        a(font)("Size") = 10L;
    }
}

// What a benchmark adds to process p of the file (links to its own
// definitions); null: nothing.
using KindsExtra = std::function<void(DvnfTRXData& data, DvnfEntity& process, int p)>;

// n processes "Kinds000000".. of the workload into the file at path.
inline void WriteKinds(const std::string& path, int n, const KindsExtra& extra = nullptr) {
    DvnfCollectingMessageHandler quiet;
    DvnfTRXData data(DvnfTRXTypes::_instance, &quiet);
    auto link = [&](DvnfEntity& entity, const char* name, const char* type, const DvnfString& target) {
        data.AddLinkByName(entity, DvnfString(name), DvnfString(type), target, true, false);
    };
    auto info = [&](DvnfAttributeData diagram, const char* format, int count) {
        for (int i = 0; i < count; ++i) data.CreateInfoActivityByOID(diagram, DvnfString()).Name(Label(format, i));
    };
    auto block = [&](DvnfAttributeData diagram, const char* name) {
        DvnfEntity& activity = data.CreateBlockActivityByOID(diagram, DvnfString());
        activity.Name(DvnfString(name));
        DvnfEntity& inner = activity.AttributeData()("Implementation")("AsBlock").AsEntity();
        inner.AttributeData()("WindowLayout")("ZoomFactor") = 100L;
        return inner.AttributeData()("Diagram");
    };
    for (int p = 0; p < n; ++p) {
        DvnfEntity& process = data.CreateEntity(DvnfString("Process"), DvnfString(), Label("Kinds%06d", p));
        ProcessAttributes(process.AttributeData());
        if (extra) extra(data, process, p);
        DvnfAttributeData diagram = process.AttributeData()("Diagram");
        for (int i = 0; i < 50; ++i) {
            DvnfEntity& activity = data.CreateProgramActivityByOID(diagram, DvnfString());
            activity.Name(Label("P%d", i));
            DvnfEntity& program = activity.AttributeData()("Implementation")("AsProgram").AsEntity();
            program.AttributeData()("Synchronization") = 1L;
            link(program, "ReferencesProgram", "Program", Label("Tool%d", i % kPrograms));
            link(program, "ReferencesPEServer", "Server", DvnfString("PES1.DVNSYS"));
        }
        info(diagram, "I%d", 20);
        DvnfAttributeData b1 = block(diagram, "B1");
        info(b1, "I%d", 10);
        DvnfAttributeData b2 = block(b1, "B2");
        info(b2, "I%d", 10);
        info(block(b2, "B3"), "I%d", 7);
        // 150 control connectors among the program and information
        // activities of the top, 50 data connectors between program ones.
        for (int c = 0; c < 150; ++c) {
            const int from = c % 50, to = (c / 50 + 1 + from) % 50;
            DvnfEntity& connector =
                data.CreateControlConnector(diagram, Label(c < 100 ? "P%d" : "I%d", c < 100 ? from : from % 20),
                                            Label("P%d", to), nullptr);
            for (int b = 0; b < 3; ++b) {
                DvnfAttributeData point = connector.AttributeData()("BendPoints").NewSetElement();
                point("Xpos") = static_cast<long>(10 * b);
                point("Ypos") = static_cast<long>(c);
            }
        }
        for (int c = 0; c < 50; ++c) {
            DvnfEntity& connector = data.CreateDataConnectorWithOID(diagram, Label("P%d", c), false,
                                                                    Label("P%d", (c + 7) % 50), false, DvnfString());
            for (int m = 0; m < 5; ++m) {
                DvnfAttributeData mapping = connector.AttributeData()("Mappings").NewSetElement();
                mapping("From") = Label("Value%d", m);
                mapping("To") = Label("Value%d", m);
            }
        }
    }
    DvnTRXWriter(data).WriteFile(path.c_str());
}

// The raw reads of the processes that the query pids selects (a SELECT of
// PID values): the process row (the whole table in one statement when
// wholeTable, else by PID), then one prepared statement per owner and table
// for what hangs below: the process's own tables by PID, the activities'
// by AID, an activity kind's table for the activities of that kind, the
// data connectors' bend points and mappings by DCID. The rows a process
// load reads, each table read once per owner.
inline std::vector<RawRead> ProcessReads(CDatabase& db, const std::string& pids, bool wholeTable) {
    std::vector<RawRead> reads;
    const std::vector<std::string> pidKeys = RawKeys(db, pids);
    if (wholeTable)
        reads.push_back({"PROCESS", "", {}, ""});
    else
        reads.push_back({"PROCESS", "PID", pidKeys, ""});
    for (const char* table : {"PROCESS_GRAPH_ATTR", "PROCESS_TOPOL_ATTR", "PRC_CONTAINER", "ACTIVITY", "SOURCE", "SINK",
                              "CONTROL_CONNECTOR", "CONTROL_BENDPOINT", "DATA_CONNECTOR", "TEXT_ANNOTATION"})
        reads.push_back({table, "PID", pidKeys, ""});
    const std::string aids = "SELECT AID FROM DVBT.ACTIVITY WHERE PID IN (" + pids + ")";
    const std::vector<std::string> aidKeys = RawKeys(db, aids);
    for (const char* table : {"ACTIVITY_EXTENT", "ACTIVITY_BY_ROLE", "ACTIVITY_BY_PERSON", "ACT_HAS_SUP_TOOL",
                              "ACT_CONTAINER"})
        reads.push_back({table, "AID", aidKeys, ""});
    for (const char* table : {"PROGRAM_ACTIVITY", "PROCESS_ACTIVITY", "BUNDLE_ACTIVITY", "BLOCK_ACTIVITY"})
        reads.push_back({table, "AID",
                         RawKeys(db, std::string("SELECT AID FROM DVBT.") + table + " WHERE AID IN (" + aids + ")"),
                         ""});
    const std::vector<std::string> dcids =
        RawKeys(db, "SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE PID IN (" + pids + ")");
    for (const char* table : {"DATA_BENDPOINT", "DATA_MAP"}) reads.push_back({table, "DCID", dcids, ""});
    return reads;
}

}  // namespace bench
