// The embedded database under the store's load: one transaction per
// object, each a lookup by name and an insert, as the stores run. Compares
// SQLite's rollback journal with synchronous FULL (the driver's default)
// against write-ahead logging with FULL and with NORMAL (what a connection
// gets). Usage: bench_sqlite_journal [OBJECTS]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "dvnbdbif.h"
#include "dvnprocsets.h"
#include "dvnschema.h"

namespace {

// objects per second; oneTransaction: all objects in one transaction, which
// leaves the cost of the recordset path without the commits.
double Run(const std::string& journal, const std::string& sync, int objects, bool oneTransaction = false) {
    auto dir = std::filesystem::temp_directory_path() / ("dvnbt_bench_" + journal + "_" + sync);
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::string file = (dir / "bench.db").string();
    CDatabase db;
    if (DvnConvCoreDbIF::OpenDatabaseFromFile(DvnConvCoreDbIF::EmbeddedDataSource(file), db, DvnString(),
                                              DvnString()) != 0) {
        std::fprintf(stderr, "cannot open %s\n", file.c_str());
        std::exit(1);
    }
    DvnSchema::Create(db, false);
    db.ExecuteSQL(("PRAGMA DVBT.journal_mode=" + journal).c_str());
    db.ExecuteSQL(("PRAGMA DVBT.synchronous=" + sync).c_str());
    const CString prefix = DvnConvCoreDbIF::GetTablePrefix(db);

    auto start = std::chrono::steady_clock::now();
    if (oneTransaction) db.BeginTrans();
    for (int i = 0; i < objects; ++i) {
        const std::string name = "Category " + std::to_string(i);
        if (!oneTransaction) db.BeginTrans();
        DvnCategorySet set(&db);
        if (set.GetCatID(("'" + name + "'").c_str(), prefix, true).IsEmpty()) {
            set.Open(CRecordset::snapshot, prefix + "CATEGORY", CRecordset::none);
            set.AddNew();
            set.m_CATID = ("K" + std::to_string(i)).c_str();
            set.m_NAME = name.c_str();
            set.m_CHECKED_OUT = 0;
            set.Update();
            set.Close();
        }
        if (!oneTransaction) db.CommitTrans();
    }
    if (oneTransaction) db.CommitTrans();
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    db.Close();
    std::filesystem::remove_all(dir);
    return objects / seconds;
}

}  // namespace

int main(int argc, char** argv) {
    const int objects = argc > 1 ? std::atoi(argv[1]) : 2000;
    std::printf("%d objects, one transaction each (lookup by name + insert)\n", objects);
    for (auto [journal, sync] : {std::pair{"DELETE", "FULL"}, std::pair{"WAL", "FULL"}, std::pair{"WAL", "NORMAL"}})
        std::printf("journal %-6s synchronous %-6s %8.0f objects/s\n", journal, sync, Run(journal, sync, objects));
    std::printf("journal WAL    synchronous NORMAL %8.0f objects/s, all in one transaction\n",
                Run("WAL", "NORMAL", objects, true));
    return 0;
}
