// What the import-and-load benchmarks share: a generated file imported in
// silence, rows counted over a list of tables, the loads of a kind timed on
// core data of their own, and the cost per object kept by size to compare at
// the end.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <malloc.h>

#include "dvnbauth.h"
#include "dvnbdbfe.h"
#include "dvnbdbif.h"
#include "dvnschema.h"
#include "rawodbc.h"

namespace bench {

// While it lives, progress lines and messages go nowhere.
class Quiet {
public:
    Quiet() : m_sink(&m_discard), m_saved(std::cout.rdbuf(m_sink.rdbuf())) {
        DvnfMessageHandler::DefaultOutput(&m_sink);
    }
    ~Quiet() {
        DvnfMessageHandler::DefaultOutput(nullptr);
        std::cout.rdbuf(m_saved);
    }
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    Discard m_discard;
    std::ostream m_sink;
    std::streambuf* m_saved;
};

// A path in the temporary directory, unique to the process.
inline std::string TempFile(const char* program, int n, const char* extension) {
    return (std::filesystem::temp_directory_path() /
            (std::string(program) + "_" + std::to_string(n) + "_" + std::to_string(getpid()) + extension))
        .string();
}

// The import of the file as a first load (every right held), writing rows
// clean, with overwrite on: its seconds, its level into level.
inline double ImportQuietly(const std::string& path, const std::string& dataSource, int& level) {
    double seconds = 0;
    {
        Quiet quiet;
        seconds = Seconds([&] {
            DvnConvCoreDbIF facade;
            level = facade.ImportTRX(DvnString(path), DvnString(dataSource), true, true, true);
        });
    }
    DvnBTAuthorization::DestroyInstance();
    return seconds;
}

inline long CountRows(CDatabase& db, const std::vector<const char*>& tables) {
    long rows = 0;
    for (const char* table : tables) rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table);
    return rows;
}

// One load of the front end: what it is called, the call, the entity type
// it makes and the tables whose rows it reads.
struct Load {
    const char* name;
    void (DvnConvCoreDbFe::*call)(const DvnString& id);
    const char* type;
    std::vector<const char*> tables;
};

// The load over every object of its kind, on fresh core data: its seconds;
// objects gets the number of entities of the type that it made.
inline double TimeLoad(CDatabase& db, const Load& load, long& objects) {
    Quiet quiet;
    DvnfTRXData data;
    DvnConvCoreDbFe fe(&db, &data);
    fe.SetTablePrefix("DVBT.");
    const double seconds = Seconds([&] { (fe.*load.call)(DvnString("")); });
    objects = static_cast<long>(data.GetEntities(DvnfString(load.type)).size());
    return seconds;
}

// The cost per object in microseconds of wall-clock and of processor time
// (of this process: on SQLite all of the work but the waits for the disk,
// on PostgreSQL the client's part), by database, run and size; Print
// compares the smallest size with the largest:
//   <what> <database> <run> 1x=<us> 10x=<us> growth=<10x / 1x> cpu 1x=<us> 10x=<us> growth=<10x / 1x>
// On a loaded machine the wall-clock growth moves with the other programs;
// the processor time much less.
class Growth {
public:
    void Add(const std::string& backend, const std::string& run, int size, double us, double cpuUs) {
        m_us[backend][run][size] = {us, cpuUs};
    }
    void Print(const char* what) const {
        for (const auto& [backend, byRun] : m_us) {
            std::string name;
            for (char c : backend) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            for (const auto& [run, bySize] : byRun) {
                const auto [small, smallCpu] = bySize.begin()->second;
                const auto [large, largeCpu] = bySize.rbegin()->second;
                std::printf("%s %s %s 1x=%.0fus 10x=%.0fus growth=%.2f cpu 1x=%.0fus 10x=%.0fus growth=%.2f\n", what,
                            name.c_str(), run.c_str(), small, large, small > 0 ? large / small : 0, smallCpu, largeCpu,
                            smallCpu > 0 ? largeCpu / smallCpu : 0);
            }
        }
    }

private:
    std::map<std::string, std::map<std::string, std::map<int, std::pair<double, double>>>> m_us;
};

// What to measure of a generated file: its objects (each stored in
// transactions of its own), the tables the import writes, and the loads
// that read them back.
struct Workload {
    long objects;
    std::vector<const char*> tables;
    std::vector<Load> loads;
    // When not empty: the text of a file imported last, after the loads,
    // that deletes what the first file made (run "delete").
    std::string deletion = {};
};

inline void PrintHeader(const char* unit) {
    std::printf("%-11s %-15s %7s %7s %10s %10s %11s %8s %8s %8s\n", "database", "run", unit, "rows",
                (std::string(unit) + "/s").c_str(), "rows/s", "raw rows/s", "run/raw", "us/unit", "cpu us");
}

