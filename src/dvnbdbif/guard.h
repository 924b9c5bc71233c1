// The four handlers that every facade operation puts around its work, with
// the words of each operation: a database exception (51368 and the trace of
// its return code, text and state), a service failure (24140), memory
// (51373), anything else (51374 unless the level is 12 already).
#pragma once

#include <string>

#include "dvnfcorn.h"
#include "dvnkernn.h"
#include "odbcframe.h"

namespace dvnguard {

struct Words {
    std::string database;  // "Database exception In Export All: rc ="
    std::string service;   // "DVNException in Export"
    std::string memory;    // "Memory exception in Export"
    std::string unknown;   // "Unknown exception In Export"
};

// The words of most operations: "Database exception In <where>: rc =",
// "DVNException in <where>", "Memory exception in <where>", and
// "Unknown exception <unknownIn> <where>".
inline Words For(const std::string& where, const char* unknownIn = "in") {
    return {"Database exception In " + where + ": rc =", "DVNException in " + where, "Memory exception in " + where,
            std::string("Unknown exception ") + unknownIn + " " + where};
}

// Runs work(); after a handler the level is 12. Reports go to handler.
template <class Work>
void Run(DvnfMessageHandler& handler, const Words& words, int& level, Work work) {
    try {
        work();
    } catch (CDBException* e) {
        handler.Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, words.database << e->m_nRetCode << "Error: " << e->m_strError << "State: "
                                       << e->m_strStateNativeOrigin);
        e->Delete();
        level = 12;
    } catch (DvnOSException& e) {
        handler.Report(24140, e.ServiceName(), DvnString::FromLong(e.ReturnCode()),
                       DvnString::FromLong(e.ReasonCode()));
        DVN_TRACE(1, 8, words.service);
        level = 12;
    } catch (CMemoryException* e) {
        char text[256] = {0};
        e->GetErrorMessage(text, 255, nullptr);
        handler.Report(51373, DvnString(text));
        e->Delete();
        DVN_TRACE(1, 8, words.memory);
        level = 12;
    } catch (...) {
        if (level < 12) handler.Report(51374);
        DVN_TRACE(1, 2, words.unknown);
        level = 12;
    }
}

// A connection that an operation opened closes at its end; one it found open
// stays open.
struct KeepOpen {
    CDatabase& db;
    bool wasOpen;
    explicit KeepOpen(CDatabase& d) : db(d), wasOpen(d.IsOpen()) {}
    ~KeepOpen() {
        if (!wasOpen && db.IsOpen()) db.Close();
    }
};

}  // namespace dvnguard
