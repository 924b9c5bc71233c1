// Store of staff levels: one row each, found by its number. A level is
// never deleted; docs/staff.md.
#include "dvnstaffsets.h"
#include "staffstore.h"
#include "storedforms.h"

namespace {

// The number a level's name stands for, as every save of it stores it.
long LevelNumber(const DvnString& name) { return name.AsLong(); }

}  // namespace

const DvnConvCoreDbBe::Family<DvnStaffLevelSet> DvnConvCoreDbBe::LevelFamily = {
    .typeName = "Level",
    .kind = "Level",
    .right = &StaffRight,
    .table = "STAFF_LEVEL",
    .keyColumn = "LEVEL_ID",
    .key = nullptr,
    .progress = "Level ",
    .invalidTrace = "Level is not defined",
    .deleteKeyword = "DELETE LEVEL ",
    .messages = {.added = 51005, .updated = 51041, .kept = 51073, .held = 51140, .deleted = 0,
                 .cannotAppend = 51305, .cannotUpdate = 51337},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnStaffLevelSet& row, bool isNew) {
        return be.ReadLevelAttributes(db, entity, row, isNew);
    },
    // The row is found by the number, never by the raw name: "3" and "03"
    // are one level, and a name that is no number is level 0.
    .filter = [](const DvnString& name) {
        CString filter;
        filter.Format("LEVEL_ID = %ld", LevelNumber(name));
        return filter;
    },
    .refuseDelete = 51255,
    .keyText = [](const DvnStaffLevelSet& row) {
        CString key;
        key.Format("%ld", static_cast<long>(row.m_LEVEL_ID));
        return key;
    },
};

int DvnConvCoreDbBe::SaveLevels(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, LevelFamily); }

int DvnConvCoreDbBe::SaveLevel(CDatabase& db, DvnfEntity& entity) { return SaveSingleRow(db, entity, LevelFamily); }

int DvnConvCoreDbBe::ReadLevelAttributes(CDatabase&, DvnfEntity& entity, DvnStaffLevelSet& row, bool isNew) {
    row.m_LEVEL_ID = LevelNumber(entity.Name());
    if (isNew) {
        row.m_CHECKED_OUT = MarkForInsert(false);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    auto name = entity.AttributeData()("Name");
    if (name.IsDefined()) DvnStored::SetText(row, row.m_NAME, name.AsString("").c_str());
    dvnstaff::SetDescription(row, entity);
    return LevelOk;
}
