// Implementation of the recordset layer: see odbcframe.h.
//
// A recordset is a true snapshot: Open runs the statement, reads every row
// into memory and releases the cursor. AddNew, Edit and Delete then write
// through prepared statements that the connection keeps by their text. A row
// is found again by the DBMS's row locator (rowid on SQLite, ctid on
// PostgreSQL), so Update and Delete hit exactly one row even among rows that
// are alike.
#include "odbcframe.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>

#include "odbccall.h"

namespace {

using DvnOdbc::Succeeded;

std::string Upper(std::string s) {
    for (auto& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

bool StartsWithNoCase(const std::string& text, const char* prefix) {
    size_t n = std::strlen(prefix);
    return text.size() >= n && Upper(text.substr(0, n)) == Upper(prefix);
}

std::string TrimCopy(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r\n");
    if (b == std::string::npos) return std::string();
    size_t e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

// The closing brace of a value that opens at `open`: the first '}' that is
// not doubled ("}}" stands for a brace in the value); npos when none.
size_t ClosingBrace(const std::string& in, size_t open) {
    for (size_t i = open + 1; i < in.size(); ++i) {
        if (in[i] != '}') continue;
        if (i + 1 < in.size() && in[i + 1] == '}') {
            ++i;
            continue;
        }
        return i;
    }
    return std::string::npos;
}

// Splits a connect string into its attributes; a value in braces may hold ';'.
std::vector<std::string> ConnectAttributes(const std::string& in) {
    std::vector<std::string> parts;
    size_t pos = 0;
    while (pos < in.size()) {
        size_t eq = in.find('=', pos);
        size_t end = in.find(';', pos);
        if (eq != std::string::npos && (end == std::string::npos || eq < end) && eq + 1 < in.size() &&
            in[eq + 1] == '{') {
            size_t close = ClosingBrace(in, eq + 1);
            end = close == std::string::npos ? std::string::npos : in.find(';', close);
        }
        if (end == std::string::npos) end = in.size();
        parts.push_back(in.substr(pos, end - pos));
        pos = end + 1;
    }
    return parts;
}

std::string AttributeKey(const std::string& part) { return Upper(TrimCopy(part.substr(0, part.find('=')))); }

// Leaves out UID= and PWD= attributes without a value (so that the data
// source's own apply), an empty DSN= before a DRIVER= (the driver manager
// would look for a default data source instead of loading the driver),
// empty attributes and a leading "ODBC;".
std::string CleanConnectString(std::string in) {
    if (StartsWithNoCase(in, "ODBC;")) in = in.substr(5);
    std::vector<std::string> parts = ConnectAttributes(in);
    bool hasDriver = std::any_of(parts.begin(), parts.end(), [](const std::string& p) { return AttributeKey(p) == "DRIVER"; });
    std::string out;
    for (const std::string& part : parts) {
        size_t eq = part.find('=');
        std::string key = AttributeKey(part);
        std::string value = eq == std::string::npos ? std::string() : TrimCopy(part.substr(eq + 1));
        bool dropEmpty = key == "UID" || key == "PWD" || (key == "DSN" && hasDriver);
        bool keep = !TrimCopy(part).empty() && !(dropEmpty && value.empty());
        if (keep) out += (out.empty() ? "" : ";") + part;
    }
    return out;
}

[[noreturn]] void ThrowFrameError(const std::string& text, const char* state) {
    throw new CDBException(SQL_ERROR, CString(text), CString(std::string("State:") + state + ",Native:0,Origin:[dvnbdbbe]"));
}

// Characters of UTF-8 text (bytes that do not continue a sequence).
size_t CharacterCount(const std::string& text) {
    size_t n = 0;
    for (unsigned char c : text) n += (c & 0xC0) != 0x80;
    return n;
}

// Reads one column of the current row as text; false when it is NULL.
bool ReadText(SQLHSTMT h, SQLUSMALLINT col, std::string& out) {
    out.clear();
    char buf[8192];
    for (;;) {
        SQLLEN ind = 0;
        SQLRETURN rc = DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLGetData, h, col, SQL_C_CHAR, buf, sizeof buf, &ind);
        if (rc == SQL_NO_DATA) return true;
        if (ind == SQL_NULL_DATA) return false;
        // Every part but the last fills the buffer and ends in a terminating
        // zero that is not data.
        if (rc == SQL_SUCCESS_WITH_INFO && (ind == SQL_NO_TOTAL || ind >= static_cast<SQLLEN>(sizeof buf))) {
            out.append(buf, sizeof buf - 1);
            continue;
        }
        out.append(buf, static_cast<size_t>(ind));
        return true;
    }
}

bool ReadNumber(SQLHSTMT h, SQLUSMALLINT col, long& out) {
    SQLBIGINT v = 0;
    SQLLEN ind = 0;
    DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLGetData, h, col, SQL_C_SBIGINT, &v, sizeof v, &ind);
    if (ind == SQL_NULL_DATA) {
        out = 0;
        return false;
    }
    out = static_cast<long>(v);
    return true;
}

// The word that ends text (letters and underscores), upper-cased, for the
// check before a literal: "DATE '2020-01-01'" keeps its literal.
bool EndsWithTypedLiteralWord(const std::string& text) {
    size_t w = text.find_last_not_of(" \t\r\n");
    if (w == std::string::npos) return false;
    size_t b = w + 1;
    while (b > 0 && (std::isalpha(static_cast<unsigned char>(text[b - 1])) || text[b - 1] == '_')) --b;
    const size_t n = w + 1 - b;
    if (n < 4 || n > 9) return false;
    char word[10] = {0};
    for (size_t i = 0; i < n; ++i) word[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[b + i])));
    return !std::strcmp(word, "DATE") || !std::strcmp(word, "TIME") || !std::strcmp(word, "TIMESTAMP") ||
           !std::strcmp(word, "INTERVAL");
}

// The end of a quoted run that starts at i (the closing quote; a doubled
// quote continues the run), or sql.size() when it is not closed.
size_t QuotedEnd(const std::string& sql, size_t i) {
    const char c = sql[i];
    size_t j = i + 1;
    for (;;) {
        j = sql.find(c, j);
        if (j == std::string::npos) return sql.size();
        if (j + 1 < sql.size() && sql[j + 1] == c) {
            j += 2;
            continue;
        }
        return j;
    }
}

bool IsIdentifierByte(char c) {
    const unsigned char u = static_cast<unsigned char>(c);
    return std::isalnum(u) || c == '_' || c == '$' || u >= 0x80;
}

