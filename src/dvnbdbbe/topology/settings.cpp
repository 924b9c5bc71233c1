// The layered settings of the topology: the same families of settings stand
// at the domain, the system group and the system, one table per family and
// level. One table of settings per family says where each column comes
// from and how it is read; one engine applies it at every level. At the
// domain (top) a setting that the entity leaves out gets its default, below
// it the column is null: the level above counts.
#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "dvnbdbbe.h"
#include "dvntoposets.h"
#include "storedforms.h"
#include "topologyforms.h"

namespace {

enum class Reading {
    Bool,      // AsBool, stored 1 or 0
    Long,      // AsLong
    LongWhen,  // AsLong, only while another attribute has a given value
    Map,       // AsLong through a table of values
    Interval,  // a duration in seconds; 0 counts as not given
    Timed,     // "Type" 0: 0, 1: 999999999 (no limit), 2: the duration
    Event,     // the stored text of a time event
    Text,      // AsString, cut when the column says so
};

// Where a column of the family Set comes from and how it is read.
template <class Set>
struct Setting {
    const char* path;  // dotted, below the reader the family starts from
    Reading reading;
    long Set::*number = nullptr;
    CString Set::*text = nullptr;
    std::optional<long> numberDefault = {};  // at the domain; none: null there too
    const char* textDefault = nullptr;
    std::vector<std::pair<long, long>> map = {};  // Map: given value, stored value
    std::optional<long> otherwise = {};           // Map: stored for every other value
    size_t cut = 0;                               // Text: at most so many characters
    const char* when = nullptr;                   // LongWhen: this attribute ...
    long whenValue = 0;                           // ... has this value
};

// The reader at a dotted path below base.
DvnfAttributeDataReader At(DvnfAttributeDataReader reader, const std::string& path) {
    size_t start = 0;
    for (size_t dot; (dot = path.find('.', start)) != std::string::npos; start = dot + 1)
        reader = reader(path.substr(start, dot - start).c_str());
    return reader(path.substr(start).c_str());
}

// The rows of the tables, by the kind of column.
using Pairs = std::vector<std::pair<long, long>>;
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
Setting<Set> When(const char* path, long Set::*column, const char* when, long whenValue) {
    Setting<Set> s{path, Reading::LongWhen};
    s.number = column;
    s.when = when;
    s.whenValue = whenValue;
    return s;
}

// A value outside what a setting knows.
struct Unknown {
    std::string path;
    long value;
};

// Applies the table to the row: each column gets its reading, or, when the
// entity does not give it, its default at the top and null below.
template <class Set>
void Apply(DvnConvCoreDbBe& be, const DvnfAttributeDataReader& base, Set& row,
           const std::vector<Setting<Set>>& table, bool top, std::vector<Unknown>& unknown) {
    for (const Setting<Set>& s : table) {
        const DvnfAttributeDataReader attribute = At(base, s.path);
        std::optional<long> number;
        std::optional<std::string> text;
        const bool defined = attribute.IsDefined();
        auto interval = [&](const DvnfAttributeDataReader& duration) {
            const long seconds = be.SetTimeInterval(duration);
            if (seconds != 0) number = seconds;
        };
        switch (s.reading) {
            case Reading::Bool:
                if (defined) number = attribute.AsBool(false) ? 1 : 0;
                break;
            case Reading::Long:
                if (defined) number = attribute.AsLong(0);
                break;
            case Reading::LongWhen: {
                const DvnfAttributeDataReader condition = At(base, s.when);
                if (defined && condition.IsDefined() && condition.AsLong(0) == s.whenValue)
                    number = attribute.AsLong(0);
                break;
            }
            case Reading::Map:
                if (defined) {
                    const long value = attribute.AsLong(0);
                    for (const auto& [given, stored] : s.map)
                        if (given == value) number = stored;
                    if (!number && s.otherwise) number = s.otherwise;
                    if (!number) unknown.push_back({s.path, value});
                }
                break;
            case Reading::Interval:
                if (defined) interval(attribute);
                break;
            case Reading::Timed:
                if (defined) {
                    const long type = attribute("Type").AsLong(0);
                    if (type == 0)
                        number = 0;
                    else if (type == 1)
                        number = 999999999;
                    else if (type == 2)
                        interval(attribute);
                    else
                        unknown.push_back({std::string(s.path) + ".Type", type});
                }
                break;
            case Reading::Event:
                if (defined) text = be.SetTimeEvent(attribute).c_str();
                break;
            case Reading::Text:
                if (defined) {
                    std::string value = attribute.AsString("").str();
                    text = s.cut ? DvnStored::Cut(value, s.cut) : value;
                }
                break;
        }
        if (!number && !text && top) {
            number = s.numberDefault;
            if (s.textDefault) text = s.textDefault;
        }
        if (s.number) {
            if (number)
                row.*s.number = *number;
            else
                row.SetFieldNull(&(row.*s.number));
        } else if (text) {
            DvnStored::SetText(row, row.*s.text, *text);
        } else {
            row.SetFieldNull(&(row.*s.text));
        }
    }
}

// ------------------------------------------------------------------ the tables

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
    table.push_back(When(path("MaximumTasksStarted"), c.maxTasks, tasking, 1));
    table.push_back(Num(loadMode, Reading::Map, c.loadMode, 1, kTaskingOrLoad));
    table.push_back(When(path("MaximumDllsLoaded"), c.maxLoaded, loadMode, 1));
    table.push_back(Num(path("SupportMode"), Reading::Map, c.support, 1, kZeroOneToOneTwo));
}

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

