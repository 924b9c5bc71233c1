// The export: definitions read from a repository into core data through
// the facade's export operations and written as TRX text with DvnTRXWriter,
// the two steps `dvnbt export` takes between its login and its output. The
// process start, the login and the writing of the text to a file are left
// out: they cost the same whatever the repository holds.
//
// A generated repository, imported first (outside the clock): C categories,
// S data structures of M members (the first member of each names the next
// structure of its group of ten, the last of a group names none), and P
// processes of the import benchmark's workload of activity kinds (100
// activities, blocks three deep, 150 control and 50 data connectors, every
// process attribute; processfiles.h), each in category p and with the input
// structure of group p. Each run reads into fresh core data and writes the
// text:
//   open           what any export costs: the connection opened and closed,
//                  one name looked up (its us/obj is the whole run)
//   all            ExportAll, every section
//   Category       all categories (ExportByCommand)
//   DataStructure  all data structures
//   Process        all processes
//   deep DataStructure  one structure with --deep: its group of ten
//   deep Process   one process with --deep: its category, its structures
//                  and the programs its activities name
// Beside each run, the raw read baseline (rawodbc.h) reads the same rows by
// the same keys with prepared statements, each column fetched as text: the
// driver's own cost of the reads.
//
// At a tenth of the sizes (1x) and at the sizes (10x), each into a fresh
// database; the last lines compare the cost per object:
//   object <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x> cpu ...
//
// usage: bench_export [C [S [M [P]]]] (defaults 1000 categories, 1000
// structures of 20 members, 100 processes). With $DVNBT_BENCH_PROFILE set to the name of a run, only
// that run at full size, without the statement count: for a profiler.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>

#include "benchrun.h"
#include "dvnfffdn.h"
#include "processfiles.h"

