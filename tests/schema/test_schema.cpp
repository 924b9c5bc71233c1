// The repository schema on both databases: every table with exactly the
// columns its recordset class exchanges, the seed, the cascades, and init.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "dvnrecordsets.h"
#include "dvnschema.h"
#include "repositorydb.h"

namespace {

struct ResultColumn {
    std::string name;
    SQLSMALLINT type;
    SQLULEN size;
};

// The columns of "SELECT * FROM" a table, as the driver describes them.
std::vector<ResultColumn> SelectStarColumns(CDatabase& db, const std::string& table) {
    SQLHSTMT h = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &h);
    std::string sql = "SELECT * FROM DVBT." + table + " WHERE 1 = 0";
    std::vector<ResultColumn> out;
    if (SQL_SUCCEEDED(SQLExecDirect(h, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS))) {
        SQLSMALLINT n = 0;
        SQLNumResultCols(h, &n);
        for (SQLUSMALLINT c = 1; c <= n; ++c) {
            SQLCHAR name[128];
            SQLSMALLINT nameLength = 0, type = 0, digits = 0, nullable = 0;
            SQLULEN size = 0;
            SQLDescribeCol(h, c, name, sizeof name, &nameLength, &type, &size, &digits, &nullable);
            std::string upper(reinterpret_cast<char*>(name));
            for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
            out.push_back({upper, type, size});
        }
    }
    SQLFreeHandle(SQL_HANDLE_STMT, h);
    return out;
}

bool IsLongText(SQLSMALLINT type) { return type == SQL_LONGVARCHAR || type == SQL_WLONGVARCHAR; }
bool IsShortText(SQLSMALLINT type) { return type == SQL_VARCHAR || type == SQL_WVARCHAR; }

using Schema = RepositoryTest;

TEST_P(Schema, EveryTableHasExactlyTheColumnsItsClassExchangesInOrder) {
    ASSERT_EQ(DvnSchema::ExistingTables(Db()).size(), DvnSchema::Tables().size());
    for (const auto& table : DvnSchema::Tables()) {
        SCOPED_TRACE(table.name);
        const auto expected = DvnSchema::Columns(table);
        const auto actual = SelectStarColumns(Db(), table.name);
        ASSERT_EQ(actual.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            SCOPED_TRACE(expected[i].name);
            EXPECT_EQ(actual[i].name, expected[i].name);
            if (expected[i].kind != CFieldInfo::Text)
                EXPECT_EQ(actual[i].type, SQL_INTEGER);
            else if (expected[i].sqlType == SQL_VARCHAR)
                EXPECT_TRUE(IsShortText(actual[i].type) && actual[i].size == 255) << actual[i].type << " " << actual[i].size;
            else  // long text must hold at least what the class binds
                EXPECT_TRUE(IsLongText(actual[i].type) || actual[i].size >= static_cast<SQLULEN>(expected[i].maxLength))
                    << actual[i].type << " " << actual[i].size;
        }
    }
}

