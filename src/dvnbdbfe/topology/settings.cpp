// Load of the layered settings of the topology: the columns of a level's row
// and of its four settings tables back into the attribute groups of the
// entity, by the same tables the store reads them with. Each level gets
// exactly its own columns: a null column leaves the attribute out, and
// nothing comes down from the level above.
#include <string>

#include "dvnbdbfe.h"
#include "dvntoposets.h"
#include "topologyforms.h"
#include "serversettings.h"
#include "topologysettings.h"

namespace {

// The attribute at a dotted path below target; groups are made only when a
// value is written. (A handle is made anew at each step: assigning one
// handle to another would copy the value.)
DvnfAttributeData Into(const DvnfAttributeData& target, const std::string& path) {
    const size_t dot = path.find('.');
    if (dot == std::string::npos) return target(path.c_str());
    return Into(target(path.substr(0, dot).c_str()), path.substr(dot + 1));
}

bool Below(const char* path, const std::string& prefix) { return std::string(path).starts_with(prefix); }
bool EndsWith(const char* path, const char* word) { return std::string(path).ends_with(word); }

// The texts that the load sets only with their switch (the contexts).
bool SetWithItsSwitch(const char* path) {
    return EndsWith(path, "ExternalRestartContext") || EndsWith(path, "ExternalControlContext");
}

}  // namespace

// The table undone: every column that is not null, of the settings whose path
// begins with prefix, goes back below target, at its path less the leading
// text dropped (target stands there). True when one did.
template <class Set>
bool DvnConvCoreDbFe::GetSettings(const Set& row, const std::vector<DvnStored::Setting<Set>>& table,
                                  DvnfAttributeData target, const std::string& prefix, const std::string& dropped) {
    using namespace DvnStored;
    bool any = false;
    for (const Setting<Set>& s : table) {
        if (!Below(s.path, prefix) || SetWithItsSwitch(s.path)) continue;
        DvnfAttributeData attribute = Into(target, std::string(s.path).substr(dropped.size()));
        if (s.number) {
            if (row.IsFieldNull(&(row.*s.number))) continue;
            const long value = row.*s.number;
            switch (s.reading) {
                case Reading::Bool:
                    // In the process and activity defaults only 1 is true.
                    attribute = Below(s.path, "ProcessDefault.") || Below(s.path, "ActivityDefault.") ? value == 1
                                                                                                       : value != 0;
                    break;
                case Reading::LongWhen:
                    // The agent's own maxima only with their mode stored as 2 (given 1).
                    if (s.loadOnlyWhen && (row.IsFieldNull(&(row.*s.whenColumn)) || row.*s.whenColumn != 2)) continue;
                    attribute = value;
                    break;
                case Reading::Map: {
                    bool found = false;
                    for (const auto& [given, stored] : s.map)
                        if (stored == value) {
                            attribute = given;
                            found = true;
                        }
                    if (!found && s.otherwise && *s.otherwise == value) {
                        attribute = value;
                        found = true;
                    }
                    if (!found) continue;
                    break;
                }
                case Reading::Interval:
                    attribute("Seconds") = value;
                    break;
                case Reading::Timed:
                    GetTimePeriod(value, attribute);
                    break;
                default:
                    attribute = value;
                    break;
            }
        } else {
            if (row.IsFieldNull(&(row.*s.text))) continue;
            CString text = row.*s.text;
            if (s.reading == Reading::Event) {
                // "ANYTIME" is what a server's start or stop time is when not given.
                if (text.IsEmpty()) continue;
                if (text == "ANYTIME" && (EndsWith(s.path, "StartTime") || EndsWith(s.path, "StopTime"))) continue;
                GetTimeEvent(text, attribute);
            } else {
                if (s.cut) text.TrimRight();  // blanks a database adds to a cut text
                attribute = DvnString(text.c_str());
            }
        }
        any = true;
    }
    return any;
}

