// Load of process categories: one row each in CATEGORY.
#include "dvnbdbfe.h"
#include "dvnprocsets.h"

const DvnConvCoreDbFe::Kind<DvnCategorySet> DvnConvCoreDbFe::CategoryKind = {
    .typeName = "Category",
    .table = "CATEGORY",
    .keyColumn = "CATID",
    .plural = "Categories",
    .progress = 51513,
    .notFound = 51549,
    .lookFirst = true,
    .key = [](const DvnCategorySet& row) { return row.m_CATID; },
    .name = [](const DvnCategorySet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Category,
};

void DvnConvCoreDbFe::Categories(DvnString const& id) {
    LoadKind(CategoryKind, id);
}

int DvnConvCoreDbFe::Category(DvnCategorySet& row, DvnfEntity& category) {
    if (!TakeState(category, row.m_CHECKED_OUT)) return LevelOk;
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, category.AttributeData());
    return LevelOk;
}

int DvnConvCoreDbFe::CategoryToCore(DvnfEntity& category) {
    DvnCategorySet row(m_pDatabase);
    try {
        ReadRows(row, SelectLive("CATEGORY", "CATID", Literal(category.OID())), [&](DvnCategorySet& found) {
                     Category(found, category);
                     if (category.IsValid()) category.State(DvnfObject::StateUnchanged);
                 });
    } catch (CDBException* e) {
        TraceDbException("Exception In CategoryToCore: rc =", e);
        return LevelError;
    }
    return LevelOk;
}
