#include "repositorydb.h"

#include "dvnbdbif.h"
#include "dvnkernn.h"

void RepositoryTest::PrepareSchema() { prefix = DvnConvCoreDbIF::GetTablePrefix(Db()); }

namespace {

// Adds a row to a table of the repository ("TABLE (COLUMNS)" or "TABLE");
// values are SQL literals.
void Insert(CDatabase& db, const std::string& table, const std::string& values) {
    const std::string sql =
        "INSERT INTO " + DvnConvCoreDbIF::GetTablePrefix(db).str() + table + " VALUES (" + values + ")";
    ExecAll(db, {sql.c_str()});
}

}  // namespace

std::string NumberOrNull(int mark) { return mark < 0 ? "NULL" : std::to_string(mark); }

void AddSystemGroup(CDatabase& db, const std::string& id, const std::string& name, int mark) {
    Insert(db, "SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME, CHECKED_OUT)",
           "'" + id + "', '" + name + "', " + NumberOrNull(mark));
}

void AddPerson(CDatabase& db, const TestPerson& p) {
    const std::string password =
        DvnUser::PasswordEncodeWithRounds(DvnString(p.userId), DvnString(p.password), p.rounds).str();
    std::string flags;
    for (int flag : {p.staff, p.topology, p.processModeling, p.operation, p.setAuthorization, p.globalProcess,
                     p.globalProcessAdmin})
        flags += std::to_string(flag) + ", ";
    Insert(db,
           "PERSON (PERSON_ID, USERID, SYSTEM_GROUP, PASSWORD, STAFF_AUTH, TOPOLOGY_AUTH, PROC_DEF_AUTH, "
           "OPERATION_AUTH, SAUTH_DEF_AUTH, GLOBAL_PRC_AUTH, GLOBAL_PADM_AUTH, GLOBAL_PERS_AUTH, CHECKED_OUT)",
           (p.id.empty() ? "NULL" : "'" + p.id + "'") + ", '" + p.userId + "', '" + p.systemGroup + "', '" + password +
               "', " + flags + NumberOrNull(p.globalPerson) + ", " + NumberOrNull(p.mark));
}

void AddCategory(CDatabase& db, const std::string& id, const std::string& name, int mark) {
    Insert(db, "CATEGORY (CATID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', " + NumberOrNull(mark));
}

void AddRole(CDatabase& db, const std::string& id, const std::string& name, int mark) {
    Insert(db, "ROLE (ROLE_ID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', " + NumberOrNull(mark));
}

void AddOrganization(CDatabase& db, const std::string& id, const std::string& name) {
    Insert(db, "ORGANIZATION (ORGANIZATION_ID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', 0");
}

void AddProgram(CDatabase& db, const std::string& id, const std::string& name) {
    Insert(db, "PROGRAM (PROGRAM_ID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', 0");
}

void AddRelation(CDatabase& db, const std::string& table, const std::string& first, const std::string& second) {
    Insert(db, table, "'" + first + "', '" + second + "'");
}

// ---- topology rows that persons and activity kinds name
void AddSystem(CDatabase& db, const std::string& id, const std::string& name, const std::string& systemGroup) {
    Insert(db, "SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP, CHECKED_OUT)",
           "'" + id + "', '" + name + "', '" + systemGroup + "', 0");
}

void AddServer(CDatabase& db, const std::string& table, const std::string& id, const std::string& name,
               const std::string& system) {
    Insert(db, table + " (SERVER_ID, NAME, SYSTEM, CHECKED_OUT)", "'" + id + "', '" + name + "', '" + system + "', 0");
}
