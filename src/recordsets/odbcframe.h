// The recordset layer: a connection (CDatabase), snapshot recordsets bound to
// public members through DoFieldExchange (CRecordset, CFieldExchange, RFX_*),
// and the exceptions they raise. Implemented over the unixODBC C API.
// Values always travel as bound parameters; the layer splices no value into
// SQL text. Every driver call goes through the one call path of odbccall.h.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <climits>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cstring.h"
#include "redact.h"

// ------------------------------------------------------------- exceptions
class CException {
public:
    virtual ~CException() = default;
    // Frees an exception caught by pointer.
    void Delete() { delete this; }
    virtual bool GetErrorMessage(char* buffer, unsigned maxLength, unsigned* helpContext = nullptr) const;
};

class CDBException : public CException {
public:
    CDBException(short retCode, const CString& error, const CString& stateNativeOrigin)
        : m_nRetCode(retCode), m_strError(error), m_strStateNativeOrigin(stateNativeOrigin) {}
    bool GetErrorMessage(char* buffer, unsigned maxLength, unsigned* helpContext = nullptr) const override;

    short m_nRetCode;                 // the ODBC return code (SQL_ERROR, ...)
    CString m_strError;               // the driver's message text
    CString m_strStateNativeOrigin;   // "State:S0002,Native:1,Origin:[unixODBC]..."
};

class CMemoryException : public CException {
public:
    bool GetErrorMessage(char* buffer, unsigned maxLength, unsigned* helpContext = nullptr) const override;
};

// ------------------------------------------------------------- connection
class CDatabase {
public:
    enum OpenOptions : unsigned {
        openReadOnly = 0x0002,
        useCursorLib = 0x0004,
        noOdbcDialog = 0x0008,
        forceOdbcDialog = 0x0010,
    };

    CDatabase();
    virtual ~CDatabase();
    CDatabase(const CDatabase&) = delete;
    CDatabase& operator=(const CDatabase&) = delete;

    // Connects with an ODBC connect string. Returns false, or raises
    // CDBException (by pointer), when the driver refuses. An empty UID= or
    // PWD= attribute is left out, so that the data source's own user and
    // password apply. On SQLite the database gets a write-ahead log,
    // synchronous NORMAL and a page cache of 256 KiB; "DVBT.TABLE" names its
    // table there as on a DBMS with schemas (see DriverText).
    bool OpenEx(const char* connect, unsigned options = 0);
    // Idempotent.
    void Close();
    bool IsOpen() const { return m_hdbc != SQL_NULL_HDBC; }
    // The connect string as completed by the driver.
    CString GetConnect() const { return m_strConnect; }
    // Seconds a statement may run before the driver cancels it (0: no
    // limit). Set before connecting it holds for the whole connection; set
    // on an open connection it holds from the next statement on.
    void SetQueryTimeout(unsigned seconds);
    unsigned GetQueryTimeout() const { return m_dwQueryTimeout; }

    bool BeginTrans();
    bool CommitTrans();
    bool Rollback();
    bool InTransaction() const { return m_bTransactionPending; }

    // Runs a statement that gives no rows. Raises CDBException.
    void ExecuteSQL(const char* sql);

    // What the driver reported at connect time.
    CString GetDatabaseName() const;   // SQL_DATABASE_NAME
    CString GetDBMSName() const { return m_strDbms; }
    CString GetDBMSVersion() const;    // SQL_DBMS_VER
    char IdentifierQuoteChar() const { return m_chIdentifierQuote; }
    int IdentifierCase() const { return m_nIdentifierCase; }  // SQL_IC_UPPER, SQL_IC_LOWER, ...
    // Turns "[NAME]" into the driver's quoted identifier, folded as the
    // driver says unquoted names are folded.
    std::string QuoteIdentifier(const std::string& bareName) const;
    // Rewrites every "[name]" of a statement into a quoted identifier;
    // text inside string literals and quoted identifiers is left alone.
    std::string TranslateBrackets(const std::string& sql) const;
    // The same, kept for statements that are built again and again (the
    // inserts and updates of the recordsets): valid until the next call.
    const std::string& TranslateBracketsOnce(const std::string& sql);
    // The statement as the driver gets it. SQLite has no schemas: there the
    // qualifier "DVBT." (any case) goes wherever it qualifies a name, outside
    // string literals and quoted identifiers, so that the database is opened
    // once and holds its schema once. Elsewhere the text as it is. Traces
    // show the text before this step.
    std::string DriverText(const std::string& sql) const;
    bool IsSQLite() const { return m_strDbms == "SQLite"; }

    // How the recordsets name one row exactly: a select expression and a
    // condition with one parameter (empty when the DBMS offers none).
    struct RowLocator {
        std::string select;      // "rowid" / "ctid"
        std::string condition;   // "rowid = CAST(? AS INTEGER)" / "ctid = CAST(? AS tid)"
        bool movesOnUpdate;      // a changed row gets a new locator (PostgreSQL)
    };
    const RowLocator& Locator() const { return m_locator; }