// A bit set read into number columns: each bit gives 1 to its column, the
// others 0. Not given: the defaults at the top, null below.
template <class Set>
void ApplyBits(Set& row, const DvnfAttributeDataReader& attribute, bool top,
               std::initializer_list<std::pair<long, long Set::*>> bits, std::initializer_list<long> defaults,
               long allOn = 0) {
    if (!attribute.IsDefined()) {
        auto d = defaults.begin();
        for (const auto& [bit, column] : bits) {
            if (top)
                row.*column = *d++;
            else
                row.SetFieldNull(&(row.*column));
        }
        return;
    }
    const long value = attribute.AsLong(0);
    for (const auto& [bit, column] : bits) row.*column = (allOn && value == allOn) || (value & bit) ? 1 : 0;
}

}  // namespace

// ------------------------------------------------------------------ readings

int DvnConvCoreDbBe::ReportUnknownSetting(DvnfEntity& entity, const std::string& setting, long value) {
    Report(51910, entity.Name(), DvnString(setting), DvnString(std::to_string(value)));
    DVN_TRACE(1, 2, "Setting " << setting << " of " << entity.Name() << " has the unknown value " << value);
    return LevelWarning;
}

// Applies a table and reports what it did not know: 0, or 4.
#define DVN_APPLY_SETTINGS(base, table)                                        \
    [&] {                                                                      \
        std::vector<Unknown> unknown;                                          \
        Apply(*this, base, row, table, top, unknown);                          \
        int level = LevelOk;                                                   \
        for (const Unknown& u : unknown)                                       \
            level = std::max(level, ReportUnknownSetting(entity, u.path, u.value)); \
        return level;                                                          \
    }()

int DvnConvCoreDbBe::ReadTopologyCommonAttributes(CDatabase&, DvnfEntity& entity, DvnTopologyCommonSet& row,
                                                  bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const int level = DVN_APPLY_SETTINGS(attributes, kCommon);
    // The query message size: unlimited, a maximum, or (not given) the
    // default maximum at the top.
    const DvnfAttributeDataReader unlimited = attributes("OperationDefault")("UnlimitedQueryMessageSize");
    if (unlimited.IsDefined() && unlimited.AsBool(false)) {
        row.m_UNLIMTD_MX_QMSG_SZ = 1;
        row.SetFieldNull(&row.m_MAX_QRY_MSG_SIZE);
    } else if (unlimited.IsDefined()) {
        row.m_UNLIMTD_MX_QMSG_SZ = 0;
        row.m_MAX_QRY_MSG_SIZE = attributes("OperationDefault")("MaxQueryMessageSize").AsLong(0);
    } else if (top) {
        row.m_UNLIMTD_MX_QMSG_SZ = 0;
        row.m_MAX_QRY_MSG_SIZE = 1000000;
    } else {
        row.SetFieldNull(&row.m_UNLIMTD_MX_QMSG_SZ);
        row.SetFieldNull(&row.m_MAX_QRY_MSG_SIZE);
    }
    return level;
}

