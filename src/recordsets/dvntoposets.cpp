#include "dvntoposets.h"

#include "dvnlookup.h"

using dvnlookup::FirstRowQuiet;
using dvnlookup::FirstValue;
using dvnlookup::FirstValueQuiet;
using dvnlookup::Literal;
using dvnlookup::WithTombstoneRule;

DVN_IMPLEMENT_RECORDSET(DvnTopologyCommonSet, DVN_TOPOLOGY_COMMON_COLUMNS, "DV_DOMAIN")
DVN_IMPLEMENT_DERIVED(DvnDomainSet, DvnTopologyCommonSet, DVN_DOMAIN_COLUMNS, "DV_DOMAIN")
DVN_IMPLEMENT_DERIVED(DvnSystemGroupSet, DvnTopologyCommonSet, DVN_SYSTEM_GROUP_COLUMNS, "SYSTEM_GROUP")
DVN_IMPLEMENT_DERIVED(DvnSystemSet, DvnTopologyCommonSet, DVN_SYSTEM_COLUMNS, "SYSTEM")

DVN_IMPLEMENT_RECORDSET(DvnTopologyPrcSet, DVN_TOPOLOGY_PRC_COLUMNS, "DV_DOMAIN_PRC_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnTopologyPrgSet, DVN_TOPOLOGY_PRG_COLUMNS, "DV_DOMAIN_PRG_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnTopologySvrSet, DVN_TOPOLOGY_SVR_COLUMNS, "DV_DOMAIN_SVR_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnTopologySvsSet, DVN_TOPOLOGY_SVS_COLUMNS, "DV_DOMAIN_SVS_ATTR")
DVN_IMPLEMENT_DERIVED(DvnDomainPrcSet, DvnTopologyPrcSet, DVN_DOMAIN_KEY_COLUMNS, "DV_DOMAIN_PRC_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemGroupPrcSet, DvnTopologyPrcSet, DVN_SYSTEM_GROUP_KEY_COLUMNS, "SYSTEMGRP_PRC_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemPrcSet, DvnTopologyPrcSet, DVN_SYSTEM_KEY_COLUMNS, "SYSTEM_PRC_ATTR")
DVN_IMPLEMENT_DERIVED(DvnDomainPrgSet, DvnTopologyPrgSet, DVN_DOMAIN_KEY_COLUMNS, "DV_DOMAIN_PRG_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemGroupPrgSet, DvnTopologyPrgSet, DVN_SYSTEM_GROUP_KEY_COLUMNS, "SYSTEMGRP_PRG_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemPrgSet, DvnTopologyPrgSet, DVN_SYSTEM_KEY_COLUMNS, "SYSTEM_PRG_ATTR")
DVN_IMPLEMENT_DERIVED(DvnDomainSvrSet, DvnTopologySvrSet, DVN_DOMAIN_KEY_COLUMNS, "DV_DOMAIN_SVR_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemGroupSvrSet, DvnTopologySvrSet, DVN_SYSTEM_GROUP_KEY_COLUMNS, "SYSTEMGRP_SVR_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemSvrSet, DvnTopologySvrSet, DVN_SYSTEM_KEY_COLUMNS, "SYSTEM_SVR_ATTR")
DVN_IMPLEMENT_DERIVED(DvnDomainSvsSet, DvnTopologySvsSet, DVN_DOMAIN_KEY_COLUMNS, "DV_DOMAIN_SVS_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemGroupSvsSet, DvnTopologySvsSet, DVN_SYSTEM_GROUP_KEY_COLUMNS, "SYSTEMGRP_SVS_ATTR")
DVN_IMPLEMENT_DERIVED(DvnSystemSvsSet, DvnTopologySvsSet, DVN_SYSTEM_KEY_COLUMNS, "SYSTEM_SVS_ATTR")

DVN_IMPLEMENT_RECORDSET(DvnNodeSet, DVN_NODE_COLUMNS, "NODE")
DVN_IMPLEMENT_RECORDSET(DvnQueueManagerSet, DVN_QUEUE_MANAGER_COLUMNS, "QUEUE_MANAGER")

DVN_IMPLEMENT_RECORDSET(DvnServerSet, DVN_SERVER_COLUMNS, "GATEWAY_SERVER")
DVN_IMPLEMENT_BETWEEN(DvnPEServerSet, DvnServerSet, DVN_PE_SERVER_OWN_COLUMNS, "PE_SERVER")
DVN_IMPLEMENT_BETWEEN(DvnCleanupServerSet, DvnServerSet, DVN_CLEANUP_SERVER_OWN_COLUMNS, "CLEANUP_SERVER")
DVN_IMPLEMENT_BETWEEN(DvnDistributionServerSet, DvnServerSet, DVN_DISTRIBUTION_SERVER_OWN_COLUMNS, "DISTRIBUTION_SRV")
DVN_IMPLEMENT_BETWEEN(DvnExecutionServerSet, DvnServerSet, DVN_EXECUTION_SERVER_OWN_COLUMNS, "EXECUTION_SERVER")
DVN_IMPLEMENT_BETWEEN(DvnSchedulingServerSet, DvnServerSet, DVN_SCHEDULING_SERVER_OWN_COLUMNS, "SCHEDULING_SERVER")
DVN_IMPLEMENT_RECORDSET(DvnAdminServerSet, DVN_ADMIN_SERVER_COLUMNS, "ADMIN_SERVER")
DVN_IMPLEMENT_RECORDSET(DvnUPEServerSet, DVN_USER_PE_SERVER_COLUMNS, "USER_PE_SERVER")
DVN_IMPLEMENT_RECORDSET(DvnPEASet, DVN_PE_AGENT_COLUMNS, "PE_AGENT")
DVN_IMPLEMENT_RECORDSET(DvnToolDefaultSet, DVN_TOOL_SET_DEFAULT_COLUMNS, "TOOL_SET_DEFAULT")
DVN_IMPLEMENT_RECORDSET(DvnToolIconSet, DVN_TOOL_SET_ICONS_COLUMNS, "TOOL_SET_ICONS")
DVN_IMPLEMENT_RECORDSET(DvnExternalDomainSet, DVN_EXTERNAL_DOMAIN_COLUMNS, "EXTERNAL_DOMAIN")

void DvnServerSet::ExchangeHead(CFieldExchange* pFX) {
    pFX->SetFieldType(CFieldExchange::outputColumn);
    DVN_EXCHANGE_COLUMNS(DVN_SERVER_HEAD_COLUMNS)
}

void DvnServerSet::ExchangeTail(CFieldExchange* pFX) {
    DVN_EXCHANGE_COLUMNS(DVN_SERVER_TAIL_COLUMNS)
}

// ------------------------------------------------------------------ domain
CString DvnDomainSet::GetDomainID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "DV_DOMAIN", "NAME = " + Literal(name), "[DOMAIN_ID]");
}

