// The exports: definitions read from the database into the core data of the
// facade, section by section under the rights of the user. Writing them out
// is the caller's.
#include <cstring>

#include "dvnbauth.h"
#include "dvnbdbfe.h"
#include "dvnbdbif.h"
#include "dvnconnection.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "guard.h"

namespace {

enum Right { Modelling, Staff, Topology, Free };

struct Refusal {
    long message;
    const char* trace;
};
const Refusal kRefusals[] = {
    {51533, "No process modeling authorization"},
    {51534, "No staff definition authorization"},
    {51535, "No toplogy definition authorization"},
};

using Read = void (DvnConvCoreDbFe::*)(DvnString const&);

// A section of an export by group. read null: servers, by their group.
struct Section {
    int group;
    Right right;
    Read read;
};
const Section kSections[] = {
    {EXPORT_CATEGORIES, Modelling, &DvnConvCoreDbFe::Categories},
    {EXPORT_PROCESSES, Modelling, &DvnConvCoreDbFe::Processes},
    {EXPORT_PERSONS, Staff, &DvnConvCoreDbFe::Persons},
    {EXPORT_ROLES, Staff, &DvnConvCoreDbFe::Roles},
    {EXPORT_ORGANIZATIONS, Staff, &DvnConvCoreDbFe::Orgs},
    {EXPORT_LEVELS, Staff, &DvnConvCoreDbFe::Levels},
    {EXPORT_DOMAINS, Topology, &DvnConvCoreDbFe::DvDomains},
    {EXPORT_SYSTEM_GROUPS, Topology, &DvnConvCoreDbFe::SystemGroups},
    {EXPORT_SYSTEMS, Topology, &DvnConvCoreDbFe::Systems},
    {EXPORT_NODES, Topology, &DvnConvCoreDbFe::Nodes},
    {EXPORT_DATA_STRUCTURES, Modelling, &DvnConvCoreDbFe::DataStructures},
    {EXPORT_PROGRAMS, Modelling, &DvnConvCoreDbFe::Programs},
    {EXPORT_ACT_INSTANCE_LISTS, Staff, &DvnConvCoreDbFe::Lists},
    {EXPORT_PRC_INSTANCE_LISTS, Staff, &DvnConvCoreDbFe::Lists},
    {EXPORT_PRC_TEMPLATE_LISTS, Staff, &DvnConvCoreDbFe::Lists},
    {EXPORT_WORK_LISTS, Staff, &DvnConvCoreDbFe::Lists},
    {EXPORT_CLEANUP_SERVERS, Topology, nullptr},
    {EXPORT_DISTRIBUTION_SERVERS, Topology, nullptr},
    {EXPORT_EXECUTION_SERVERS, Topology, nullptr},
    {EXPORT_GATEWAY_SERVERS, Topology, nullptr},
    {EXPORT_MODELLING_SERVERS, Topology, nullptr},
    {EXPORT_SCHEDULING_SERVERS, Topology, nullptr},
    {EXPORT_PE_AGENTS, Topology, &DvnConvCoreDbFe::PeAgent},
    {EXPORT_QUEUE_MANAGERS, Topology, &DvnConvCoreDbFe::QueueManager},
    {EXPORT_TOOL_SETS, Modelling, &DvnConvCoreDbFe::ToolSet},
    {EXPORT_PE_SERVERS, Topology, nullptr},
    {EXPORT_USER_PE_SERVERS, Topology, nullptr},
};

const Section* SectionOf(int group) {
    for (const Section& s : kSections)
        if (s.group == group) return &s;
    return nullptr;
}

// The whole repository, in this order; kAllServers stands for the servers
// of every kind. GetNamesOfAll follows processes and programs when they were read.
constexpr int kAllServers = -1;
struct AllStep {
    int group;
    bool namesAfter;
};
const AllStep kAll[] = {
    {EXPORT_CATEGORIES, false}, {EXPORT_PROCESSES, true},     {EXPORT_DATA_STRUCTURES, false},
    {EXPORT_PROGRAMS, true},    {EXPORT_LEVELS, false},       {EXPORT_PERSONS, false},
    {EXPORT_ROLES, false},      {EXPORT_ORGANIZATIONS, false}, {EXPORT_ACT_INSTANCE_LISTS, false},
    {EXPORT_TOOL_SETS, false},  {EXPORT_DOMAINS, false},      {EXPORT_SYSTEM_GROUPS, false},
    {EXPORT_SYSTEMS, false},    {kAllServers, false},                   {EXPORT_PE_AGENTS, false},
    {EXPORT_NODES, false},      {EXPORT_QUEUE_MANAGERS, false},
};

CString Quoted(const DvnString& name) { return ReturnQuotedString(name, "'", "'").c_str(); }

// A kind of an export by command: its right, how a name becomes a key, the
// message when it does not, and the section read with the key.
using Lookup = CString (*)(CDatabase& db, const DvnString& name, const CString& prefix);
struct CommandKind {
    int type;
    Right right;
    Lookup lookup;  // null: the name is the key
    long notFound;
    Read read;      // null: reads nothing (servers are read by name apart)
};

CString ListID(CDatabase& db, const DvnString& name, const CString& prefix, const char* table) {
    return DvnListSet(&db).GetListID(Quoted(name), prefix, table);
}

const CommandKind kCommands[] = {
    {DvnEntityType::Level, Staff, nullptr, 0, &DvnConvCoreDbFe::Levels},
    {DvnEntityType::DataStructure, Modelling,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnDataStructureSet(&db).GetDsID(Quoted(n), p, true); },
     51551, &DvnConvCoreDbFe::DataStructures},
    {DvnEntityType::ToolSet, Free, nullptr, 0, &DvnConvCoreDbFe::ToolSet},
    {DvnEntityType::Category, Modelling,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnCategorySet(&db).GetCatID(Quoted(n), p, true); },
     51549, &DvnConvCoreDbFe::Categories},
    {DvnEntityType::Unused, Topology, nullptr, 0, nullptr},
    {DvnEntityType::Program, Modelling,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnProgramSet(&db).GetProgramID(Quoted(n), p, true); },
     51550, &DvnConvCoreDbFe::Programs},
    {DvnEntityType::SystemGroup, Topology,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnSystemGroupSet(&db).GetSysGrpID(n.c_str(), p); },
     51554, &DvnConvCoreDbFe::SystemGroups},
    {DvnEntityType::System, Topology,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnSystemSet(&db).GetSystemID(n.c_str(), p, true); },
     51555, &DvnConvCoreDbFe::Systems},
    {DvnEntityType::Person, Staff,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnPersonSet(&db).GetPersonID(Quoted(n), p, true); },
     51536, &DvnConvCoreDbFe::Persons},
    {DvnEntityType::Role, Staff,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnRoleSet(&db).GetRoleID(Quoted(n), p, true); },
     51537, &DvnConvCoreDbFe::Roles},
    {DvnEntityType::Organization, Staff,
     [](CDatabase& db, const DvnString& n, const CString& p) {
         return DvnOrganizationSet(&db).GetOrganizationID(Quoted(n), p, true);
     },
     51538, &DvnConvCoreDbFe::Orgs},
    {DvnEntityType::Server, Topology, nullptr, 0, nullptr},
    {DvnEntityType::Node, Topology,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnNodeSet(&db).GetNodeID(Quoted(n), p); }, 51557,
     &DvnConvCoreDbFe::Nodes},
    {DvnEntityType::TemplatesList, Free,
     [](CDatabase& db, const DvnString& n, const CString& p) { return ListID(db, n, p, "PRC_TEMPLATE_LIST"); }, 51542,
     &DvnConvCoreDbFe::Lists},
    {DvnEntityType::ProcessInstancesList, Free,
     [](CDatabase& db, const DvnString& n, const CString& p) { return ListID(db, n, p, "PRC_INSTANCE_LIST"); }, 51541,
     &DvnConvCoreDbFe::Lists},
    {DvnEntityType::ActivitiesList, Free,
     [](CDatabase& db, const DvnString& n, const CString& p) { return ListID(db, n, p, "ACT_INSTANCE_LIST"); }, 51540,
     &DvnConvCoreDbFe::Lists},
    {DvnEntityType::Worklist, Free,
     [](CDatabase& db, const DvnString& n, const CString& p) { return ListID(db, n, p, "WORK_LIST"); }, 51543,
     &DvnConvCoreDbFe::Lists},
    {DvnEntityType::PEAgent, Topology,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnPEASet(&db).GetPEAID(n.c_str(), p); }, 51559,
     &DvnConvCoreDbFe::PeAgent},
    {DvnEntityType::QueueManager, Topology,
     [](CDatabase& db, const DvnString& n, const CString& p) {
         return DvnQueueManagerSet(&db).GetQueueManagerID(Quoted(n), p);
     },
     51556, &DvnConvCoreDbFe::QueueManager},
    {DvnEntityType::Process, Modelling,
     [](CDatabase& db, const DvnString& n, const CString& p) { return DvnSimplePrcSet(&db).GetProcessID(Quoted(n), p); },
     51544, &DvnConvCoreDbFe::Processes},
};

