#include "dvnbauth.h"

#include <string>
#include <vector>

#include "dvnconnection.h"
#include "dvnlookup.h"
#include "dvnrecordsets.h"
#include "redact.h"

DvnBTAuthorization* DvnBTAuthorization::_instance = nullptr;

DvnBTAuthorization::DvnBTAuthorization() = default;

DvnBTAuthorization::~DvnBTAuthorization() = default;

DvnBTAuthorization* DvnBTAuthorization::GetInstance() {
    if (_instance == nullptr) _instance = new DvnBTAuthorization();
    return _instance;
}

void DvnBTAuthorization::DestroyInstance() {
    delete _instance;
    _instance = nullptr;
}

void DvnBTAuthorization::SetDBUser(const DvnString& user, const DvnString& password) {
    m_strDbUser = user;
    m_strDbPassword = password;
}

// ---------------------------------------------------------------------------
// The database operations. Each one opens a connection of its own and closes
// it before it returns, on every path.

namespace {

const char* const kAdministratorRole = "System administrator";

// A row that is no tombstone. A row without a mark (NULL) is live: in SQL
// "CHECKED_OUT <> 4" alone would be unknown for it, and drop it.
const char* const kLive = "(CHECKED_OUT IS NULL OR CHECKED_OUT <> 4)";

using dvnlookup::Literal;

CString Literal(const DvnString& value) { return Literal(CString(value.c_str())); }

void ReportDBException(DvnMessageTarget& target, CDBException* e, const std::string& context) {
    target.Message(51368, DvnString(e->m_strError.c_str()));
    DVN_TRACE(1, 2, context << e->m_nRetCode << "Error: " << e->m_strError << "State: " << e->m_strStateNativeOrigin);
    e->Delete();
}

// Opens db with the data source rule: empty means the machine profile.
// On failure reports 51366 with the data source, its passwords hidden, and
// returns false.
bool OpenConnection(DvnMessageTarget& target, CDatabase& db, const DvnString& dataSource, const DvnString& user,
                    const DvnString& password) {
    int level = dataSource.IsEmpty()
                    ? DvnConnection::OpenFromProfile(db, user, password)
                    : DvnConnection::OpenFromDataSource(CString(dataSource.c_str()), db, user, password);
    if (level == 0 && db.IsOpen()) return true;
    db.Close();
    target.Message(51366, DvnString(DvnConnection::DisplayName(CString(dataSource.c_str())).c_str()));
    DVN_TRACE(1, 8, "Open database failed");
    return false;
}

void CloseConnection(DvnMessageTarget& target, CDatabase& db) {
    try {
        if (db.IsOpen()) db.Close();
    } catch (CDBException* e) {
        ReportDBException(target, e, "Exception closing database: rc =");
    }
}

// Opens rs read-only on prefix + table with the filter; a CDBException
// goes up with the table remembered in context.
void OpenTable(CRecordset& rs, const CString& prefix, const char* table, const CString& filter, std::string& context) {
    context = std::string("Exception opening table ") + table + ": rc =";
    rs.m_strFilter = filter;
    rs.Open(CRecordset::snapshot, prefix + table, CRecordset::readOnly);
}

// The identifier of the named live system group into id, empty when there
// is none. A database exception is reported, and gives false.
bool FindSystemGroup(DvnMessageTarget& target, CDatabase& db, const CString& prefix, const DvnString& systemGroup,
                     CString& id) {
    try {
        DvnSystemGroupSet group(&db);
        id = dvnlookup::FirstRow(group, prefix + "SYSTEM_GROUP",
                                 "NAME = " + Literal(systemGroup) + " AND " + kLive, CString(),
                                 [&] { return group.m_SYSTEM_GROUP_ID; });
        return true;
    } catch (CDBException* e) {
        ReportDBException(target, e, "Exception opening table SYSTEM_GRPOUP: rc =");
        id.Empty();
        return false;
    }
}

// Whether PERSON holds a live row: one row of one number, whatever the
// number of persons, and a row without a key counts too. A database
// exception is reported, and gives false.
bool AnyLivePerson(DvnMessageTarget& target, CDatabase& db, const CString& prefix) {
    try {
        DvnCountSet count(&db);
        count.Open(CRecordset::snapshot, "SELECT COUNT(*) FROM " + prefix + "PERSON WHERE " + kLive,
                   CRecordset::readOnly);
        const bool found = count.GetRecordCount() >= 1 && count.m_N >= 1;
        count.Close();
        return found;
    } catch (CDBException* e) {
        ReportDBException(target, e, "Exception opening table PERSON: rc =");
        return false;
    }
}

// Whether a live PERSON row passes the filter and its stored password is
// this one. The stored form names its scheme and rounds, so the password is
// encoded as each row asks and compared here, in constant time: the
// database sees the user id and the group, never the password, clear or
// encoded. A database exception is reported, and gives false.
bool PasswordOfAnyPerson(DvnMessageTarget& target, CDatabase& db, const CString& prefix, const CString& filter,
                         const DvnString& userId, const DvnString& password) {
    std::string context;
    try {
        DvnPersonSet person(&db);
        OpenTable(person, prefix, "PERSON", filter + " AND " + kLive, context);
        bool valid = false;
        for (; !valid && !person.IsEOF(); person.MoveNext())
            valid = DvnUser::PasswordMatches(userId, password, DvnString(person.m_PASSWORD.c_str()));
        person.Close();
        return valid;
    } catch (CDBException* e) {
        ReportDBException(target, e, context);
        return false;
    }
}

}  // namespace

