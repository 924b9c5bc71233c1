// Load of the activities of a diagram: the rows of ACTIVITY, made in the
// order of their names, then filled from ACTIVITY_EXTENT, the staff
// assignment tables, the table of their kind and ACT_CONTAINER. A block's
// inside (BLOCK_ACTIVITY and its own diagram) is read when asked for.
#include <tuple>

#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvnstaffsets.h"
#include "processload.h"
#include "../staff/staffload.h"

using namespace processload;

namespace {

// ACTIVITY_KIND: 1 program, 2 information, 3 process, 4 block, 5 bundle.
enum ActivityKind : long { KindProgram = 1, KindInfo = 2, KindProcess = 3, KindBlock = 4, KindBundle = 5 };

DvnfEntity& MakeActivity(DvnfTRXData& data, DvnfAttributeData& diagram, long kind, const DvnfString& aid) {
    switch (kind) {
        case KindProgram: return data.CreateProgramActivityByOID(diagram, aid);
        case KindInfo: return data.CreateInfoActivityByOID(diagram, aid);
        case KindProcess: return data.CreateProcessActivityByOID(diagram, aid);
        case KindBlock: return data.CreateBlockActivityByOID(diagram, aid);
        case KindBundle: return data.CreateBundleActivityByOID(diagram, aid);
        default: return DvnfEntity::undefined;
    }
}

// The implementation object of an activity ("AsProgram", "AsBlock", ...).
DvnfEntity& Implementation(DvnfAttributeData& attributes, const char* as) {
    return attributes("Implementation")(as).AsEntity();
}

bool IsOne(const CRecordset& row, const long& member) { return !row.IsFieldNull(&member) && member == 1; }

}  // namespace

// ------------------------------------------------------------------ the diagram

void DvnConvCoreDbFe::Activities(CString const& parentKey, CString const& blockId, DvnfEntity* parent,
                                 DvnfAttributeData& diagram, bool singleActivity, bool withAttributes,
                                 bool withBlocks, std::vector<DvnfEntity*>* blocks) {
    // A bundle's pattern activity is read by its key alone: it lives inside
    // the bundle.
    const CString filter = singleActivity
                               ? CString("AID = ") + Literal(DvnString(parentKey.c_str()))
                               : CString("PID = ") + Literal(DvnString(parentKey.c_str())) +
                                     InBlock("INSIDE_BLOCK", blockId);
    // First pass: the entities, in the order of their names.
    std::vector<std::tuple<std::string, std::string, long>> rows;
    {
        DvnActivitySet rs(m_pDatabase);
        rs.m_strFilter = filter;
        ReadRows(rs, Table("ACTIVITY"), [&](DvnActivitySet& row) {
            rows.emplace_back(row.m_NAME.str(), row.m_AID.str(), row.m_ACTIVITY_KIND);
        });
    }
    std::sort(rows.begin(), rows.end());
    for (const auto& [name, aid, kind] : rows) {
        DvnfEntity& activity = MakeActivity(*m_pCoreData, diagram, kind, DvnfString(aid));
        TakeParentState(activity, *parent);
    }
    // Second pass: the columns, every activity of the diagram from one read.
    std::vector<std::pair<std::string, DvnfEntity*>> found;
    DvnActivitySet rs(m_pDatabase);
    rs.m_strFilter = filter;
    ReadRows(rs, Table("ACTIVITY"), [&](DvnActivitySet& row) {
        DvnfEntity& activity = m_pCoreData->GetEntityByOID(DvnfString("Activity"), DvnfString(row.m_AID.c_str()));
        if (!activity.IsValid() || activity.State() <= DvnfObject::StateDeleted) return;
        DvnfAttributeData attributes = activity.AttributeData();
        ActivityInitSetting(attributes, &activity, &row);
        if (row.m_ACTIVITY_KIND == KindBlock && withBlocks && blocks) {
            found.emplace_back(row.m_NAME.str(), &activity);
            activity.SetFlags(DvnfEntity::FlagBlockContent);
        }
        if (withAttributes) {
            ActivityAttributes(attributes, &activity, &row);
            activity.SetFlags(DvnfEntity::FlagAttributesComplete);
            ActivityContainers(attributes, &activity, row.m_AID);
            activity.SetFlags(DvnfEntity::FlagContainersComplete);
        }
    });
    // Blocks are taken in the order of their names.
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [name, block] : found) blocks->push_back(block);
}

