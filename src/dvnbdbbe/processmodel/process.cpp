// Store of processes. Until it is written, its save reports each process
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveProcesses(CDatabase& db, bool authorized, bool byIdentifier) {
    // A process save brackets its own steps: no transaction here.
    return SaveLoop(
        db, "Process", authorized, ModelingRight, "Process",
        [&](DvnfEntity& entity) { return SaveProcess(db, entity, byIdentifier); }, false);
}

int DvnConvCoreDbBe::SaveProcess(CDatabase&, DvnfEntity& entity, bool) { return NotStoredYet(entity, "Process"); }
