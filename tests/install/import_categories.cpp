// A program that uses the installed library as any caller would: opens an
// embedded repository (made by `dvnbt init`), imports a TRX file as an
// initial load through the facade and lists the categories it finds in the
// database afterwards, one "category: NAME" line each, by name.
//   import_categories DATABASE_FILE TRX_FILE
#include <iostream>
#include <string>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnbdbrd.h"
#include "dvnfcorn.h"
#include "dvnfffdn.h"
#include "dvnkernn.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: import_categories DATABASE_FILE TRX_FILE\n";
        return 2;
    }
    const std::string dataSource = DvnConvCoreDbIF::EmbeddedDataSource(argv[1]).str();
    // Every connection of the import (the reader's too) reaches this file.
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(dataSource));

    CDatabase db;
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(CString(dataSource), db, DvnString(), DvnString()) != 0) {
        std::cerr << "import_categories: cannot open " << argv[1] << ": " << DvnConvCoreDbIF::LastOpenError()
                  << "\n";
        return 1;
    }
    const std::string prefix = DvnConvCoreDbIF::GetTablePrefix(db).str();
    std::cout << "driver: " << DvnConvCoreDbIF::EmbeddedDriverPath() << "\n";

    DvnfMessageHandler::DefaultOutput(&std::cerr);
    int level;
    {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(std::string(argv[2])), DvnString(dataSource), true, true, true);
    }
    DvnfMessageHandler::DefaultOutput(nullptr);
    std::cout << "level: " << level << "\n";

    SQLHSTMT stmt = db.DirectStatement();
    const std::string sql = "SELECT NAME FROM " + prefix + "CATEGORY ORDER BY NAME";
    std::string text = db.DriverText(sql);
    SQLRETURN rc = SQLExecDirect(stmt, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
    if (!SQL_SUCCEEDED(rc)) {
        std::cerr << "import_categories: " << sql << " failed\n";
        db.ReleaseStatement(stmt);
        return 1;
    }
    while (SQL_SUCCEEDED(SQLFetch(stmt))) {
        char name[256] = {};
        SQLLEN length = 0;
        SQLGetData(stmt, 1, SQL_C_CHAR, name, sizeof name, &length);
        std::cout << "category: " << name << "\n";
    }
    db.ReleaseStatement(stmt);
    db.Close();
    return level == 0 ? 0 : 1;
}