// The statement without the schema qualifier "DVBT." (in any case) wherever
// it qualifies a name: not inside a string literal or a quoted identifier,
// not after an identifier character ("MY_DVBT.X" stays).
std::string WithoutSchemaQualifier(const std::string& sql) {
    constexpr std::string_view kQualifier = "DVBT.";
    std::string out;
    out.reserve(sql.size());
    size_t i = 0;
    while (i < sql.size()) {
        const size_t next = sql.find_first_of("'\"Dd", i);
        if (next == std::string::npos) {
            out.append(sql, i, std::string::npos);
            break;
        }
        out.append(sql, i, next - i);
        i = next;
        if (sql[i] == '\'' || sql[i] == '"') {  // copy a literal or quoted identifier whole
            const size_t end = std::min(QuotedEnd(sql, i), sql.size() - 1);
            out.append(sql, i, end - i + 1);
            i = end + 1;
            continue;
        }
        const bool qualifier =
            (i == 0 || !IsIdentifierByte(sql[i - 1])) && sql.size() - i >= kQualifier.size() &&
            std::equal(kQualifier.begin(), kQualifier.end(), sql.begin() + static_cast<long>(i),
                       [](char want, char c) { return want == std::toupper(static_cast<unsigned char>(c)); });
        if (qualifier) {
            i += kQualifier.size();
        } else {
            out += sql[i];
            ++i;
        }
    }
    return out;
}

// Replaces every string literal of a statement by a parameter marker and
// collects the literals' values, so that queries that differ only in their
// literals share one prepared statement. Literals after DATE, TIME,
// TIMESTAMP or INTERVAL stay, as do quoted identifiers. With db, every
// "[name]" outside quotes becomes the driver's quoted identifier in the same
// pass (as CDatabase::TranslateBrackets would before).
std::string LiteralsToParameters(const std::string& sql, std::vector<std::string>& values,
                                 const CDatabase* db = nullptr) {
    std::string out;
    out.reserve(sql.size() + 16);
    values.reserve(values.size() + 8);
    // The next quote (or bracket, with db) from i: a plain loop, as a filter
    // is read once per row.
    const auto special = [&sql, brackets = db != nullptr](size_t from) {
        for (; from < sql.size(); ++from) {
            const char ch = sql[from];
            if (ch == '\'' || ch == '"' || (brackets && ch == '[')) return from;
        }
        return std::string::npos;
    };
    size_t i = 0;
    while (i < sql.size()) {
        size_t next = special(i);
        if (next == std::string::npos) {
            out.append(sql, i, std::string::npos);
            break;
        }
        out.append(sql, i, next - i);
        i = next;
        const char c = sql[i];
        if (c == '[') {
            size_t close = sql.find(']', i);
            if (close == std::string::npos) {
                out += c;
                ++i;
                continue;
            }
            out += db->QuoteIdentifier(sql.substr(i + 1, close - i - 1));
            i = close + 1;
            continue;
        }
        const size_t j = QuotedEnd(sql, i);
        if (c == '"' || j >= sql.size() || EndsWithTypedLiteralWord(out)) {
            const size_t end = std::min(j, sql.size() - 1);
            out.append(sql, i, end - i + 1);
            i = end + 1;
            continue;
        }
        std::string& value = values.emplace_back(sql, i + 1, j - i - 1);
        // A doubled quote stands for one.
        for (size_t k = value.find(c); k != std::string::npos; k = value.find(c, k + 1)) value.erase(k, 1);
        out += '?';
        i = j + 1;
    }
    return out;
}

// Whether a bracketed name of the statement holds a quote character: only
// then would translating the brackets first give another reading.
bool QuoteInsideBrackets(const std::string& sql) {
    for (size_t open = sql.find('['); open != std::string::npos; open = sql.find('[', open + 1)) {
        size_t close = sql.find(']', open);
        if (close == std::string::npos) return false;
        for (size_t k = open + 1; k < close; ++k)
            if (sql[k] == '\'' || sql[k] == '"') return true;
    }
    return false;
}

// Closes the statement's cursor whatever happens in between; the handle
// stays with the connection (see CDatabase::ReleaseStatement).
struct StatementUse {
    CDatabase& db;
    CDatabase::KeptStatement* kept = nullptr;  // null for text run once
    SQLHSTMT h;
    const char* sql = nullptr;  // for the trace
    StatementUse(CDatabase& d, const std::string& text) : db(d), kept(&d.Kept(text)), h(kept->h), sql(text.c_str()) {}
    StatementUse(CDatabase&, std::string&&) = delete;  // sql would point into a temporary
    explicit StatementUse(CDatabase& d) : db(d), h(d.DirectStatement()) {}
    ~StatementUse() { db.ReleaseStatement(h); }
};

// SQLite's driver compiles an INSERT, UPDATE or DELETE anew at every
// execution, and with it the triggers of its table (a process's delete
// compiles its whole cascade), but keeps a statement that begins like a
// query compiled: an unused common table expression makes a statement of the
// recordsets such a statement there.
std::string KeptPrefix(const CDatabase& db) { return db.IsSQLite() ? "WITH KEPT AS (SELECT 1) " : std::string(); }

// The rows an UPDATE or DELETE just executed on h changed. SQLite's driver
// reports 0 for a statement that begins with KeptPrefix: the database's own
// count of the last statement's rows answers there (rows changed by triggers
// not counted), from a query kept compiled too.
SQLLEN RowsHit(CDatabase& db, SQLHSTMT h) {
    SQLLEN count = 0;
    if (!db.IsSQLite()) {
        DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLRowCount, h, &count);
        return count;
    }
    static const std::string changes = "SELECT changes()";
    StatementUse use(db, changes);
    DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, use.sql, SQLExecute, use.h);
    if (DVN_ODBC(Checked, SQL_HANDLE_STMT, use.h, SQLFetch, use.h) == SQL_NO_DATA) return 0;
    SQLINTEGER value = 0;
    DVN_ODBC(Checked, SQL_HANDLE_STMT, use.h, SQLGetData, use.h, 1, SQL_C_SLONG, &value, 0, nullptr);
    return value;
}

// A parameter value as a statement's use gives it.
struct Param {
    std::string text;
    SQLINTEGER number = 0;
    SQLLEN ind = 0;
    bool isText = true;
    int sqlType = SQL_VARCHAR;
};

