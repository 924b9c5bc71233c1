// Load of persons: the row with its system, group, level and rights, and
// what it names: substitute, organization, roles, authorizations.
#include "dvnprocsets.h"
#include "dvntoposets.h"
#include "staffload.h"

const DvnConvCoreDbFe::Kind<DvnPersonSet> DvnConvCoreDbFe::PersonKind = {
    .typeName = "Person",
    .table = "PERSON",
    .keyColumn = "PERSON_ID",
    .plural = "Persons",
    .progress = 51500,
    .notFound = 51536,
    .lookFirst = false,
    .key = [](const DvnPersonSet& row) { return row.m_PERSON_ID; },
    .name = [](const DvnPersonSet& row) { return row.m_USERID; },
    .fill = &DvnConvCoreDbFe::Person,
};

void DvnConvCoreDbFe::Persons(DvnString const& id) {
    // A person made before a failure stays in the core data.
    try {
        LoadKind(PersonKind, id);
    } catch (CDBException* e) {
        TraceDbException("Exception in Persons: rc =", e);
    }
}

namespace {

// Number columns that are 0 when NULL.
int Value(const CRecordset& row, const int& member) { return row.IsFieldNull(&member) ? 0 : member; }

}  // namespace

int DvnConvCoreDbFe::Person(DvnPersonSet& row, DvnfEntity& person) {
    if (!TakeState(person, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = person.AttributeData();
    const CString key = row.m_PERSON_ID;
    CopyText(row, row.m_PERSONID, attributes("PersonId"));
    // The stored form as it is: it re-imports as the same password.
    CopyText(row, row.m_PASSWORD, attributes("Password"));
    LinkToRow<DvnSystemGroupSet>(person, "PersonIsInSystemGroup", "SystemGroup", "SYSTEM_GROUP", "SYSTEM_GROUP_ID",
                                 row, row.m_SYSTEM_GROUP);
    LinkToRow<DvnSystemSet>(person, "PersonIsInSystem", "System", "SYSTEM", "SYSTEM_ID", row, row.m_SYSTEM);
    CopyText(row, row.m_FIRSTNAME, attributes("FirstName"));
    CopyText(row, row.m_MIDDLENAME, attributes("MiddleName"));
    CopyText(row, row.m_LASTNAME, attributes("LastName"));
    CopyText(row, row.m_PHONENUMBER, attributes("Phone"));
    CopyText(row, row.m_SECONDPHONE, attributes("SecondPhone"));
    if (!row.IsFieldNull(&row.m_LEVEL_ID) && row.m_LEVEL_ID != 0) attributes("Level") = static_cast<long>(row.m_LEVEL_ID);
    LinkToRow<DvnPersonSet>(person, "HasSubstitute", "Person", "PERSON", "PERSON_ID", row, row.m_SUBSTITUTE);
    LinkEach<DvnRoleSet>(person, "PersonHasRole", "Role", "ROLE", "ROLE_ID", &DvnRoleSet::m_NAME,
                         ColumnOf(SelectFrom("ROLE_INCL_PERSON", "PERSON_ID", key), &DvnRelRoleSet::m_ROLE_ID));
    LinkToRow<DvnOrganizationSet>(person, "PersonIsInOrganization", "Organization", "ORGANIZATION",
                                  "ORGANIZATION_ID", row, row.m_ORGANIZATION_ID);

    // Rights: set when granted, absent otherwise.
    const struct {
        const int DvnPersonSet::*member;
        const char* attribute;
    } rights[] = {
        {&DvnPersonSet::m_STAFF_AUTH, "AuthorizedForStaff"},
        {&DvnPersonSet::m_TOPOLOGY_AUTH, "AuthorizedForTopology"},
        {&DvnPersonSet::m_PROC_DEF_AUTH, "AuthorizedForProcessModeling"},
        {&DvnPersonSet::m_SAUTH_DEF_AUTH, "AuthorizedForAuthorization"},
        {&DvnPersonSet::m_OPERATION_AUTH, "AuthorizedForOperation"},
    };
    for (const auto& right : rights)
        if (Value(row, row.*right.member) != 0) attributes(right.attribute) = true;

    // Categories: one by one only when neither global right is given.
    const int global = Value(row, row.m_GLOBAL_PRC_AUTH), globalAdmin = Value(row, row.m_GLOBAL_PADM_AUTH);
    if (global == 0 && globalAdmin == 0) {
        // Both tables have the same two columns.
        for (const auto& [table, link] : {std::pair{"PERS_SEL_PADM_AUTH", "PersonIsAuthorizedAsAdminFor"},
                                          std::pair{"PERS_HAS_PRC_AUTH", "PersonIsAuthorizedFor"}})
            LinkEach<DvnCategorySet>(person, link, "Category", "CATEGORY", "CATID", &DvnCategorySet::m_NAME,
                                     ColumnOf(SelectFrom(table, "PERSON_ID", key), &DvnPersHasPrcAuthSet::m_CATID));
    } else {
        if (global != 0) attributes("AuthorizedForAllCategories") = 2L;
        if (globalAdmin != 0) attributes("AuthorizedForAllCategories") = 1L;
    }

    // Work lists: all, or the persons named one by one.
    if (!row.IsFieldNull(&row.m_GLOBAL_PERS_AUTH)) {
        attributes("AuthorizedForWorklistsOfAll") = row.m_GLOBAL_PERS_AUTH != 0;
        if (row.m_GLOBAL_PERS_AUTH == 0) {
            // By user id, as the links are ordered (staffload.h).
            std::vector<CString> users;
            for (const CString& otherId : ColumnOf(SelectFrom("PERS_AUTH_FOR_PERS", "PERSON_ID", key),
                                                   &DvnPersAut4PersSet::m_AUTH_FOR_PERSON)) {
                const std::vector<CString> user = ColumnOf(SelectFrom("PERSON", "PERSON_ID", otherId),
                                                           &DvnPersonSet::m_USERID);
                users.insert(users.end(), user.begin(), user.end());
            }
            std::sort(users.begin(), users.end());
            for (const CString& user : users) attributes("AuthorizedForWorklists").NewSetElement() = user.c_str();
        }
    }

    CopyFlag(row, row.m_ABSENT_FLAG, attributes("IsAbsent"));
    CopyFlag(row, row.m_RESET_ABSENT_IND, attributes("ResetAbsent"));
    CopyText(row, row.m_DESCRIPTION, attributes("Description"));
    return LevelOk;
}
