// The layered settings of the topology: the same families of settings stand
// at the domain, the system group and the system, one table per family and
// level. One table of settings per family says where each column comes
// from and how it is read; one engine applies it at every level. At the
// domain (top) a setting that the entity leaves out gets its default, below
// it the column is null: the level above counts.
#include <optional>
#include <string>
#include <vector>

#include "dvnbdbbe.h"
#include "dvntoposets.h"
#include "storedforms.h"
#include "topologyforms.h"
#include "serversettings.h"
#include "topologysettings.h"

namespace {

using namespace DvnStored;
using Common = DvnTopologyCommonSet;
using Prc = DvnTopologyPrcSet;
using Prg = DvnTopologyPrgSet;
using Svr = DvnTopologySvrSet;
using Svs = DvnTopologySvsSet;

// The reader at a dotted path below base.
DvnfAttributeDataReader At(DvnfAttributeDataReader reader, const std::string& path) {
    size_t start = 0;
    for (size_t dot; (dot = path.find('.', start)) != std::string::npos; start = dot + 1)
        reader = reader(path.substr(start, dot - start).c_str());
    return reader(path.substr(start).c_str());
}

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
            if (seconds != 0 || s.keepZero) number = seconds;
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

// A bit set read into number columns: each bit gives 1 to its column, the
// others 0. Not given: the defaults at the top, null below.
template <class Set>
void ApplyBits(Set& row, const DvnfAttributeDataReader& attribute, bool top,
               const std::vector<DvnStored::Bit<Set>>& bits, std::initializer_list<long> defaults, long allOn = 0) {
    if (!attribute.IsDefined()) {
        auto d = defaults.begin();
        for (const auto& b : bits) {
            if (top)
                row.*b.column = *d++;
            else
                row.SetFieldNull(&(row.*b.column));
        }
        return;
    }
    const long value = attribute.AsLong(0);
    for (const auto& b : bits) row.*b.column = (allOn && value == allOn) || (value & b.bit) ? 1 : 0;
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
    const int level = DVN_APPLY_SETTINGS(attributes, CommonSettings());
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
    const int level = DVN_APPLY_SETTINGS(attributes, ProcessSettings());
    // Set at the domain, never below, whatever the entity says.
    if (top)
        row.m_TERMINATE_ON_ERROR = 1;
    else
        row.SetFieldNull(&row.m_TERMINATE_ON_ERROR);
    // 15 is all four; any other value a bit set.
    ApplyBits(row, attributes("ProcessDefault")("Autonomy"), top, AutonomyBits(), {0, 0, 0, 1}, 15);
    return level;
}

int DvnConvCoreDbBe::ReadTopologyProgramAttributes(CDatabase&, DvnfEntity& entity, DvnTopologyPrgSet& row, bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    return DVN_APPLY_SETTINGS(attributes, ProgramSettings());
}

int DvnConvCoreDbBe::ReadTopologySvrAttributes(CDatabase&, DvnfEntity& entity, DvnTopologySvrSet& row, bool top,
                                               int kind) {
    const DvnStored::ServerKind* server = DvnStored::KindOfServerType(kind);
    if (!server) return LevelError;
    row.m_SERVER_TYPE = kind;
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const DvnfAttributeDataReader common = attributes("ServerDefault")(server->group)("ServerCommon");
    return DVN_APPLY_SETTINGS(common, ServerCommonSettings());
}

int DvnConvCoreDbBe::ReadTopologySvsAttributes(CDatabase&, DvnfEntity& entity, DvnTopologySvsSet& row, bool top) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const int level = DVN_APPLY_SETTINGS(attributes, SpecificServerSettings());
    ApplyBits(row, attributes("ServerDefault")("ProgramExecutionServer")("ImplementationSupport"), top,
              ImplementationSupportBits(), {0, 0, 0});
    return level;
}

// ------------------------------------------------------------------ a server's row

// A server holds no defaults: what it leaves out is null (the level above counts).
template <class Set>
int DvnConvCoreDbBe::ReadServerSettings(DvnfEntity& entity, const DvnfAttributeDataReader& base, Set& row,
                                        const std::vector<DvnStored::Setting<Set>>& table) {
    const bool top = false;
    return DVN_APPLY_SETTINGS(base, table);
}

#define DVN_SERVER_SETTINGS(Set)                                                                              \
    template int DvnConvCoreDbBe::ReadServerSettings<Set>(DvnfEntity&, const DvnfAttributeDataReader&, Set&, \
                                                          const std::vector<DvnStored::Setting<Set>>&);
DVN_FOR_EACH_SERVER_SET(DVN_SERVER_SETTINGS)
#undef DVN_SERVER_SETTINGS

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