// Puts the values into the buffers of the statement's markers. A marker's
// buffer is bound once and then only filled, as the driver reads it when the
// statement executes; it is bound again when its type changes or its text
// outgrows it (the text's buffer moves then). The markers of a kept statement
// are fixed by its text, so their number changes only at its first use.
void BindParams(CDatabase::KeptStatement& kept, const std::vector<Param>& params) {
    const SQLHSTMT h = kept.h;
    if (kept.params.size() != params.size()) kept.params = std::vector<CDatabase::BoundParam>(params.size());
    for (size_t k = 0; k < params.size(); ++k) {
        const Param& p = params[k];
        CDatabase::BoundParam& b = kept.params[k];
        const SQLUSMALLINT n = static_cast<SQLUSMALLINT>(k + 1);
        const SQLSMALLINT cType = p.isText ? SQL_C_CHAR : SQL_C_SLONG;
        const SQLSMALLINT sqlType = p.isText ? static_cast<SQLSMALLINT>(p.sqlType) : SQL_INTEGER;
        if (p.isText) {
            if (b.cType != cType) b.text.reserve(64);
            b.text.assign(p.text);
            b.ind = p.ind == SQL_NULL_DATA ? SQL_NULL_DATA : static_cast<SQLLEN>(b.text.size());
            if (b.cType == cType && b.sqlType == sqlType && b.boundAt == b.text.data()) continue;
            // The column size is the buffer's: at least as long as any text
            // it holds while bound.
            DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLBindParameter, h, n, SQL_PARAM_INPUT, SQL_C_CHAR, sqlType,
                     std::max<SQLULEN>(b.text.capacity(), 1), 0, b.text.data(),
                     static_cast<SQLLEN>(b.text.capacity() + 1), &b.ind);
            b.boundAt = b.text.data();
        } else {
            b.number = p.number;
            b.ind = p.ind;
            if (b.cType == cType && b.sqlType == sqlType) continue;
            DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLBindParameter, h, n, SQL_PARAM_INPUT, SQL_C_SLONG, SQL_INTEGER, 0,
                     0, &b.number, 0, &b.ind);
        }
        b.cType = cType;
        b.sqlType = sqlType;
    }
}

}  // namespace

// ============================================================ exceptions
bool CException::GetErrorMessage(char* buffer, unsigned maxLength, unsigned*) const {
    if (buffer && maxLength) buffer[0] = '\0';
    return false;
}

static bool CopyMessage(const char* text, char* buffer, unsigned maxLength) {
    if (!buffer || maxLength == 0) return false;
    std::strncpy(buffer, text, maxLength - 1);
    buffer[maxLength - 1] = '\0';
    return true;
}

bool CDBException::GetErrorMessage(char* buffer, unsigned maxLength, unsigned*) const {
    return CopyMessage(m_strError.c_str(), buffer, maxLength);
}

bool CMemoryException::GetErrorMessage(char* buffer, unsigned maxLength, unsigned*) const {
    return CopyMessage("Out of memory.", buffer, maxLength);
}

void ThrowDBException(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle) {
    throw DvnOdbc::Diagnose(rc, handleType, handle);
}

// ============================================================ CDatabase
CDatabase::CDatabase() = default;

CDatabase::~CDatabase() { Close(); }

namespace {

// Gives a statement handle back when the scope ends.
struct FreeOnExit {
    SQLHSTMT h;
    ~FreeOnExit() { DVN_ODBC(Cleanup, SQL_HANDLE_STMT, h, SQLFreeHandle, SQL_HANDLE_STMT, h); }
};

SQLCHAR* SqlText(const char* text) { return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text)); }

}  // namespace

bool CDatabase::OpenEx(const char* connect, unsigned options) {
    Close();
    std::string in = CleanConnectString(connect ? connect : "");
    try {
        DVN_ODBC(Checked, SQL_HANDLE_ENV, SQL_NULL_HANDLE, SQLAllocHandle, SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_henv);
        DVN_ODBC(Checked, SQL_HANDLE_ENV, m_henv, SQLSetEnvAttr, m_henv, SQL_ATTR_ODBC_VERSION,
                 reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
        SQLHDBC hdbc = SQL_NULL_HDBC;
        DVN_ODBC(Checked, SQL_HANDLE_ENV, m_henv, SQLAllocHandle, SQL_HANDLE_DBC, m_henv, &hdbc);
        std::vector<SQLCHAR> out(4096);
        try {
            if (options & openReadOnly)
                DVN_ODBC(Checked, SQL_HANDLE_DBC, hdbc, SQLSetConnectAttr, hdbc, SQL_ATTR_ACCESS_MODE,
                         reinterpret_cast<SQLPOINTER>(SQL_MODE_READ_ONLY), 0);
            SQLSMALLINT outLen = 0;
            // The connect string may hold a password: it is not traced.
            DVN_ODBC(Checked, SQL_HANDLE_DBC, hdbc, SQLDriverConnect, hdbc, nullptr, SqlText(in.c_str()), SQL_NTS,
                     out.data(), static_cast<SQLSMALLINT>(out.size()), &outLen, SQL_DRIVER_NOPROMPT);
        } catch (...) {
            DVN_ODBC(Cleanup, SQL_HANDLE_DBC, hdbc, SQLFreeHandle, SQL_HANDLE_DBC, hdbc);
            throw;
        }
        m_hdbc = hdbc;
        m_strConnect = reinterpret_cast<char*>(out.data());

        // What the layer needs to know of the driver before it writes any
        // statement: without it the connection is of no use.
        char buf[256] = {0};
        SQLSMALLINT len = 0;
        DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLGetInfo, m_hdbc, SQL_DBMS_NAME, buf, sizeof buf, &len);
        m_strDbms = buf;
        buf[0] = '\0';
        DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLGetInfo, m_hdbc, SQL_IDENTIFIER_QUOTE_CHAR, buf, sizeof buf,
                 &len);
        m_chIdentifierQuote = buf[0] == ' ' ? '\0' : buf[0];
        SQLUSMALLINT idCase = SQL_IC_SENSITIVE;
        DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLGetInfo, m_hdbc, SQL_IDENTIFIER_CASE, &idCase, sizeof idCase,
                 nullptr);
        m_nIdentifierCase = idCase;

        if (IsSQLite())
            m_locator = {"rowid", "rowid = CAST(? AS INTEGER)", false};
        else if (m_strDbms == "PostgreSQL")
            m_locator = {"ctid", "ctid = CAST(? AS tid)", true};
        else
            m_locator = {"", "", false};

        if (IsSQLite()) ApplySQLiteSettings();
    } catch (...) {
        Close();
        throw;
    }
    return true;
}

