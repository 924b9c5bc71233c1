// The import of programs through the whole road (parse, rights, the store's
// transaction per program with its lookups, the PROGRAM row, its platform
// rows and services), against the raw-ODBC baseline of as many rows in as
// many transactions.
//
// A file of N programs, each with three platform groups (WINNT, KRX, NK2)
// and two external services (on WINNT and KRX): six rows per program. It is
// imported into a fresh database, then imported again with overwrite on, so
// that each program's row is rewritten in place and its platform rows and
// services are cleared and written anew. At a tenth of N (1x) and at N
// (10x), each into a database of its own, to compare the cost per program
// at one size and at ten times that size (last lines):
//   program <database> <import> 1x=<us> 10x=<us> growth=<10x / 1x>
//
// usage: bench_programs [N] (default 2000)
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <streambuf>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnschema.h"
#include "rawodbc.h"

namespace {

using bench::Discard;
using bench::QueryCount;
using bench::Seconds;

std::string WritePrograms(int n) {
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("bench_programs_" + std::to_string(n) + "_" + std::to_string(getpid()) + ".trx"))
                                 .string();
    std::ofstream out(path);
    char name[32];
    for (int i = 0; i < n; ++i) {
        std::snprintf(name, sizeof name, "Program%06d", i);
        out << "Program \"" << name << "\" {\n  Description = \"Generated program " << i
            << "\"; Unattended = true; ExecutionMode = 1;\n"
            << "  WINNT { Type = 1; PathAndFilename = \"c:\\\\bin\\\\" << name
            << ".exe\"; Parameter = \"-n\"; Style = 2; Foreground = true;\n"
            << "          External { Service = \"svc" << i << "\"; Mapping = false; Duration { Type = 2; Hours = 1; } } }\n"
            << "  KRX { Type = 2; PathAndFilename = \"/bin/" << name << "\"; XTerm = true;\n"
            << "        External { Service = \"krx" << i << "\"; Codepage = 850; } }\n"
            << "  NK2 { Type = 1; PathAndFilename = \"" << name << ".cmd\"; Autoclose = false; }\n}\n";
    }
    return path;
}

// The rows of programs as they stand in the tables now.
long ProgramRows(CDatabase& db) {
    long rows = 0;
    for (const char* table : {"PROGRAM", "WINNT_EXTENT", "WIN95_EXTENT", "NK2_EXTENT", "KRX_EXTENT", "HPUX_EXTENT",
                              "SOLARIS_EXTENT", "EXTERNAL_SERVICE"})
        rows += QueryCount(db, std::string("SELECT COUNT(*) FROM DVBT.") + table);
    return rows;
}

// Cost per program, by database, import and number of programs.
std::map<std::string, std::map<std::string, std::map<int, double>>> g_usPerProgram;

void Run(const char* backend, const std::string& dataSource, const std::string& path, int n) {
    {
        CDatabase db;
        if (DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString()) != 0) {
            std::fprintf(stderr, "%s: cannot open: %s\n", backend, DvnConvCoreDbIF::LastOpenError().c_str());
            return;
        }
        DvnSchema::Create(db, true);
        bench::CreateRawTable(db);
    }
    for (const char* pass : {"new", "overwrite"}) {
        Discard discard;
        std::ostream sink(&discard);
        std::streambuf* saved = std::cout.rdbuf(sink.rdbuf());
        DvnfMessageHandler::DefaultOutput(&sink);
        int level = 0;
        const double import = Seconds([&] {
            DvnConvCoreDbIF facade;
            level = facade.ImportTRX(DvnString(path), DvnString(dataSource), true, true, true);
        });
        DvnfMessageHandler::DefaultOutput(nullptr);
        std::cout.rdbuf(saved);
        DvnBTAuthorization::DestroyInstance();

        CDatabase db;
        DvnConvCoreDbIF::OpenDatabaseFromFile(dataSource.c_str(), db, DvnString(), DvnString());
        const long rows = ProgramRows(db);
        bench::ResetRawTable(db);
        // One transaction per program, as the store commits them.
        const int perTransaction = static_cast<int>(std::max(1L, rows / n));
        const double raw =
            Seconds([&] { bench::RawInsertInBatches(db, static_cast<int>(rows), perTransaction, true); });
        db.Close();

        const double usPerProgram = import * 1e6 / n;
        g_usPerProgram[backend][pass][n] = usPerProgram;
        std::printf("%-11s %-9s %7d %7ld %11.0f %10.0f %11.0f %10.2f %8.0f   level %d\n", backend, pass, n, rows,
                    n / import, rows / import, rows / raw, raw / import, usPerProgram, level);
        std::fflush(stdout);
    }
}

}  // namespace

int main(int argc, char** argv) {
    int n = 2000;
    if (argc > 1) n = std::atoi(argv[1]);
    if (n <= 0) {
        std::fprintf(stderr, "usage: bench_programs [N]\n");
        return 2;
    }
    std::printf("programs of three platform groups and two services, at %d and at %d\n"
                "%-11s %-9s %7s %7s %11s %10s %11s %10s %8s\n",
                std::max(1, n / 10), n, "database", "import", "progs", "rows", "programs/s", "rows/s", "raw rows/s",
                "import/raw", "us/prog");
    int status = 0;
    for (int count : {std::max(1, n / 10), n}) {
        const std::string path = WritePrograms(count);
        try {
            bench::ForEachFreshDatabase("bench_programs", [&](const char* backend, const std::string& ds) {
                Run(backend, ds, path, count);
            });
        } catch (CDBException* e) {
            std::fprintf(stderr, "bench_programs: %s\n", e->m_strError.c_str());
            e->Delete();
            status = 1;
        }
        std::filesystem::remove(path);
    }
    for (const auto& [backend, byPass] : g_usPerProgram) {
        std::string name;
        for (char c : backend) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        for (const auto& [pass, byCount] : byPass) {
            const double small = byCount.begin()->second, large = byCount.rbegin()->second;
            std::printf("program %s %s 1x=%.0fus 10x=%.0fus growth=%.2f\n", name.c_str(), pass.c_str(), small, large,
                        small > 0 ? large / small : 0);
        }
    }
    return status;
}
