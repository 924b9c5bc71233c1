#include "topologysettings.h"

#include <deque>

#include "storedforms.h"
#include "topologyforms.h"

namespace DvnStored {

namespace {

// The rows of the tables, by the kind of column.
template <class Set>
Setting<Set> Num(const char* path, Reading reading, long Set::*column, std::optional<long> top = {}, Pairs map = {},
                 std::optional<long> otherwise = {}) {
    Setting<Set> s{path, reading};
    s.number = column;
    s.numberDefault = top;
    s.map = std::move(map);
    s.otherwise = otherwise;
    return s;
}
template <class Set>
Setting<Set> Txt(const char* path, Reading reading, CString Set::*column, const char* top = nullptr, size_t cut = 0) {
    Setting<Set> s{path, reading};
    s.text = column;
    s.textDefault = top;
    s.cut = cut;
    return s;
}
template <class Set>
Setting<Set> When(const char* path, long Set::*column, const char* when, long whenValue, long Set::*whenColumn,
                  bool loadOnlyWhen) {
    Setting<Set> s{path, Reading::LongWhen};
    s.number = column;
    s.when = when;
    s.whenValue = whenValue;
    s.whenColumn = whenColumn;
    s.loadOnlyWhen = loadOnlyWhen;
    return s;
}



using Common = DvnTopologyCommonSet;
const Pairs kOperationMode = {{1, 2}, {2, 3}, {3, 1}};
const Pairs kOneTwoSwapped = {{1, 2}, {2, 1}};
const Pairs kZeroOneToOneTwo = {{0, 1}, {1, 2}};
const Pairs kZeroOneToTwoOne = {{0, 2}, {1, 1}};
const Pairs kAudit = {{0, 1}, {1, 3}, {2, 2}, {3, 4}};
const Pairs kTaskingOrLoad = {{0, 3}, {1, 2}, {2, 1}};

const std::vector<Setting<Common>> kCommon = {
    Txt("Description", Reading::Text, &Common::m_DESCRIPTION, nullptr, DvnStored::DescriptionChars),
    Txt("Documentation", Reading::Text, &Common::m_DOCUMENTATION),
    Num("ImportDefault.ImportObjectCounter", Reading::Long, &Common::m_IMPORT_OBJ_CNTR, 0),
    Num("ImportDefault.StopOnError", Reading::Bool, &Common::m_STOP_ON_ERROR, 1),
    Num("ImportDefault.ResetToDefault", Reading::Bool, &Common::m_RESET_TO_DEFAULT, 0),
    Num("ImportDefault.IgnoreReferenceErrors", Reading::Bool, &Common::m_IGNORE_REF_ERR, 0),
    Num("ImportDefault.RollbackOnError", Reading::Bool, &Common::m_ROLLBACK_ON_ERROR, 0),
    Num("ImportDefault.Overwrite", Reading::Bool, &Common::m_OVERWRITE, 0),
    Txt("OperationDefault.SystemQualifier", Reading::Text, &Common::m_SYSTEM_QUALIFIER, "DVN", 8),
    Num("OperationDefault.OperationMode", Reading::Map, &Common::m_OPERATION_MODE, 1, kOperationMode),
    Num("OperationDefault.ExternalRestart", Reading::Map, &Common::m_EXTERNAL_RESTART, 1, kOneTwoSwapped),
    Txt("OperationDefault.ExternalRestartContext", Reading::Text, &Common::m_EXTRNL_RSTRT_CNTXT),
    Num("OperationDefault.ClientMessageExpirationTime", Reading::Timed, &Common::m_CLIENT_MSG_EXP_TIM, 900),
    Num("OperationDefault.CheckIntervalOtherSystems", Reading::Interval, &Common::m_CHECK_INT_OTHERS, 360),
    Num("OperationDefault.MessageLayerRefreshInterval", Reading::Interval, &Common::m_MSG_LAYER_REF_INT, 360),
    Num("OperationDefault.MessageRetainPeriod", Reading::Timed, &Common::m_MSG_RETAIN_PERIOD, 604800),
    Num("OperationDefault.ErrorRetainPeriod", Reading::Timed, &Common::m_ERR_RETAIN_PERIOD, 604800),
    Num("OperationDefault.ResponseWaitTime", Reading::Interval, &Common::m_RESPONSE_WAIT_TIME, 120),
    Num("OperationDefault.MessageRetryLimit", Reading::Long, &Common::m_MSG_RETRY_LIMIT, 5),
    Num("SessionDefault.SessionExpirationTime", Reading::Timed, &Common::m_SESSION_EXP_TIME, 360),
    Num("SessionDefault.SessionExpirationCheckInterval", Reading::Interval, &Common::m_SESS_EXP_CHK_INTV, 360),
    Num("SessionDefault.UnifiedLogon", Reading::Bool, &Common::m_UNIFIED_LOGON, 0),
    Num("SessionDefault.MaxInvalidLogons", Reading::Long, &Common::m_MAX_INVALID_LOGON, 3),
    Num("SessionDefault.LogonBlockTime", Reading::Interval, &Common::m_LOGON_BLOCK_TIME, 0),
};

using Prc = DvnTopologyPrcSet;
const std::vector<Setting<Prc>> kProcess = {
    Num("ProcessDefault.AuditDB", Reading::Map, &Prc::m_WRITE_AUDIT_LOG, 1, kAudit),
    Num("ProcessDefault.AuditHX", Reading::Map, &Prc::m_HX_AUDIT_LOG, 1, kAudit),
    Num("ProcessDefault.NotificationMode", Reading::Map, &Prc::m_NOTIFICATION_MODE, 1, kZeroOneToOneTwo),
    Num("ProcessDefault.RefreshPolicy", Reading::Map, &Prc::m_REFRESH_POLICY, 1, kZeroOneToTwoOne),
    Num("ProcessDefault.KeepWorkitems", Reading::Timed, &Prc::m_KEEP_FIN_WRKITM_TI, 0),
    Num("ProcessDefault.KeepProcesses", Reading::Timed, &Prc::m_KEEP_FIN_PRC_TIME, 0),
    Num("ActivityDefault.IncludeProcessAssignment", Reading::Bool, &Prc::m_INCL_PRC_ASSGMNT, 1),
    Num("ActivityDefault.PreferLocalUsers", Reading::Bool, &Prc::m_PREFER_LOCAL_USERS, 1),
    Num("ActivityDefault.PreferNonAbsentUsers", Reading::Bool, &Prc::m_PREFER_NABSENT_USR, 0),
    Num("ActivityDefault.SelectLeastWorkload", Reading::Bool, &Prc::m_SELECT_LEAST_WRKLD, 0),
    Num("ActivityDefault.Substitution", Reading::Bool, &Prc::m_SUBSTITUTION, 1),
    Num("ActivityDefault.NotificationSubstitution", Reading::Bool, &Prc::m_USE_SUBST_FOR_NOT, 1),
    Num("ActivityDefault.DuplicateNotification", Reading::Bool, &Prc::m_SECOND_NOTIFICAT, 0),
    Num("ActivityDefault.CheckoutPossible", Reading::Bool, &Prc::m_CHECKOUT_POSSIBLE, 1),
    Num("ActivityDefault.EnforceImmedExecution", Reading::Bool, &Prc::m_ENFORCE_IM_EXEC, 0),
    Txt("ActivityDefault.AuditFilterDB", Reading::Text, &Prc::m_AUDIT_EVENTS_TO_DB),
    Txt("ActivityDefault.AuditFilterHX", Reading::Text, &Prc::m_AUDIT_EVENTS_TO_HX),
};

using Prg = DvnTopologyPrgSet;
const std::vector<Setting<Prg>> kProgram = {
    Num("ProgramDefault.FencedMode", Reading::Bool, &Prg::m_FENCED_MODE, 1),
    Num("ProgramDefault.KeepLoaded", Reading::Bool, &Prg::m_KEEP_DLL_LOADED, 1),
    Num("ProgramDefault.ExecutionMode", Reading::Map, &Prg::m_EXECUTION_MODE, 1, kOneTwoSwapped),
    Num("ProgramDefault.ExecutionUser", Reading::Map, &Prg::m_EXECUTION_USER, 1, kZeroOneToOneTwo),
    Num("ProgramDefault.InputContainerAccess", Reading::Bool, &Prg::m_IN_CONTAINER_ACC, 1),
    Num("ProgramDefault.OutputContainerAccess", Reading::Bool, &Prg::m_OUT_CONTAINER_ACC, 1),
    Num("ProgramDefault.DllV2Compatibility", Reading::Bool, &Prg::m_DLL_V2_COMPAT, 1),
    Num("ProgramDefault.Trusted", Reading::Bool, &Prg::m_TRUST_MODE, 1),
};

// Below "ServerDefault".<kind>."ServerCommon".
using Svr = DvnTopologySvrSet;
const std::vector<Setting<Svr>> kServerCommon = {
    Num("AttachMode", Reading::Map, &Svr::m_ATTACH_MODE, 1, kZeroOneToOneTwo),
    Num("StartMode", Reading::Map, &Svr::m_START_MODE, 1, kOneTwoSwapped),
    Txt("StartTime", Reading::Event, &Svr::m_START_TIME),
    Txt("StopTime", Reading::Event, &Svr::m_STOP_TIME),
    Num("CheckInterval", Reading::Interval, &Svr::m_CHECK_INTERVAL, 300),
    Num("InstanceMode", Reading::Map, &Svr::m_INSTANCE_MODE, 1, kZeroOneToTwoOne),
    Num("NrOfInstances", Reading::Long, &Svr::m_NUMBER_OF_INSTANCS, 0),
    Num("ExternalControl", Reading::Map, &Svr::m_EXTERNAL_CONTROL, 1, Pairs{{2, 2}}, 1),
    Txt("ExternalControlContext", Reading::Text, &Svr::m_EXTRNL_CNTRL_CNTXT),
};

Pairs PlatformMap() {
    Pairs map;
    for (const auto& p : DvnStored::Platforms) map.emplace_back(p.model, p.stored);
    return map;
}

// The agent settings, of a program execution server's "PEADefault" and of
// the top-level one, by the prefix of their path.
using Svs = DvnTopologySvsSet;
struct AgentColumns {
    long Svs::*tasking;
    long Svs::*maxTasks;
    long Svs::*loadMode;
    long Svs::*maxLoaded;
    long Svs::*support;
};
void AddAgentSettings(std::vector<Setting<Svs>>& table, const std::string& group, const AgentColumns& c) {
    // The paths live as long as the table: the strings are kept beside it.
    static std::deque<std::string> paths;
    auto path = [&](const char* name) { return paths.emplace_back(group + name).c_str(); };
    const char* tasking = path("TaskingMode");
    const char* loadMode = path("DllLoadMode");
    table.push_back(Num(tasking, Reading::Map, c.tasking, 1, kTaskingOrLoad));
    const bool loadOnlyWhen = group == "PEADefault.";
    table.push_back(When(path("MaximumTasksStarted"), c.maxTasks, tasking, 1, c.tasking, loadOnlyWhen));
    table.push_back(Num(loadMode, Reading::Map, c.loadMode, 1, kTaskingOrLoad));
    table.push_back(When(path("MaximumDllsLoaded"), c.maxLoaded, loadMode, 1, c.loadMode, loadOnlyWhen));
    table.push_back(Num(path("SupportMode"), Reading::Map, c.support, 1, kZeroOneToOneTwo));
}

}  // namespace

const std::vector<Setting<Svs>>& SpecificServerSettings() {
    static const std::vector<Setting<Svs>> table = [] {
        std::vector<Setting<Svs>> t = {
            Num("ServerDefault.ExecutionServer.ProcessBehaviour", Reading::Map, &Svs::m_EX_PRC_BEHAVIOR, 1,
                Pairs{{1, 1}, {2, 2}}),
            Num("ServerDefault.ExecutionServer.ImmediateCleanup", Reading::Bool, &Svs::m_EX_IMMEDIATE_CLUP, 0),
            Num("ServerDefault.ExecutionServer.LeastWorkloadSupport", Reading::Bool, &Svs::m_EX_LEAST_WRKLD_SUP, 1),
            Num("ServerDefault.ExecutionServer.NavigationTransactionThreshold", Reading::Long,
                &Svs::m_EX_NAV_TRAN_THRESH, 10),
            Num("ServerDefault.SchedulingServer.NotificationCheckInterval", Reading::Interval, &Svs::m_SCHD_NOTIF_INTVL, 60),
            Num("ServerDefault.SchedulingServer.SuspensionCheckInterval", Reading::Interval, &Svs::m_SCHD_SUSP_INTVL, 3600),
            Num("ServerDefault.SchedulingServer.CreateNotificationItemsThreshold", Reading::Long,
                &Svs::m_SD_CNOT_ITM_THRESH, 100),
            Num("ServerDefault.SchedulingServer.DeleteNotificationItemsThreshold", Reading::Long,
                &Svs::m_SD_DNOT_ITM_THRESH, 100),
            Num("ServerDefault.CleanupServer.CleanupTime", Reading::Interval, &Svs::m_CLEANUP_TIME, 60),
            Num("ServerDefault.CleanupServer.CleanupDelayTime", Reading::Interval, &Svs::m_CLEANUP_DELAY_TIME, 3600),
            Num("ServerDefault.ProgramExecutionServer.Platform", Reading::Map, &Svs::m_PES_PLATFORM, 6, PlatformMap()),
            Num("ServerDefault.ProgramExecutionServer.UserSupport", Reading::Map, &Svs::m_PES_USER_SUPPORT, 1, kZeroOneToOneTwo),
            Txt("ServerDefault.DistributionServer.DistributionReceiveTime", Reading::Event,
                &Svs::m_DIST_RECEIVE_TIME, "ANYTIME"),
        };
        AddAgentSettings(t, "ServerDefault.ProgramExecutionServer.PEADefault.",
                         {&Svs::m_PES_TASKING_MODE, &Svs::m_PES_MAX_PROG_STRT, &Svs::m_PES_DLL_LOAD_MODE,
                          &Svs::m_PES_MAX_DLL_LOADED, &Svs::m_PES_SUPPORT_MODE});
        AddAgentSettings(t, "PEADefault.",
                         {&Svs::m_PEA_TASKING_MODE, &Svs::m_PEA_MAX_PROG_STRT, &Svs::m_PEA_DLL_LOAD_MODE,
                          &Svs::m_PEA_MAX_DLL_LOADED, &Svs::m_PEA_SUPPORT_MODE});
        return t;
    }();
    return table;
}

const std::vector<Setting<Common>>& CommonSettings() { return kCommon; }
const std::vector<Setting<Prc>>& ProcessSettings() { return kProcess; }
const std::vector<Setting<Prg>>& ProgramSettings() { return kProgram; }
const std::vector<Setting<Svr>>& ServerCommonSettings() { return kServerCommon; }

const std::vector<Bit<Prc>>& AutonomyBits() {
    static const std::vector<Bit<Prc>> bits = {{1, &Prc::m_STAFF_AUTONOMY}, {2, &Prc::m_NOTIFICAT_AUTONOMY},
                                               {4, &Prc::m_ADMIN_AUTONOMY}, {8, &Prc::m_CONTROL_AUTONOMY}};
    return bits;
}

const std::vector<Bit<Svs>>& ImplementationSupportBits() {
    static const std::vector<Bit<Svs>> bits = {
        {1, &Svs::m_PES_SUPPORT_EXE}, {2, &Svs::m_PES_SUPPORT_DLL}, {4, &Svs::m_PES_SUPPORT_EXTRNL}};
    return bits;
}

// ---- program execution agents
const std::vector<AgentSetting>& AgentSettings() {
    static const std::vector<AgentSetting> settings = {
        {"TaskingMode", &DvnPEASet::m_TASKING_MODE, kTaskingOrLoad},
        {"MaximumTasksStarted", &DvnPEASet::m_MAX_PROGR_STARTED, {}, "TaskingMode", &DvnPEASet::m_TASKING_MODE},
        {"DllLoadMode", &DvnPEASet::m_DLL_LOAD_MODE, kTaskingOrLoad},
        {"MaximumDllsLoaded", &DvnPEASet::m_MAX_DLLS_LOADED, {}, "DllLoadMode", &DvnPEASet::m_DLL_LOAD_MODE},
        {"SupportMode", &DvnPEASet::m_SUPPORT_MODE, kZeroOneToOneTwo},
    };
    return settings;
}

}  // namespace DvnStored
