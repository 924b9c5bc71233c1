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
            dvnbt::Error("import: unknown option " + a);
            return dvnbt::kUsage;
        } else if (file.empty()) {
            file = a;
        } else {
            dvnbt::Error("import takes one file");
            return dvnbt::kUsage;
        }
    }
    if (file.empty()) {
        dvnbt::Error("import: no file given");
        return dvnbt::kUsage;
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
