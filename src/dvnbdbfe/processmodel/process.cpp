// Load of processes: the row of PROCESS with its window (PROCESS_GRAPH_ATTR),
// its defaults (PROCESS_TOPOL_ATTR), its container values (PRC_CONTAINER)
// and its diagram. How deep a load goes is said by three switches: with the
// long attributes, with the inside of blocks, and the state taken from the
// row mark or always "unchanged" (for the editor).
#include "dvnbauth.h"
#include "dvnprocsets.h"
#include "processload.h"

using namespace processload;

// ------------------------------------------------------------------ all

void DvnConvCoreDbFe::Processes(DvnString const& pid) {
    const bool one = !pid.IsNull() && !pid.str().empty();
    DvnProcessSet rs(m_pDatabase);
    try {
        const long count =
            ReadRows(rs, one ? SelectFrom("PROCESS", "PID", CString(pid.c_str())) : SelectFrom("PROCESS"),
                     [&](DvnProcessSet& row) {
                         if (AlreadyLoaded("Process", row.m_PID)) return;
                         DvnSimplePrcSet simple(m_pDatabase);
                         simple.m_strFilter = CString("NAME = ") + Literal(DvnString(row.m_NAME.c_str()));
                         simple.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
                         if (simple.IsEOF()) {
                             Report(51544, DvnString(row.m_NAME.c_str()));
                             simple.Close();
                             return;
                         }
                         const DvnString name(row.m_NAME.c_str());
                         Report(51508, name);
                         // Held by someone else: loaded all the same, without a lock.
                         const bool held = !simple.IsFieldNull(&simple.m_CHECKED_OUT_BY);
                         if (held) {
                             Report(51569, name, DvnString(simple.m_CHECKED_OUT_BY.c_str()));
                         } else {
                             m_pDatabase->BeginTrans();
                             simple.Edit();
                             simple.m_CHECKED_OUT_BY = DvnBTAuthorization::GetInstance()->UserID().c_str();
                             simple.Update();
                             m_pDatabase->CommitTrans();
                         }
                         if (simple.m_PID != row.m_PID) row.m_PID = simple.m_PID;
                         Process(row, true, true, false);
                         if (!held) {
                             m_pDatabase->BeginTrans();
                             simple.Edit();
                             simple.SetFieldNull(&simple.m_CHECKED_OUT_BY);
                             simple.Update();
                             m_pDatabase->CommitTrans();
                         }
                         simple.Close();
                     });
        DVN_TRACE(3, 1, "Number of Processes found: " << count);
        if (count == 0 && one) Report(51544, pid);
    } catch (CDBException* e) {
        TraceDbException("Exception In Processes: rc =", e);
    }
}

DvnfEntity& DvnConvCoreDbFe::ProcessByName(const char* name) {
    DvnfEntity* found = &DvnfEntity::undefined;
    DvnProcessSet rs(m_pDatabase);
    try {
        ReadRows(rs, CString("SELECT * FROM ") + Table("PROCESS") + " WHERE [NAME] =" + Literal(DvnString(name)),
                 [&](DvnProcessSet& row) { found = &Process(row, true, false, true); });
    } catch (CDBException* e) {
        TraceDbException("Exception In ProcessByName: rc =", e);
    }
    return *found;
}

// ------------------------------------------------------------------ one

namespace {

using G = DvnProcessGraphAttrSet;
struct GraphColor {
    const char* attribute;
    long G::*column;
};
const GraphColor kColors[] = {
    {"ExitConditionColor", &G::m_EXIT_COND_COLOR},  {"PaperColor", &G::m_PAPER_COLOR},
    {"PaperBackColor", &G::m_PAPER_BACK_COLOR},     {"DataConnectorColor", &G::m_DATA_COLOR},
    {"ControlConnectorColor", &G::m_CONTROL_COLOR}, {"ActivityColor", &G::m_ACT_NAME_COLOR},
    {"TransitionConditionColor", &G::m_TRAN_COND_COLOR},
};
struct GraphFont {
    const char* attribute;
    CString G::*name;
    long G::*size;
    long G::*style;
    CString G::*descriptor;
};
const GraphFont kFonts[] = {
    {"ExitConditionFont", &G::m_EXIT_COND_FONT, &G::m_EXIT_COND_FONT_SIZ, &G::m_EXIT_COND_FONT_STY,
     &G::m_EXIT_COND_FONT_DSC},
    {"ActivityFont", &G::m_ACT_NAME_FONT, &G::m_ACT_FONT_SIZE, &G::m_ACT_FONT_STYLE, &G::m_ACT_FONT_DESC},
    {"TransitionConditionFont", &G::m_TRAN_COND_FONT, &G::m_TRAN_COND_FONT_SIZ, &G::m_TRAN_COND_FONT_STY,
     &G::m_TRAN_COND_FONT_DSC},
};

}  // namespace