// One row in every table that hangs on a process, for process P<n>: a top
// activity A<n>, a block B<n> with an activity C<n> inside, and data
// connector D<n>.
void PopulateProcess(CDatabase& db, const std::string& n) {
    auto q = [&](const std::string& key) { return "'" + key + n + "'"; };
    const std::string pid = q("P"), a = q("A"), b = q("B"), c = q("C");
    std::vector<std::string> sql = {
        "INSERT INTO DVBT.PROCESS (PID, NAME, CHECKED_OUT) VALUES (" + pid + ", " + q("Process") + ", 0)",
        "INSERT INTO DVBT.PROCESS_GRAPH_ATTR (PID) VALUES (" + pid + ")",
        "INSERT INTO DVBT.PROCESS_TOPOL_ATTR (PID) VALUES (" + pid + ")",
        "INSERT INTO DVBT.ACTIVITY (AID, NAME, PID) VALUES (" + a + ", 'a', " + pid + ")",
        "INSERT INTO DVBT.ACTIVITY (AID, NAME, PID) VALUES (" + b + ", 'b', " + pid + ")",
        "INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES (" + c + ", 'c', " + pid + ", " + b + ")",
        "INSERT INTO DVBT.ACTIVITY_EXTENT (AID) VALUES (" + a + ")",
        "INSERT INTO DVBT.BLOCK_ACTIVITY (AID) VALUES (" + b + ")",
        "INSERT INTO DVBT.PROGRAM_ACTIVITY (AID, PROGRAM_ID) VALUES (" + c + ", 'PG')",
        "INSERT INTO DVBT.PROCESS_ACTIVITY (AID, PROCESS) VALUES (" + a + ", 'x')",
        "INSERT INTO DVBT.BUNDLE_ACTIVITY (AID) VALUES (" + c + ")",
        "INSERT INTO DVBT.ACT_CONTAINER (AID, INPUT_OR_OUTPUT, DOTTED_NAME) VALUES (" + c + ", 1, 'm')",
        "INSERT INTO DVBT.ACTIVITY_BY_PERSON (AID, PERSON_ID) VALUES (" + a + ", 'PE')",
        "INSERT INTO DVBT.ACT_BY_PERS_F_CONT (AID, CONTAINER_MEMBER) VALUES (" + a + ", 'm')",
        "INSERT INTO DVBT.ACTIVITY_BY_ROLE (AID, ROLE) VALUES (" + c + ", 'R')",
        "INSERT INTO DVBT.ACT_BY_ROLE_F_CONT (AID, CONTAINER_MEMBER) VALUES (" + c + ", 'm')",
        "INSERT INTO DVBT.ACT_HAS_SUP_TOOL (AID, PROGRAM_ID) VALUES (" + a + ", 'PG')",
        "INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES (" + q("SO") + ", 1, " + pid + ", " + b + ")",
        "INSERT INTO DVBT.SINK (SINK_ID, SINK_NUMBER, PID) VALUES (" + q("SI") + ", 1, " + pid + ")",
        "INSERT INTO DVBT.CONTROL_CONNECTOR (PID, FROM_ACTIVITY, TO_ACTIVITY) VALUES (" + pid + ", " + a + ", " + b + ")",
        "INSERT INTO DVBT.CONTROL_BENDPOINT (PID, FROM_ACTIVITY, TO_ACTIVITY, SEQUENCENO) VALUES (" + pid + ", " + a +
            ", " + b + ", 1)",
        "INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, FROM_ACTIVITY, TO_ACTIVITY) VALUES (" + pid + ", " + q("D") +
            ", " + a + ", " + b + ")",
        "INSERT INTO DVBT.DATA_BENDPOINT (DCID, SEQUENCENO) VALUES (" + q("D") + ", 1)",
        "INSERT INTO DVBT.DATA_MAP (DCID, FROM_MEMBER, TO_MEMBER) VALUES (" + q("D") + ", 'x', 'y')",
        "INSERT INTO DVBT.PRC_CONTAINER (PID, INPUT_OR_OUTPUT, DOTTED_NAME) VALUES (" + pid + ", 2, 'm')",
        "INSERT INTO DVBT.TEXT_ANNOTATION (ANNOTATION_ID, PID) VALUES (" + q("T") + ", " + pid + ")",
    };
    for (const auto& s : sql) ExecAll(db, {s.c_str()});
}