CString DvnDomainSet::GetDefaultDomainID(const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "DV_DOMAIN", CString(), "[DOMAIN_ID]");
}

DvnfString DvnDomainSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "DV_DOMAIN", "DOMAIN_ID = " + Literal(id), "[NAME]");
}

CString DvnDomainSet::GetPrefix(const CString& id, const CString& prefix) {
    return FirstValue(*this, prefix + "DV_DOMAIN", "DOMAIN_ID = " + Literal(id), "[SYSTEM_QUALIFIER]");
}

// ------------------------------------------------------------ system group
CString DvnSystemGroupSet::GetSysGrpID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "SYSTEM_GROUP", "NAME = " + Literal(name), "[SYSTEM_GROUP_ID]");
}

CString DvnSystemGroupSet::GetDefaultSysGrpID(const CString& prefix) {
    // The lowest key, one row read: both databases give the same default.
    return FirstValueQuiet(*this, prefix + "SYSTEM_GROUP",
                           "SYSTEM_GROUP_ID = (SELECT MIN(SYSTEM_GROUP_ID) FROM " + prefix + "SYSTEM_GROUP)",
                           "[SYSTEM_GROUP_ID]");
}

DvnfString DvnSystemGroupSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "SYSTEM_GROUP", "SYSTEM_GROUP_ID = " + Literal(id), "[NAME]");
}

// ------------------------------------------------------------------ system
CString DvnSystemSet::GetSystemID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValueQuiet(*this, prefix + "SYSTEM", WithTombstoneRule("NAME = " + Literal(name), includeDeleted),
                           "[SYSTEM_ID]");
}

DvnfString DvnSystemSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "SYSTEM",
                                  WithTombstoneRule("SYSTEM_ID = " + Literal(id), includeDeleted), "[NAME]");
}

CString DvnSystemSet::GetSystemGroupID(const CString& id, const CString& prefix) {
    return FirstValue(*this, prefix + "SYSTEM", "SYSTEM_ID = " + Literal(id), "[SYSTEM_GROUP]");
}

CString DvnSystemSet::GetDefaultSystemID(const CString& prefix) {
    // The lowest key, one row read: both databases give the same default.
    return FirstValueQuiet(*this, prefix + "SYSTEM", "SYSTEM_ID = (SELECT MIN(SYSTEM_ID) FROM " + prefix + "SYSTEM)",
                           "[SYSTEM_ID]");
}

