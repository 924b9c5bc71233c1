// The facade's connection operations: the connection code of the recordset
// layer under the names callers know.
#include "dvnbdbif.h"

#include "dvnconnection.h"

int DvnConvCoreDbIF::OpenDatabaseFromProfile(CDatabase& db, const DvnString& user, const DvnString& password) {
    return DvnConnection::OpenFromProfile(db, user, password);
}

int DvnConvCoreDbIF::OpenDatabaseFromFile(const CString& dataSource, CDatabase& db, const DvnString& user,
                                          const DvnString& password) {
    return DvnConnection::OpenFromDataSource(dataSource, db, user, password);
}

CString DvnConvCoreDbIF::GetTablePrefix(CDatabase& db) { return DvnConnection::TablePrefix(db); }

CString DvnConvCoreDbIF::BuildConnectString(const CString& dataSource, const CString& user, const CString& password) {
    return DvnConnection::BuildConnectString(dataSource, user, password);
}

CString DvnConvCoreDbIF::EmbeddedDataSource(const std::string& file) { return DvnConnection::EmbeddedDataSource(file); }

std::string DvnConvCoreDbIF::EmbeddedDriverPath() { return DvnConnection::EmbeddedDriverPath(); }

CString DvnConvCoreDbIF::LastOpenError() { return DvnConnection::LastOpenError(); }
