// Store of roles. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveRoles(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Role", authorized, StaffRight, "Role",
                    [&](DvnfEntity& entity) { return SaveRole(db, entity); });
}

int DvnConvCoreDbBe::SaveRole(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Role"); }
