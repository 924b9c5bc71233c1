// Recordset classes of the topology: domain, system groups, systems, their
// layered settings, nodes, queue managers, servers, agents and tool sets.
#pragma once

#include "dvncolumns.h"
#include "dvnkernn.h"

// ----------------------------------------------- domain, group and system
#define DVN_TOPOLOGY_COMMON_COLUMNS(C)                                                  \
    C(TEXT, SYSTEM_QUALIFIER) C(LONG, OPERATION_MODE) C(LONG, SESSION_EXP_TIME)         \
    C(LONG, SESS_EXP_CHK_INTV) C(LONG, UNIFIED_LOGON) C(LONG, MAX_INVALID_LOGON)        \
    C(LONG, LOGON_BLOCK_TIME) C(LONG, UNLIMTD_MX_QMSG_SZ) C(LONG, MAX_QRY_MSG_SIZE)     \
    C(LONG, IMPORT_OBJ_CNTR) C(LONG, STOP_ON_ERROR) C(LONG, ROLLBACK_ON_ERROR)          \
    C(LONG, RESET_TO_DEFAULT) C(LONG, IGNORE_REF_ERR) C(LONG, OVERWRITE)                \
    C(LONG, MSG_LAYER_REF_INT) C(LONG, MSG_RETAIN_PERIOD) C(LONG, ERR_RETAIN_PERIOD)    \
    C(LONG, CLIENT_MSG_EXP_TIM) C(LONG, CHECK_INT_OTHERS) C(LONG, EXTERNAL_RESTART)     \
    C(TEXT, EXTRNL_RSTRT_CNTXT) C(LONG, RESPONSE_WAIT_TIME) C(LONG, MSG_RETRY_LIMIT)    \
    C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnTopologyCommonSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTopologyCommonSet, DVN_TOPOLOGY_COMMON_COLUMNS)
};

#define DVN_DOMAIN_COLUMNS(C)                                                           \
    C(TEXT, DOMAIN_ID) C(TEXT, NAME) C(LONG, EXT_VERIFICATION) C(LONG, UNLIMITED_MSG_SIZE) \
    C(LONG, MAX_MSG_SIZE)

