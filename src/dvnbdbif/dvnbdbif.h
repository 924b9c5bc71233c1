// The conversion facade that callers hold: the import of a TRX file, and the
// opening of its database connection. The facade owns one connection for its
// whole life, opened at the start of each operation and closed at its end.
#pragma once

#include <string>

#include "dvnfcorn.h"
#include "dvnkernn.h"
#include "odbcframe.h"

class DvnConvCoreDbIF {
public:
    // With data: kept and never deleted. With null: core data of its own over
    // the process-wide catalogue, with the default message handler, deleted
    // by the destructor.
    explicit DvnConvCoreDbIF(DvnfTRXData* data = nullptr);
    virtual ~DvnConvCoreDbIF();

    // Parses a TRX file and stores what it holds, section after section, so
    // that every reference points backwards. dataSource null or empty: the
    // data source of the machine profile. overwrite: an existing row is
    // rewritten (else left alone). sourceOption: true writes rows clean and
    // deletes physically, false marks new rows 5, changed rows 3 and leaves
    // deleted rows as tombstones (mark 4). initialLoad: the row of VERSION is
    // written when missing, and every right counts as held. Returns the
    // highest level met: 0, 4 warnings, 8 errors, 12 failed as a whole.
    int ImportTRX(const DvnString& file, const DvnString& dataSource, bool overwrite, bool sourceOption,
                  bool initialLoad);

    // The core data of the facade (its handler receives the facade's messages).
    DvnfTRXData* CoreData() const { return m_pData; }
    DvnConvCoreDbIF(const DvnConvCoreDbIF&) = delete;
    DvnConvCoreDbIF& operator=(const DvnConvCoreDbIF&) = delete;

    // Opens db on the data source named by "BTODBCDataSourceName" of the
    // current configuration of the machine profile. 0 when db is open
    // afterwards (also when it already was), 12 when not. Traces (level 3)
    // the user and password it connects with.
    static int OpenDatabaseFromProfile(CDatabase& db, const DvnString& user, const DvnString& password);
    // The same on a data source named by the caller, without that trace.
    static int OpenDatabaseFromFile(const CString& dataSource, CDatabase& db, const DvnString& user,
                                    const DvnString& password);
    // "DVBT_" when the driver's file type (FIL= of the connect string) is
    // exactly "MS Access", else "DVBT.".
    static CString GetTablePrefix(CDatabase& db);

    // The connect string both open operations use: "DSN=" name ";UID=" user
    // ";PWD=" password; a null user or password leaves its value empty.
    // A user or password holding ';' (or beginning with '{', or with blanks
    // at either end) goes in braces, each '}' doubled.
    static CString BuildConnectString(const CString& dataSource, const CString& user, const CString& password);
    // A data source name for an SQLite database file that needs no ODBC
    // configuration: it names the driver library itself.
    static CString EmbeddedDataSource(const std::string& file);
    // The SQLite ODBC driver library that EmbeddedDataSource names:
    // $DVN_SQLITE_ODBC_DRIVER, else the driver unixODBC has registered as
    // "SQLite3", else the one found at build time, else libsqlite3odbc.so in
    // the platform's library folders.
    static std::string EmbeddedDriverPath();
    // Why the last open operation of this process that gave 12 failed (the
    // driver's message or the profile's complaint); empty after a success.
    // For programs that show the reason to a person.
    static CString LastOpenError();

protected:
    // Reports to the handler of the facade's core data; unused arguments null.
    void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                const DvnString& a3 = DvnString());

    DvnfTRXData* m_pData;
    CDatabase* m_pDatabase;  // owned; open only during an operation
    bool m_bCallerData;
};