// Reads the rights of one found person into a fresh object. Any CDBException
// goes up, with context naming the table of the failed statement.
class DvnRightsLoader {
public:
    DvnRightsLoader(CDatabase& db, const CString& prefix, std::string& context)
        : m_db(db), m_prefix(prefix), m_context(context) {}

    // current: the object as it stands, whose work-item rights stay when the
    // person has no global work-item right (null), which leaves them undefined.
    void Load(DvnBTAuthorization& auth, const DvnBTAuthorization& current, const DvnString& systemGroup,
              const DvnString& userId, const DvnPersonSet& person) {
        auth.SetUserID(systemGroup, userId);
        auth.SetAuthForSetAuthorization(person.m_SAUTH_DEF_AUTH != 0);
        auth.SetAuthForOperation(person.m_OPERATION_AUTH != 0);
        auth.SetAuthForProcessModeling(person.m_PROC_DEF_AUTH != 0);
        auth.SetAuthForStaff(person.m_STAFF_AUTH != 0);
        auth.SetAuthForTopology(person.m_TOPOLOGY_AUTH != 0);

        const CString key = Literal(person.m_PERSON_ID);
        const bool global = person.m_GLOBAL_PRC_AUTH != 0, globalAdmin = person.m_GLOBAL_PADM_AUTH != 0;
        if (global || globalAdmin) {
            auth.SetAuthForAllProcessCategories(global);
            auth.SetAuthForAllProcessCategoriesAsAdmin(globalAdmin);
        } else {
            for (const CString& name : CategoryNames("PERS_SEL_PADM_AUTH", key))
                auth.SetAuthForProcessCategoryAsAdmin(DvnString(name.c_str()));
            for (const CString& name : CategoryNames("PERS_HAS_PRC_AUTH", key))
                auth.SetAuthForProcessCategory(DvnString(name.c_str()));
        }

        if (!person.IsFieldNull(&person.m_GLOBAL_PERS_AUTH)) {
            auth.SetAuthForAllWorkitems(person.m_GLOBAL_PERS_AUTH != 0);
            DvnPersonSet other(&m_db);
            Select(other, "PERSON", "PERSON_ID", "AUTH_FOR_PERSON", "PERS_AUTH_FOR_PERS", key);
            for (; !other.IsEOF(); Next(other, "PERSON")) auth.SetAuthForWorkitemsOf(DvnString(other.m_USERID.c_str()));
            other.Close();
        } else {
            auth.CopyWorkitemRights(current);
        }

        auth.SetSystemAdmin(false);
        DvnRoleSet role(&m_db);
        Select(role, "ROLE", "ROLE_ID", "ROLE_ID", "ROLE_INCL_PERSON", key);
        for (; !role.IsEOF(); Next(role, "ROLE")) {
            if (role.m_NAME == kAdministratorRole) {
                auth.SetSystemAdmin(true);
                break;
            }
        }
        role.Close();
    }

private:
    // The live rows of table whose key is named by the person's rows of
    // relation: one statement instead of one lookup per relation row. A
    // tombstone grants nothing: not its category, not its work list, not
    // its role.
    void Select(CRecordset& rs, const char* table, const char* key, const char* relationColumn,
                const char* relation, const CString& person) {
        m_context = std::string("Exception opening table ") + table + ": rc =";
        CString sql = "SELECT * FROM " + m_prefix + table + " WHERE [" + key + "] IN (SELECT [" + relationColumn +
                      "] FROM " + m_prefix + relation + " WHERE [PERSON_ID] = " + person + ") AND " + kLive;
        rs.Open(CRecordset::snapshot, sql, CRecordset::readOnly);
    }