class DvnDomainSet : public DvnTopologyCommonSet {
    DVN_DECLARE_RECORDSET(DvnDomainSet, DVN_DOMAIN_COLUMNS)
    // name bare. GetDomainID and GetDefaultDomainID write a database
    // exception on standard output; GetName and GetPrefix let it go up.
    CString GetDomainID(const CString& name, const CString& prefix);
    CString GetDefaultDomainID(const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
    CString GetPrefix(const CString& id, const CString& prefix);
};

#define DVN_SYSTEM_GROUP_COLUMNS(C)                                                     \
    C(TEXT, SYSTEM_GROUP_ID) C(TEXT, NAME) C(TEXT, DV_DOMAIN) C(TEXT, PARENT_SYSTEM_GRP) \
    C(INT, PRIMARY_SG) C(TEXT, AUDIT_QUEUE_MGR_NM) C(TEXT, AUDIT_QUEUE_NAME)

class DvnSystemGroupSet : public DvnTopologyCommonSet {
    DVN_DECLARE_RECORDSET(DvnSystemGroupSet, DVN_SYSTEM_GROUP_COLUMNS)
    // name bare; GetName lets a database exception go up.
    CString GetSysGrpID(const CString& name, const CString& prefix);
    CString GetDefaultSysGrpID(const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
};

#define DVN_SYSTEM_COLUMNS(C)                                                           \
    C(TEXT, SYSTEM_ID) C(TEXT, NAME) C(TEXT, SYSTEM_GROUP) C(TEXT, NODE)                \
    C(TEXT, QUEUE_MANAGER) C(LONG, SYSTEM_IDENTIFIER) C(INT, PRIMARY_SYSTEM)            \
    C(LONG, VERSION) C(LONG, RELEASE) C(LONG, MOD_LEVEL)

class DvnSystemSet : public DvnTopologyCommonSet {
    DVN_DECLARE_RECORDSET(DvnSystemSet, DVN_SYSTEM_COLUMNS)
    // name bare. GetName and GetSystemGroupID let a database exception go
    // up; the others write it on standard output.
    CString GetSystemID(const CString& name, const CString& prefix, bool includeDeleted);
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
    CString GetSystemGroupID(const CString& id, const CString& prefix);
    CString GetDefaultSystemID(const CString& prefix);
    CString GetPrimarySystem(const CString& prefix);
    // Whether some system has this number.
    bool GetSystemIdentifier(long number, const CString& prefix);
};

// ------------------------------------------------------ layered settings
#define DVN_TOPOLOGY_PRC_COLUMNS(C)                                                     \
    C(LONG, WRITE_AUDIT_LOG) C(LONG, NOTIFICATION_MODE) C(LONG, SECOND_NOTIFICAT)       \
    C(LONG, REFRESH_POLICY) C(LONG, KEEP_FIN_PRC_TIME) C(LONG, KEEP_FIN_WRKITM_TI)      \
    C(LONG, CHECKOUT_POSSIBLE) C(LONG, ENFORCE_IM_EXEC) C(LONG, TERMINATE_ON_ERROR)     \
    C(LONG, STAFF_AUTONOMY) C(LONG, NOTIFICAT_AUTONOMY) C(LONG, ADMIN_AUTONOMY)         \
    C(LONG, CONTROL_AUTONOMY) C(LONG, INCL_PRC_ASSGMNT) C(LONG, PREFER_LOCAL_USERS)     \
    C(LONG, PREFER_NABSENT_USR) C(LONG, SELECT_LEAST_WRKLD) C(LONG, SUBSTITUTION)       \
    C(LONG, USE_SUBST_FOR_NOT) C(LONG, HX_AUDIT_LOG) C(TEXT, AUDIT_EVENTS_TO_HX)        \
    C(TEXT, AUDIT_EVENTS_TO_DB)

#define DVN_TOPOLOGY_PRG_COLUMNS(C)                                                     \
    C(LONG, FENCED_MODE) C(LONG, KEEP_DLL_LOADED) C(LONG, EXECUTION_MODE)               \
    C(LONG, EXECUTION_USER) C(LONG, IN_CONTAINER_ACC) C(LONG, OUT_CONTAINER_ACC)        \
    C(LONG, TRUST_MODE) C(LONG, DLL_V2_COMPAT)

#define DVN_TOPOLOGY_SVR_COLUMNS(C)                                                     \
    C(LONG, SERVER_TYPE) C(LONG, INSTANCE_MODE) C(LONG, EXTERNAL_CONTROL)               \
    C(TEXT, EXTRNL_CNTRL_CNTXT) C(LONG, ATTACH_MODE) C(LONG, START_MODE)                \
    C(TEXT, START_TIME) C(TEXT, STOP_TIME) C(LONG, NUMBER_OF_INSTANCS) C(LONG, CHECK_INTERVAL)

#define DVN_TOPOLOGY_SVS_COLUMNS(C)                                                     \
    C(LONG, PEA_TASKING_MODE) C(LONG, PEA_SUPPORT_MODE) C(LONG, PEA_MAX_PROG_STRT)      \
    C(LONG, PEA_MAX_DLL_LOADED) C(LONG, PEA_DLL_LOAD_MODE) C(LONG, PES_PLATFORM)        \
    C(LONG, PES_USER_SUPPORT) C(LONG, PES_SUPPORT_DLL) C(LONG, PES_SUPPORT_EXE)         \
    C(LONG, PES_SUPPORT_EXTRNL) C(LONG, PES_TASKING_MODE) C(LONG, PES_SUPPORT_MODE)     \
    C(LONG, PES_MAX_PROG_STRT) C(LONG, PES_MAX_DLL_LOADED) C(LONG, PES_DLL_LOAD_MODE)   \
    C(LONG, EX_IMMEDIATE_CLUP) C(LONG, SD_DNOT_ITM_THRESH) C(LONG, SD_CNOT_ITM_THRESH)  \
    C(LONG, EX_NAV_TRAN_THRESH) C(LONG, EX_LEAST_WRKLD_SUP) C(LONG, EX_PRC_BEHAVIOR)    \
    C(LONG, CLEANUP_TIME) C(LONG, CLEANUP_DELAY_TIME) C(TEXT, DIST_RECEIVE_TIME)        \
    C(LONG, SCHD_SUSP_INTVL) C(LONG, SCHD_NOTIF_INTVL)

class DvnTopologyPrcSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTopologyPrcSet, DVN_TOPOLOGY_PRC_COLUMNS)
};
class DvnTopologyPrgSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTopologyPrgSet, DVN_TOPOLOGY_PRG_COLUMNS)
};
class DvnTopologySvrSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTopologySvrSet, DVN_TOPOLOGY_SVR_COLUMNS)
};
class DvnTopologySvsSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTopologySvsSet, DVN_TOPOLOGY_SVS_COLUMNS)
};

