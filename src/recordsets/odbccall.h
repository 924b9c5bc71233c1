// The one path of the recordset layer to the driver: every SQL* function the
// layer calls goes through DVN_ODBC, which counts the call, traces it
// (level 3, category 1), checks its return code and turns a failure into a
// CDBException carrying the driver's diagnostics. The same path can be told
// to fail one chosen call with a chosen SQLSTATE (DvnOdbcFaults, or the
// environment variable DVN_ODBC_FAIL="N:STATE"), so that tests can reach
// every failure a driver could give.
#pragma once

#include <sql.h>
#include <sqlext.h>

#include <string>

class CDBException;

// What a failing call means to its caller.
enum class DvnOdbcUse {
    // The caller needs the call: a failure raises CDBException*. SQL_NO_DATA
    // is no failure; the caller reads it from the return code.
    Checked,
    // The caller goes on without the call's result (a setting that is kept
    // once made, a piece of information with a fallback): a failure is traced
    // and returned.
    Tolerated,
    // The call gives back a resource (SQLFreeHandle, SQLFreeStmt after use,
    // SQLDisconnect, the rollback of a connection that closes). It may run
    // in a destructor or while an exception is on its way: a failure is
    // traced and returned, never raised. Such calls are not counted and
    // cannot be failed on purpose.
    Cleanup,
};

// The fault-injection hook. Calls are numbered from 1, process-wide, counting
// the Checked and Tolerated calls since the start of the process or the last
// Reset. The failed call does not reach the driver: it returns SQL_ERROR,
// and a Checked call raises a CDBException whose m_nRetCode is SQL_ERROR,
// whose m_strStateNativeOrigin is "State:<STATE>,Native:0,Origin:[dvnbdbbe]
// [fault injection]" and whose m_strError names the state, the call's number
// and its function. One call fails, once; the calls after it go to the driver.
class DvnOdbcFaults {
public:
    // Fails the call numbered n (counted as Calls() counts) with the state.
    static void FailCall(unsigned long n, const std::string& state);
    // Counts from 0 again and forgets an armed failure.
    static void Reset();
    // Counted calls since the start or the last Reset.
    static unsigned long Calls();
    // Whether the failure armed last has happened, and whether it hit a
    // Tolerated call (which its caller survives by design).
    static bool Fired();
    static bool FiredTolerated();
    // Arms a failure from text "N:STATE"; false (nothing armed) when the
    // text is not of that form. DVN_ODBC_FAIL is read this way once, when
    // the library is loaded.
    static bool ArmFromText(const char* text);
};

namespace DvnOdbc {

// Before the call: counts it, traces nothing yet. True when this call is the
// one to fail: a Checked call then raises here, other uses get SQL_ERROR.
bool Enter(DvnOdbcUse use, const char* function, unsigned long& number);
// After the call: traces it and, for a Checked call, raises on failure.
SQLRETURN Leave(DvnOdbcUse use, const char* function, unsigned long number, SQLSMALLINT handleType,
                SQLHANDLE handle, const char* text, SQLRETURN rc);

// An exception holding the diagnostic records of a handle (every record:
// state, native code, text).
CDBException* Diagnose(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle);

inline bool Succeeded(SQLRETURN rc) { return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO; }

template <class F>
SQLRETURN Call(DvnOdbcUse use, const char* function, SQLSMALLINT handleType, SQLHANDLE handle, const char* text,
               F&& call) {
    unsigned long number = 0;
    if (Enter(use, function, number)) return SQL_ERROR;
    return Leave(use, function, number, handleType, handle, text, call());
}

}  // namespace DvnOdbc

// DVN_ODBC(Checked, SQL_HANDLE_STMT, h, SQLExecute, h): calls the function
// with the arguments through the one call path; the handle (of the type)
// is the one whose diagnostics explain a failure.
#define DVN_ODBC(use, handleType, handle, function, ...)                                                  \
    ::DvnOdbc::Call(::DvnOdbcUse::use, #function, (handleType), (handle), nullptr,                      \
                    [&]() -> SQLRETURN { return function(__VA_ARGS__); })
// The same, tracing a statement text with the call.
#define DVN_ODBC_SQL(use, handleType, handle, text, function, ...)                                        \
    ::DvnOdbc::Call(::DvnOdbcUse::use, #function, (handleType), (handle), (text),                       \
                    [&]() -> SQLRETURN { return function(__VA_ARGS__); })
