// The facade: its life, and the import of a TRX file.
#include "dvnbdbif.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "dvnbauth.h"
#include "dvnbdbbe.h"
#include "dvnbdbrd.h"
#include "dvnconnection.h"

DvnConvCoreDbIF::DvnConvCoreDbIF(DvnfTRXData* data)
    : m_pData(data ? data : new DvnfTRXData(DvnfTRXTypes::_instance, nullptr)),
      m_pDatabase(new CDatabase),
      m_bCallerData(data != nullptr) {}

DvnConvCoreDbIF::~DvnConvCoreDbIF() {
    delete m_pDatabase;
    if (!m_bCallerData) delete m_pData;
}

void DvnConvCoreDbIF::Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3) {
    m_pData->MessageHandler()->Report(number, a1, a2, a3);
}

// ------------------------------------------------------------------ import

// The final words of an import, on standard output and in the trace.
static void FinalWords(int level) {
    if (level == 0) {
        DVN_TRACE(2, 8, "Finished with Process Model import. " << "No errors during import.");
        std::cout << "Finished with Process Model import " << std::endl << "No errors during import." << std::endl;
    } else if (level <= 4) {
        DVN_TRACE(1, 8, "Finished with Process Model import. " << "Warnings found during import.");
        std::cout << "Finished with Process Model import" << std::endl << "Warnings found during import." << std::endl;
    } else {
        DVN_TRACE(1, 8, "Finished with Process Model import. " << "Errors found during import.");
        std::cout << "Finished with Process Model import" << std::endl << "Errors found during import." << std::endl;
    }
}

// Whether a TRX file can be read as a whole: a folder opens as a stream on
// this system and reads as an empty file, which would import nothing and
// succeed. Special files (pipes, devices) are refused as well.
static bool IsReadableFile(const std::string& path) {
    std::error_code ec;
    if (path.empty() || !std::filesystem::is_regular_file(path, ec)) return false;
    std::ifstream in(path, std::ios::binary);
    return static_cast<bool>(in);
}

// The end of an import whose file cannot be used: nothing was stored.
static void CouldNotLoad(const DvnString& file) {
    std::cout << "Could not load TRX" << file << std::flush;
    DVN_TRACE(1, 2, "Could not load TRX" << file);
}

int DvnConvCoreDbIF::ImportTRX(const DvnString& file, const DvnString& dataSource, bool overwrite,
                               bool sourceOption, bool initialLoad) {
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    DVNK_REQUIRE(person != nullptr, "person != 0");

    // Refused before the database is even opened, so that nothing is written.
    if (!IsReadableFile(file.IsNull() ? std::string() : file.str())) {
        Report(52001, file);
        Report(51301, file);
        CouldNotLoad(file);
        return 12;
    }

    auto* backEnd = new DvnConvCoreDbBe();
    backEnd->SetOverwriteOption(overwrite);
    backEnd->SetSourceOption(sourceOption);
    backEnd->SetCurrentUser(person->UserID());

    CDatabase& db = *m_pDatabase;
    int opened = dataSource.IsEmpty()
                     ? OpenDatabaseFromProfile(db, person->DbUser(), person->DbPassword())
                     : OpenDatabaseFromFile(CString(dataSource.c_str()), db, person->DbUser(), person->DbPassword());
    if (opened != 0) {
        Report(51366, DvnString(DvnConnection::DisplayName(CString(dataSource.c_str())).c_str()));
        DVN_TRACE(1, 8, "Open database failed");
        delete backEnd;
        return 12;
    }
    if (!db.IsOpen()) {
        delete backEnd;
        return 12;
    }

    // Objects that the file only names are read on demand, by a reader of the
    // facade's building with a connection of its own.
    DvnODBCReader reader(*backEnd->CoreData(), nullptr);
    backEnd->SetReader(&reader);

    int level = 0;
    try {
        int parsed = backEnd->LoadTRX(file);
        if (parsed > 2) {
            if (db.IsOpen()) db.Close();
            delete backEnd;
            CouldNotLoad(file);
            return 12;
        }
        level = parsed == 2 ? 4 : 0;

        backEnd->SetTablePrefix(GetTablePrefix(db));
        if (initialLoad) level = std::max(level, backEnd->SaveVersion(db));

        const bool topology = person->AuthForTopologyWrite() || initialLoad;
        const bool modeling = person->AuthForProcessModeling() || initialLoad;
        const bool staff = person->AuthForStaffWrite() || initialLoad;

        level = std::max(level, backEnd->SaveDomains(db, topology));
        level = std::max(level, backEnd->SaveSystemGroups(db, topology));
        level = std::max(level, backEnd->SaveNodes(db, topology));
        level = std::max(level, backEnd->SaveQueueManagers(db, topology));
        level = std::max(level, backEnd->SaveSystems(db, topology));
        level = std::max(level, backEnd->SaveServers(db, topology, DvnString()));
        level = std::max(level, backEnd->SaveCategories(db, modeling));
        level = std::max(level, backEnd->SaveLevels(db, staff));
        level = std::max(level, backEnd->SavePeople(db, staff));
        level = std::max(level, backEnd->SaveOrgs(db, staff));
        level = std::max(level, backEnd->SaveActInstanceLists(db, staff));
        level = std::max(level, backEnd->SavePrcInstanceLists(db, staff));
        level = std::max(level, backEnd->SavePrcTemplateLists(db, staff));
        level = std::max(level, backEnd->SaveWorkLists(db, staff));
        level = std::max(level, backEnd->SaveRoles(db, staff));
        level = std::max(level, backEnd->SavePeople2(db, staff));
        level = std::max(level, backEnd->SavePEAs(db, topology));
        level = std::max(level, backEnd->SaveDataStructures(db, modeling));
        level = std::max(level, backEnd->SavePrograms(db, modeling));
        level = std::max(level, backEnd->SaveProcesses(db, modeling, false));
        level = std::max(level, backEnd->SaveToolSets(db, modeling));
    } catch (CDBException* e) {
        // A store deals with its own statements; a failing transaction end
        // (CommitTrans) still comes up to here.
        Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, "Database exception In ImportTRX: rc =" << e->m_nRetCode << "Error: " << e->m_strError
                                                                << "State: " << e->m_strStateNativeOrigin);
        e->Delete();
        level = 12;
    } catch (DvnOSException& e) {
        Report(24140, e.ServiceName(), DvnString::FromLong(e.ReturnCode()), DvnString::FromLong(e.ReasonCode()));
        DVN_TRACE(1, 8, "DVNException in ImportTRX");
        level = 12;
    } catch (CMemoryException* e) {
        char text[256] = {0};
        e->GetErrorMessage(text, 255, nullptr);
        Report(51373, DvnString(text));
        e->Delete();
        DVN_TRACE(1, 8, "Exception in ImportTRX");
        level = 12;
    } catch (...) {
        if (level < 12) Report(51374);
        DVN_TRACE(1, 2, "Unknown exception In ImportTRX");
        level = 12;
    }

    if (db.IsOpen()) db.Close();
    delete backEnd;
    FinalWords(level);
    return level;
}
