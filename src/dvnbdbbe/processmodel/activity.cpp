// Store of the activities of a diagram, in two passes: the ACTIVITY row (and
// its kind) for every activity first, so that each has its key; then what
// names other activities or hangs below the row: ACTIVITY_EXTENT, the staff
// assignment, the container values and the support tools.
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// Each valid entity of a set of the diagram, up to the first element that
// is not valid.
template <class Visit>
void ForEachElement(const DvnfAttributeDataReader& diagram, const char* set, Visit visit) {
    DvnfDataSetIterator elements = diagram(set).ElementsOfSet();
    for (DvnfAttributeDataReader element = elements.First(); element.IsValid(); element = elements.Next())
        visit(element.AsEntity());
}

// Whether anything in a diagram, inner blocks included, has something to
// save: an element in state 1, 2 or 4.
bool HasChanges(const DvnfAttributeDataReader& diagram) {
    bool changed = false;
    for (const char* set : {"Activities", "Sources", "Sinks", "ControlConnectors", "DataConnectors"}) {
        ForEachElement(diagram, set, [&](DvnfEntity& element) {
            const int state = element.State();
            if (state == DvnfObject::StateDeleted || state == DvnfObject::StateNew ||
                state == DvnfObject::StateChanged)
                changed = true;
            const DvnfEntity& block =
                static_cast<const DvnfEntity&>(element).AttributeData()("Implementation")("AsBlock").AsEntity();
            if (!changed && block.IsValid()) changed = HasChanges(block.AttributeData()("Diagram"));
        });
    }
    return changed;
}

void SetLong(CRecordset& row, long& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        member = value.AsLong(0);
    else
        row.SetFieldNull(&member);
}

}  // namespace

// ------------------------------------------------------------------ diagram

int DvnConvCoreDbBe::SaveDiagram(CDatabase& db, DvnfAttributeDataReader diagram, DvnfEntity& process,
                                 const CString& blockAid) {
    int level = LevelOk;
    ForEachElement(diagram, "Activities", [&](DvnfEntity& activity) {
        if (!activity.IsValid() || activity.State() == StateNone) return;
        db.BeginTrans();
        level = std::max(level, SaveActivity(db, activity, process, blockAid));
        db.CommitTrans();
    });
    // Sources, sinks and connectors, after every activity of the diagram has
    // its row, and the text annotations, in one transaction.
    using Save = int (DvnConvCoreDbBe::*)(CDatabase&, DvnfEntity&, DvnfEntity&, const CString&);
    const std::pair<const char*, Save> parts[] = {{"Sources", &DvnConvCoreDbBe::SaveSource},
                                                  {"Sinks", &DvnConvCoreDbBe::SaveSink},
                                                  {"ControlConnectors", &DvnConvCoreDbBe::SaveControlConnector},
                                                  {"DataConnectors", &DvnConvCoreDbBe::SaveDataConnector}};
    db.BeginTrans();
    DiagramAIDs aids{process.OID().c_str(), blockAid, false, {}};
    const DiagramAIDsInUse inUse(m_diagramAIDs, aids);
    for (const auto& [set, save] : parts) {
        ForEachElement(diagram, set, [&](DvnfEntity& part) {
            if (!part.IsValid() || part.State() == StateNone) return;
            level = std::max(level, (this->*save)(db, part, process, blockAid));
            ResetState(part);
        });
    }
    level = std::max(level, SaveTextAnnotations(db, diagram, process.OID().c_str(), blockAid));
    db.CommitTrans();
    return level;
}

int DvnConvCoreDbBe::SaveDiagram2(CDatabase& db, DvnfAttributeDataReader diagram, DvnfEntity& process,
                                  const CString& blockAid) {
    const CString pid = process.OID().c_str();
    int level = LevelOk;
    // The keys of the diagram's activities, read once when the first is
    // needed: their rows are all there after the first pass.
    DiagramAIDs aids{pid, blockAid, false, {}};
    const DiagramAIDsInUse inUse(m_diagramAIDs, aids);
    ForEachElement(diagram, "Activities", [&](DvnfEntity& activity) {
        if (!activity.IsValid() || activity.State() <= StateDeleted) return;
        const CString aid = DiagramAID(db, CString(activity.Name().c_str()), pid, blockAid);
        // No row: its first pass failed and has said so.
        if (aid.IsEmpty()) return;
        db.BeginTrans();
        level = std::max(level, SaveActivity2(db, activity, process, blockAid, aid));
        db.CommitTrans();
    });
    return level;
}

