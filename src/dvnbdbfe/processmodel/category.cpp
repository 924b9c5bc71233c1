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
    // A skeleton that a file only names has a name and no key: it is read by
    // its name, as DsToCore reads a structure, and takes the row's key.
    const DvnString name = category.Name();
    const bool byName = category.State() == DvnfObject::StateNone && !name.str().empty();
    const CString statement = byName ? SelectLive("CATEGORY", "NAME", Literal(name))
                                     : SelectLive("CATEGORY", "CATID", Literal(category.OID()));
    try {
        ReadRows(row, statement, [&](DvnCategorySet& found) {
            DvnfEntity* target = &category;
            if (byName)
                target = &m_pCoreData->CreateEntity(DvnfString("Category"), DvnfString(found.m_CATID.c_str()),
                                                    DvnfString(found.m_NAME.c_str()));
            Category(found, *target);
            if (target->IsValid()) target->State(DvnfObject::StateUnchanged);
        });
    } catch (CDBException* e) {
        TraceDbException("Exception In CategoryToCore: rc =", e);
        return LevelError;
    }
    return LevelOk;
}
