// Single objects for the editor and the on-demand reader, and the lookups
// between the two identities of an object: the name a file or a person
// gives, and the key the database holds.
#include <cstring>
#include <map>

#include "dvnbauth.h"
#include "dvnbdbfe.h"
#include "dvnbdbif.h"
#include "dvnconnection.h"
#include "dvnlookup.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "guard.h"
#include "loadframe.h"

namespace {

CString Quoted(const DvnString& name) { return ReturnQuotedString(name, "'", "'").c_str(); }

bool IsType(const DvnfEntity& entity, const char* name) { return std::strcmp(entity.Type().Name(), name) == 0; }

}  // namespace

// ------------------------------------------------------------------ loads

template <class Work>
int DvnConvCoreDbIF::RunLoad(DvnfEntity& entity, const char* first, const char* second, const char* where,
                             Work work) {
    return LoadFrame(entity.Name(), first, second, where, work, [] {});
}

int DvnConvCoreDbIF::LoadDataStructure(DvnfEntity& structure) {
    return RunLoad(structure, "Load Data structure ", "DataStrucuturetoCore", "LoadDataStructure",
                   [&](DvnConvCoreDbFe& fe) {
                       structure.AttributeData().Reset("Members");
                       return fe.DsToCore(structure);
                   });
}

// A skeleton by its name, any other program by its key; the platform groups
// are read anew, so a program loaded twice holds them once.
int DvnConvCoreDbIF::LoadProgram(DvnfEntity& program) {
    return RunLoad(program, "Load program", "Program", "LoadProgram",
                   [&](DvnConvCoreDbFe& fe) { return fe.ProgramToCore(program); });
}

int DvnConvCoreDbIF::LoadCategory(DvnfEntity& category) {
    return RunLoad(category, "Load Category ", "CategorytoCore", "LoadCategory",
                   [&](DvnConvCoreDbFe& fe) { return fe.CategoryToCore(category); });
}

namespace {
// The row of an end (SOURCE or SINK) of that key; found(row) when there is one.
template <class Set, class Found>
void EndRow(CDatabase& db, const CString& prefix, const char* table, const char* keyColumn, const CString& key,
            Found found) {
    Set rs(&db);
    const CString statement =
        CString("SELECT * FROM ") + prefix + table + " WHERE [" + keyColumn + "] =" + Quoted(DvnString(key.c_str()));
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    if (!rs.IsEOF()) found(rs);
    rs.Close();
}
}  // namespace

// The mappings of one data connector and the containers at both its ends:
// an activity's own, or for a source or sink the containers of what holds
// it, the block activity or the process. An end that the core data does not
// hold is neither read nor marked.
int DvnConvCoreDbIF::LoadDataMapping(DvnfEntity& connector) {
    if (connector.IsAttributeDataAttrComplete()) {
        DVN_TRACE(1, 8, "Data mapping for " << connector.Name() << " is already loded");
        return 0;
    }
    return RunLoad(connector, "Load Data Mapping ", "DataMapping", "LoadDataMapping", [&](DvnConvCoreDbFe& fe) {
        const CString prefix = fe.GetTablePrefix();
        CDatabase& db = *m_pDatabase;
        auto activity = [&](const CString& aid) {
            DvnfEntity& end = m_pData->GetEntityByOID(DvnfString("Activity"), DvnfString(aid.c_str()), false);
            if (!end.IsValid()) return;
            fe.ActivityContainers(end.AttributeData(), &end, aid);
            dvnload::SetFlag(end, DvnfEntity::FlagContainersComplete);
        };
        // A source or a sink: its block when it lies inside one, else its process.
        auto holder = [&](auto& row) {
            if (!row.IsFieldNull(&row.m_BLOCK_AID) && !row.m_BLOCK_AID.IsEmpty()) return activity(row.m_BLOCK_AID);
            DvnfEntity& process = m_pData->GetEntityByOID(DvnfString("Process"), DvnfString(row.m_PID.c_str()), false);
            if (!process.IsValid()) return;
            fe.ProcessContainers(process.AttributeData(), &process, row.m_PID);
            dvnload::SetFlag(process, DvnfEntity::FlagContainersComplete);
        };
        return dvnload::ReadAttributes<DvnDataConnectorSet>(
            db, prefix, {"DATA_CONNECTOR", "DCID", 51702}, connector, *m_pData->MessageHandler(),
            [&](DvnDataConnectorSet& row) {
                const int level = fe.DataMapping(&connector, CString(connector.OID().c_str()));
                const CString fromActivity = row.m_FROM_ACTIVITY, toActivity = row.m_TO_ACTIVITY;
                const CString fromSource = row.m_FROM_SOURCE, toSink = row.m_TO_SINK;
                if (!fromActivity.IsEmpty()) activity(fromActivity);
                if (!toActivity.IsEmpty()) activity(toActivity);
                if (!fromSource.IsEmpty()) EndRow<DvnSourceSet>(db, prefix, "SOURCE", "SOURCE_ID", fromSource, holder);
                if (!toSink.IsEmpty()) EndRow<DvnSinkSet>(db, prefix, "SINK", "SINK_ID", toSink, holder);
                return level;
            });
    });
}