// The key of the level object, first; then the family's columns.
#define DVN_DOMAIN_KEY_COLUMNS(C) C(TEXT, DOMAIN_ID)
#define DVN_SYSTEM_GROUP_KEY_COLUMNS(C) C(TEXT, SYSTEM_GROUP_ID)
#define DVN_SYSTEM_KEY_COLUMNS(C) C(TEXT, SYSTEM_ID)

#define DVN_DECLARE_LEVEL_SET(Class, Base, KEY)                                         \
    class Class : public Base {                                                         \
        DVN_DECLARE_RECORDSET(Class, KEY)                                               \
    };

DVN_DECLARE_LEVEL_SET(DvnDomainPrcSet, DvnTopologyPrcSet, DVN_DOMAIN_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemGroupPrcSet, DvnTopologyPrcSet, DVN_SYSTEM_GROUP_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemPrcSet, DvnTopologyPrcSet, DVN_SYSTEM_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnDomainPrgSet, DvnTopologyPrgSet, DVN_DOMAIN_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemGroupPrgSet, DvnTopologyPrgSet, DVN_SYSTEM_GROUP_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemPrgSet, DvnTopologyPrgSet, DVN_SYSTEM_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnDomainSvrSet, DvnTopologySvrSet, DVN_DOMAIN_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemGroupSvrSet, DvnTopologySvrSet, DVN_SYSTEM_GROUP_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemSvrSet, DvnTopologySvrSet, DVN_SYSTEM_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnDomainSvsSet, DvnTopologySvsSet, DVN_DOMAIN_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemGroupSvsSet, DvnTopologySvsSet, DVN_SYSTEM_GROUP_KEY_COLUMNS)
DVN_DECLARE_LEVEL_SET(DvnSystemSvsSet, DvnTopologySvsSet, DVN_SYSTEM_KEY_COLUMNS)

// ---------------------------------------------------- nodes, queue managers
#define DVN_NODE_COLUMNS(C)                                                             \
    C(TEXT, NODE_ID) C(TEXT, NAME) C(LONG, OPERATING_SYSTEM) C(INT, CHECKED_OUT)        \
    C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnNodeSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnNodeSet, DVN_NODE_COLUMNS)
    // name in quoted form; GetName lets a database exception go up.
    CString GetNodeID(const CString& name, const CString& prefix);
    CString GetDefaultNodeID(const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
};

#define DVN_QUEUE_MANAGER_COLUMNS(C)                                                    \
    C(TEXT, QUEUE_MANAGER_ID) C(TEXT, NAME) C(TEXT, NODE) C(LONG, SYSTEM_SEL)           \
    C(TEXT, QUEUE_MANAGER_NAME) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)             \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnQueueManagerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnQueueManagerSet, DVN_QUEUE_MANAGER_COLUMNS)
    // name in quoted form; GetName and GetQmgrName let a database exception go up.
    CString GetQueueManagerID(const CString& name, const CString& prefix);
    CString GetDefaultQueueManagerID(const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
    CString GetQmgrName(const CString& id, const CString& prefix);
    // qmgrName bare, name in quoted form: false when another definition has
    // this queue manager name; true when none has, or the open fails.
    bool IsValidQueueManagerName(const CString& qmgrName, const CString& name, const CString& prefix);
};

