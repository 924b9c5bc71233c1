// The process attributes: how the attributes of a process entity (and the
// window settings of a block) become the columns of PROCESS,
// PROCESS_TOPOL_ATTR and PROCESS_GRAPH_ATTR. These readings fill a
// positioned row; the caller writes it. A value that a conversion table
// does not list leaves its column NULL (docs/store.md).
#include <algorithm>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "dvnstaffsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// A number through a conversion table: the stored value of the attribute's
// value i is stored[i]; any other value gives NULL, as does an attribute
// that is not defined.
void SetConverted(CRecordset& row, long& member, const DvnfAttributeDataReader& value,
                  std::initializer_list<long> stored) {
    row.SetFieldNull(&member);
    if (!value.IsDefined()) return;
    const long given = value.AsLong(0);
    if (given >= 0 && given < static_cast<long>(stored.size())) member = stored.begin()[given];
}

// A colour ("Red", "Green", "Blue") packed into one number; NULL when the
// attribute is not defined.
void SetColor(CRecordset& row, long& member, const DvnfAttributeDataReader& color) {
    if (color.IsDefined())
        member = DvnStored::PackedColor(color("Red").AsLong(0), color("Green").AsLong(0), color("Blue").AsLong(0));
    else
        row.SetFieldNull(&member);
}

void SetNumberOrNull(CRecordset& row, long& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        member = value.AsLong(0);
    else
        row.SetFieldNull(&member);
}

// Two numbers that are stored together or not at all.
void SetPair(CRecordset& row, long& first, long& second, const DvnfAttributeDataReader& a,
             const DvnfAttributeDataReader& b) {
    if (a.IsDefined() && b.IsDefined()) {
        first = a.AsLong(0);
        second = b.AsLong(0);
    } else {
        row.SetFieldNull(&first);
        row.SetFieldNull(&second);
    }
}

// Columns of PROCESS_TOPOL_ATTR with their "ProcessDefault" attribute and
// conversion table.
struct Conversion {
    const char* attribute;
    long DvnProcessTopolAttrSet::*column;
    std::initializer_list<long> stored;
};

// The three fonts of PROCESS_GRAPH_ATTR.
struct Font {
    const char* attribute;
    CString DvnProcessGraphAttrSet::*name;
    long DvnProcessGraphAttrSet::*size;
    long DvnProcessGraphAttrSet::*style;
    CString DvnProcessGraphAttrSet::*descriptor;
};

}  // namespace

// ------------------------------------------------------------------ PROCESS

int DvnConvCoreDbBe::ReadProcessAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessSet& row) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    int level = LevelOk;
    // The messages name the process (which may carry its temporary name).
    const DvnString process = m_savingProcess.IsEmpty() ? DvnString(entity.Name()) : m_savingProcess;

    // 1. The category.
    row.SetFieldNull(&row.m_CATID);
    DvnfEntity& category = GetLink(DvnfString("ProcessHasCategory"), entity, DvnfString("Category"));
    if (category.IsValid()) {
        DvnString name;
        const CString key =
            ResolveKey<DvnCategorySet>(db, category, m_strTablePrefix, nullptr, &DvnCategorySet::GetCatID, name);
        if (key.IsEmpty()) {
            Report(51112, process);
            level = LevelWarning;
        } else {
            row.m_CATID = key;
        }
    }

    // 2. - 4. The staff, unless it comes from the input container: each the
    // key of the link's target or, when the link names nothing, the member
    // that names it at run time.
    for (CString* column : {&row.m_PADM_CONT_MEMBER, &row.m_ADMINISTRATOR, &row.m_ROLE_CONT_MEMBER, &row.m_ROLE,
                            &row.m_ORG_CONT_MEMBER, &row.m_ORGANIZATION})
        row.SetFieldNull(column);
    SetFlagOrNull(row, row.m_DATA_FROM_IN_CONT, attributes("DataFromInputContainer"));
    auto staff = [&]<class Set>(const char* link, const char* type,
                                CString (Set::*byName)(const CString&, const CString&, bool),
                                CString DvnProcessSet::*key, const char* memberAttribute,
                                CString DvnProcessSet::*member, long message) {
        DvnString name;
        const CString found = ResolveKey<Set>(db, GetLink(DvnfString(link), entity, DvnfString(type)),
                                              m_strTablePrefix, nullptr, byName, name);
        if (name.IsEmpty()) {
            SetTextOrNull(row, row.*member, attributes(memberAttribute));
        } else if (found.IsEmpty()) {
            Report(message, process);
            level = LevelWarning;
        } else {
            row.*key = found;
        }
    };
    if (!attributes("DataFromInputContainer").AsBool(false)) {
        using P = DvnProcessSet;
        staff("ProcessHasAdministrator", "Person", &DvnPersonSet::GetPersonID, &P::m_ADMINISTRATOR,
              "AdministratorFromInput", &P::m_PADM_CONT_MEMBER, 51113);
        staff("ProcessHasRole", "Role", &DvnRoleSet::GetRoleID, &P::m_ROLE, "RoleFromInput", &P::m_ROLE_CONT_MEMBER,
              51114);
        staff("ProcessHasOrganization", "Organization", &DvnOrganizationSet::GetOrganizationID, &P::m_ORGANIZATION,
              "OrganizationFromInput", &P::m_ORG_CONT_MEMBER, 51115);
    }

    // 5. - 8.
    SetTextOrNull(row, row.m_VALID_FROM, attributes("ValidFrom"));
    row.m_PROMPT_AT_PRC_STRT = attributes("PromptAtProcessStart").AsBool(false) ? 1 : 0;
    if (const auto setting = ReturnCodeSetting(attributes("RcCreation")))
        row.m_RC_CREATION = *setting;
    else
        row.SetFieldNull(&row.m_RC_CREATION);
    SetDescriptionAndDocumentation(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    return level;
}

