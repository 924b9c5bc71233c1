// Load of organizations: the row, the manager, the parent and the members.
#include "staffload.h"

const DvnConvCoreDbFe::Kind<DvnOrganizationSet> DvnConvCoreDbFe::OrganizationKind = {
    .typeName = "Organization",
    .table = "ORGANIZATION",
    .keyColumn = "ORGANIZATION_ID",
    .plural = "Organizations",
    .progress = 51502,
    .notFound = 51538,
    .lookFirst = false,
    .key = [](const DvnOrganizationSet& row) { return row.m_ORGANIZATION_ID; },
    .name = [](const DvnOrganizationSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Organization,
};

void DvnConvCoreDbFe::Orgs(DvnString const& id) { LoadKind(OrganizationKind, id); }

int DvnConvCoreDbFe::Organization(DvnOrganizationSet& row, DvnfEntity& organization) {
    if (!TakeState(organization, row.m_CHECKED_OUT)) return LevelOk;
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, organization.AttributeData());
    LinkToRow<DvnPersonSet>(organization, "OrganizationHasManager", "Person", "PERSON", "PERSON_ID", row,
                            row.m_MANAGER_ID);
    LinkToRow<DvnOrganizationSet>(organization, "OrganizationHasParent", "Organization", "ORGANIZATION",
                                  "ORGANIZATION_ID", row, row.m_PARENT_ORG_ID);
    const CString key = row.m_ORGANIZATION_ID;
    LinkEachRow<DvnPersonSet>(organization, "OrganizationHasPerson", "Person",
                              SelectFrom("PERSON", "ORGANIZATION_ID", key), &DvnPersonSet::m_PERSON_ID,
                              &DvnPersonSet::m_USERID);
    return LevelOk;
}