// ------------------------------------------------------------------ first pass

int DvnConvCoreDbBe::SaveActivity(CDatabase& db, DvnfEntity& activity, DvnfEntity& process,
                                  const CString& blockAid) {
    const CString aid = activity.OID().c_str();
    const CString pid = process.OID().c_str();
    const DvnString name = activity.Name();
    std::cout << "Activity " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Activity " << name << "...\n");
    if (!activity.IsValid()) {
        DVN_TRACE(1, 2, "Activity is not defined");
        return LevelError;
    }

    // By name in an import (the keys of a file mean nothing to the
    // database), by key in the editor; inside the block or at the top.
    CString filter = CString("PID = ") + Quoted(pid);
    filter += blockAid.IsEmpty() ? CString(" AND INSIDE_BLOCK IS NULL") : " AND INSIDE_BLOCK = " + Quoted(blockAid);
    filter += m_bCallerData ? " AND AID = " + Quoted(aid) : " AND NAME = " + Quoted(name);

    DvnActivitySet row(&db);
    row.m_strFilter = filter;
    try {
        row.Open(CRecordset::snapshot, Table("ACTIVITY"), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", "ACTIVITY", &row);
    }
    if (!row.CanAppend()) {
        row.Close();
        Report(51311, name);
        return LevelError;
    }

    int level = LevelOk;
    try {
        if (row.IsEOF()) {
            if (activity.State() == StateDeleted) {
                row.Close();
                return LevelOk;
            }
            row.AddNew();
            activity.State(StateNew);
            if (m_bCallerData && process.IsValid() && process.State() == StateUnchanged)
                process.State(StateChanged);
        } else {
            if (!m_bCallerData) {
                Report(51079, name);
                row.Close();
                return LevelOk;
            }
            if (process.IsValid() && process.State() == StateUnchanged && activity.State() != StateUnchanged)
                process.State(StateChanged);
            row.MoveFirst();
            if (activity.State() == StateDeleted) {
                // One Delete: the schema removes what hangs below it.
                try {
                    row.Delete();
                } catch (CDBException* e) {
                    return ReportDbException(e, "deleting record in", "ACTIVITY", &row);
                }
                Report(51177, name);
                row.Close();
                return LevelOk;
            }
            if (activity.State() == StateChanged || activity.State() == StateNew) row.Edit();
        }
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", "ACTIVITY", &row);
    }

    long kind = 0;
    try {
        kind = ReadActivityInitAttributes(db, activity, row, pid, blockAid, level);
    } catch (CDBException* e) {
        ReportDbException(e, "reading", "ACTIVITY", &row);
        Report(51311, name);
        return LevelError;
    }
    const bool complete = activity.IsAttributeDataAttrComplete();
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(activity).AttributeData();
    if (activity.State() != StateUnchanged) {
        if (complete) level = std::max(level, ReadActivityAttributes(db, activity, row));
        try {
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", "ACTIVITY", &row);
            Report(51311, name);
            return LevelError;
        }
        Report(activity.State() == StateNew ? 51015 : 51047, name);
        if (row.IsOpen()) row.Close();
        // The row of the kind; the activity's name is the one its messages give.
        const DvnfAttributeDataReader implementation = attributes("Implementation");
        if (complete && kind == ProgramType)
            level = std::max(level, SaveProgramActivity(db, implementation("AsProgram").AsEntity(), aid, name));
        if (complete && kind == ProcessType)
            level = std::max(level, SaveProcessActivity(db, implementation("AsProcess").AsEntity(), aid));
        if (kind == BundleType)
            level = std::max(level, SaveBundleActivity(db, implementation("AsBundle").AsEntity(), process, aid, name));
    }
    if (row.IsOpen()) row.Close();
    const unsigned blockBits = DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagBlockContent;
    if (kind == BlockType && (activity.Flags() & blockBits)) {
        // The block takes the activity's name and what is complete of it.
        DvnfEntity& block = attributes("Implementation")("AsBlock").AsEntity();
        if (block.IsValid()) {
            block.SetFlags(activity.Flags() & blockBits);
            block.Name(DvnfString(name));
        }
        level = std::max(level, SaveBlock(db, block, process, aid));
    }
    return level;
}

int DvnConvCoreDbBe::ReadActivityAttributes(CDatabase&, DvnfEntity& activity, DvnActivitySet& row) {
    SetDescriptionAndDocumentation(row, row.m_DESCRIPTION, row.m_DOCUMENTATION,
                                   static_cast<const DvnfEntity&>(activity).AttributeData());
    return LevelOk;
}

long DvnConvCoreDbBe::ReadActivityInitAttributes(CDatabase& db, DvnfEntity& activity, DvnActivitySet& row,
                                                 const CString& pid, const CString& blockAid, int& level) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(activity).AttributeData();
    const long type = attributes("Implementation")("Type").AsLong(0);
    switch (type) {
        case ProgramType: row.m_ACTIVITY_KIND = 1; break;
        case ProcessType: row.m_ACTIVITY_KIND = 3; break;
        case BlockType: row.m_ACTIVITY_KIND = 4; break;
        case BundleType: row.m_ACTIVITY_KIND = 5; break;
        default: row.m_ACTIVITY_KIND = 2; break;
    }
    int structures = LevelOk;
    DvnStored::SetText(row, row.m_INPUT_DS,
                       StructureKey(db, activity, "ActivityHasInputStr", "InputContainer", structures, true).str());
    DvnStored::SetText(row, row.m_OUTPUT_DS,
                       StructureKey(db, activity, "ActivityHasOutputStr", "OutputContainer", structures, true).str());
    level = std::max(level, structures);
    row.m_PID = pid;
    row.m_AID = activity.OID().c_str();
    row.m_NAME = activity.Name().c_str();

    const DvnfAttributeDataReader namePos = attributes("NamePos");
    if (namePos.IsDefined()) {
        row.m_NAME_XPOS = namePos("Xpos").AsLong(0);
        row.m_NAME_YPOS = namePos("Ypos").AsLong(0);
    } else {
        row.SetFieldNull(&row.m_NAME_XPOS);
        row.SetFieldNull(&row.m_NAME_YPOS);
    }
    const DvnfAttributeDataReader layout = attributes("Layout");
    SetLong(row, row.m_XPOS, layout("Xpos"));
    SetLong(row, row.m_YPOS, layout("Ypos"));
    SetLong(row, row.m_WIDTH, layout("Width"));
    SetLong(row, row.m_HEIGHT, layout("Height"));

    const DvnfAttributeDataReader exit = attributes("Exit");
    row.SetFieldNull(&row.m_EXIT_CONDITION);
    row.SetFieldNull(&row.m_EXIT_COND_XPOS);
    row.SetFieldNull(&row.m_EXIT_COND_YPOS);
    if (exit("Condition").IsDefined())
        DvnStored::SetText(row, row.m_EXIT_CONDITION,
                           DvnStored::Cut(exit("Condition").AsString("").str(), DvnStored::LongTextChars));
    if (exit("ConditionPos").IsDefined()) {
        row.m_EXIT_COND_XPOS = exit("ConditionPos")("Xpos").AsLong(0);
        row.m_EXIT_COND_YPOS = exit("ConditionPos")("Ypos").AsLong(0);
    }

    const DvnfAttributeDataReader start = attributes("Start");
    row.m_START_CONDITION = start.IsValid() && start("Condition").AsString("") == "AND" ? 2 : 1;

    row.SetFieldNull(&row.m_USER_DEFINED_ICON);
    level = std::max(level, StoreIcon(row, row.m_USER_DEFINED_ICON, attributes("Icon")));
    DvnStored::SetText(row, row.m_INSIDE_BLOCK, blockAid.str());
    return type;
}

