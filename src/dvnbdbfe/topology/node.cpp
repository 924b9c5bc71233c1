// Load of nodes: the row of NODE with its platform, and a link to each
// queue manager that runs on it.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "dvnbdbfe.h"
#include "dvntoposets.h"
#include "topologyforms.h"

const DvnConvCoreDbFe::Kind<DvnNodeSet> DvnConvCoreDbFe::NodeKind = {
    .typeName = "Node",
    .table = "NODE",
    .keyColumn = "NODE_ID",
    .plural = "Nodes",
    .progress = 51521,
    .notFound = 51557,
    .lookFirst = true,
    .key = [](const DvnNodeSet& row) { return row.m_NODE_ID; },
    .name = [](const DvnNodeSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Node,
};

void DvnConvCoreDbFe::Nodes(DvnString const& id) { LoadKind(NodeKind, id); }

int DvnConvCoreDbFe::Node(DvnNodeSet& row, DvnfEntity& node) {
    if (!TakeState(node, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = node.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    if (!row.IsFieldNull(&row.m_OPERATING_SYSTEM))
        if (const auto platform = DvnStored::ModelPlatform(row.m_OPERATING_SYSTEM)) attributes("OperatingSystem") = *platform;
    LinkLiveRows<DvnQueueManagerSet>(node, "NodeRunsQueueManager", "QueueManager", "QUEUE_MANAGER", "NODE",
                                     row.m_NODE_ID, &DvnQueueManagerSet::m_QUEUE_MANAGER_ID);
    return LevelOk;
}

template <class Set>
void DvnConvCoreDbFe::LinkLiveRows(DvnfEntity& entity, const char* linkName, const char* targetType,
                                   const char* table, const char* column, const CString& key,
                                   CString Set::*targetKey) {
    std::vector<std::pair<std::string, std::string>> targets;  // name, key
    Set rs(m_pDatabase);
    ReadRows(rs, SelectLive(table, column, Literal(DvnString(key.c_str()))),
             [&](Set& row) { targets.emplace_back(row.m_NAME.str(), (row.*targetKey).str()); });
    std::sort(targets.begin(), targets.end());
    for (const auto& [name, targetOid] : targets) {
        m_pCoreData->AddLinkByOID(entity, DvnfString(linkName), DvnfString(targetType), DvnfString(targetOid));
        DvnfEntity& target = m_pCoreData->GetEntityByOID(DvnfString(targetType), DvnfString(targetOid), false);
        if (target.IsValid() && target.Name().str().empty()) target.Name(DvnfString(name));
    }
}

template void DvnConvCoreDbFe::LinkLiveRows<DvnQueueManagerSet>(DvnfEntity&, const char*, const char*, const char*,
                                                                const char*, const CString&,
                                                                CString DvnQueueManagerSet::*);
template void DvnConvCoreDbFe::LinkLiveRows<DvnSystemSet>(DvnfEntity&, const char*, const char*, const char*,
                                                          const char*, const CString&, CString DvnSystemSet::*);
