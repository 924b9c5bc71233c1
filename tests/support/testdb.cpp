#include "testdb.h"

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "dvnbdbif.h"
#include "dvnschema.h"

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

// Creates the repository schema in the database of an open connection.
void CreateRepositorySchema(CDatabase& db) {
    try {
        if (!DvnSchema::Create(db, false)) throw std::runtime_error("the repository schema exists already");
    } catch (CDBException* e) {
        std::string text = e->m_strError.str();
        e->Delete();
        throw std::runtime_error("creating the repository schema failed: " + text);
    }
}

// A name for the repository schema of a dialect as this build creates it:
// a hash of its statements. A template made by another build with another
// schema has another name, so neither a stale template is used nor one that
// a concurrent run of other code still copies is replaced. The seed rows
// that DvnSchema::Create adds are not part of the statements: kVersion is
// raised when they change.
std::string TemplateName(DvnSchema::Dialect dialect, std::uint64_t* hash = nullptr) {
    constexpr const char* kVersion = "2";
    std::uint64_t h = 14695981039346656037ull;  // FNV-1a
    auto add = [&](const std::string& text) {
        for (unsigned char c : text) h = (h ^ c) * 1099511628211ull;
        h = (h ^ 0xff) * 1099511628211ull;
    };
    add(kVersion);
    add(DvnSchema::kDefaultDataStructureKey);
    for (const auto& s : DvnSchema::Statements(dialect)) add(s);
    if (hash) *hash = h;
    char hex[17];
    std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(h));
    return std::string("dvnbt_tpl_") + hex;
}

// The path of a SQLite file that holds the repository schema, made once per
// schema and machine. It is built under a name of its own and renamed into
// place, so a test never copies a half-made file, and two processes that
// race both end with a complete one.
const std::string& SqliteTemplate() {
    static std::string path;
    if (!path.empty()) return path;
    namespace fs = std::filesystem;
    const fs::path file = fs::temp_directory_path() / (TemplateName(DvnSchema::SQLite) + ".db");
    if (!fs::exists(file)) {
        const fs::path building = file.string() + "." + UniqueSuffix();
        struct Remove {
            fs::path p;
            ~Remove() {
                std::error_code ec;
                for (const char* end : {"", "-wal", "-shm", "-journal"}) fs::remove(p.string() + end, ec);
            }
        } cleanup{building};
        {
            auto db = Open(DvnConvCoreDbIF::EmbeddedDataSource(building.string()).str());
            CreateRepositorySchema(*db);
        }
        // The last connection has written its log back into the file.
        if (fs::exists(building.string() + "-wal") && fs::file_size(building.string() + "-wal") > 0)
            throw std::runtime_error("the template file " + building.string() + " kept a write-ahead log");
        fs::rename(building, file);
    }
    path = file.string();
    return path;
}

// The name of a PostgreSQL database that holds the repository schema, made
// once per schema and server. Processes that race take an advisory lock on
// the server; the one that finds no template builds it under a name of its
// own (removing what a crashed builder left behind), closes every connection
// to it, forbids further ones and only then renames it into place. So a test
// never copies a half-made template, and no session is connected to the
// template while CREATE DATABASE copies it. admin is a connection to the
// server of the data source dsn.
const std::string& PgTemplate(CDatabase& admin, const std::string& dsn) {
    static std::string name;
    if (!name.empty()) return name;
    std::uint64_t hash = 0;
    const std::string tpl = TemplateName(DvnSchema::PostgreSQL, &hash);
    auto exists = [&](const std::string& db) {
        return QueryValue(admin, "SELECT COUNT(*) FROM pg_database WHERE datname = '" + db + "'") != "0";
    };
    if (!exists(tpl)) {
        const std::string key = std::to_string(static_cast<std::int64_t>(hash));
        QueryValue(admin, "SELECT pg_advisory_lock(" + key + ")");
        struct Unlock {
            CDatabase& db;
            std::string key;
            ~Unlock() {
                try {
                    QueryValue(db, "SELECT pg_advisory_unlock(" + key + ")");
                } catch (...) {
                }
            }
        } unlock{admin, key};
        if (!exists(tpl)) {
            const std::string prefix = tpl + "_building_";
            for (const auto& left : QueryRows(admin, "SELECT datname FROM pg_database WHERE datname LIKE '" +
                                                          prefix + "%'"))
                ExecAll(admin, {("DROP DATABASE IF EXISTS " + left + " WITH (FORCE)").c_str()});
            const std::string building = prefix + std::to_string(getpid());
            ExecAll(admin, {("CREATE DATABASE " + building).c_str()});
            {
                auto db = Open(dsn + ";Database=" + building);
                CreateRepositorySchema(*db);
            }
            ExecAll(admin, {("ALTER DATABASE " + building + " WITH ALLOW_CONNECTIONS false IS_TEMPLATE true").c_str(),
                             ("ALTER DATABASE " + building + " RENAME TO " + tpl).c_str()});
        }
    }
    name = tpl;
    return name;
}

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
    std::string text = db.DriverText(db.TranslateBrackets(sql));
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
        if (WithRepositorySchema()) {
            try {
                std::filesystem::copy_file(SqliteTemplate(), m_file);
            } catch (const std::exception& e) {
                FAIL() << "cannot make the test database from the template: " << e.what();
            }
        }
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
            auto admin = Open(dsn);
            std::string create = "CREATE DATABASE " + m_pgDatabase;
            if (WithRepositorySchema()) create += " TEMPLATE " + PgTemplate(*admin, dsn);
            ExecAll(*admin, {create.c_str()});
        } catch (const std::exception& e) {
            m_pgDatabase.clear();
            FAIL() << e.what();
        }
        m_dataSource = std::string(dsn) + ";Database=" + m_pgDatabase;
        if (!WithRepositorySchema()) ExecAll(Db(), {"CREATE SCHEMA dvbt"});
    }
    PrepareSchema();
}

CDatabase& DbTest::Db() {
    if (!m_db) m_db = Open(m_dataSource);
    return *m_db;
}

PgRole PgSecretRole() {
    const char* user = Env("DVNBT_TEST_PG_SECRET_USER");
    const char* password = Env("DVNBT_TEST_PG_SECRET_PASSWORD");
    if (!user || !password) return {};
    return {user, password};
}

void DbTest::GrantToSecretRole() {
    const std::string role = PgSecretRole().user;
    if (!IsPostgres() || role.empty()) return;
    ExecAll(Db(), {("GRANT USAGE ON SCHEMA dvbt TO " + role).c_str(),
                   ("GRANT ALL ON ALL TABLES IN SCHEMA dvbt TO " + role).c_str()});
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