// Servers by name: the table of the kind, its export group, the message.
struct ServerByName {
    int kind;
    const char* table;  // null: the user program execution servers
    int group;
    long notFound;
};
const ServerByName kServerKinds[] = {
    {DvnSvrKind::Execution, "EXECUTION_SERVER", 23, 51563},  {DvnSvrKind::Scheduling, "SCHEDULING_SERVER", 26, 51566},
    {DvnSvrKind::Cleanup, "CLEANUP_SERVER", 21, 51561},      {DvnSvrKind::Distribution, "DISTRIBUTION_SRV", 22, 51562},
    {DvnSvrKind::Modelling, "MODELLING_SERVER", 25, 51565},  {DvnSvrKind::Gateway, "GATEWAY_SERVER", 24, 51564},
    {DvnSvrKind::PEServer, "PE_SERVER", 30, 51568},          {DvnSvrKind::UserPEServer, nullptr, 32, 51568},
};

// A value of the machine profile, or the default when it has none.
DvnString ProfileValue(const char* key, const char* fallback) {
    try {
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        DvnString value = profile.Find(DvnString(key), false);
        if (!value.IsEmpty()) return value;
    } catch (const DvnException&) {
        // No profile: the default holds.
    }
    return DvnString(fallback);
}

}  // namespace

