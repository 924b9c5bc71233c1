// Store of levels. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveLevels(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Level", authorized, StaffRight, "Level",
                    [&](DvnfEntity& entity) { return SaveLevel(db, entity); });
}

int DvnConvCoreDbBe::SaveLevel(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Level"); }