namespace {

struct Sizes {
    int categories, structures, members, processes;
};

constexpr int kGroup = 10;  // structures that name each other in a chain

std::string Name(const char* prefix, int i) {
    char text[32];
    std::snprintf(text, sizeof text, "%s%06d", prefix, i);
    return text;
}

std::string WriteRepository(const Sizes& n) {
    const std::string path = bench::TempFile("bench_export", n.structures, ".trx");
    std::ofstream out(path);
    for (int i = 0; i < n.categories; ++i)
        out << "Category \"" << Name("Category", i) << "\" { Description = \"Generated category " << i
            << "\"; Documentation = \"Categories group processes for rights.\"; }\n";
    for (int i = 0; i < n.structures; ++i) {
        out << "DataStructure \"" << Name("Structure", i) << "\" {\n  Description = \"Generated structure " << i
            << "\";\n  Members [\n";
        const bool named = (i + 1) % kGroup != 0 && i + 1 < n.structures;
        for (int m = 0; m < n.members; ++m) {
            out << "    DataStructureMember \"M" << m << "\" { Name = \"M" << m << "\"; ";
            if (m == 0 && named)
                out << "Type = 4; HasSubStructure -> \"" << Name("Structure", i + 1) << "\"; }\n";
            else
                out << "Type = " << m % 4 << "; Cardinality = " << m << "; Description = \"Member " << m
                    << "\"; }\n";
        }
        out << "  ]\n}\n";
    }
    return path;
}

// The processes, each in a category and with an input structure of its own
// group (named before: the structures are imported first).
std::string WriteProcesses(const Sizes& n) {
    const std::string path = bench::TempFile("bench_export_processes", n.processes, ".trx");
    bench::WriteKinds(path, n.processes, [&](DvnfTRXData& data, DvnfEntity& process, int p) {
        data.AddLinkByName(process, DvnfString("ProcessHasCategory"), DvnfString("Category"),
                           DvnfString(Name("Category", p % n.categories)), true, false);
        data.AddLinkByName(process, DvnfString("ProcessHasInputStr"), DvnfString("DataStructure"),
                           DvnfString(Name("Structure", p * kGroup % n.structures)), true, false);
    });
    return path;
}

// The reads of a run, as the loads make them.
std::vector<bench::RawRead> CategoryReads() { return {{"CATEGORY", "", {}, ""}}; }

// The structures of the keys: their rows, their members in order, and the
// row of each sub-structure a member names.
std::vector<bench::RawRead> StructureReads(CDatabase& db, const std::string& where, bool wholeTable) {
    const std::string keys = "SELECT DSID FROM DVBT.DATA_STRUCTURE" + where;
    std::vector<bench::RawRead> reads;
    if (wholeTable)
        reads.push_back({"DATA_STRUCTURE", "", {}, ""});
    else
        reads.push_back({"DATA_STRUCTURE", "DSID", bench::RawKeys(db, keys), ""});
    reads.push_back({"DATA_STRUCTURE_MBR", "DSID", bench::RawKeys(db, keys), "SEQUENCE_NO"});
    reads.push_back({"DATA_STRUCTURE", "DSID",
                     bench::RawKeys(db, "SELECT TYPE_DS FROM DVBT.DATA_STRUCTURE_MBR WHERE DATA_TYPE = 7 AND DSID IN (" +
                                            keys + ") ORDER BY DSID, SEQUENCE_NO"),
                     ""});
    return reads;
}

// The entities the writer writes: top-level ones in a state other than 0.
long WrittenObjects(const DvnfTRXData& data) {
    long objects = 0;
    for (const DvnfEntityType* type : data.Types().EntityTypes()) {
        if (!type->IsTopLevel()) continue;
        for (const auto& [name, object] : data.GetEntities(DvnfString(type->Name())))
            if (object->State() != DvnfObject::StateNone) ++objects;
    }
    return objects;
}

struct Run {
    std::string name;
    std::function<int(DvnConvCoreDbIF&, const DvnString&)> exportCall;
    std::vector<bench::RawRead> reads;
};

int ByCommand(DvnConvCoreDbIF& facade, const DvnString& ds, DvnEntityType::Type type,
              std::vector<DvnString> names, bool deep) {
    const bool all = names.empty();
    DvnCmdVisitor::Command command(type, std::move(names), all, deep);
    return facade.ExportByCommand(ds, command);
}

// What one export did.
struct Measure {
    double read = 0, write = 0, cpu = 0;
    long objects = 0, bytes = 0, peakKB = 0;
    int level = 0;
};

Measure Export(const Run& run, const std::string& dataSource) {
    Measure m;
    m.peakKB = bench::PeakMemoryKB([&] {
        bench::Quiet quiet;
        DvnfCollectingMessageHandler messages;
        DvnfTRXData data(DvnfTRXTypes::_instance, &messages);
        DvnBTAuthorization::GetInstance()->GrantDefinitionRights();
        const std::clock_t start = std::clock();
        {
            DvnConvCoreDbIF facade(&data);
            m.read = bench::Seconds([&] { m.level = run.exportCall(facade, DvnString(dataSource)); });
        }
        std::string text;
        m.write = bench::Seconds([&] { text = DvnTRXWriter(data).Write(); });
        m.cpu = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        m.objects = WrittenObjects(data);
        m.bytes = static_cast<long>(text.size());
        DvnBTAuthorization::DestroyInstance();
    });
    return m;
}

void PrintHeader() {
    std::printf("%-10s %-19s %7s %7s %6s %9s %9s %9s %7s %8s %8s %8s %7s\n", "database", "run", "objects", "rows",
                "st/obj", "objects/s", "rows/s", "TRX kB/s", "peak MB", "time/raw", "read/raw", "us/obj", "cpu us");
}

void ImportAndExport(const char* backend, const std::string& dataSource, const std::vector<std::string>& paths,
                     const Sizes& n, bench::Growth& growth) {
    CDatabase db;
    if (!bench::OpenProcessRepository(backend, dataSource, db)) return;
    for (const std::string& path : paths) {
        int level = 0;
        const double import = bench::ImportQuietly(path, dataSource, level);
        std::printf("%-10s import of %s: %.1f s, level %d\n", backend,
                    std::filesystem::path(path).filename().c_str(), import, level);
    }

    const std::vector<bench::RawRead> structures = StructureReads(db, "", true);
    const std::vector<bench::RawRead> processes = bench::ProcessReads(db, "SELECT PID FROM DVBT.PROCESS", true);
    std::vector<bench::RawRead> all = CategoryReads();
    all.insert(all.end(), processes.begin(), processes.end());
    all.insert(all.end(), structures.begin(), structures.end());
    // The deep export of the first structure reads it by name first, then
    // its group by key.
    std::string group = " WHERE NAME IN (";
    for (int i = 0; i < std::min(kGroup, n.structures); ++i) group += (i ? ", '" : "'") + Name("Structure", i) + "'";
    std::vector<bench::RawRead> deep = StructureReads(db, group + ")", false);
    deep.insert(deep.begin(), {"DATA_STRUCTURE", "NAME", {Name("Structure", 0)}, ""});
    // The deep export of the first process: found by name, read by key, then
    // its category, the group of its input structure and the programs.
    std::vector<bench::RawRead> deepProcess = {{"PROCESS", "NAME", {"Kinds000000"}, ""}};
    for (const bench::RawRead& read :
         bench::ProcessReads(db, "SELECT PID FROM DVBT.PROCESS WHERE NAME = 'Kinds000000'", false))
        deepProcess.push_back(read);
    deepProcess.push_back({"CATEGORY", "NAME", {Name("Category", 0)}, ""});
    for (const bench::RawRead& read : StructureReads(db, group + ")", false)) deepProcess.push_back(read);
    const std::vector<std::string> programs = bench::RawKeys(db, "SELECT PROGRAM_ID FROM DVBT.PROGRAM");
    deepProcess.push_back({"PROGRAM", "PROGRAM_ID", programs, ""});
    deepProcess.push_back({"EXTERNAL_SERVICE", "PROGRAM_ID", programs, ""});

    const std::vector<Run> runs = {
        // What every export costs whatever it reads: the connection opened
        // and closed, a name looked up that gives nothing.
        {"open",
         [](DvnConvCoreDbIF& f, const DvnString& ds) {
             return ByCommand(f, ds, DvnEntityType::Category, {DvnString("No such category")}, false);
         },
         {{"CATEGORY", "NAME", {"No such category"}, ""}}},
        {"all", [](DvnConvCoreDbIF& f, const DvnString& ds) { return f.ExportAll(ds); }, all},
        {"Category",
         [](DvnConvCoreDbIF& f, const DvnString& ds) { return ByCommand(f, ds, DvnEntityType::Category, {}, false); },
         CategoryReads()},
        {"DataStructure",
         [](DvnConvCoreDbIF& f, const DvnString& ds) {
             return ByCommand(f, ds, DvnEntityType::DataStructure, {}, false);
         },
         structures},
        {"Process",
         [](DvnConvCoreDbIF& f, const DvnString& ds) { return ByCommand(f, ds, DvnEntityType::Process, {}, false); },
         processes},
        {"deep DataStructure",
         [](DvnConvCoreDbIF& f, const DvnString& ds) {
             return ByCommand(f, ds, DvnEntityType::DataStructure, {DvnString(Name("Structure", 0))}, true);
         },
         deep},
        {"deep Process",
         [](DvnConvCoreDbIF& f, const DvnString& ds) {
             return ByCommand(f, ds, DvnEntityType::Process, {DvnString("Kinds000000")}, true);
         },
         deepProcess},
    };
    const char* only = std::getenv("DVNBT_BENCH_PROFILE");
    for (const Run& run : runs) {
        if (only && run.name != only) continue;
        const Measure m = Export(run, dataSource);
        const long statements = only ? 0 : bench::CountStatements([&] { Export(run, dataSource); });
        bench::RawReadCount rows;
        const std::clock_t rawStart = std::clock();
        const double raw = bench::Seconds([&] { rows = bench::RawReadRows(db, run.reads); });
        const double rawCpu = std::max(1e-6, static_cast<double>(std::clock() - rawStart) / CLOCKS_PER_SEC);
        const double seconds = m.read + m.write;
        const double objects = static_cast<double>(std::max(1L, m.objects));
        growth.Add(backend, run.name, n.structures, seconds * 1e6 / objects, m.cpu * 1e6 / objects);
        std::printf("%-10s %-19s %7ld %7ld %6.1f %9.0f %9.0f %9.0f %7.1f %8.2f %8.2f %8.0f %7.0f%s\n", backend,
                    run.name.c_str(), m.objects, rows.rows, statements / objects, m.objects / seconds,
                    rows.rows / seconds, m.bytes / 1024.0 / seconds, m.peakKB / 1024.0, seconds / raw, m.read / raw,
                    seconds * 1e6 / objects, m.cpu * 1e6 / objects,
                    m.level ? (" level " + std::to_string(m.level)).c_str() : "");
        std::printf("%-10s %-19s raw: %ld statements, %.0f rows/s, cpu time/raw %.2f; text %ld kB, write %.0f%% "
                    "of the time\n",
                    "", "", rows.statements, rows.rows / raw, m.cpu / rawCpu, m.bytes / 1024, 100 * m.write / seconds);
        std::fflush(stdout);
    }
    bench::ForgetRepository();
}

}  // namespace

