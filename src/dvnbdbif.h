// The conversion facade that callers hold, and the opening of its database
// connection. The operations of the facade come with their own subsystems;
// what is here opens connections and names the table prefix.
#pragma once

#include <string>

#include "dvnkernn.h"
#include "odbcframe.h"

class DvnConvCoreDbIF {
public:
    DvnConvCoreDbIF();
    virtual ~DvnConvCoreDbIF();
    DvnConvCoreDbIF(const DvnConvCoreDbIF&) = delete;
    DvnConvCoreDbIF& operator=(const DvnConvCoreDbIF&) = delete;

    // Opens db on the data source named by "BTODBCDataSourceName" of the
    // current configuration of the machine profile. 0 when db is open
    // afterwards (also when it already was), 12 when not.
    static int OpenDatabaseFromProfile(CDatabase& db, const DvnString& user, const DvnString& password);
    // The same on a data source named by the caller.
    static int OpenDatabaseFromFile(const CString& dataSource, CDatabase& db, const DvnString& user,
                                    const DvnString& password);
    // "DVBT_" when the driver's file type (FIL= of the connect string) is
    // exactly "MS Access", else "DVBT.".
    static CString GetTablePrefix(CDatabase& db);

    // The connect string both open operations use: "DSN=" name ";UID=" user
    // ";PWD=" password; a null user or password leaves its value empty.
    static CString BuildConnectString(const CString& dataSource, const CString& user, const CString& password);
    // A data source name for an SQLite database file that needs no ODBC
    // configuration: it names the driver library itself (set at build time).
    static CString EmbeddedDataSource(const std::string& file);
    // The SQLite ODBC driver library that EmbeddedDataSource names:
    // $DVN_SQLITE_ODBC_DRIVER, else the one chosen at build time.
    static std::string EmbeddedDriverPath();
    // Why the last open operation of this process that gave 12 failed (the
    // driver's message or the profile's complaint); empty after a success.
    // For programs that show the reason to a person.
    static CString LastOpenError();

protected:
    CDatabase* m_pDatabase;  // owned; open only during an operation
};