    void Next(CRecordset& rs, const char* table) {
        m_context = std::string("Exception reading table ") + table + ": rc =";
        rs.MoveNext();
    }

    std::vector<CString> CategoryNames(const char* relation, const CString& person) {
        DvnCategorySet category(&m_db);
        Select(category, "CATEGORY", "CATID", "CATID", relation, person);
        std::vector<CString> names;
        for (; !category.IsEOF(); Next(category, "CATEGORY")) names.push_back(category.m_NAME);
        category.Close();
        return names;
    }

    CDatabase& m_db;
    const CString& m_prefix;
    std::string& m_context;
};

bool DvnBTAuthorization::HasUsers(DvnMessageTarget& target, const DvnString& dataSource) {
    CDatabase db;
    if (!OpenConnection(target, db, dataSource, DbUser(), DbPassword())) return false;
    const CString prefix = DvnConnection::TablePrefix(db);
    const bool result = AnyLivePerson(target, db, prefix);
    CloseConnection(target, db);
    return result;
}

bool DvnBTAuthorization::IsPasswordValid(DvnMessageTarget& target, const DvnString& systemGroup,
                                         const DvnString& userId, const DvnString& password,
                                         const DvnString& dataSource) {
    CDatabase db;
    if (!OpenConnection(target, db, dataSource, DbUser(), DbPassword())) return false;
    const CString prefix = DvnConnection::TablePrefix(db);
    // A failed group lookup leaves the identifier empty, and the comparison
    // below finds nobody.
    CString groupId;
    FindSystemGroup(target, db, prefix, systemGroup, groupId);
    const bool result =
        PasswordOfAnyPerson(target, db, prefix, "USERID = " + Literal(userId) + " AND SYSTEM_GROUP = " + Literal(groupId),
                            userId, password);
    CloseConnection(target, db);
    return result;
}

void DvnBTAuthorization::SetUser(DvnMessageTarget& target, const DvnString& systemGroup, const DvnString& userId,
                                 const DvnString& dbUser, const DvnString& dbPassword, const DvnString& dataSource) {
    CDatabase db;
    if (!OpenConnection(target, db, dataSource, dbUser, dbPassword)) return;
    const CString prefix = DvnConnection::TablePrefix(db);
    CString groupId;
    if (!FindSystemGroup(target, db, prefix, systemGroup, groupId)) {
        CloseConnection(target, db);
        return;
    }
    // The rights are read into a fresh object and taken over only when all
    // reads succeeded, so a failure leaves this object as it was. Only the
    // work-item rights of a person without a global work-item right are
    // carried over from this object.
    DvnBTAuthorization loaded;
    bool found = false;
    std::string context;
    try {
        DvnPersonSet person(&db);
        OpenTable(person, prefix, "PERSON",
                  "USERID = " + Literal(userId) + " AND SYSTEM_GROUP = " + Literal(groupId) + " AND " + kLive, context);
        if (person.GetRecordCount() >= 1) {
            DvnRightsLoader(db, prefix, context).Load(loaded, *this, systemGroup, userId, person);
            found = true;
        }
        person.Close();
    } catch (CDBException* e) {
        ReportDBException(target, e, context);
        found = false;
    }
    if (found) {
        static_cast<DvnPersonAuth&>(*this) = static_cast<const DvnPersonAuth&>(loaded);
        SetDBUser(dbUser, dbPassword);
    }
    CloseConnection(target, db);
}

void DvnBTAuthorization::GrantDefinitionRights() {
    SetAuthForProcessModeling(true);
    SetAuthForStaff(true);
    SetAuthForTopology(true);
}
