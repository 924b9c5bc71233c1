// Store of persons. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SavePeople(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Person", authorized, StaffRight, "Person",
                    [&](DvnfEntity& entity) { return SavePerson(db, entity); });
}

int DvnConvCoreDbBe::SavePerson(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Person"); }

// The second pass of the persons. Each person was already reported by the
// first pass, so nothing is left to do until persons are stored.
int DvnConvCoreDbBe::SavePeople2(CDatabase&, bool) { return LevelOk; }
