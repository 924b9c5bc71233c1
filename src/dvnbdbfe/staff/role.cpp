// Load of roles: the row, the coordinator and the members.
#include "staffload.h"

const DvnConvCoreDbFe::Kind<DvnRoleSet> DvnConvCoreDbFe::RoleKind = {
    .typeName = "Role",
    .table = "ROLE",
    .keyColumn = "ROLE_ID",
    .plural = "Roles",
    .progress = 51501,
    .notFound = 51537,
    .lookFirst = false,
    .key = [](const DvnRoleSet& row) { return row.m_ROLE_ID; },
    .name = [](const DvnRoleSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Role,
};

void DvnConvCoreDbFe::Roles(DvnString const& id) { LoadKind(RoleKind, id); }

int DvnConvCoreDbFe::Role(DvnRoleSet& row, DvnfEntity& role) {
    if (!TakeState(role, row.m_CHECKED_OUT)) return LevelOk;
    LinkToRow<DvnPersonSet>(role, "RoleHasCoordinator", "Person", "PERSON", "PERSON_ID", row, row.m_COORDINATOR_ID);
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, role.AttributeData());
    // A member who is no longer a person is left out in silence.
    const CString key = row.m_ROLE_ID;
    LinkEach<DvnPersonSet>(role, "RoleHasPerson", "Person", "PERSON", "PERSON_ID", &DvnPersonSet::m_USERID,
                           ColumnOf(SelectFrom("ROLE_INCL_PERSON", "ROLE_ID", key), &DvnRelRoleSet::m_PERSON_ID));
    return LevelOk;
}
