#include "testdb.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "dvnbdbif.h"

std::string BackendName(Backend b) { return b == Backend::SQLite ? "SQLite" : "PostgreSQL"; }

namespace {

const char* Env(const char* name) {
    const char* v = std::getenv(name);
    return v && *v ? v : nullptr;
}

std::string UniqueSuffix() {
    static std::atomic<int> counter{0};
    static std::mt19937 rng{std::random_device{}()};
    return std::to_string(getpid()) + "_" + std::to_string(++counter) + "_" + std::to_string(rng() % 100000);
}

std::unique_ptr<CDatabase> Open(const std::string& dataSource) {
    auto db = std::make_unique<CDatabase>();
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), *db, DvnString(), DvnString()) != 0)
        throw std::runtime_error("cannot open the test database " + dataSource);
    return db;
}

// Runs one statement on the server of the PostgreSQL test data source.
void PgAdminExec(const std::string& sql) { ExecAll(*Open(Env("DVNBT_TEST_PG_DSN")), {sql.c_str()}); }

}  // namespace

void ExecAll(CDatabase& db, std::initializer_list<const char*> statements) {
    for (const char* s : statements) {
        try {
            db.ExecuteSQL(s);
        } catch (CDBException* e) {
            std::string text = std::string(s) + ": " + e->m_strError.str();
            e->Delete();
            throw std::runtime_error(text);
        }
    }
}

std::vector<std::string> QueryRows(CDatabase& db, const std::string& sql) {
    struct Statement {
        SQLHSTMT h = SQL_NULL_HSTMT;
        ~Statement() { SQLFreeHandle(SQL_HANDLE_STMT, h); }
    } st;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &st.h);
    std::string text = db.TranslateBrackets(sql);
    SQLRETURN rc = SQLExecDirect(st.h, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
    if (!SQL_SUCCEEDED(rc)) {
        SQLCHAR state[6] = "", message[512] = "";
        SQLINTEGER native = 0;
        SQLSMALLINT length = 0;
        SQLGetDiagRec(SQL_HANDLE_STMT, st.h, 1, state, &native, message, sizeof message, &length);
        throw std::runtime_error(sql + ": " + reinterpret_cast<char*>(message));
    }
    SQLSMALLINT cols = 0;
    SQLNumResultCols(st.h, &cols);
    std::vector<std::string> rows;
    while (SQL_SUCCEEDED(SQLFetch(st.h))) {
        std::string row;
        for (SQLUSMALLINT c = 1; c <= cols; ++c) {
            // A long value comes in pieces, each ending in a NUL.
            std::string value;
            char buf[4096];
            SQLLEN ind = 0;
            for (SQLRETURN g = SQL_SUCCESS_WITH_INFO; g == SQL_SUCCESS_WITH_INFO && ind != SQL_NULL_DATA;) {
                g = SQLGetData(st.h, c, SQL_C_CHAR, buf, sizeof buf, &ind);
                if (SQL_SUCCEEDED(g) && ind != SQL_NULL_DATA) value += buf;
            }
            row += (c > 1 ? "|" : "") + (ind == SQL_NULL_DATA ? "<null>" : value);
        }
        rows.push_back(row);
    }
    return rows;
}

std::string QueryValue(CDatabase& db, const std::string& sql) {
    auto rows = QueryRows(db, sql);
    if (rows.empty()) return "<none>";
    return rows[0].substr(0, rows[0].find('|'));
}

void DbTest::SetUp() {
    if (GetParam() == Backend::SQLite) {
        m_dir = (std::filesystem::temp_directory_path() / ("dvnbt_test_" + UniqueSuffix())).string();
        std::filesystem::create_directories(m_dir);
        m_file = m_dir + "/test.db";
        if (const char* dsn = Env("DVNBT_TEST_SQLITE_DSN"))
            m_dataSource = std::string(dsn) + ";Database=" + m_file;
        else
            m_dataSource = DvnConvCoreDbIF::EmbeddedDataSource(m_file).str();
    } else {
        const char* dsn = Env("DVNBT_TEST_PG_DSN");
        if (!dsn) {
            const char* require = Env("DVNBT_TEST_REQUIRE_PG");
            if (require && std::string(require) == "1")
                FAIL() << "DVNBT_TEST_REQUIRE_PG=1 but DVNBT_TEST_PG_DSN is not set";
            GTEST_SKIP() << "PostgreSQL not configured (set DVNBT_TEST_PG_DSN)";
        }
        m_pgDatabase = "dvnbt_t_" + UniqueSuffix();
        try {
            PgAdminExec("CREATE DATABASE " + m_pgDatabase);
        } catch (const std::exception& e) {
            m_pgDatabase.clear();
            FAIL() << e.what();
        }
        m_dataSource = std::string(dsn) + ";Database=" + m_pgDatabase;
        ExecAll(Db(), {"CREATE SCHEMA dvbt"});
    }
    PrepareSchema();
}

CDatabase& DbTest::Db() {
    if (!m_db) m_db = Open(m_dataSource);
    return *m_db;
}

std::unique_ptr<CDatabase> DbTest::OpenSecondConnection() const { return Open(m_dataSource); }

std::vector<std::string> DbTest::DvnbtArgs(const std::vector<std::string>& args) const {
    std::vector<std::string> all = IsPostgres() ? std::vector<std::string>{"--dsn", m_dataSource}
                                                : std::vector<std::string>{"--db", m_file};
    all.insert(all.end(), args.begin(), args.end());
    return all;
}

void DbTest::TearDown() {
    m_db.reset();
    if (!m_dir.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(m_dir, ec);
    }
    if (!m_pgDatabase.empty()) {
        try {
            PgAdminExec("DROP DATABASE IF EXISTS " + m_pgDatabase + " WITH (FORCE)");
        } catch (const std::exception& e) {
            ADD_FAILURE() << "cannot drop the test database: " << e.what();
        }
    }
}