// Gives the database a write-ahead log with synchronous NORMAL and a page
// cache of 256 KiB. Best effort: another connection holding the file may
// keep the mode from changing now; the mode is kept in the file once set (an
// in-memory database keeps its own).
void CDatabase::ApplySQLiteSettings() {
    FreeOnExit guard{NewStatement()};
    for (const char* pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA cache_size=-256"}) {
        DVN_ODBC_SQL(Tolerated, SQL_HANDLE_STMT, guard.h, pragma, SQLExecDirect, guard.h, SqlText(pragma), SQL_NTS);
        DVN_ODBC(Cleanup, SQL_HANDLE_STMT, guard.h, SQLFreeStmt, guard.h, SQL_CLOSE);
    }
}

void CDatabase::FreeStatements() {
    for (auto& [sql, kept] : m_statements)
        DVN_ODBC(Cleanup, SQL_HANDLE_STMT, kept.h, SQLFreeHandle, SQL_HANDLE_STMT, kept.h);
    m_statements.clear();
    m_translated.clear();  // the next connection may quote otherwise
    if (m_hstmtDirect != SQL_NULL_HSTMT)
        DVN_ODBC(Cleanup, SQL_HANDLE_STMT, m_hstmtDirect, SQLFreeHandle, SQL_HANDLE_STMT, m_hstmtDirect);
    m_hstmtDirect = SQL_NULL_HSTMT;
}

SQLHSTMT CDatabase::DirectStatement() {
    LeaveManualCommit();
    if (m_hstmtDirect == SQL_NULL_HSTMT) m_hstmtDirect = NewStatement();
    return m_hstmtDirect;
}

void CDatabase::Close() {
    FreeStatements();
    if (m_hdbc != SQL_NULL_HDBC) {
        // What is not committed by now is rolled back, also when the switch
        // back to autocommit failed after a transaction.
        if (m_bTransactionPending || m_bManualCommit)
            DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLEndTran, SQL_HANDLE_DBC, m_hdbc, SQL_ROLLBACK);
        DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLDisconnect, m_hdbc);
        DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLFreeHandle, SQL_HANDLE_DBC, m_hdbc);
        m_hdbc = SQL_NULL_HDBC;
    }
    if (m_henv != SQL_NULL_HENV) {
        DVN_ODBC(Cleanup, SQL_HANDLE_ENV, m_henv, SQLFreeHandle, SQL_HANDLE_ENV, m_henv);
        m_henv = SQL_NULL_HENV;
    }
    m_bTransactionPending = false;
    m_bManualCommit = false;
    m_strConnect.Empty();
    m_strDbms.Empty();
    m_strWriterProbe.clear();
}

bool CDatabase::BeginTrans() {
    if (!IsOpen()) ThrowFrameError("BeginTrans on a closed connection", "08003");
    if (m_bTransactionPending) return false;
    LeaveManualCommit();
    const bool asWriter = IsSQLite() && !WriterProbeTable().empty();
    DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLSetConnectAttr, m_hdbc, SQL_ATTR_AUTOCOMMIT,
             reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_OFF), 0);
    m_bManualCommit = true;
    m_bTransactionPending = true;
    if (asWriter) BeginAsWriter();
    return true;
}

bool CDatabase::EndTransaction(SQLSMALLINT completion) {
    if (!IsOpen()) ThrowFrameError("transaction end on a closed connection", "08003");
    if (!m_bTransactionPending) return false;
    m_bTransactionPending = false;
    try {
        DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLEndTran, SQL_HANDLE_DBC, m_hdbc, completion);
    } catch (CDBException*) {
        // A transaction whose end failed leaves nothing behind: it is rolled
        // back now, so that the return to autocommit commits none of it.
        DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLEndTran, SQL_HANDLE_DBC, m_hdbc, SQL_ROLLBACK);
        throw;
    }
    // The transaction has ended as asked; should the switch back to
    // autocommit fail, the next statement tries again (LeaveManualCommit).
    if (Succeeded(DVN_ODBC(Tolerated, SQL_HANDLE_DBC, m_hdbc, SQLSetConnectAttr, m_hdbc, SQL_ATTR_AUTOCOMMIT,
                           reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0)))
        m_bManualCommit = false;
    return true;
}

void CDatabase::LeaveManualCommit() {
    if (m_bTransactionPending || !m_bManualCommit) return;
    // Work done in manual commit outside a transaction was never meant to
    // be committed: roll it back before autocommit would commit it.
    DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLEndTran, SQL_HANDLE_DBC, m_hdbc, SQL_ROLLBACK);
    DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLSetConnectAttr, m_hdbc, SQL_ATTR_AUTOCOMMIT,
             reinterpret_cast<SQLPOINTER>(SQL_AUTOCOMMIT_ON), 0);
    m_bManualCommit = false;
}

// SQLite begins a transaction as a reader and makes it a writer at its first
// write. When another connection has written in between, that step fails at
// once with "database is locked", whatever the busy time-out: the reader's
// view is out of date. So a transaction of this layer writes first, with a
// statement that changes nothing; a second writer then waits for the first
// (busy time-out of the connect string) instead of failing. The statement
// is the caller's SQL like any other: its "DVBT." goes before the driver sees
// it (DriverText), and the trace shows it as written.
void CDatabase::BeginAsWriter() {
    try {
        // Prepared once per connection: it runs before every object. The
        // use keeps a pointer into the text, which must outlive it. The
        // leading WITH keeps it compiled in the driver (see KeptPrefix).
        const std::string probe = KeptPrefix(*this) + "DELETE FROM DVBT.\"" + m_strWriterProbe + "\" WHERE 0 = 1";
        StatementUse use(*this, probe);
        DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, use.sql, SQLExecute, use.h);
    } catch (CDBException*) {
        // No transaction was begun. The table may have been dropped since it
        // was chosen: the next transaction chooses again. Manual commit stays
        // on; the next statement or BeginTrans leaves it (LeaveManualCommit).
        DVN_ODBC(Cleanup, SQL_HANDLE_DBC, m_hdbc, SQLEndTran, SQL_HANDLE_DBC, m_hdbc, SQL_ROLLBACK);
        m_bTransactionPending = false;
        m_strWriterProbe.clear();
        throw;
    }
}