int DvnConvCoreDbBe::ReadTopologyProcessAttributes(CDatabase&, DvnfEntity& entity, DvnTopologyPrcSet& row, bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const int level = DVN_APPLY_SETTINGS(attributes, kProcess);
    // Set at the domain, never below, whatever the entity says.
    if (top)
        row.m_TERMINATE_ON_ERROR = 1;
    else
        row.SetFieldNull(&row.m_TERMINATE_ON_ERROR);
    // 15 is all four; any other value a bit set.
    ApplyBits(row, attributes("ProcessDefault")("Autonomy"), top,
              {{1, &Prc::m_STAFF_AUTONOMY}, {2, &Prc::m_NOTIFICAT_AUTONOMY}, {4, &Prc::m_ADMIN_AUTONOMY},
               {8, &Prc::m_CONTROL_AUTONOMY}},
              {0, 0, 0, 1}, 15);
    return level;
}

int DvnConvCoreDbBe::ReadTopologyProgramAttributes(CDatabase&, DvnfEntity& entity, DvnTopologyPrgSet& row, bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    return DVN_APPLY_SETTINGS(attributes, kProgram);
}

int DvnConvCoreDbBe::ReadTopologySvrAttributes(CDatabase&, DvnfEntity& entity, DvnTopologySvrSet& row, bool top,
                                               int kind) {
    const DvnStored::ServerKind* server = DvnStored::KindOfServerType(kind);
    if (!server) return LevelError;
    row.m_SERVER_TYPE = kind;
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const DvnfAttributeDataReader common = attributes("ServerDefault")(server->group)("ServerCommon");
    return DVN_APPLY_SETTINGS(common, kServerCommon);
}

int DvnConvCoreDbBe::ReadTopologySvsAttributes(CDatabase&, DvnfEntity& entity, DvnTopologySvsSet& row, bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const int level = DVN_APPLY_SETTINGS(attributes, SpecificServerSettings());
    ApplyBits(row, attributes("ServerDefault")("ProgramExecutionServer")("ImplementationSupport"), top,
              {{1, &Svs::m_PES_SUPPORT_EXE}, {2, &Svs::m_PES_SUPPORT_DLL}, {4, &Svs::m_PES_SUPPORT_EXTRNL}},
              {0, 0, 0});
    return level;
}

#undef DVN_APPLY_SETTINGS

// ------------------------------------------------------------------ writers

template <class Set>
int DvnConvCoreDbBe::SaveSettingsRow(CDatabase&, Set& row, const char* table, const char* keyColumn,
                                     CString Set::*key, const CString& id, int kind, const char* notAdded,
                                     const char* failed, const std::function<int()>& read) {
    row.m_strFilter = CString(keyColumn) + " = '" + id + "'";
    if (kind) row.m_strFilter += CString(" AND SERVER_TYPE = ") + std::to_string(kind).c_str();
    int level = LevelOk;
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
        if (!row.IsEOF()) {
            row.MoveFirst();
            row.Edit();
        } else if (!row.CanAppend()) {
            row.Close();
            DVN_TRACE(1, 2, notAdded);
            return LevelError;
        } else {
            row.AddNew();
        }
        row.*key = id;
        level = read();
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "opening", table, &row);
        DVN_TRACE(1, 2, failed);
        return LevelError;
    }
    row.Close();
    return level;
}

namespace {
// The words of a level in its traces and table names.
struct LevelWords {
    const char* tablePrefix;  // "DV_DOMAIN_"
    const char* keyColumn;    // "DOMAIN_ID"
    const char* object;       // "Domain", in "... process attributes not added"
    const char* inError;      // "domain", in "Error writing domain process attributes"
};
const LevelWords kLevels[] = {
    {"DV_DOMAIN_", "DOMAIN_ID", "Domain", "domain"},
    {"SYSTEMGRP_", "SYSTEM_GROUP_ID", "SystemGrp", "systemGrp"},
    {"SYSTEM_", "SYSTEM_ID", "System", "system"},
};
// The families of settings, in the order they are written.
struct FamilyWords {
    const char* table;     // "PRC_ATTR"
    const char* notAdded;  // "Topology process attributes not added"
    const char* what;      // "process attributes"
};
const FamilyWords kFamilies[] = {
    {"PRC_ATTR", "Topology process attributes not added", "process attributes"},
    {"PRG_ATTR", "Topology program attributes not added", "program attributes"},
    {"SVS_ATTR", "Topology specific server attributes not added", "specific server attributes"},
    {"SVR_ATTR", "Topology common server attributes not added", "common server attributes"},
};
enum { kPrc, kPrg, kSvs, kSvr };
}  // namespace