// ------------------------------------------------------------------ frame

bool DvnConvCoreDbIF::MayRead(int right) {
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    const bool held = right == Free || (right == Modelling && person->AuthForProcessModeling()) ||
                      (right == Staff && person->AuthForStaffWrite()) ||
                      (right == Topology && person->AuthForTopologyWrite());
    if (held) return true;
    m_pData->MessageHandler()->Report(kRefusals[right].message);
    DVN_TRACE(1, 8, kRefusals[right].trace);
    return false;
}

template <class ReadAll>
int DvnConvCoreDbIF::RunExport(const DvnString& dataSource, const char* guardedName, ReadAll read) {
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    DVNK_REQUIRE(person != nullptr, "person != 0");
    CDatabase& db = *m_pDatabase;
    const bool fromFile = !dataSource.IsNull() && !dataSource.str().empty();
    const int opened = fromFile ? OpenDatabaseFromFile(CString(dataSource.c_str()), db, person->DbUser(),
                                                       person->DbPassword())
                                : OpenDatabaseFromProfile(db, person->DbUser(), person->DbPassword());
    if (opened != 0) {
        Report(51366, DvnString(DvnConnection::DisplayName(CString(dataSource.c_str())).c_str()));
        DVN_TRACE(1, 8, "Open database failed");
        return opened;
    }
    if (!db.IsOpen()) return 1;

    auto* frontEnd = new DvnConvCoreDbFe(&db, m_pData);
    frontEnd->SetTablePrefix(GetTablePrefix(db));
    int level = 0;
    if (guardedName == nullptr) {
        // The export of everything: a database failure only, traced.
        try {
            read(*frontEnd);
        } catch (CDBException* e) {
            DVN_TRACE(1, 2, "Exception In Export All: rc =" << e->m_nRetCode << "Error: " << e->m_strError
                                                            << "State: " << e->m_strStateNativeOrigin);
            e->Delete();
            level = 12;
        }
    } else {
        static const dvnguard::Words words{"Database exception In Export All: rc =", "DVNException in Export",
                                           "Memory exception in Export", "Unknown exception In Export"};
        dvnguard::Run(*m_pData->MessageHandler(), words, level, [&] {
            read(*frontEnd);
        });
    }
    if (db.IsOpen()) db.Close();
    delete frontEnd;
    return level;
}

int DvnConvCoreDbIF::ReadGroup(DvnConvCoreDbFe& fe, const DvnString& id, int group) {
    if (group == kAllServers) {
        if (!MayRead(Topology)) return 0;
        fe.Servers(id);
        return 1;
    }
    const Section* section = SectionOf(group);
    if (!section) return 0;  // a number without a section reads nothing
    if (!MayRead(section->right)) return 0;
    if (section->read)
        (fe.*section->read)(id);
    else
        fe.Servers(group, id);
    return 1;
}

// ------------------------------------------------------------------ the three

int DvnConvCoreDbIF::ExportAll(const DvnString& dataSource) {
    return RunExport(dataSource, nullptr, [&](DvnConvCoreDbFe& fe) {
        for (const AllStep& step : kAll)
            if (ReadGroup(fe, DvnString(""), step.group) && step.namesAfter) GetNamesOfAll();
    });
}