// ------------------------------------------------------------------ PROCESS_TOPOL_ATTR

int DvnConvCoreDbBe::ReadProcessTopologyAttributes(CDatabase&, DvnfEntity& entity, DvnProcessTopolAttrSet& row,
                                                   const CString& pid) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    // 1. Every column starts NULL.
#define DVN_NULL_COLUMN(kind, column) row.SetFieldNull(&row.m_##column);
    DVN_PROCESS_TOPOL_ATTR_COLUMNS(DVN_NULL_COLUMN)
#undef DVN_NULL_COLUMN
    row.m_PID = pid;

    // 2. Notification: after a duration (0 stays NULL), or from a member.
    if (attributes("NotifyDuration").IsDefined()) {
        if (const long seconds = SetTimeInterval(attributes("NotifyDuration")); seconds != 0)
            row.m_NOTIFICATION_INTVL = seconds;
    } else {
        SetTextOrNull(row, row.m_NOT_CONT_MEMBER, attributes("NotificationFromInput"));
    }

    // 3. The process defaults.
    const DvnfAttributeDataReader defaults = attributes("ProcessDefault");
    static const Conversion conversions[] = {
        {"AuditDB", &DvnProcessTopolAttrSet::m_WRITE_AUDIT_LOG, {1, 3, 2, 4}},
        {"AuditHX", &DvnProcessTopolAttrSet::m_HX_AUDIT_LOG, {1, 3, 2, 4}},
        {"NotificationMode", &DvnProcessTopolAttrSet::m_NOTIFICATION_MODE, {1, 2}},
        {"RefreshPolicy", &DvnProcessTopolAttrSet::m_REFRESH_POLICY, {2, 1}},
    };
    for (const Conversion& c : conversions) SetConverted(row, row.*c.column, defaults(c.attribute), c.stored);
    // A period: kept for none (0), for ever (999999999), or for a duration.
    for (const auto& [attribute, column] : {std::pair{"KeepWorkitems", &DvnProcessTopolAttrSet::m_KEEP_FIN_WRKITM_TI},
                                            std::pair{"KeepProcesses", &DvnProcessTopolAttrSet::m_KEEP_FIN_PRC_TIME}}) {
        const DvnfAttributeDataReader period = defaults(attribute);
        if (!period.IsDefined()) continue;
        switch (period("Type").AsLong(-1)) {
            case 0: row.*column = 0; break;
            case 1: row.*column = 999999999; break;
            case 2:
                if (const long seconds = SetTimeInterval(period); seconds != 0) row.*column = seconds;
                break;
            default: break;
        }
    }

    // 4., 5. TERMINATE_ON_ERROR stays NULL; "Autonomy" is a bit mask.
    const DvnfAttributeDataReader autonomy = defaults("Autonomy");
    if (autonomy.IsDefined()) {
        const long mask = autonomy.AsLong(0);
        row.m_STAFF_AUTONOMY = (mask & 1) ? 1 : 0;
        row.m_NOTIFICAT_AUTONOMY = (mask & 2) ? 1 : 0;
        row.m_ADMIN_AUTONOMY = (mask & 4) ? 1 : 0;
        row.m_CONTROL_AUTONOMY = (mask & 8) ? 1 : 0;
    }

    // 6., 7. The defaults of the process's activities.
    ReadActivityDefaults(row, attributes("ActivityDefault"));
    return LevelOk;
}

