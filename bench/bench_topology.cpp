// The systems through the whole road: the import of one domain, one system
// group and N systems (parse, rights, the store's lookups, the SYSTEM row and
// its settings rows), the same file again with overwrite on, and the load of
// every system with its settings, each against the raw-ODBC baseline of as
// many rows.
//
// Each system has an explicit identifier, a description and settings of
// every family: eleven rows per system (SYSTEM, its process, program and
// specific server rows, and seven common server rows), written in one
// transaction per system.
//
// At a tenth of N (1x) and at N (10x), each into a database of its own; the
// last lines compare the cost per system:
//   system <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// Then nodes, queue managers and agents of persons inserted as rows, N of
// each, the same way, with their three loads:
//   node+qm+agent <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// Then N systems with six servers each (execution, gateway, modelling,
// distribution, program execution, user defined program execution): import,
// re-import, the load of all servers, and the deletion of every system with
// the servers that may go with it:
//   system+servers <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// usage: bench_topology [N] (default 1000)
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "benchrun.h"

namespace {

std::string WriteSystems(int n) {
    const std::string path = bench::TempFile("bench_topology", n, ".trx");
    std::ofstream out(path);
    out << "Domain \"domain\" { OperationDefault { MessageRetryLimit = 9; } }\n"
           "SystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";
    char name[16];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "S%07d", i);  // eight characters: stored as given
        out << "System \"" << name << "\" {\n  SystemIdentifier = " << i + 1
            << "; SystemIsInSystemGroup -> \"SYS_GRP\"; Description = \"Generated system " << i << "\";\n"
            << "  OperationDefault { MessageRetryLimit = " << i % 7 + 1
            << "; OperationMode = 2; ResponseWaitTime { Minutes = 3; } }\n"
            << "  ProcessDefault { Autonomy = 5; KeepProcesses { Type = 2; Days = 2; } }\n"
            << "  ProgramDefault { Trusted = false; ExecutionMode = 2; }\n"
            << "  ServerDefault { ExecutionServer { NavigationTransactionThreshold = 20;"
            << " ServerCommon { CheckInterval { Minutes = 10; } NrOfInstances = 2; } }\n"
            << "    CleanupServer { ServerCommon { ExternalControl = 2; } } }\n}\n";
    }
    return path;
}

// N nodes, N queue managers (each on its node, with a name of its own) and
// N agents, each of a person that stands in the repository as a row.
std::string Numbered(const char* head, int i) {
    char name[16];
    std::snprintf(name, sizeof name, "%s%07d", head, i);
    return name;
}

std::string WriteNodes(int n) {
    const std::string path = bench::TempFile("bench_topology_nodes", n, ".trx");
    std::ofstream out(path);
    out << "Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";
    for (int i = 0; i < n; ++i) {
        const std::string node = Numbered("N", i), user = Numbered("U", i);
        out << "Node \"" << node << "\" { OperatingSystem = " << i % 7 << "; Description = \"node " << i << "\"; }\n"
            << "QueueManager \"" << Numbered("Q", i) << "\" { Name = \"" << Numbered("MQ", i)
            << "\"; QueueManagerRunsOnNode -> \"" << node << "\"; }\n"
            << "PEAgent \"" << user << "\" { PEAHasPerson -> \"" << user
            << "\"; PEADefault { TaskingMode = 1; MaximumTasksStarted = 5; SupportMode = 1; } }\n";
    }
    return path;
}

// N systems, each with an execution, a gateway, a modelling, a distribution,
// a program execution and a user defined program execution server.
const char* const kServers[][2] = {{"EX", "3"}, {"GW", "4"}, {"MO", "5"}, {"DI", "2"}, {"PES", "7"}, {"UPES", "8"}};

std::string WriteServers(int n) {
    const std::string path = bench::TempFile("bench_topology_servers", n, ".trx");
    std::ofstream out(path);
    out << "Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";
    for (int i = 0; i < n; ++i) {
        const std::string system = Numbered("S", i);
        out << "System \"" << system << "\" { SystemIdentifier = " << i + 1
            << "; SystemIsInSystemGroup -> \"SYS_GRP\"; }\n";
        for (const auto& server : kServers)
            out << "Server \"" << server[0] << "." << system << ".SYS_GRP\" { Type = " << server[1]
                << "; ServerIsInSystem -> \"" << system << "\"; Description = \"server " << i << "\"; }\n";
    }
    return path;
}

