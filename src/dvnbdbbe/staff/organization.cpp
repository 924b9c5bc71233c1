// Store of organizations. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveOrgs(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Organization", authorized, StaffRight, "Organization",
                    [&](DvnfEntity& entity) { return SaveOrganization(db, entity); });
}

int DvnConvCoreDbBe::SaveOrganization(CDatabase&, DvnfEntity& entity) {
    return NotStoredYet(entity, "Organization");
}
