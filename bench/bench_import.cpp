// The import through the whole road (parse, rights, transactions of the
// stores with their lookups and inserts), against the raw-ODBC baseline of
// the same number of rows, each looked up by key and inserted, in
// transactions of as many rows as the store writes in one.
//
// Two files: N categories (one row and one transaction per object), and S
// data structures of M members each (the structure row in a first pass, its
// members in a second; the first member names the next structure, so that
// half the references point forward).
//
// Each file is imported twice, into a fresh database each time: at a tenth
// of its size and at its full size, so that the cost per row of the two can
// be compared (a cost that grows with the repository shows there).
//
// Prints, per file, size and database: the parse alone (objects per second),
// the whole import, the store alone (the import less its parse) and the raw
// baseline (rows per second), the ratio import/raw, and the peak resident
// memory the import added to the process against the size of its file. Then,
// last, per database:
//   growth <database> <file>=<cost per row at full size / at a tenth> ...
//   memory <database> <file>=<peak memory / file size> ...
//   ratio <database> <file>=<import/raw at full size> ...
//
// A third file: P processes of A activities each (two role assignments,
// five container values and a support tool per activity; the roles and
// programs are rows put in by SQL first), written from core data with
// DvnTRXWriter. It is imported, then imported again with overwrite on, so
// that each process is replaced. The rows are counted in the tables after
// each import. At a tenth of P and at P, like the other files, to compare
// the cost per activity at one size and at ten times that size (last line):
//   activity <database> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// A fourth file: K processes of 100 activities of every kind (program
// activities with their program and server, blocks three deep) with every
// process attribute and their connectors, imported new and then replaced
// like the third, at K only; after each import the rows whose owner row is
// gone are counted ("orphans", 0).
//
// A fifth file: L lists of each of the four kinds, owned by L/10 persons
// (rows put in by SQL first), and L/10 tool sets of 20 icons each. It is
// imported, then imported again with overwrite on (every row rewritten in
// place), at a tenth of L and at L; last line:
//   list <database> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// usage: bench_import [N [S [M [P [K [L]]]]]] (defaults 10000, 1000, 50, 200,
// 100, 2000; $DVNBT_BENCH_ROWS sets N too)
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <streambuf>
#include <vector>

#include <malloc.h>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfffdn.h"
#include "dvnschema.h"
#include "processfiles.h"
#include "rawodbc.h"

namespace {

using bench::Discard;
using bench::QueryCount;
using bench::Seconds;

// A file to import: its objects, the rows they become, and how many rows
// the store writes in one transaction.
struct Workload {
    const char* name;
    std::string path;
    int objects;
    int rows;
    int rowsPerTransaction;
    int activities = 0;  // per process; 0 for the files without processes
};

std::string FilePath(const char* kind, int n) {
    return (std::filesystem::temp_directory_path() /
            ("bench_import_" + std::string(kind) + "_" + std::to_string(n) + "_" + std::to_string(getpid()) + ".trx"))
        .string();
}

// A line of /proc/self/status in kB ("VmRSS", "VmHWM"); 0 when unknown.
long StatusKB(const char* key) {
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(key) + ":";
    while (std::getline(in, line))
        if (line.compare(0, prefix.size(), prefix) == 0) return std::atol(line.c_str() + prefix.size());
    return 0;
}

// Makes the peak resident memory (VmHWM) start again from the resident
// memory of now; false where the kernel does not offer it.
bool ResetPeakMemory() {
    std::ofstream out("/proc/self/clear_refs");
    out << "5";
    out.close();
    return static_cast<bool>(out);
}

// What one import measured, for the summary lines.
struct Result {
    double usPerRow = 0;      // the import's cost per row
    double ratio = 0;         // import/raw
    double memoryRatio = -1;  // peak added memory / file size; < 0 unknown
};
// [database][file][rows]
std::map<std::string, std::map<std::string, std::map<int, Result>>> g_results;

Workload Categories(int n) {
    Workload w{"categories", FilePath("categories", n), n, n, 1};
    std::ofstream out(w.path);
    char name[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "Category%06d", i);
        out << "Category \"" << name << "\" { Description = \"Generated category " << i << "\"; }\n";
    }
    return w;
}

