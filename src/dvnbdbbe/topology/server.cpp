// Store of servers. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveServers(CDatabase& db, bool authorized, const DvnString& system) {
    return SaveLoop(db, "Server", authorized, TopologyRight, "Server",
                    [&](DvnfEntity& entity) { return SaveServer(db, entity, system); });
}

int DvnConvCoreDbBe::SaveServer(CDatabase&, DvnfEntity& entity, const DvnString&) {
    return NotStoredYet(entity, "Server");
}