// The file imported into a fresh repository (run "new"), then again with
// overwrite on ("overwrite"), each beside the raw baseline of as many rows in
// transactions of rows / objects; then each load of the workload beside the
// raw lookup of as many rows. One line per run (a load's counts the objects
// it made); the cost per unit of the file, also for a load, goes into growth.
// prepare, when given, writes what the file needs into the fresh repository
// (rows the file refers to) before the first import.
inline void ImportTwiceAndLoad(const char* backend, const std::string& dataSource, const std::string& path, int n,
                               const Workload& work, Growth& growth,
                               const std::function<void(CDatabase&)>& prepare = {}) {
    CDatabase db;
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
        std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
        return;
    }
    DvnSchema::Create(db, true);
    CreateRawTable(db);
    if (prepare) prepare(db);
    auto line = [&](const std::string& run, long units, long rows, double seconds, double cpu, double raw,
                    const std::string& tail) {
        const double us = seconds * 1e6 / n;
        growth.Add(backend, run, n, us, cpu * 1e6 / n);
        std::printf("%-11s %-15s %7ld %7ld %10.0f %10.0f %11.0f %8.2f %8.0f %8.0f %s\n", backend, run.c_str(), units,
                    rows, units / seconds, rows / seconds, rows / raw, raw / seconds, us, cpu * 1e6 / n, tail.c_str());
        std::fflush(stdout);
    };
    for (const char* run : {"new", "overwrite"}) {
        int level = 0;
        const std::clock_t start = std::clock();
        const double import = ImportQuietly(path, dataSource, level);
        const double cpu = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        const long rows = CountRows(db, work.tables);
        ResetRawTable(db);
        const int perTransaction = static_cast<int>(std::max(1L, rows / std::max(1L, work.objects)));
        const double raw = Seconds([&] { RawInsertInBatches(db, static_cast<int>(rows), perTransaction, true); });
        line(run, n, rows, import, cpu, raw, "level " + std::to_string(level));
    }
    for (const Load& load : work.loads) {
        long objects = 0;
        const std::clock_t start = std::clock();
        const double seconds = TimeLoad(db, load, objects);
        const double cpu = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        const long rows = CountRows(db, load.tables);
        ResetRawTable(db);
        RawInsert(db, static_cast<int>(rows), false, false);
        const double raw = Seconds([&] { RawLookup(db, static_cast<int>(rows)); });
        line(std::string("load ") + load.name, objects, rows, seconds, cpu, raw, "");
    }
    if (!work.deletion.empty()) {
        const std::string deletePath = path + ".delete.trx";
        std::ofstream(deletePath) << work.deletion;
        const long before = CountRows(db, work.tables);
        int level = 0;
        const std::clock_t start = std::clock();
        const double seconds = ImportQuietly(deletePath, dataSource, level);
        const double cpu = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        std::filesystem::remove(deletePath);
        const long rows = before - CountRows(db, work.tables);
        ResetRawTable(db);
        const int perTransaction = static_cast<int>(std::max(1L, rows / std::max(1L, work.objects)));
        const double raw = Seconds([&] { RawInsertInBatches(db, static_cast<int>(rows), perTransaction, true); });
        line("delete", n, rows, seconds, cpu, raw, "level " + std::to_string(level));
    }
}

// The work at a tenth of n and at n, each on fresh databases, with the file
// that write gives for the size (removed afterwards). 1 when a database
// failed.
inline int ForTwoSizes(const char* program, int n, const std::function<std::string(int)>& write,
                       const std::function<void(const char*, const std::string&, const std::string&, int)>& run) {
    int status = 0;
    for (int count : {n / 10 > 0 ? n / 10 : 1, n}) {
        const std::string path = write(count);
        try {
            ForEachFreshDatabase(program, [&](const char* backend, const std::string& dataSource) {
                run(backend, dataSource, path, count);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "%s: %s\n", program, e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        std::filesystem::remove(path);
    }
    return status;
}

// ---- shared by the export and load benchmarks: peak memory, statements
// A line of /proc/self/status in kB ("VmRSS", "VmHWM"); 0 when unknown.
inline long StatusKB(const char* key) {
    std::ifstream in("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(key) + ":";
    while (std::getline(in, line))
        if (line.compare(0, prefix.size(), prefix) == 0) return std::atol(line.c_str() + prefix.size());
    return 0;
}

// The peak resident memory that run adds to the process, in kB: freed memory
// goes back to the system and the kernel's high-water mark (VmHWM) starts
// again from now before it runs. -1 where the kernel does not offer that.
inline long PeakMemoryKB(const std::function<void()>& run) {
    malloc_trim(0);
    std::ofstream reset("/proc/self/clear_refs");
    reset << "5";
    reset.close();
    const bool known = static_cast<bool>(reset);
    const long before = StatusKB("VmRSS");
    run();
    return known ? std::max(0L, StatusKB("VmHWM") - before) : -1;
}

// The statements that run executes through the recordset layer (SQLExecute
// and SQLExecDirect), counted from the layer's trace of its driver calls,
// written to a file of its own while run runs. Tracing slows the calls: a
// count comes from a run of its own, never from a timed one.
inline long CountStatements(const std::function<void()>& run) {
    const std::string path = TempFile("bench_statements", 0, ".trace");
    std::filesystem::remove(path);
    setenv("DVN_TRACE", "1", 1);
    setenv("DVN_TRACE_LEVEL", "3", 1);
    setenv("DVN_TRACE_CATEGORIES", "1", 1);
    setenv("DVN_TRACE_FILE", path.c_str(), 1);
    DvnTrace::ConfigureFromEnvironment();
    run();
    for (const char* name : {"DVN_TRACE", "DVN_TRACE_LEVEL", "DVN_TRACE_CATEGORIES", "DVN_TRACE_FILE"})
        unsetenv(name);
    DvnTrace::ConfigureFromEnvironment();
    long statements = 0;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line))
        if (line.find(" SQLExecute rc=") != std::string::npos || line.find(" SQLExecDirect rc=") != std::string::npos)
            ++statements;
    in.close();
    std::filesystem::remove(path);
    return statements;
}

}  // namespace bench
