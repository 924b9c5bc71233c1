// dvnbt init: create the repository schema in an empty database;
// dvnbt schema-script: print the statements init runs.
#include <algorithm>
#include <iostream>
#include <sstream>

#include "cli.h"
#include "dvnschema.h"
#include "login.h"

namespace {

// Whether the database holds the table of persons; true when that cannot be
// told, so that the login decides.
bool HoldsPersonTable(CDatabase& db) {
    try {
        const auto tables = DvnSchema::ExistingTables(db);
        return std::find(tables.begin(), tables.end(), "PERSON") != tables.end();
    } catch (CDBException* e) {
        e->Delete();
        return true;
    }
}

int Init(dvnbt::Context& ctx) {
    bool recreate = false;
    for (const auto& a : ctx.args) {
        if (a != "--recreate") {
            return dvnbt::UsageError("init takes only --recreate, not " + a);
        }
        recreate = true;
    }
    CDatabase db;
    if (!dvnbt::OpenDatabase(ctx, db, true)) return dvnbt::kFailed;
    // Dropping a repository that has users is a system administrator's work.
    if (recreate && HoldsPersonTable(db) && !dvnbt::Login(ctx, dvnbt::LoginFor::Administration)) {
        db.Close();
        return dvnbt::kFailed;
    }
    std::ostringstream err;
    int status = DvnSchema::Init(db, recreate, std::cout, err);
    db.Close();
    std::string text = err.str();
    if (!text.empty()) dvnbt::Error(text.substr(0, text.find_last_not_of('\n') + 1));
    return status == 0 ? dvnbt::kOk : dvnbt::kFailed;
}

int SchemaScript(dvnbt::Context& ctx) {
    if (ctx.args.size() != 1 || (ctx.args[0] != "sqlite" && ctx.args[0] != "postgresql")) {
        return dvnbt::UsageError("schema-script takes one argument: sqlite or postgresql");
    }
    std::cout << DvnSchema::Script(ctx.args[0] == "sqlite" ? DvnSchema::SQLite : DvnSchema::PostgreSQL);
    return dvnbt::kOk;
}

}  // namespace

DVNBT_COMMAND(init, "init", "[--recreate]",
              "create the repository schema in an empty database (--recreate: drop an existing one first)", Init);
DVNBT_COMMAND(schema_script, "schema-script", "sqlite|postgresql",
              "print the statements that init runs (as in schema/)", SchemaScript);
