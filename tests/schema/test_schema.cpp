// The repository schema on both databases: every table with exactly the
// columns its recordset class exchanges, the seed, the cascades, and init.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "dvnrecordsets.h"
#include "dvnschema.h"
#include "orphans.h"
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
    std::string sql = db.DriverText("SELECT * FROM DVBT." + table + " WHERE 1 = 0");
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

// Each column's type holds what its class binds: a number, text of 255, or
// long text; and a class's count is what its field exchange binds.
TEST_P(Schema, EveryTableHasTheColumnsItsClassExchangesInTypesThatHoldTheirValues) {
    ASSERT_EQ(DvnSchema::ExistingTables(Db()).size(), DvnSchema::Tables().size());
    for (const auto& table : DvnSchema::Tables()) {
        SCOPED_TRACE(table.name);
        const auto rs = table.make(nullptr);
        EXPECT_EQ(static_cast<size_t>(rs->m_nFields), rs->DescribeFields().size());
        const auto expected = DvnSchema::Columns(table);
        const auto actual = SelectStarColumns(Db(), table.name);
        ASSERT_EQ(actual.size(), expected.size());
        for (size_t i = 0; i < expected.size(); ++i) {
            const auto& [name, type, size] = actual[i];
            const CFieldInfo& bound = expected[i];
            const bool holds = bound.kind != CFieldInfo::Text ? type == SQL_INTEGER
                               : bound.sqlType == SQL_VARCHAR ? IsShortText(type) && size == 255
                                                              : IsLongText(type) || size >= SQLULEN(bound.maxLength);
            EXPECT_TRUE(name == bound.name && holds) << bound.name << ": " << name << " " << type << " " << size;
        }
    }
}

// One row in every table that hangs on a process, for process P<n>: a top
// activity A<n>, a block B<n> with an activity C<n> inside, and data
// connector D<n> (tests/data/schema/process.sql, where '#' stands for n).
void PopulateProcess(CDatabase& db, const std::string& n) {
    std::ifstream in(std::string(DVN_SOURCE_DIR) + "/tests/data/schema/process.sql");
    ASSERT_TRUE(in);
    for (std::string sql; std::getline(in, sql);) {
        for (size_t at; (at = sql.find('#')) != std::string::npos;) sql.replace(at, 1, n);
        ExecAll(db, {sql.c_str()});
    }
}

// The row count of every table, each as "TABLE|count".
std::vector<std::string> Counts(CDatabase& db) {
    std::string sql;
    for (const auto& t : DvnSchema::Tables())
        sql += std::string(sql.empty() ? "" : " UNION ALL ") + "SELECT '" + t.name + "', COUNT(*) FROM DVBT." + t.name;
    return QueryRows(db, sql);
}

int Count(CDatabase& db, const std::string& table) { return std::stoi(QueryValue(db, "SELECT COUNT(*) FROM DVBT." + table)); }

