#include "staffrows.h"

#include <stdexcept>

#include "dvnbdbif.h"
#include "dvnkernn.h"
#include "dvnrecordsets.h"
#include "testdb.h"

namespace {

// Adds a row to a table of the repository ("TABLE (COLUMNS)" or "TABLE");
// values are SQL literals.
void Insert(CDatabase& db, const std::string& table, const std::string& values) {
    const std::string sql = "INSERT INTO " + DvnConvCoreDbIF::GetTablePrefix(db).str() + table + " VALUES (" + values + ")";
    ExecAll(db, {sql.c_str()});
}

}  // namespace

void AddSystemGroup(CDatabase& db, const std::string& id, const std::string& name) {
    Insert(db, "SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME)", "'" + id + "', '" + name + "'");
}

// Through the recordset, which stores the encoded password and leaves
// GLOBAL_PERS_AUTH NULL unless it is set.
void AddPerson(CDatabase& db, const TestPerson& p) {
    DvnPersonSet rs(&db);
    rs.m_strFilter = "1 = 0";
    if (!rs.Open(CRecordset::snapshot, DvnConvCoreDbIF::GetTablePrefix(db) + "PERSON", CRecordset::none))
        throw std::runtime_error("cannot append to PERSON");
    rs.AddNew();
    rs.m_PERSON_ID = p.id;
    rs.m_USERID = p.userId;
    rs.m_SYSTEM_GROUP = p.systemGroup;
    rs.m_PASSWORD = DvnUser::PasswordEncodeAsString(DvnString(p.userId), DvnString(p.password)).str();
    rs.m_STAFF_AUTH = p.staff;
    rs.m_TOPOLOGY_AUTH = p.topology;
    rs.m_PROC_DEF_AUTH = p.processModeling;
    rs.m_OPERATION_AUTH = p.operation;
    rs.m_SAUTH_DEF_AUTH = p.setAuthorization;
    rs.m_GLOBAL_PRC_AUTH = p.globalProcess;
    rs.m_GLOBAL_PADM_AUTH = p.globalProcessAdmin;
    if (p.globalPerson >= 0) rs.m_GLOBAL_PERS_AUTH = p.globalPerson;
    rs.m_CHECKED_OUT = 0;
    rs.Update();
    rs.Close();
}

void AddCategory(CDatabase& db, const std::string& id, const std::string& name) {
    Insert(db, "CATEGORY (CATID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', 0");
}

void AddRole(CDatabase& db, const std::string& id, const std::string& name) {
    Insert(db, "ROLE (ROLE_ID, NAME, CHECKED_OUT)", "'" + id + "', '" + name + "', 0");
}

void AddRelation(CDatabase& db, const std::string& table, const std::string& first, const std::string& second) {
    Insert(db, table, "'" + first + "', '" + second + "'");
}
