// The raw-ODBC baseline the benchmarks compare with: a table DVBT.BENCH
// with two indexes, a prepared SELECT by key and a prepared INSERT, and fresh
// databases to run in (an SQLite file, a PostgreSQL database on the server
// of $DVNBT_TEST_PG_DSN).
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <streambuf>
#include <string>
#include <vector>

#include "dvnbdbif.h"

namespace bench {

inline void Check(SQLRETURN rc, SQLSMALLINT type, SQLHANDLE h) {
    if (rc != SQL_SUCCESS && rc != SQL_SUCCESS_WITH_INFO && rc != SQL_NO_DATA) ThrowDBException(rc, type, h);
}

inline std::string Key(int i) { return "K" + std::to_string(i); }

// The table has an index on the key it is looked up by and one more on a
// value of its own per row, as the tables the stores write have two indexes
// or more (CATEGORY, DATA_STRUCTURE and DATA_STRUCTURE_MBR two, ACTIVITY
// four): an index is a page more that each transaction writes, and the
// baseline pays for as many as the rows it stands for.
inline void CreateRawTable(CDatabase& db) {
    db.ExecuteSQL("CREATE TABLE DVBT.BENCH (ITEM_ID VARCHAR(64) NOT NULL, NAME VARCHAR(255), DOCUMENTATION TEXT, "
                  "NUM INTEGER, FLAGS INTEGER)");
    // SQLite names the index's schema, the other databases the table's.
    const std::string index = db.IsSQLite() ? "CREATE INDEX DVBT." : "CREATE INDEX ",
                      table = db.IsSQLite() ? " ON BENCH " : " ON DVBT.BENCH ";
    db.ExecuteSQL((index + "BENCH_IX1" + table + "(ITEM_ID)").c_str());
    db.ExecuteSQL((index + "BENCH_IX2" + table + "(NUM)").c_str());
}

inline void ResetRawTable(CDatabase& db) { db.ExecuteSQL("DELETE FROM DVBT.BENCH"); }

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
        std::string ins =
            db.DriverText("INSERT INTO DVBT.BENCH (ITEM_ID, NAME, DOCUMENTATION, NUM, FLAGS) VALUES (?, ?, ?, ?, ?)");
        std::string sel =
            db.DriverText("SELECT ITEM_ID, NAME, DOCUMENTATION, NUM, FLAGS FROM DVBT.BENCH WHERE ITEM_ID = ?");
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
    void Insert(int i) { Insert(Key(i), i); }
    void Insert(const std::string& key, int number) {
        std::snprintf(id, sizeof id, "%s", key.c_str());
        num = number;
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

// n rows into DVBT.BENCH, each first looked for by key when lookup, in
// transactions of perTransaction rows (the last may hold fewer). After each
// commit, betweenTransactions (when given) learns how many rows are in.
inline void RawInsertInBatches(CDatabase& db, int n, int perTransaction, bool lookup,
                               const std::function<void(int rowsIn)>& betweenTransactions = nullptr) {
    RawStatements raw(db);
    for (int i = 0; i < n; ++i) {
        if (i % perTransaction == 0) db.BeginTrans();
        if (!lookup || !raw.Found(i)) raw.Insert(i);
        if ((i + 1) % perTransaction == 0 || i + 1 == n) {
            db.CommitTrans();
            if (betweenTransactions) betweenTransactions(i + 1);
        }
    }
}

// The raw counterpart of replacing: n old rows in `groups` groups stand in
// DVBT.BENCH (RawPutOldRows, before the clock runs; a group's rows share a
// NUM below 0, which BENCH_IX2 indexes). The n new rows go in as
// RawInsertInBatches puts them, and after each group's share of them one
// transaction of its own (between two of the inserts') deletes that group's
// old rows with one prepared DELETE, as the store removes an old process
// with one delete that cascades to its rows. Old rows are keyed "O<i>": a
// lookup of a new row's key finds none of them.
inline void RawPutOldRows(CDatabase& db, int n, int groups) {
    RawStatements raw(db);
    const int perGroup = std::max(1, n / groups);
    db.BeginTrans();
    // A group's rows were written together, as a process's rows are.
    for (int i = 0; i < n; ++i) raw.Insert("O" + std::to_string(i), -1 - std::min(groups - 1, i / perGroup));
    db.CommitTrans();
}
inline void RawReplaceInBatches(CDatabase& db, int n, int perTransaction, int groups) {
    SQLHSTMT remove = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &remove);
    std::string sql = db.DriverText("DELETE FROM DVBT.BENCH WHERE NUM = ?");
    Check(SQLPrepare(remove, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS), SQL_HANDLE_STMT, remove);
    SQLINTEGER group = 0;
    SQLLEN groupInd = 0;
    SQLBindParameter(remove, 1, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0, 0, &group, 0, &groupInd);
    const int perGroup = std::max(1, n / groups);
    int deleted = 0;
    auto deleteGroup = [&] {
        db.BeginTrans();
        group = -1 - deleted++;
        Check(SQLExecute(remove), SQL_HANDLE_STMT, remove);
        db.CommitTrans();
    };
    RawInsertInBatches(db, n, perTransaction, true, [&](int rowsIn) {
        while (deleted < groups && rowsIn >= (deleted + 1) * perGroup) deleteGroup();
    });
    while (deleted < groups) deleteGroup();
    SQLFreeHandle(SQL_HANDLE_STMT, remove);
}

// n rows into DVBT.BENCH: with lookup, each row is first looked for by key;
// with commitEach, each row is a transaction of its own.
inline void RawInsert(CDatabase& db, int n, bool commitEach, bool lookup) {
    RawInsertInBatches(db, n, commitEach || n < 1 ? 1 : n, lookup);
}

// n rows of DVBT.BENCH looked for one by one by key with the prepared
// SELECT, outside any transaction: the raw counterpart of a load. The number
// found.
inline int RawLookup(CDatabase& db, int n) {
    RawStatements raw(db);
    int found = 0;
    for (int i = 0; i < n; ++i)
        if (raw.Found(i)) ++found;
    return found;
}

// ---- raw read baseline: the rows a load reads, read as it reads them
// A read of a load: the rows of a table of the repository, all of them in
// one statement (column empty), or those of each key with one prepared
// SELECT ... WHERE column = ? [ORDER BY order] executed once per key. Every
// column of every row is fetched as text, as the recordsets fetch them.
struct RawRead {
    std::string table;
    std::string column;
    std::vector<std::string> keys;
    std::string order;
};

// What a raw read did: rows fetched and statements executed.
struct RawReadCount {
    long rows = 0;
    long statements = 0;
    RawReadCount& operator+=(const RawReadCount& other) {
        rows += other.rows;
        statements += other.statements;
        return *this;
    }
};

// The rows of the executed statement, each column read as text.
inline long RawFetchAll(SQLHSTMT h) {
    SQLSMALLINT columns = 0;
    Check(SQLNumResultCols(h, &columns), SQL_HANDLE_STMT, h);
    char buffer[8192];
    long rows = 0;
    while (SQLFetch(h) == SQL_SUCCESS) {
        ++rows;
        for (SQLUSMALLINT c = 1; c <= static_cast<SQLUSMALLINT>(columns); ++c) {
            SQLLEN indicator = 0;
            Check(SQLGetData(h, c, SQL_C_CHAR, buffer, sizeof buffer, &indicator), SQL_HANDLE_STMT, h);
        }
    }
    SQLFreeStmt(h, SQL_CLOSE);
    return rows;
}

inline RawReadCount RawReadRows(CDatabase& db, const RawRead& read) {
    RawReadCount count;
    SQLHSTMT h = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &h);
    std::string sql = "SELECT * FROM DVBT." + read.table;
    if (!read.column.empty()) sql += " WHERE " + read.column + " = ?";
    if (!read.order.empty()) sql += " ORDER BY " + read.order;
    sql = db.DriverText(sql);
    Check(SQLPrepare(h, reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS), SQL_HANDLE_STMT, h);
    if (read.column.empty()) {
        Check(SQLExecute(h), SQL_HANDLE_STMT, h);
        count.rows += RawFetchAll(h);
        ++count.statements;
    } else {
        char key[256] = {0};
        SQLLEN keyInd = SQL_NTS;
        SQLBindParameter(h, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 255, 0, key, 0, &keyInd);
        for (const std::string& k : read.keys) {
            std::snprintf(key, sizeof key, "%s", k.c_str());
            Check(SQLExecute(h), SQL_HANDLE_STMT, h);
            count.rows += RawFetchAll(h);
            ++count.statements;
        }
    }
    SQLFreeHandle(SQL_HANDLE_STMT, h);
    return count;
}