CString DvnSystemSet::GetPrimarySystem(const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "SYSTEM", "PRIMARY_SYSTEM = 1", "[SYSTEM_ID]");
}

bool DvnSystemSet::GetSystemIdentifier(long number, const CString& prefix) {
    CString filter;
    filter.Format("SYSTEM_IDENTIFIER = %ld", number);
    return FirstRowQuiet(*this, prefix + "SYSTEM", filter, false, [] { return true; });
}

// ------------------------------------------------- node and queue manager
CString DvnNodeSet::GetNodeID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "NODE", "NAME = " + name, "[NODE_ID]");
}

CString DvnNodeSet::GetDefaultNodeID(const CString& prefix) {
    // The live row of the lowest key: a tombstone is no default, and both
    // databases give the same one.
    return FirstValueQuiet(*this, prefix + "NODE",
                           "NODE_ID = (SELECT MIN(NODE_ID) FROM " + prefix + "NODE WHERE CHECKED_OUT <> 4)",
                           "[NODE_ID]");
}

DvnfString DvnNodeSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "NODE", "NODE_ID = " + Literal(id), "[NAME]");
}

CString DvnQueueManagerSet::GetQueueManagerID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "QUEUE_MANAGER", "NAME = " + name, "[QUEUE_MANAGER_ID]");
}

CString DvnQueueManagerSet::GetDefaultQueueManagerID(const CString& prefix) {
    // As the default node: the live row of the lowest key.
    return FirstValueQuiet(
        *this, prefix + "QUEUE_MANAGER",
        "QUEUE_MANAGER_ID = (SELECT MIN(QUEUE_MANAGER_ID) FROM " + prefix + "QUEUE_MANAGER WHERE CHECKED_OUT <> 4)",
        "[QUEUE_MANAGER_ID]");
}

DvnfString DvnQueueManagerSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "QUEUE_MANAGER", "QUEUE_MANAGER_ID = " + Literal(id), "[NAME]");
}

CString DvnQueueManagerSet::GetQmgrName(const CString& id, const CString& prefix) {
    return FirstValue(*this, prefix + "QUEUE_MANAGER", "QUEUE_MANAGER_ID = " + Literal(id), "[QUEUE_MANAGER_NAME]");
}

bool DvnQueueManagerSet::IsValidQueueManagerName(const CString& qmgrName, const CString& name,
                                                 const CString& prefix) {
    CString filter = "(QUEUE_MANAGER_NAME = " + Literal(qmgrName) + ") AND (NAME <> " + name + ")";
    return FirstRowQuiet(*this, prefix + "QUEUE_MANAGER", filter, true, [] { return false; });
}

// ---------------------------------------------------------------- servers
namespace {
CString NameAndSystem(const CString& name, const CString& system) {
    return "NAME = " + Literal(name) + " AND SYSTEM = " + Literal(system);
}
}  // namespace

CString DvnServerSet::GetServerID(const CString& name, const CString& system, const CString& prefix,
                                  const CString& table) {
    return FirstValueQuiet(*this, prefix + table, NameAndSystem(name, system), "[SERVER_ID]");
}

CString DvnPEServerSet::GetPESID(const CString& name, const CString& system, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "PE_SERVER", NameAndSystem(name, system), "[SERVER_ID]");
}

CString DvnPEServerSet::GetPESIDNoSystem(const CString& name, CString& system, const CString& prefix) {
    return FirstRowQuiet(*this, prefix + "PE_SERVER", "NAME = " + Literal(name), CString(), [&] {
        system = m_SYSTEM;
        return m_SERVER_ID;
    });
}

CString DvnPEServerSet::GetSystem(const CString& id, const CString& prefix) {
    return FirstValue(*this, prefix + "PE_SERVER", "SERVER_ID = " + Literal(id), "[SYSTEM]");
}

DvnfString DvnPEServerSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "PE_SERVER", "SERVER_ID = " + Literal(id), "[NAME]");
}

CString DvnUPEServerSet::GetUPESID(const CString& name, const CString& system, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "USER_PE_SERVER", NameAndSystem(name, system), "[SERVER_ID]");
}

CString DvnUPEServerSet::GetUPESIDNoSystem(const CString& name, CString& system, const CString& prefix) {
    return FirstRowQuiet(*this, prefix + "USER_PE_SERVER", "NAME = " + Literal(name), CString(), [&] {
        system = m_SYSTEM;
        return m_SERVER_ID;
    });
}

DvnfString DvnUPEServerSet::GetName(const CString& id, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "USER_PE_SERVER", "SERVER_ID = " + Literal(id), "[NAME]");
}

CString DvnPEASet::GetPEAID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "PE_AGENT", "NAME = " + Literal(name), "[PE_AGENT_ID]");
}