// ------------------------------------------------------------------ window settings

int DvnConvCoreDbBe::ReadGraphAttributes(CDatabase&, DvnfEntity& entity, DvnGraphAttrSet& row) {
    row.m_SHOW_CONNECTORS = 1;
    row.m_SHOW_EXIT_COND = 0;
    row.m_SHOW_TRANS_COND = 0;
    row.m_SHOW_TEXT_ANNOTAT = 1;
    const DvnfAttributeDataReader layout = static_cast<const DvnfEntity&>(entity).AttributeData()("WindowLayout");
    // Without a layout the settings that it would give are NULL.
    const DvnfAttributeDataReader zoom = layout("ZoomFactor");
    if (zoom.IsDefined())
        row.m_ZOOM_FACTOR = std::clamp(zoom.AsLong(0), 10L, 200L);
    else
        row.SetFieldNull(&row.m_ZOOM_FACTOR);
    const DvnfAttributeDataReader paper = layout("Paper");
    SetPair(row, row.m_VIEW_REF_PT_XPOS, row.m_VIEW_REF_PT_YPOS, paper("Xpos"), paper("Ypos"));
    SetPair(row, row.m_PAPER_SIZE_WIDTH, row.m_PAPER_SIZE_HEIGHT, paper("Width"), paper("Height"));
    if (!layout.IsDefined()) return LevelOk;

    if (layout("ShowConnectors").IsDefined()) {
        const long shown = layout("ShowConnectors").AsLong(0);
        row.m_SHOW_CONNECTORS = shown == 1 ? 0 : shown == 2 || shown == 3 ? shown : 1;
    }
    if (layout("ShowConditions").IsDefined()) {
        const long shown = layout("ShowConditions").AsLong(0);
        row.m_SHOW_EXIT_COND = shown == 1 || shown == 2 ? 1 : 0;
        row.m_SHOW_TRANS_COND = shown == 1 || shown == 3 ? 1 : 0;
    }
    row.m_SHOW_TEXT_ANNOTAT = layout("ShowTextAnnotations").IsDefined() &&
                                      layout("ShowTextAnnotations").AsBool(false)
                                  ? 1
                                  : 0;
    return LevelOk;
}

int DvnConvCoreDbBe::ReadProcessGraphAttributes(CDatabase&, DvnfEntity& entity, DvnProcessGraphAttrSet& row,
                                                const CString& pid) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    row.m_PID = pid;
    const std::pair<const char*, long DvnProcessGraphAttrSet::*> colors[] = {
        {"PaperColor", &DvnProcessGraphAttrSet::m_PAPER_COLOR},
        {"PaperBackColor", &DvnProcessGraphAttrSet::m_PAPER_BACK_COLOR},
        {"ActivityColor", &DvnProcessGraphAttrSet::m_ACT_NAME_COLOR},
        {"ControlConnectorColor", &DvnProcessGraphAttrSet::m_CONTROL_COLOR},
        {"DataConnectorColor", &DvnProcessGraphAttrSet::m_DATA_COLOR},
        {"ExitConditionColor", &DvnProcessGraphAttrSet::m_EXIT_COND_COLOR},
        {"TransitionConditionColor", &DvnProcessGraphAttrSet::m_TRAN_COND_COLOR},
    };
    for (const auto& [attribute, column] : colors) SetColor(row, row.*column, attributes(attribute));

    using G = DvnProcessGraphAttrSet;
    static const Font fonts[] = {
        {"ActivityFont", &G::m_ACT_NAME_FONT, &G::m_ACT_FONT_SIZE, &G::m_ACT_FONT_STYLE, &G::m_ACT_FONT_DESC},
        {"ExitConditionFont", &G::m_EXIT_COND_FONT, &G::m_EXIT_COND_FONT_SIZ, &G::m_EXIT_COND_FONT_STY,
         &G::m_EXIT_COND_FONT_DSC},
        {"TransitionConditionFont", &G::m_TRAN_COND_FONT, &G::m_TRAN_COND_FONT_SIZ, &G::m_TRAN_COND_FONT_STY,
         &G::m_TRAN_COND_FONT_DSC},
    };
    for (const Font& f : fonts) {
        // A part that is not given is NULL, as are all four without the font.
        const DvnfAttributeDataReader font = attributes(f.attribute);
        SetTextOrNull(row, row.*f.name, font("Name"));
        SetNumberOrNull(row, row.*f.size, font("Size"));
        SetNumberOrNull(row, row.*f.style, font("Style"));
        SetTextOrNull(row, row.*f.descriptor, font("Descriptor"));
    }
    return LevelOk;
}