    // A parameter of a kept statement with the buffer it is bound to: the
    // buffer lives as long as the statement, so that a statement used again
    // takes its new values without binding them again (the driver reads a
    // bound buffer when the statement executes).
    struct BoundParam {
        std::string text;
        SQLINTEGER number = 0;
        SQLLEN ind = 0;
        SQLSMALLINT cType = 0;  // 0: not bound yet
        SQLSMALLINT sqlType = 0;
        const char* boundAt = nullptr;  // text.data() when bound
    };
    struct KeptStatement {
        SQLHSTMT h = SQL_NULL_HSTMT;
        std::vector<BoundParam> params;
    };
    // A prepared statement for sql, kept for the life of the connection
    // (all go when it holds 256 and needs another). The caller binds its parameters
    // into it, executes, reads and then calls ReleaseStatement.
    KeptStatement& Kept(const std::string& sql);
    // A statement handle for text run once (SQLExecDirect): a query whose
    // filter holds literals gains nothing from being prepared.
    SQLHSTMT DirectStatement();
    void ReleaseStatement(SQLHSTMT hstmt);

    SQLHENV m_henv = SQL_NULL_HENV;
    SQLHDBC m_hdbc = SQL_NULL_HDBC;

protected:
    friend class CRecordset;
    SQLHSTMT NewStatement();
    void ApplyQueryTimeout(SQLHSTMT hstmt) const;
    void ApplySQLiteSettings();
    void BeginAsWriter();
    const std::string& WriterProbeTable();
    void FreeStatements();
    bool EndTransaction(SQLSMALLINT completion);
    // Back to autocommit when a transaction's end could not switch it.
    void LeaveManualCommit();
    CString m_strConnect;
    CString m_strDbms;
    unsigned m_dwQueryTimeout = 15;
    bool m_bTransactionPending = false;
    bool m_bManualCommit = false;  // autocommit is off on the connection
    char m_chIdentifierQuote = '"';
    int m_nIdentifierCase = SQL_IC_SENSITIVE;
    RowLocator m_locator;
    std::unordered_map<std::string, KeptStatement> m_statements;
    std::unordered_map<std::string, std::string> m_translated;  // TranslateBracketsOnce
    SQLHSTMT m_hstmtDirect = SQL_NULL_HSTMT;
    std::string m_strWriterProbe;  // SQLite: a table that BeginTrans writes nothing to
};


// Raises a CDBException built from the diagnostics of a handle.
[[noreturn]] void ThrowDBException(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle);

// ------------------------------------------------------------- field exchange
class CRecordset;

// One bound column as DoFieldExchange describes it.
struct CFieldInfo {
    enum Kind { Text, Long, Int };
    std::string_view name;  // bare name, without brackets (the text DoFieldExchange gives: a literal)
    Kind kind;
    int maxLength;          // text only: 255, 4097 or 32672; 0 no limit
    int sqlType;            // text only: SQL_VARCHAR (12) or SQL_LONGVARCHAR (-1)
    void* value;            // the member
};

class CFieldExchange {
public:
    enum FieldType { noFieldType = -1, outputColumn = 0, param = 1 };
    explicit CFieldExchange(std::vector<CFieldInfo>& fields) : m_fields(fields) {}
    void SetFieldType(int type) { m_nFieldType = type; }
    void Add(const char* bracketedName, CFieldInfo::Kind kind, void* value, int maxLength, int sqlType);

    int m_nFieldType = outputColumn;
private:
    std::vector<CFieldInfo>& m_fields;
};

void RFX_Text(CFieldExchange* pFX, const char* name, CString& value, int maxLength = 255, int columnType = SQL_VARCHAR,
              short scale = 0);
void RFX_Long(CFieldExchange* pFX, const char* name, long& value);
void RFX_Int(CFieldExchange* pFX, const char* name, int& value);

// ------------------------------------------------------------- recordset
class CRecordset {
public:
    enum OpenType { dynaset = 0, snapshot = 1, forwardOnly = 3 };
    enum OpenOptions : unsigned { none = 0x0, appendOnly = 0x8, readOnly = 0x4 };
    // After AddNew, and for a column that is null when Edit starts, a number
    // member holds this value until it is assigned; Update writes NULL for a
    // number member that still holds it. An empty text member is written as NULL.
    static constexpr long kPseudoNull = INT_MIN + 0x7EE4;

    explicit CRecordset(CDatabase* pDatabase = nullptr);
    virtual ~CRecordset();
    CRecordset(const CRecordset&) = delete;
    CRecordset& operator=(const CRecordset&) = delete;

    // text: a table name (the columns of DoFieldExchange from it, with
    // m_strFilter and m_strSort), or a statement beginning "SELECT".
    // options: none (rows can be changed) or readOnly. Returns false or
    // raises CDBException.
    virtual bool Open(unsigned openType = snapshot, const char* text = nullptr, unsigned options = none);
    // Idempotent.
    virtual void Close();
    bool IsOpen() const;

    long GetRecordCount() const;  // rows of the snapshot
    bool IsEOF() const;
    bool IsBOF() const;
    void MoveFirst();
    void MoveNext();

    bool CanAppend() const;
    bool CanUpdate() const;
    void AddNew();
    void Edit();
    // Writes the members changed since AddNew or Edit. Raises CDBException.
    bool Update();
    // Removes the current row. Raises CDBException.
    void Delete();
    bool IsDeleted() const;

    bool IsFieldNull(const void* member) const;
    void SetFieldNull(void* member, bool isNull = true);

    virtual void DoFieldExchange(CFieldExchange* pFX);
    virtual CString GetDefaultSQL();
    virtual CString GetDefaultConnect();

    // The columns DoFieldExchange binds, in order (works on a closed recordset).
    std::vector<CFieldInfo> DescribeFields();

    CString m_strFilter;
    CString m_strSort;
    int m_nFields = 0;
    int m_nDefaultType = snapshot;
    CDatabase* m_pDatabase;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
