// DvnConnection: how every connection of the system is opened, by the data
// source of the machine profile or by a data source the caller names, and
// which table prefix a connection uses. It knows the kernel services and
// ODBC only; the facade (DvnConvCoreDbIF) offers the same operations under
// their public names.
#pragma once

#include <string>

#include "dvnkernn.h"
#include "odbcframe.h"

class DvnConnection {
public:
    // Opens db on the data source named by "BTODBCDataSourceName" of the
    // current configuration of the machine profile. 0 when db is open
    // afterwards (also when it already was), 12 when not. Traces (level 3)
    // the user it connects with and the password masked. A CDBException of
    // the driver, its trace and LastOpenError carry no password (redact.h).
    static int OpenFromProfile(CDatabase& db, const DvnString& user, const DvnString& password);
    // The same on a data source named by the caller, without that trace.
    static int OpenFromDataSource(const CString& dataSource, CDatabase& db, const DvnString& user,
                                  const DvnString& password);
    // "DVBT_" when the driver's file type (FIL= of the connect string) is
    // exactly "MS Access", else "DVBT.".
    static CString TablePrefix(CDatabase& db);

    // The connect string both opens use: "DSN=" name ";UID=" user ";PWD="
    // password; a null user or password leaves its value empty.
    // A user or password holding ';' (or beginning with '{', or with blanks
    // at either end) goes in braces, each '}' doubled.
    static CString BuildConnectString(const CString& dataSource, const CString& user, const CString& password);
    // A data source name for an SQLite database file that needs no ODBC
    // configuration: it names the driver library itself.
    static CString EmbeddedDataSource(const std::string& file);
    // A data source as a person knows it, for messages: the file of an
    // embedded one (not the driver path and options around it), any other
    // without its password.
    static CString DisplayName(const CString& dataSource);
    // The SQLite ODBC driver library that EmbeddedDataSource names:
    // $DVN_SQLITE_ODBC_DRIVER, else the driver unixODBC has registered as
    // "SQLite3", else the one found at build time, else libsqlite3odbc.so in
    // the platform's library folders.
    static std::string EmbeddedDriverPath();
    // Why the last open of this process that gave 12 failed (the driver's
    // message or the profile's complaint); empty after a success.
    static CString LastOpenError();
};
