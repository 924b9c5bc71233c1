// What the recordset layer costs over raw ODBC.
//
// Writes N rows into the baseline's table (two indexes), on SQLite (a fresh file) and on
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
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "dvnbdbif.h"
#include "rawodbc.h"

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

using bench::Key;

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

double RowsPerSecond(CDatabase& db, int n, const std::function<void()>& run) {
    bench::ResetRawTable(db);
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
    bench::CreateRawTable(db);
    for (bool lookup : {false, true}) {
        for (bool commitEach : {true, false}) {
            double frame = RowsPerSecond(db, n, [&] {
                if (lookup)
                    FrameLookupInsert(db, n, commitEach);
                else
                    FrameInsert(db, n, commitEach);
            });
            double raw = RowsPerSecond(db, n, [&] { bench::RawInsert(db, n, commitEach, lookup); });
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
        bench::ForEachFreshDatabase("dvnbt_bench", [&](const char* backend, const std::string& dataSource) {
            RunBackend(backend, dataSource, n);
        });
    } catch (CDBException* e) {
        std::fprintf(stderr, "bench_frame: %s\n", e->m_strError.c_str());
        e->Delete();
        return 1;
    }
    return 0;
}
