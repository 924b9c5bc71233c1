// dvnbt import: parse a TRX file and store what it holds.
#include <iostream>

#include "cli.h"
#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfcorn.h"
#include "login.h"

namespace {

// The exit status of an import from its level: 0 clean, up to 4 warnings,
// up to 8 some objects not stored, above that failed as a whole.
int ExitOfLevel(int level) {
    if (level <= 0) return dvnbt::kOk;
    if (level <= 4) return dvnbt::kWarnings;
    if (level <= 8) return dvnbt::kErrors;
    return dvnbt::kFailed;
}

int Import(dvnbt::Context& ctx) {
    bool overwrite = true, markChanges = false, initialLoad = false;
    std::string file;
    for (const std::string& a : ctx.args) {
        if (a == "--no-overwrite") {
            overwrite = false;
        } else if (a == "--mark-changes") {
            markChanges = true;
        } else if (a == "--initial-load") {
            initialLoad = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return dvnbt::UsageError("import: unknown option " + a);
        } else if (file.empty()) {
            file = a;
        } else {
            return dvnbt::UsageError("import takes one file");
        }
    }
    if (file.empty()) {
        return dvnbt::UsageError("import: no file given");
    }

    // The database first: a server that cannot be reached, a file without a
    // repository or one that cannot be written is said once, with its
    // reason, before the login and before anything else is read or written.
    {
        CDatabase db;
        if (!dvnbt::OpenRepository(ctx, db, true)) return dvnbt::kFailed;
        db.Close();
    }

    // The user's rights decide what is stored; an initial load holds them all.
    if (!dvnbt::Login(ctx, initialLoad ? dvnbt::LoginFor::InitialLoad : dvnbt::LoginFor::Rights)) {
        DvnBTAuthorization::DestroyInstance();
        return dvnbt::kFailed;
    }
    // Progress lines and final words go to standard output; every reported
    // message goes to standard error.
    DvnfMessageHandler::DefaultOutput(&std::cerr);
    int level;
    {
        DvnConvCoreDbIF facade;
        level = facade.ImportTRX(DvnString(file), DvnString(ctx.dataSource), overwrite, !markChanges, initialLoad);
    }
    DvnBTAuthorization::DestroyInstance();
    DvnfMessageHandler::DefaultOutput(nullptr);
    if (level > 8) dvnbt::Error("import of " + file + " failed");
    return ExitOfLevel(level);
}

}  // namespace

DVNBT_COMMAND(import, "import", "[--no-overwrite] [--mark-changes] [--initial-load] FILE",
              "store the definitions of a TRX file (see docs/cli.md)", Import);