Workload Structures(int n, int members) {
    Workload w{"structures", FilePath("structures", n), n, n * (members + 1), members + 1};
    std::ofstream out(w.path);
    char name[32], next[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "Structure%06d", i);
        std::snprintf(next, sizeof next, "Structure%06d", (i + 1) % n);
        out << "DataStructure \"" << name << "\" {\n  Description = \"Generated structure " << i
            << "\";\n  Members [\n";
        for (int m = 0; m < members; ++m) {
            out << "    DataStructureMember \"M" << m << "\" { Name = \"M" << m << "\"; ";
            if (m == 0)
                out << "Type = 4; HasSubStructure -> \"" << next << "\"; }\n";
            else
                out << "Type = " << m % 4 << "; Cardinality = " << m << "; }\n";
        }
        out << "  ]\n}\n";
    }
    return w;
}

// The roles and programs the processes name, as rows of the repository,
// and the workload of activity kinds: bench/processfiles.h.
using bench::kPrograms;
using bench::kRoles;
using bench::Label;
constexpr int kContainerValues = 5;

// n processes of the given number of activities each, written by
// DvnTRXWriter. Plain activities: the row, its extent, roles, support tool
// and container values, without implementations or connectors.
Workload Processes(int n, int activities) {
    Workload w{"processes", FilePath("processes", n), n, 0, 0, activities};
    DvnfCollectingMessageHandler quiet;
    DvnfTRXData data(DvnfTRXTypes::_instance, &quiet);
    auto link = [&](DvnfEntity& entity, const char* name, const char* type, const DvnfString& target) {
        data.AddLinkByName(entity, DvnfString(name), DvnfString(type), target, true, false);
    };
    for (int p = 0; p < n; ++p) {
        DvnfEntity& process = data.CreateEntity(DvnfString("Process"), DvnfString(), Label("Process%06d", p));
        DvnfAttributeData diagram = process.AttributeData()("Diagram");
        for (int i = 0; i < activities; ++i) {
            DvnfEntity& activity = data.CreateInfoActivityByOID(diagram, DvnfString());
            activity.Name(Label("A%d", i));
            DvnfAttributeData a = activity.AttributeData();
            a("Description") = Label("Generated activity %d", i);
            a("Layout")("Xpos") = static_cast<long>(i * 10);
            for (const char* way : {"ActivityHasInputStr", "ActivityHasOutputStr"})
                link(activity, way, "DataStructure", DvnfString("Default Data Structure"));
            for (int v = 0; v < kContainerValues; ++v) {
                DvnfAttributeData member = a("InputContainer")("Members").NewSetElement();
                member("Name") = Label("Value%d", v);
                member("Value") = Label("%d", i * kContainerValues + v);
            }
            a("DoneBy")("AssignType") = 1L;
            link(activity, "DoneByRoleMember", "Role", Label("Role%d", i % kRoles));
            link(activity, "DoneByRoleMember", "Role", Label("Role%d", (i + 1) % kRoles));
            link(activity, "HasSupportTool", "Program", Label("Tool%d", i % kPrograms));
        }
    }
    DvnTRXWriter(data).WriteFile(w.path.c_str());
    return w;
}

// ---- the workload of activity kinds and process attributes (processfiles.h)
constexpr int kKindActivities = bench::kKindActivities;

Workload Kinds(int n) {
    Workload w{"kinds", FilePath("kinds", n), n, 0, 0, kKindActivities};
    bench::WriteKinds(w.path, n);
    return w;
}

// The rows a process import writes, as they stand in the tables now.
long ProcessRows(CDatabase& db) {
    long rows = 0;
    for (const char* table : {"PROCESS", "PROCESS_GRAPH_ATTR", "PROCESS_TOPOL_ATTR", "PRC_CONTAINER", "ACTIVITY",
                              "ACTIVITY_EXTENT", "ACTIVITY_BY_ROLE", "ACT_HAS_SUP_TOOL", "ACT_CONTAINER",
                              "PROGRAM_ACTIVITY", "PROCESS_ACTIVITY", "BUNDLE_ACTIVITY", "BLOCK_ACTIVITY",
                              "CONTROL_CONNECTOR", "CONTROL_BENDPOINT", "DATA_CONNECTOR", "DATA_BENDPOINT",
                              "DATA_MAP"})
        rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table);
    return rows;
}