// The deletion of every system with the servers that may go with it (the
// gateway, modelling and distribution servers are never deleted).
std::string DeleteServers(int n) {
    std::string text;
    for (int i = 0; i < n; ++i) {
        const std::string system = Numbered("S", i);
        for (const char* server : {"EX", "PES", "UPES"})
            text += "delete Server \"" + std::string(server) + "." + system + ".SYS_GRP\";\n";
        text += "delete System \"" + system + "\";\n";
    }
    return text;
}

// The persons of the agents, as rows, in one transaction.
void InsertPersons(CDatabase& db, int n) {
    db.BeginTrans();
    for (int i = 0; i < n; ++i)
        db.ExecuteSQL(("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P" + std::to_string(i) +
                       "', '" + Numbered("U", i) + "', 0)")
                          .c_str());
    db.CommitTrans();
}

}  // namespace

int main(int argc, char** argv) {
    int n = 1000;
    if (argc > 1) n = std::atoi(argv[1]);
    if (n <= 0) {
        std::fprintf(stderr, "usage: bench_topology [N]\n");
        return 2;
    }
    std::printf("systems of eleven rows in a domain and a group, at %d and at %d\n", std::max(1, n / 10), n);
    bench::PrintHeader("systems");
    bench::Growth growth;
    const int status = bench::ForTwoSizes("bench_topology", n, WriteSystems,
                                          [&](const char* backend, const std::string& ds, const std::string& path,
                                              int count) {
        const char* const settings[] = {"SYSTEM", "SYSTEM_PRC_ATTR", "SYSTEM_PRG_ATTR", "SYSTEM_SVS_ATTR",
                                        "SYSTEM_SVR_ATTR"};
        const std::vector<const char*> tables(std::begin(settings), std::end(settings));
        const bench::Workload systems{count, tables,
                                      {{"Systems", &DvnConvCoreDbFe::Systems, "System", tables}}};
        bench::ImportTwiceAndLoad(backend, ds, path, count, systems, growth);
    });
    growth.Print("system");

    // Nodes, queue managers and agents: a unit is one of each (three
    // objects, three transactions).
    std::printf("\nnodes, queue managers and agents of persons in the repository, at %d and at %d\n",
                std::max(1, n / 10), n);
    bench::PrintHeader("triples");
    bench::Growth triples;
    const int nodeStatus = bench::ForTwoSizes("bench_topology_nodes", n, WriteNodes,
                                              [&](const char* backend, const std::string& ds, const std::string& path,
                                                  int count) {
        const bench::Workload work{3L * count,
                                   {"NODE", "QUEUE_MANAGER", "PE_AGENT"},
                                   {{"Nodes", &DvnConvCoreDbFe::Nodes, "Node", {"NODE"}},
                                    {"QueueManager", &DvnConvCoreDbFe::QueueManager, "QueueManager", {"QUEUE_MANAGER"}},
                                    {"PeAgent", &DvnConvCoreDbFe::PeAgent, "PEAgent", {"PE_AGENT"}}}};
        bench::ImportTwiceAndLoad(backend, ds, path, count, work, triples,
                                  [count](CDatabase& db) { InsertPersons(db, count); });
    });
    triples.Print("node+qm+agent");

    // Systems with six servers each: a unit is a system and its servers
    // (seven objects, seven transactions); last, every system deleted with
    // its execution and program execution servers.
    std::printf("\nsystems of six servers each, at %d and at %d\n", std::max(1, n / 10), n);
    bench::PrintHeader("systems");
    bench::Growth servers;
    const int serverStatus = bench::ForTwoSizes("bench_topology_servers", n, WriteServers,
                                                [&](const char* backend, const std::string& ds,
                                                    const std::string& path, int count) {
        const std::vector<const char*> kinds = {"EXECUTION_SERVER", "GATEWAY_SERVER", "MODELLING_SERVER",
                                                "DISTRIBUTION_SRV", "PE_SERVER",      "USER_PE_SERVER"};
        std::vector<const char*> tables = kinds;
        tables.push_back("SYSTEM");
        const auto all = static_cast<void (DvnConvCoreDbFe::*)(const DvnString&)>(&DvnConvCoreDbFe::Servers);
        const bench::Workload work{7L * count, tables, {{"Servers", all, "Server", kinds}}, DeleteServers(count)};
        bench::ImportTwiceAndLoad(backend, ds, path, count, work, servers);
    });
    servers.Print("system+servers");
    if (status != 0) return status;
    return nodeStatus != 0 ? nodeStatus : serverStatus;
}
