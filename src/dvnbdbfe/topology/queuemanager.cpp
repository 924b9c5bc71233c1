// Load of queue managers: the row of QUEUE_MANAGER with its node and the
// systems that use it.
#include "dvnbdbfe.h"
#include "dvntoposets.h"

const DvnConvCoreDbFe::Kind<DvnQueueManagerSet> DvnConvCoreDbFe::QueueManagerKind = {
    .typeName = "QueueManager",
    .table = "QUEUE_MANAGER",
    .keyColumn = "QUEUE_MANAGER_ID",
    .plural = "Queue Managers",
    .progress = 51520,
    .notFound = 51556,
    .lookFirst = true,
    .key = [](const DvnQueueManagerSet& row) { return row.m_QUEUE_MANAGER_ID; },
    .name = [](const DvnQueueManagerSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::QueueManagerRow,
};

void DvnConvCoreDbFe::QueueManager(DvnString const& id) { LoadKind(QueueManagerKind, id); }

int DvnConvCoreDbFe::QueueManagerRow(DvnQueueManagerSet& row, DvnfEntity& queueManager) {
    if (!TakeState(queueManager, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = queueManager.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    if (!row.IsFieldNull(&row.m_SYSTEM_SEL) && row.m_SYSTEM_SEL == 1) attributes("System") = 1L;
    CopyText(row, row.m_QUEUE_MANAGER_NAME, attributes("Name"));
    // The node it runs on, as the store reads it back.
    LinkThroughRow<DvnNodeSet>(queueManager, "QueueManagerRunsOnNode", "Node", "NODE", "NODE_ID", row, row.m_NODE);
    LinkLiveRows<DvnSystemSet>(queueManager, "QueueManagerIsInSystem", "System", "SYSTEM", "QUEUE_MANAGER",
                               row.m_QUEUE_MANAGER_ID, &DvnSystemSet::m_SYSTEM_ID);
    return LevelOk;
}
