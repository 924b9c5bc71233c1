// Opening a database connection (by the machine profile or by a named data
// source) and choosing the table prefix. Every connection of the system is
// opened here: the facade, the on-demand reader and the authorization.
#include "dvnconnection.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#ifndef DVN_SQLITE_ODBC_DRIVER
#define DVN_SQLITE_ODBC_DRIVER ""
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
// traces the user it connects with, and whether a password was given (never
// the password). A driver's error text may quote the connect string: the
// exception leaves here with every password in it hidden.
void Connect(const CString& dataSource, CDatabase& db, const CString& user, const CString& password,
             bool traceUser) {
    db.SetQueryTimeout(60);
    if (traceUser)
        DVN_TRACE(3, 1, "open database with userid: " << user << " and password: " << MaskedPassword(password));
    const CString connect = DvnConnection::BuildConnectString(dataSource, user, password);
    try {
        db.OpenEx(connect, 12);
    } catch (CDBException* e) {
        e->m_strError = RedactPassword(e->m_strError, connect);
        e->m_strStateNativeOrigin = RedactPassword(e->m_strStateNativeOrigin, connect);
        throw;
    }
}

// A value as the connect string must carry it: as it is, unless it holds a
// ';', begins with '{' or has blanks at either end; then in braces, with each
// '}' doubled. A password "a;b" would otherwise end at the ';' and give the
// driver an attribute "b".
std::string ConnectValue(const std::string& value) {
    const bool blankEnd = !value.empty() && (value.front() == ' ' || value.back() == ' ');
    if (value.find(';') == std::string::npos && (value.empty() || value.front() != '{') && !blankEnd) return value;
    std::string braced = "{";
    for (char c : value) {
        braced += c;
        if (c == '}') braced += '}';
    }
    return braced + "}";
}

}  // namespace

CString DvnConnection::BuildConnectString(const CString& dataSource, const CString& user, const CString& password) {
    return CString("DSN=" + dataSource.str() + ";UID=" + ConnectValue(user.str()) + ";PWD=" +
                   ConnectValue(password.str()));
}

std::string DvnConnection::EmbeddedDriverPath() {
    // In this order: $DVN_SQLITE_ODBC_DRIVER as it is; the driver that unixODBC
    // has registered as "SQLite3" (its odbcinst.ini: $ODBCSYSINI, else the
    // system's); the library found at build time; libsqlite3odbc.so in the
    // platform's library folders. A registered bare name ("libsqlite3odbc.so",
    // as Debian writes it) is looked up in those folders. When nothing is
    // found, the name the driver manager will then fail to load.
    const char* env = std::getenv("DVN_SQLITE_ODBC_DRIVER");
    if (env && *env) return env;
#ifdef DVN_ODBC_SYSTEM_DIR
    const std::string systemDir = DVN_ODBC_SYSTEM_DIR;
#else
    const std::string systemDir = "/etc";
#endif
#ifdef DVN_LIBRARY_ARCHITECTURE
    const std::string arch = DVN_LIBRARY_ARCHITECTURE;
#else
    const std::string arch;
#endif
    const std::string built = DVN_SQLITE_ODBC_DRIVER;
    const std::string defaultName = "libsqlite3odbc.so";

    auto isFile = [](const std::string& path) {
        std::error_code ec;
        return !path.empty() && std::filesystem::is_regular_file(path, ec);
    };
    auto trim = [](std::string s) {
        const char* space = " \t\r\n";
        s.erase(0, s.find_first_not_of(space));
        s.erase(s.find_last_not_of(space) + 1);
        return s;
    };
    auto lower = [](std::string s) {
        for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        return s;
    };
    // The Driver= of section [SQLite3] (names of sections and keys in any case).
    auto registered = [&]() -> std::string {
        const char* sysIni = std::getenv("ODBCSYSINI");
        const char* iniName = std::getenv("ODBCINSTINI");
        std::ifstream in((sysIni && *sysIni ? std::string(sysIni) : systemDir) + "/" +
                         (iniName && *iniName ? iniName : "odbcinst.ini"));
        std::string line;
        bool inSection = false;
        while (std::getline(in, line)) {
            line = trim(line);
            if (line.empty() || line[0] == '#' || line[0] == ';') continue;
            if (line.front() == '[') {
                inSection = line.back() == ']' && lower(trim(line.substr(1, line.size() - 2))) == "sqlite3";
            } else if (std::size_t eq = line.find('='); inSection && eq != std::string::npos &&
                                                        lower(trim(line.substr(0, eq))) == "driver") {
                return trim(line.substr(eq + 1));
            }
        }
        return {};
    };
    // A bare library name in the folders where the platform keeps libraries
    // and ODBC drivers (the multiarch folders first), and beside the library
    // found at build time.
    auto search = [&](const std::string& name) -> std::string {
        std::vector<std::string> dirs;
        if (!built.empty()) dirs.push_back(std::filesystem::path(built).parent_path().string());
        for (const std::string prefix : {"/usr/local/lib", "/usr/lib"}) {
            if (!arch.empty()) {
                dirs.push_back(prefix + "/" + arch + "/odbc");
                dirs.push_back(prefix + "/" + arch);
            }
            dirs.push_back(prefix + "64/odbc");
            dirs.push_back(prefix + "64");
            dirs.push_back(prefix + "/odbc");
            dirs.push_back(prefix);
        }
        for (const std::string& dir : dirs)
            if (isFile(dir + "/" + name)) return dir + "/" + name;
        return {};
    };

    std::string driver = registered();
    if (!driver.empty()) {
        if (driver.find('/') == std::string::npos) driver = search(driver);
        if (isFile(driver)) return driver;
    }
    if (isFile(built)) return built;
    driver = search(defaultName);
    if (!driver.empty()) return driver;
    return built.empty() ? defaultName : built;
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