// The twelve writers: level and family give table, key and texts.
#define DVN_SETTINGS_WRITER(Name, Set, LEVEL, FAMILY, KEY, Read, top, ...)                                     \
    int DvnConvCoreDbBe::Name(CDatabase& db, DvnfEntity& entity, Set& row, const CString& id __VA_OPT__(, int) \
                                  __VA_ARGS__) {                                                               \
        const LevelWords& l = kLevels[static_cast<int>(TopologyLevel::LEVEL)];                                 \
        const FamilyWords& f = kFamilies[FAMILY];                                                              \
        const std::string table = std::string(l.tablePrefix) + f.table;                                        \
        const std::string failed = std::string(l.object) + " " + f.what + " not added";                       \
        return SaveSettingsRow(db, row, table.c_str(), l.keyColumn, &Set::KEY, id, 0 __VA_OPT__(+) __VA_ARGS__, \
                               f.notAdded, failed.c_str(),                                                     \
                               [&] { return Read(db, entity, row, top __VA_OPT__(, ) __VA_ARGS__); });         \
    }

DVN_SETTINGS_WRITER(SaveDomainPrcAttributes, DvnDomainPrcSet, Domain, kPrc, m_DOMAIN_ID,
                    ReadTopologyProcessAttributes, true)
DVN_SETTINGS_WRITER(SaveDomainPrgAttributes, DvnDomainPrgSet, Domain, kPrg, m_DOMAIN_ID,
                    ReadTopologyProgramAttributes, true)
DVN_SETTINGS_WRITER(SaveDomainSvsAttributes, DvnDomainSvsSet, Domain, kSvs, m_DOMAIN_ID,
                    ReadTopologySvsAttributes, true)
DVN_SETTINGS_WRITER(SaveDomainSvrAttributes, DvnDomainSvrSet, Domain, kSvr, m_DOMAIN_ID,
                    ReadTopologySvrAttributes, true, kind)
DVN_SETTINGS_WRITER(SaveSystemGrpPrcAttributes, DvnSystemGroupPrcSet, SystemGroup, kPrc, m_SYSTEM_GROUP_ID,
                    ReadTopologyProcessAttributes, false)
DVN_SETTINGS_WRITER(SaveSystemGrpPrgAttributes, DvnSystemGroupPrgSet, SystemGroup, kPrg, m_SYSTEM_GROUP_ID,
                    ReadTopologyProgramAttributes, false)
DVN_SETTINGS_WRITER(SaveSystemGrpSvsAttributes, DvnSystemGroupSvsSet, SystemGroup, kSvs, m_SYSTEM_GROUP_ID,
                    ReadTopologySvsAttributes, false)
DVN_SETTINGS_WRITER(SaveSystemGrpSvrAttributes, DvnSystemGroupSvrSet, SystemGroup, kSvr, m_SYSTEM_GROUP_ID,
                    ReadTopologySvrAttributes, false, kind)
DVN_SETTINGS_WRITER(SaveSystemPrcAttributes, DvnSystemPrcSet, System, kPrc, m_SYSTEM_ID,
                    ReadTopologyProcessAttributes, false)
DVN_SETTINGS_WRITER(SaveSystemPrgAttributes, DvnSystemPrgSet, System, kPrg, m_SYSTEM_ID,
                    ReadTopologyProgramAttributes, false)
DVN_SETTINGS_WRITER(SaveSystemSvsAttributes, DvnSystemSvsSet, System, kSvs, m_SYSTEM_ID, ReadTopologySvsAttributes,
                    false)
DVN_SETTINGS_WRITER(SaveSystemSvrAttributes, DvnSystemSvrSet, System, kSvr, m_SYSTEM_ID, ReadTopologySvrAttributes,
                    false, kind)

#undef DVN_SETTINGS_WRITER

// ------------------------------------------------------------------ a level object's rows