// Rows below an activity or a process whose owner row is gone.
long Orphans(CDatabase& db) {
    long rows = 0;
    for (const char* table : {"ACTIVITY_EXTENT", "ACTIVITY_BY_ROLE", "ACT_HAS_SUP_TOOL", "ACT_CONTAINER",
                              "PROGRAM_ACTIVITY", "BLOCK_ACTIVITY"})
        rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table +
                                   " WHERE AID NOT IN (SELECT AID FROM DVBT.ACTIVITY)");
    for (const char* table : {"ACTIVITY", "PROCESS_GRAPH_ATTR", "PROCESS_TOPOL_ATTR", "PRC_CONTAINER"})
        rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table +
                                   " WHERE PID NOT IN (SELECT PID FROM DVBT.PROCESS)");
    return rows;
}

// Cost per activity of the first import, by database and number of processes.
std::map<std::string, std::map<int, double>> g_usPerActivity;

// An initial load of the file, overwriting, with its progress lines and
// messages going nowhere; its time in seconds.
double QuietImport(const Workload& w, const std::string& dataSource, int& level) {
    Discard discard;
    std::ostream sink(&discard);
    std::streambuf* saved = std::cout.rdbuf(sink.rdbuf());
    DvnfMessageHandler::DefaultOutput(&sink);
    double import = Seconds([&] {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(w.path), DvnString(dataSource), true, true, true);
    });
    DvnfMessageHandler::DefaultOutput(nullptr);
    std::cout.rdbuf(saved);
    DvnBTAuthorization::DestroyInstance();
    return import;
}

// Opens the fresh database and creates the repository and the raw table in
// it; false (said on standard error) when it does not open.
bool CreateSchemas(const char* backend, const std::string& dataSource, CDatabase& db) {
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
        std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
        return false;
    }
    DvnSchema::Create(db, true);
    bench::CreateRawTable(db);
    return true;
}

// The process file imported into a fresh repository, then again over it
// (each process replaced). Each import is followed by the raw baseline of
// as many rows in as many transactions: the store commits each activity's
// two passes on their own, and about five steps of each process.
void RunProcesses(const char* backend, const std::string& dataSource, const Workload& w) {
    {
        CDatabase db;
        if (!CreateSchemas(backend, dataSource, db)) return;
        bench::InsertProcessRows(db);
    }
    const int activities = w.objects * w.activities;
    const int transactions = w.objects * (2 * w.activities + 5);
    for (const char* pass : {"new", "replaced"}) {
        int level = 0;
        const double import = QuietImport(w, dataSource, level);

        CDatabase db;
        DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
        const long rows = ProcessRows(db);
        const long orphans = Orphans(db);
        const int perTransaction = static_cast<int>(std::max(1L, rows / transactions));
        bench::ResetRawTable(db);
        double raw = Seconds([&] { bench::RawInsertInBatches(db, static_cast<int>(rows), perTransaction, true); });
        // A replacement also deletes the old rows: beside it, the baseline
        // that deletes as many, one statement per process.
        std::string withDeletes = "-";
        if (std::string(pass) == "replaced") {
            bench::ResetRawTable(db);
            bench::RawPutOldRows(db, static_cast<int>(rows), w.objects);
            const double replace =
                Seconds([&] { bench::RawReplaceInBatches(db, static_cast<int>(rows), perTransaction, w.objects); });
            char figure[32];
            std::snprintf(figure, sizeof figure, "%.2f", replace / import);
            withDeletes = figure;
        }
        db.Close();

        const double usPerActivity = import * 1e6 / activities;
        if (std::string(pass) == "new" && std::string(w.name) == "processes")
            g_usPerActivity[backend][w.objects] = usPerActivity;
        std::printf("%-11s %-9s %-8s %6d %7d %8ld %10.1f %12.0f %10.0f %12.0f %9.2f %8.0f %9s   level %d orphans %ld\n",
                    backend, w.name, pass, w.objects, activities, rows, w.objects / import, activities / import,
                    rows / import, rows / raw, raw / import, usPerActivity, withDeletes.c_str(), level, orphans);
        std::fflush(stdout);
    }
}