// ----------------------------------------------------------------- servers
// The common server columns in two parts: a derived class exchanges its own
// columns between them.
#define DVN_SERVER_HEAD_COLUMNS(C)                                                      \
    C(TEXT, SERVER_ID) C(TEXT, NAME) C(TEXT, SYSTEM) C(LONG, ATTACH_MODE)               \
    C(LONG, START_MODE) C(TEXT, START_TIME) C(TEXT, STOP_TIME) C(LONG, INSTANCE_MODE)   \
    C(LONG, NUMBER_OF_INSTANCS) C(LONG, CHECK_INTERVAL) C(LONG, EXTERNAL_CONTROL)       \
    C(TEXT, EXTRNL_CNTRL_CNTXT)
#define DVN_SERVER_TAIL_COLUMNS(C)                                                      \
    C(LONG, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)
#define DVN_SERVER_COLUMNS(C) DVN_SERVER_HEAD_COLUMNS(C) DVN_SERVER_TAIL_COLUMNS(C)

// GATEWAY_SERVER and MODELLING_SERVER, and the base of the other kinds.
class DvnServerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnServerSet, DVN_SERVER_COLUMNS)
    // name and system bare, table bare (as "GATEWAY_SERVER"); a database
    // exception is written on standard output.
    CString GetServerID(const CString& name, const CString& system, const CString& prefix, const CString& table);

protected:
    void ExchangeHead(CFieldExchange* pFX);
    void ExchangeTail(CFieldExchange* pFX);
};

#define DVN_PE_SERVER_OWN_COLUMNS(C)                                                    \
    C(LONG, PLATFORM) C(LONG, SUPPORT_DLL) C(LONG, SUPPORT_EXE) C(LONG, SUPPORT_EXTERNAL) \
    C(LONG, USER_SUPPORT) C(LONG, TASKING_MODE) C(LONG, MAX_PROGR_STARTED)              \
    C(LONG, SUPPORT_MODE) C(LONG, DLL_LOAD_MODE) C(LONG, MAX_DLLS_LOADED)
#define DVN_CLEANUP_SERVER_OWN_COLUMNS(C) C(LONG, CLEANUP_TIME) C(LONG, CLEANUP_DELAY_TIME)
#define DVN_DISTRIBUTION_SERVER_OWN_COLUMNS(C) C(TEXT, DIST_RECEIVE_TIME)
#define DVN_EXECUTION_SERVER_OWN_COLUMNS(C)                                             \
    C(LONG, IMMEDIATE_CLEANUP) C(LONG, NAV_TRAN_THRESH) C(LONG, LEAST_WORKLOAD_SUP)     \
    C(LONG, PROCESS_BEHAVIOR)
#define DVN_SCHEDULING_SERVER_OWN_COLUMNS(C)                                            \
    C(LONG, NOTIFICATION_INTVL) C(LONG, SUSPENSION_INTVL) C(LONG, DEL_NOT_ITM_THRESH)   \
    C(LONG, CRE_NOT_ITM_THRESH)

class DvnPEServerSet : public DvnServerSet {
    DVN_DECLARE_RECORDSET(DvnPEServerSet, DVN_PE_SERVER_OWN_COLUMNS)
    // name and system bare. GetPESID and GetPESIDNoSystem write a database
    // exception on standard output; GetSystem and GetName let it go up.
    CString GetPESID(const CString& name, const CString& system, const CString& prefix);
    // system receives the row's SYSTEM.
    CString GetPESIDNoSystem(const CString& name, CString& system, const CString& prefix);
    CString GetSystem(const CString& id, const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
};

class DvnCleanupServerSet : public DvnServerSet {
    DVN_DECLARE_RECORDSET(DvnCleanupServerSet, DVN_CLEANUP_SERVER_OWN_COLUMNS)
};
class DvnDistributionServerSet : public DvnServerSet {
    DVN_DECLARE_RECORDSET(DvnDistributionServerSet, DVN_DISTRIBUTION_SERVER_OWN_COLUMNS)
};
class DvnExecutionServerSet : public DvnServerSet {
    DVN_DECLARE_RECORDSET(DvnExecutionServerSet, DVN_EXECUTION_SERVER_OWN_COLUMNS)
};
class DvnSchedulingServerSet : public DvnServerSet {
    DVN_DECLARE_RECORDSET(DvnSchedulingServerSet, DVN_SCHEDULING_SERVER_OWN_COLUMNS)
};

#define DVN_ADMIN_SERVER_COLUMNS(C)                                                     \
    C(TEXT, SERVER_ID) C(TEXT, NAME) C(TEXT, SYSTEM) C(LONG, CHECKED_OUT)               \
    C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnAdminServerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnAdminServerSet, DVN_ADMIN_SERVER_COLUMNS)
};