void DvnConvCoreDbFe::ActivityInitSetting(DvnfAttributeData attributes, DvnfEntity* activity, DvnActivitySet* row) {
    if (activity->IsValid()) activity->Name(DvnfString(row->m_NAME.c_str()));
    DvnfAttributeData exit = attributes("Exit");
    if (!row->IsFieldNull(&row->m_EXIT_CONDITION)) {
        exit("Condition") = row->m_EXIT_CONDITION.c_str();
        PutPair(Value(*row, row->m_EXIT_COND_XPOS), Value(*row, row->m_EXIT_COND_YPOS), exit("ConditionPos"));
    }
    if (row->m_ACTIVITY_KIND == KindProcess) attributes("Start")("Manual") = true;
    if (!row->IsFieldNull(&row->m_START_CONDITION))
        attributes("Start")("Condition") = row->m_START_CONDITION == 1 ? "OR" : "AND";
    CopyText(*row, row->m_USER_DEFINED_ICON, attributes("Icon"));
    LinkByOID(*activity, "ActivityHasInputStr", "DataStructure", *row, row->m_INPUT_DS);
    LinkByOID(*activity, "ActivityHasOutputStr", "DataStructure", *row, row->m_OUTPUT_DS);
    DvnfAttributeData layout = attributes("Layout");
    CopyLong(*row, row->m_XPOS, layout("Xpos"));
    CopyLong(*row, row->m_YPOS, layout("Ypos"));
    CopyLong(*row, row->m_HEIGHT, layout("Height"));
    CopyLong(*row, row->m_WIDTH, layout("Width"));
    PutPair(Value(*row, row->m_NAME_XPOS), Value(*row, row->m_NAME_YPOS), attributes("NamePos"));
}

int DvnConvCoreDbFe::ActivityAttributes(DvnfAttributeData attributes, DvnfEntity* activity, DvnActivitySet* row) {
    ActivitySetting(attributes, activity, row);
    const CString aid = row->m_AID;
    switch (row->m_ACTIVITY_KIND) {
        case KindProgram:
        case KindInfo:
        case KindProcess: {
            // The extent row is read once for both.
            DvnActivityExtentSet extent(m_pDatabase);
            extent.Open(CRecordset::snapshot, SelectFrom("ACTIVITY_EXTENT", "AID", aid), CRecordset::readOnly);
            ActivityExtSetting(attributes, activity, aid, extent);
            Done_by(activity, aid, extent);
            extent.Close();
            if (row->m_ACTIVITY_KIND == KindProgram) ProgramActivity(attributes, aid);
            if (row->m_ACTIVITY_KIND == KindProcess) ProcessActivity(attributes, aid);
            break;
        }
        case KindBundle: BundleActivity(attributes, activity, aid); break;
        default: break;
    }
    return LevelOk;
}

void DvnConvCoreDbFe::ActivitySetting(DvnfAttributeData attributes, DvnfEntity*, DvnActivitySet* row) {
    CopyTexts(*row, row->m_DESCRIPTION, row->m_DOCUMENTATION, attributes);
}

// ------------------------------------------------------------------ extent

namespace {

using E = DvnActivityExtentSet;
const std::pair<const char*, long E::*> kActivityDefaults[] = {
    {"CheckoutPossible", &E::m_CHECKOUT_POSSIBLE},         {"EnforceImmedExecution", &E::m_ENFORCE_IM_EXEC},
    {"IncludeProcessAssignment", &E::m_INCL_PRC_ASSGMNT},  {"PreferLocalUsers", &E::m_PREFER_LOCAL_USERS},
    {"PreferNonAbsentUsers", &E::m_PREFER_NABSENT_USR},    {"SelectLeastWorkload", &E::m_SELECT_LEAST_WRKLD},
    {"Substitution", &E::m_SUBSTITUTION},                  {"NotificationSubstitution", &E::m_USE_SUBST_FOR_NOT},
    {"DuplicateNotification", &E::m_SECOND_NOTIFICAT},
};

}  // namespace

