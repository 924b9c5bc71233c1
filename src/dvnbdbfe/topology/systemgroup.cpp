// Load of system groups: the row of SYSTEM_GROUP with its domain and parent,
// and its settings, of which only what the group holds itself.
#include "dvnbdbfe.h"
#include "dvntoposets.h"

const DvnConvCoreDbFe::Kind<DvnSystemGroupSet> DvnConvCoreDbFe::SystemGroupKind = {
    .typeName = "SystemGroup",
    .table = "SYSTEM_GROUP",
    .keyColumn = "SYSTEM_GROUP_ID",
    .plural = "SystemGroups",
    .progress = 51518,
    .notFound = 51554,
    .lookFirst = true,
    .key = [](const DvnSystemGroupSet& row) { return row.m_SYSTEM_GROUP_ID; },
    .name = [](const DvnSystemGroupSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::SystemGroup,
};

void DvnConvCoreDbFe::SystemGroups(DvnString const& id) { LoadKind(SystemGroupKind, id); }

int DvnConvCoreDbFe::SystemGroup(DvnSystemGroupSet& row, DvnfEntity& group) {
    if (!TakeState(group, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = group.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    LinkThroughRow<DvnDomainSet>(group, "GroupIsInDomain", "Domain", "DV_DOMAIN", "DOMAIN_ID", row, row.m_DV_DOMAIN);
    LinkThroughRow<DvnSystemGroupSet>(group, "GroupHasParentGroup", "SystemGroup", "SYSTEM_GROUP", "SYSTEM_GROUP_ID",
                                      row, row.m_PARENT_SYSTEM_GRP);
    CopyText(row, row.m_AUDIT_QUEUE_MGR_NM, attributes("AuditQueueManagerName"));
    CopyText(row, row.m_AUDIT_QUEUE_NAME, attributes("AuditQueueName"));
    LevelSettings<DvnSystemGroupPrcSet, DvnSystemGroupPrgSet, DvnSystemGroupSvsSet, DvnSystemGroupSvrSet>(
        group, row, "SYSTEMGRP_", "SYSTEM_GROUP_ID", row.m_SYSTEM_GROUP_ID);
    return LevelOk;
}
