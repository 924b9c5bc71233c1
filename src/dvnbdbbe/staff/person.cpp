// Store of persons: the row in a first pass (system, group, level, password,
// texts, rights), then in a second pass what names other objects (substitute,
// organization, authorizations, roles). docs/staff.md tells the rules.
#include <algorithm>
#include <cctype>
#include <iostream>

#include "dvnprocsets.h"
#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "staffstore.h"
#include "storedforms.h"

using dvnstaff::AnyRow;
using dvnstaff::ForEachLinkTarget;
using dvnstaff::SqlText;

namespace {

// The password of a person whose definition gives none.
const char* const kDefaultPassword = "marmoset";

// Whether the text is already a stored password form, as
// DvnUser::PasswordEncodeAsString gives it ("pbkdf2-sha256$<rounds>$<64 hex
// digits>"): an exported person re-imports with the password it had.
bool IsStoredPasswordForm(const std::string& text) {
    static const std::string scheme = "pbkdf2-sha256$";
    if (text.compare(0, scheme.size(), scheme) != 0) return false;
    const size_t dollar = text.find('$', scheme.size());
    if (dollar == std::string::npos || dollar == scheme.size()) return false;
    for (size_t i = scheme.size(); i < dollar; ++i)
        if (!std::isdigit(static_cast<unsigned char>(text[i]))) return false;
    const std::string digest = text.substr(dollar + 1);
    return digest.size() == 64 && std::all_of(digest.begin(), digest.end(), [](char c) {
               return std::isdigit(static_cast<unsigned char>(c)) || (c >= 'a' && c <= 'f');
           });
}

// The row filter of a person: the name folded as USERID holds it.
CString PersonFilter(const DvnString& name) { return CString("USERID = ") + SqlText(DvnUser::FoldUserId(name)); }

// A flag column: 1 or 0 from a boolean attribute, false when not given.
int Flag(DvnfEntity& entity, const char* attribute) { return entity.AttributeData()(attribute).AsBool(false) ? 1 : 0; }

// The text columns written only when their attribute is defined.
struct TextColumn {
    const char* attribute;
    CString DvnPersonSet::*member;
};
const TextColumn kTextColumns[] = {
    {"LastName", &DvnPersonSet::m_LASTNAME},   {"FirstName", &DvnPersonSet::m_FIRSTNAME},
    {"MiddleName", &DvnPersonSet::m_MIDDLENAME}, {"PersonId", &DvnPersonSet::m_PERSONID},
    {"Phone", &DvnPersonSet::m_PHONENUMBER},   {"SecondPhone", &DvnPersonSet::m_SECONDPHONE},
};

// The rights written on every save, so that an overwritten person loses a
// right the new definition does not give.
struct FlagColumn {
    const char* attribute;
    int DvnPersonSet::*member;
};
const FlagColumn kFlagColumns[] = {
    {"AuthorizedForStaff", &DvnPersonSet::m_STAFF_AUTH},
    {"AuthorizedForAuthorization", &DvnPersonSet::m_SAUTH_DEF_AUTH},
    {"AuthorizedForOperation", &DvnPersonSet::m_OPERATION_AUTH},
    {"AuthorizedForTopology", &DvnPersonSet::m_TOPOLOGY_AUTH},
    {"AuthorizedForProcessModeling", &DvnPersonSet::m_PROC_DEF_AUTH},
    {"AuthorizedForWorklistsOfAll", &DvnPersonSet::m_GLOBAL_PERS_AUTH},
    {"IsAbsent", &DvnPersonSet::m_ABSENT_FLAG},
    {"ResetAbsent", &DvnPersonSet::m_RESET_ABSENT_IND},
};

// What still names a person and keeps it from being deleted, beside the
// system administrator role, a managed organization and an administered
// process: (table, column, what is named in the refusal).
struct PersonReference {
    const char* table;
    const char* column;
    const char* what;
    bool (*any)(CDatabase&, const CString& prefix, const char* table, const CString& filter);
};
const PersonReference kPersonReferences[] = {
    {"ACTIVITY_BY_PERSON", "PERSON_ID", "an activity assignment", &AnyRow<DvnActivityByPersonSet>},
    {"ROLE", "COORDINATOR_ID", "a role as coordinator", &AnyRow<DvnRoleSet>},
    {"PERSON", "SUBSTITUTE", "a person as substitute", &AnyRow<DvnPersonSet>},
    {"ACT_INSTANCE_LIST", "OWNER", "an activity instance list", &AnyRow<DvnListSet>},
    {"PRC_INSTANCE_LIST", "OWNER", "a process instance list", &AnyRow<DvnListSet>},
    {"PRC_TEMPLATE_LIST", "OWNER", "a process template list", &AnyRow<DvnListSet>},
    {"WORK_LIST", "OWNER", "a work list", &AnyRow<DvnWListSet>},
    {"PE_AGENT", "ASSOC_USER", "a program execution agent", &AnyRow<DvnPEASet>},
};

// The rows of a person that go with the person: (table, column).
const std::pair<const char*, const char*> kPersonRelations[] = {
    {"ROLE_INCL_PERSON", "PERSON_ID"},    {"PERS_AUTH_FOR_PERS", "PERSON_ID"},
    {"PERS_AUTH_FOR_PERS", "AUTH_FOR_PERSON"}, {"PERS_HAS_PRC_AUTH", "PERSON_ID"},
    {"PERS_SEL_PADM_AUTH", "PERSON_ID"},  {"PERS_HAS_ACT_INSTL", "PERSON"},
    {"PERS_HAS_PRC_INSTL", "PERSON"},     {"PERS_HAS_PRC_TMPLT", "PERSON"},
    {"PERS_HAS_WRK_LST", "PERSON"},
};

// The SYSTEM of each server of the table that has the name.
template <class Set>
std::vector<CString> ServerSystems(CDatabase& db, const CString& table, const CString& filter) {
    std::vector<CString> systems;
    Set rs(&db);
    rs.m_strFilter = filter;
    try {
        rs.Open(CRecordset::snapshot, table, CRecordset::readOnly);
        for (; !rs.IsEOF(); rs.MoveNext()) systems.push_back(rs.m_SYSTEM);
    } catch (CDBException*) {
        if (rs.IsOpen()) rs.Close();
        throw;
    }
    rs.Close();
    return systems;
}

}  // namespace

