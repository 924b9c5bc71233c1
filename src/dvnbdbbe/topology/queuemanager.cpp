// Store of queue managers: one row each in QUEUE_MANAGER, found by its name,
// with its node and the name of the queue manager itself, which no two
// definitions share. One that a system uses stays. A run with the topology
// right that leaves the table without a live row makes "Default Queue
// Manager" (docs/topology.md).
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {
constexpr const char* kDefaultQueueManager = "Default Queue Manager";
constexpr const char* kDefaultQmgrName = "DVNQM";
CString Quoted(const CString& name) { return CString(ReturnQuotedString(DvnString(name.c_str()), "'", "'").c_str()); }
}  // namespace

const DvnConvCoreDbBe::Family<DvnQueueManagerSet> DvnConvCoreDbBe::QueueManagerFamily = {
    .typeName = "QueueManager",
    .kind = "Queue Manager",
    .right = &TopologyRight,
    .table = "QUEUE_MANAGER",
    .keyColumn = "QUEUE_MANAGER_ID",
    .key = &DvnQueueManagerSet::m_QUEUE_MANAGER_ID,
    .progress = "QueueManager ",
    .invalidTrace = "QueueManager is not defined",
    .deleteKeyword = "DELETE QUEUE_MANAGER ",
    .messages = {.added = 51026, .updated = 51058, .kept = 51090, .held = 51153, .deleted = 51224,
                 .cannotAppend = 51322, .cannotUpdate = 51354},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnQueueManagerSet& row, bool isNew) {
        return be.ReadQueueManagerAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        DvnString system;
        if (!FirstRowName<DvnSystemSet>(db, "SELECT * FROM " + be.Table("SYSTEM") + " WHERE QUEUE_MANAGER ='" + key + "'",
                                        system))
            return static_cast<int>(LevelOk);
        be.Report(51256, entity.Name(), system);
        return static_cast<int>(LevelWarning);
    },
    .readErrorStops = true,
    .failedTrace = "QueueManager not successfully written to database",
};

int DvnConvCoreDbBe::SaveQueueManagers(CDatabase& db, bool authorized) {
    int highest = LevelOk;
    int level = SaveLoop(db, "QueueManager", authorized, TopologyRight, "Queue Manager", [&](DvnfEntity& entity) {
        const int saved = SaveQueueManager(db, entity, false);
        if (saved > highest) {
            DVN_TRACE(1, 2, QueueManagerFamily.failedTrace);
            highest = saved;
        }
        return saved;
    });
    if (!authorized) return level;
    // A table with no live row: systems would find no queue manager.
    DvnQueueManagerSet managers(&db);
    if (!managers.GetDefaultQueueManagerID(m_strTablePrefix).IsEmpty()) return level;
    const int made = SaveDefaultObject(db, "QueueManager", kDefaultQueueManager, &DvnConvCoreDbBe::SaveQueueManager);
    if (made > highest) DVN_TRACE(1, 2, "Queue manager not successfully written to database");
    return std::max(level, made);
}

int DvnConvCoreDbBe::SaveQueueManager(CDatabase& db, DvnfEntity& entity) { return SaveQueueManager(db, entity, false); }

int DvnConvCoreDbBe::SaveQueueManager(CDatabase& db, DvnfEntity& entity, bool isDefault) {
    if (isDefault && entity.IsValid()) {
        DvnQueueManagerSet managers(&db);
        if (!managers.GetQueueManagerID(Quoted(entity.Name().c_str()), m_strTablePrefix).IsEmpty()) return LevelOk;
    }
    return SaveSingleRow(db, entity, QueueManagerFamily);
}

int DvnConvCoreDbBe::ReadQueueManagerAttributes(CDatabase& db, DvnfEntity& entity, DvnQueueManagerSet& row,
                                                bool isNew) {
    int level = LevelOk;
    const DvnString name = entity.Name();
    row.m_NAME = name.c_str();
    StampRow(row, &DvnQueueManagerSet::m_QUEUE_MANAGER_ID, isNew);
    SetDescription(row, entity);
    SetDocumentation(row, entity);

    // The node: none without a link; an unknown one gives "Default Node",
    // else the first live node.
    const CString node = GetLinkName("QueueManagerRunsOnNode", entity, "Node");
    if (node.IsEmpty()) {
        row.SetFieldNull(&row.m_NODE);
    } else {
        DvnNodeSet nodes(&db);
        CString nodeKey = nodes.GetNodeID(Quoted(node), m_strTablePrefix);
        if (nodeKey.IsEmpty()) {
            Report(51122, DvnString(node.c_str()));
            level = LevelWarning;
            nodeKey = nodes.GetNodeID(Quoted("Default Node"), m_strTablePrefix);
            if (nodeKey.IsEmpty()) nodeKey = nodes.GetDefaultNodeID(m_strTablePrefix);
        }
        DvnStored::SetText(row, row.m_NODE, nodeKey.c_str());
    }

    // "System" knows the one value 1, which is also what a queue manager
    // without it gets.
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const DvnfAttributeDataReader system = attributes("System");
    if (system.IsDefined() && system.AsLong(0) != 1)
        level = std::max(level, ReportUnknownSetting(entity, "System", system.AsLong(0)));
    row.m_SYSTEM_SEL = 1;

    const DvnfAttributeDataReader qmgrName = attributes("Name");
    const CString qmgr = qmgrName.IsDefined() ? CString(qmgrName.AsString("").c_str()) : CString(kDefaultQmgrName);
    DvnStored::SetText(row, row.m_QUEUE_MANAGER_NAME, qmgr.c_str());

    // No two definitions name the same queue manager; the default one,
    // which a run made only because there was none, stands in no one's way.
    DvnQueueManagerSet others(&db);
    const CString filter = "QUEUE_MANAGER_NAME = " + Quoted(qmgr) + " AND NAME <> " + Quoted(name.c_str()) +
                           " AND NAME <> " + Quoted(kDefaultQueueManager);
    others.m_strFilter = filter;
    others.Open(CRecordset::snapshot, Table("QUEUE_MANAGER"), CRecordset::readOnly);
    const bool taken = !others.IsEOF();
    others.Close();
    if (taken) {
        Report(51090, name);
        return LevelError;
    }
    return level;
}
