// Store of roles, and the relation rows of a person: role memberships and
// the work-list and category authorizations. The memberships come from the
// persons' side; docs/staff.md tells the rules.
#include <iostream>

#include "dvnprocsets.h"
#include "dvnstaffsets.h"
#include "staffstore.h"

using dvnstaff::AnyRow;
using dvnstaff::ForEachLinkTarget;
using dvnstaff::SqlText;

namespace {

const char* const kSystemAdministrator = "System administrator";

}  // namespace

const DvnConvCoreDbBe::Family<DvnRoleSet> DvnConvCoreDbBe::RoleFamily = {
    .typeName = "Role",
    .kind = "Role",
    .right = &StaffRight,
    .table = "ROLE",
    .keyColumn = "ROLE_ID",
    .key = &DvnRoleSet::m_ROLE_ID,
    .progress = "Role ",
    .invalidTrace = "Role is not defined",
    .deleteKeyword = "DELETE ROLE ",
    .messages = {.added = 51002, .updated = 51039, .kept = 51071, .held = 51138, .deleted = 51211,
                 .cannotAppend = 51303, .cannotUpdate = 51335},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnRoleSet& row, bool isNew) {
        return be.ReadRoleAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.RoleInUse(db, entity, key);
    },
    // Every written row (new, updated, tombstone) has its second pass at once.
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString&, bool) {
        return be.SaveRole2(db, entity);
    },
};

int DvnConvCoreDbBe::SaveRoles(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, RoleFamily); }

int DvnConvCoreDbBe::SaveRole(CDatabase& db, DvnfEntity& entity) { return SaveSingleRow(db, entity, RoleFamily); }

int DvnConvCoreDbBe::ReadRoleAttributes(CDatabase& db, DvnfEntity& entity, DvnRoleSet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    if (isNew) {
        row.m_ROLE_ID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    // A coordinator that is not stored leaves the role without one.
    const CString coordinator = GetLinkName("RoleHasCoordinator", entity, "Person");
    if (!coordinator.IsEmpty()) {
        DvnPersonSet persons(&db);
        const CString coordinatorId = persons.GetPersonID(SqlText(coordinator), m_strTablePrefix, false);
        if (coordinatorId.IsEmpty()) {
            Report(51117, DvnString(coordinator.c_str()));
            row.SetFieldNull(&row.m_COORDINATOR_ID);
        } else {
            row.m_COORDINATOR_ID = coordinatorId;
        }
    }
    dvnstaff::SetDescription(row, entity);
    return LevelOk;
}

int DvnConvCoreDbBe::RoleInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    // A process, or an activity of one, that names the role keeps it.
    if (AnyRow<DvnProcessSet>(db, m_strTablePrefix, "PROCESS", "ROLE = " + SqlText(key)) ||
        AnyRow<DvnActivityByRoleSet>(db, m_strTablePrefix, "ACTIVITY_BY_ROLE", "ROLE = " + SqlText(key))) {
        Report(51270, entity.Name());
        return LevelWarning;
    }
    // A role that goes for good takes its memberships along.
    if (m_nSourceMark != MarkClean) return LevelOk;
    return DeleteStaffRows(db, "ROLE_INCL_PERSON", "ROLE_ID", key);
}

bool DvnConvCoreDbBe::RoleNamedByRun(const DvnString& roleName) {
    bool named = false;
    for (auto& [name, object] : m_pCoreData->GetEntities("Person")) {
        DvnfEntity& person = object->Entity();
        if (!person.IsValid() || named) continue;
        ForEachLinkTarget(*m_pCoreData, person, "PersonHasRole", "Role",
                          [&](const DvnString& role) { named = named || role == roleName; });
    }
    return named;
}

