// The on-demand reader and the reader of the deep export.
#include "dvnbdbrd.h"

#include <cstring>

#include "dvnbdbfe.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"

namespace {
bool IsType(const DvnfEntity& entity, const char* name) { return std::strcmp(entity.Type().Name(), name) == 0; }
}  // namespace

DvnODBCReader::DvnODBCReader(DvnfTRXData& data, DvnfEntity* process) : m_facade(&data), _process(process) {}

DvnODBCReader::~DvnODBCReader() = default;

void DvnODBCReader::ReadEntity(DvnfTRXData&, DvnfEntity& entity) {
    if (!entity.IsValid()) return;
    m_facade.GetName(entity);
    if (IsType(entity, "Category")) {
        m_facade.LoadCategory(entity);
    } else if (IsType(entity, "DataStructure")) {
        m_facade.LoadDataStructure(entity);
    } else if (IsType(entity, "Program")) {
        m_facade.LoadProgram(entity);
    } else if (IsType(entity, "Server")) {
        m_facade.LoadPEUnit(entity);
    } else if (IsType(entity, "Activity")) {
        // An activity is read in the context of a process: only a reader
        // built with one may be asked for activities. Activities cannot be
        // read yet.
        DVNK_REQUIRE(_process != nullptr, "_process != 0");
    }
    // "Process": processes are not read on demand; the entity stays as it is.
    if (entity.IsValid() && entity.State() == DvnfObject::StateNew) entity.State(DvnfObject::StateUnchanged);
}

DvnfString DvnODBCReader::GetName(DvnfEntity& entity) { return m_facade.GetName(entity); }

void DvnODBCReader::ReadBlock(DvnfTRXData&, DvnfEntity& block, bool deep) {
    if (!block.IsValid()) return;
    m_facade.GetName(block);
    DVNK_REQUIRE(IsType(block, "Activity"), "block is an Activity");
    DVNK_REQUIRE(_process != nullptr, "_process != 0");
    m_facade.LoadBlock(block, DvnString(_process->OID().c_str()), deep);
}

DvnfString DvnODBCReader::GetOID(DvnfEntity& entity) {
    if (!IsType(entity, "DataStructure")) return DvnfString("");
    return m_facade.GetDataStructureID(entity);
}

// ------------------------------------------------------------------ deep export

DvnfExportFrontend::~DvnfExportFrontend() = default;

// What one object read brings can name further objects (a structure's
// sub-structures hold their own): the types are walked again until a walk
// reads nothing new.
void DvnfExportFrontend::ExportDeep(DvnfTRXData& data) {
    const char* types[] = {"Process", "Category", "Program", "DataStructure"};
    auto read = [&] {
        long count = 0;
        for (const char* type : types)
            for (const auto& [name, object] : data.GetEntities(DvnfString(type)))
                count += object->State() != DvnfObject::StateNone;
        return count;
    };
    for (long before = -1, now = read(); now != before; before = now, now = read())
        for (const char* type : types) data.ReadAllEntities(DvnfString(type), *this);
}

namespace {
// The key column of the first row of a statement, or empty.
template <class Set>
CString FirstKey(CDatabase* db, const CString& statement, CString Set::*key) {
    Set rs(db);
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    CString found;
    if (!rs.IsEOF()) found = rs.*key;
    rs.Close();
    return found;
}
}  // namespace

void DvnfExportFrontend::ReadEntity(DvnfTRXData&, DvnfEntity& entity) {
    // What was read already (in this export or by this walk) is not read again.
    if (!m_pFrontEnd || !entity.IsValid() || entity.State() != DvnfObject::StateNone) return;
    CDatabase* db = m_pFrontEnd->Database();
    const CString from = CString("SELECT * FROM ") + m_pFrontEnd->GetTablePrefix();
    const CString oid = ReturnQuotedString(entity.OID(), "'", "'").c_str();
    if (IsType(entity, "Process")) {
        // The name of a process may hold a quote: it goes in as a literal.
        const CString name = ReturnQuotedString(entity.Name(), "'", "'").c_str();
        const CString key = FirstKey(db, from + "PROCESS WHERE [NAME] =" + name, &DvnProcessSet::m_PID);
        if (!key.IsEmpty()) m_pFrontEnd->Processes(DvnString(key.c_str()));
    } else if (IsType(entity, "Program")) {
        const CString key = FirstKey(db, from + "PROGRAM WHERE [PROGRAM_ID] =" + oid, &DvnProgramSet::m_PROGRAM_ID);
        if (!key.IsEmpty()) m_pFrontEnd->Programs(DvnString(key.c_str()));
    } else if (IsType(entity, "DataStructure")) {
        const CString key = FirstKey(db, from + "DATA_STRUCTURE WHERE [DSID] =" + oid, &DvnDataStructureSet::m_DSID);
        if (!key.IsEmpty()) m_pFrontEnd->DataStructures(DvnString(key.c_str()));
    } else if (IsType(entity, "Category")) {
        const CString key = FirstKey(db, from + "CATEGORY WHERE [CATID] =" + oid, &DvnCategorySet::m_CATID);
        if (!key.IsEmpty()) m_pFrontEnd->Categories(DvnString(key.c_str()));
    }
}

// The deep step of the front end: it lives here, beside the reader it uses.
void DvnConvCoreDbFe::DeepProcesses() {
    DvnfExportFrontend reader;
    reader.GetClassPtr(this);
    reader.ExportDeep(*m_pCoreData);
}
