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
// Prints, per file and database: the parse alone (objects per second), the
// whole import, the store alone (the import less its parse) and the raw
// baseline (rows per second), and the ratio import/raw.
//
// usage: bench_import [N [S [M]]] (defaults 10000, 1000, 50; $DVNBT_BENCH_ROWS
// sets N too)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <vector>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfffdn.h"
#include "dvnschema.h"
#include "rawodbc.h"

namespace {

double Seconds(const std::function<void()>& run) {
    auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// A file to import: its objects, the rows they become, and how many rows
// the store writes in one transaction.
struct Workload {
    const char* name;
    std::string path;
    int objects;
    int rows;
    int rowsPerTransaction;
};

std::string FilePath(const char* kind) {
    return (std::filesystem::temp_directory_path() /
            ("bench_import_" + std::string(kind) + "_" + std::to_string(getpid()) + ".trx"))
        .string();
}

Workload Categories(int n) {
    Workload w{"categories", FilePath("categories"), n, n, 1};
    std::ofstream out(w.path);
    char name[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "Category%06d", i);
        out << "Category \"" << name << "\" { Description = \"Generated category " << i << "\"; }\n";
    }
    return w;
}

Workload Structures(int n, int members) {
    Workload w{"structures", FilePath("structures"), n, n * (members + 1), members + 1};
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

void Run(const char* backend, const std::string& dataSource, const Workload& w) {
    {
        CDatabase db;
        if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
            std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
            return;
        }
        DvnSchema::Create(db, true);
        bench::CreateRawTable(db);
    }

    // Progress lines and messages go nowhere while the clock runs.
    std::ostringstream sink;
    std::streambuf* saved = std::cout.rdbuf(sink.rdbuf());
    DvnfMessageHandler::DefaultOutput(&sink);
    double parse = Seconds([&] {
        DvnfTRXData data;
        DvnTRXFrontend(data, nullptr).ReadFile(w.path.c_str(), 2, nullptr, nullptr);
    });
    int level = 0;
    double import = Seconds([&] {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(w.path), DvnString(dataSource), true, true, true);
    });
    DvnfMessageHandler::DefaultOutput(nullptr);
    std::cout.rdbuf(saved);
    DvnBTAuthorization::DestroyInstance();

    CDatabase db;
    DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
    double raw = Seconds([&] { bench::RawInsertInBatches(db, w.rows, w.rowsPerTransaction, true); });
    db.ExecuteSQL("DROP TABLE DVBT.BENCH");
    db.Close();

    // The import parses the file itself: what is left is the store.
    std::printf("%-11s %-11s %7d %12.0f %12.0f %12.0f %12.0f %9.2f   level %d\n", backend, w.name, w.rows,
                w.objects / parse, w.rows / import, w.rows / (import - parse), w.rows / raw, raw / import, level);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int n = 10000, structures = 1000, members = 50;
    if (const char* env = std::getenv("DVNBT_BENCH_ROWS")) n = std::atoi(env);
    if (argc > 1) n = std::atoi(argv[1]);
    if (argc > 2) structures = std::atoi(argv[2]);
    if (argc > 3) members = std::atoi(argv[3]);
    if (n <= 0 || structures <= 0 || members <= 0) {
        std::fprintf(stderr, "usage: bench_import [N [S [M]]]\n");
        return 2;
    }
    const std::vector<Workload> workloads = {Categories(n), Structures(structures, members)};
    std::printf("%d categories; %d structures of %d members\n%-11s %-11s %7s %12s %12s %12s %12s %9s\n", n,
                structures, members, "database", "file", "rows", "parse obj/s", "import row/s", "store row/s",
                "raw rows/s", "import/raw");
    int status = 0;
    try {
        bench::ForEachFreshDatabase("bench_import", [&](const char* backend, const std::string& ds) {
            for (const Workload& w : workloads) Run(backend, ds, w);
        });
    } catch (CDBException* e) {
        std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
        e->Delete();
        status = 1;
    }
    for (const Workload& w : workloads) std::filesystem::remove(w.path);
    return status;
}
