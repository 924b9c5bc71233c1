// Store of tool sets. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveToolSets(CDatabase& db, bool authorized) {
    return SaveLoop(db, "ToolSet", authorized, ModelingRight, "Tool Set",
                    [&](DvnfEntity& entity) { return SaveToolSet(db, entity); });
}

int DvnConvCoreDbBe::SaveToolSet(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Tool Set"); }
