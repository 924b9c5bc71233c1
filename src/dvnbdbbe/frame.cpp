// The frame of all stores: construction, options, the Save<X>s loops, the
// message and exception helpers, links, states, deletes, default system
// names, the parse of a TRX file and the row of VERSION.
#include "dvnbdbbe.h"

#include <iostream>

#include "dvnfffdn.h"
#include "dvnprocsets.h"
#include "storedforms.h"

const DvnConvCoreDbBe::Right DvnConvCoreDbBe::ModelingRight = {51165, "No process modeling authorization"};
const DvnConvCoreDbBe::Right DvnConvCoreDbBe::StaffRight = {51166, "No staff definition authorization"};
const DvnConvCoreDbBe::Right DvnConvCoreDbBe::TopologyRight = {51167, "No topology definition authorization"};

DvnConvCoreDbBe::DvnConvCoreDbBe()
    : m_pCoreData(new DvnfTRXData(DvnfTRXTypes::_instance, nullptr)),
      m_bCallerData(false),
      m_bOverwrite(true),
      m_nSourceMark(MarkClean) {}

DvnConvCoreDbBe::DvnConvCoreDbBe(DvnfTRXData* data)
    : m_pCoreData(data), m_bCallerData(true), m_bOverwrite(true), m_nSourceMark(MarkClean) {}

DvnConvCoreDbBe::~DvnConvCoreDbBe() {
    if (!m_bCallerData) delete m_pCoreData;
}

// ------------------------------------------------------------------ reports

void DvnConvCoreDbBe::Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3,
                             const DvnString& a4, const DvnString& a5, const DvnString& a6, const DvnString& a7) {
    m_pCoreData->MessageHandler()->Report(number, a1, a2, a3, a4, a5, a6, a7);
}

int DvnConvCoreDbBe::ReportDbException(CDBException* e, const char* action, const char* table, CRecordset* rs) {
    Report(51368, DvnString(e->m_strError.c_str()));
    DVN_TRACE(1, 2, "Exception " << action << " table " << table << ": rc =" << e->m_nRetCode << "Error: "
                                 << e->m_strError << "State: " << e->m_strStateNativeOrigin);
    e->Delete();
    if (rs && rs->IsOpen()) rs->Close();
    return LevelError;
}

int DvnConvCoreDbBe::StoreIcon(CRecordset& row, CString& member, const DvnfAttributeDataReader& icon) {
    if (!icon.IsDefined()) return LevelOk;
    const DvnString text = icon.AsString("");
    if (text.Length() > 8) {
        Report(51118, text);
        row.SetFieldNull(&member);
        return LevelWarning;
    }
    DvnStored::SetText(row, member, text.str());
    return LevelOk;
}

int DvnConvCoreDbBe::MarkForUpdate(int current) const {
    if (m_nSourceMark == MarkNew && (current == MarkClean || current == MarkChanged)) return MarkChanged;
    return m_nSourceMark;
}

bool DvnConvCoreDbBe::SecondPassMayWrite(int& checkedOut) const {
    if (checkedOut == MarkFirstPassDone) {
        checkedOut = m_nSourceMark;
        return true;
    }
    return m_bOverwrite;
}

// ------------------------------------------------------------------ loops

int DvnConvCoreDbBe::SaveLoop(CDatabase& db, const char* typeName, bool authorized, const Right& right,
                              const char* kind, const std::function<int(DvnfEntity&)>& save,
                              bool withTransaction) {
    auto& entities = m_pCoreData->GetEntities(typeName);
    int level = LevelOk;
    for (auto& [name, object] : entities) {
        DvnfEntity& entity = object->Entity();
        if (!entity.IsValid() || object->State() == StateNone) continue;
        // In an import only the on-demand reader leaves an entity unchanged:
        // it was read from the database because the file only names it, and
        // it is neither saved nor refused.
        if (!m_bCallerData && object->State() == StateUnchanged) continue;
        if (!authorized) {
            Report(right.message, DvnString(kind));
            DVN_TRACE(1, 8, right.trace);
            return LevelWarning;
        }
        if (withTransaction) db.BeginTrans();
        level = std::max(level, save(entity));
        if (withTransaction) db.CommitTrans();
    }
    return level;
}

int DvnConvCoreDbBe::SecondPassLoop(CDatabase& db, const char* typeName,
                                    const std::function<int(DvnfEntity&)>& save2) {
    auto& entities = m_pCoreData->GetEntities(typeName);
    int level = LevelOk;
    for (auto& [name, object] : entities) {
        DvnfEntity& entity = object->Entity();
        if (!entity.IsValid() || object->State() <= StateDeleted) continue;
        if (!m_bCallerData && object->State() == StateUnchanged) continue;
        db.BeginTrans();
        level = std::max(level, save2(entity));
        db.CommitTrans();
    }
    return level;
}

