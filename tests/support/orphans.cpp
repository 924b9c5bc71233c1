#include "orphans.h"

#include "testdb.h"

namespace {

// "The column names no row of the owner": a null column owns nothing and
// counts only where the owner is required.
std::string Gone(const char* column, const char* owner, const char* ownerColumn, bool required = false) {
    std::string missing = std::string("NOT EXISTS (SELECT 1 FROM DVBT.") + owner + " o WHERE o." + ownerColumn +
                          " = t." + column + ")";
    return required ? missing : std::string("(t.") + column + " IS NOT NULL AND " + missing + ")";
}

struct Owned {
    const char* table;
    std::vector<std::string> gone;  // any of these makes a row an orphan
};

std::vector<Owned> OwnedTables() {
    const std::string process = Gone("PID", "PROCESS", "PID", true);
    auto activity = [](const char* column, bool required = false) { return Gone(column, "ACTIVITY", "AID", required); };
    std::vector<Owned> tables = {
        {"ACTIVITY", {process, activity("INSIDE_BLOCK")}},
        {"SOURCE", {process, activity("BLOCK_AID")}},
        {"SINK", {process, activity("BLOCK_AID")}},
        {"CONTROL_CONNECTOR",
         {process, activity("FROM_ACTIVITY", true), activity("TO_ACTIVITY", true), activity("INSIDE_BLOCK")}},
        {"CONTROL_BENDPOINT",
         {"NOT EXISTS (SELECT 1 FROM DVBT.CONTROL_CONNECTOR o WHERE o.PID = t.PID AND o.FROM_ACTIVITY = "
          "t.FROM_ACTIVITY AND o.TO_ACTIVITY = t.TO_ACTIVITY)"}},
        {"DATA_CONNECTOR",
         {process, activity("FROM_ACTIVITY"), activity("TO_ACTIVITY"), activity("INSIDE_BLOCK"),
          Gone("FROM_SOURCE", "SOURCE", "SOURCE_ID"), Gone("TO_SINK", "SINK", "SINK_ID")}},
        {"DATA_BENDPOINT", {Gone("DCID", "DATA_CONNECTOR", "DCID", true)}},
        {"DATA_MAP", {Gone("DCID", "DATA_CONNECTOR", "DCID", true)}},
        {"TEXT_ANNOTATION", {process, activity("INSIDE_BLOCK")}},
        {"PROCESS_GRAPH_ATTR", {process}},
        {"PROCESS_TOPOL_ATTR", {process}},
        {"PRC_CONTAINER", {process}},
        {"DATA_STRUCTURE_MBR", {Gone("DSID", "DATA_STRUCTURE", "DSID", true)}},
    };
    for (const char* table : {"ACTIVITY_EXTENT", "BLOCK_ACTIVITY", "PROGRAM_ACTIVITY", "PROCESS_ACTIVITY",
                              "BUNDLE_ACTIVITY", "ACT_CONTAINER", "ACTIVITY_BY_PERSON", "ACT_BY_PERS_F_CONT",
                              "ACTIVITY_BY_ROLE", "ACT_BY_ROLE_F_CONT", "ACT_HAS_SUP_TOOL"})
        tables.push_back({table, {activity("AID", true)}});
    return tables;
}

}  // namespace

std::vector<std::string> OrphanRows(CDatabase& db) {
    std::vector<std::string> out;
    for (const Owned& owned : OwnedTables()) {
        std::string where;
        for (const std::string& gone : owned.gone) where += (where.empty() ? "" : " OR ") + gone;
        const std::string count =
            QueryValue(db, std::string("SELECT COUNT(*) FROM DVBT.") + owned.table + " t WHERE " + where);
        if (count != "0") out.push_back(std::string(owned.table) + "|" + count);
    }
    return out;
}
