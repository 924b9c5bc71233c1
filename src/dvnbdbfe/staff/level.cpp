// Load of staff levels: a level is named by its number.
#include "staffload.h"

namespace {

CString LevelText(const DvnStaffLevelSet& row) {
    CString text;
    text.Format("%ld", static_cast<long>(row.m_LEVEL_ID));
    return text;
}

}  // namespace

const DvnConvCoreDbFe::Kind<DvnStaffLevelSet> DvnConvCoreDbFe::LevelKind = {
    .typeName = "Level",
    .table = "STAFF_LEVEL",
    .keyColumn = "LEVEL_ID",
    .plural = "Levels",
    .progress = 51503,
    .notFound = 51539,
    .lookFirst = false,
    .key = &LevelText,
    .name = &LevelText,
    .fill = &DvnConvCoreDbFe::Level,
    .quoteKey = false,
};

void DvnConvCoreDbFe::Levels(DvnString const& id) {
    // The key is a number: anything else would break the statement.
    const std::string key = id.IsNull() ? std::string() : id.str();
    if (!key.empty() && key.find_first_not_of("0123456789-+ ") != std::string::npos) {
        Report(51539, id);
        return;
    }
    try {
        LoadKind(LevelKind, id);
    } catch (CDBException* e) {
        TraceDbException("Exception in Levels: rc =", e);
    }
}

int DvnConvCoreDbFe::Level(DvnStaffLevelSet& row, DvnfEntity& level) {
    if (!TakeState(level, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = level.AttributeData();
    CopyText(row, row.m_NAME, attributes("Name"));
    CopyText(row, row.m_DESCRIPTION, attributes("Description"));
    return LevelOk;
}