// ------------------------------------------------------------------ second pass

int DvnConvCoreDbBe::SaveActivity2(CDatabase& db, DvnfEntity& activity, DvnfEntity& process,
                                   const CString& blockAid, const CString& aid) {
    const DvnString name = activity.Name();
    std::cout << "Activity " << name << " second pass ...\n" << std::endl;
    DVN_TRACE(3, 1, "Activity " << name << " second pass ...\n");
    if (!activity.IsValid()) return LevelError;
    if (activity.State() == StateDeleted) return LevelOk;

    const CString pid = process.OID().c_str();
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(activity).AttributeData();
    const long type = attributes("Implementation")("Type").AsLong(0);
    const bool containers = activity.IsAttributeDataContainerComplete();
    int level = LevelOk;
    auto writeContainers = [&] {
        int result = LevelOk;
        if (activity.State() != StateNew) result = DeleteActContainer(db, aid);
        return std::max(result, ReadActivityContainers(db, attributes, aid));
    };

    if (type == BlockType) {
        // A block's containers are the activity's.
        DvnfEntity& block = attributes("Implementation")("AsBlock").AsEntity();
        if (block.IsValid()) block.Name(DvnfString(name));
        level = std::max(level, SaveBlock2(db, block, process, aid));
        if (containers) level = std::max(level, writeContainers());
    } else if (activity.State() != StateUnchanged && activity.IsAttributeDataAttrComplete()) {
        DvnActivityExtentSet row(&db);
        row.m_strFilter = CString("AID = ") + Quoted(aid);
        try {
            row.Open(CRecordset::snapshot, Table("ACTIVITY_EXTENT"), CRecordset::none);
        } catch (CDBException* e) {
            return ReportDbException(e, "opening", "ACTIVITY_EXTENT", &row);
        }
        if (!row.CanAppend()) {
            row.Close();
            Report(51311, name);
            return LevelError;
        }
        bool inserting = row.IsEOF();
        try {
            if (inserting) {
                row.AddNew();
            } else {
                row.MoveFirst();
                row.Edit();
            }
            level = std::max(level, ReadActivityExtentAttributes(db, activity, row, pid, blockAid, aid));
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", "ACTIVITY_EXTENT", &row);
            if (inserting)
                DVN_TRACE(1, 2, "Activity_extent not added");
            else
                Report(51311, name);
            return LevelError;
        }
        row.Close();
        if (containers) level = std::max(level, writeContainers());

        // Support tools: found by name, else by key.
        if (activity.State() != StateNew) level = std::max(level, DeleteActSupportTools(db, aid));
        DvnfLinkTypeIterator tools = activity.LinksOfType(DvnfString("HasSupportTool"));
        for (const DvnfLink* link = &tools.First(); link->IsValid(); link = &tools.Next()) {
            DvnfEntity& program = link->Target();
            DvnProgramSet programs(&db);
            CString key = m_processKeys.Find(programs, program.Name(), [&] {
                return programs.GetProgramID(Quoted(program.Name()), m_strTablePrefix, false);
            });
            bool found = !key.IsEmpty();
            if (!found) key = program.OID().c_str();
            try {
                if (!found && !key.IsEmpty()) found = !programs.GetName(key, m_strTablePrefix, false).IsEmpty();
            } catch (CDBException* e) {
                level = std::max(level, ReportDbException(e, "opening", "PROGRAM"));
                continue;
            }
            if (!found) {
                Report(51105, program.Name());
                continue;
            }
            level = std::max(level, SaveActSupportTools(db, key, aid));
        }
    }
    if (type == BundleType)
        level = std::max(level, SavePatternActivity2(db, attributes("Implementation")("AsBundle").AsEntity(), process,
                                                     aid));
    ResetState(activity);
    return level;
}