int DvnConvCoreDbBe::SaveRole2(CDatabase& db, DvnfEntity& entity) {
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, "Role is not defined");
        return LevelError;
    }
    const DvnString name = entity.Name();
    DvnRoleSet row(&db);
    row.m_strFilter = CString("NAME = ") + SqlText(name);
    CString key;
    try {
        row.Open(CRecordset::snapshot, Table("ROLE"), CRecordset::none);
        if (row.IsEOF()) {
            row.Close();
            return LevelOk;
        }
        row.MoveFirst();
        key = row.m_ROLE_ID;
        int mark = row.m_CHECKED_OUT;
        if (!SecondPassMayWrite(mark)) {
            row.Close();
            return LevelOk;
        }
        // A row of an earlier run is not touched; one of this run ends its mark 9.
        if (mark != row.m_CHECKED_OUT) {
            row.Edit();
            row.m_CHECKED_OUT = mark;
            row.Update();
        }
        row.Close();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", "ROLE", &row);
        Report(51335, name);
        return LevelError;
    }
    // The members come back from the persons' side. The administrators stay
    // when no person of this run names their role: a file that holds only
    // the role cannot lock everybody out.
    int level = LevelOk;
    if (name != DvnString(kSystemAdministrator) || RoleNamedByRun(name))
        level = DeleteStaffRows(db, "ROLE_INCL_PERSON", "ROLE_ID", key);
    if (level >= LevelError) return level;
    DvnPersonSet persons(&db);
    ForEachLinkTarget(*m_pCoreData, entity, "RoleHasPerson", "Person", [&](const DvnString& person) {
        if (persons.GetPersonID(SqlText(person), m_strTablePrefix, false).IsEmpty()) {
            Report(51170, person);
            level = std::max(level, static_cast<int>(LevelWarning));
        }
    });
    return level;
}

// ------------------------------------------------------------ memberships

int DvnConvCoreDbBe::SavePersonHasRole(CDatabase& db, DvnPersonSet&, const CString& personId, DvnfEntity& entity) {
    int level = LevelOk;
    // A person without a role link keeps the memberships it has.
    if (!GetLinkName("PersonHasRole", entity, "Role").IsEmpty()) level = DeletePersInRole(db, personId);
    const DvnString userId = DvnUser::FoldUserId(entity.Name());
    DvnRoleSet roles(&db);
    ForEachLinkTarget(*m_pCoreData, entity, "PersonHasRole", "Role", [&](const DvnString& role) {
        const CString roleId = roles.GetRoleID(SqlText(role), m_strTablePrefix, false);
        if (roleId.IsEmpty()) {
            Report(51169, role, userId);
            level = std::max(level, static_cast<int>(LevelWarning));
        } else if (role == DvnString(kSystemAdministrator) && HasRoleSystemAdmin(db, roleId)) {
            // One administrator: the person's own membership went above.
            Report(51182, role, userId);
            level = std::max(level, static_cast<int>(LevelWarning));
        } else {
            level = std::max(level, SaveRoleInclPerson(db, roleId, personId));
        }
    });
    return level;
}

bool DvnConvCoreDbBe::HasRoleSystemAdmin(CDatabase& db, const CString& roleId) {
    try {
        return AnyRow<DvnRelRoleSet>(db, m_strTablePrefix, "ROLE_INCL_PERSON", "ROLE_ID = " + SqlText(roleId));
    } catch (CDBException* e) {
        ReportDbException(e, "opening", "ROLE_INCL_PERSON");
        return false;
    }
}

// ------------------------------------------------------------ relation rows

namespace {

// A two-column relation row: the table, its columns, the members.
template <class Set>
struct Pair {
    const char* table;
    const char* firstColumn;
    CString Set::*first;
    const char* secondColumn;
    CString Set::*second;
    const char* notAdded;  // the trace when the row is not added
};

}  // namespace

template <class Set>
static int SavePair(DvnConvCoreDbBe& be, CDatabase& db, const CString& prefix, const Pair<Set>& pair,
                    const CString& first, const CString& second,
                    int (DvnConvCoreDbBe::*onException)(CDBException*, const char*, const char*, CRecordset*)) {
    Set row(&db);
    row.m_strFilter = CString(pair.firstColumn) + " = " + SqlText(first) + " AND " + pair.secondColumn + " = " +
                      SqlText(second);
    try {
        row.Open(CRecordset::snapshot, prefix + pair.table, CRecordset::none);
        if (!row.IsEOF()) {
            DVN_TRACE(3, 2, pair.notAdded << ", already exists");
        } else if (!row.CanAppend()) {
            row.Close();
            DVN_TRACE(1, 2, pair.notAdded);
            return DvnConvCoreDbBe::LevelError;
        } else {
            row.AddNew();
            row.*pair.first = first;
            row.*pair.second = second;
            row.Update();
        }
    } catch (CDBException* e) {
        DVN_TRACE(1, 2, pair.notAdded);
        return (be.*onException)(e, "updating", pair.table, &row);
    }
    row.Close();
    return DvnConvCoreDbBe::LevelOk;
}