inline RawReadCount RawReadRows(CDatabase& db, const std::vector<RawRead>& reads) {
    RawReadCount count;
    for (const RawRead& read : reads) count += RawReadRows(db, read);
    return count;
}

// The first column of every row of the query, as text: the keys a raw read
// looks for, gathered before the clock runs.
inline std::vector<std::string> RawKeys(CDatabase& db, const std::string& sql) {
    std::vector<std::string> keys;
    SQLHSTMT h = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &h);
    std::string text = db.DriverText(sql);
    Check(SQLExecDirect(h, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), SQL_HANDLE_STMT, h);
    char buffer[256];
    SQLLEN indicator = 0;
    while (SQLFetch(h) == SQL_SUCCESS) {
        Check(SQLGetData(h, 1, SQL_C_CHAR, buffer, sizeof buffer, &indicator), SQL_HANDLE_STMT, h);
        if (indicator != SQL_NULL_DATA) keys.emplace_back(buffer);
    }
    SQLFreeHandle(SQL_HANDLE_STMT, h);
    return keys;
}

// Wall-clock seconds of run.
inline double Seconds(const std::function<void()>& run) {
    auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A stream buffer that drops what is written to it: progress lines and
// messages go nowhere while the clock runs.
struct Discard : std::streambuf {
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// A single number the query gives (its first column of its first row).
inline long QueryCount(CDatabase& db, const std::string& sql) {
    SQLHSTMT stmt = SQL_NULL_HSTMT;
    SQLAllocHandle(SQL_HANDLE_STMT, db.m_hdbc, &stmt);
    std::string text = db.DriverText(sql);
    Check(SQLExecDirect(stmt, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS), SQL_HANDLE_STMT, stmt);
    SQLBIGINT value = 0;
    SQLLEN indicator = 0;
    if (SQLFetch(stmt) == SQL_SUCCESS) SQLGetData(stmt, 1, SQL_C_SBIGINT, &value, 0, &indicator);
    SQLFreeHandle(SQL_HANDLE_STMT, stmt);
    return static_cast<long>(value);
}

// Runs work on a fresh SQLite file and, when $DVNBT_TEST_PG_DSN is set, on a
// fresh PostgreSQL database with an empty schema "dvbt"; work gets the name
// of the database and the data source that reaches it.
inline void ForEachFreshDatabase(const char* program,
                                 const std::function<void(const char* backend, const std::string& dataSource)>& work) {
    auto dir = std::filesystem::temp_directory_path() / (std::string(program) + "_" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    work("SQLite", DvnConvCoreDbIF::EmbeddedDataSource((dir / "bench.db").string()).str());
    std::filesystem::remove_all(dir);

    if (const char* pg = std::getenv("DVNBT_TEST_PG_DSN")) {
        std::string name = std::string(program) + "_" + std::to_string(getpid());
        CDatabase admin;
        admin.OpenEx(("DSN=" + std::string(pg)).c_str());
        admin.ExecuteSQL(("CREATE DATABASE " + name).c_str());
        {
            CDatabase db;
            db.OpenEx(("DSN=" + std::string(pg) + ";Database=" + name).c_str());
            db.ExecuteSQL("CREATE SCHEMA dvbt");
        }
        work("PostgreSQL", std::string(pg) + ";Database=" + name);
        admin.ExecuteSQL(("DROP DATABASE " + name + " WITH (FORCE)").c_str());
    } else {
        std::printf("PostgreSQL skipped: set DVNBT_TEST_PG_DSN\n");
    }
}

}  // namespace bench