DvnfEntity& DvnConvCoreDbFe::Process(DvnProcessSet& row, bool withAttributes, bool withBlocks, bool asUnchanged) {
    DvnfEntity* process = &DvnfEntity::undefined;
    const CString pid = row.m_PID;
    try {
        DvnProcessGraphAttrSet graph(m_pDatabase);
        graph.m_strFilter = CString("PID = ") + Literal(DvnString(pid.c_str()));
        ReadRows(graph, Table("PROCESS_GRAPH_ATTR"), [&](DvnProcessGraphAttrSet& g) {
            if (process->IsValid()) return;  // one graph row counts
            process = &m_pCoreData->CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()),
                                                 DvnfString(row.m_NAME.c_str()));
            process->State(asUnchanged ? DvnfObject::StateUnchanged : GetState(row.m_CHECKED_OUT));
            if (process->State() == DvnfObject::StateDeleted) return;
            DvnfAttributeData attributes = process->AttributeData();
            // What a second load would add again is read anew.
            for (const char* set : {"Diagram", "InputContainer", "OutputContainer"}) attributes.Reset(set);
            CopyText(row, row.m_USER_DEFINED_ICON, attributes("Icon"));
            LinkByOID(*process, "ProcessHasInputStr", "DataStructure", row, row.m_INPUT_DS);
            LinkByOID(*process, "ProcessHasOutputStr", "DataStructure", row, row.m_OUTPUT_DS);
            for (const GraphColor& c : kColors)
                if (!g.IsFieldNull(&(g.*c.column))) GetColor(g.*c.column, attributes(c.attribute));
            for (const GraphFont& f : kFonts) {
                if (g.IsFieldNull(&(g.*f.name))) continue;
                GetFontSetting(g.*f.name, g.IsFieldNull(&(g.*f.size)) ? -1 : g.*f.size,
                               g.IsFieldNull(&(g.*f.style)) ? -1 : g.*f.style, g.*f.descriptor,
                               attributes(f.attribute));
            }
            Graphics(g, attributes("WindowLayout"));
        });
    } catch (CDBException* e) {
        TraceDbException("Exception In Process: rc =", e, "Process Graph:");
        return *process;
    }
    if (!process->IsValid()) {
        DVN_TRACE(1, 2, "No graph attributes for Process: " << row.m_NAME);
        return DvnfEntity::undefined;
    }
    if (process->State() == DvnfObject::StateDeleted) return *process;

    DvnfAttributeData attributes = process->AttributeData();
    DvnfAttributeData diagram = attributes("Diagram");
    try {
        std::vector<DvnfEntity*> blocks;
        DiagramBefore(pid, CString(), process, diagram, withAttributes, withBlocks, &blocks);
        // Breadth first: a block found inside a block is appended and taken
        // in its turn.
        for (size_t i = 0; i < blocks.size(); ++i) {
            DvnfEntity* block = blocks[i];
            DvnfAttributeData blockAttributes = block->AttributeData();
            BlockActivity(blockAttributes, block, CString(block->OID().c_str()), pid, withAttributes, withBlocks,
                          &blocks);
        }
        DiagramAfter(pid, CString(), process, diagram, withAttributes);
    } catch (CDBException* e) {
        TraceDbException("Exception In Process", e, "Activities:");
        return *process;
    }
    if (!withAttributes) return *process;
    try {
        if (ProcessAttributes(attributes, process, row) >= LevelError) return *process;
        ProcessContainers(attributes, process, pid);
        process->SetFlags(DvnfEntity::FlagAttributesComplete);
    } catch (CDBException* e) {
        TraceDbException("Exception In Process: rc =", e, "Process:");
    }
    return *process;
}

void DvnConvCoreDbFe::DiagramBefore(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                    DvnfAttributeData& diagram, bool withAttributes, bool withBlocks,
                                    std::vector<DvnfEntity*>* blocks) {
    GetSourceAndSink(pid, blockId, parent, diagram);
    Activities(pid, blockId, parent, diagram, false, withAttributes, withBlocks, blocks);
}

