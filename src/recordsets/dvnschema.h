// The data definition of the repository, built from the recordset classes'
// own field exchange, and the operations that create it in an empty
// database (SQLite or PostgreSQL, behind the prefix "DVBT.").
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "odbcframe.h"

class DvnSchema {
public:
    enum Dialect { SQLite, PostgreSQL };

    struct Table {
        const char* name;                                   // bare, as "PROCESS"
        std::unique_ptr<CRecordset> (*make)(CDatabase*);    // its recordset class
        std::vector<const char*> indexes;                   // each "COL" or "COL1,COL2", "UNIQUE COL" unique
        std::vector<const char*> extraTextColumns;          // behind the exchanged ones
    };

    // The tables of the schema, in creation order.
    static const std::vector<Table>& Tables();
    static const Table* FindTable(const std::string& bareName);
    // An entry of Table::indexes: whether it is unique, and its columns ("COL1,COL2").
    static bool IsUniqueIndex(const char* index);
    static std::string IndexColumns(const char* index);
    // The columns of a table in order: the class's exchange, then any extra.
    static std::vector<CFieldInfo> Columns(const Table& table);

    // Every statement that creates the schema in an empty database.
    static std::vector<std::string> Statements(Dialect dialect);
    // The same as one script, each statement ended by ";" and a blank line.
    static std::string Script(Dialect dialect);

    // Which dialect an open connection speaks; raises CDBException for a
    // database that is neither.
    static Dialect DialectOf(CDatabase& db);
    // The tables of the schema that exist already (bare names).
    static std::vector<std::string> ExistingTables(CDatabase& db);
    static bool Exists(CDatabase& db) { return !ExistingTables(db).empty(); }

    // Creates the schema and its seed rows in one transaction. With recreate
    // false a schema that exists already (even in part) is left as it is and
    // false comes back; with recreate true it is dropped first. Raises
    // CDBException; a failure leaves the database as it was.
    static bool Create(CDatabase& db, bool recreate);
    // Drops every table of the schema (and what hangs on it).
    static void Drop(CDatabase& db);

    // The key of the seeded "Default Data Structure" row.
    static constexpr const char* kDefaultDataStructureKey = "DEFAULT_DATA_STRUCTURE";

    // The work of "dvnbt init" on an open connection: refuses an existing
    // schema unless recreate, says what it does on out, errors on err.
    // Returns the exit status: 0 done, 1 refused or failed.
    static int Init(CDatabase& db, bool recreate, std::ostream& out, std::ostream& err);
};