// ------------------------------------------------------------------ links

DvnfEntity& DvnConvCoreDbBe::GetLink(const DvnfString& linkName, DvnfEntity& entity, const DvnfString& targetType) {
    const DvnfCoreTypes& types = m_pCoreData->Types();
    const DvnfEntityType& target = types.GetEntityType(targetType, true);
    const DvnfLinkType& linkType = types.GetLinkType(linkName, entity.Type(), target, true);
    return entity.FirstLinkOfType(linkType).Target();
}

CString DvnConvCoreDbBe::GetLinkName(const DvnfString& linkName, DvnfEntity& entity, const DvnfString& targetType) {
    const DvnfCoreTypes& types = m_pCoreData->Types();
    const DvnfEntityType& target = types.GetEntityType(targetType, true);
    const DvnfLinkType& linkType = types.GetLinkType(linkName, entity.Type(), target, true);
    DvnfLinkTypeIterator links = entity.LinksOfType(linkType);
    const DvnfLink& first = links.First();
    if (!first.IsValid()) return CString();
    return CString(first.Target().Name().c_str());
}

// ------------------------------------------------------------------ frame operations

void DvnConvCoreDbBe::ResetState(DvnfEntity& entity) {
    if (!entity.IsValid()) return;
    int state = entity.State();
    if (state == StateNew || state == StateChanged) entity.State(StateUnchanged);
}

int DvnConvCoreDbBe::DeleteObject(CDatabase& db, const CString& statement, const CString& table) {
    try {
        db.ExecuteSQL(statement);
    } catch (CDBException* e) {
        Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, "Exception opening table " << table << " rc =" << e->m_nRetCode << "Error: " << e->m_strError
                                                   << "State: " << e->m_strStateNativeOrigin);
        e->Delete();
        return LevelError;
    }
    return LevelOk;
}

static DvnString ProfileValueOr(const char* key, const char* fallback) {
    DvnString value;
    try {
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        value = profile.Find(key, false);
    } catch (...) {
        // No profile, or no current configuration: the fallback counts.
    }
    if (value.IsEmpty()) value = DvnString(fallback);
    return value;
}

DvnString DvnConvCoreDbBe::DefaultSystem() {
    if (m_strDefaultSystem.IsEmpty()) m_strDefaultSystem = ProfileValueOr("System", "DVNSYS");
    return m_strDefaultSystem;
}

DvnString DvnConvCoreDbBe::DefaultSysGrp() {
    if (m_strDefaultSysGrp.IsEmpty()) m_strDefaultSysGrp = ProfileValueOr("SystemGroup", "SYS_GRP");
    return m_strDefaultSysGrp;
}

// ------------------------------------------------------------------ parse

int DvnConvCoreDbBe::LoadTRX(const DvnString& file) {
    DVNK_REQUIRE(m_pCoreData != nullptr, "_data != 0");
    DvnTRXFrontend frontend(*m_pCoreData, m_pReader);
    int result = frontend.ReadFile(file.c_str(), 2, nullptr, nullptr);
    if (result > 2) Report(51301, file);
    return result;
}

// ------------------------------------------------------------------ version

namespace {

bool VersionRowExists(CDatabase& db, const CString& table) {
    try {
        DvnVersionSet row(&db);
        row.Open(CRecordset::snapshot, table, CRecordset::none);
        return !row.IsEOF();
    } catch (CDBException* e) {
        e->Delete();
        return false;
    }
}

}  // namespace

int DvnConvCoreDbBe::SaveVersion(CDatabase& db) {
    std::cout << "Version, Release, Level" << std::endl;
    DvnVersionSet row(&db);
    try {
        row.Open(CRecordset::snapshot, Table("VERSION"), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", "VERSION", &row);
    }
    int level = LevelOk;
    if (row.IsEOF()) {
        if (!row.CanAppend()) {
            level = LevelError;
        } else {
            try {
                row.AddNew();
                row.m_VERSION = 3;
                row.m_RELEASE = 3;
                row.m_MOD_LEVEL = 0;
                row.Update();
            } catch (CDBException* e) {
                // Another initial load may have written the row since the
                // snapshot was read; the table keeps one row (a unique index),
                // so this insert failed. The row wanted is there: no error.
                row.Close();
                if (!VersionRowExists(db, Table("VERSION"))) return ReportDbException(e, "updating", "VERSION", &row);
                e->Delete();
                return level;
            }
        }
    }
    row.Close();
    return level;
}
