// Store of the system group: one row in SYSTEM_GROUP in two passes (the row,
// then its parent group), and its settings, which are null where the file
// leaves them out: the domain's count. A repository holds one group: a
// file that names another is refused, and the group is never deleted. Names
// are kept to their first 8 characters.
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {
constexpr size_t kNameChars = 8;
CString StoredName(const DvnString& name) { return CString(DvnStored::Cut(name.str(), kNameChars)); }
}  // namespace

const DvnConvCoreDbBe::Family<DvnSystemGroupSet> DvnConvCoreDbBe::SystemGroupFamily = {
    .typeName = "SystemGroup",
    .kind = "System Group",
    .right = &TopologyRight,
    .table = "SYSTEM_GROUP",
    .keyColumn = "SYSTEM_GROUP_ID",
    .key = &DvnSystemGroupSet::m_SYSTEM_GROUP_ID,
    .progress = "SystemGroup ",
    .invalidTrace = "SystemGroup is not defined",
    .deleteKeyword = "DELETE GROUP ",
    .messages = {.added = 51024, .updated = 51056, .kept = 51088, .held = 0, .deleted = 0, .cannotAppend = 51320,
                 .cannotUpdate = 51352},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnSystemGroupSet& row, bool isNew) {
        return be.ReadSystemGrpAttributes(db, entity, row, isNew);
    },
    .secondPass = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) { return be.SaveSystemGrp2(db, entity); },
    .refuseDelete = 51254,
    .readErrorStops = true,
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key, bool) {
        return be.SaveTopologySettings(db, entity, key, TopologyLevel::SystemGroup);
    },
    .nameChars = kNameChars,
    .nameTooLong = 51124,
    .beforeRow = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity&, const DvnString& name, bool toDelete) {
        DvnSystemGroupSet row(&db);
        return be.AnotherOfItsKind(row, row.m_NAME, "SYSTEM_GROUP", name, toDelete, 51128);
    },
    .failedTrace = "SystemGroup not successfully written to database",
    .secondPassFailedTrace = "SystemGroup parentSystemGroup not successfully udated",
};

int DvnConvCoreDbBe::SaveSystemGroups(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, SystemGroupFamily);
}

int DvnConvCoreDbBe::SaveSystemGroup(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, SystemGroupFamily);
}

int DvnConvCoreDbBe::ReadSystemGrpAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSet& row, bool isNew) {
    row.m_NAME = StoredName(entity.Name());
    if (isNew) {
        row.m_SYSTEM_GROUP_ID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    // The domain by its link, else the one called "domain", else the one
    // there is. Without a domain the group cannot be written.
    CString domain = GetLinkName("GroupIsInDomain", entity, "Domain");
    if (domain.IsEmpty()) domain = "domain";
    DvnDomainSet domains(&db);
    CString key = domains.GetDomainID(domain, m_strTablePrefix);
    if (key.IsEmpty()) key = domains.GetDomainID("domain", m_strTablePrefix);
    if (key.IsEmpty()) key = domains.GetDefaultDomainID(m_strTablePrefix);
    if (key.IsEmpty()) {
        DVN_TRACE(1, 2, "SystemGroup " << entity.Name() << ": no domain in the database");
        return LevelError;
    }
    row.m_DV_DOMAIN = key;
    row.m_PRIMARY_SG = 1;
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    auto text = [&](const char* attribute, CString& column) {
        const DvnfAttributeDataReader value = attributes(attribute);
        if (value.IsDefined())
            DvnStored::SetText(row, column, value.AsString("").str());
        else
            row.SetFieldNull(&column);
    };
    text("AuditQueueManagerName", row.m_AUDIT_QUEUE_MGR_NM);
    text("AuditQueueName", row.m_AUDIT_QUEUE_NAME);
    return ReadTopologyCommonAttributes(db, entity, row, false);
}

int DvnConvCoreDbBe::SaveSystemGrp2(CDatabase& db, DvnfEntity& entity) {
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, "SystemGroup is not defined");
        return LevelError;
    }
    const CString name = StoredName(entity.Name());
    if (name.GetLength() < static_cast<int>(entity.Name().Length())) DVN_TRACE(1, 2, "SystemGroup Name truncated");
    DvnSystemGroupSet row(&db);
    row.m_strFilter = "NAME = " + CString(ReturnQuotedString(DvnString(name.c_str()), "'", "'").c_str());
    int level = LevelOk;
    try {
        row.Open(CRecordset::snapshot, Table("SYSTEM_GROUP"), CRecordset::none);
        if (row.IsEOF()) {
            row.Close();
            return LevelOk;
        }
        std::cout << "SystemGroup " << name << " second pass ...\n" << std::endl;
        DVN_TRACE(3, 1, "SystemGroup " << name << " second pass ...\n");
        row.MoveFirst();
        int mark = row.m_CHECKED_OUT;
        if (!SecondPassMayWrite(mark)) {
            row.Close();
            return LevelOk;
        }
        row.Edit();
        row.m_CHECKED_OUT = mark;
        level = ReadSystemGrpAttr2(db, entity, row);
        row.Update();
    } catch (CDBException* e) {
        return ReportDbException(e, "updating", "SYSTEM_GROUP", &row);
    }
    row.Close();
    return level;
}

int DvnConvCoreDbBe::ReadSystemGrpAttr2(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSet& row) {
    const CString parent = GetLinkName("GroupHasParentGroup", entity, "SystemGroup");
    if (parent.IsEmpty()) return LevelOk;
    DvnSystemGroupSet groups(&db);
    const CString key = groups.GetSysGrpID(StoredName(DvnString(parent.c_str())), m_strTablePrefix);
    if (key.IsEmpty()) {
        Report(51119, entity.Name());
        return LevelWarning;
    }
    row.m_PARENT_SYSTEM_GRP = key;
    return LevelOk;
}
