// Store of programs. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SavePrograms(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Program", authorized, ModelingRight, "Program",
                    [&](DvnfEntity& entity) { return SaveProgram(db, entity); });
}

int DvnConvCoreDbBe::SaveProgram(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Program"); }
