// The import of many categories through the whole road (parse, rights, one
// transaction per object with a lookup by name and an insert), against the
// raw-ODBC baseline of the same number of rows, each looked up by key and
// inserted in a transaction of its own.
//
// Prints, per database: the parse alone, the whole import, the raw baseline
// (objects or rows per second) and the ratio import/raw.
//
// usage: bench_import [N] (default 10000; $DVNBT_BENCH_ROWS also works)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

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

std::string WriteFile(int n) {
    std::string path = (std::filesystem::temp_directory_path() / ("bench_import_" + std::to_string(getpid()) + ".trx"))
                           .string();
    std::ofstream out(path);
    char name[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "Category%06d", i);
        out << "Category \"" << name << "\" { Description = \"Generated category " << i << "\"; }\n";
    }
    return path;
}

void Run(const char* backend, const std::string& dataSource, const std::string& file, int n) {
    {
        CDatabase db;
        if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
            std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
            return;
        }
        DvnSchema::Create(db, false);
        bench::CreateRawTable(db);
    }

    // Progress lines and messages go nowhere while the clock runs.
    std::ostringstream sink;
    std::streambuf* saved = std::cout.rdbuf(sink.rdbuf());
    DvnfMessageHandler::DefaultOutput(&sink);
    double parse = Seconds([&] {
        DvnfTRXData data;
        DvnTRXFrontend(data, nullptr).ReadFile(file.c_str(), 2, nullptr, nullptr);
    });
    int level = 0;
    double import = Seconds([&] {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(file), DvnString(dataSource), true, true, true);
    });
    DvnfMessageHandler::DefaultOutput(nullptr);
    std::cout.rdbuf(saved);
    DvnBTAuthorization::DestroyInstance();

    CDatabase db;
    DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
    double raw = Seconds([&] { bench::RawInsert(db, n, true, true); });
    db.Close();

    std::printf("%-11s %12.0f %12.0f %12.0f %9.2f   level %d\n", backend, n / parse, n / import, n / raw,
                raw / import, level);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    int n = 10000;
    if (const char* env = std::getenv("DVNBT_BENCH_ROWS")) n = std::atoi(env);
    if (argc > 1) n = std::atoi(argv[1]);
    if (n <= 0) {
        std::fprintf(stderr, "usage: bench_import [N]\n");
        return 2;
    }
    std::string file = WriteFile(n);
    std::printf("%d categories, one transaction per object\n%-11s %12s %12s %12s %9s\n", n, "database", "parse obj/s",
                "import obj/s", "raw rows/s", "import/raw");
    try {
        bench::ForEachFreshDatabase("bench_import",
                                    [&](const char* backend, const std::string& ds) { Run(backend, ds, file, n); });
    } catch (CDBException* e) {
        std::fprintf(stderr, "bench_import: %s\n", e->m_strError.c_str());
        e->Delete();
        std::filesystem::remove(file);
        return 1;
    }
    std::filesystem::remove(file);
    return 0;
}
