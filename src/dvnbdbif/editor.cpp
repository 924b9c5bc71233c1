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
#include "loadframe.h"

namespace {

using dvnload::AttributeRead;
using dvnload::ReadAttributes;
using dvnload::SetFlag;

const AttributeRead kProcessRow{"PROCESS", "PID", 51700};
const AttributeRead kActivityRow{"ACTIVITY", "AID", 51701};

}  // namespace

DvnfEntity& DvnConvCoreDbIF::LoadProcess(const DvnString& name) {
    DvnfEntity* process = &DvnfEntity::undefined;
    const int level = LoadFrame(
        name, "Load Process ", "ProcesstoCore", "LoadProcess",
        [&](DvnConvCoreDbFe& fe) {
            process = &fe.ProcessByName(name.c_str());
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
                [&](DvnProcessSet& row) { return fe.ProcessAttributes(process.AttributeData(), &process, row); });
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
                [&](DvnActivitySet& row) { return fe.ActivityAttributes(activity.AttributeData(), &activity, &row); });
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
            auto read = [&](DvnfEntity& each, std::vector<DvnfEntity*>* blocks) {
                DvnfAttributeData attributes = each.AttributeData();
                fe.BlockActivity(attributes, &each, CString(each.OID().c_str()), pid, true, blocks != nullptr, blocks);
            };
            if (!deep) {
                read(block, nullptr);
            } else {
                std::vector<DvnfEntity*> blocks;
                read(block, &blocks);
                for (size_t i = 0; i < blocks.size(); ++i) read(*blocks[i], &blocks);
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
