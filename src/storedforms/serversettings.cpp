#include "serversettings.h"

#include "storedforms.h"
#include "topologyforms.h"

namespace DvnStored {

namespace {

template <class Set>
Setting<Set> Number(const char* path, Reading reading, long Set::*column, Pairs map = {},
                    std::optional<long> otherwise = {}) {
    Setting<Set> s{path, reading};
    s.number = column;
    s.map = std::move(map);
    s.otherwise = otherwise;
    // A server keeps an interval of 0 seconds: it is what was given.
    s.keepZero = reading == Reading::Interval;
    return s;
}
template <class Set>
Setting<Set> Text(const char* path, Reading reading, CString Set::*column, size_t cut = 0) {
    Setting<Set> s{path, reading};
    s.text = column;
    s.cut = cut;
    return s;
}

const Pairs kZeroOneToOneTwo = {{0, 1}, {1, 2}};
const Pairs kTaskingOrLoad = {{0, 3}, {1, 2}, {2, 1}};

Pairs PlatformPairs() {
    Pairs map;
    for (const auto& p : Platforms) map.emplace_back(p.model, p.stored);
    return map;
}

}  // namespace

const std::vector<Setting<DvnServerSet>>& ServerTexts() {
    static const std::vector<Setting<DvnServerSet>> table = {
        Text("Description", Reading::Text, &DvnServerSet::m_DESCRIPTION, DescriptionChars),
        Text("Documentation", Reading::Text, &DvnServerSet::m_DOCUMENTATION),
    };
    return table;
}

const std::vector<Setting<DvnUPEServerSet>>& UserServerTexts() {
    static const std::vector<Setting<DvnUPEServerSet>> table = {
        Text("Description", Reading::Text, &DvnUPEServerSet::m_DESCRIPTION, DescriptionChars),
        Text("Documentation", Reading::Text, &DvnUPEServerSet::m_DOCUMENTATION),
    };
    return table;
}

const std::vector<Setting<DvnServerSet>>& ServerRowCommonSettings() {
    using S = DvnServerSet;
    static const std::vector<Setting<S>> table = {
        Number("AttachMode", Reading::Map, &S::m_ATTACH_MODE, kZeroOneToOneTwo),
        Number("StartMode", Reading::Map, &S::m_START_MODE, Pairs{{1, 2}, {2, 1}}),
        Text("StartTime", Reading::Event, &S::m_START_TIME),
        Text("StopTime", Reading::Event, &S::m_STOP_TIME),
        Number("CheckInterval", Reading::Interval, &S::m_CHECK_INTERVAL),
        // 0 is stored 2, every other value 1.
        Number("InstanceMode", Reading::Map, &S::m_INSTANCE_MODE, Pairs{{0, 2}}, 1),
        Number("NrOfInstances", Reading::Long, &S::m_NUMBER_OF_INSTANCS),
        Number("ExternalControl", Reading::Map, &S::m_EXTERNAL_CONTROL, Pairs{{2, 2}}, 1),
        Text("ExternalControlContext", Reading::Text, &S::m_EXTRNL_CNTRL_CNTXT),
    };
    return table;
}

const std::vector<Setting<DvnCleanupServerSet>>& CleanupServerSettings() {
    using S = DvnCleanupServerSet;
    static const std::vector<Setting<S>> table = {
        Number("CleanupTime", Reading::Interval, &S::m_CLEANUP_TIME),
        Number("CleanupDelayTime", Reading::Interval, &S::m_CLEANUP_DELAY_TIME),
    };
    return table;
}

const std::vector<Setting<DvnDistributionServerSet>>& DistributionServerSettings() {
    using S = DvnDistributionServerSet;
    static const std::vector<Setting<S>> table = {
        Text("DistributionReceiveTime", Reading::Event, &S::m_DIST_RECEIVE_TIME),
    };
    return table;
}

const std::vector<Setting<DvnExecutionServerSet>>& ExecutionServerSettings() {
    using S = DvnExecutionServerSet;
    static const std::vector<Setting<S>> table = {
        Number("ProcessBehaviour", Reading::Map, &S::m_PROCESS_BEHAVIOR, Pairs{{1, 1}, {2, 2}}),
        Number("ImmediateCleanup", Reading::Bool, &S::m_IMMEDIATE_CLEANUP),
        Number("LeastWorkloadSupport", Reading::Bool, &S::m_LEAST_WORKLOAD_SUP),
        Number("NavigationTransactionThreshold", Reading::Long, &S::m_NAV_TRAN_THRESH),
    };
    return table;
}

const std::vector<Setting<DvnSchedulingServerSet>>& SchedulingServerSettings() {
    using S = DvnSchedulingServerSet;
    static const std::vector<Setting<S>> table = {
        Number("NotificationCheckInterval", Reading::Interval, &S::m_NOTIFICATION_INTVL),
        Number("SuspensionCheckInterval", Reading::Interval, &S::m_SUSPENSION_INTVL),
        Number("CreateNotificationItemsThreshold", Reading::Long, &S::m_CRE_NOT_ITM_THRESH),
        Number("DeleteNotificationItemsThreshold", Reading::Long, &S::m_DEL_NOT_ITM_THRESH),
    };
    return table;
}

const std::vector<Setting<DvnPEServerSet>>& PEServerSettings() {
    using S = DvnPEServerSet;
    static const std::vector<Setting<S>> table = {
        Number("Platform", Reading::Map, &S::m_PLATFORM, PlatformPairs()),
        Number("UserSupport", Reading::Map, &S::m_USER_SUPPORT, kZeroOneToOneTwo),
        Number("PEADefault.TaskingMode", Reading::Map, &S::m_TASKING_MODE, kTaskingOrLoad),
        Number("PEADefault.DllLoadMode", Reading::Map, &S::m_DLL_LOAD_MODE, kTaskingOrLoad),
        Number("PEADefault.SupportMode", Reading::Map, &S::m_SUPPORT_MODE, kZeroOneToOneTwo),
        // A server keeps its maxima whatever its modes.
        Number("PEADefault.MaximumTasksStarted", Reading::Long, &S::m_MAX_PROGR_STARTED),
        Number("PEADefault.MaximumDllsLoaded", Reading::Long, &S::m_MAX_DLLS_LOADED),
    };
    return table;
}

const std::vector<Bit<DvnPEServerSet>>& PEServerSupportBits() {
    static const std::vector<Bit<DvnPEServerSet>> bits = {{1, &DvnPEServerSet::m_SUPPORT_EXE},
                                                          {2, &DvnPEServerSet::m_SUPPORT_DLL},
                                                          {4, &DvnPEServerSet::m_SUPPORT_EXTERNAL}};
    return bits;
}

}  // namespace DvnStored
