// Opening a database connection (by the machine profile or by a named data
// source) and choosing the table prefix. Every connection of the system is
// opened here: the facade, the on-demand reader and the authorization.
#include "dvnconnection.h"

#include <cstdlib>

#ifndef DVN_SQLITE_ODBC_DRIVER
#define DVN_SQLITE_ODBC_DRIVER "/usr/lib/x86_64-linux-gnu/odbc/libsqlite3odbc.so"
#endif

namespace {

CString g_lastOpenError;

int Failed(const CString& reason) {
    g_lastOpenError = reason;
    return 12;
}

CString ToCString(const DvnString& s) { return CString(s.IsNull() ? "" : s.c_str()); }

// Connects db with the connect string of a data source; the caller traces
// and maps what it may throw. Only the road through the machine profile
// traces the user and password it connects with.
void Connect(const CString& dataSource, CDatabase& db, const CString& user, const CString& password,
             bool traceUser) {
    db.SetQueryTimeout(60);
    if (traceUser) DVN_TRACE(3, 1, "open database with userid: " << user << " and password: " << password);
    db.OpenEx(DvnConnection::BuildConnectString(dataSource, user, password), 12);
}

}  // namespace

CString DvnConnection::BuildConnectString(const CString& dataSource, const CString& user, const CString& password) {
    return "DSN=" + dataSource + ";UID=" + user + ";PWD=" + password;
}

std::string DvnConnection::EmbeddedDriverPath() {
    const char* env = std::getenv("DVN_SQLITE_ODBC_DRIVER");
    return env && *env ? env : DVN_SQLITE_ODBC_DRIVER;
}

CString DvnConnection::LastOpenError() { return g_lastOpenError; }

CString DvnConnection::EmbeddedDataSource(const std::string& file) {
    // An empty DSN followed by DRIVER= makes the driver manager load the
    // library directly; Timeout= lets a second connection wait for a lock.
    return CString(";DRIVER=" + EmbeddedDriverPath() + ";Database=" + file + ";Timeout=10000");
}

CString DvnConnection::DisplayName(const CString& dataSource) {
    const std::string text = dataSource.str();
    const std::string head = ";DRIVER=", key = ";Database=";
    const size_t at = text.find(key);
    if (text.rfind(head, 0) == 0 && at != std::string::npos) {
        const size_t from = at + key.size();
        return CString(text.substr(from, text.find(';', from) - from));
    }
    return RedactPassword(dataSource);
}

int DvnConnection::OpenFromProfile(CDatabase& db, const DvnString& user, const DvnString& password) {
    CString strUser = ToCString(user), strPassword = ToCString(password);
    if (db.m_hdbc != SQL_NULL_HDBC) return 0;
    try {
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        DvnString name = profile.Find("BTODBCDataSourceName", false);
        if (name.IsNull()) {
            DVN_TRACE(1, 2, "BTODBCDriverName variable not set in machine profile");
            return Failed("BTODBCDataSourceName is not set in the machine profile " + CString(DvnProfile::Path()));
        }
        try {
            Connect(CString(name.c_str()), db, strUser, strPassword, true);
        } catch (CDBException* e) {
            DVN_TRACE(1, 2, "db.Open failed:" << e->m_strError);
            CString reason = e->m_strError;
            e->Delete();
            return Failed(reason);
        }
        if (db.m_hdbc == SQL_NULL_HDBC) {
            DVN_TRACE(1, 2, "Could not open Database spezified in PROFILE");
            return Failed("the data source of the machine profile could not be opened");
        }
        g_lastOpenError.Empty();
        return 0;
    } catch (const DvnNoDefaultConfigException& e) {
        DVN_TRACE(1, 2, "profile error");
        return Failed(e.what());
    } catch (const DvnNoSuchConfigException& e) {
        DVN_TRACE(1, 2, "profile error");
        return Failed(e.what());
    } catch (const DvnOSException& e) {
        DVN_TRACE(1, 2, "profile not found:" << (e.ServiceName().IsNull() ? "<null>" : e.ServiceName().c_str()));
        return Failed(e.what());
    } catch (CMemoryException* e) {
        DVN_TRACE(1, 2, "unknown error");
        e->Delete();
        return Failed("out of memory");
    } catch (...) {
        DVN_TRACE(1, 2, "unknown error");
        return Failed("unknown error");
    }
}

int DvnConnection::OpenFromDataSource(const CString& dataSource, CDatabase& db, const DvnString& user,
                                          const DvnString& password) {
    CString strUser = ToCString(user), strPassword = ToCString(password);
    if (db.m_hdbc != SQL_NULL_HDBC) return 0;
    try {
        Connect(dataSource, db, strUser, strPassword, false);
    } catch (CDBException* e) {
        DVN_TRACE(1, 2, "Exception In Open Database: rc =" << e->m_nRetCode << "Error: " << e->m_strError
                                                            << "State: " << e->m_strStateNativeOrigin);
        CString reason = e->m_strError;
        e->Delete();
        return Failed(reason);
    } catch (CMemoryException* e) {
        DVN_TRACE(1, 2, "Could not open Database");
        e->Delete();
        return Failed("out of memory");
    }
    if (db.m_hdbc == SQL_NULL_HDBC) {
        DVN_TRACE(1, 2, "Could not open Database");
        return Failed("the data source could not be opened");
    }
    g_lastOpenError.Empty();
    return 0;
}

CString DvnConnection::TablePrefix(CDatabase& db) {
    CString connect = db.GetConnect();
    int at = connect.Find("FIL=");
    if (at >= 0) {
        CString type = connect.Mid(at + 4);
        int end = type.Find(';');
        if (end >= 0) type = type.Left(end);
        if (type == "MS Access") return CString("DVBT_");
    }
    return CString("DVBT.");
}