// The bit set of the columns that are 1; false (nothing set) when every
// column is null or, with noZero, when no bit is set.
template <class Set>
static bool BitSum(const Set& row, const std::vector<DvnStored::Bit<Set>>& bits, DvnfAttributeData target,
                   bool noZero) {
    bool given = false;
    long sum = 0;
    for (const auto& b : bits) {
        if (row.IsFieldNull(&(row.*b.column))) continue;
        given = true;
        if (row.*b.column == 1) sum += b.bit;
    }
    if (!given || (noZero && sum == 0)) return false;
    target = sum;
    return true;
}

void DvnConvCoreDbFe::GetTopologyDefaultSetting(DvnfEntity& entity, DvnTopologyCommonSet& common,
                                                DvnTopologySvrSet& svr, DvnTopologySvsSet& svs,
                                                DvnTopologyPrcSet& prc, DvnTopologyPrgSet& prg) {
    if (svr.IsOpen() && !svr.IsEOF()) {
        int rows = 0;
        for (svr.MoveFirst(); !svr.IsEOF() && rows < static_cast<int>(DvnStored::ServerTypes); svr.MoveNext(), ++rows)
            GetServerDefaultSetting(entity, svr, svs);
    }
    const DvnfAttributeData attributes = entity.AttributeData();
    GetPEADefaultSetting(attributes, svs);
    GetProcessDefaultSetting(&entity, attributes, prc);
    GetProgramDefaultSetting(attributes, prg);
    GetImportDefaultSetting(attributes, common);
    GetOperationDefaultSetting(attributes, common);
    GetSessionDefaultSetting(attributes, common);
}

void DvnConvCoreDbFe::GetServerDefaultSetting(DvnfEntity& entity, DvnTopologySvrSet& svr, DvnTopologySvsSet& svs) {
    const DvnfAttributeData target = entity.AttributeData()("ServerDefault");
    switch (svr.m_SERVER_TYPE) {
        case 1: GetExecutionServerDefaultSetting(target, svs, svr); break;
        case 2: GetSchedulingServerDefaultSetting(target, svs, svr); break;
        case 3: GetServerCommonSetting(target("ModelingServer"), svr); break;
        case 4: GetCleanupServerDefaultSetting(target, svs, svr); break;
        case 5: GetServerCommonSetting(target("GatewayServer"), svr); break;
        case 6: GetDistributionServerDefaultSetting(target, svs, svr); break;
        case 7: GetProgramExecutionServerDefaultSetting(target, svs, svr); break;
        default: break;
    }
}

bool DvnConvCoreDbFe::GetServerCommonSetting(DvnfAttributeData target, DvnTopologySvrSet& svr) {
    if (!svr.IsOpen() || svr.IsEOF()) return false;
    DvnfAttributeData common = target("ServerCommon");
    bool any = GetSettings<DvnTopologySvrSet>(svr, DvnStored::ServerCommonSettings(), common, "", "");
    // The context only with the control it belongs to.
    if (!svr.IsFieldNull(&svr.m_EXTERNAL_CONTROL) && svr.m_EXTERNAL_CONTROL == 2)
        common("ExternalControlContext") = DvnString(svr.m_EXTRNL_CNTRL_CNTXT.c_str());
    return any;
}

// The common settings of the kind and its own: nothing of either leaves no
// group behind, since only a value makes its group.
void DvnConvCoreDbFe::GetKindDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                            DvnTopologySvrSet& svr, const char* group) {
    GetServerCommonSetting(target(group), svr);
    if (svs.IsOpen() && !svs.IsEOF())
        GetSettings<DvnTopologySvsSet>(svs, DvnStored::SpecificServerSettings(), target,
                                       std::string("ServerDefault.") + group + ".", "ServerDefault.");
}