// A table of the database to write nothing to; empty when there is none (an
// empty file, a new in-memory database). Looked up once.
const std::string& CDatabase::WriterProbeTable() {
    if (!m_strWriterProbe.empty()) return m_strWriterProbe;
    // A table without triggers: were the delete compiled again, every
    // trigger of its table would be compiled with it (the cascades of
    // ACTIVITY cost more than the object's own statements).
    const char* sql =
        "SELECT name FROM DVBT.sqlite_master WHERE type = 'table' AND name NOT IN "
        "(SELECT tbl_name FROM DVBT.sqlite_master WHERE type = 'trigger') ORDER BY name LIMIT 1";
    const std::string text = DriverText(sql);
    FreeOnExit guard{NewStatement()};
    DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, guard.h, sql, SQLExecDirect, guard.h, SqlText(text.c_str()), SQL_NTS);
    if (DVN_ODBC(Checked, SQL_HANDLE_STMT, guard.h, SQLFetch, guard.h) != SQL_NO_DATA)
        ReadText(guard.h, 1, m_strWriterProbe);
    return m_strWriterProbe;
}

bool CDatabase::CommitTrans() { return EndTransaction(SQL_COMMIT); }
bool CDatabase::Rollback() { return EndTransaction(SQL_ROLLBACK); }

SQLHSTMT CDatabase::NewStatement() {
    if (!IsOpen()) ThrowFrameError("statement on a closed connection", "08003");
    SQLHSTMT h = SQL_NULL_HSTMT;
    DVN_ODBC(Checked, SQL_HANDLE_DBC, m_hdbc, SQLAllocHandle, SQL_HANDLE_STMT, m_hdbc, &h);
    try {
        ApplyQueryTimeout(h);
    } catch (...) {
        DVN_ODBC(Cleanup, SQL_HANDLE_STMT, h, SQLFreeHandle, SQL_HANDLE_STMT, h);
        throw;
    }
    return h;
}

void CDatabase::ApplyQueryTimeout(SQLHSTMT h) const {
    DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLSetStmtAttr, h, SQL_ATTR_QUERY_TIMEOUT,
             reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(m_dwQueryTimeout)), 0);
}

// The connection keeps its statements, so a new time-out goes to them too.
void CDatabase::SetQueryTimeout(unsigned seconds) {
    m_dwQueryTimeout = seconds;
    for (auto& [sql, kept] : m_statements) ApplyQueryTimeout(kept.h);
    if (m_hstmtDirect != SQL_NULL_HSTMT) ApplyQueryTimeout(m_hstmtDirect);
}

CDatabase::KeptStatement& CDatabase::Kept(const std::string& sql) {
    LeaveManualCommit();
    auto it = m_statements.find(sql);
    if (it != m_statements.end()) return it->second;
    SQLHSTMT h = NewStatement();
    try {
        // The trace shows the text as kept; the driver gets it without the
        // schema qualifier on SQLite, once per connection and text.
        const std::string text = DriverText(sql);
        DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, h, sql.c_str(), SQLPrepare, h, SqlText(text.c_str()), SQL_NTS);
    } catch (...) {
        DVN_ODBC(Cleanup, SQL_HANDLE_STMT, h, SQLFreeHandle, SQL_HANDLE_STMT, h);
        throw;
    }
    if (m_statements.size() >= 256) {
        for (auto& [text, old] : m_statements)
            DVN_ODBC(Cleanup, SQL_HANDLE_STMT, old.h, SQLFreeHandle, SQL_HANDLE_STMT, old.h);
        m_statements.clear();
    }
    return m_statements.emplace(sql, KeptStatement{h, {}}).first->second;
}

// Runs when a statement's use ends, also on the way of an exception: the
// call is cleanup and never raises. The parameters stay bound to the
// statement's own buffers (BindParams), which live as long as it does.
void CDatabase::ReleaseStatement(SQLHSTMT h) {
    DVN_ODBC(Cleanup, SQL_HANDLE_STMT, h, SQLFreeStmt, h, SQL_CLOSE);
}

void CDatabase::ExecuteSQL(const char* sql) {
    const std::string text = TranslateBrackets(sql ? sql : "");
    const std::string driverText = DriverText(text);
    StatementUse use(*this);
    DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, text.c_str(), SQLExecDirect, use.h, SqlText(driverText.c_str()),
                 SQL_NTS);
}

CString CDatabase::GetDatabaseName() const {
    if (!IsOpen()) return CString();
    char buf[1024] = {0};
    SQLSMALLINT len = 0;
    if (!Succeeded(DVN_ODBC(Tolerated, SQL_HANDLE_DBC, m_hdbc, SQLGetInfo, m_hdbc, SQL_DATABASE_NAME, buf,
                            sizeof buf, &len)))
        return CString();
    return CString(buf);
}

CString CDatabase::GetDBMSVersion() const {
    if (!IsOpen()) return CString();
    char buf[256] = {0};
    SQLSMALLINT len = 0;
    if (!Succeeded(
            DVN_ODBC(Tolerated, SQL_HANDLE_DBC, m_hdbc, SQLGetInfo, m_hdbc, SQL_DBMS_VER, buf, sizeof buf, &len)))
        return CString();
    return CString(buf);
}