const DvnConvCoreDbBe::Family<DvnPersonSet> DvnConvCoreDbBe::PersonFamily = {
    .typeName = "Person",
    .kind = "Person",
    .right = &StaffRight,
    .table = "PERSON",
    .keyColumn = "PERSON_ID",
    .key = &DvnPersonSet::m_PERSON_ID,
    .progress = "Person ",
    .invalidTrace = "Person is not defined",
    .deleteKeyword = "DELETE PERSON ",
    .messages = {.added = 51001, .updated = 51038, .kept = 51070, .held = 51137, .deleted = 51210,
                 .cannotAppend = 51302, .cannotUpdate = 51334},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnPersonSet& row, bool isNew) {
        return be.ReadPersonAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.PersonInUse(db, entity, key);
    },
    .filter = &PersonFilter,
    .readErrorStops = true,
    .beforeInsert = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
        return be.PersonNameIsServer(db, entity);
    },
};

int DvnConvCoreDbBe::SavePeople(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, PersonFamily); }

int DvnConvCoreDbBe::SavePerson(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, PersonFamily);
}

// ------------------------------------------------------------ first pass

int DvnConvCoreDbBe::PersonNameIsServer(CDatabase& db, DvnfEntity& entity) {
    // The group the person gets: its link, or the default of a person
    // without one. A server there may not share the person's name.
    CString group = GetLinkName("PersonIsInSystemGroup", entity, "SystemGroup");
    if (group.IsEmpty()) group = CString(DefaultSysGrp().c_str());
    const CString filter = CString("NAME = ") + SqlText(DvnUser::FoldUserId(entity.Name()));
    struct Servers {
        const char* table;
        long message;
        std::vector<CString> (*systems)(CDatabase&, const CString&, const CString&);
    };
    const Servers kinds[] = {{"USER_PE_SERVER", 51187, &ServerSystems<DvnUPEServerSet>},
                             {"PE_SERVER", 51189, &ServerSystems<DvnPEServerSet>}};
    for (const Servers& servers : kinds) {
        std::vector<CString> systems;
        try {
            systems = servers.systems(db, Table(servers.table), filter);
        } catch (CDBException* e) {
            return ReportDbException(e, "opening", servers.table);
        }
        for (const CString& system : systems) {
            DvnSystemSet systemSet(&db);
            DvnSystemGroupSet groupSet(&db);
            const CString groupId = systemSet.GetSystemGroupID(system, m_strTablePrefix);
            if (groupId.IsEmpty()) continue;
            if (std::string(groupSet.GetName(groupId, m_strTablePrefix).c_str()) == group.c_str()) {
                Report(servers.message, entity.Name());
                return LevelWarning;
            }
        }
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ReadPersonAttributes(CDatabase& db, DvnfEntity& entity, DvnPersonSet& row, bool isNew) {
    const DvnString userId = DvnUser::FoldUserId(entity.Name());
    row.m_USERID = userId.c_str();
    if (isNew) row.m_PERSON_ID = DvnfObject::CreateOID().c_str();
    int level = LevelOk;

    // System: the link, else the configured default, else the lowest key.
    DvnSystemSet systems(&db);
    const CString systemName = GetLinkName("PersonIsInSystem", entity, "System");
    CString system;
    if (!systemName.IsEmpty()) {
        system = systems.GetSystemID(systemName, m_strTablePrefix, false);
        if (system.IsEmpty()) Report(51103, DvnString(systemName.c_str()));
    }
    if (system.IsEmpty()) {
        system = systems.GetSystemID(CString(DefaultSystem().c_str()), m_strTablePrefix, false);
        if (system.IsEmpty()) system = systems.GetDefaultSystemID(m_strTablePrefix);
        if (system.IsEmpty()) {
            Report(51106);
            return LevelError;
        }
    }
    row.m_SYSTEM = system;

    // Group: the same chain; the lowest key of all is a warning.
    DvnSystemGroupSet groups(&db);
    const CString groupName = GetLinkName("PersonIsInSystemGroup", entity, "SystemGroup");
    CString group;
    if (!groupName.IsEmpty()) {
        group = groups.GetSysGrpID(groupName, m_strTablePrefix);
        if (group.IsEmpty()) Report(51104, DvnString(groupName.c_str()));
    }
    if (group.IsEmpty()) {
        group = groups.GetSysGrpID(CString(DefaultSysGrp().c_str()), m_strTablePrefix);
        if (group.IsEmpty()) {
            group = groups.GetDefaultSysGrpID(m_strTablePrefix);
            if (group.IsEmpty()) {
                Report(51119);
                return LevelError;
            }
            level = LevelWarning;
        }
    }
    row.m_SYSTEM_GROUP = group;

    DvnfAttributeData attributes = entity.AttributeData();
    for (const TextColumn& column : kTextColumns) {
        auto value = attributes(column.attribute);
        if (value.IsDefined()) DvnStored::SetText(row, row.*column.member, value.AsString("").c_str());
    }

    // Level: the one named, else the lowest stored; a person always has one.
    DvnStaffLevelSet levels(&db);
    auto levelAttribute = attributes("Level");
    long levelId = levelAttribute.IsDefined() ? levels.GetLevelID(levelAttribute.AsLong(0), m_strTablePrefix) : -1;
    if (levelId == -1) levelId = levels.GetDefaultLevelID(m_strTablePrefix);
    if (levelId == -1) {
        Report(51305, entity.Name());
        return LevelError;
    }
    row.m_LEVEL_ID = levelId;

    if (isNew) {
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    dvnstaff::SetDescription(row, entity);

    // Password: never in clear. A stored form is kept as it comes; any
    // other text is encoded under the folded user id, and so is the default.
    auto password = attributes("Password");
    const std::string given = password.IsDefined() ? std::string(password.AsString("").c_str()) : std::string();
    if (password.IsDefined() && IsStoredPasswordForm(given))
        row.m_PASSWORD = given.c_str();
    else
        row.m_PASSWORD =
            DvnUser::PasswordEncodeAsString(userId, DvnString(password.IsDefined() ? given.c_str() : kDefaultPassword))
                .c_str();

    for (const FlagColumn& column : kFlagColumns) row.*column.member = Flag(entity, column.attribute);
    const long allCategories = attributes("AuthorizedForAllCategories").AsLong(0);
    row.m_GLOBAL_PADM_AUTH = allCategories == 1 ? 1 : 0;
    row.m_GLOBAL_PRC_AUTH = allCategories == 2 ? 1 : 0;
    return level;
}

int DvnConvCoreDbBe::PersonInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const DvnString name = entity.Name();
    const CString person = SqlText(key);
    DvnRoleSet roles(&db);
    const CString admin = roles.GetRoleID("'System administrator'", m_strTablePrefix, true);
    if (!admin.IsEmpty() && AnyRow<DvnRelRoleSet>(db, m_strTablePrefix, "ROLE_INCL_PERSON",
                                                  "ROLE_ID = " + SqlText(admin) + " AND PERSON_ID = " + person)) {
        Report(51238, name);
        return LevelWarning;
    }
    DvnString holder;
    if (FirstRowName<DvnOrganizationSet>(
            db, CString("SELECT * FROM ") + m_strTablePrefix + "ORGANIZATION WHERE MANAGER_ID =" + person, holder)) {
        Report(51239, name, holder);
        return LevelWarning;
    }
    if (FirstRowName<DvnProcessSet>(
            db, CString("SELECT * FROM ") + m_strTablePrefix + "PROCESS WHERE ADMINISTRATOR =" + person, holder)) {
        Report(51240, name, holder);
        return LevelWarning;
    }
    for (const PersonReference& reference : kPersonReferences) {
        if (reference.any(db, m_strTablePrefix, reference.table, CString(reference.column) + " = " + person)) {
            Report(51921, name, DvnString(reference.what));
            return LevelWarning;
        }
    }
    // Nothing names the person any more: on a physical deletion its
    // relation rows go first, in the same transaction as the row.
    if (m_nSourceMark != MarkClean) return LevelOk;
    int level = LevelOk;
    for (const auto& [table, column] : kPersonRelations)
        level = std::max(level, DeleteStaffRows(db, table, column, key));
    return level;
}

// ------------------------------------------------------------ second pass

int DvnConvCoreDbBe::SavePeople2(CDatabase& db, bool authorized) {
    // Without the right the first pass said so once; this pass is silent.
    if (!authorized) return LevelOk;
    int level = LevelOk;
    for (auto& [name, object] : m_pCoreData->GetEntities("Person")) {
        DvnfEntity& entity = object->Entity();
        if (!entity.IsValid() || m_processed.Processed(entity) || entity.Name().IsEmpty()) continue;
        db.BeginTrans();
        level = std::max(level, SavePerson2(db, entity));
        db.CommitTrans();
    }
    return level;
}

int DvnConvCoreDbBe::SavePerson2(CDatabase& db, DvnfEntity& entity) {
    const DvnString name = entity.Name();
    std::cout << "Person " << name << " relations ...\n" << std::endl;
    DVN_TRACE(3, 1, "Person " << name << " relations ...\n 2nd pass, state: " << static_cast<int>(entity.State()));
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, "Person is not defined");
        return LevelError;
    }
    const int state = entity.State();
    const bool toDelete = state == StateDeleted;
    DvnPersonSet row(&db);
    row.m_strFilter = PersonFilter(name);
    try {
        row.Open(CRecordset::snapshot, Table("PERSON"), CRecordset::none);
        if (row.IsEOF()) {
            row.Close();
            if (!toDelete) m_processed.Processed(entity, true);
            return LevelOk;
        }
        row.MoveFirst();
        const CString personId = row.m_PERSON_ID;
        if (state == StateNone) {
            // Only named by the file: it gains roles and organization, and
            // nothing else of its row changes.
            row.Close();
            int level = SavePersonHasRole(db, row, personId, entity);
            const CString organization = GetLinkName("PersonIsInOrganization", entity, "Organization");
            if (!organization.IsEmpty()) {
                DvnOrganizationSet organizations(&db);
                const CString organizationId =
                    organizations.GetOrganizationID(SqlText(organization), m_strTablePrefix, false);
                if (organizationId.IsEmpty()) {
                    Report(51110, DvnString(organization.c_str()));
                    level = std::max(level, static_cast<int>(LevelWarning));
                } else {
                    row.Open(CRecordset::snapshot, Table("PERSON"), CRecordset::none);
                    row.MoveFirst();
                    row.Edit();
                    row.m_ORGANIZATION_ID = organizationId;
                    row.Update();
                    row.Close();
                }
            }
            m_processed.Processed(entity, true);
            return level;
        }
        if ((row.m_CHECKED_OUT != MarkFirstPassDone && !m_bOverwrite) || toDelete) {
            row.Close();
            return LevelOk;
        }
        if (!row.IsFieldNull(&row.m_CHECKED_OUT_BY)) {
            Report(51137, name, DvnString(row.m_CHECKED_OUT_BY.c_str()));
            row.Close();
            return LevelWarning;
        }
        row.Edit();
        if (row.m_CHECKED_OUT == MarkFirstPassDone) row.m_CHECKED_OUT = m_nSourceMark;
    } catch (CDBException* e) {
        ReportDbException(e, "reading", "PERSON", &row);
        Report(51334, name);
        return LevelError;
    }
    const int level = ReadPersonAttr2(db, entity, row);
    if (row.IsOpen()) row.Close();
    m_processed.Processed(entity, true);
    Report(51198, name);
    return level;
}