// A deleted source or sink takes the data connectors from or to it, and
// they their bend points and mappings; a connector of another process that
// names the same key stays. Removing a process row by the one Delete the
// store makes removes all that belongs to it and nothing of another
// process; removing a data connector removes its bend points and maps.
TEST_P(Schema, DeletingAProcessASourceASinkOrADataConnectorLeavesNoOrphans) {
    PopulateProcess(Db(), "2");
    ExecAll(Db(),
            {"INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, FROM_SOURCE, TO_SINK) VALUES ('P2', 'E2', 'SO2', 'SI2')"});
    const auto withProcess2 = Counts(Db());
    PopulateProcess(Db(), "1");
    for (const char* sql : {
             "INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, FROM_SOURCE, TO_SINK) VALUES ('P1', 'E1', 'SO1', 'SI1')",
             "INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, FROM_ACTIVITY, TO_SINK) VALUES ('P1', 'F1', 'A1', 'SI1')",
             "INSERT INTO DVBT.DATA_CONNECTOR (PID, DCID, FROM_SOURCE, TO_ACTIVITY) VALUES ('P1', 'G1', 'SO1', 'A1')",
             "INSERT INTO DVBT.DATA_BENDPOINT (DCID, SEQUENCENO) VALUES ('E1', 1), ('F1', 1), ('G1', 1)",
             "INSERT INTO DVBT.DATA_MAP (DCID, FROM_MEMBER, TO_MEMBER) VALUES ('E1', 'a', 'b'), ('G1', 'a', 'b')",
         })
        ExecAll(Db(), {sql});
    ASSERT_EQ(OrphanRows(Db()), std::vector<std::string>{});
    ExecAll(Db(), {"DELETE FROM DVBT.SINK WHERE SINK_ID = 'SI1'"});
    EXPECT_EQ(QueryRows(Db(), "SELECT DCID FROM DVBT.DATA_CONNECTOR ORDER BY DCID"),
              (std::vector<std::string>{"D1", "D2", "E2", "G1"}));
    ExecAll(Db(), {"DELETE FROM DVBT.SOURCE WHERE SOURCE_ID = 'SO1'"});
    EXPECT_EQ(QueryRows(Db(), "SELECT DCID FROM DVBT.DATA_CONNECTOR ORDER BY DCID"),
              (std::vector<std::string>{"D1", "D2", "E2"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT DCID FROM DVBT.DATA_BENDPOINT ORDER BY DCID"),
              (std::vector<std::string>{"D1", "D2"}));
    EXPECT_EQ(OrphanRows(Db()), std::vector<std::string>{});

    ExecAll(Db(), {"INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('SO1', 1, 'P1', 'B1')",
                   "INSERT INTO DVBT.SINK (SINK_ID, SINK_NUMBER, PID) VALUES ('SI1', 1, 'P1')"});
    DvnSimplePrcSet process(&Db());
    process.m_strFilter = "NAME = 'Process1'";
    ASSERT_TRUE(process.Open(CRecordset::snapshot, prefix + "PROCESS", CRecordset::none));
    ASSERT_FALSE(process.IsEOF());
    process.Delete();
    process.Close();
    EXPECT_EQ(Counts(Db()), withProcess2);
    DvnDataConnectorSet connector(&Db());
    connector.m_strFilter = "DCID = 'D2'";
    ASSERT_TRUE(connector.Open(CRecordset::snapshot, prefix + "DATA_CONNECTOR", CRecordset::none));
    connector.Delete();
    connector.Close();
    EXPECT_EQ(Count(Db(), "DATA_BENDPOINT"), 0);
    EXPECT_EQ(Count(Db(), "DATA_MAP"), 0);
    EXPECT_EQ(Count(Db(), "ACTIVITY"), 3);
    EXPECT_EQ(OrphanRows(Db()), std::vector<std::string>{});

    // What the check reports: rows whose owner is gone, per table.
    ExecAll(Db(), {"INSERT INTO DVBT.CONTROL_CONNECTOR (PID, FROM_ACTIVITY, TO_ACTIVITY) VALUES ('P2', 'A2', 'Z')",
                   "INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID) VALUES ('SO9', 1, 'P9')",
                   "INSERT INTO DVBT.DATA_MAP (DCID, FROM_MEMBER, TO_MEMBER) VALUES ('X', 'a', 'b'), ('Y', 'a', 'b')"});
    EXPECT_EQ(OrphanRows(Db()), (std::vector<std::string>{"SOURCE|1", "CONTROL_CONNECTOR|1", "DATA_MAP|2"}));
}

// A schema that exists only in part is refused; --recreate starts over with
// every table, the cascades, and only the seed.
TEST_P(Schema, InitRefusesAPartialSchemaAndRecreatesItWhenAsked) {
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('C1', 'Kept', 0)",
                   "DROP TABLE DVBT.TOOL_SET_ICONS"});
    std::ostringstream out, err;
    EXPECT_EQ(DvnSchema::Init(Db(), false, out, err), 1);
    EXPECT_NE(err.str().find("nothing was changed"), std::string::npos) << err.str();
    EXPECT_EQ(Count(Db(), "CATEGORY"), 1);

    std::ostringstream out2, err2;
    EXPECT_EQ(DvnSchema::Init(Db(), true, out2, err2), 0) << err2.str();
    EXPECT_NE(out2.str().find("Dropping the existing repository schema (80 tables)"), std::string::npos) << out2.str();
    EXPECT_EQ(DvnSchema::ExistingTables(Db()).size(), DvnSchema::Tables().size());
    EXPECT_EQ(Count(Db(), "CATEGORY"), 0);
    EXPECT_EQ(Count(Db(), "DATA_STRUCTURE"), 1);
    PopulateProcess(Db(), "1");
    ExecAll(Db(), {"DELETE FROM DVBT.PROCESS"});
    EXPECT_EQ(Count(Db(), "ACTIVITY_EXTENT"), 0);
}

DVN_INSTANTIATE_BOTH_BACKENDS(Schema);

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