void DvnConvCoreDbFe::ActivityExtSetting(DvnfAttributeData attributes, DvnfEntity* activity, CString const& aid,
                                         DvnActivityExtentSet& extent) {
    EachRow(extent, [&](DvnActivityExtentSet& row) {
        attributes("Start")("Manual") = IsOne(row, row.m_START_OPTION);
        const bool exitManual = IsOne(row, row.m_EXIT_OPTION);
        attributes("Exit")("Manual") = exitManual;
        if (exitManual) attributes("Exit").Reset("Condition");
        DvnfAttributeData defaults = attributes("ActivityDefault");
        for (const auto& [attribute, column] : kActivityDefaults)
            if (!row.IsFieldNull(&(row.*column))) defaults(attribute) = row.*column == 1;
        CopyText(row, row.m_AUDIT_EVENTS_TO_DB, defaults("AuditFilterDB"));
        CopyText(row, row.m_AUDIT_EVENTS_TO_HX, defaults("AuditFilterHX"));

        // Priority: from the input container, from a member, or a number.
        DvnfAttributeData priority = attributes("Priority");
        if (!row.IsFieldNull(&row.m_PRIO_FROM_INPUT) && row.m_PRIO_FROM_INPUT != 0) {
            priority("PriorityType") = 0L;
        } else if (!row.IsFieldNull(&row.m_PRIO_CONT_MEMBER)) {
            priority("PriorityType") = 1L;
            priority("FromInput") = row.m_PRIO_CONT_MEMBER.c_str();
        } else if (!row.IsFieldNull(&row.m_PRIORITY)) {
            priority("PriorityType") = 2L;
            priority("Number") = row.m_PRIORITY;
        }

        // Notification.
        if (IsOne(row, row.m_NOTIF_FROM_INPUT)) {
            attributes("NotifyType") = 4L;
        } else {
            const long target = row.IsFieldNull(&row.m_FIRST_NOT_TARGET) ? 0 : row.m_FIRST_NOT_TARGET;
            if (target >= 1 && target <= 3) attributes("NotifyType") = target;
            if (target == 4) {
                attributes("NotifyType") = 5L;
                if (!row.IsFieldNull(&row.m_FIRST_NOT_CONT))
                    attributes("NotifyPersonFromInput") = row.m_FIRST_NOT_CONT.c_str();
                else if (!LinkByOID(*activity, "NotifiedPerson", "Person", row, row.m_FIRST_NOT_ASSGMNT))
                    attributes.Reset("NotifyType");
            }
            if (!row.IsFieldNull(&row.m_NOT_CONT_MEMBER))
                attributes("NotificationFromInput") = row.m_NOT_CONT_MEMBER.c_str();
            else if (!row.IsFieldNull(&row.m_NOTIFICATION_INTVL))
                attributes("NotifyDuration")("Seconds") = row.m_NOTIFICATION_INTVL;
            else
                attributes.Reset("NotifyType");
            if (!row.IsFieldNull(&row.m_SCND_NOT_CONT_MBR))
                attributes("DecisionFromInput") = row.m_SCND_NOT_CONT_MBR.c_str();
            else
                CopyLong(row, row.m_SECOND_NOT_DURAT, attributes("DecisionDuration")("Seconds"));
        }

        // Expiration.
        if (!row.IsFieldNull(&row.m_EXPIR_CONT_MEMBER))
            attributes("ExpirationFromInput") = row.m_EXPIR_CONT_MEMBER.c_str();
        else
            CopyLong(row, row.m_EXPIRATION_INTVL, attributes("ExpirationDuration")("Seconds"));
    });
    // Support tools, in the order of the programs' names.
    LinkEach<DvnProgramSet>(*activity, "HasSupportTool", "Program", "PROGRAM", "PROGRAM_ID", &DvnProgramSet::m_NAME,
                            ColumnOf(SelectFrom("ACT_HAS_SUP_TOOL", "AID", aid), &DvnSupportToolsSet::m_PROGRAM_ID));
}

