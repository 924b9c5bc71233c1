// Load of tool sets: the row of TOOL_SET_DEFAULT and the icons of each kind
// from TOOL_SET_ICONS. The name is the key; each load makes a new OID.
#include <algorithm>
#include <string>
#include <vector>

#include "dvnbdbfe.h"
#include "dvntoposets.h"

const DvnConvCoreDbFe::Kind<DvnToolDefaultSet> DvnConvCoreDbFe::ToolSetKind = {
    .typeName = "ToolSet", .table = "TOOL_SET_DEFAULT", .keyColumn = "NAME", .plural = "Tool Sets",
    .progress = 51531, .notFound = 51567, .lookFirst = false,
    .key = [](const DvnToolDefaultSet&) { return CString(DvnfObject::CreateOID().c_str()); },
    .name = [](const DvnToolDefaultSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::ToolSetRow,
};

void DvnConvCoreDbFe::ToolSet(DvnString const& name) { LoadKind(ToolSetKind, name); }

// A tombstone keeps its attributes: what it was is still told.
int DvnConvCoreDbFe::ToolSetRow(DvnToolDefaultSet& row, DvnfEntity& toolSet) {
    if (toolSet.IsValid()) toolSet.State(GetState(row.m_CHECKED_OUT));
    DvnfAttributeData attributes = toolSet.AttributeData();
    CopyText(row, row.m_DESCRIPTION, attributes("Description"));
    attributes("DefaultProcessActivityIcon") = row.m_PROC_ACT_NAME.c_str();
    attributes("DefaultBlockActivityIcon") = row.m_BLK_ACT_NAME.c_str();
    attributes("DefaultBundleActivityIcon") = row.m_BUN_ACT_NAME.c_str();
    attributes("DefaultInfoActivityIcon") = row.m_INFO_ACT_NAME.c_str();
    attributes("DefaultProgramActivityIcon") = row.m_PROG_ACT_NAME.c_str();

    // No column keeps the order of a set: its icons are sorted by name.
    const struct {
        const char* flag;
        const char* set;
    } kinds[] = {{"IS_PROC_ACT", "ProcessActivityIcons"}, {"IS_BLK_ACT", "BlockActivityIcons"},
                 {"IS_BUN_ACT", "BundleActivityIcons"},   {"IS_INFO_ACT", "InfoActivityIcons"},
                 {"IS_PROG_ACT", "ProgramActivityIcons"}};
    const CString quoted = Literal(DvnString(row.m_NAME.c_str()));
    for (const auto& kind : kinds) {
        DvnToolIconSet icons(m_pDatabase);
        std::vector<std::string> names;
        ReadRows(icons,
                 CString("SELECT * FROM ") + Table("TOOL_SET_ICONS") + " WHERE [" + kind.flag +
                     "] = 1  AND [TOOL_SET_NAME] =" + quoted,
                 [&](DvnToolIconSet& icon) { names.push_back(icon.m_NAME.str()); });
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) attributes(kind.set).NewSetElement() = name;
    }
    return LevelOk;
}
