// Store of process categories: a family of one row each.
#include "dvnprocsets.h"
#include "familystore.h"
#include "storedforms.h"

const DvnConvCoreDbBe::Family<DvnCategorySet> DvnConvCoreDbBe::CategoryFamily = {
    .typeName = "Category",
    .kind = "Category",
    .right = &ModelingRight,
    .table = "CATEGORY",
    .keyColumn = "CATID",
    .key = &DvnCategorySet::m_CATID,
    .progress = "Category ",
    .invalidTrace = "Category is nor defined",
    .deleteKeyword = "DELETE PROCESS_CATEGORY ",
    .messages = {.added = 51019, .updated = 51051, .kept = 51083, .held = 51146, .deleted = 51219,
                 .cannotAppend = 51315, .cannotUpdate = 51347},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnCategorySet& row, bool isNew) {
        return be.ReadCategoryAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.CategoryInUse(db, entity, key);
    },
};

int DvnConvCoreDbBe::SaveCategories(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, CategoryFamily);
}

int DvnConvCoreDbBe::SaveCategory(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, CategoryFamily);
}

// A category that a process still names stays.
int DvnConvCoreDbBe::CategoryInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const CString statement = CString("SELECT * FROM ") + m_strTablePrefix + "PROCESS WHERE CATID ='" + key + "'";
    DvnString process;
    if (FirstRowName<DvnProcessSet>(db, statement, process)) {
        Report(51242, entity.Name(), process);
        return LevelWarning;
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ReadCategoryAttributes(CDatabase&, DvnfEntity& entity, DvnCategorySet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    StampRow(row, &DvnCategorySet::m_CATID, isNew);
    DvnfAttributeData attributes = entity.AttributeData();
    SetDescription(row, entity);
    auto documentation = attributes("Documentation");
    if (documentation.IsDefined())
        DvnStored::SetText(row, row.m_DOCUMENTATION, documentation.AsString("").c_str());
    else
        row.SetFieldNull(&row.m_DOCUMENTATION);
    return LevelOk;
}
