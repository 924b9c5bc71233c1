// The process loads: a repository of the import benchmark's workload of
// activity kinds (K processes of 100 activities, blocks three deep, 150
// control connectors of 3 bend points and 50 data connectors of 5 mappings,
// every process attribute; processfiles.h), imported first outside the
// clock, read back
//   Processes    by the front end's load of all processes, Processes(""),
//                on core data of its own (each process with its whole
//                diagram, blocks included);
//   LoadProcess  by the editor's load of one process by name (the first
//                level, blocks as shells), through the facade on the
//                connection it opens itself, ten processes one after the
//                other, each into fresh core data.
// Beside each, the raw read baseline (rawodbc.h, processfiles.h) reads the
// rows of the same processes with one prepared statement per owner and
// table. The statements of a load are counted in a run of their own from
// the driver-call trace.
//
// At a tenth of K (1x) and at K (10x), each into a fresh database; the last
// lines compare the cost per process:
//   process <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x> cpu ...
//
// usage: bench_load [K] (default 100, at least 10)
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "benchrun.h"
#include "processfiles.h"

namespace {

constexpr int kEditorLoads = 10;

struct Measure {
    double seconds = 0, cpu = 0;
    long processes = 0;
};

Measure Timed(const std::function<long()>& run) {
    Measure m;
    const std::clock_t start = std::clock();
    m.seconds = bench::Seconds([&] { m.processes = run(); });
    m.cpu = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    return m;
}

// Processes(""): the processes it made.
long LoadAll(CDatabase& db) {
    long objects = 0;
    bench::TimeLoad(db, {"Processes", &DvnConvCoreDbFe::Processes, "Process", {}}, objects);
    return objects;
}

// LoadProcess of the first processes, each into fresh core data: the
// processes found.
long LoadEach(int count) {
    bench::Quiet quiet;
    long found = 0;
    for (int p = 0; p < count; ++p) {
        DvnfCollectingMessageHandler messages;
        DvnfTRXData data(DvnfTRXTypes::_instance, &messages);
        DvnConvCoreDbIF facade(&data);
        if (facade.LoadProcess(DvnString(bench::Label("Kinds%06d", p).str())).IsValid()) ++found;
        DvnBTAuthorization::DestroyInstance();
    }
    return found;
}

void ImportAndLoad(const char* backend, const std::string& dataSource, const std::string& path, int n,
                   bench::Growth& growth) {
    CDatabase db;
    if (!bench::OpenProcessRepository(backend, dataSource, db)) return;
    int level = 0;
    const double import = bench::ImportQuietly(path, dataSource, level);
    std::printf("%-10s import of %d processes: %.1f s, level %d\n", backend, n, import, level);

    const int editorLoads = std::min(n, kEditorLoads);
    std::string first = "SELECT PID FROM DVBT.PROCESS WHERE NAME IN (";
    for (int p = 0; p < editorLoads; ++p)
        first += std::string(p ? ", '" : "'") + bench::Label("Kinds%06d", p).str() + "'";
    struct Run {
        const char* name;
        std::function<long()> load;
        std::vector<bench::RawRead> reads;
    };
    std::vector<bench::RawRead> byName = {{"PROCESS", "NAME", {}, ""}};
    for (int p = 0; p < editorLoads; ++p) byName[0].keys.push_back(bench::Label("Kinds%06d", p).str());
    for (const bench::RawRead& read : bench::ProcessReads(db, first + ")", false)) byName.push_back(read);
    const std::vector<Run> runs = {
        {"Processes", [&] { return LoadAll(db); }, bench::ProcessReads(db, "SELECT PID FROM DVBT.PROCESS", true)},
        {"LoadProcess", [&] { return LoadEach(editorLoads); }, byName},
    };
    for (const Run& run : runs) {
        const Measure m = Timed(run.load);
        if (m.processes == 0) {
            std::printf("%-10s %-12s no process came back: the load is not there yet\n", backend, run.name);
            continue;
        }
        const long statements = bench::CountStatements([&] { run.load(); });
        bench::RawReadCount rows;
        const Measure raw = Timed([&] {
            rows = bench::RawReadRows(db, run.reads);
            return 0L;
        });
        const double processes = static_cast<double>(std::max(1L, m.processes));
        growth.Add(backend, run.name, n, m.seconds * 1e6 / processes, m.cpu * 1e6 / processes);
        std::printf("%-10s %-12s %9ld %8ld %9.0f %9.0f %9.1f %10.0f %8.2f %8.2f %9.0f %9.0f\n", backend, run.name,
                    m.processes, rows.rows, statements / processes, rows.statements / processes,
                    m.processes / m.seconds, rows.rows / m.seconds, m.seconds / raw.seconds,
                    m.cpu / std::max(1e-6, raw.cpu), m.seconds * 1e6 / processes, m.cpu * 1e6 / processes);
        std::fflush(stdout);
    }
    bench::ForgetRepository();
}

}  // namespace

int main(int argc, char** argv) {
    int n = 100;
    if (argc > 1) n = std::atoi(argv[1]);
    if (n < 10) {
        std::fprintf(stderr, "usage: bench_load [K] (K at least 10)\n");
        return 2;
    }
    std::printf("loads of processes of %d activities of every kind, at %d and at %d processes\n",
                bench::kKindActivities, n / 10, n);
    std::printf("%-10s %-12s %9s %8s %9s %9s %9s %10s %8s %8s %9s %9s\n", "database", "run", "processes", "rows",
                "st/proc", "raw st/p", "procs/s", "rows/s", "time/raw", "cpu/raw", "us/proc", "cpu us");
    bench::Growth growth;
    const int status = bench::ForTwoSizes(
        "bench_load", n,
        [](int count) {
            const std::string path = bench::TempFile("bench_load", count, ".trx");
            bench::WriteKinds(path, count);
            return path;
        },
        [&](const char* backend, const std::string& ds, const std::string& path, int count) {
            ImportAndLoad(backend, ds, path, count, growth);
        });
    growth.Print("process");
    return status;
}
