// Store of domains. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveDomains(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Domain", authorized, TopologyRight, "DOMAIN",
                    [&](DvnfEntity& entity) { return SaveDomain(db, entity); });
}

int DvnConvCoreDbBe::SaveDomain(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Domain"); }