// The tables that PopulateProcess fills, with the number of rows per process.
const std::vector<std::pair<std::string, int>> kProcessRows = {
    {"PROCESS", 1},          {"PROCESS_GRAPH_ATTR", 1}, {"PROCESS_TOPOL_ATTR", 1}, {"ACTIVITY", 3},
    {"ACTIVITY_EXTENT", 1},  {"BLOCK_ACTIVITY", 1},     {"PROGRAM_ACTIVITY", 1},   {"PROCESS_ACTIVITY", 1},
    {"BUNDLE_ACTIVITY", 1},  {"ACT_CONTAINER", 1},      {"ACTIVITY_BY_PERSON", 1}, {"ACT_BY_PERS_F_CONT", 1},
    {"ACTIVITY_BY_ROLE", 1}, {"ACT_BY_ROLE_F_CONT", 1}, {"ACT_HAS_SUP_TOOL", 1},   {"SOURCE", 1},
    {"SINK", 1},             {"CONTROL_CONNECTOR", 1},  {"CONTROL_BENDPOINT", 1},  {"DATA_CONNECTOR", 1},
    {"DATA_BENDPOINT", 1},   {"DATA_MAP", 1},           {"PRC_CONTAINER", 1},      {"TEXT_ANNOTATION", 1},
};

int Count(CDatabase& db, const std::string& table) { return std::stoi(QueryValue(db, "SELECT COUNT(*) FROM DVBT." + table)); }

// Removing a process row by the one Delete the store makes removes all that
// belongs to it and nothing of another process; removing a data connector
// removes its bend points and maps.
TEST_P(Schema, DeletingAProcessOrADataConnectorLeavesNoOrphans) {
    PopulateProcess(Db(), "1");
    PopulateProcess(Db(), "2");
    for (const auto& [table, rows] : kProcessRows) ASSERT_EQ(Count(Db(), table), 2 * rows) << table;

    DvnSimplePrcSet process(&Db());
    process.m_strFilter = "NAME = 'Process1'";
    ASSERT_TRUE(process.Open(CRecordset::snapshot, prefix + "PROCESS", CRecordset::none));
    ASSERT_FALSE(process.IsEOF());
    process.Delete();
    process.Close();
    for (const auto& [table, rows] : kProcessRows) EXPECT_EQ(Count(Db(), table), rows) << table;
    for (const char* table : {"PROCESS", "ACTIVITY", "SOURCE", "SINK", "DATA_CONNECTOR", "TEXT_ANNOTATION"})
        EXPECT_EQ(QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table + " WHERE PID = 'P2'"),
                  QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table))
            << table;

    DvnDataConnectorSet connector(&Db());
    connector.m_strFilter = "DCID = 'D2'";
    ASSERT_TRUE(connector.Open(CRecordset::snapshot, prefix + "DATA_CONNECTOR", CRecordset::none));
    connector.Delete();
    connector.Close();
    EXPECT_EQ(Count(Db(), "DATA_BENDPOINT"), 0);
    EXPECT_EQ(Count(Db(), "DATA_MAP"), 0);
    EXPECT_EQ(Count(Db(), "ACTIVITY"), 3);
    EXPECT_EQ(Count(Db(), "PROCESS"), 1);
}

// The long columns hold the longest values the stores write, and read back
// whole through the classes.
TEST_P(Schema, LongTextColumnsHoldWhatTheClassesBind) {
    const std::string condition(4097, 'c'), value = std::string(32671, 'v') + "'";
    {
        DvnActivitySet act(&Db());
        ASSERT_TRUE(act.Open(CRecordset::snapshot, prefix + "ACTIVITY", CRecordset::none));
        act.AddNew();
        act.m_AID = "A1";
        act.m_EXIT_CONDITION = condition;
        act.Update();
        act.Close();
        DvnActContainerSet cont(&Db());
        ASSERT_TRUE(cont.Open(CRecordset::snapshot, prefix + "ACT_CONTAINER", CRecordset::none));
        cont.AddNew();
        cont.m_AID = "A1";
        cont.m_INITIAL_VALUE = value;
        cont.Update();
        cont.Close();
    }
    DvnActivitySet act(&Db());
    act.m_strFilter = "AID = 'A1'";
    ASSERT_TRUE(act.Open(CRecordset::snapshot, prefix + "ACTIVITY", CRecordset::readOnly));
    EXPECT_EQ(act.m_EXIT_CONDITION.str(), condition);
    DvnActContainerSet cont(&Db());
    ASSERT_TRUE(cont.Open(CRecordset::snapshot, "SELECT * FROM " + prefix + "ACT_CONTAINER WHERE [AID] = 'A1'",
                          CRecordset::readOnly));
    EXPECT_EQ(cont.m_INITIAL_VALUE.str(), value);
}

