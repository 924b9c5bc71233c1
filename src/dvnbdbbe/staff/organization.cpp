// Store of organizations: a tree with a manager at each node. The row in a
// first pass (without a parent that is not stored yet), the parent and the
// check of the members in a second. docs/staff.md tells the rules.
#include <iostream>

#include "dvnprocsets.h"
#include "dvnstaffsets.h"
#include "staffstore.h"

using dvnstaff::AnyRow;
using dvnstaff::ForEachLinkTarget;
using dvnstaff::SqlText;

const DvnConvCoreDbBe::Family<DvnOrganizationSet> DvnConvCoreDbBe::OrganizationFamily = {
    .typeName = "Organization",
    .kind = "Organization",
    .right = &StaffRight,
    .table = "ORGANIZATION",
    .keyColumn = "ORGANIZATION_ID",
    .key = &DvnOrganizationSet::m_ORGANIZATION_ID,
    .progress = "Organization ",
    .invalidTrace = "Organization is not defined",
    .deleteKeyword = "DELETE ORGANIZATION ",
    .messages = {.added = 51004, .updated = 51040, .kept = 51072, .held = 51139, .deleted = 51212,
                 .cannotAppend = 51304, .cannotUpdate = 51336},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnOrganizationSet& row, bool isNew) {
        return be.ReadOrganizationAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.OrganizationInUse(db, entity, key);
    },
    .secondPass = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) { return be.SaveOrg2(db, entity); },
    // Without its manager an organization is not written, new or old.
    .readErrorStops = true,
};

int DvnConvCoreDbBe::SaveOrgs(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, OrganizationFamily);
}

int DvnConvCoreDbBe::SaveOrganization(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, OrganizationFamily);
}

int DvnConvCoreDbBe::ReadOrganizationAttributes(CDatabase& db, DvnfEntity& entity, DvnOrganizationSet& row,
                                                bool isNew) {
    row.m_NAME = entity.Name().c_str();
    if (isNew) row.m_ORGANIZATION_ID = DvnfObject::CreateOID().c_str();
    const CString manager = GetLinkName("OrganizationHasManager", entity, "Person");
    if (manager.IsEmpty()) {
        DVN_TRACE(1, 2, "Manager not set in TRX");
        return LevelError;
    }
    DvnPersonSet persons(&db);
    const CString managerId = persons.GetPersonID(SqlText(manager), m_strTablePrefix, false);
    if (managerId.IsEmpty()) {
        Report(51129, DvnString(manager.c_str()), entity.Name());
        DVN_TRACE(1, 2, "Manager " << manager << " not found in database");
        return LevelError;
    }
    row.m_MANAGER_ID = managerId;
    // The parent when it is stored already; the second pass comes back to it.
    const CString parent = GetLinkName("OrganizationHasParent", entity, "Organization");
    DvnOrganizationSet organizations(&db);
    const CString parentId =
        parent.IsEmpty() ? CString() : organizations.GetOrganizationID(SqlText(parent), m_strTablePrefix, false);
    if (parentId.IsEmpty())
        row.SetFieldNull(&row.m_PARENT_ORG_ID);
    else
        row.m_PARENT_ORG_ID = parentId;
    if (isNew) {
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    dvnstaff::SetDescription(row, entity);
    return LevelOk;
}

int DvnConvCoreDbBe::OrganizationInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const DvnString name = entity.Name();
    // Children first, bottom up: each must be marked to delete in this run,
    // and a child that stays stops its parent.
    std::vector<std::pair<DvnString, int>> children;
    {
        DvnOrganizationSet rs(&db);
        rs.Open(CRecordset::snapshot,
                CString("SELECT * FROM ") + m_strTablePrefix + "ORGANIZATION WHERE PARENT_ORG_ID =" + SqlText(key),
                CRecordset::readOnly);
        for (; !rs.IsEOF(); rs.MoveNext()) children.emplace_back(DvnString(rs.m_NAME.c_str()), rs.m_CHECKED_OUT);
        rs.Close();
    }
    int level = LevelOk;
    for (const auto& [childName, mark] : children) {
        if (mark == MarkTombstone && m_nSourceMark != MarkClean) continue;
        DvnfEntity& child = m_pCoreData->GetEntityByName(DvnfString("Organization"), DvnfString(childName.c_str()));
        if (!child.IsValid() || child.State() != StateDeleted) {
            Report(51241, name);
            return LevelWarning;
        }
        const int childLevel = SaveOrganization(db, child);
        child.State(StateNone);
        if (childLevel >= LevelWarning) {
            Report(51241, name);
            return std::max(childLevel, static_cast<int>(LevelWarning));
        }
        level = std::max(level, childLevel);
    }
    if (AnyRow<DvnActivityExtentSet>(db, m_strTablePrefix, "ACTIVITY_EXTENT", "ORGANIZATION = " + SqlText(key))) {
        Report(51272, name);
        return LevelWarning;
    }
    if (AnyRow<DvnProcessSet>(db, m_strTablePrefix, "PROCESS", "ORGANIZATION = " + SqlText(key))) {
        Report(51271, name);
        return LevelWarning;
    }
    if (m_nSourceMark == MarkClean) FreeMembers(db, key);
    return level;
}

