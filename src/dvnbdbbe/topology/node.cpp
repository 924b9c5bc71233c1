// Store of nodes. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveNodes(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Node", authorized, TopologyRight, "Node",
                    [&](DvnfEntity& entity) { return SaveNode(db, entity); });
}

int DvnConvCoreDbBe::SaveNode(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Node"); }
