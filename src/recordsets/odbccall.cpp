// The call path of the recordset layer: see odbccall.h.
#include "odbccall.h"

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <mutex>

#include "dvnkernn.h"
#include "odbcframe.h"

namespace {

std::atomic<unsigned long> g_calls{0};
// The number of the call to fail; 0: none armed.
std::atomic<unsigned long> g_target{0};
std::mutex g_lock;  // guards the state and the two flags below
std::string g_state;
bool g_fired = false;
bool g_firedTolerated = false;

const char* UseName(DvnOdbcUse use) {
    switch (use) {
        case DvnOdbcUse::Checked:
            return "";
        case DvnOdbcUse::Tolerated:
            return " (tolerated)";
        case DvnOdbcUse::Cleanup:
            return " (cleanup)";
    }
    return "";
}

// What a driver would say with the state.
std::string StateText(const std::string& state) {
    if (state == "08S01") return "Communication link failure";
    if (state == "40001") return "Serialization failure";
    if (state == "HYT00") return "Timeout expired";
    if (state == "HY001") return "Memory allocation error";
    return "General error";
}

std::string TrimLineEnds(std::string s) {
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) s.pop_back();
    return s;
}

// Arms DVN_ODBC_FAIL when the library is loaded.
const bool g_fromEnvironment = [] {
    const char* text = std::getenv("DVN_ODBC_FAIL");
    if (!text || !*text) return false;
    if (DvnOdbcFaults::ArmFromText(text)) return true;
    std::cerr << "DVN_ODBC_FAIL=\"" << text << "\" is not of the form N:STATE (N from 1, STATE five characters); "
              << "no call is failed" << std::endl;
    return false;
}();

}  // namespace

// ------------------------------------------------------------- the hook
void DvnOdbcFaults::FailCall(unsigned long n, const std::string& state) {
    std::lock_guard<std::mutex> guard(g_lock);
    g_state = state;
    g_fired = g_firedTolerated = false;
    g_target = n;
}

void DvnOdbcFaults::Reset() {
    std::lock_guard<std::mutex> guard(g_lock);
    g_target = 0;
    g_calls = 0;
    g_fired = g_firedTolerated = false;
}

unsigned long DvnOdbcFaults::Calls() { return g_calls; }

bool DvnOdbcFaults::Fired() {
    std::lock_guard<std::mutex> guard(g_lock);
    return g_fired;
}

bool DvnOdbcFaults::FiredTolerated() {
    std::lock_guard<std::mutex> guard(g_lock);
    return g_firedTolerated;
}

bool DvnOdbcFaults::ArmFromText(const char* text) {
    std::string s = text ? text : "";
    size_t colon = s.find(':');
    if (colon == std::string::npos || colon == 0 || s.size() - colon - 1 != 5) return false;
    unsigned long n = 0;
    for (size_t i = 0; i < colon; ++i) {
        if (s[i] < '0' || s[i] > '9' || n > 100000000UL) return false;
        n = n * 10 + static_cast<unsigned long>(s[i] - '0');
    }
    if (n == 0) return false;
    FailCall(n, s.substr(colon + 1));
    return true;
}

// ------------------------------------------------------------- the call path
CDBException* DvnOdbc::Diagnose(SQLRETURN rc, SQLSMALLINT handleType, SQLHANDLE handle) {
    std::string error, state;
    if (handle) {
        // SQLGetDiagRec reads what the last call left on the handle; it is
        // part of this path and goes to the driver directly.
        for (SQLSMALLINT rec = 1;; ++rec) {
            SQLCHAR sqlState[6] = {0};
            SQLINTEGER native = 0;
            SQLCHAR text[SQL_MAX_MESSAGE_LENGTH + 1] = {0};
            SQLSMALLINT textLen = 0;
            SQLRETURN drc = SQLGetDiagRec(handleType, handle, rec, sqlState, &native, text, sizeof text, &textLen);
            if (!Succeeded(drc)) break;
            std::string message(reinterpret_cast<char*>(text));
            // The origin is the run of bracketed components before the text.
            size_t p = 0;
            while (p < message.size() && message[p] == '[') {
                size_t close = message.find(']', p);
                if (close == std::string::npos) break;
                p = close + 1;
            }
            std::string origin = message.substr(0, p);
            size_t b = message.find_first_not_of(" \t", p);
            std::string body = TrimLineEnds(b == std::string::npos ? std::string() : message.substr(b));
            if (!error.empty()) error += "\n";
            error += body;
            if (!state.empty()) state += "\n";
            state += "State:" + std::string(reinterpret_cast<char*>(sqlState)) + ",Native:" + std::to_string(native) +
                     ",Origin:" + origin;
        }
    }
    if (error.empty()) error = "ODBC call failed without diagnostics (rc=" + std::to_string(rc) + ")";
    return new CDBException(static_cast<short>(rc), CString(error), CString(state));
}

bool DvnOdbc::Enter(DvnOdbcUse use, const char* function, unsigned long& number) {
    if (use == DvnOdbcUse::Cleanup) return false;
    number = ++g_calls;
    unsigned long target = number;
    if (g_target.load(std::memory_order_relaxed) != number ||
        !g_target.compare_exchange_strong(target, 0))
        return false;
    std::string state;
    {
        std::lock_guard<std::mutex> guard(g_lock);
        state = g_state;
        g_fired = true;
        g_firedTolerated = use == DvnOdbcUse::Tolerated;
    }
    const std::string text = StateText(state) + " (" + state + ", injected into call " + std::to_string(number) + ", " +
                             function + ")";
    DVN_TRACE(3, 1, "ODBC " << number << " " << function << UseName(use) << " rc=-1 State:" << state << " injected");
    if (use == DvnOdbcUse::Checked)
        throw new CDBException(SQL_ERROR, CString(text),
                               CString("State:" + state + ",Native:0,Origin:[dvnbdbbe][fault injection]"));
    return true;
}

SQLRETURN DvnOdbc::Leave(DvnOdbcUse use, const char* function, unsigned long number, SQLSMALLINT handleType,
                         SQLHANDLE handle, const char* text, SQLRETURN rc) {
    const bool failed = !Succeeded(rc) && rc != SQL_NO_DATA;
    if (failed && use == DvnOdbcUse::Checked) {
        CDBException* e = Diagnose(rc, handleType, handle);
        DVN_TRACE(3, 1, "ODBC " << number << " " << function << " rc=" << rc << " " << e->m_strStateNativeOrigin
                                << (text ? " " : "") << (text ? text : ""));
        throw e;
    }
    if (failed && DvnTrace::Enabled(1, 2)) {
        // A failure that the caller survives: worth a line among the errors.
        CDBException* e = Diagnose(rc, handleType, handle);
        DVN_TRACE(1, 2, "ODBC " << function << UseName(use) << " failed, rc=" << rc << " " << e->m_strError << " "
                                << e->m_strStateNativeOrigin);
        e->Delete();
    }
    DVN_TRACE(3, 1, "ODBC " << number << " " << function << UseName(use) << " rc=" << rc << (text ? " " : "")
                            << (text ? text : ""));
    return rc;
}