int DvnConvCoreDbIF::ExportGroups(const DvnString& dataSource, const DvnString& id, EXPORT_GROUPS group, bool deep) {
    return RunExport(dataSource, "Export", [&](DvnConvCoreDbFe& fe) {
        ReadGroup(fe, id, group);
        GetNamesOfAll();
        const bool deepGroup = group == EXPORT_PROCESSES || group == EXPORT_DATA_STRUCTURES || group == EXPORT_PROGRAMS;
        if (deep && deepGroup && DvnBTAuthorization::GetInstance()->AuthForProcessModeling()) {
            fe.DeepProcesses();
            GetNamesOfAll();
        }
    });
}

int DvnConvCoreDbIF::ExportByCommand(const DvnString& dataSource, DvnCmdVisitor::Command& command) {
    return RunExport(dataSource, "Export", [&](DvnConvCoreDbFe& fe) {
        ReadCommand(fe, command);
        GetNamesOfAll();
        // Deep: processes, and as in an export by group, structures and programs.
        const DvnEntityType::Type type = command.EntityType();
        const bool deepKind = type == DvnEntityType::Process || type == DvnEntityType::DataStructure ||
                              type == DvnEntityType::Program;
        if (command.Deep() && deepKind && DvnBTAuthorization::GetInstance()->AuthForProcessModeling()) {
            fe.DeepProcesses();
            GetNamesOfAll();
        }
    });
}

void DvnConvCoreDbIF::ReadCommand(DvnConvCoreDbFe& fe, DvnCmdVisitor::Command& command) {
    const CommandKind* kind = nullptr;
    for (const CommandKind& k : kCommands)
        if (k.type == command.EntityType()) kind = &k;
    if (!kind || !MayRead(kind->right)) return;
    CDatabase& db = *m_pDatabase;
    const CString prefix = fe.GetTablePrefix();
    if (kind->type == DvnEntityType::Domain) {
        // One domain: the one of the repository, whatever was asked.
        fe.DvDomains(DvnString(DvnDomainSet(&db).GetDomainID("DOMAIN", prefix).c_str()));
        return;
    }
    if (kind->type == DvnEntityType::Server) {
        if (command.All())
            fe.Servers(DvnString(""));
        else
            ReadServersByName(fe, command);
        return;
    }
    if (!kind->read) return;
    if (command.All()) {
        (fe.*kind->read)(DvnString(""));
        return;
    }
    for (const DvnString& name : command.Names()) {
        const DvnString key = kind->lookup ? DvnString(kind->lookup(db, name, prefix).c_str()) : name;
        if (key.IsNull() || key.str().empty()) {
            m_pData->MessageHandler()->Report(kind->notFound);
            continue;
        }
        (fe.*kind->read)(key);
    }
}

// Servers by their dotted names: server, system, system group. A missing
// system is the profile's ("System", else "DVNSYS"), else the first one.
void DvnConvCoreDbIF::ReadServersByName(DvnConvCoreDbFe& fe, DvnCmdVisitor::Command& command) {
    const ServerByName* kind = nullptr;
    for (const ServerByName& k : kServerKinds)
        if (k.kind == command.SvrKind()) kind = &k;
    if (!kind) return;
    CDatabase& db = *m_pDatabase;
    const CString prefix = fe.GetTablePrefix();
    for (const DvnString& name : command.Names()) {
        DvnString::Tokenizer levels(name, '.', true, true);
        const CString server = levels.Next().c_str();
        const DvnString systemLevel = levels.Empty() ? DvnString() : levels.Next();
        const DvnString groupLevel = levels.Empty() ? DvnString() : levels.Next();
        CString system;
        if (systemLevel.IsNull()) {
            system = DvnSystemSet(&db).GetSystemID(ProfileValue("System", "DVNSYS").c_str(), prefix, true);
            if (system.IsEmpty()) system = DvnSystemSet(&db).GetDefaultSystemID(prefix);
        } else {
            system = DvnSystemSet(&db).GetSystemID(systemLevel.c_str(), prefix, true);
        }
        const CString group = fe.SystemGroupKey(groupLevel);
        const CString key = kind->table ? DvnServerSet(&db).GetServerID(server, system, prefix, kind->table)
                                        : DvnUPEServerSet(&db).GetUPESID(server, system, prefix);
        if (key.IsEmpty()) {
            m_pData->MessageHandler()->Report(kind->notFound);
            continue;
        }
        fe.Servers(kind->group, DvnString(key.c_str()));
    }
}
