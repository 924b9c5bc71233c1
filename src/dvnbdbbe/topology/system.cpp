// Store of systems. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveSystems(CDatabase& db, bool authorized) {
    return SaveLoop(db, "System", authorized, TopologyRight, "System",
                    [&](DvnfEntity& entity) { return SaveSystem(db, entity); });
}

int DvnConvCoreDbBe::SaveSystem(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "System"); }
