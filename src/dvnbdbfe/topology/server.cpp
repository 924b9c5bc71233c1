// Load of servers: each row of a server table becomes an entity "Server"
// named server.system.group, with its "Type", links to its system and group,
// and the settings the row holds itself, by the same tables the store reads
// them with (src/storedforms/serversettings.h). Nothing comes down from the
// system, group or domain.
#include "dvnbdbfe.h"
#include "dvntoposets.h"
#include "serversettings.h"
#include "topologyforms.h"

namespace {

// Where a server stands: its system and the system's group, by key and name.
struct Place {
    CString systemKey, systemName, groupKey, groupName;
};

// The target of a link by key, named by the row it was found through when
// the core model knows it by its key only.
void LinkToTarget(DvnfTRXData& data, DvnfEntity& server, const char* link, const char* type, const CString& key,
               const CString& name) {
    if (key.IsEmpty() || name.IsEmpty()) return;
    data.AddLinkByOID(server, DvnfString(link), DvnfString(type), DvnfString(key.c_str()), true, true);
    DvnfEntity& target = data.GetEntityByOID(DvnfString(type), DvnfString(key.c_str()), false);
    if (target.IsValid() && target.Name().str().empty()) target.Name(DvnfString(name.c_str()));
}

// The group of the kind below "ServerDefault"; a type of no kind stays there.
DvnfAttributeData KindTarget(DvnfEntity& server, long type) {
    const DvnStored::ServerKind* kind = DvnStored::KindOfEntityType(type);
    DvnfAttributeData serverDefault = server.AttributeData()("ServerDefault");
    return kind && kind->group ? serverDefault(kind->group) : serverDefault;
}

}  // namespace

// ------------------------------------------------------------------ the sections

void DvnConvCoreDbFe::Servers(int group, DvnString const& id) {
    switch (group - 21) {
        case 0: CleanupServer("CLEANUP_SERVER", 51525, 1, id); break;
        case 1: DistributionServer("DISTRIBUTION_SRV", 51526, 2, id); break;
        case 2: ExecutionServer("EXECUTION_SERVER", 51527, 3, id); break;
        case 3: Server("GATEWAY_SERVER", 51528, 4, id); break;
        case 4: Server("MODELLING_SERVER", 51529, 5, id); break;
        case 5: SchedulingServer("SCHEDULING_SERVER", 51530, 6, id); break;
        case 9: PEServers("PE_SERVER", 51532, 7, id); break;
        case 11: UPEServers(51570, 8, id); break;
        default: break;
    }
}

void DvnConvCoreDbFe::Server(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 0, type, id, &DvnConvCoreDbFe::CommonServerColumns);
}
void DvnConvCoreDbFe::ExecutionServer(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 51563, type, id, &DvnConvCoreDbFe::ExecutionServerColumns);
}
void DvnConvCoreDbFe::SchedulingServer(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 0, type, id, &DvnConvCoreDbFe::SchedulingServerColumns);
}
void DvnConvCoreDbFe::DistributionServer(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 51562, type, id, &DvnConvCoreDbFe::DistributionServerColumns);
}
void DvnConvCoreDbFe::CleanupServer(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 51561, type, id, &DvnConvCoreDbFe::CleanupServerColumns);
}
void DvnConvCoreDbFe::PEServers(CString table, int progressMessage, long type, DvnString const& id) {
    LoadServerRows(table.c_str(), progressMessage, 51568, type, id, &DvnConvCoreDbFe::PEServerColumns);
}
void DvnConvCoreDbFe::UPEServers(int progressMessage, long type, DvnString const& id) {
    LoadServerRows("USER_PE_SERVER", progressMessage, 51568, type, id, &DvnConvCoreDbFe::UPEServerColumns);
}

// ------------------------------------------------------------------ the rows