// ------------------------------------------------------------------ staff

void DvnConvCoreDbFe::Done_by(DvnfEntity* activity, CString aid, DvnActivityExtentSet& extent) {
    // What a second read would add again goes first.
    activity->AttributeData().Reset("DoneBy");
    DvnfAttributeData doneBy = activity->AttributeData()("DoneBy");
    EachRow(extent, [&](DvnActivityExtentSet& row) {
        const long by = row.IsFieldNull(&row.m_DONE_BY) ? 0 : row.m_DONE_BY;
        if (by < 1 || by > 11) return;
        auto roles = [&](const char* link) {
            LinkEach<DvnRoleSet>(*activity, link, "Role", "ROLE", "ROLE_ID", &DvnRoleSet::m_NAME,
                                 ColumnOf(SelectFrom("ACTIVITY_BY_ROLE", "AID", aid), &DvnActivityByRoleSet::m_ROLE));
        };
        auto path = [&](const CString& column, const char* attribute) {
            if (row.IsFieldNull(&column) || column.IsEmpty()) return;
            const CString text = StarterPath(column);
            if (text.IsEmpty()) return;
            doneBy("AssignType") = by;
            doneBy(attribute) = text.c_str();
        };
        switch (by) {
            case 1:
                doneBy("AssignType") = 1L;
                TextsInOrder<DvnActByRoleContMSet>("ACT_BY_ROLE_F_CONT", "AID", aid,
                                                   &DvnActByRoleContMSet::m_CONTAINER_MEMBER,
                                                   doneBy("MembersFromInput"));
                roles("DoneByRoleMember");
                if (!row.IsFieldNull(&row.m_ORG_CONT_MEMBER))
                    doneBy("OrganizationFromInput") = row.m_ORG_CONT_MEMBER.c_str();
                else
                    LinkByOID(*activity, "DoneByOrg", "Organization", row, row.m_ORGANIZATION);
                if (!row.IsFieldNull(&row.m_INCL_CHILD_ORG) && row.m_INCL_CHILD_ORG >= 1 && row.m_INCL_CHILD_ORG <= 3)
                    doneBy("IncludeType") = row.m_INCL_CHILD_ORG;
                CopyLong(row, row.m_MIN_LEVEL, doneBy("LevelFrom"));
                CopyLong(row, row.m_MAX_LEVEL, doneBy("LevelTo"));
                CopyText(row, row.m_MIN_LVL_CONT_MBR, doneBy("LevelFromFromInput"));
                CopyText(row, row.m_MAX_LVL_CONT_MBR, doneBy("LevelToFromInput"));
                break;
            case 2: {
                doneBy("AssignType") = 2L;
                std::vector<CString> members = ColumnOf(SelectFrom("ACT_BY_ROLE_F_CONT", "AID", aid),
                                                        &DvnActByRoleContMSet::m_CONTAINER_MEMBER);
                std::sort(members.begin(), members.end(),
                          [](const CString& a, const CString& b) { return a.str() < b.str(); });
                if (!members.empty()) doneBy("CoordinatorFromInput") = members.front().c_str();
                roles("DoneByRoleCoordinator");
                break;
            }
            case 3: {
                DvnfAttributeData fromInput = doneBy("PersonsFromInput");
                TextsInOrder<DvnActByPersonContMSet>("ACT_BY_PERS_F_CONT", "AID", aid,
                                                     &DvnActByPersonContMSet::m_CONTAINER_MEMBER, fromInput);
                const std::vector<CString> persons =
                    ColumnOf(SelectFrom("ACTIVITY_BY_PERSON", "AID", aid), &DvnActivityByPersonSet::m_PERSON_ID);
                LinkEach<DvnPersonSet>(*activity, "DoneByPerson", "Person", "PERSON", "PERSON_ID",
                                       &DvnPersonSet::m_USERID, persons);
                if (fromInput.NumberOfElements() > 0 || !persons.empty()) doneBy("AssignType") = 3L;
                break;
            }
            case 8:
                path(row.m_STARTER_OF_AID, "StarterOf");
                break;
            case 9:
                path(row.m_MANAGER_OF_S_AID, "MgrStarterOf");
                break;
            case 10:
                path(row.m_XCL_STARTER_OF_AID, "NotStarterOf");
                break;
            case 11:
                doneBy("AssignType") = 11L;
                if (!row.IsFieldNull(&row.m_ORG_CONT_MEMBER))
                    doneBy("MgrOrganizationFromInput") = row.m_ORG_CONT_MEMBER.c_str();
                else
                    LinkByOID(*activity, "DoneByMgrOrganization", "Organization", row, row.m_ORGANIZATION);
                doneBy("IncludeType") = IsOne(row, row.m_INCL_CHILD_ORG) ? 3L : 1L;
                break;
            default:  // 4 to 7
                doneBy("AssignType") = by;
                break;
        }
    });
}

