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