std::string CDatabase::QuoteIdentifier(const std::string& bareName) const {
    std::string name = bareName;
    if (m_nIdentifierCase == SQL_IC_UPPER)
        name = Upper(name);
    else if (m_nIdentifierCase == SQL_IC_LOWER)
        for (auto& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (!m_chIdentifierQuote) return name;
    return m_chIdentifierQuote + name + m_chIdentifierQuote;
}

std::string CDatabase::TranslateBrackets(const std::string& sql) const {
    std::string out;
    out.reserve(sql.size() + 16);
    size_t i = 0;
    while (i < sql.size()) {
        size_t next = sql.find_first_of("'\"[", i);
        if (next == std::string::npos) {
            out.append(sql, i, std::string::npos);
            break;
        }
        out.append(sql, i, next - i);
        i = next;
        if (sql[i] != '[') {  // copy a literal or quoted identifier whole
            const size_t end = std::min(QuotedEnd(sql, i), sql.size() - 1);
            out.append(sql, i, end - i + 1);
            i = end + 1;
            continue;
        }
        size_t close = sql.find(']', i);
        if (close == std::string::npos) {
            out += '[';
            ++i;
            continue;
        }
        out += QuoteIdentifier(sql.substr(i + 1, close - i - 1));
        i = close + 1;
    }
    return out;
}

std::string CDatabase::DriverText(const std::string& sql) const {
    return IsSQLite() ? WithoutSchemaQualifier(sql) : sql;
}

const std::string& CDatabase::TranslateBracketsOnce(const std::string& sql) {
    auto it = m_translated.find(sql);
    if (it != m_translated.end()) return it->second;
    if (m_translated.size() >= 256) m_translated.clear();
    return m_translated.emplace(sql, TranslateBrackets(sql)).first->second;
}

// ============================================================ field exchange
void CFieldExchange::Add(const char* bracketedName, CFieldInfo::Kind kind, void* value, int maxLength, int sqlType) {
    std::string_view name = bracketedName ? bracketedName : "";
    if (name.size() >= 2 && name.front() == '[' && name.back() == ']') name = name.substr(1, name.size() - 2);
    m_fields.push_back(CFieldInfo{name, kind, maxLength, sqlType, value});
}

void RFX_Text(CFieldExchange* pFX, const char* name, CString& value, int maxLength, int columnType, short) {
    pFX->Add(name, CFieldInfo::Text, &value, maxLength, columnType);
}

void RFX_Long(CFieldExchange* pFX, const char* name, long& value) {
    pFX->Add(name, CFieldInfo::Long, &value, 0, SQL_INTEGER);
}

void RFX_Int(CFieldExchange* pFX, const char* name, int& value) {
    pFX->Add(name, CFieldInfo::Int, &value, 0, SQL_INTEGER);
}

// ============================================================ CRecordset
struct CRecordset::Impl {
    struct Value {
        std::string text;
        long number = 0;
        bool null = true;
    };
    struct Row {
        std::vector<Value> values;
        std::string locator;
        bool deleted = false;
    };
    enum Mode { Idle, Adding, Editing };

    std::vector<CFieldInfo> fields;
    std::vector<Row> rows;
    size_t current = 0;
    bool open = false;
    bool updatable = false;
    std::string table;  // as written in the statement, for INSERT/UPDATE/DELETE
    Mode mode = Idle;
    std::vector<Value> before;  // the values when AddNew or Edit began
    std::vector<bool> touched;  // SetFieldNull was called during AddNew/Edit
    std::vector<bool> nullFlags;  // null state of the members outside AddNew/Edit

    int IndexOf(const void* member) const {
        for (size_t i = 0; i < fields.size(); ++i)
            if (fields[i].value == member) return static_cast<int>(i);
        return -1;
    }
    static bool IsTextField(const CFieldInfo& f) { return f.kind == CFieldInfo::Text; }
    static long GetNumber(const CFieldInfo& f) {
        return f.kind == CFieldInfo::Long ? *static_cast<long*>(f.value) : *static_cast<int*>(f.value);
    }
    static void SetNumber(const CFieldInfo& f, long v) {
        if (f.kind == CFieldInfo::Long)
            *static_cast<long*>(f.value) = v;
        else
            *static_cast<int*>(f.value) = static_cast<int>(v);
    }
    static CString& Text(const CFieldInfo& f) { return *static_cast<CString*>(f.value); }

    // Copies a row into the members.
    void Load(const Row& row) {
        for (size_t i = 0; i < fields.size(); ++i) {
            const Value& v = row.values[i];
            if (IsTextField(fields[i]))
                Text(fields[i]) = v.text;
            else
                SetNumber(fields[i], v.null ? 0 : v.number);
            nullFlags[i] = v.null;
        }
    }
    void LoadEmpty() {
        for (size_t i = 0; i < fields.size(); ++i) {
            if (IsTextField(fields[i]))
                Text(fields[i]).Empty();
            else
                SetNumber(fields[i], 0);
            nullFlags[i] = true;
        }
    }
    void LoadCurrent() {
        if (current < rows.size())
            Load(rows[current]);
        else
            LoadEmpty();
    }
    Value Capture(size_t i) const {
        Value v;
        if (IsTextField(fields[i])) {
            v.text = Text(fields[i]).str();
        } else {
            v.number = GetNumber(fields[i]);
        }
        return v;
    }
    // Remembers the members as they are now: Update writes what differs.
    void BeginChange(Mode next) {
        before.resize(fields.size());
        for (size_t i = 0; i < fields.size(); ++i) before[i] = Capture(i);
        touched.assign(fields.size(), false);
        mode = next;
    }
    bool Changed(size_t i) const {
        if (touched[i]) return true;
        if (IsTextField(fields[i])) return Text(fields[i]).str() != before[i].text;
        return GetNumber(fields[i]) != before[i].number;
    }
    bool WritesNull(size_t i) const {
        if (IsTextField(fields[i])) return Text(fields[i]).IsEmpty();
        return GetNumber(fields[i]) == kPseudoNull;
    }
    void SkipDeleted() {
        while (current < rows.size() && rows[current].deleted) ++current;
    }
};

CRecordset::CRecordset(CDatabase* pDatabase) : m_pDatabase(pDatabase), m_impl(std::make_unique<Impl>()) {}

CRecordset::~CRecordset() { Close(); }

void CRecordset::DoFieldExchange(CFieldExchange*) {}
CString CRecordset::GetDefaultSQL() { return CString(); }
CString CRecordset::GetDefaultConnect() { return CString("ODBC;"); }

std::vector<CFieldInfo> CRecordset::DescribeFields() {
    std::vector<CFieldInfo> fields;
    fields.reserve(m_nFields > 0 ? static_cast<size_t>(m_nFields) : 16);
    CFieldExchange fx(fields);
    fx.SetFieldType(CFieldExchange::outputColumn);
    DoFieldExchange(&fx);
    return fields;
}

bool CRecordset::IsOpen() const { return m_impl->open; }

void CRecordset::Close() {
    Impl& m = *m_impl;
    m.rows.clear();
    m.rows.shrink_to_fit();
    m.open = false;
    m.updatable = false;
    m.mode = Impl::Idle;
    m.current = 0;
}

bool CRecordset::Open(unsigned, const char* text, unsigned options) {
    if (!m_pDatabase || !m_pDatabase->IsOpen()) ThrowFrameError("recordset opened on a closed connection", "08003");
    Close();
    Impl& m = *m_impl;
    CDatabase& db = *m_pDatabase;
    try {
        m.fields = DescribeFields();
        m.nullFlags.assign(m.fields.size(), true);
        if (m_nFields > 0 && static_cast<size_t>(m_nFields) != m.fields.size())
            ThrowFrameError("m_nFields is " + std::to_string(m_nFields) + " but DoFieldExchange binds " +
                                std::to_string(m.fields.size()) + " columns",
                            "HY000");
        std::string given = TrimCopy(text ? text : GetDefaultSQL().str());
        const CDatabase::RowLocator& loc = db.Locator();
        bool wantUpdate = !(options & readOnly) && !loc.select.empty();
        std::string sql;
        size_t firstField = 1;  // ODBC column of the first member
        m.table.clear();
        bool byTable = false;  // the statement is built here from the table's name
        if (StartsWithNoCase(given, "SELECT")) {
            // A whole statement, taken as it stands; when it reads one table
            // with "SELECT * FROM", its rows can be changed.
            sql = given;
            const char* star = "SELECT * FROM ";
            if (wantUpdate && StartsWithNoCase(given, star)) {
                std::string rest = TrimCopy(given.substr(std::strlen(star)));
                m.table = rest.substr(0, rest.find_first_of(" \t\r\n"));
                sql = "SELECT " + loc.select + ", * FROM " + rest;
                firstField = 2;
            }
        } else {
            m.table = given;
            byTable = true;
            sql = "SELECT ";
            if (wantUpdate) {
                sql += loc.select + ", ";
                firstField = 2;
            }
            for (size_t i = 0; i < m.fields.size(); ++i) sql.append(i ? ", [" : "[").append(m.fields[i].name) += ']';
            sql.append(" FROM ").append(given);
        }
        m.updatable = wantUpdate && !m.table.empty();
        std::vector<std::string> literals;
        // One pass for brackets and literals where that reads the same as
        // translating the brackets first. The columns and the table, the
        // same at every open of a recordset class, are translated once.
        auto parameterized = [&](const std::string& text) {
            return QuoteInsideBrackets(text) ? LiteralsToParameters(db.TranslateBrackets(text), literals)
                                             : LiteralsToParameters(text, literals, &db);
        };
        if (byTable) {
            std::string clauses;
            if (!m_strFilter.IsEmpty()) clauses += " WHERE " + m_strFilter.str();
            if (!m_strSort.IsEmpty()) clauses += " ORDER BY " + m_strSort.str();
            sql = db.TranslateBracketsOnce(sql) + parameterized(clauses);
        } else
            sql = parameterized(sql);
        std::vector<Param> params(literals.size());
        for (size_t i = 0; i < literals.size(); ++i) params[i].text = std::move(literals[i]);

        StatementUse use(db, sql);
        BindParams(*use.kept, params);
        DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, use.sql, SQLExecute, use.h);
        SQLSMALLINT columns = 0;
        DVN_ODBC(Checked, SQL_HANDLE_STMT, use.h, SQLNumResultCols, use.h, &columns);
        size_t bound = std::min<size_t>(m.fields.size(), columns >= static_cast<SQLSMALLINT>(firstField)
                                                             ? static_cast<size_t>(columns) - firstField + 1
                                                             : 0);
        for (;;) {
            if (DVN_ODBC(Checked, SQL_HANDLE_STMT, use.h, SQLFetch, use.h) == SQL_NO_DATA) break;
            Impl::Row row;
            row.values.resize(m.fields.size());
            if (firstField == 2) ReadText(use.h, 1, row.locator);
            for (size_t i = 0; i < bound; ++i) {
                SQLUSMALLINT col = static_cast<SQLUSMALLINT>(firstField + i);
                Impl::Value& v = row.values[i];
                if (Impl::IsTextField(m.fields[i]))
                    v.null = !ReadText(use.h, col, v.text);
                else
                    v.null = !ReadNumber(use.h, col, v.number);
            }
            m.rows.push_back(std::move(row));
        }
    } catch (const std::bad_alloc&) {
        Close();
        throw new CMemoryException;
    } catch (...) {
        Close();
        throw;
    }
    m.open = true;
    m.current = 0;
    m.LoadCurrent();
    return true;
}