#define DVN_USER_PE_SERVER_COLUMNS(C)                                                   \
    C(TEXT, SERVER_ID) C(TEXT, NAME) C(TEXT, SYSTEM) C(LONG, HXSYSTEM)                  \
    C(LONG, MESSAGE_FORMAT) C(TEXT, QMGRNAME) C(TEXT, PHYSICALQUEUE) C(LONG, VERSION)   \
    C(LONG, RELEASE) C(LONG, MOD_LEVEL) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)     \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnUPEServerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnUPEServerSet, DVN_USER_PE_SERVER_COLUMNS)
    // As the lookups of DvnPEServerSet, on USER_PE_SERVER.
    CString GetUPESID(const CString& name, const CString& system, const CString& prefix);
    CString GetUPESIDNoSystem(const CString& name, CString& system, const CString& prefix);
    DvnfString GetName(const CString& id, const CString& prefix);
};

// PE_AGENT holds one column more than the class exchanges: NAME, the user id
// of the agent's person, kept by the data definition (see docs/schema.md).
#define DVN_PE_AGENT_COLUMNS(C)                                                         \
    C(TEXT, PE_AGENT_ID) C(TEXT, ASSOC_USER) C(LONG, TASKING_MODE)                      \
    C(LONG, MAX_PROGR_STARTED) C(LONG, SUPPORT_MODE) C(LONG, DLL_LOAD_MODE)             \
    C(LONG, MAX_DLLS_LOADED) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)                \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnPEASet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPEASet, DVN_PE_AGENT_COLUMNS)
    // name bare; a database exception is written on standard output.
    CString GetPEAID(const CString& name, const CString& prefix);
};

// --------------------------------------------------------------- tool sets
#define DVN_TOOL_SET_DEFAULT_COLUMNS(C)                                                 \
    C(TEXT, NAME) C(TEXT, PROG_ACT_NAME) C(TEXT, PROC_ACT_NAME) C(TEXT, INFO_ACT_NAME)  \
    C(TEXT, BLK_ACT_NAME) C(TEXT, BUN_ACT_NAME) C(INT, CHECKED_OUT)                     \
    C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION)

class DvnToolDefaultSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnToolDefaultSet, DVN_TOOL_SET_DEFAULT_COLUMNS)
};

#define DVN_TOOL_SET_ICONS_COLUMNS(C)                                                   \
    C(TEXT, TOOL_SET_NAME) C(TEXT, NAME) C(INT, IS_INFO_ACT) C(INT, IS_PROC_ACT)        \
    C(INT, IS_PROG_ACT) C(INT, IS_BUN_ACT) C(INT, IS_BLK_ACT) C(TEXT, DESCRIPTION)

class DvnToolIconSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnToolIconSet, DVN_TOOL_SET_ICONS_COLUMNS)
};

// An external domain. No operation reads or writes it, and the schema holds
// no table for it.
#define DVN_EXTERNAL_DOMAIN_COLUMNS(C)                                                  \
    C(TEXT, EXTERNAL_DOMAIN_ID) C(TEXT, NAME) C(TEXT, DV_DOMAIN) C(LONG, PROTOCOL)      \
    C(LONG, DATASTREAM) C(LONG, TYPE) C(TEXT, ADDRESS) C(LONG, VERSION) C(LONG, RELEASE) \
    C(LONG, MODLEVEL) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION)  \
    C(DOC, DOCUMENTATION)

class DvnExternalDomainSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnExternalDomainSet, DVN_EXTERNAL_DOMAIN_COLUMNS)
};