void DvnConvCoreDbFe::DiagramAfter(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                   DvnfAttributeData& diagram, bool withAttributes) {
    // Connectors name their ends: after every activity of the diagram.
    GetControlFlow(pid, blockId, parent, diagram);
    GetDataFlow(pid, blockId, parent, diagram, withAttributes);
    GetTextAnnotation(pid, blockId, parent, diagram);
}

CString DvnConvCoreDbFe::InBlock(const char* column, CString const& blockId) {
    if (blockId.IsEmpty()) return CString(" AND ") + column + " IS NULL";
    return CString(" AND ") + column + " = " + Literal(DvnString(blockId.c_str()));
}

// ------------------------------------------------------------------ window

void DvnConvCoreDbFe::Graphics(DvnGraphAttrSet& row, DvnfAttributeData target) {
    CopyLong(row, row.m_ZOOM_FACTOR, target("ZoomFactor"));
    DvnfAttributeData paper = target("Paper");
    CopyLong(row, row.m_VIEW_REF_PT_XPOS, paper("Xpos"));
    CopyLong(row, row.m_VIEW_REF_PT_YPOS, paper("Ypos"));
    CopyLong(row, row.m_PAPER_SIZE_HEIGHT, paper("Height"));
    CopyLong(row, row.m_PAPER_SIZE_WIDTH, paper("Width"));
    if (!row.IsFieldNull(&row.m_SHOW_CONNECTORS)) {
        switch (row.m_SHOW_CONNECTORS) {
            case 0: target("ShowConnectors") = 1L; break;
            case 1: target("ShowConnectors") = 0L; break;
            case 2:
            case 3: target("ShowConnectors") = row.m_SHOW_CONNECTORS; break;
            default: break;
        }
    }
    const bool exit = !row.IsFieldNull(&row.m_SHOW_EXIT_COND) && row.m_SHOW_EXIT_COND == 1;
    const bool transition = !row.IsFieldNull(&row.m_SHOW_TRANS_COND) && row.m_SHOW_TRANS_COND == 1;
    target("ShowConditions") = exit && transition ? 1L : exit ? 2L : transition ? 3L : 0L;
}

// ------------------------------------------------------------------ long attributes

namespace {

using T = DvnProcessTopolAttrSet;
// A column of the defaults as a flag: true for 1 (exact) or for anything but 0.
struct DefaultFlag {
    const char* attribute;
    long T::*column;
    bool onlyOne;
};
const DefaultFlag kDefaultFlags[] = {
    {"EnforceImmedExecution", &T::m_ENFORCE_IM_EXEC, false},
    {"IncludeProcessAssignment", &T::m_INCL_PRC_ASSGMNT, false},
    {"PreferLocalUsers", &T::m_PREFER_LOCAL_USERS, false},
    {"PreferNonAbsentUsers", &T::m_PREFER_NABSENT_USR, false},
    {"SelectLeastWorkload", &T::m_SELECT_LEAST_WRKLD, false},
    {"DuplicateNotification", &T::m_SECOND_NOTIFICAT, true},
    {"CheckoutPossible", &T::m_CHECKOUT_POSSIBLE, true},
    {"Substitution", &T::m_SUBSTITUTION, true},
    {"NotificationSubstitution", &T::m_USE_SUBST_FOR_NOT, true},
};

// The stored choice 1 .. 4 of an audit setting as the attribute's value.
std::optional<long> Audit(long stored) {
    switch (stored) {
        case 1: return 0;
        case 2: return 2;
        case 3: return 1;
        case 4: return 3;
        default: return std::nullopt;
    }
}

}  // namespace