long CRecordset::GetRecordCount() const { return static_cast<long>(m_impl->rows.size()); }

bool CRecordset::IsEOF() const {
    const Impl& m = *m_impl;
    return !m.open || m.current >= m.rows.size();
}

bool CRecordset::IsBOF() const {
    const Impl& m = *m_impl;
    return !m.open || m.rows.empty();
}

void CRecordset::MoveFirst() {
    Impl& m = *m_impl;
    m.mode = Impl::Idle;
    m.current = 0;
    m.SkipDeleted();
    m.LoadCurrent();
}

void CRecordset::MoveNext() {
    Impl& m = *m_impl;
    m.mode = Impl::Idle;
    if (m.current < m.rows.size()) ++m.current;
    m.SkipDeleted();
    m.LoadCurrent();
}

bool CRecordset::CanAppend() const { return m_impl->open && m_impl->updatable; }
bool CRecordset::CanUpdate() const { return m_impl->open && m_impl->updatable; }
bool CRecordset::IsDeleted() const {
    const Impl& m = *m_impl;
    return m.current < m.rows.size() && m.rows[m.current].deleted;
}

void CRecordset::AddNew() {
    Impl& m = *m_impl;
    if (!CanAppend()) ThrowFrameError("AddNew on a recordset that is read-only or not open", "HY092");
    for (size_t i = 0; i < m.fields.size(); ++i) {
        if (Impl::IsTextField(m.fields[i]))
            Impl::Text(m.fields[i]).Empty();
        else
            Impl::SetNumber(m.fields[i], kPseudoNull);
    }
    m.BeginChange(Impl::Adding);
}

void CRecordset::Edit() {
    Impl& m = *m_impl;
    if (!CanUpdate()) ThrowFrameError("Edit on a recordset that is read-only or not open", "HY092");
    if (m.current >= m.rows.size() || m.rows[m.current].deleted)
        ThrowFrameError("Edit without a current row", "24000");
    // A null number gets the pseudo-null value, so that assigning 0 to it
    // counts as a change.
    for (size_t i = 0; i < m.fields.size(); ++i)
        if (!Impl::IsTextField(m.fields[i]) && m.nullFlags[i]) Impl::SetNumber(m.fields[i], kPseudoNull);
    m.BeginChange(Impl::Editing);
}