int DvnConvCoreDbBe::ReadPersonAttr2(CDatabase& db, DvnfEntity& entity, DvnPersonSet& row) {
    int level = LevelOk;
    const CString personId = row.m_PERSON_ID;
    const DvnString userId(row.m_USERID.c_str());

    // Substitute and organization: null when not named or not stored.
    DvnPersonSet persons(&db);
    DvnOrganizationSet organizations(&db);
    struct Reference {
        const char* link;
        const char* type;
        CString DvnPersonSet::*member;
        long missing;
        std::function<CString(const CString&)> lookup;
    };
    const Reference references[] = {
        {"HasSubstitute", "Person", &DvnPersonSet::m_SUBSTITUTE, 51109,
         [&](const CString& quoted) { return persons.GetPersonID(quoted, m_strTablePrefix, false); }},
        {"PersonIsInOrganization", "Organization", &DvnPersonSet::m_ORGANIZATION_ID, 51110,
         [&](const CString& quoted) { return organizations.GetOrganizationID(quoted, m_strTablePrefix, false); }},
    };
    for (const Reference& reference : references) {
        const CString target = GetLinkName(reference.link, entity, reference.type);
        const CString key = target.IsEmpty() ? CString() : reference.lookup(SqlText(target));
        if (key.IsEmpty()) {
            if (!target.IsEmpty()) {
                Report(reference.missing, DvnString(target.c_str()));
                level = LevelWarning;
            }
            row.SetFieldNull(&(row.*reference.member));
        } else {
            row.*reference.member = key;
        }
    }
    try {
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", "PERSON", &row);
        Report(51334, entity.Name());
        return LevelError;
    }
    row.Close();

    // The relations are replaced whole: what the definition names comes back.
    try {
        level = std::max(level, WritePersonRelations(db, entity, personId, userId));
    } catch (CDBException* e) {
        return ReportDbException(e, "reading", "PERSON");
    }
    return std::max(level, SavePersonHasRole(db, row, personId, entity));
}