void Run(const char* backend, const std::string& dataSource, const Workload& w) {
    {
        CDatabase db;
        if (!CreateSchemas(backend, dataSource, db)) return;
    }

    // Progress lines and messages go nowhere while the clock runs (and take
    // no memory that would count as the import's).
    Discard discard;
    std::ostream sink(&discard);
    std::streambuf* saved = std::cout.rdbuf(sink.rdbuf());
    DvnfMessageHandler::DefaultOutput(&sink);
    // The parse alone, with the peak memory of the model it builds.
    malloc_trim(0);
    ResetPeakMemory();
    const long rssBeforeParse = StatusKB("VmRSS");
    long parsePeakAdded = 0;
    double parse = Seconds([&] {
        DvnfTRXData data;
        DvnTRXFrontend(data, nullptr).ReadFile(w.path.c_str(), 2, nullptr, nullptr);
        parsePeakAdded = StatusKB("VmHWM") - rssBeforeParse;
    });
    int level = 0;
    // Memory freed by the earlier runs goes back to the system first, so
    // that what the import takes shows as growth.
    malloc_trim(0);
    const bool peakKnown = ResetPeakMemory();
    const long rssBefore = StatusKB("VmRSS");
    double import = Seconds([&] {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(w.path), DvnString(dataSource), true, true, true);
    });
    const long peakAdded = StatusKB("VmHWM") - rssBefore;
    DvnfMessageHandler::DefaultOutput(nullptr);
    std::cout.rdbuf(saved);
    DvnBTAuthorization::DestroyInstance();

    CDatabase db;
    DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
    double raw = Seconds([&] { bench::RawInsertInBatches(db, w.rows, w.rowsPerTransaction, true); });
    db.ExecuteSQL("DROP TABLE DVBT.BENCH");
    db.Close();

    // The import parses the file itself: what is left is the store.
    const double fileKB = static_cast<double>(std::filesystem::file_size(w.path)) / 1024.0;
    Result& r = g_results[backend][w.name][w.rows];
    r.usPerRow = import * 1e6 / w.rows;
    r.ratio = raw / import;
    if (peakKnown) r.memoryRatio = static_cast<double>(std::max(peakAdded, 0L)) / fileKB;
    std::printf("%-11s %-11s %7d %12.0f %12.0f %12.0f %12.0f %9.2f %9.0f %8.0f %7.1f %7.1f   level %d\n",
                backend, w.name, w.rows, w.objects / parse, w.rows / import, w.rows / (import - parse), w.rows / raw,
                raw / import, r.usPerRow, fileKB, r.memoryRatio,
                peakKnown ? static_cast<double>(std::max(parsePeakAdded, 0L)) / fileKB : -1.0, level);
    std::fflush(stdout);
}

// ---- lists and tool sets
constexpr int kIconsPerToolSet = 20;
const char* const kListKinds[] = {"ActivitiesList", "ProcessInstancesList", "TemplatesList", "Worklist"};

// n lists of each kind, owned in turn by n/10 persons (BENCHP0, ...), and
// n/10 tool sets of kIconsPerToolSet icons spread over the five kinds.
Workload Lists(int n) {
    const int persons = std::max(1, n / 10), toolSets = std::max(1, n / 10);
    Workload w{"lists", FilePath("lists", n), 4 * n + toolSets, 4 * n + toolSets * (1 + kIconsPerToolSet), 0};
    std::ofstream out(w.path);
    const char* const sets[] = {"ProcessActivityIcons", "BlockActivityIcons", "BundleActivityIcons",
                                "InfoActivityIcons", "ProgramActivityIcons"};
    for (const char* kind : kListKinds)
        for (int i = 0; i < n; ++i)
            out << kind << " \"List" << i << "\" { Description = \"Generated list " << i << "\";\n  ListCommon { Type = "
                << (i % 2 ? 2 : 1) << "; Owner = \"BENCHP" << i % persons << "\"; Where = \"STATE = " << i % 7
                << "\"; OrderBy = \"NAME\"; Threshold = " << i % 50 << ";"
                << (std::string(kind) == "Worklist" ? " Beep = true;" : "") << " } }\n";
    for (int t = 0; t < toolSets; ++t) {
        out << "ToolSet \"Tools" << t << "\" { Description = \"Generated tool set\";";
        for (int k = 0; k < 5; ++k) {
            out << "\n  " << sets[k] << " [";
            for (int i = k; i < kIconsPerToolSet; i += 5) out << " \"icon" << i << "\"";
            out << " ]";
        }
        out << " }\n";
    }
    return w;
}