bool CRecordset::Update() {
    Impl& m = *m_impl;
    if (m.mode == Impl::Idle) ThrowFrameError("Update without AddNew or Edit", "HY010");
    CDatabase& db = *m_pDatabase;
    std::vector<size_t> changed;
    for (size_t i = 0; i < m.fields.size(); ++i)
        if (m.Changed(i)) changed.push_back(i);
    Impl::Mode mode = m.mode;
    if (changed.empty()) {
        m.mode = Impl::Idle;
        m.LoadCurrent();
        return false;
    }
    std::vector<Param> params(changed.size() + (mode == Impl::Editing ? 1 : 0));
    std::string sql;
    for (size_t k = 0; k < changed.size(); ++k) {
        size_t i = changed[k];
        const CFieldInfo& f = m.fields[i];
        Param& p = params[k];
        p.isText = Impl::IsTextField(f);
        p.sqlType = f.sqlType == SQL_LONGVARCHAR ? SQL_LONGVARCHAR : SQL_VARCHAR;
        if (m.WritesNull(i))
            p.ind = SQL_NULL_DATA;
        else if (p.isText) {
            p.text = Impl::Text(f).str();
            // Every database gets the same answer to a text longer than its
            // column: PostgreSQL would refuse it, SQLite would keep it.
            if (f.maxLength > 0 && CharacterCount(p.text) > static_cast<size_t>(f.maxLength))
                ThrowFrameError("value too long for column " + std::string(f.name) + " of " + m.table + ": " +
                                    std::to_string(CharacterCount(p.text)) + " characters, at most " +
                                    std::to_string(f.maxLength),
                                "22001");
        } else
            p.number = static_cast<SQLINTEGER>(Impl::GetNumber(f));
    }
    const CDatabase::RowLocator& loc = db.Locator();
    if (mode == Impl::Adding) {
        // An insert needs no row count (see KeptPrefix).
        sql = KeptPrefix(db) + "INSERT INTO " + m.table + " (";
        std::string values;
        for (size_t k = 0; k < changed.size(); ++k) {
            sql.append(k ? ", [" : "[").append(m.fields[changed[k]].name) += ']';
            values += k ? ", ?" : "?";
        }
        sql += ") VALUES (" + values + ")";
    } else {
        sql = KeptPrefix(db) + "UPDATE " + m.table + " SET ";
        for (size_t k = 0; k < changed.size(); ++k) sql.append(k ? ", [" : "[").append(m.fields[changed[k]].name) += "] = ?";
        sql += " WHERE " + loc.condition;
        if (loc.movesOnUpdate) sql += " RETURNING " + loc.select;
        Param& p = params.back();
        p.text = m.rows[m.current].locator;
        p.isText = true;
    }
    std::string newLocator;
    {
        StatementUse use(db, db.TranslateBracketsOnce(sql));
        BindParams(*use.kept, params);
        DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, use.sql, SQLExecute, use.h);
        if (mode == Impl::Editing) {
            // (psqlODBC has no result to fetch from when the update hit
            // no row, although it returns the locator of every row it hits.)
            bool hit = RowsHit(db, use.h) == 1;
            if (hit && loc.movesOnUpdate)
                hit = DVN_ODBC(Checked, SQL_HANDLE_STMT, use.h, SQLFetch, use.h) != SQL_NO_DATA;
            if (!hit) ThrowFrameError("the current row is no longer in table " + m.table, "01001");
            if (loc.movesOnUpdate) ReadText(use.h, 1, newLocator);
        }
    }
    if (mode == Impl::Editing) {
        Impl::Row& row = m.rows[m.current];
        for (size_t i : changed) {
            Impl::Value& v = row.values[i];
            v.null = m.WritesNull(i);
            v.text = Impl::IsTextField(m.fields[i]) ? Impl::Text(m.fields[i]).str() : std::string();
            v.number = v.null || Impl::IsTextField(m.fields[i]) ? 0 : Impl::GetNumber(m.fields[i]);
        }
        if (loc.movesOnUpdate) row.locator = newLocator;
    }
    m.mode = Impl::Idle;
    m.LoadCurrent();
    return true;
}

void CRecordset::Delete() {
    Impl& m = *m_impl;
    if (!CanUpdate()) ThrowFrameError("Delete on a recordset that is read-only or not open", "HY092");
    if (m.current >= m.rows.size() || m.rows[m.current].deleted)
        ThrowFrameError("Delete without a current row", "24000");
    CDatabase& db = *m_pDatabase;
    std::vector<Param> params(1);
    params[0].text = m.rows[m.current].locator;
    StatementUse use(
        db, db.TranslateBracketsOnce(KeptPrefix(db) + "DELETE FROM " + m.table + " WHERE " + db.Locator().condition));
    BindParams(*use.kept, params);
    DVN_ODBC_SQL(Checked, SQL_HANDLE_STMT, use.h, use.sql, SQLExecute, use.h);
    if (RowsHit(db, use.h) != 1) ThrowFrameError("the current row is no longer in table " + m.table, "01001");
    m.rows[m.current].deleted = true;
    m.mode = Impl::Idle;
}

bool CRecordset::IsFieldNull(const void* member) const {
    const Impl& m = *m_impl;
    int i = m.IndexOf(member);
    if (i < 0) return false;
    size_t k = static_cast<size_t>(i);
    if (m.mode == Impl::Idle) return m.nullFlags[k];
    if (!Impl::IsTextField(m.fields[k])) return Impl::GetNumber(m.fields[k]) == kPseudoNull;
    return m.Changed(k) ? Impl::Text(m.fields[k]).IsEmpty() : m.nullFlags[k] || m.mode == Impl::Adding;
}

void CRecordset::SetFieldNull(void* member, bool isNull) {
    Impl& m = *m_impl;
    if (m.fields.empty()) {
        m.fields = DescribeFields();
        m.nullFlags.assign(m.fields.size(), true);
    }
    int i = m.IndexOf(member);
    if (i < 0) return;
    size_t k = static_cast<size_t>(i);
    const CFieldInfo& f = m.fields[k];
    if (isNull) {
        if (Impl::IsTextField(f))
            Impl::Text(f).Empty();
        else
            Impl::SetNumber(f, m.mode == Impl::Idle ? 0 : kPseudoNull);
    } else if (!Impl::IsTextField(f) && Impl::GetNumber(f) == kPseudoNull) {
        Impl::SetNumber(f, 0);
    }
    if (m.mode == Impl::Idle)
        m.nullFlags[k] = isNull;
    else
        m.touched[k] = true;
}
