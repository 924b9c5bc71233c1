// dvnbt: the command line of the database back end.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "cli.h"
#include "dvnbdbif.h"
#include "dvnschema.h"

namespace dvnbt {

std::vector<Command>& Registry() {
    static std::vector<Command> commands;
    return commands;
}

bool Register(const Command& command) {
    Registry().push_back(command);
    return true;
}

const std::vector<Command>& Commands() { return Registry(); }

void Error(const std::string& text) { std::cerr << "dvnbt: " << text << std::endl; }

int UsageError(const std::string& text) {
    Error(text);
    std::cerr << "Try 'dvnbt --help'." << std::endl;
    return kUsage;
}

// How to create a repository where the options point.
static std::string InitHint(const Context& ctx) {
    if (!ctx.dbFile.empty()) return "dvnbt --db " + ctx.dbFile + " init";
    if (!ctx.dataSource.empty()) return "dvnbt --dsn \"" + RedactPassword(ctx.dataSource.c_str()).str() + "\" init";
    return "dvnbt init";
}

bool OpenDatabase(const Context& ctx, CDatabase& db, bool create) {
    if (!ctx.dbFile.empty() && !create) {
        std::error_code ec;
        if (!std::filesystem::exists(ctx.dbFile, ec)) {
            Error(ctx.Describe() + " does not exist, so it holds no repository: run '" + InitHint(ctx) +
                  "' to create one");
            return false;
        }
    }
    int level = ctx.dataSource.empty()
                    ? DvnConvCoreDbIF::OpenDatabaseFromProfile(db, ctx.dbUser, ctx.dbPassword)
                    : DvnConvCoreDbIF::OpenDatabaseFromFile(ctx.dataSource.c_str(), db, ctx.dbUser, ctx.dbPassword);
    if (level == 0) return true;
    Error("cannot open " + ctx.Describe() + ": " + DvnConvCoreDbIF::LastOpenError().str());
    return false;
}

bool OpenRepository(const Context& ctx, CDatabase& db, bool forWriting) {
    if (!OpenDatabase(ctx, db)) return false;
    std::string failure;
    const char* step = "cannot read ";
    try {
        if (!DvnSchema::Exists(db)) {
            failure = ctx.Describe() + " holds no repository: run '" + InitHint(ctx) + "' to create one";
        } else if (forWriting) {
            // A transaction on SQLite begins by writing: a file that cannot
            // be written says so here, once, rather than at every object.
            step = "cannot write to ";
            db.BeginTrans();
            db.Rollback();
        }
    } catch (CDBException* e) {
        failure = step + ctx.Describe() + ": " + e->m_strError.str();
        e->Delete();
        if (db.IsOpen() && db.InTransaction()) {
            try {
                db.Rollback();
            } catch (CDBException* again) {
                again->Delete();
            }
        }
    }
    if (failure.empty()) return true;
    db.Close();
    Error(failure);
    return false;
}

std::string Context::Describe() const {
    if (!dbFile.empty()) return "database file " + dbFile;
    if (!dataSource.empty()) return "data source " + RedactPassword(dataSource.c_str()).str();
    return "the data source of the machine profile " + DvnProfile::Path();
}

namespace {

void Usage(std::ostream& os) {
    os << "usage: dvnbt [--db FILE | --dsn NAME] [--db-user USER] [--user NAME] [--system-group NAME]\n"
          "             COMMAND [ARGS...]\n"
          "       dvnbt --help | --version\n"
          "\n"
          "The options below may also follow the command.\n"
          "\n"
          "Connection (every command):\n"
          "  --db FILE       an embedded SQLite database file (init creates it);\n"
          "                  needs no ODBC configuration\n"
          "  --dsn NAME      a data source configured in unixODBC (odbc.ini)\n"
          "                  with neither: BTODBCDataSourceName of the machine profile\n"
          "  --db-user USER  database user; the password comes from $DVNBT_DB_PASSWORD\n"
          "\n"
          "Login (commands that read or change the definitions, such as import):\n"
          "  --user NAME     the build-time user, else $DVNBT_USER; the password comes\n"
          "                  from $DVNBT_PASSWORD, else a prompt on a terminal\n"
          "  --system-group NAME\n"
          "                  the user's system group, else SystemGroup of the machine\n"
          "                  profile, else SYS_GRP\n"
          "\n"
          "Commands:\n";
    for (const Command& c : Commands()) {
        std::string head = std::string(c.name) + (*c.synopsis ? " " : "") + c.synopsis;
        os << "  " << head << std::string(head.size() < 22 ? 22 - head.size() : 1, ' ') << c.summary << "\n";
    }
    os << "\nExit status: 0 done, 1 failed, 2 wrong usage, 3 done with warnings,\n"
          "4 done with errors (some objects not stored).\n";
}

// The options shared by every command, which stand before or after the
// command name.
bool IsSharedOption(const std::string& a) {
    return a == "--db" || a == "--dsn" || a == "--db-user" || a == "--user" || a == "--system-group";
}

}  // namespace
}  // namespace dvnbt

int main(int argc, char** argv) {
    using namespace dvnbt;
    Context ctx;
    std::string dsn;
    std::string name;  // the command
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            Usage(std::cout);
            return kOk;
        } else if (a == "--version" && name.empty()) {
            std::cout << "dvnbt " << DVNBT_VERSION << std::endl;
            return kOk;
        } else if (IsSharedOption(a)) {
            if (i + 1 >= argc || !*argv[i + 1]) return UsageError("option " + a + " needs a value");
            const char* v = argv[++i];
            std::string* target = a == "--db" ? &ctx.dbFile
                                  : a == "--dsn" ? &dsn
                                  : a == "--user" ? &ctx.user
                                  : a == "--system-group" ? &ctx.systemGroup
                                                          : nullptr;
            if (target && !target->empty() && *target != v) return UsageError("option " + a + " given twice");
            if (target)
                *target = v;
            else
                ctx.dbUser = DvnString(v);
        } else if (!name.empty()) {
            ctx.args.push_back(a);  // the command's own
        } else if (a.size() > 1 && a[0] == '-') {
            return UsageError("unknown option " + a);
        } else {
            name = a;
        }
    }
    if (!ctx.dbFile.empty() && !dsn.empty()) return UsageError("give either --db or --dsn, not both");
    if (name.empty()) return UsageError("no command given");
    const Command* command = nullptr;
    for (const Command& c : Commands())
        if (name == c.name) command = &c;
    if (!command) return UsageError("unknown command " + name);
    if (const char* pwd = std::getenv("DVNBT_DB_PASSWORD")) ctx.dbPassword = DvnString(pwd);
    if (!ctx.dbFile.empty()) {
        if (ctx.dbFile.find(';') != std::string::npos) return UsageError("a database file name must not contain ';'");
        std::error_code ec;
        std::string file = std::filesystem::absolute(ctx.dbFile, ec).string();
        ctx.dataSource = DvnConvCoreDbIF::EmbeddedDataSource(ec ? ctx.dbFile : file).str();
    } else if (!dsn.empty()) {
        ctx.dataSource = dsn;
    }
    if (!ctx.dataSource.empty()) DvnProfile::SetOverride("BTODBCDataSourceName", ctx.dataSource);
    return command->run(ctx);
}