CString DvnConvCoreDbFe::StarterPath(CString const& aid) {
    CString path;
    CString key = aid;
    // The blocks around it, innermost first; a missing row ends the walk.
    for (int depth = 0; depth < 64 && !key.IsEmpty(); ++depth) {
        DvnActivitySet rs(m_pDatabase);
        CString next;
        const long found = ReadRows(rs, SelectFrom("ACTIVITY", "AID", key), [&](DvnActivitySet& row) {
            path = path.IsEmpty() ? row.m_NAME : row.m_NAME + "." + path;
            next = row.IsFieldNull(&row.m_INSIDE_BLOCK) ? CString() : row.m_INSIDE_BLOCK;
        });
        if (found == 0) break;
        key = next;
    }
    return path;
}

// ------------------------------------------------------------------ containers

void DvnConvCoreDbFe::ActivityContainers(DvnfAttributeData attributes, DvnfEntity*, CString const& aid) {
    try {
        ContainerValues<DvnActContainerSet>("ACT_CONTAINER", "AID", aid, attributes);
    } catch (CDBException* e) {
        ReportDbException("Exception In ActivityContainers: rc =", e);
    }
}

// ------------------------------------------------------------------ kinds

template <class Set, class Fill>
void DvnConvCoreDbFe::KindRow(DvnfAttributeData& attributes, const char* as, const char* table, CString const& aid,
                              Fill fill) {
    DvnfEntity& object = Implementation(attributes, as);
    Set rs(m_pDatabase);
    ReadRows(rs, SelectFrom(table, "AID", aid), [&](Set& row) { fill(row, object); });
}

void DvnConvCoreDbFe::ProgramActivity(DvnfAttributeData& attributes, CString const& aid) {
    KindRow<DvnProgramActivitySet>(attributes, "AsProgram", "PROGRAM_ACTIVITY", aid, [&](DvnProgramActivitySet& row,
                                                                                         DvnfEntity& program) {
        DvnfAttributeData target = program.AttributeData();
        LinkByOID(program, "ReferencesProgram", "Program", row, row.m_PROGRAM_ID);
        // The server is kept by its key: its name (server.system.group)
        // comes from the lookups, which know the key.
        if (LinkByOID(program, "ReferencesPEServer", "Server", row, row.m_PE_SERVER)) {
            DvnfEntity& server =
                m_pCoreData->GetEntityByOID(DvnfString("Server"), DvnfString(row.m_PE_SERVER.c_str()), false);
            if (server.IsValid()) server.AttributeData()("Type") = 7L;
        }
        CopyText(row, row.m_PES_CONT_MEMBER, target("PEServerFromInput"));
        if (!row.IsFieldNull(&row.m_SYNCHRONIZATION)) target("Synchronization") = row.m_SYNCHRONIZATION == 2 ? 1L : 2L;
    });
}