void DvnConvCoreDbBe::FreeMembers(CDatabase& db, const CString& key) {
    try {
        db.ExecuteSQL(CString("UPDATE ") + m_strTablePrefix +
                      "PERSON SET ORGANIZATION_ID = NULL WHERE ORGANIZATION_ID = " + SqlText(key));
    } catch (CDBException* e) {
        // The organization goes on all the same.
        Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, "ODBC Exception in renaming process: rc =" << e->m_nRetCode << "Error: " << e->m_strError);
        e->Delete();
    }
}

int DvnConvCoreDbBe::SaveOrg2(CDatabase& db, DvnfEntity& entity) {
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, "Organization is not defined");
        return LevelError;
    }
    const DvnString name = entity.Name();
    std::cout << "Organization " << name << " second pass ...\n" << std::endl;
    DVN_TRACE(3, 1, "Organization " << name << " second pass ...\n");
    DvnOrganizationSet row(&db);
    row.m_strFilter = CString("NAME = ") + SqlText(name);
    int level = LevelOk;
    CString key;
    try {
        row.Open(CRecordset::snapshot, Table("ORGANIZATION"), CRecordset::none);
        if (row.IsEOF()) {
            row.Close();
            return LevelOk;
        }
        row.MoveFirst();
        int mark = row.m_CHECKED_OUT;
        if (!SecondPassMayWrite(mark)) {
            row.Close();
            return LevelOk;
        }
        if (!row.IsFieldNull(&row.m_CHECKED_OUT_BY)) {
            Report(51139, name, DvnString(row.m_CHECKED_OUT_BY.c_str()));
            row.Close();
            return LevelWarning;
        }
        key = row.m_ORGANIZATION_ID;
        row.Edit();
        row.m_CHECKED_OUT = mark;
        const CString parent = GetLinkName("OrganizationHasParent", entity, "Organization");
        if (!parent.IsEmpty()) {
            DvnOrganizationSet organizations(&db);
            const CString parentId = organizations.GetOrganizationID(SqlText(parent), m_strTablePrefix, false);
            if (parentId.IsEmpty()) {
                Report(51116, DvnString(parent.c_str()));
                row.SetFieldNull(&row.m_PARENT_ORG_ID);
                level = LevelWarning;
            } else {
                row.m_PARENT_ORG_ID = parentId;
            }
        }
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", "ORGANIZATION", &row);
        Report(51336, name);
        return LevelError;
    }
    row.Close();
    // The members come back through their own link in the persons' second
    // pass; the organization's own list of members is only checked.
    FreeMembers(db, key);
    DvnPersonSet persons(&db);
    ForEachLinkTarget(*m_pCoreData, entity, "OrganizationHasPerson", "Person", [&](const DvnString& person) {
        if (persons.GetPersonID(SqlText(person), m_strTablePrefix, false).IsEmpty()) {
            Report(51183, person, name);
            level = LevelWarning;
        }
    });
    return level;
}