int DvnConvCoreDbFe::ProcessAttributes(DvnfAttributeData attributes, DvnfEntity* process, DvnProcessSet& row) {
    LinkByOID(*process, "ProcessHasCategory", "Category", row, row.m_CATID);
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    CopyText(row, row.m_VALID_FROM, attributes("ValidFrom"));
    CopyFlag(row, row.m_DATA_FROM_IN_CONT, attributes("DataFromInputContainer"));
    if (!row.IsFieldNull(&row.m_ORG_CONT_MEMBER))
        attributes("OrganizationFromInput") = row.m_ORG_CONT_MEMBER.c_str();
    else
        LinkByOID(*process, "ProcessHasOrganization", "Organization", row, row.m_ORGANIZATION);
    if (!row.IsFieldNull(&row.m_ROLE_CONT_MEMBER))
        attributes("RoleFromInput") = row.m_ROLE_CONT_MEMBER.c_str();
    else
        LinkByOID(*process, "ProcessHasRole", "Role", row, row.m_ROLE);
    const long rc = row.IsFieldNull(&row.m_RC_CREATION) ? 0 : row.m_RC_CREATION;
    attributes("RcCreation") = rc == 2 ? 1L : rc == 3 ? 0L : 2L;
    if (!row.IsFieldNull(&row.m_PADM_CONT_MEMBER))
        attributes("AdministratorFromInput") = row.m_PADM_CONT_MEMBER.c_str();
    else
        LinkByOID(*process, "ProcessHasAdministrator", "Person", row, row.m_ADMINISTRATOR);
    attributes("PromptAtProcessStart") = !row.IsFieldNull(&row.m_PROMPT_AT_PRC_STRT) && row.m_PROMPT_AT_PRC_STRT != 0;

    DvnProcessTopolAttrSet topology(m_pDatabase);
    topology.m_strFilter = CString("PID = ") + Literal(process->OID());
    long found = 0;
    try {
        found = ReadRows(topology, Table("PROCESS_TOPOL_ATTR"), [&](DvnProcessTopolAttrSet& t) {
            DvnfAttributeData defaults = attributes("ProcessDefault");
            if (!t.IsFieldNull(&t.m_KEEP_FIN_WRKITM_TI)) GetTimePeriod(t.m_KEEP_FIN_WRKITM_TI, defaults("KeepWorkitems"));
            if (!t.IsFieldNull(&t.m_KEEP_FIN_PRC_TIME)) GetTimePeriod(t.m_KEEP_FIN_PRC_TIME, defaults("KeepProcesses"));
            if (!t.IsFieldNull(&t.m_NOT_CONT_MEMBER))
                attributes("NotificationFromInput") = t.m_NOT_CONT_MEMBER.c_str();
            else
                CopyLong(t, t.m_NOTIFICATION_INTVL, attributes("NotifyDuration")("Seconds"));
            DvnfAttributeData activityDefault = attributes("ActivityDefault");
            for (const DefaultFlag& f : kDefaultFlags) {
                const long& value = t.*f.column;
                if (!t.IsFieldNull(&value)) activityDefault(f.attribute) = f.onlyOne ? value == 1 : value != 0;
            }
            CopyText(t, t.m_AUDIT_EVENTS_TO_DB, activityDefault("AuditFilterDB"));
            CopyText(t, t.m_AUDIT_EVENTS_TO_HX, activityDefault("AuditFilterHX"));
            if (!t.IsFieldNull(&t.m_WRITE_AUDIT_LOG)) Put(Audit(t.m_WRITE_AUDIT_LOG), defaults("AuditDB"));
            if (!t.IsFieldNull(&t.m_HX_AUDIT_LOG)) Put(Audit(t.m_HX_AUDIT_LOG), defaults("AuditHX"));
            if (!t.IsFieldNull(&t.m_NOTIFICATION_MODE) && (t.m_NOTIFICATION_MODE == 1 || t.m_NOTIFICATION_MODE == 2))
                defaults("NotificationMode") = t.m_NOTIFICATION_MODE - 1;
            if (!t.IsFieldNull(&t.m_REFRESH_POLICY)) defaults("RefreshPolicy") = t.m_REFRESH_POLICY == 1 ? 1L : 0L;
            // "Autonomy": one bit per column.
            const std::pair<long T::*, long> bits[] = {{&T::m_STAFF_AUTONOMY, 1},
                                                       {&T::m_NOTIFICAT_AUTONOMY, 2},
                                                       {&T::m_ADMIN_AUTONOMY, 4},
                                                       {&T::m_CONTROL_AUTONOMY, 8}};
            bool any = false;
            long autonomy = 0;
            for (const auto& [column, bit] : bits) {
                if (t.IsFieldNull(&(t.*column))) continue;
                any = true;
                if (t.*column == 1) autonomy += bit;
            }
            if (any) defaults("Autonomy") = autonomy;
        });
    } catch (CDBException* e) {
        TraceDbException("Exception In Process: rc =", e, "Process Topology:");
        return LevelError;
    }
    if (found == 0) {
        DVN_TRACE(1, 2, "No topology attributes for Process: " << process->Name());
        return LevelError;
    }
    return LevelOk;
}

// ------------------------------------------------------------------ containers

int DvnConvCoreDbFe::ProcessContainers(DvnfAttributeData attributes, DvnfEntity*, CString const& pid) {
    try {
        ContainerValues<DvnProcessContainerSet>("PRC_CONTAINER", "PID", pid, attributes);
    } catch (CDBException* e) {
        return ReportDbException("Exception In ProcessContainers: rc =", e);
    }
    return LevelOk;
}
