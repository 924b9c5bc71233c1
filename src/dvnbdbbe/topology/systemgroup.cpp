// Store of system groups. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveSystemGroups(CDatabase& db, bool authorized) {
    return SaveLoop(db, "SystemGroup", authorized, TopologyRight, "System Group",
                    [&](DvnfEntity& entity) { return SaveSystemGrp(db, entity); });
}

int DvnConvCoreDbBe::SaveSystemGrp(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "System Group"); }
