// Load of domains: the row of DV_DOMAIN and its settings, which hold a value
// in nearly every column since the store writes the defaults there.
#include "dvnbdbfe.h"
#include "dvntoposets.h"

const DvnConvCoreDbFe::Kind<DvnDomainSet> DvnConvCoreDbFe::DomainKind = {
    .typeName = "Domain",
    .table = "DV_DOMAIN",
    .keyColumn = "DOMAIN_ID",
    .plural = "Domains",
    .progress = 51517,
    .notFound = 51553,
    .lookFirst = true,
    .key = [](const DvnDomainSet& row) { return row.m_DOMAIN_ID; },
    .name = [](const DvnDomainSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Domain,
};

void DvnConvCoreDbFe::DvDomains(DvnString const& id) { LoadKind(DomainKind, id); }

int DvnConvCoreDbFe::Domain(DvnDomainSet& row, DvnfEntity& domain) {
    if (!TakeState(domain, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = domain.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    CopyFlag(row, row.m_EXT_VERIFICATION, attributes("ExternalVerification"));
    if (!row.IsFieldNull(&row.m_UNLIMITED_MSG_SIZE) && row.m_UNLIMITED_MSG_SIZE != 0) {
        attributes("UnlimitedMessageSize") = true;
        attributes.Reset("MaximumMessageSize");
    } else if (!row.IsFieldNull(&row.m_UNLIMITED_MSG_SIZE) && !row.IsFieldNull(&row.m_MAX_MSG_SIZE)) {
        attributes("UnlimitedMessageSize") = false;
        attributes("MaximumMessageSize") = row.m_MAX_MSG_SIZE;
    }
    LevelSettings<DvnDomainPrcSet, DvnDomainPrgSet, DvnDomainSvsSet, DvnDomainSvrSet>(domain, row, "DV_DOMAIN_",
                                                                                      "DOMAIN_ID", row.m_DOMAIN_ID);
    return LevelOk;
}