// A server that a program activity names: by its key, or, a skeleton, by
// its dotted name (server.system[.group]).
int DvnConvCoreDbIF::LoadPEUnit(DvnfEntity& server) {
    return RunLoad(server, "Load program execution unit", "PeUnit", "LoadPeUnit",
                   [&](DvnConvCoreDbFe& fe) { return fe.PeUnitToCore(server); });
}

// ------------------------------------------------------------------ lookups

template <class Find>
DvnfString DvnConvCoreDbIF::WithConnection(const char* where, Find find) {
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    CDatabase& db = *m_pDatabase;
    dvnguard::KeepOpen keep(db);
    if (!db.IsOpen() && OpenDatabaseFromProfile(db, person->DbUser(), person->DbPassword()) != 0) {
        DVN_TRACE(1, 8, "Open database failed");
        return DvnfString("");
    }
    DvnfString result("");
    int level = 0;
    dvnguard::Run(*m_pData->MessageHandler(), dvnguard::LoadWords(where), level,
                  [&] { result = find(db, GetTablePrefix(db)); });
    return level == 0 ? result : DvnfString("");
}

DvnfString DvnConvCoreDbIF::GetDataStructureID(DvnfEntity& structure) {
    return WithConnection("GetDataStructureID", [&](CDatabase& db, const CString& prefix) {
        DvnDataStructureSet rs(&db);
        return DvnfString(rs.GetDsID(Quoted(structure.Name()), prefix, true).c_str());
    });
}

DvnString DvnConvCoreDbIF::FindProcess(const DvnString& name) {
    DVN_TRACE(1, 8, "FindProcess " << name);
    return WithConnection("GetName", [&](CDatabase& db, const CString& prefix) {
        DvnSimplePrcSet rs(&db);
        return DvnfString(rs.GetProcessID(Quoted(name), prefix).c_str());
    });
}

DvnfString DvnConvCoreDbIF::GetName(DvnfEntity& entity) {
    if (!entity.IsValid()) return DvnfString("");
    DVN_TRACE(1, 8, "GetName " << entity.Type().Name());
    return WithConnection("GetName", [&](CDatabase&, const CString& prefix) { return FindName(entity, prefix); });
}

// One row per type: the lookup by key (which gives the name) and by name
// (which gives the key), on a recordset of the type's table.
namespace {
struct NameLookup {
    const char* type;
    DvnfString (*byId)(CDatabase& db, const CString& id, const CString& prefix);
    CString (*byName)(CDatabase& db, const DvnString& name, const CString& prefix);
};

const NameLookup kLookups[] = {
    {"Category", [](CDatabase& db, const CString& id, const CString& p) { return DvnCategorySet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnCategorySet(&db).GetCatID(Quoted(n), p, true); }},
    {"DataStructure",
     [](CDatabase& db, const CString& id, const CString& p) { return DvnDataStructureSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnDataStructureSet(&db).GetDsID(Quoted(n), p, true); }},
    {"Organization",
     [](CDatabase& db, const CString& id, const CString& p) { return DvnOrganizationSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) {
         return DvnOrganizationSet(&db).GetOrganizationID(Quoted(n), p, true);
     }},
    {"Role", [](CDatabase& db, const CString& id, const CString& p) { return DvnRoleSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnRoleSet(&db).GetRoleID(Quoted(n), p, true); }},
    {"Person", [](CDatabase& db, const CString& id, const CString& p) { return DvnPersonSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnPersonSet(&db).GetPersonID(Quoted(n), p, true); }},
    {"Activity", [](CDatabase& db, const CString& id, const CString& p) { return DvnActivitySet(&db).GetName(id, p); },
     nullptr},
    {"Program", [](CDatabase& db, const CString& id, const CString& p) { return DvnProgramSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnProgramSet(&db).GetProgramID(Quoted(n), p, true); }},
    {"System", [](CDatabase& db, const CString& id, const CString& p) { return DvnSystemSet(&db).GetName(id, p, true); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnSystemSet(&db).GetSystemID(n.c_str(), p, true); }},
    {"SystemGroup", [](CDatabase& db, const CString& id, const CString& p) { return DvnSystemGroupSet(&db).GetName(id, p); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnSystemGroupSet(&db).GetSysGrpID(n.c_str(), p); }},
    {"Domain", [](CDatabase& db, const CString& id, const CString& p) { return DvnDomainSet(&db).GetName(id, p); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnDomainSet(&db).GetDomainID(n.c_str(), p); }},
    {"Node", [](CDatabase& db, const CString& id, const CString& p) { return DvnNodeSet(&db).GetName(id, p); },
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnNodeSet(&db).GetNodeID(Quoted(n), p); }},
    {"QueueManager", [](CDatabase& db, const CString& id, const CString& p) { return DvnQueueManagerSet(&db).GetName(id, p); },
     [](CDatabase& db, const DvnString& n, const CString& p) {
         return DvnQueueManagerSet(&db).GetQueueManagerID(Quoted(n), p);
     }},
};
}  // namespace

