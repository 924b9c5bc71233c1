// Store of the domain: one row in DV_DOMAIN, and its settings at the top of
// the layers, where every setting the file leaves out gets its default. A
// repository holds one domain: a file that names another is refused, and
// the domain is never deleted.
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"

const DvnConvCoreDbBe::Family<DvnDomainSet> DvnConvCoreDbBe::DomainFamily = {
    .typeName = "Domain",
    .kind = "DOMAIN",
    .right = &TopologyRight,
    .table = "DV_DOMAIN",
    .keyColumn = "DOMAIN_ID",
    .key = &DvnDomainSet::m_DOMAIN_ID,
    .progress = "Domain ",
    .invalidTrace = "Domain is not defined",
    .deleteKeyword = "DELETE DOMAIN ",
    .messages = {.added = 51023, .updated = 51055, .kept = 51087, .held = 0, .deleted = 0, .cannotAppend = 51319,
                 .cannotUpdate = 51351},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnDomainSet& row, bool isNew) {
        return be.ReadDomainAttributes(db, entity, row, isNew);
    },
    .refuseDelete = 51269,
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key, bool) {
        return be.SaveTopologySettings(db, entity, key, TopologyLevel::Domain);
    },
    .beforeRow = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity&, const DvnString& name, bool toDelete) {
        DvnDomainSet row(&db);
        return be.AnotherOfItsKind(row, row.m_NAME, "DV_DOMAIN", name, toDelete, 51127);
    },
    .failedTrace = "Domain not successfully written to database",
};

// The table holds one row of the kind: a row of another name refuses the
// object (message with the name, 4) unless it is to be deleted.
int DvnConvCoreDbBe::AnotherOfItsKind(CRecordset& row, const CString& rowName, const char* table,
                                      const DvnString& name, bool toDelete, long message) {
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
        if (!row.IsEOF()) {
            row.MoveFirst();
            if (rowName != name.c_str() && !toDelete) {
                row.Close();
                Report(message, name);
                return LevelWarning;
            }
        }
        row.Close();
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", table, &row);
    }
    return LevelOk;
}

int DvnConvCoreDbBe::SaveDomains(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, DomainFamily); }

int DvnConvCoreDbBe::SaveDomain(CDatabase& db, DvnfEntity& entity) { return SaveSingleRow(db, entity, DomainFamily); }

int DvnConvCoreDbBe::ReadDomainAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainSet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    StampRow(row, &DvnDomainSet::m_DOMAIN_ID, isNew);
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const DvnfAttributeDataReader verification = attributes("ExternalVerification");
    row.m_EXT_VERIFICATION = verification.IsDefined() && verification.AsBool(false) ? 1 : 0;
    // The message size: unlimited, a maximum, or the default maximum.
    const DvnfAttributeDataReader unlimited = attributes("UnlimitedMessageSize");
    if (unlimited.IsDefined() && unlimited.AsBool(false)) {
        row.m_UNLIMITED_MSG_SIZE = 1;
        row.SetFieldNull(&row.m_MAX_MSG_SIZE);
    } else if (unlimited.IsDefined()) {
        row.m_UNLIMITED_MSG_SIZE = 0;
        row.m_MAX_MSG_SIZE = attributes("MaximumMessageSize").AsLong(0);
    } else {
        row.m_UNLIMITED_MSG_SIZE = 0;
        row.m_MAX_MSG_SIZE = 1000000;
    }
    return ReadTopologyCommonAttributes(db, entity, row, true);
}