template <class Set>
void DvnConvCoreDbFe::LoadServerRows(const char* table, long progress, long notFound, long type,
                                     DvnString const& id,
                                     void (DvnConvCoreDbFe::*fill)(Set& row, DvnfEntity& server, long type)) {
    Set rs(m_pDatabase);
    const bool all = id.IsNull() || id.str().empty();
    const CString statement = all ? SelectFrom(table) : SelectFrom(table, "SERVER_ID", CString(id.c_str()));
    const long count = ReadRows(rs, statement, [&](Set& row) {
        Report(progress, DvnString(row.m_NAME.c_str()));
        // Every kind is named by its full name, a tombstone too, so that a
        // deletion comes back as the file gave it.
        DvnSystemSet systems(m_pDatabase);
        DvnSystemGroupSet groups(m_pDatabase);
        Place place;
        if (!row.IsFieldNull(&row.m_SYSTEM) && !row.m_SYSTEM.IsEmpty()) {
            place.systemName = CString(systems.GetName(row.m_SYSTEM, m_strTablePrefix, true).c_str());
            if (!place.systemName.IsEmpty()) {
                place.systemKey = row.m_SYSTEM;
                place.groupKey = systems.GetSystemGroupID(row.m_SYSTEM, m_strTablePrefix);
                if (!place.groupKey.IsEmpty())
                    place.groupName = CString(groups.GetName(place.groupKey, m_strTablePrefix).c_str());
            }
        }
        const DvnfString name = DvnfTRXData::MakeFQName(DvnfString(row.m_NAME.c_str()),
                                                        DvnfString(place.systemName.c_str()),
                                                        DvnfString(place.groupName.c_str()));
        DvnfEntity& server =
            m_pCoreData->CreateEntity(DvnfString("Server"), DvnfString(row.m_SERVER_ID.c_str()), name);
        if (!server.IsValid()) return;
        server.AttributeData()("Type") = type;
        if (!TakeState(server, row.m_CHECKED_OUT)) return;
        LinkToTarget(*m_pCoreData, server, "ServerIsInSystem", "System", place.systemKey, place.systemName);
        LinkToTarget(*m_pCoreData, server, "ServerIsInSystemGroup", "SystemGroup", place.groupKey, place.groupName);
        (this->*fill)(row, server, type);
    });
    DVN_TRACE(3, 1, "Number of servers of " << table << " found: " << count);
    if (notFound && count == 0 && !all) Report(notFound, id);
}

void DvnConvCoreDbFe::ServerSetting(DvnfAttributeData attributes, long type, DvnServerSet& row, DvnfEntity& server) {
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    DvnfAttributeData common = KindTarget(server, type)("ServerCommon");
    GetSettings<DvnServerSet>(row, DvnStored::ServerRowCommonSettings(), common, "", "");
    // The context only with the control it belongs to.
    if (!row.IsFieldNull(&row.m_EXTERNAL_CONTROL) && row.m_EXTERNAL_CONTROL == 2)
        common("ExternalControlContext") = DvnString(row.m_EXTRNL_CNTRL_CNTXT.c_str());
}

void DvnConvCoreDbFe::CommonServerColumns(DvnServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
}
void DvnConvCoreDbFe::CleanupServerColumns(DvnCleanupServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
    GetSettings<DvnCleanupServerSet>(row, DvnStored::CleanupServerSettings(), KindTarget(server, type), "", "");
}
void DvnConvCoreDbFe::DistributionServerColumns(DvnDistributionServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
    // A stored time event goes back through its form ("ANYTIME": "AnyTime").
    GetSettings<DvnDistributionServerSet>(row, DvnStored::DistributionServerSettings(), KindTarget(server, type),
                                          "", "");
}
void DvnConvCoreDbFe::ExecutionServerColumns(DvnExecutionServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
    GetSettings<DvnExecutionServerSet>(row, DvnStored::ExecutionServerSettings(), KindTarget(server, type), "", "");
}
void DvnConvCoreDbFe::SchedulingServerColumns(DvnSchedulingServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
    GetSettings<DvnSchedulingServerSet>(row, DvnStored::SchedulingServerSettings(), KindTarget(server, type), "",
                                        "");
}
void DvnConvCoreDbFe::PEServerColumns(DvnPEServerSet& row, DvnfEntity& server, long type) {
    ServerSetting(server.AttributeData(), type, row, server);
    PEServer(row, server, type);
}
void DvnConvCoreDbFe::UPEServerColumns(DvnUPEServerSet& row, DvnfEntity& server, long type) {
    UPEServer(row, server, type);
}

void DvnConvCoreDbFe::PEServer(DvnPEServerSet& row, DvnfEntity& server, long type) {
    DvnfAttributeData target = KindTarget(server, type);
    GetSettings<DvnPEServerSet>(row, DvnStored::PEServerSettings(), target, "", "");
    // The bits that are 1, unless every column is null or none is.
    bool given = false;
    long sum = 0;
    for (const auto& b : DvnStored::PEServerSupportBits()) {
        if (row.IsFieldNull(&(row.*b.column))) continue;
        given = true;
        if (row.*b.column == 1) sum += b.bit;
    }
    if (given && sum > 0) target("ImplementationSupport") = sum;
}