int DvnConvCoreDbBe::WritePersonRelations(CDatabase& db, DvnfEntity& entity, const CString& personId,
                                          const DvnString& userId) {
    int level = DeletePersPersAuth(db, personId);
    DvnPersonSet persons(&db);
    auto worklists = entity.AttributeData()("AuthorizedForWorklists");
    if (worklists.IsValid()) {
        DvnfDataSetIterator elements = worklists.ElementsOfSet();
        for (auto element = elements.First(); element.IsValid(); element = elements.Next()) {
            if (!element.IsDefined()) continue;
            const DvnString other(element.AsString("").c_str());
            const CString otherId = persons.GetPersonID(SqlText(other), m_strTablePrefix, false);
            if (otherId.IsEmpty()) {
                Report(51111, other);
                level = std::max(level, static_cast<int>(LevelWarning));
            } else {
                level = std::max(level, SavePersPersAuth(db, otherId, personId));
            }
        }
    }
    struct Categories {
        const char* link;
        int (DvnConvCoreDbBe::*clear)(CDatabase&, const CString&);
        int (DvnConvCoreDbBe::*write)(CDatabase&, const CString&, const CString&);
    };
    const Categories categoryLinks[] = {
        {"PersonIsAuthorizedFor", &DvnConvCoreDbBe::DeletePersPrcAuth, &DvnConvCoreDbBe::SavePersPrcAuth},
        {"PersonIsAuthorizedAsAdminFor", &DvnConvCoreDbBe::DeletePersPadmAuth, &DvnConvCoreDbBe::SavePersPadmAuth},
    };
    DvnCategorySet categories(&db);
    for (const Categories& link : categoryLinks) {
        level = std::max(level, (this->*link.clear)(db, personId));
        ForEachLinkTarget(*m_pCoreData, entity, link.link, "Category", [&](const DvnString& category) {
            const CString categoryId = categories.GetCatID(SqlText(category), m_strTablePrefix, false);
            if (categoryId.IsEmpty()) {
                Report(51171, category, userId);
                level = std::max(level, static_cast<int>(LevelWarning));
            } else {
                level = std::max(level, (this->*link.write)(db, categoryId, personId));
            }
        });
    }
    return level;
}
