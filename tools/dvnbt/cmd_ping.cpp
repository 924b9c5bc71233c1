// dvnbt ping: open a connection and say what was reached.
#include <iostream>

#include "cli.h"
#include "dvnbdbif.h"

namespace {

int Ping(dvnbt::Context& ctx) {
    if (!ctx.args.empty()) {
        return dvnbt::UsageError("ping takes no arguments");
    }
    CDatabase db;
    if (!dvnbt::OpenDatabase(ctx, db)) return dvnbt::kFailed;
    std::cout << "product: " << db.GetDBMSName() << " " << db.GetDBMSVersion() << "\n"
              << "connect: "
              << RedactPassword(db.GetConnect(),
                                DvnConvCoreDbIF::BuildConnectString(ctx.dataSource.c_str(), ctx.dbUser.c_str(),
                                                                    ctx.dbPassword.c_str()))
              << "\n"
              << "prefix: " << DvnConvCoreDbIF::GetTablePrefix(db) << std::endl;
    db.Close();
    return dvnbt::kOk;
}

}  // namespace

DVNBT_COMMAND(ping, "ping", "", "open the database; print its product, connect string and table prefix", Ping);