// Cost per object of the first import, by database and number of lists.
std::map<std::string, std::map<int, double>> g_usPerListObject;

// The list file imported into a fresh repository holding its owners, then
// again over it; each import beside the raw baseline of as many rows, one
// transaction per object.
void RunLists(const char* backend, const std::string& dataSource, const Workload& w, int lists) {
    {
        CDatabase db;
        if (!CreateSchemas(backend, dataSource, db)) return;
        const int persons = std::max(1, lists / 10);
        db.BeginTrans();
        for (int p = 0; p < persons; ++p)
            db.ExecuteSQL(("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('BP" + std::to_string(p) +
                           "', 'BENCHP" + std::to_string(p) + "', 0)").c_str());
        db.CommitTrans();
    }
    for (const char* pass : {"new", "rewritten"}) {
        int level = 0;
        const double import = QuietImport(w, dataSource, level);

        CDatabase db;
        DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
        long rows = 0;
        for (const char* table : {"ACT_INSTANCE_LIST", "PRC_INSTANCE_LIST", "PRC_TEMPLATE_LIST", "WORK_LIST",
                                  "TOOL_SET_DEFAULT", "TOOL_SET_ICONS"})
            rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table);
        bench::ResetRawTable(db);
        const int perTransaction = std::max(1, static_cast<int>(rows / w.objects));
        double raw = Seconds([&] { bench::RawInsertInBatches(db, static_cast<int>(rows), perTransaction, true); });
        db.Close();

        const double usPerObject = import * 1e6 / w.objects;
        if (std::string(pass) == "new") g_usPerListObject[backend][lists] = usPerObject;
        std::printf("%-11s %-9s %6d %8d %8ld %10.0f %10.0f %12.0f %9.2f %9.0f   level %d%s\n", backend, pass, lists,
                    w.objects, rows, w.objects / import, rows / import, rows / raw, raw / import, usPerObject, level,
                    rows == w.rows ? "" : "  (rows missing)");
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char** argv) {
    int n = 10000, structures = 1000, members = 50, processes = 200, kinds = 100, lists = 2000;
    if (const char* env = std::getenv("DVNBT_BENCH_ROWS")) n = std::atoi(env);
    if (argc > 1) n = std::atoi(argv[1]);
    if (argc > 2) structures = std::atoi(argv[2]);
    if (argc > 3) members = std::atoi(argv[3]);
    if (argc > 4) processes = std::atoi(argv[4]);
    if (argc > 5) kinds = std::atoi(argv[5]);
    if (argc > 6) lists = std::atoi(argv[6]);
    if (n <= 0 || structures <= 0 || members <= 0 || processes <= 0 || kinds <= 0 || lists <= 0) {
        std::fprintf(stderr, "usage: bench_import [N [S [M [P [K [L]]]]]]\n");
        return 2;
    }
    constexpr int kActivities = 50;
    // A tenth of the size first, then the full size, each into a database of its own.
    const int tenthN = std::max(1, n / 10), tenthS = std::max(1, structures / 10);
    const std::vector<std::vector<Workload>> sizes = {
        {Categories(tenthN), Structures(tenthS, members)}, {Categories(n), Structures(structures, members)}};
    std::printf("%d categories; %d structures of %d members; each also at a tenth\n"
                "%-11s %-11s %7s %12s %12s %12s %12s %9s %9s %8s %7s %7s\n",
                n, structures, members, "database", "file", "rows", "parse obj/s", "import row/s", "store row/s",
                "raw rows/s", "import/raw", "us/row", "file kB", "mem/kB", "parse/kB");
    int status = 0;
    try {
        for (const auto& workloads : sizes)
            bench::ForEachFreshDatabase("bench_import", [&](const char* backend, const std::string& ds) {
                for (const Workload& w : workloads) Run(backend, ds, w);
            });
    } catch (CDBException* e) {
        std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
        e->Delete();
        status = 1;
    }
    for (const auto& workloads : sizes)
        for (const Workload& w : workloads) std::filesystem::remove(w.path);

    // The processes at a tenth and at full size, each imported new and then replaced.
    const int tenthP = std::max(1, processes / 10);
    std::printf(
        "processes of %d activities, at %d and at %d\n"
        "%-11s %-9s %-8s %6s %7s %8s %10s %12s %10s %12s %9s %8s %9s\n",
        kActivities, tenthP, processes, "database", "file", "import", "procs", "acts", "rows", "proc/s", "activity/s",
        "row/s", "raw rows/s", "import/raw", "us/act", "/raw+del");
    for (int count : {tenthP, processes}) {
        const Workload w = Processes(count, kActivities);
        try {
            bench::ForEachFreshDatabase("bench_import", [&](const char* backend, const std::string& ds) {
                RunProcesses(backend, ds, w);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        std::filesystem::remove(w.path);
    }

    // The processes of every kind, at full size only, imported new and then replaced.
    {
        std::printf("processes of %d activities of all kinds with their attributes\n", kKindActivities);
        const Workload w = Kinds(kinds);
        try {
            bench::ForEachFreshDatabase("bench_import", [&](const char* backend, const std::string& ds) {
                RunProcesses(backend, ds, w);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        std::filesystem::remove(w.path);
    }

    // The lists and tool sets at a tenth and at full size, each imported new and then rewritten.
    const int tenthL = std::max(1, lists / 10);
    std::printf("lists: L of each kind owned by L/10 persons, L/10 tool sets of %d icons, at L=%d and L=%d\n"
                "%-11s %-9s %6s %8s %8s %10s %10s %12s %9s %9s\n",
                kIconsPerToolSet, tenthL, lists, "database", "import", "L", "objects", "rows", "obj/s", "row/s",
                "raw rows/s", "import/raw", "us/obj");
    for (int count : {tenthL, lists}) {
        const Workload w = Lists(count);
        try {
            bench::ForEachFreshDatabase("bench_import", [&](const char* backend, const std::string& ds) {
                RunLists(backend, ds, w, count);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        std::filesystem::remove(w.path);
    }

    // The summary, one line per database and figure; the ratios last.
    for (const char* figure : {"growth", "memory", "ratio"}) {
        for (const auto& [backend, files] : g_results) {
            std::string line = std::string(figure) + " ";
            for (char c : backend) line += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            for (const auto& [file, byRows] : files) {
                const Result& full = byRows.rbegin()->second;
                const Result& tenth = byRows.begin()->second;
                double value = full.ratio;
                if (std::string(figure) == "growth") value = tenth.usPerRow > 0 ? full.usPerRow / tenth.usPerRow : 0;
                if (std::string(figure) == "memory") value = full.memoryRatio;
                char text[64];
                std::snprintf(text, sizeof text, " %s=%.2f", file.c_str(), value);
                line += text;
            }
            std::printf("%s\n", line.c_str());
        }
    }
    // The cost per activity of a new import at a tenth (1x) and at full size (10x).
    for (const auto& [backend, byCount] : g_usPerActivity) {
        std::string name;
        for (char c : backend) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const double small = byCount.begin()->second, large = byCount.rbegin()->second;
        std::printf("activity %s 1x=%.0fus 10x=%.0fus growth=%.2f\n", name.c_str(), small, large,
                    small > 0 ? large / small : 0);
    }
    // The cost per object of a new list import at a tenth (1x) and at full size (10x).
    for (const auto& [backend, byCount] : g_usPerListObject) {
        std::string name;
        for (char c : backend) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const double small = byCount.begin()->second, large = byCount.rbegin()->second;
        std::printf("list %s 1x=%.0fus 10x=%.0fus growth=%.2f\n", name.c_str(), small, large,
                    small > 0 ? large / small : 0);
    }
    return status;
}
