// What the recordset layer costs over raw ODBC.
//
// Writes N rows into one indexed table, on SQLite (a fresh file) and on
// PostgreSQL (a fresh database on the server of $DVNBT_TEST_PG_DSN, when set):
//   insert         CRecordset AddNew/Update on one open recordset
//                  vs one prepared INSERT executed N times
//   lookup+insert  per row: a recordset opened with a filter on the key, then
//                  AddNew/Update and Close (the pattern of the stores)
//                  vs a prepared SELECT by key and a prepared INSERT
// each with a commit per row and with all rows in one transaction.
// Prints rows per second and the ratio frame/raw.
//
// usage: bench_frame [N] (default 5000; $DVNBT_BENCH_ROWS also works)
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "dvnbdbif.h"

namespace {

class BenchSet : public CRecordset {
public:
    explicit BenchSet(CDatabase* db) : CRecordset(db) {
        m_ITEM_ID = m_NAME = m_DOCUMENTATION = "";
        m_NUM = 0;
        m_FLAGS = 0;
        m_nFields = 5;
    }
    void DoFieldExchange(CFieldExchange* pFX) override {
        pFX->SetFieldType(CFieldExchange::outputColumn);
        RFX_Text(pFX, "[ITEM_ID]", m_ITEM_ID, 255, 12, 0);
        RFX_Text(pFX, "[NAME]", m_NAME, 255, 12, 0);
        RFX_Text(pFX, "[DOCUMENTATION]", m_DOCUMENTATION, 4097, -1, 0);
        RFX_Long(pFX, "[NUM]", m_NUM);
        RFX_Int(pFX, "[FLAGS]", m_FLAGS);
    }
    CString m_ITEM_ID, m_NAME, m_DOCUMENTATION;
    long m_NUM;
    int m_FLAGS;
};

void Check(SQLRETURN rc, SQLSMALLINT type, SQLHANDLE h) {
    if (rc != SQL_SUCCESS && rc != SQL_SUCCESS_WITH_INFO && rc != SQL_NO_DATA) ThrowDBException(rc, type, h);
}

std::string Key(int i) { return "K" + std::to_string(i); }

void Reset(CDatabase& db) { db.ExecuteSQL("DELETE FROM DVBT.BENCH"); }

// ---------------------------------------------------------------- the frame
void AddRow(BenchSet& set, int i) {
    set.AddNew();
    set.m_ITEM_ID = Key(i).c_str();
    set.m_NAME = "name of the row";
    set.m_DOCUMENTATION = "some documentation text";
    set.m_NUM = i;
    set.m_FLAGS = 0;
    set.Update();
}

void FrameInsert(CDatabase& db, int n, bool commitEach) {
    BenchSet set(&db);
    set.Open(1, "DVBT.BENCH", 0);
    if (!commitEach) db.BeginTrans();
    for (int i = 0; i < n; ++i) {
        if (commitEach) db.BeginTrans();
        AddRow(set, i);
        if (commitEach) db.CommitTrans();
    }
    if (!commitEach) db.CommitTrans();
    set.Close();
}

void FrameLookupInsert(CDatabase& db, int n, bool commitEach) {
    if (!commitEach) db.BeginTrans();
    for (int i = 0; i < n; ++i) {
        if (commitEach) db.BeginTrans();
        BenchSet set(&db);
        set.m_strFilter = ("ITEM_ID = '" + Key(i) + "'").c_str();
        set.Open(1, "DVBT.BENCH", 0);
        if (set.GetRecordCount() == 0) {
            AddRow(set, i);
        }
        set.Close();
        if (commitEach) db.CommitTrans();
    }
    if (!commitEach) db.CommitTrans();
}

// ---------------------------------------------------------------- raw ODBC
struct RawStatements {
    SQLHSTMT insert = SQL_NULL_HSTMT, select = SQL_NULL_HSTMT;
    char id[64] = {0};
    char name[256] = "name of the row";
    char doc[64] = "some documentation text";
    SQLINTEGER num = 0, flags = 0;
    SQLLEN idInd = 0, nameInd = SQL_NTS, docInd = SQL_NTS, numInd = 0, flagsInd = 0;