void DvnConvCoreDbFe::ProcessActivity(DvnfAttributeData& attributes, CString const& aid) {
    KindRow<DvnProcessActivitySet>(attributes, "AsProcess", "PROCESS_ACTIVITY", aid, [&](DvnProcessActivitySet& row,
                                                                                         DvnfEntity& process) {
        DvnfAttributeData target = process.AttributeData();
        LinkByName(process, "ReferencesProcess", "Process", row, row.m_PROCESS);
        CopyText(row, row.m_PROC_CONT_MEMBER, target("ProcessFromInput"));
        LinkByOID(process, "ReferencesSystem", "System", row, row.m_SYSTEM);
        CopyText(row, row.m_SYSTEM_CONT_MEMBER, target("SystemFromInput"));
    });
}

void DvnConvCoreDbFe::BundleActivity(DvnfAttributeData& attributes, DvnfEntity* activity, CString const& aid) {
    KindRow<DvnBundleActivitySet>(attributes, "AsBundle", "BUNDLE_ACTIVITY", aid, [&](DvnBundleActivitySet& row,
                                                                                      DvnfEntity& bundle) {
        DvnfAttributeData target = bundle.AttributeData();
        // Kept as the store writes it: 2 is 2, anything else 1.
        target("RestartOption") = !row.IsFieldNull(&row.m_RESTART_OPTION) && row.m_RESTART_OPTION == 2 ? 2L : 1L;
        target("PromptForPlanning") = !row.IsFieldNull(&row.m_PROMPT_FOR_PLANG) && row.m_PROMPT_FOR_PLANG == 1;
        if (const auto mode = Value(row, row.m_PLANNING_MODE); mode && *mode >= 1 && *mode <= 3)
            target("PlanningMode") = *mode;
        if (const auto assignment = Value(row, row.m_ASGNMNT_ALGORITHM);
            assignment && *assignment >= 1 && *assignment <= 2)
            target("Assignment") = *assignment;
        target("InstantiatingMember") = row.m_INSTANTIATION_FLD.c_str();
        if (!row.IsFieldNull(&row.m_NMBR_OF_INSTANCES))
            target("NrOfInstances") = row.m_NMBR_OF_INSTANCES;
        else
            CopyText(row, row.m_NMBR_OF_INST_MBR, target("NrOfInstancesFromInput"));
        if (const auto rc = Value(row, row.m_RETUN_CODE_SETTING); rc && *rc >= 1 && *rc <= 3)
            target("RcCreation") = 3 - *rc;  // stored 3, 2, 1 for 0, 1, 2
        if (row.IsFieldNull(&row.m_PATTERN_ACTIVITY) || row.m_PATTERN_ACTIVITY.IsEmpty()) return;
        DvnfAttributeData diagram = target("Diagram");
        Activities(row.m_PATTERN_ACTIVITY, CString(), activity, diagram, true, true, true, nullptr);
    });
}

void DvnConvCoreDbFe::BlockActivity(DvnfAttributeData& attributes, DvnfEntity* activity, CString const& aid,
                                    CString const& pid, bool withAttributes, bool withBlocks,
                                    std::vector<DvnfEntity*>* blocks) {
    DvnfEntity& block = Implementation(attributes, "AsBlock");
    if (!block.IsValid()) return;
    DvnfAttributeData target = block.AttributeData();
    DvnBlockActivitySet rs(m_pDatabase);
    rs.m_strFilter = CString("AID = ") + Literal(DvnString(aid.c_str()));
    ReadRows(rs, Table("BLOCK_ACTIVITY"), [&](DvnBlockActivitySet& row) { Graphics(row, target("WindowLayout")); });
    // Read anew: a second read (the editor's) does not double what it holds.
    target.Reset("Diagram");
    DvnfAttributeData diagram = target("Diagram");
    DiagramBefore(pid, aid, activity, diagram, withAttributes, withBlocks, blocks);
    DiagramAfter(pid, aid, activity, diagram, withAttributes);
}