int main(int argc, char** argv) {
    Sizes n{1000, 1000, 20, 100};
    if (argc > 1) n.categories = std::atoi(argv[1]);
    if (argc > 2) n.structures = std::atoi(argv[2]);
    if (argc > 3) n.members = std::atoi(argv[3]);
    if (argc > 4) n.processes = std::atoi(argv[4]);
    if (n.categories < 10 || n.structures < 10 || n.members < 2 || n.processes < 10) {
        std::fprintf(stderr, "usage: bench_export [C [S [M [P]]]] (C, S and P at least 10, M at least 2)\n");
        return 2;
    }
    std::printf("export of %d categories, %d structures of %d members and %d processes of %d activities, at a "
                "tenth and at full size\n",
                n.categories, n.structures, n.members, n.processes, bench::kKindActivities);
    PrintHeader();
    bench::Growth growth;
    int status = 0;
    for (const Sizes size : {Sizes{n.categories / 10, n.structures / 10, n.members, n.processes / 10}, n}) {
        if (std::getenv("DVNBT_BENCH_PROFILE") && size.structures != n.structures) continue;
        const std::vector<std::string> paths = {WriteRepository(size), WriteProcesses(size)};
        try {
            bench::ForEachFreshDatabase("bench_export", [&](const char* backend, const std::string& ds) {
                ImportAndExport(backend, ds, paths, size, growth);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "bench_export: %s\n", e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        for (const std::string& path : paths) std::filesystem::remove(path);
    }
    growth.Print("object");
    return status;
}