DvnfString DvnConvCoreDbIF::FindName(DvnfEntity& entity, const CString& prefix) {
    const bool byName = entity.State() == DvnfObject::StateNone && !entity.Name().str().empty();
    if (IsType(entity, "Server")) return byName ? ServerKey(entity, prefix) : ServerName(entity, prefix);
    for (const NameLookup& lookup : kLookups) {
        if (!IsType(entity, lookup.type)) continue;
        if (byName) {
            if (!lookup.byName) return entity.Name();
            const CString key = lookup.byName(*m_pDatabase, entity.Name(), prefix);
            return key.IsEmpty() ? DvnfString("") : entity.Name();
        }
        const DvnfString name = lookup.byId(*m_pDatabase, CString(entity.OID().c_str()), prefix);
        if (!name.str().empty() && entity.IsValid()) entity.Name(name);
        return name;
    }
    return DvnfString("");
}

// A server known by key: "server.system.group", from the program execution
// servers first, then the user servers; only for "Type" 7 and 8.
DvnfString DvnConvCoreDbIF::ServerName(DvnfEntity& entity, const CString& prefix) {
    const long type = entity.AttributeData()("Type").AsLong(0);
    if (type != 7 && type != 8) return DvnfString("");
    CDatabase& db = *m_pDatabase;
    const CString id(entity.OID().c_str());
    DvnfString server = DvnPEServerSet(&db).GetName(id, prefix);
    CString system;
    if (!server.str().empty()) {
        system = DvnPEServerSet(&db).GetSystem(id, prefix);
    } else {
        server = DvnUPEServerSet(&db).GetName(id, prefix);
        if (server.str().empty()) return DvnfString("");
        DvnUPEServerSet rs(&db);
        system = dvnlookup::FirstRow(rs, prefix + "USER_PE_SERVER", CString("SERVER_ID = ") + dvnlookup::Literal(id),
                                     CString(), [&] { return rs.m_SYSTEM; });
    }
    const DvnfString systemName = DvnSystemSet(&db).GetName(system, prefix, true);
    const CString group = DvnSystemSet(&db).GetSystemGroupID(system, prefix);
    const DvnfString groupName = DvnSystemGroupSet(&db).GetName(group, prefix);
    const DvnfString full(server.str() + "." + systemName.str() + "." + groupName.str());
    if (entity.IsValid()) entity.Name(full);
    return full;
}

// A server known by its dotted name: its key, or 51184 when none is found.
DvnfString DvnConvCoreDbIF::ServerKey(DvnfEntity& entity, const CString& prefix) {
    CDatabase& db = *m_pDatabase;
    DvnString::Tokenizer levels(entity.Name(), '.', true, true);
    const CString server = levels.Next().c_str();
    const DvnString second = levels.Empty() ? DvnString() : levels.Next();
    const DvnString third = levels.Empty() ? DvnString() : levels.Next();
    CString key;
    if (second.IsNull()) {
        CString system;
        key = DvnPEServerSet(&db).GetPESIDNoSystem(server, system, prefix);
        if (key.IsEmpty()) key = DvnUPEServerSet(&db).GetUPESIDNoSystem(server, system, prefix);
    } else {
        const CString system = DvnSystemSet(&db).GetSystemID(second.c_str(), prefix, true);
        if (!system.IsEmpty()) {
            key = DvnPEServerSet(&db).GetPESID(server, system, prefix);
            if (key.IsEmpty()) key = DvnUPEServerSet(&db).GetUPESID(server, system, prefix);
        }
        (void)third;  // the group names the system's group; the system's key decides
    }
    if (key.IsEmpty()) {
        Report(51184, entity.Name());
        return DvnfString("");
    }
    return entity.Name();
}

void DvnConvCoreDbIF::GetNamesOfAll(const DvnfString& typeName) {
    DvnfProcessed processed;
    bool again = true;
    while (again) {
        again = false;
        for (const auto& [name, object] : m_pData->GetEntities(typeName)) {
            if (processed.Processed(*object)) continue;
            processed.Processed(*object, true);
            if (object->State() < DvnfObject::StateNew) {
                GetName(object->Entity());
                again = true;  // the map may have changed: walk it from its start
                break;
            }
        }
    }
}

void DvnConvCoreDbIF::GetNamesOfAll() {
    for (const char* type : {"Category", "DataStructure", "Organization", "Role", "Person", "Program", "System",
                             "SystemGroup", "Domain", "Node", "QueueManager", "Server"})
        GetNamesOfAll(DvnfString(type));
}