    explicit RawStatements(CDatabase& db) {
        SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &insert);
        SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &select);
        std::string ins = "INSERT INTO DVBT.BENCH (ITEM_ID, NAME, DOCUMENTATION, NUM, FLAGS) VALUES (?, ?, ?, ?, ?)";
        std::string sel = "SELECT ITEM_ID, NAME, DOCUMENTATION, NUM, FLAGS FROM DVBT.BENCH WHERE ITEM_ID = ?";
        Check(SQLPrepare(insert, reinterpret_cast<SQLCHAR*>(ins.data()), SQL_NTS), SQL_HANDLE_STMT, insert);
        Check(SQLPrepare(select, reinterpret_cast<SQLCHAR*>(sel.data()), SQL_NTS), SQL_HANDLE_STMT, select);
        idInd = SQL_NTS;
        SQLBindParameter(insert, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 64, 0, id, 0, &idInd);
        SQLBindParameter(insert, 2, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 255, 0, name, 0, &nameInd);
        SQLBindParameter(insert, 3, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_LONGVARCHAR, 4097, 0, doc, 0, &docInd);
        SQLBindParameter(insert, 4, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, &num, 0, &numInd);
        SQLBindParameter(insert, 5, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, &flags, 0, &flagsInd);
        SQLBindParameter(select, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 64, 0, id, 0, &idInd);
    }
    ~RawStatements() {
        SQLFreeHandle(SQL_HANDLE_STMT, insert);
        SQLFreeHandle(SQL_HANDLE_STMT, select);
    }
    void Insert(int i) {
        std::snprintf(id, sizeof id, "%s", Key(i).c_str());
        num = i;
        Check(SQLExecute(insert), SQL_HANDLE_STMT, insert);
    }
    bool Found(int i) {
        std::snprintf(id, sizeof id, "%s", Key(i).c_str());
        Check(SQLExecute(select), SQL_HANDLE_STMT, select);
        bool found = SQLFetch(select) == SQL_SUCCESS;
        SQLFreeStmt(select, SQL_CLOSE);
        return found;
    }
};

void RawInsert(CDatabase& db, int n, bool commitEach, bool lookup) {
    RawStatements raw(db);
    if (!commitEach) db.BeginTrans();
    for (int i = 0; i < n; ++i) {
        if (commitEach) db.BeginTrans();
        if (!lookup || !raw.Found(i)) raw.Insert(i);
        if (commitEach) db.CommitTrans();
    }
    if (!commitEach) db.CommitTrans();
}

double RowsPerSecond(CDatabase& db, int n, const std::function<void()>& run) {
    Reset(db);
    auto start = std::chrono::steady_clock::now();
    run();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return n / seconds;
}

void RunBackend(const char* backend, const std::string& dataSource, int n) {
    CDatabase db;
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
        std::fprintf(stderr, "%s: cannot open %s: %s\n", backend, dataSource.c_str(),
                     DvnConvCoreDbIF::LastOpenError().c_str());
        return;
    }
    db.ExecuteSQL("CREATE TABLE DVBT.BENCH (ITEM_ID VARCHAR(64) NOT NULL, NAME VARCHAR(255), DOCUMENTATION TEXT, "
                  "NUM INTEGER, FLAGS INTEGER)");
    db.ExecuteSQL(db.IsSQLite() ? "CREATE INDEX DVBT.BENCH_IX ON BENCH (ITEM_ID)"
                                : "CREATE INDEX BENCH_IX ON DVBT.BENCH (ITEM_ID)");
    for (bool lookup : {false, true}) {
        for (bool commitEach : {true, false}) {
            double frame = RowsPerSecond(db, n, [&] {
                if (lookup)
                    FrameLookupInsert(db, n, commitEach);
                else
                    FrameInsert(db, n, commitEach);
            });
            double raw = RowsPerSecond(db, n, [&] { RawInsert(db, n, commitEach, lookup); });
            std::printf("%-11s %-14s %-21s %12.0f %12.0f %9.2f\n", backend, lookup ? "lookup+insert" : "insert",
                        commitEach ? "commit per row" : "one transaction", frame, raw, frame / raw);
            std::fflush(stdout);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    int n = 5000;
    if (const char* env = std::getenv("DVNBT_BENCH_ROWS")) n = std::atoi(env);
    if (argc > 1) n = std::atoi(argv[1]);
    if (n <= 0) {
        std::fprintf(stderr, "usage: bench_frame [ROWS]\n");
        return 2;
    }
    std::printf("%d rows per run\n%-11s %-14s %-21s %12s %12s %9s\n", n, "database", "work", "transactions",
                "frame rows/s", "raw rows/s", "frame/raw");
    try {
        auto dir = std::filesystem::temp_directory_path() / ("dvnbt_bench_" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
        RunBackend("SQLite", DvnConvCoreDbIF::EmbeddedDataSource((dir / "bench.db").string()).str(), n);
        std::filesystem::remove_all(dir);

        if (const char* pg = std::getenv("DVNBT_TEST_PG_DSN")) {
            std::string name = "dvnbt_bench_" + std::to_string(getpid());
            CDatabase admin;
            admin.OpenEx(("DSN=" + std::string(pg)).c_str());
            admin.ExecuteSQL(("CREATE DATABASE " + name).c_str());
            {
                CDatabase db;
                db.OpenEx(("DSN=" + std::string(pg) + ";Database=" + name).c_str());
                db.ExecuteSQL("CREATE SCHEMA dvbt");
            }
            RunBackend("PostgreSQL", std::string(pg) + ";Database=" + name, n);
            admin.ExecuteSQL(("DROP DATABASE " + name + " WITH (FORCE)").c_str());
        } else {
            std::printf("PostgreSQL skipped: set DVNBT_TEST_PG_DSN\n");
        }
    } catch (CDBException* e) {
        std::fprintf(stderr, "bench_frame: %s\n", e->m_strError.c_str());
        e->Delete();
        return 1;
    }
    return 0;
}
