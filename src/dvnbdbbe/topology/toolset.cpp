// Store of tool sets: the icons an editor offers for the five kinds of
// activity. A family of one row (TOOL_SET_DEFAULT, keyed by its name, never
// reported as held) with the further icons of each kind hanging from it in
// TOOL_SET_ICONS, one row per tool set and icon name.
#include <iterator>

#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {

// The five kinds of activity, in the order of their numbers (1 to 5).
struct IconKind {
    const char* defaultAttribute;
    CString DvnToolDefaultSet::*defaultColumn;
    const char* defaultIcon;  // when the file names none
    const char* set;          // the set of further icons
    int DvnToolIconSet::*flag;
};

const IconKind kIconKinds[] = {
    {"DefaultProcessActivityIcon", &DvnToolDefaultSet::m_PROC_ACT_NAME, "dvnbprca", "ProcessActivityIcons",
     &DvnToolIconSet::m_IS_PROC_ACT},
    {"DefaultBlockActivityIcon", &DvnToolDefaultSet::m_BLK_ACT_NAME, "dvnbblka", "BlockActivityIcons",
     &DvnToolIconSet::m_IS_BLK_ACT},
    {"DefaultBundleActivityIcon", &DvnToolDefaultSet::m_BUN_ACT_NAME, "dvnbbnda", "BundleActivityIcons",
     &DvnToolIconSet::m_IS_BUN_ACT},
    {"DefaultInfoActivityIcon", &DvnToolDefaultSet::m_INFO_ACT_NAME, "dvnbinfa", "InfoActivityIcons",
     &DvnToolIconSet::m_IS_INFO_ACT},
    {"DefaultProgramActivityIcon", &DvnToolDefaultSet::m_PROG_ACT_NAME, "dvnbprga", "ProgramActivityIcons",
     &DvnToolIconSet::m_IS_PROG_ACT},
};
constexpr int kKinds = static_cast<int>(std::size(kIconKinds));

CString Quoted(const DvnString& text) { return ReturnQuotedString(text, "'", "'").c_str(); }

}  // namespace

const DvnConvCoreDbBe::Family<DvnToolDefaultSet> DvnConvCoreDbBe::ToolSetFamily = {
    .typeName = "ToolSet",
    .kind = "Tool Set",
    .right = &ModelingRight,
    .table = "TOOL_SET_DEFAULT",
    .keyColumn = "NAME",
    .key = &DvnToolDefaultSet::m_NAME,
    .progress = "Tool Set ",
    .invalidTrace = "Tool Set is not defined",
    .deleteKeyword = "DELETE TOOL_SET ",
    .messages = {.added = 51037, .updated = 51069, .kept = 51101, .held = 0, .deleted = 51237,
                 .cannotAppend = 51333, .cannotUpdate = 51365},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnToolDefaultSet& row, bool) {
        return be.ReadToolSetDefaultAttributes(db, entity, row);
    },
    .tombstoneNotFound = true,
    // A tombstone keeps its icons as they are.
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString&, bool tombstone) {
        return tombstone ? static_cast<int>(LevelOk) : be.SaveToolSetIcons(db, entity);
    },
    // The name is the key: a later tool set of that name must not find the
    // icons of this one.
    .deleteDependents = [](DvnConvCoreDbBe& be, CDatabase& db, const CString& key) {
        return be.DeleteToolSetIcons(db, key);
    },
};

int DvnConvCoreDbBe::SaveToolSets(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, ToolSetFamily); }

int DvnConvCoreDbBe::SaveToolSet(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, ToolSetFamily);
}

int DvnConvCoreDbBe::ReadToolSetDefaultAttributes(CDatabase&, DvnfEntity& entity, DvnToolDefaultSet& row) {
    row.m_NAME = entity.Name().c_str();
    // A new row holds no mark yet, which MarkForUpdate takes as any other.
    row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    DvnfAttributeData attributes = entity.AttributeData();
    SetDescription(row, entity);
    for (const IconKind& kind : kIconKinds) {
        auto icon = attributes(kind.defaultAttribute);
        DvnStored::SetText(row, row.*kind.defaultColumn,
                           icon.IsDefined() ? icon.AsString("").str() : std::string(kind.defaultIcon));
    }
    return LevelOk;
}

// The five sets in the order of the kinds: an icon named in two sets ends
// with the flag of the later one.
int DvnConvCoreDbBe::SaveToolSetIcons(CDatabase& db, DvnfEntity& entity) {
    const DvnfString name = entity.Name();
    DvnfAttributeData attributes = entity.AttributeData();
    int level = LevelOk;
    for (int kind = 1; kind <= kKinds; ++kind) {
        DvnfDataSetIterator icons = attributes(kIconKinds[kind - 1].set).ElementsOfSet();
        for (DvnfAttributeDataReader icon = icons.First(); icon.IsValid(); icon = icons.Next()) {
            // An element without a text names no icon.
            const DvnString iconName = icon.AsString("");
            if (!icon.IsDefined() || iconName.IsEmpty()) continue;
            level = std::max(level, SaveToolSetIcon(db, name, iconName.c_str(), kind));
        }
    }
    return level;
}

int DvnConvCoreDbBe::DeleteToolSetIcons(CDatabase& db, const CString& toolSet) {
    return DeleteObject(db,
                        CString("DELETE FROM ") + Table("TOOL_SET_ICONS") + " WHERE TOOL_SET_NAME = " +
                            Quoted(DvnString(toolSet.c_str())),
                        "TOOL_SET_ICONS");
}

int DvnConvCoreDbBe::SaveToolSetIcon(CDatabase& db, const DvnfString& toolSet, const CString& icon, int kind) {
    static const char* const notAdded = "Tool set icon not added";
    DvnToolIconSet row(&db);
    row.m_strFilter = "TOOL_SET_NAME = " + Quoted(toolSet) + " AND NAME = " + Quoted(DvnString(icon.c_str()));
    const char* action = "opening";
    try {
        row.Open(CRecordset::snapshot, Table("TOOL_SET_ICONS"), CRecordset::none);
        action = "reading";
        if (row.IsEOF()) {
            if (!row.CanAppend()) {
                row.Close();
                DVN_TRACE(1, 2, notAdded);
                return LevelError;
            }
            row.AddNew();
        } else {
            row.MoveFirst();
            row.Edit();
        }
        ReadToolSetIconAttributes(db, row, toolSet.c_str(), icon, kind);
        action = "updating";
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, action, "TOOL_SET_ICONS", &row);
        DVN_TRACE(1, 2, notAdded);
        return LevelError;
    }
    row.Close();
    return LevelOk;
}

int DvnConvCoreDbBe::ReadToolSetIconAttributes(CDatabase&, DvnToolIconSet& row, const CString& toolSet,
                                               const CString& icon, int kind) {
    row.m_NAME = icon;
    row.m_TOOL_SET_NAME = toolSet;
    for (int k = 1; k <= kKinds; ++k) row.*kIconKinds[k - 1].flag = (k == kind) ? 1 : 0;
    return LevelOk;
}
