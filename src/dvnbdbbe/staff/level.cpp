// Store of staff, lists and programs. Until the store of a kind is written,
// its save reports each entity with something to save as not storable yet.
#include "dvnbdbbe.h"

int DvnConvCoreDbBe::SaveLevels(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Level", authorized, StaffRight, "Level",
                    [&](DvnfEntity& entity) { return SaveLevel(db, entity); });
}

int DvnConvCoreDbBe::SaveLevel(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Level"); }

int DvnConvCoreDbBe::SavePeople(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Person", authorized, StaffRight, "Person",
                    [&](DvnfEntity& entity) { return SavePerson(db, entity); });
}

int DvnConvCoreDbBe::SavePerson(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Person"); }

// The second pass of the persons. Each person was already reported by the
// first pass, so nothing is left to do until persons are stored.
int DvnConvCoreDbBe::SavePeople2(CDatabase&, bool) { return LevelOk; }

int DvnConvCoreDbBe::SaveOrgs(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Organization", authorized, StaffRight, "Organization",
                    [&](DvnfEntity& entity) { return SaveOrganization(db, entity); });
}

int DvnConvCoreDbBe::SaveOrganization(CDatabase&, DvnfEntity& entity) {
    return NotStoredYet(entity, "Organization");
}

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

int DvnConvCoreDbBe::SaveRoles(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Role", authorized, StaffRight, "Role",
                    [&](DvnfEntity& entity) { return SaveRole(db, entity); });
}

int DvnConvCoreDbBe::SaveRole(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Role"); }

int DvnConvCoreDbBe::SavePrograms(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Program", authorized, ModelingRight, "Program",
                    [&](DvnfEntity& entity) { return SaveProgram(db, entity); });
}

int DvnConvCoreDbBe::SaveProgram(CDatabase&, DvnfEntity& entity) { return NotStoredYet(entity, "Program"); }
