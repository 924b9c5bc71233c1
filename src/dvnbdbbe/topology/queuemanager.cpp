// Store of queue managers. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveQueueManagers(CDatabase& db, bool authorized) {
    return SaveLoop(db, "QueueManager", authorized, TopologyRight, "Queue Manager",
                    [&](DvnfEntity& entity) { return SaveQueueManager(db, entity); });
}

int DvnConvCoreDbBe::SaveQueueManager(CDatabase&, DvnfEntity& entity) {
    return NotStoredYet(entity, "Queue Manager");
}