namespace {
// The writers of one level, with the recordset classes they take.
template <class PrcSet, class PrgSet, class SvsSet, class SvrSet>
struct LevelWriters {
    int (DvnConvCoreDbBe::*prc)(CDatabase&, DvnfEntity&, PrcSet&, const CString&);
    int (DvnConvCoreDbBe::*prg)(CDatabase&, DvnfEntity&, PrgSet&, const CString&);
    int (DvnConvCoreDbBe::*svs)(CDatabase&, DvnfEntity&, SvsSet&, const CString&);
    int (DvnConvCoreDbBe::*svr)(CDatabase&, DvnfEntity&, SvrSet&, const CString&, int);
};

template <class PrcSet, class PrgSet, class SvsSet, class SvrSet>
int WriteLevel(DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key, const char* inError,
               const LevelWriters<PrcSet, PrgSet, SvsSet, SvrSet>& w) {
    int level = DvnConvCoreDbBe::LevelOk;
    auto step = [&](int result, int family) {
        if (result != 0) DVN_TRACE(1, 2, "Error writing " << inError << " " << kFamilies[family].what);
        level = std::max(level, result);
    };
    {
        PrcSet row(&db);
        step((be.*w.prc)(db, entity, row, key), kPrc);
    }
    {
        PrgSet row(&db);
        step((be.*w.prg)(db, entity, row, key), kPrg);
    }
    {
        SvsSet row(&db);
        step((be.*w.svs)(db, entity, row, key), kSvs);
    }
    for (long kind = 1; kind <= DvnStored::ServerTypes; ++kind) {
        SvrSet row(&db);
        step((be.*w.svr)(db, entity, row, key, static_cast<int>(kind)), kSvr);
    }
    return level;
}
}  // namespace

int DvnConvCoreDbBe::SaveTopologySettings(CDatabase& db, DvnfEntity& entity, const CString& key,
                                          TopologyLevel level) {
    const char* inError = kLevels[static_cast<int>(level)].inError;
    switch (level) {
        case TopologyLevel::Domain:
            return WriteLevel(*this, db, entity, key, inError,
                              LevelWriters<DvnDomainPrcSet, DvnDomainPrgSet, DvnDomainSvsSet, DvnDomainSvrSet>{
                                  &DvnConvCoreDbBe::SaveDomainPrcAttributes, &DvnConvCoreDbBe::SaveDomainPrgAttributes,
                                  &DvnConvCoreDbBe::SaveDomainSvsAttributes, &DvnConvCoreDbBe::SaveDomainSvrAttributes});
        case TopologyLevel::SystemGroup:
            return WriteLevel(*this, db, entity, key, inError,
                              LevelWriters<DvnSystemGroupPrcSet, DvnSystemGroupPrgSet, DvnSystemGroupSvsSet,
                                           DvnSystemGroupSvrSet>{&DvnConvCoreDbBe::SaveSystemGrpPrcAttributes,
                                                                 &DvnConvCoreDbBe::SaveSystemGrpPrgAttributes,
                                                                 &DvnConvCoreDbBe::SaveSystemGrpSvsAttributes,
                                                                 &DvnConvCoreDbBe::SaveSystemGrpSvrAttributes});
        case TopologyLevel::System:
            return WriteLevel(*this, db, entity, key, inError,
                              LevelWriters<DvnSystemPrcSet, DvnSystemPrgSet, DvnSystemSvsSet, DvnSystemSvrSet>{
                                  &DvnConvCoreDbBe::SaveSystemPrcAttributes, &DvnConvCoreDbBe::SaveSystemPrgAttributes,
                                  &DvnConvCoreDbBe::SaveSystemSvsAttributes, &DvnConvCoreDbBe::SaveSystemSvrAttributes});
    }
    return LevelError;
}

int DvnConvCoreDbBe::DeleteTopologySettings(CDatabase& db, const CString& key, TopologyLevel level) {
    const LevelWords& l = kLevels[static_cast<int>(level)];
    int result = LevelOk;
    for (const FamilyWords& f : kFamilies) {
        const CString table = CString(l.tablePrefix) + f.table;
        result = std::max(result, DeleteObject(db,
                                               CString("DELETE FROM ") + m_strTablePrefix + table + " WHERE " +
                                                   l.keyColumn + " = '" + key + "'",
                                               table));
    }
    return result;
}
