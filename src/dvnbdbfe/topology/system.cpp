// Load of systems: the row of SYSTEM with its group, node and queue manager,
// and its settings, of which only what the system holds itself.
#include "dvnbdbfe.h"
#include "dvntoposets.h"

const DvnConvCoreDbFe::Kind<DvnSystemSet> DvnConvCoreDbFe::SystemKind = {
    .typeName = "System",
    .table = "SYSTEM",
    .keyColumn = "SYSTEM_ID",
    .plural = "Systems",
    .progress = 51519,
    .notFound = 51555,
    .lookFirst = true,
    .key = [](const DvnSystemSet& row) { return row.m_SYSTEM_ID; },
    .name = [](const DvnSystemSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::System,
};

void DvnConvCoreDbFe::Systems(DvnString const& id) { LoadKind(SystemKind, id); }

int DvnConvCoreDbFe::System(DvnSystemSet& row, DvnfEntity& system) {
    if (!TakeState(system, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = system.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    auto version = [&](const long& column, const char* attribute, long fallback) {
        attributes(attribute) = row.IsFieldNull(&column) ? fallback : column;
    };
    version(row.m_VERSION, "Version", 3);
    version(row.m_RELEASE, "Release", 3);
    version(row.m_MOD_LEVEL, "Level", 0);
    CopyLong(row, row.m_SYSTEM_IDENTIFIER, attributes("SystemIdentifier"));
    LinkThroughRow<DvnSystemGroupSet>(system, "SystemIsInSystemGroup", "SystemGroup", "SYSTEM_GROUP",
                                      "SYSTEM_GROUP_ID", row, row.m_SYSTEM_GROUP);
    LinkThroughRow<DvnNodeSet>(system, "SystemRunsOnNode", "Node", "NODE", "NODE_ID", row, row.m_NODE);
    LinkThroughRow<DvnQueueManagerSet>(system, "SystemHasQueueManager", "QueueManager", "QUEUE_MANAGER",
                                       "QUEUE_MANAGER_ID", row, row.m_QUEUE_MANAGER);
    CopyFlag(row, row.m_PRIMARY_SYSTEM, attributes("PrimarySystem"));
    LevelSettings<DvnSystemPrcSet, DvnSystemPrgSet, DvnSystemSvsSet, DvnSystemSvrSet>(system, row, "SYSTEM_",
                                                                                      "SYSTEM_ID", row.m_SYSTEM_ID);
    return LevelOk;
}
