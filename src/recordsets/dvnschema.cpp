#include "dvnschema.h"

#include <cctype>
#include <ostream>
#include <set>
#include <string_view>

#include "dvnrecordsets.h"
#include "odbccall.h"

namespace {

template <class T>
std::unique_ptr<CRecordset> Make(CDatabase* db) {
    return std::make_unique<T>(db);
}

// Every index stands behind a filter that the code writes: a lookup, a
// filtered open, a statement's WHERE or a cascade below. "UNIQUE " before
// the columns makes a unique index: a name that the stores look up before
// they insert, so that two imports at once cannot both insert it
// (docs/schema.md lists them and why the others are not).
const std::vector<DvnSchema::Table> kTables = {
    // process model
    {"CATEGORY", Make<DvnCategorySet>, {"CATID", "UNIQUE NAME"}, {}},
    {"DATA_STRUCTURE", Make<DvnDataStructureSet>, {"DSID", "UNIQUE NAME"}, {}},
    {"DATA_STRUCTURE_MBR", Make<DvnDataStructureMbrSet>, {"DSID,MEMBER", "TYPE_DS"}, {}},
    {"PROCESS", Make<DvnProcessSet>,
     {"PID", "UNIQUE NAME", "CATID", "INPUT_DS", "OUTPUT_DS", "ORGANIZATION", "ROLE", "ADMINISTRATOR"}, {}},
    {"PROCESS_GRAPH_ATTR", Make<DvnProcessGraphAttrSet>, {"PID"}, {}},
    {"PROCESS_TOPOL_ATTR", Make<DvnProcessTopolAttrSet>, {"PID"}, {}},
    {"ACTIVITY", Make<DvnActivitySet>, {"AID", "PID,INSIDE_BLOCK,NAME", "INPUT_DS", "OUTPUT_DS"}, {}},
    {"ACTIVITY_EXTENT", Make<DvnActivityExtentSet>, {"AID", "ORGANIZATION"}, {}},
    {"SOURCE", Make<DvnSourceSet>, {"SOURCE_ID", "PID,BLOCK_AID,SOURCE_NUMBER"}, {}},
    {"SINK", Make<DvnSinkSet>, {"SINK_ID", "PID,BLOCK_AID,SINK_NUMBER"}, {}},
    {"BLOCK_ACTIVITY", Make<DvnBlockActivitySet>, {"AID"}, {}},
    {"PROGRAM_ACTIVITY", Make<DvnProgramActivitySet>, {"AID", "PROGRAM_ID", "PE_SERVER"}, {}},
    {"PROCESS_ACTIVITY", Make<DvnProcessActivitySet>, {"AID", "PROCESS"}, {}},
    {"BUNDLE_ACTIVITY", Make<DvnBundleActivitySet>, {"AID"}, {}},
    {"CONTROL_CONNECTOR", Make<DvnControlConnectorSet>,
     {"PID,FROM_ACTIVITY,TO_ACTIVITY", "PID,INSIDE_BLOCK", "PID,TO_ACTIVITY"}, {}},
    {"CONTROL_BENDPOINT", Make<DvnControlBendpointSet>, {"PID,FROM_ACTIVITY,TO_ACTIVITY,SEQUENCENO", "PID,TO_ACTIVITY"},
     {}},
    {"DATA_CONNECTOR", Make<DvnDataConnectorSet>,
     {"DCID", "PID,INSIDE_BLOCK", "PID,FROM_ACTIVITY,TO_ACTIVITY", "PID,FROM_SOURCE", "PID,TO_ACTIVITY",
      "PID,TO_SINK"},
     {}},
    {"DATA_BENDPOINT", Make<DvnDataBendpointSet>, {"DCID,SEQUENCENO"}, {}},
    {"DATA_MAP", Make<DvnDataMapSet>, {"DCID"}, {}},
    {"ACT_CONTAINER", Make<DvnActContainerSet>, {"AID,INPUT_OR_OUTPUT"}, {}},
    {"PRC_CONTAINER", Make<DvnProcessContainerSet>, {"PID,INPUT_OR_OUTPUT"}, {}},
    {"ACTIVITY_BY_PERSON", Make<DvnActivityByPersonSet>, {"AID,PERSON_ID"}, {}},
    {"ACT_BY_PERS_F_CONT", Make<DvnActByPersonContMSet>, {"AID"}, {}},
    {"ACTIVITY_BY_ROLE", Make<DvnActivityByRoleSet>, {"AID,ROLE"}, {}},
    {"ACT_BY_ROLE_F_CONT", Make<DvnActByRoleContMSet>, {"AID"}, {}},
    {"ACT_HAS_SUP_TOOL", Make<DvnSupportToolsSet>, {"AID,PROGRAM_ID"}, {}},
    {"TEXT_ANNOTATION", Make<DvnTextAnnotationSet>, {"PID,INSIDE_BLOCK"}, {}},
    // One row: a second initial load that inserts it at the same moment
    // meets the index and finds the row there.
    {"VERSION", Make<DvnVersionSet>, {"UNIQUE VERSION"}, {}},
    // staff and lists
    {"PERSON", Make<DvnPersonSet>, {"PERSON_ID", "UNIQUE USERID", "ORGANIZATION_ID", "SYSTEM"}, {}},
    {"ROLE", Make<DvnRoleSet>, {"ROLE_ID", "UNIQUE NAME"}, {}},
    {"ROLE_INCL_PERSON", Make<DvnRelRoleSet>, {"ROLE_ID,PERSON_ID", "PERSON_ID"}, {}},
    {"ORGANIZATION", Make<DvnOrganizationSet>, {"ORGANIZATION_ID", "UNIQUE NAME", "PARENT_ORG_ID", "MANAGER_ID"}, {}},
    {"STAFF_LEVEL", Make<DvnStaffLevelSet>, {"LEVEL_ID"}, {}},
    {"PERS_AUTH_FOR_PERS", Make<DvnPersAut4PersSet>, {"PERSON_ID,AUTH_FOR_PERSON"}, {}},
    {"PERS_HAS_PRC_AUTH", Make<DvnPersHasPrcAuthSet>, {"PERSON_ID,CATID"}, {}},
    {"PERS_SEL_PADM_AUTH", Make<DvnPersSelPadmAuthSet>, {"PERSON_ID,CATID"}, {}},
    {"ACT_INSTANCE_LIST", Make<DvnListSet>, {"LIST_ID", "UNIQUE NAME"}, {}},
    {"PRC_INSTANCE_LIST", Make<DvnListSet>, {"LIST_ID", "UNIQUE NAME"}, {}},
    {"PRC_TEMPLATE_LIST", Make<DvnListSet>, {"LIST_ID", "UNIQUE NAME"}, {}},
    {"WORK_LIST", Make<DvnWListSet>, {"LIST_ID", "UNIQUE NAME"}, {}},
    {"PERS_HAS_ACT_INSTL", Make<DvnPersonHasActivityListSet>, {"ACT_INSTANCE_LIST,PERSON", "PERSON"}, {}},
    {"PERS_HAS_PRC_INSTL", Make<DvnPersonHasPrcInstanceListSet>, {"PRC_INSTANCE_LIST,PERSON", "PERSON"}, {}},
    {"PERS_HAS_PRC_TMPLT", Make<DvnPersonHasPrcTemplateListSet>, {"PRC_TEMPLATE_LIST,PERSON", "PERSON"}, {}},
    {"PERS_HAS_WRK_LST", Make<DvnPersonHasWorkListSet>, {"WORK_LIST,PERSON", "PERSON"}, {}},
    // programs
    {"PROGRAM", Make<DvnProgramSet>, {"PROGRAM_ID", "UNIQUE NAME", "INPUT_DS", "OUTPUT_DS"}, {}},
    {"WINNT_EXTENT", Make<DvnWPlatformSet>, {"PROGRAM_ID"}, {}},
    {"WIN95_EXTENT", Make<DvnWPlatformSet>, {"PROGRAM_ID"}, {}},
    {"NK2_EXTENT", Make<DvnOPlatformSet>, {"PROGRAM_ID"}, {}},
    {"KRX_EXTENT", Make<DvnXPlatformSet>, {"PROGRAM_ID"}, {}},
    {"HPUX_EXTENT", Make<DvnXPlatformSet>, {"PROGRAM_ID"}, {}},
    {"SOLARIS_EXTENT", Make<DvnXPlatformSet>, {"PROGRAM_ID"}, {}},
    {"EXTERNAL_SERVICE", Make<DvnExternalService>, {"PROGRAM_ID,PLATFORM"}, {}},
    // topology
    {"DV_DOMAIN", Make<DvnDomainSet>, {"DOMAIN_ID", "UNIQUE NAME"}, {}},
    {"SYSTEM_GROUP", Make<DvnSystemGroupSet>, {"SYSTEM_GROUP_ID", "UNIQUE NAME"}, {}},
    {"SYSTEM", Make<DvnSystemSet>,
     {"SYSTEM_ID", "UNIQUE NAME", "PRIMARY_SYSTEM", "SYSTEM_IDENTIFIER", "QUEUE_MANAGER", "SYSTEM_GROUP"}, {}},
    {"DV_DOMAIN_PRC_ATTR", Make<DvnDomainPrcSet>, {"DOMAIN_ID"}, {}},
    {"SYSTEMGRP_PRC_ATTR", Make<DvnSystemGroupPrcSet>, {"SYSTEM_GROUP_ID"}, {}},
    {"SYSTEM_PRC_ATTR", Make<DvnSystemPrcSet>, {"SYSTEM_ID"}, {}},
    {"DV_DOMAIN_PRG_ATTR", Make<DvnDomainPrgSet>, {"DOMAIN_ID"}, {}},
    {"SYSTEMGRP_PRG_ATTR", Make<DvnSystemGroupPrgSet>, {"SYSTEM_GROUP_ID"}, {}},
    {"SYSTEM_PRG_ATTR", Make<DvnSystemPrgSet>, {"SYSTEM_ID"}, {}},
    {"DV_DOMAIN_SVR_ATTR", Make<DvnDomainSvrSet>, {"DOMAIN_ID,SERVER_TYPE"}, {}},
    {"SYSTEMGRP_SVR_ATTR", Make<DvnSystemGroupSvrSet>, {"SYSTEM_GROUP_ID,SERVER_TYPE"}, {}},
    {"SYSTEM_SVR_ATTR", Make<DvnSystemSvrSet>, {"SYSTEM_ID,SERVER_TYPE"}, {}},
    {"DV_DOMAIN_SVS_ATTR", Make<DvnDomainSvsSet>, {"DOMAIN_ID"}, {}},
    {"SYSTEMGRP_SVS_ATTR", Make<DvnSystemGroupSvsSet>, {"SYSTEM_GROUP_ID"}, {}},
    {"SYSTEM_SVS_ATTR", Make<DvnSystemSvsSet>, {"SYSTEM_ID"}, {}},
    {"NODE", Make<DvnNodeSet>, {"NODE_ID", "UNIQUE NAME"}, {}},
    {"QUEUE_MANAGER", Make<DvnQueueManagerSet>, {"QUEUE_MANAGER_ID", "UNIQUE NAME", "QUEUE_MANAGER_NAME", "NODE"}, {}},
    {"GATEWAY_SERVER", Make<DvnServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"MODELLING_SERVER", Make<DvnServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"PE_SERVER", Make<DvnPEServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"CLEANUP_SERVER", Make<DvnCleanupServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"DISTRIBUTION_SRV", Make<DvnDistributionServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"EXECUTION_SERVER", Make<DvnExecutionServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"SCHEDULING_SERVER", Make<DvnSchedulingServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"ADMIN_SERVER", Make<DvnAdminServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM"}, {}},
    {"USER_PE_SERVER", Make<DvnUPEServerSet>, {"SERVER_ID", "UNIQUE NAME,SYSTEM", "SYSTEM"}, {}},
    {"PE_AGENT", Make<DvnPEASet>, {"PE_AGENT_ID", "ASSOC_USER", "NAME"}, {"NAME"}},
    // tool sets
    {"TOOL_SET_DEFAULT", Make<DvnToolDefaultSet>, {"UNIQUE NAME"}, {}},
    {"TOOL_SET_ICONS", Make<DvnToolIconSet>, {"UNIQUE TOOL_SET_NAME,NAME"}, {}},
};

// The rows that hang on a process by the key of one of its activities.
const char* const kActivityTables[] = {
    "ACTIVITY_EXTENT", "BLOCK_ACTIVITY",   "PROGRAM_ACTIVITY",   "PROCESS_ACTIVITY",
    "BUNDLE_ACTIVITY", "ACT_CONTAINER",    "ACTIVITY_BY_PERSON", "ACT_BY_PERS_F_CONT",
    "ACTIVITY_BY_ROLE", "ACT_BY_ROLE_F_CONT", "ACT_HAS_SUP_TOOL",
};
// The rows that hang on a process by its own key (ACTIVITY last: the rows
// above are found through it).
const char* const kProcessTables[] = {
    "PROCESS_GRAPH_ATTR", "PROCESS_TOPOL_ATTR", "SOURCE",        "SINK",
    "CONTROL_CONNECTOR",  "CONTROL_BENDPOINT",  "DATA_CONNECTOR", "PRC_CONTAINER",
    "TEXT_ANNOTATION",    "ACTIVITY",
};
// The rows that hang on a data connector.
const char* const kConnectorTables[] = {"DATA_BENDPOINT", "DATA_MAP"};

std::string ColumnType(const CFieldInfo& f) {
    if (f.kind != CFieldInfo::Text) return "INTEGER";
    if (f.sqlType == SQL_VARCHAR) return "VARCHAR(" + std::to_string(f.maxLength) + ")";
    return "TEXT";
}

// The statements that remove what hangs on a deleted process; oldPid is the
// deleted row's key as the trigger language names it.
std::vector<std::string> CascadeStatements(const char* prefix, const std::string& oldPid) {
    std::vector<std::string> out;
    for (const char* t : kActivityTables)
        out.push_back(std::string("DELETE FROM ") + prefix + t + " WHERE AID IN (SELECT AID FROM " + prefix +
                      "ACTIVITY WHERE PID = " + oldPid + ")");
    for (const char* t : kProcessTables)
        out.push_back(std::string("DELETE FROM ") + prefix + t + " WHERE PID = " + oldPid);
    return out;
}

// The statements that remove what hangs on a deleted activity: the rows of
// the activity and, for a block, of every activity inside it at any depth
// (found in one statement, so that no trigger has to fire itself), the
// connectors that name any of them, and the sources, sinks, connectors and
// annotations drawn inside such a block; the inner activities last.
std::vector<std::string> ActivityCascadeStatements(const char* prefix, const std::string& oldAid,
                                                   const std::string& oldPid) {
    const std::string subtree = "(WITH RECURSIVE S(AID) AS (SELECT CAST(" + oldAid +
                                " AS VARCHAR(255)) UNION ALL SELECT A.AID FROM " + prefix +
                                "ACTIVITY A JOIN S ON A.PID = " + oldPid +
                                " AND A.INSIDE_BLOCK = S.AID) SELECT AID FROM S)";
    std::vector<std::string> out;
    for (const char* t : kActivityTables)
        out.push_back(std::string("DELETE FROM ") + prefix + t + " WHERE AID IN " + subtree);
    const std::pair<const char*, const char*> named[] = {
        {"CONTROL_CONNECTOR", "FROM_ACTIVITY"}, {"CONTROL_CONNECTOR", "TO_ACTIVITY"},
        {"CONTROL_CONNECTOR", "INSIDE_BLOCK"},  {"CONTROL_BENDPOINT", "FROM_ACTIVITY"},
        {"CONTROL_BENDPOINT", "TO_ACTIVITY"},   {"DATA_CONNECTOR", "FROM_ACTIVITY"},
        {"DATA_CONNECTOR", "TO_ACTIVITY"},      {"DATA_CONNECTOR", "INSIDE_BLOCK"},
        {"SOURCE", "BLOCK_AID"},                {"SINK", "BLOCK_AID"},
        {"TEXT_ANNOTATION", "INSIDE_BLOCK"},
    };
    for (const auto& [table, column] : named)
        out.push_back(std::string("DELETE FROM ") + prefix + table + " WHERE PID = " + oldPid + " AND " + column +
                      " IN " + subtree);
    out.push_back(std::string("DELETE FROM ") + prefix + "ACTIVITY WHERE PID = " + oldPid + " AND AID IN " + subtree);
    return out;
}

std::vector<std::string> ConnectorStatements(const char* prefix, const std::string& oldDcid) {
    std::vector<std::string> out;
    for (const char* t : kConnectorTables)
        out.push_back(std::string("DELETE FROM ") + prefix + t + " WHERE DCID = " + oldDcid);
    return out;
}

// The data connectors that start at a deleted source or end at a deleted
// sink (their own trigger then takes their bend points and mappings).
struct NodeEnd {
    const char* table;      // SOURCE
    const char* key;        // SOURCE_ID
    const char* connector;  // the DATA_CONNECTOR column naming it: FROM_SOURCE
};
const NodeEnd kNodeEnds[] = {{"SOURCE", "SOURCE_ID", "FROM_SOURCE"}, {"SINK", "SINK_ID", "TO_SINK"}};

std::string NodeEndStatement(const char* prefix, const NodeEnd& end) {
    return std::string("DELETE FROM ") + prefix + "DATA_CONNECTOR WHERE PID = OLD.PID AND " + end.connector +
           " = OLD." + end.key;
}

std::string Joined(const std::vector<std::string>& statements, const char* indent) {
    std::string body;
    for (const auto& s : statements) body += indent + s + ";\n";
    return body;
}

// SQLite: the schema lives in the main database, names stand bare (the
// script runs as it is on the file).
std::vector<std::string> SqliteTriggers() {
    auto trigger = [](const std::string& name, const std::string& event, const std::string& body) {
        const std::string each = event.find(" FOR EACH ROW") == std::string::npos ? " FOR EACH ROW" : "";
        return "CREATE TRIGGER " + name + " " + event + each + " BEGIN\n" + body + "END";
    };
    const std::string agentName =
        "  UPDATE PE_AGENT SET NAME = (SELECT USERID FROM PERSON WHERE PERSON_ID = NEW.ASSOC_USER)"
        " WHERE rowid = NEW.rowid;\n";
    const std::string personName = "  UPDATE PE_AGENT SET NAME = NEW.USERID WHERE ASSOC_USER = NEW.PERSON_ID;\n";
    return {
        trigger("PROCESS_CASCADE", "AFTER DELETE ON PROCESS", Joined(CascadeStatements("", "OLD.PID"), "  ")),
        // Not when the process cascade removes the activities: that takes
        // all rows of the process at once.
        trigger("ACTIVITY_CASCADE",
                "AFTER DELETE ON ACTIVITY FOR EACH ROW WHEN EXISTS (SELECT 1 FROM PROCESS WHERE PID = OLD.PID)",
                Joined(ActivityCascadeStatements("", "OLD.AID", "OLD.PID"), "  ")),
        trigger("DATA_CONNECTOR_CASCADE", "AFTER DELETE ON DATA_CONNECTOR",
                Joined(ConnectorStatements("", "OLD.DCID"), "  ")),
        trigger("DATA_STRUCTURE_CASCADE", "AFTER DELETE ON DATA_STRUCTURE",
                "  DELETE FROM DATA_STRUCTURE_MBR WHERE DSID = OLD.DSID;\n"),
        // sources and sinks
        trigger("SOURCE_CASCADE", "AFTER DELETE ON SOURCE", "  " + NodeEndStatement("", kNodeEnds[0]) + ";\n"),
        trigger("SINK_CASCADE", "AFTER DELETE ON SINK", "  " + NodeEndStatement("", kNodeEnds[1]) + ";\n"),
        trigger("PE_AGENT_NAME_INSERT", "AFTER INSERT ON PE_AGENT", agentName),
        trigger("PE_AGENT_NAME_UPDATE", "AFTER UPDATE OF ASSOC_USER ON PE_AGENT", agentName),
        trigger("PERSON_AGENT_NAME_INSERT", "AFTER INSERT ON PERSON", personName),
        trigger("PERSON_AGENT_NAME_UPDATE", "AFTER UPDATE OF USERID ON PERSON", personName),
    };
}

// PostgreSQL: the schema DVBT; names fold to lower case.
std::vector<std::string> PostgresTriggers() {
    auto function = [](const std::string& name, const std::string& body, const char* result) {
        return "CREATE OR REPLACE FUNCTION DVBT." + name + "() RETURNS trigger LANGUAGE plpgsql AS $$\nBEGIN\n" + body +
               "  RETURN " + result + ";\nEND\n$$";
    };
    const std::string agentName =
        "  NEW.NAME := (SELECT USERID FROM DVBT.PERSON WHERE PERSON_ID = NEW.ASSOC_USER LIMIT 1);\n";
    const std::string personName = "  UPDATE DVBT.PE_AGENT SET NAME = NEW.USERID WHERE ASSOC_USER = NEW.PERSON_ID;\n";
    return {
        function("PROCESS_CASCADE", Joined(CascadeStatements("DVBT.", "OLD.PID"), "  "), "OLD"),
        "CREATE TRIGGER PROCESS_CASCADE AFTER DELETE ON DVBT.PROCESS FOR EACH ROW EXECUTE FUNCTION "
        "DVBT.PROCESS_CASCADE()",
        function("ACTIVITY_CASCADE",
                 "  IF NOT EXISTS (SELECT 1 FROM DVBT.PROCESS WHERE PID = OLD.PID) THEN\n    RETURN OLD;\n  END IF;\n" +
                     Joined(ActivityCascadeStatements("DVBT.", "OLD.AID", "OLD.PID"), "  "),
                 "OLD"),
        "CREATE TRIGGER ACTIVITY_CASCADE AFTER DELETE ON DVBT.ACTIVITY FOR EACH ROW EXECUTE FUNCTION "
        "DVBT.ACTIVITY_CASCADE()",
        function("DATA_CONNECTOR_CASCADE", Joined(ConnectorStatements("DVBT.", "OLD.DCID"), "  "), "OLD"),
        "CREATE TRIGGER DATA_CONNECTOR_CASCADE AFTER DELETE ON DVBT.DATA_CONNECTOR FOR EACH ROW EXECUTE FUNCTION "
        "DVBT.DATA_CONNECTOR_CASCADE()",
        function("DATA_STRUCTURE_CASCADE", "  DELETE FROM DVBT.DATA_STRUCTURE_MBR WHERE DSID = OLD.DSID;\n", "OLD"),
        "CREATE TRIGGER DATA_STRUCTURE_CASCADE AFTER DELETE ON DVBT.DATA_STRUCTURE FOR EACH ROW EXECUTE FUNCTION "
        "DVBT.DATA_STRUCTURE_CASCADE()",
        // sources and sinks
        function("SOURCE_CASCADE", "  " + NodeEndStatement("DVBT.", kNodeEnds[0]) + ";\n", "OLD"),
        "CREATE TRIGGER SOURCE_CASCADE AFTER DELETE ON DVBT.SOURCE FOR EACH ROW EXECUTE FUNCTION "
        "DVBT.SOURCE_CASCADE()",
        function("SINK_CASCADE", "  " + NodeEndStatement("DVBT.", kNodeEnds[1]) + ";\n", "OLD"),
        "CREATE TRIGGER SINK_CASCADE AFTER DELETE ON DVBT.SINK FOR EACH ROW EXECUTE FUNCTION DVBT.SINK_CASCADE()",
        function("PE_AGENT_NAME", agentName, "NEW"),
        "CREATE TRIGGER PE_AGENT_NAME BEFORE INSERT OR UPDATE OF ASSOC_USER ON DVBT.PE_AGENT FOR EACH ROW "
        "EXECUTE FUNCTION DVBT.PE_AGENT_NAME()",
        function("PERSON_AGENT_NAME", personName, "NULL"),
        "CREATE TRIGGER PERSON_AGENT_NAME AFTER INSERT OR UPDATE OF USERID ON DVBT.PERSON FOR EACH ROW "
        "EXECUTE FUNCTION DVBT.PERSON_AGENT_NAME()",
    };
}

const char* const kPostgresFunctions[] = {"PROCESS_CASCADE",        "ACTIVITY_CASCADE", "DATA_CONNECTOR_CASCADE",
                                          "DATA_STRUCTURE_CASCADE", "PE_AGENT_NAME",    "PERSON_AGENT_NAME",
                                          // sources and sinks
                                          "SOURCE_CASCADE", "SINK_CASCADE"};

std::string Upper(std::string s) {
    for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// Runs a query and gives the first column of every row as text.
std::vector<std::string> QueryStrings(CDatabase& db, const std::string& sql) {
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    DVN_ODBC(Checked, SQL_HANDLE_DBC, db.m_hdbc, SQLAllocHandle, SQL_HANDLE_STMT, db.m_hdbc, &stmt);
    struct Free {
        SQLHSTMT h;
        ~Free() { DVN_ODBC(Cleanup, SQL_HANDLE_STMT, h, SQLFreeHandle, SQL_HANDLE_STMT, h); }
    } release{stmt};
    std::string text = db.DriverText(sql);
    DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, stmt, sql.c_str(), SQLExecDirect, stmt,
                 reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
    std::vector<std::string> out;
    while (DVN_ODBC(Checked, SQL_HANDLE_STMT, stmt, SQLFetch, stmt) != SQL_NO_DATA) {
        char buffer[256];
        SQLLEN length = 0;
        DVN_ODBC(Checked, SQL_HANDLE_STMT, stmt, SQLGetData, stmt, 1, SQL_C_CHAR, buffer, sizeof buffer, &length);
        out.emplace_back(length == SQL_NULL_DATA ? "" : buffer);
    }
    return out;
}

}  // namespace

const std::vector<DvnSchema::Table>& DvnSchema::Tables() { return kTables; }

namespace {
constexpr std::string_view kUnique = "UNIQUE ";
}

bool DvnSchema::IsUniqueIndex(const char* index) { return std::string_view(index).starts_with(kUnique); }

std::string DvnSchema::IndexColumns(const char* index) {
    std::string_view text(index);
    if (text.starts_with(kUnique)) text.remove_prefix(kUnique.size());
    return std::string(text);
}

const DvnSchema::Table* DvnSchema::FindTable(const std::string& bareName) {
    const std::string wanted = Upper(bareName);
    for (const auto& t : kTables)
        if (wanted == t.name) return &t;
    return nullptr;
}

std::vector<CFieldInfo> DvnSchema::Columns(const Table& table) {
    std::vector<CFieldInfo> columns = table.make(nullptr)->DescribeFields();
    for (const char* extra : table.extraTextColumns)
        columns.push_back(CFieldInfo{extra, CFieldInfo::Text, 255, SQL_VARCHAR, nullptr});
    return columns;
}

std::vector<std::string> DvnSchema::Statements(Dialect dialect) {
    const bool lite = dialect == SQLite;
    std::vector<std::string> out;
    if (!lite) out.push_back("CREATE SCHEMA IF NOT EXISTS DVBT");
    for (const auto& table : kTables) {
        std::string create = std::string("CREATE TABLE ") + (lite ? "" : "DVBT.") + table.name + " (\n";
        const auto columns = Columns(table);
        for (size_t i = 0; i < columns.size(); ++i)
            create.append("  ").append(columns[i].name).append(" " + ColumnType(columns[i]) + (i + 1 < columns.size() ? ",\n" : "\n"));
        out.push_back(create + ")");
        int n = 0;
        for (const char* index : table.indexes) {
            std::string name = std::string(table.name) + "_IX" + std::to_string(++n);
            std::string list;
            for (char c : IndexColumns(index)) list += c == ',' ? std::string(", ") : std::string(1, c);
            const std::string create = IsUniqueIndex(index) ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
            out.push_back(lite ? create + name + " ON " + table.name + " (" + list + ")"
                               : create + name + " ON DVBT." + table.name + " (" + list + ")");
        }
    }
    for (auto& trigger : lite ? SqliteTriggers() : PostgresTriggers()) out.push_back(trigger);
    return out;
}

std::string DvnSchema::Script(Dialect dialect) {
    std::string script = std::string("-- The repository schema for ") + (dialect == SQLite ? "SQLite" : "PostgreSQL") +
                         ", as `dvnbt init` creates it.\n-- Generated from the recordset classes' field exchange "
                         "(src/recordsets/dvnschema.cpp);\n-- a test keeps this file equal to what they give.\n\n";
    for (const auto& s : Statements(dialect)) script += s + ";\n\n";
    return script;
}

DvnSchema::Dialect DvnSchema::DialectOf(CDatabase& db) {
    const std::string dbms = Upper(db.GetDBMSName().str());
    if (dbms.find("SQLITE") != std::string::npos) return SQLite;
    if (dbms.find("POSTGRES") != std::string::npos) return PostgreSQL;
    throw new CDBException(SQL_ERROR, "The repository needs SQLite or PostgreSQL, not " + db.GetDBMSName().str(),
                           CString());
}

std::vector<std::string> DvnSchema::ExistingTables(CDatabase& db) {
    const std::string sql = DialectOf(db) == SQLite
                                ? "SELECT name FROM DVBT.sqlite_master WHERE type = 'table'"
                                : "SELECT table_name FROM information_schema.tables WHERE table_schema = 'dvbt'";
    std::vector<std::string> ours;
    for (const auto& name : QueryStrings(db, sql))
        if (FindTable(name)) ours.push_back(Upper(name));
    return ours;
}

void DvnSchema::Drop(CDatabase& db) {
    const bool lite = DialectOf(db) == SQLite;
    for (const auto& name : ExistingTables(db))
        db.ExecuteSQL(("DROP TABLE IF EXISTS DVBT." + name + (lite ? "" : " CASCADE")).c_str());
    if (!lite)
        for (const char* f : kPostgresFunctions)
            db.ExecuteSQL((std::string("DROP FUNCTION IF EXISTS DVBT.") + f + "() CASCADE").c_str());
}

bool DvnSchema::Create(CDatabase& db, bool recreate) {
    const Dialect dialect = DialectOf(db);
    if (Exists(db) && !recreate) return false;
    db.BeginTrans();
    try {
        if (recreate) Drop(db);
        for (const auto& statement : Statements(dialect)) db.ExecuteSQL(statement.c_str());
        db.ExecuteSQL((std::string("INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('") +
                       kDefaultDataStructureKey + "', 'Default Data Structure', 0)")
                          .c_str());
        db.CommitTrans();
    } catch (...) {
        db.Rollback();
        throw;
    }
    return true;
}

int DvnSchema::Init(CDatabase& db, bool recreate, std::ostream& out, std::ostream& err) {
    try {
        const auto existing = ExistingTables(db);
        if (!existing.empty() && !recreate) {
            err << "The repository schema exists already (" << existing.size() << " of " << kTables.size()
                << " tables, among them DVBT." << existing.front() << "); nothing was changed. "
                << "Use --recreate to drop it and create it anew.\n";
            return 1;
        }
        if (!existing.empty())
            out << "Dropping the existing repository schema (" << existing.size() << " tables) and creating it anew.\n";
        Create(db, recreate);
        out << "Created the repository schema: " << kTables.size() << " tables under DVBT., seeded with the data "
            << "structure \"Default Data Structure\".\n";
        return 0;
    } catch (CDBException* e) {
        err << "Creating the repository schema failed: " << e->m_strError << " (" << e->m_strStateNativeOrigin
            << ")\n";
        e->Delete();
        return 1;
    }
}
