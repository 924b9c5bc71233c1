// Store of the topology and of tool sets. Until the store of a kind is
// written, its save reports each entity with something to save as not
// storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveDomains(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Domain", authorized, TopologyRight, "DOMAIN",
                    [&](DvnfEntity& entity) { return SaveDomain(db, entity); });
}

int DvnConvCoreDbBe::SaveDomain(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Domain"); }

int DvnConvCoreDbBe::SaveSystemGroups(CDatabase& db, bool authorized) {
    return SaveLoop(db, "SystemGroup", authorized, TopologyRight, "System Group",
                    [&](DvnfEntity& entity) { return SaveSystemGrp(db, entity); });
}

int DvnConvCoreDbBe::SaveSystemGrp(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "System Group"); }

int DvnConvCoreDbBe::SaveNodes(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Node", authorized, TopologyRight, "Node",
                    [&](DvnfEntity& entity) { return SaveNode(db, entity); });
}

int DvnConvCoreDbBe::SaveNode(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Node"); }

int DvnConvCoreDbBe::SaveQueueManagers(CDatabase& db, bool authorized) {
    return SaveLoop(db, "QueueManager", authorized, TopologyRight, "Queue Manager",
                    [&](DvnfEntity& entity) { return SaveQueueManager(db, entity); });
}

int DvnConvCoreDbBe::SaveQueueManager(CDatabase&, DvnfEntity& entity) {
    return NotStoredYet(entity, "Queue Manager");
}

int DvnConvCoreDbBe::SaveSystems(CDatabase& db, bool authorized) {
    return SaveLoop(db, "System", authorized, TopologyRight, "System",
                    [&](DvnfEntity& entity) { return SaveSystem(db, entity); });
}

int DvnConvCoreDbBe::SaveSystem(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "System"); }

int DvnConvCoreDbBe::SaveServers(CDatabase& db, bool authorized, const DvnString& system) {
    return SaveLoop(db, "Server", authorized, TopologyRight, "Server",
                    [&](DvnfEntity& entity) { return SaveServer(db, entity, system); });
}

int DvnConvCoreDbBe::SaveServer(CDatabase&, DvnfEntity& entity, const DvnString&) {
    return NotStoredYet(entity, "Server");
}

int DvnConvCoreDbBe::SavePEAs(CDatabase& db, bool authorized) {
    return SaveLoop(db, "PEAgent", authorized, TopologyRight, "PEA",
                    [&](DvnfEntity& entity) { return SavePEA(db, entity); });
}

int DvnConvCoreDbBe::SavePEA(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "PEA"); }

int DvnConvCoreDbBe::SaveToolSets(CDatabase& db, bool authorized) {
    return SaveLoop(db, "ToolSet", authorized, ModelingRight, "Tool Set",
                    [&](DvnfEntity& entity) { return SaveToolSet(db, entity); });
}

int DvnConvCoreDbBe::SaveToolSet(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Tool Set"); }
