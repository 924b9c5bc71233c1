// Store of program execution agents: one row each in PE_AGENT, found by the
// person it belongs to (ASSOC_USER), so a person has one agent. An agent to
// delete names its person by its own name; when that person is gone, the
// agent is found by the user id it was stored under (docs/topology.md).
#include <optional>
#include <string>

#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"
#include "topologysettings.h"

namespace {
CString Quoted(const DvnString& name) { return CString(ReturnQuotedString(name, "'", "'").c_str()); }
}  // namespace

const DvnConvCoreDbBe::Family<DvnPEASet> DvnConvCoreDbBe::AgentFamily = {
    .typeName = "PEAgent",
    .kind = "PEA",
    .right = &TopologyRight,
    .table = "PE_AGENT",
    .keyColumn = "PE_AGENT_ID",
    .key = &DvnPEASet::m_PE_AGENT_ID,
    .progress = "PE_AGENT ",
    .invalidTrace = "PEA is not defined",
    .deleteKeyword = "DELETE PROGRAM_EXECUTION_AGENT ",
    .messages = {.added = 51029, .updated = 51061, .kept = 51093, .held = 51156, .deleted = 51227,
                 .cannotAppend = 51325, .cannotUpdate = 51357},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnPEASet& row, bool isNew) {
        return be.ReadPEAAttributes(db, entity, row, isNew);
    },
    // An agent whose person cannot be read again is not written.
    .readErrorStops = true,
    .failedTrace = "PEA not successfully written to database",
    .progressTrace = "PEA ",
    .locate = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, bool toDelete, DvnString& name,
                 CString& filter) { return be.LocateAgent(db, entity, toDelete, name, filter); },
};

int DvnConvCoreDbBe::SavePEAs(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, AgentFamily); }

int DvnConvCoreDbBe::SavePEA(CDatabase& db, DvnfEntity& entity) { return SaveSingleRow(db, entity, AgentFamily); }

int DvnConvCoreDbBe::LocateAgent(CDatabase& db, DvnfEntity& entity, bool toDelete, DvnString& name,
                                 CString& filter) {
    const DvnString person(toDelete ? CString(entity.Name().c_str())
                                    : GetLinkName("PEAHasPerson", entity, "Person"));
    DvnPersonSet persons(&db);
    const CString key =
        person.IsEmpty() ? CString() : persons.GetPersonID(Quoted(person), m_strTablePrefix, false);
    if (!key.IsEmpty()) {
        name = person;
        filter = "ASSOC_USER = " + Quoted(DvnString(key.c_str()));
        return LevelOk;
    }
    if (toDelete) {
        // The person went before its agent (or is a tombstone): the agent is
        // found by the user id it keeps in NAME.
        name = person;
        filter = "NAME = " + Quoted(DvnUser::FoldUserId(person));
        return LevelOk;
    }
    Report(51372, entity.Name());
    Report(51325, entity.Name());
    return LevelError;
}

int DvnConvCoreDbBe::ReadPEAAttributes(CDatabase& db, DvnfEntity& entity, DvnPEASet& row, bool isNew) {
    if (isNew) {
        row.m_PE_AGENT_ID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = m_nSourceMark;
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
        // The person LocateAgent found a moment ago; a failed read of it
        // leaves no agent without a person.
        DvnPersonSet persons(&db);
        const DvnString person(GetLinkName("PEAHasPerson", entity, "Person"));
        const CString key = persons.GetPersonID(Quoted(person), m_strTablePrefix, false);
        if (key.IsEmpty()) return LevelError;
        DvnStored::SetText(row, row.m_ASSOC_USER, key.c_str());
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    SetDescription(row, entity);
    SetDocumentation(row, entity);

    int level = LevelOk;
    const DvnfAttributeDataReader group = static_cast<const DvnfEntity&>(entity).AttributeData()("PEADefault");
    for (const DvnStored::AgentSetting& s : DvnStored::AgentSettings()) {
        const DvnfAttributeDataReader attribute = group(s.attribute);
        std::optional<long> stored;
        if (attribute.IsDefined() && s.mode) {
            const DvnfAttributeDataReader mode = group(s.mode);
            if (mode.IsDefined() && mode.AsLong(0) == 1) stored = attribute.AsLong(0);
        } else if (attribute.IsDefined()) {
            const long value = attribute.AsLong(0);
            for (const auto& [given, number] : s.map)
                if (given == value) stored = number;
            if (!stored)
                level = std::max(level, ReportUnknownSetting(entity, std::string("PEADefault.") + s.attribute, value));
        }
        if (stored)
            row.*s.column = *stored;
        else
            row.SetFieldNull(&(row.*s.column));
    }
    return level;
}
