#include "staffrows.h"

#include <stdexcept>

#include "dvnbdbif.h"
#include "dvnkernn.h"
#include "dvnrecordsets.h"

namespace {

// Opens rs for appending on the table of the repository and adds one row
// filled by fill.
template <class Set, class Fill>
void Append(CDatabase& db, const char* table, Fill fill) {
    Set rs(&db);
    rs.m_strFilter = "1 = 0";
    if (!rs.Open(CRecordset::snapshot, DvnConvCoreDbIF::GetTablePrefix(db) + table, CRecordset::none) ||
        !rs.CanAppend())
        throw std::runtime_error(std::string("cannot append to ") + table);
    rs.AddNew();
    fill(rs);
    rs.Update();
    rs.Close();
}

}  // namespace

void AddSystemGroup(CDatabase& db, const std::string& id, const std::string& name) {
    Append<DvnSystemGroupSet>(db, "SYSTEM_GROUP", [&](DvnSystemGroupSet& rs) {
        rs.m_SYSTEM_GROUP_ID = id;
        rs.m_NAME = name;
    });
}

void AddPerson(CDatabase& db, const TestPerson& p) {
    Append<DvnPersonSet>(db, "PERSON", [&](DvnPersonSet& rs) {
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
    });
}

void AddCategory(CDatabase& db, const std::string& id, const std::string& name) {
    Append<DvnCategorySet>(db, "CATEGORY", [&](DvnCategorySet& rs) {
        rs.m_CATID = id;
        rs.m_NAME = name;
        rs.m_CHECKED_OUT = 0;
    });
}

void AddRole(CDatabase& db, const std::string& id, const std::string& name) {
    Append<DvnRoleSet>(db, "ROLE", [&](DvnRoleSet& rs) {
        rs.m_ROLE_ID = id;
        rs.m_NAME = name;
        rs.m_CHECKED_OUT = 0;
    });
}

void AddRelation(CDatabase& db, const std::string& table, const std::string& first, const std::string& second) {
    const std::string bracketed = DvnConvCoreDbIF::GetTablePrefix(db).str() + table;
    db.ExecuteSQL(("INSERT INTO " + bracketed + " VALUES ('" + first + "', '" + second + "')").c_str());
}
