// The operations of the graphical process editor: load one process with its
// first level, read the attributes of a process or an activity and the
// inside of a block when the user opens them, and store all processes of
// the core data. Each load runs in the frame of loadframe.h; the completeness
// flags of the entities tell what has been read, and only a valid entity
// gets a flag.
#include <iostream>
#include <memory>
#include <vector>

#include "dvnbauth.h"
#include "dvnbdbbe.h"
#include "dvnbdbfe.h"
#include "dvnbdbif.h"
#include "dvnbdbrd.h"
#include "dvnprocsets.h"
#include "editorloads.h"
#include "loadframe.h"

namespace {

void SetFlag(DvnfEntity& entity, unsigned bit) {
    if (entity.IsValid()) entity.SetFlags(bit);
}

// The long attributes of one row, found by key: the recordset opened on the
// filter (a database exception here is 51368 and level 12), 8 with the
// not-found message when no row has the key, else read(row) and the flag
// "attributes complete".
struct AttributeRead {
    const char* table;
    const char* keyColumn;
    long notFound;
};

template <class Set, class Read>
int ReadAttributes(CDatabase& db, const CString& prefix, const AttributeRead& what, DvnfEntity& entity,
                   DvnfMessageHandler& handler, Read read) {
    Set rs(&db);
    rs.m_strFilter = CString(what.keyColumn) + " ='" + entity.OID().c_str() + "'";
    try {
        rs.Open(CRecordset::snapshot, prefix + what.table, CRecordset::readOnly);
    } catch (CDBException* e) {
        handler.Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, "Exception opening table " << what.table << ": rc =" << e->m_nRetCode << "Error: "
                                                    << e->m_strError << "State: " << e->m_strStateNativeOrigin);
        e->Delete();
        return 12;
    }
    if (rs.IsEOF()) {
        rs.Close();
        handler.Report(what.notFound, entity.Name());
        return 8;
    }
    rs.MoveFirst();
    const int level = read(rs);
    SetFlag(entity, DvnfEntity::FlagAttributesComplete);
    rs.Close();
    return level;
}

const AttributeRead kProcessRow{"PROCESS", "PID", 51700};
const AttributeRead kActivityRow{"ACTIVITY", "AID", 51701};

}  // namespace

DvnfEntity& DvnConvCoreDbIF::LoadProcess(const DvnString& name) {
    DvnfEntity* process = &DvnfEntity::undefined;
    const int level = LoadFrame(
        name, "Load Process ", "ProcesstoCore", "LoadProcess",
        [&](DvnConvCoreDbFe& fe) {
            process = &editorloads::ProcessByName(fe, name);
            GetNamesOfAll();
            return 0;
        },
        [] {});
    return level == 0 ? *process : DvnfEntity::undefined;
}

int DvnConvCoreDbIF::LoadProcessAttributes(DvnfEntity& process) {
    return LoadFrame(
        process.Name(), "Load Process attributes ", nullptr, "LoadProcessAttributes",
        [&](DvnConvCoreDbFe& fe) {
            return ReadAttributes<DvnProcessSet>(
                *m_pDatabase, fe.GetTablePrefix(), kProcessRow, process, *m_pData->MessageHandler(),
                [&](DvnProcessSet& row) { return editorloads::ProcessAttributes(fe, process, row); });
        },
        [] {});
}

int DvnConvCoreDbIF::LoadActivityAttributes(DvnfEntity& activity) {
    if (activity.IsAttributeDataAttrComplete()) {
        DVN_TRACE(1, 8, "Attributes for " << activity.Name() << " are already loded");
        return 0;
    }
    return LoadFrame(
        activity.Name(), "Load Activity attributes ", nullptr, "LoadActivityAttributes",
        [&](DvnConvCoreDbFe& fe) {
            return ReadAttributes<DvnActivitySet>(
                *m_pDatabase, fe.GetTablePrefix(), kActivityRow, activity, *m_pData->MessageHandler(),
                [&](DvnActivitySet& row) { return editorloads::ActivityAttributes(fe, activity, row); });
        },
        [] {});
}

// One level, or with deep every block found inside, breadth first: the
// front end appends each block it meets to the list, which is walked by
// index while it grows. Only the block given is marked as read: the blocks
// found inside are read all the same, but their flag stays theirs.
int DvnConvCoreDbIF::LoadBlock(DvnfEntity& block, const DvnString& processId, bool deep) {
    DVNK_REQUIRE(block.AttributeData()("Implementation")("Type").AsLong(0) == 3,
                 "Implementation.Type of the block == 3");
    if (block.IsBlockContentInMemory()) {
        DVN_TRACE(1, 8, "block " << block.Name() << " is already loaded");
        return 0;
    }
    const CString pid(processId.c_str());
    return LoadFrame(
        block.Name(), "Load block ", nullptr, "LoadBlock",
        [&](DvnConvCoreDbFe& fe) {
            if (!deep) {
                editorloads::BlockActivity(fe, block, pid, nullptr);
            } else {
                std::vector<DvnfEntity*> blocks;
                editorloads::BlockActivity(fe, block, pid, &blocks);
                for (size_t i = 0; i < blocks.size(); ++i) editorloads::BlockActivity(fe, *blocks[i], pid, &blocks);
            }
            GetNamesOfAll();
            return 0;
        },
        [&] { SetFlag(block, DvnfEntity::FlagBlockContent); });
}

// ------------------------------------------------------------------ save

namespace {

// The final words of a save, in the trace and on standard output.
void SaveFinalWords(int level) {
    if (level == 0) {
        DVN_TRACE(2, 8, "Finished with Process Model Save. " << "No errors found.");
        std::cout << "Finished with Process Model Save " << std::endl << "No errors found." << std::endl;
    } else if (level == 4) {
        DVN_TRACE(1, 8, "Finished with Process Model Save." << "Warnings found.");
        std::cout << "Finished with Process Model Save" << std::endl << "Warnings found." << std::endl;
    } else {
        DVN_TRACE(1, 8, "Finished with Process Model Save." << "Errors found.");
        std::cout << "Finished with Process Model Save" << std::endl << "Errors found." << std::endl;
    }
}

}  // namespace

// Every process of the core data, rows found by key, with every right held:
// whether the user may change a process is the editor's to ask before.
// Database failures are the back end's; anything else goes to the caller.
int DvnConvCoreDbIF::SaveProcess() {
    DVN_TRACE(1, 8, "Save Process To Database ");
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    DVNK_REQUIRE(person != nullptr, "person != 0");
    auto backEnd = std::make_unique<DvnConvCoreDbBe>(m_pData);
    CDatabase& db = *m_pDatabase;
    const int opened = OpenDatabaseFromProfile(db, person->DbUser(), person->DbPassword());
    if (opened != 0) {
        DVN_TRACE(1, 8, "Open database failed");
        return opened;
    }
    backEnd->SetTablePrefix(GetTablePrefix(db));
    backEnd->SetCurrentUser(person->UserID());
    // The cleaner that tidies each process asks this reader, which has a
    // connection of its own, for what the process only names.
    DvnODBCReader reader(*m_pData, nullptr);
    backEnd->SetReader(&reader);
    const int level = backEnd->SaveProcesses(db, true, true);
    if (db.IsOpen()) db.Close();
    backEnd.reset();
    SaveFinalWords(level);
    return level == 4 ? 0 : level;
}