// The seed and init's refusal: a second init changes nothing; --recreate
// starts over with only the seed.
TEST_P(Schema, InitRefusesAnExistingSchemaAndRecreatesOnlyWhenAsked) {
    DvnDataStructureSet ds(&Db());
    EXPECT_EQ(ds.GetDsID("'Default Data Structure'", prefix, false), DvnSchema::kDefaultDataStructureKey);
    EXPECT_EQ(QueryRows(Db(), "SELECT DSID, NAME, CHECKED_OUT FROM DVBT.DATA_STRUCTURE"),
              std::vector<std::string>{"DEFAULT_DATA_STRUCTURE|Default Data Structure|0"});
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('C1', 'Kept', 0)",
                   "DROP TABLE DVBT.TOOL_SET_ICONS"});

    std::ostringstream out, err;
    EXPECT_EQ(DvnSchema::Init(Db(), false, out, err), 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(err.str().find("exists already"), std::string::npos) << err.str();
    EXPECT_NE(err.str().find("nothing was changed"), std::string::npos) << err.str();
    EXPECT_FALSE(DvnSchema::Create(Db(), false));
    EXPECT_EQ(Count(Db(), "CATEGORY"), 1);
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), DvnSchema::Tables().size() - 1);  // a part counts as existing

    std::ostringstream out2, err2;
    EXPECT_EQ(DvnSchema::Init(Db(), true, out2, err2), 0) << err2.str();
    EXPECT_NE(out2.str().find("Dropping the existing repository schema (80 tables)"), std::string::npos) << out2.str();
    EXPECT_EQ(err2.str(), "");
    EXPECT_EQ(Count(Db(), "CATEGORY"), 0);
    EXPECT_EQ(Count(Db(), "DATA_STRUCTURE"), 1);
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), DvnSchema::Tables().size());
    PopulateProcess(Db(), "1");  // the cascades came back too
    ExecAll(Db(), {"DELETE FROM DVBT.PROCESS"});
    EXPECT_EQ(Count(Db(), "ACTIVITY_EXTENT"), 0);
}

DVN_INSTANTIATE_BOTH_BACKENDS(Schema);

// An empty database: init creates everything in one go.
using EmptyDatabase = DbTest;

TEST_P(EmptyDatabase, InitCreatesTheWholeSchema) {
    EXPECT_FALSE(DvnSchema::Exists(Db()));
    std::ostringstream out, err;
    EXPECT_EQ(DvnSchema::Init(Db(), false, out, err), 0) << err.str();
    EXPECT_NE(out.str().find("81 tables"), std::string::npos) << out.str();
    EXPECT_TRUE(DvnSchema::Exists(Db()));
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), 81u);
}

DVN_INSTANTIATE_BOTH_BACKENDS(EmptyDatabase);

}  // namespace

namespace {

// The scripts in schema/ are what init runs: a changed class shows here.
TEST(SchemaScripts, FilesInTheSchemaFolderEqualWhatTheClassesGive) {
    for (auto [dialect, file] : {std::pair{DvnSchema::SQLite, "dvbt-sqlite.sql"},
                                 std::pair{DvnSchema::PostgreSQL, "dvbt-postgresql.sql"}}) {
        const std::string generated = DvnSchema::Script(dialect);
        std::ifstream in(std::string(DVN_SOURCE_DIR) + "/schema/" + file);
        std::stringstream stored;
        stored << in.rdbuf();
        if (stored.str() != generated) {
            const std::string fresh = std::string(DVN_BINARY_DIR) + "/" + file;
            std::ofstream(fresh) << generated;
            ADD_FAILURE() << "schema/" << file << " differs from the classes; the current script is in " << fresh;
        }
    }
}

}  // namespace
