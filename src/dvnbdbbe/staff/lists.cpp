// Store of the four kinds of list. Until it is written, its save reports each entity
// with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveActInstanceLists(CDatabase& db, bool authorized) {
    return SaveLoop(db, "ActivitiesList", authorized, StaffRight, "Activity Instance List",
                    [&](DvnfEntity& entity) { return SaveList(db, entity, "Activity Instance List"); });
}

int DvnConvCoreDbBe::SavePrcInstanceLists(CDatabase& db, bool authorized) {
    return SaveLoop(db, "ProcessInstancesList", authorized, StaffRight, "Process Instance List",
                    [&](DvnfEntity& entity) { return SaveList(db, entity, "Process Instance List"); });
}

int DvnConvCoreDbBe::SavePrcTemplateLists(CDatabase& db, bool authorized) {
    return SaveLoop(db, "TemplatesList", authorized, StaffRight, "Process Template List",
                    [&](DvnfEntity& entity) { return SaveList(db, entity, "Process Template List"); });
}

int DvnConvCoreDbBe::SaveWorkLists(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Worklist", authorized, StaffRight, "Work List",
                    [&](DvnfEntity& entity) { return SaveList(db, entity, "Work List"); });
}

int DvnConvCoreDbBe::SaveList(CDatabase&, DvnfEntity& entity, const char* kind) {
    return NotStoredYet(entity, kind);
}
