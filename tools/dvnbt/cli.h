// The frame of the dvnbt program: connection options shared by every
// subcommand, exit statuses, and the registry of subcommands.
#pragma once

#include <string>
#include <vector>

#include "dvnkernn.h"
#include "odbcframe.h"

namespace dvnbt {

// Exit statuses (docs/cli.md).
enum Exit : int {
    kOk = 0,        // done
    kFailed = 1,    // the operation failed (database, file, rights)
    kUsage = 2,     // wrong command line
    kWarnings = 3,  // done, with warnings
    kErrors = 4,    // done, but some objects were not stored (errors)
};

// What the options before the subcommand chose.
struct Context {
    // How to reach the database. Empty: the data source of the machine
    // profile. Otherwise a name for OpenDatabaseFromFile; --db and --dsn also
    // put it into the profile's "BTODBCDataSourceName" for this process, so
    // that every connection of the command reaches the same database.
    std::string dataSource;
    std::string dbFile;          // --db FILE, as given
    DvnString dbUser;            // --db-user; null when not given
    DvnString dbPassword;        // $DVNBT_DB_PASSWORD; null when not set
    std::string user;            // --user; empty: $DVNBT_USER (login.h)
    std::string systemGroup;     // --system-group; empty: the profile's, else SYS_GRP
    std::vector<std::string> args;  // what follows the subcommand
    // A short, printable description of where the database is.
    std::string Describe() const;
};

// Prints "dvnbt: <text>" on standard error.
void Error(const std::string& text);
// A wrong command line: prints "dvnbt: <text>" and "Try 'dvnbt --help'." on
// standard error and gives kUsage.
int UsageError(const std::string& text);

// Opens the database the options chose. On failure says why (the driver's
// reason) on standard error and returns false. A database file named by
// --db that does not exist is refused, not created, unless create is true
// (init).
bool OpenDatabase(const Context& ctx, CDatabase& db, bool create = false);

// Opens the database as OpenDatabase does and checks that it holds a
// repository (else says to run init) and, with forWriting, that it can be
// written (a read-only file). On failure says why and returns false; the
// connection is closed then.
bool OpenRepository(const Context& ctx, CDatabase& db, bool forWriting);

using CommandFn = int (*)(Context&);
struct Command {
    const char* name;
    const char* synopsis;  // arguments after the name, for --help
    const char* summary;
    CommandFn run;
};
// Registers a subcommand; used by DVNBT_COMMAND at static initialization.
bool Register(const Command& command);
const std::vector<Command>& Commands();

}  // namespace dvnbt

#define DVNBT_COMMAND(id, name, synopsis, summary, fn) \
    static const bool dvnbt_registered_##id = ::dvnbt::Register({name, synopsis, summary, fn})