void DvnConvCoreDbFe::GetExecutionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                       DvnTopologySvrSet& svr) {
    GetKindDefaultSetting(target, svs, svr, "ExecutionServer");
}
void DvnConvCoreDbFe::GetSchedulingServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                        DvnTopologySvrSet& svr) {
    GetKindDefaultSetting(target, svs, svr, "SchedulingServer");
}
void DvnConvCoreDbFe::GetDistributionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                          DvnTopologySvrSet& svr) {
    GetKindDefaultSetting(target, svs, svr, "DistributionServer");
}
void DvnConvCoreDbFe::GetCleanupServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                     DvnTopologySvrSet& svr) {
    GetKindDefaultSetting(target, svs, svr, "CleanupServer");
}
void DvnConvCoreDbFe::GetProgramExecutionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                              DvnTopologySvrSet& svr) {
    GetKindDefaultSetting(target, svs, svr, "ProgramExecutionServer");
    if (svs.IsOpen() && !svs.IsEOF())
        BitSum(svs, DvnStored::ImplementationSupportBits(),
               target("ProgramExecutionServer")("ImplementationSupport"), true);
}

void DvnConvCoreDbFe::GetPEADefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs) {
    if (svs.IsOpen() && !svs.IsEOF())
        GetSettings<DvnTopologySvsSet>(svs, DvnStored::SpecificServerSettings(), target, "PEADefault.", "");
}

void DvnConvCoreDbFe::GetProcessDefaultSetting(DvnfEntity*, DvnfAttributeData target, DvnTopologyPrcSet& prc) {
    if (!prc.IsOpen() || prc.IsEOF()) return;
    GetSettings<DvnTopologyPrcSet>(prc, DvnStored::ProcessSettings(), target, "", "");
    BitSum(prc, DvnStored::AutonomyBits(), target("ProcessDefault")("Autonomy"), false);
}

void DvnConvCoreDbFe::GetProgramDefaultSetting(DvnfAttributeData target, DvnTopologyPrgSet& prg) {
    if (prg.IsOpen() && !prg.IsEOF())
        GetSettings<DvnTopologyPrgSet>(prg, DvnStored::ProgramSettings(), target, "", "");
}

void DvnConvCoreDbFe::GetImportDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common) {
    GetSettings<DvnTopologyCommonSet>(common, DvnStored::CommonSettings(), target, "ImportDefault.", "");
}

void DvnConvCoreDbFe::GetOperationDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common) {
    GetSettings<DvnTopologyCommonSet>(common, DvnStored::CommonSettings(), target, "OperationDefault.", "");
    DvnfAttributeData operation = target("OperationDefault");
    // The context only with the restart it belongs to (stored 2: given 1).
    if (!common.IsFieldNull(&common.m_EXTERNAL_RESTART) && common.m_EXTERNAL_RESTART == 2)
        operation("ExternalRestartContext") = DvnString(common.m_EXTRNL_RSTRT_CNTXT.c_str());
    if (!common.IsFieldNull(&common.m_UNLIMTD_MX_QMSG_SZ) && common.m_UNLIMTD_MX_QMSG_SZ == 1) {
        operation("UnlimitedQueryMessageSize") = true;
        operation.Reset("MaxQueryMessageSize");
    } else if (!common.IsFieldNull(&common.m_MAX_QRY_MSG_SIZE)) {
        operation("UnlimitedQueryMessageSize") = false;
        operation("MaxQueryMessageSize") = common.m_MAX_QRY_MSG_SIZE;
    }
}

void DvnConvCoreDbFe::GetSessionDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common) {
    GetSettings<DvnTopologyCommonSet>(common, DvnStored::CommonSettings(), target, "SessionDefault.", "");
}

