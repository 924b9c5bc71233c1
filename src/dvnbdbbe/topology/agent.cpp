// Store of program execution agents. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SavePEAs(CDatabase& db, bool authorized) {
    return SaveLoop(db, "PEAgent", authorized, TopologyRight, "PEA",
                    [&](DvnfEntity& entity) { return SavePEA(db, entity); });
}

int DvnConvCoreDbBe::SavePEA(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "PEA"); }