void DvnConvCoreDbFe::UPEServer(DvnUPEServerSet& row, DvnfEntity& server, long) {
    DvnfAttributeData context = server.AttributeData()("UPESContext");
    // 1 is the one value the store knows.
    if (!row.IsFieldNull(&row.m_HXSYSTEM)) context("HXSystem") = 1L;
    if (!row.IsFieldNull(&row.m_MESSAGE_FORMAT)) context("MessageFormat") = 1L;
    CopyText(row, row.m_PHYSICALQUEUE, context("PhysicalQueueName"));
    CopyText(row, row.m_QMGRNAME, context("QueueManagerName"));
    auto number = [&](const long& column, const char* attribute, long fallback) {
        context(attribute) = row.IsFieldNull(&column) ? fallback : column;
    };
    number(row.m_VERSION, "Version", 3);
    number(row.m_RELEASE, "Release", 2);
    number(row.m_MOD_LEVEL, "Level", 2);
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, server.AttributeData());
}

// ------------------------------------------------------------------ the server of a program activity

CString DvnConvCoreDbFe::SystemGroupKey(DvnString const& name) {
    DvnSystemGroupSet groups(m_pDatabase);
    if (!name.IsNull()) return groups.GetSysGrpID(CString(name.c_str()), m_strTablePrefix);
    DvnString profiled;
    try {
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        profiled = profile.Find(DvnString("SystemGroup"), false);
    } catch (const DvnException&) {
        // No profile: the default name holds.
    }
    if (profiled.IsEmpty()) profiled = DvnString("SYS_GRP");
    const CString key = groups.GetSysGrpID(CString(profiled.c_str()), m_strTablePrefix);
    return key.IsEmpty() ? groups.GetDefaultSysGrpID(m_strTablePrefix) : key;
}

int DvnConvCoreDbFe::PeUnitToCore(DvnfEntity& server) {
    try {
        CString key(server.OID().c_str());
        const DvnString name = server.Name();
        const bool byName = server.State() == DvnfObject::StateNone && !name.str().empty();
        if (byName) {
            DvnString::Tokenizer levels(name, '.', true, true);
            const CString serverName = levels.Next().c_str();
            if (levels.Empty()) return LevelOk;
            const CString system = DvnSystemSet(m_pDatabase).GetSystemID(levels.Next().c_str(), m_strTablePrefix, true);
            const CString group = SystemGroupKey(levels.Empty() ? DvnString() : levels.Next());
            key = CString();
            if (!system.IsEmpty() && !group.IsEmpty()) {
                key = DvnPEServerSet(m_pDatabase).GetPESID(serverName, system, m_strTablePrefix);
                if (key.IsEmpty()) key = DvnUPEServerSet(m_pDatabase).GetUPESID(serverName, system, m_strTablePrefix);
            }
            if (key.IsEmpty()) {
                Report(51184, name);
                return LevelError;
            }
        }
        // The row's columns on the entity as it is: its name is the one the
        // activity's link holds.
        auto fill = [&](auto& row, long type, auto columns) {
            if (!server.IsValid()) return;
            server.AttributeData()("Type") = type;
            (this->*columns)(row, server, type);
            server.State(DvnfObject::StateUnchanged);
        };
        DvnPEServerSet pes(m_pDatabase);
        if (ReadRows(pes, SelectLive("PE_SERVER", "SERVER_ID", Literal(DvnString(key.c_str()))),
                     [&](DvnPEServerSet& row) { fill(row, 7, &DvnConvCoreDbFe::PEServerColumns); }) > 0)
            return LevelOk;
        DvnUPEServerSet upes(m_pDatabase);
        const long found = ReadRows(upes, SelectLive("USER_PE_SERVER", "SERVER_ID", Literal(DvnString(key.c_str()))),
                                    [&](DvnUPEServerSet& row) { fill(row, 8, &DvnConvCoreDbFe::UPEServerColumns); });
        if (found > 0) return LevelOk;
        // A name whose server is only a tombstone names no server either.
        if (byName) Report(51184, name);
        return LevelError;
    } catch (CDBException* e) {
        TraceDbException("Exception In PeUnitToCore: rc =", e);
        return LevelError;
    }
}