// The four settings tables of a level object, each opened by its key (two
// blanks before the "=", as every level's load writes it), then put back.
template <class PrcSet, class PrgSet, class SvsSet, class SvrSet>
void DvnConvCoreDbFe::LevelSettings(DvnfEntity& entity, DvnTopologyCommonSet& common, const char* tablePrefix,
                                    const char* keyColumn, const CString& key) {
    SvrSet svr(m_pDatabase);
    SvsSet svs(m_pDatabase);
    PrcSet prc(m_pDatabase);
    PrgSet prg(m_pDatabase);
    auto open = [&](CRecordset& rs, const char* family) {
        rs.m_strFilter = CString(keyColumn) + "  = " + Literal(DvnString(key.c_str()));
        if (std::string(family) == "SVR_ATTR") rs.m_strSort = "SERVER_TYPE";
        rs.Open(CRecordset::snapshot, Table((std::string(tablePrefix) + family).c_str()), CRecordset::readOnly);
    };
    open(svr, "SVR_ATTR");
    open(svs, "SVS_ATTR");
    open(prc, "PRC_ATTR");
    open(prg, "PRG_ATTR");
    GetTopologyDefaultSetting(entity, common, svr, svs, prc, prg);
}

template void DvnConvCoreDbFe::LevelSettings<DvnDomainPrcSet, DvnDomainPrgSet, DvnDomainSvsSet, DvnDomainSvrSet>(
    DvnfEntity&, DvnTopologyCommonSet&, const char*, const char*, const CString&);
template void DvnConvCoreDbFe::LevelSettings<DvnSystemGroupPrcSet, DvnSystemGroupPrgSet, DvnSystemGroupSvsSet,
                                             DvnSystemGroupSvrSet>(DvnfEntity&, DvnTopologyCommonSet&, const char*,
                                                                   const char*, const CString&);
template void DvnConvCoreDbFe::LevelSettings<DvnSystemPrcSet, DvnSystemPrgSet, DvnSystemSvsSet, DvnSystemSvrSet>(
    DvnfEntity&, DvnTopologyCommonSet&, const char*, const char*, const CString&);

// A link through the target's row: made by key when the row is there, the
// target named by the row when the core model knows it by its key only.
template <class Set>
void DvnConvCoreDbFe::LinkThroughRow(DvnfEntity& entity, const char* linkName, const char* targetType,
                                     const char* table, const char* keyColumn, const CRecordset& row,
                                     const CString& member) {
    if (row.IsFieldNull(&member) || member.IsEmpty()) return;
    Set target(m_pDatabase);
    target.m_strFilter = CString(keyColumn) + " = " + Literal(DvnString(member.c_str()));
    ReadRows(target, Table(table), [&](Set& found) {
        if (!LinkByOID(entity, linkName, targetType, row, member)) return;
        DvnfEntity& linked = m_pCoreData->GetEntityByOID(DvnfString(targetType), DvnfString(member.c_str()), false);
        if (linked.IsValid() && linked.Name().str().empty()) linked.Name(DvnfString(found.m_NAME.c_str()));
    });
}

template void DvnConvCoreDbFe::LinkThroughRow<DvnDomainSet>(DvnfEntity&, const char*, const char*, const char*,
                                                            const char*, const CRecordset&, const CString&);
template void DvnConvCoreDbFe::LinkThroughRow<DvnSystemGroupSet>(DvnfEntity&, const char*, const char*, const char*,
                                                                 const char*, const CRecordset&, const CString&);
template void DvnConvCoreDbFe::LinkThroughRow<DvnNodeSet>(DvnfEntity&, const char*, const char*, const char*,
                                                          const char*, const CRecordset&, const CString&);
template void DvnConvCoreDbFe::LinkThroughRow<DvnQueueManagerSet>(DvnfEntity&, const char*, const char*,
                                                                  const char*, const char*, const CRecordset&,
                                                                  const CString&);

// The server loads (topology/server.cpp) put their rows back by the same engine.
#define DVN_SERVER_SETTINGS(Set)                                                                          \
    template bool DvnConvCoreDbFe::GetSettings<Set>(const Set&, const std::vector<DvnStored::Setting<Set>>&, \
                                                    DvnfAttributeData, const std::string&, const std::string&);
DVN_FOR_EACH_SERVER_SET(DVN_SERVER_SETTINGS)
#undef DVN_SERVER_SETTINGS
