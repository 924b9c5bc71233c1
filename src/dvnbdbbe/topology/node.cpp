// Store of nodes: one row each in NODE, found by its name. A node is never
// deleted. A run with the topology right that saves no node makes "Default
// Node", so that a system always finds one (docs/topology.md).
#include <optional>

#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"
#include "topologyforms.h"

const DvnConvCoreDbBe::Family<DvnNodeSet> DvnConvCoreDbBe::NodeFamily = {
    .typeName = "Node",
    .kind = "Node",
    .right = &TopologyRight,
    .table = "NODE",
    .keyColumn = "NODE_ID",
    .key = &DvnNodeSet::m_NODE_ID,
    .progress = "Node ",
    .invalidTrace = "Node is not defined",
    .deleteKeyword = "DELETE NODE ",
    .messages = {.added = 51027, .updated = 51059, .kept = 51091, .held = 51154, .deleted = 0,
                 .cannotAppend = 51323, .cannotUpdate = 51355},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnNodeSet& row, bool isNew) {
        return be.ReadNodeAttributes(db, entity, row, isNew);
    },
    .refuseDelete = 51257,
    .failedTrace = "Node not successfully written to database",
};

namespace {
constexpr const char* kDefaultNode = "Default Node";
}  // namespace

int DvnConvCoreDbBe::SaveNodes(CDatabase& db, bool authorized) {
    int saves = 0;
    int highest = LevelOk;
    const int level = SaveLoop(db, "Node", authorized, TopologyRight, "Node", [&](DvnfEntity& entity) {
        ++saves;
        const int saved = SaveNode(db, entity, false);
        if (saved > highest) {
            DVN_TRACE(1, 2, NodeFamily.failedTrace);
            highest = saved;
        }
        return saved;
    });
    // Without the right nothing of the topology is written, the default
    // neither: the next run with the right makes it.
    if (saves > 0 || !authorized) return level;
    return std::max(level, SaveDefaultObject(db, "Node", kDefaultNode, &DvnConvCoreDbBe::SaveNode));
}

int DvnConvCoreDbBe::SaveNode(CDatabase& db, DvnfEntity& entity) { return SaveNode(db, entity, false); }

int DvnConvCoreDbBe::SaveDefaultObject(CDatabase& db, const char* typeName, const char* name,
                                       int (DvnConvCoreDbBe::*save)(CDatabase&, DvnfEntity&, bool)) {
    DvnfEntity& entity =
        m_pCoreData->CreateEntity(DvnfString(typeName), DvnfObject::CreateOID(), DvnfString(name));
    if (entity.IsValid()) entity.State(StateUnchanged);
    db.BeginTrans();
    const int level = (this->*save)(db, entity, true);
    db.CommitTrans();
    return level;
}

int DvnConvCoreDbBe::SaveNode(CDatabase& db, DvnfEntity& entity, bool isDefault) {
    if (isDefault && entity.IsValid()) {
        // A default that is there already is left alone in silence.
        DvnNodeSet nodes(&db);
        const CString quoted(ReturnQuotedString(entity.Name(), "'", "'").c_str());
        if (!nodes.GetNodeID(quoted, m_strTablePrefix).IsEmpty()) return LevelOk;
    }
    return SaveSingleRow(db, entity, NodeFamily);
}

int DvnConvCoreDbBe::ReadNodeAttributes(CDatabase&, DvnfEntity& entity, DvnNodeSet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    StampRow(row, &DvnNodeSet::m_NODE_ID, isNew);
    SetDescription(row, entity);
    SetDocumentation(row, entity);
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    // The platform number; a value the map does not know counts as left out.
    const DvnfAttributeDataReader system = attributes("OperatingSystem");
    std::optional<long> stored;
    int level = LevelOk;
    if (system.IsDefined()) {
        const long value = system.AsLong(0);
        stored = DvnStored::StoredPlatform(value);
        if (!stored) level = ReportUnknownSetting(entity, "OperatingSystem", value);
    }
    // Left out: the platform WINNT (4), stored 5.
    row.m_OPERATING_SYSTEM = stored.value_or(*DvnStored::StoredPlatform(4));
    return level;
}