int DvnConvCoreDbBe::SaveRoleInclPerson(CDatabase& db, const CString& roleId, const CString& personId) {
    static const Pair<DvnRelRoleSet> pair{"ROLE_INCL_PERSON", "ROLE_ID", &DvnRelRoleSet::m_ROLE_ID,
                                          "PERSON_ID", &DvnRelRoleSet::m_PERSON_ID, "Role_includes_Person not added"};
    return SavePair(*this, db, m_strTablePrefix, pair, roleId, personId, &DvnConvCoreDbBe::ReportDbException);
}

int DvnConvCoreDbBe::SavePersPersAuth(CDatabase& db, const CString& otherPersonId, const CString& personId) {
    static const Pair<DvnPersAut4PersSet> pair{"PERS_AUTH_FOR_PERS", "PERSON_ID", &DvnPersAut4PersSet::m_PERSON_ID,
                                               "AUTH_FOR_PERSON", &DvnPersAut4PersSet::m_AUTH_FOR_PERSON,
                                               "Person_authorized_for_person not added"};
    return SavePair(*this, db, m_strTablePrefix, pair, personId, otherPersonId, &DvnConvCoreDbBe::ReportDbException);
}

int DvnConvCoreDbBe::SavePersPrcAuth(CDatabase& db, const CString& categoryId, const CString& personId) {
    static const Pair<DvnPersHasPrcAuthSet> pair{"PERS_HAS_PRC_AUTH", "PERSON_ID", &DvnPersHasPrcAuthSet::m_PERSON_ID,
                                                 "CATID", &DvnPersHasPrcAuthSet::m_CATID,
                                                 "Person_authorized_for_process not added"};
    return SavePair(*this, db, m_strTablePrefix, pair, personId, categoryId, &DvnConvCoreDbBe::ReportDbException);
}

int DvnConvCoreDbBe::SavePersPadmAuth(CDatabase& db, const CString& categoryId, const CString& personId) {
    static const Pair<DvnPersSelPadmAuthSet> pair{"PERS_SEL_PADM_AUTH", "PERSON_ID",
                                                  &DvnPersSelPadmAuthSet::m_PERSON_ID, "CATID",
                                                  &DvnPersSelPadmAuthSet::m_CATID,
                                                  "Person_authorized_for_process_admin not added"};
    return SavePair(*this, db, m_strTablePrefix, pair, personId, categoryId, &DvnConvCoreDbBe::ReportDbException);
}

int DvnConvCoreDbBe::DeleteStaffRows(CDatabase& db, const char* table, const char* column, const CString& value) {
    return DeleteObject(db, CString("DELETE FROM ") + Table(table) + " WHERE " + column + " = " + SqlText(value),
                        table);
}

int DvnConvCoreDbBe::DeletePersPersAuth(CDatabase& db, const CString& personId) {
    return DeleteStaffRows(db, "PERS_AUTH_FOR_PERS", "PERSON_ID", personId);
}

int DvnConvCoreDbBe::DeletePersPrcAuth(CDatabase& db, const CString& personId) {
    return DeleteStaffRows(db, "PERS_HAS_PRC_AUTH", "PERSON_ID", personId);
}

int DvnConvCoreDbBe::DeletePersPadmAuth(CDatabase& db, const CString& personId) {
    return DeleteStaffRows(db, "PERS_SEL_PADM_AUTH", "PERSON_ID", personId);
}

int DvnConvCoreDbBe::DeletePersInRole(CDatabase& db, const CString& personId) {
    return DeleteStaffRows(db, "ROLE_INCL_PERSON", "PERSON_ID", personId);
}
