// Store of activity kinds: beside its ACTIVITY row, a program, process,
// bundle or block activity has a row in the table of its kind, under the
// activity's key. A block also owns a diagram, stored through SaveDiagram
// with the block's key, so that blocks nest to any depth; a bundle's pattern
// activity is stored inside the bundle (docs/store.md, "Bundles").
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvntoposets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// The name of a link's target, else the name the table has for its key;
// empty when the target is not valid.
template <class Set>
DvnString TargetName(CDatabase& db, DvnfEntity& target, const CString& prefix) {
    if (!target.IsValid()) return DvnString("");
    DvnString name = target.Name();
    if (name.IsEmpty() && target.HasOID()) {
        Set set(&db);
        name = set.GetName(CString(target.OID().c_str()), prefix, false);
    }
    return name;
}

// A choice among 1 .. highest, kept as it is; 1 when not defined. Any other
// value leaves the column as it is.
void SetChoice(long& member, const DvnfAttributeDataReader& value, long highest) {
    if (!value.IsDefined()) {
        member = 1;
        return;
    }
    const long given = value.AsLong(0);
    if (given >= 1 && given <= highest) member = given;
}

// The first activity of a bundle's diagram: its pattern activity.
DvnfEntity& PatternActivity(DvnfEntity& bundle) {
    DvnfDataSetIterator activities =
        static_cast<const DvnfEntity&>(bundle).AttributeData()("Diagram")("Activities").ElementsOfSet();
    const DvnfAttributeDataReader first = activities.First();
    return first.IsValid() ? first.AsEntity() : DvnfEntity::undefined;
}

}  // namespace

// ------------------------------------------------------------------ the frame

template <class Set>
int DvnConvCoreDbBe::SaveKindRow(CDatabase& db, const char* table, const char* notAdded, const CString& aid,
                                 const std::function<int(Set&, bool& write)>& fill) {
    Set row(&db);
    row.m_strFilter = CString("AID = ") + Quoted(aid);
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", table, &row);
    }
    if (!row.CanAppend()) {
        row.Close();
        DVN_TRACE(1, 2, notAdded);
        return LevelError;
    }
    int level = LevelOk;
    try {
        // The snapshot stands on its first row: one row per key.
        if (row.IsEOF())
            row.AddNew();
        else
            row.Edit();
        row.m_AID = aid;
        bool write = true;
        level = fill(row, write);
        if (!write) {
            row.Close();
            return level;
        }
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", table, &row);
        DVN_TRACE(1, 2, notAdded);
        return LevelError;
    }
    row.Close();
    return level;
}

// ------------------------------------------------------------------ program

int DvnConvCoreDbBe::SaveProgramActivity(CDatabase& db, DvnfEntity& program, const CString& aid,
                                         const DvnString& activity) {
    return SaveKindRow<DvnProgramActivitySet>(
        db, "PROGRAM_ACTIVITY", "Program Activity settings not added", aid,
        [&](DvnProgramActivitySet& row, bool& write) {
            // 1. The program, by name (or the name of its key).
            DvnfEntity& target = GetLink(DvnfString("ReferencesProgram"), program, DvnfString("Program"));
            const DvnString name = TargetName<DvnProgramSet>(db, target, m_strTablePrefix);
            CString key;
            if (!name.IsEmpty()) {
                DvnProgramSet programs(&db);
                key = m_processKeys.Find(programs, name,
                                         [&] { return programs.GetProgramID(Quoted(name), m_strTablePrefix, false); });
            }
            if (key.IsEmpty()) {
                Report(51105, name);
                write = false;
                return static_cast<int>(LevelWarning);
            }
            row.m_PROGRAM_ID = key;

            // 2. The server, from its dotted name.
            const CString server = ServerKey(db, GetLinkName(DvnfString("ReferencesPEServer"), program,
                                                             DvnfString("Server")),
                                             activity);
            DvnStored::SetText(row, row.m_PE_SERVER, server.str());

            // 3., 4.
            const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(program).AttributeData();
            SetTextOrNull(row, row.m_PES_CONT_MEMBER, attributes("PEServerFromInput"));
            const DvnfAttributeDataReader synchronization = attributes("Synchronization");
            if (!synchronization.IsDefined())
                row.m_SYNCHRONIZATION = 1;
            else if (const long given = synchronization.AsLong(0); given == 1 || given == 2)
                row.m_SYNCHRONIZATION = 3 - given;
            return static_cast<int>(LevelOk);
        });
}

// The key of a program execution server from its dotted name: "server",
// "server.system" or "server.system.group". Empty, after 51184, when the
// server, its system or the group is not found; empty without a message for
// an empty text.
CString DvnConvCoreDbBe::ServerKey(CDatabase& db, const CString& text, const DvnString& activity) {
    if (text.IsEmpty()) return CString();
    std::vector<CString> parts;
    for (DvnString::Tokenizer tokens(DvnString(text.c_str()), '.', true, false); !tokens.Empty();)
        parts.push_back(CString(tokens.Next().c_str()));

    DvnPEServerSet servers(&db);
    DvnUPEServerSet userServers(&db);
    DvnSystemGroupSet groups(&db);
    CString server, system, group;
    if (parts.size() == 1) {
        server = servers.GetPESIDNoSystem(parts[0], system, m_strTablePrefix);
        if (server.IsEmpty()) server = userServers.GetUPESIDNoSystem(parts[0], system, m_strTablePrefix);
    } else if (parts.size() <= 3) {
        DvnSystemSet systems(&db);
        system = systems.GetSystemID(parts[1], m_strTablePrefix, false);
        if (!system.IsEmpty()) {
            server = servers.GetPESID(parts[0], system, m_strTablePrefix);
            if (server.IsEmpty()) server = userServers.GetUPESID(parts[0], system, m_strTablePrefix);
        }
        if (parts.size() == 3) group = groups.GetSysGrpID(parts[2], m_strTablePrefix);
    }
    // Without a group in the text the server's group is the default one.
    if (parts.size() < 3 && !parts.empty()) {
        group = groups.GetSysGrpID(CString(DefaultSysGrp().c_str()), m_strTablePrefix);
        if (group.IsEmpty()) group = groups.GetDefaultSysGrpID(m_strTablePrefix);
    }
    if (server.IsEmpty() || system.IsEmpty() || group.IsEmpty()) {
        Report(51184, DvnString(text.c_str()), activity);
        return CString();
    }
    return server;
}

// ------------------------------------------------------------------ process

int DvnConvCoreDbBe::SaveProcessActivity(CDatabase& db, DvnfEntity& process, const CString& aid) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(process).AttributeData();
    // 1. The member that names the process at run time, else the process's
    // own name: a name, not a key, since the called process may not be
    // stored yet (or be this one, under its temporary name).
    CString member, name;
    if (attributes("ProcessFromInput").IsDefined())
        member = attributes("ProcessFromInput").AsString("").c_str();
    else
        name = GetLinkName(DvnfString("ReferencesProcess"), process, DvnfString("Process"));
    // 2.
    if (member.IsEmpty() && name.IsEmpty()) {
        DVN_TRACE(1, 2, "reference process or container member not set in TRX");
        return LevelOk;
    }
    // 3. - 5.
    return SaveKindRow<DvnProcessActivitySet>(
        db, "PROCESS_ACTIVITY", "Process Activity settings not added", aid, [&](DvnProcessActivitySet& row, bool&) {
            DvnStored::SetText(row, row.m_PROCESS, name.str());
            DvnStored::SetText(row, row.m_PROC_CONT_MEMBER, name.IsEmpty() ? member.str() : std::string());
            int level = LevelOk;
            DvnfEntity& target = GetLink(DvnfString("ReferencesSystem"), process, DvnfString("System"));
            const DvnString system = TargetName<DvnSystemSet>(db, target, m_strTablePrefix);
            CString key;
            if (!system.IsEmpty()) {
                DvnSystemSet systems(&db);
                key = systems.GetSystemID(CString(system.c_str()), m_strTablePrefix, false);
                if (key.IsEmpty()) {
                    Report(51106, system);
                    level = LevelWarning;
                }
            }
            DvnStored::SetText(row, row.m_SYSTEM, key.str());
            SetTextOrNull(row, row.m_SYSTEM_CONT_MEMBER, attributes("SystemFromInput"));
            return level;
        });
}

// ------------------------------------------------------------------ bundle

int DvnConvCoreDbBe::SaveBundleActivity(CDatabase& db, DvnfEntity& bundle, DvnfEntity& process, const CString& aid,
                                        const DvnString& activity) {
    if (!bundle.IsValid()) {
        DVN_TRACE(1, 2, "Bundle activity is not defined");
        return LevelError;
    }
    const CString pid = process.OID().c_str();
    // The pattern activity is stored inside the bundle first, so that the
    // lookup below finds it.
    DvnfEntity& pattern = PatternActivity(bundle);
    int level = LevelOk;
    if (pattern.IsValid() && !pattern.Name().IsEmpty() && pattern.State() != StateNone)
        level = SaveActivity(db, pattern, process, aid);

    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(bundle).AttributeData();
    return std::max(level, SaveKindRow<DvnBundleActivitySet>(
        db, "BUNDLE_ACTIVITY", "Bundle Activity settings not added", aid, [&](DvnBundleActivitySet& row, bool& write) {
            if (pattern.IsValid() && !pattern.Name().IsEmpty()) {
                DvnActivitySet activities(&db);
                const CString key = activities.GetAID(Quoted(pattern.Name()), pid, aid, m_strTablePrefix);
                if (key.IsEmpty()) {
                    Report(51107, pattern.Name());
                    write = false;
                    return static_cast<int>(LevelWarning);
                }
                row.m_PATTERN_ACTIVITY = key;
            }
            SetChoice(row.m_RESTART_OPTION, attributes("RestartOption"), 2);
            row.m_PROMPT_FOR_PLANG = attributes("PromptForPlanning").AsBool(true) ? 1 : 0;
            SetChoice(row.m_PLANNING_MODE, attributes("PlanningMode"), 3);
            SetChoice(row.m_ASGNMNT_ALGORITHM, attributes("Assignment"), 2);
            const DvnfAttributeDataReader instantiating = attributes("InstantiatingMember");
            if (!instantiating.IsDefined()) {
                Report(51108, activity);
                write = false;
                return static_cast<int>(LevelWarning);
            }
            DvnStored::SetText(row, row.m_INSTANTIATION_FLD, instantiating.AsString("").str());
            const DvnfAttributeDataReader fromInput = attributes("NrOfInstancesFromInput");
            if (fromInput.IsDefined()) {
                DvnStored::SetText(row, row.m_NMBR_OF_INST_MBR, fromInput.AsString("").str());
                row.SetFieldNull(&row.m_NMBR_OF_INSTANCES);
            } else {
                row.m_NMBR_OF_INSTANCES = attributes("NrOfInstances").AsLong(0);
                row.SetFieldNull(&row.m_NMBR_OF_INST_MBR);
            }
            if (const auto setting = ReturnCodeSetting(attributes("RcCreation"))) row.m_RETUN_CODE_SETTING = *setting;
            return static_cast<int>(LevelOk);
        }));
}

int DvnConvCoreDbBe::SavePatternActivity2(CDatabase& db, DvnfEntity& bundle, DvnfEntity& process,
                                          const CString& aid) {
    if (!bundle.IsValid()) return LevelOk;
    DvnfEntity& pattern = PatternActivity(bundle);
    if (!pattern.IsValid() || pattern.State() <= StateDeleted || pattern.Name().IsEmpty()) return LevelOk;
    DvnActivitySet activities(&db);
    const CString key =
        activities.GetAID(Quoted(pattern.Name()), CString(process.OID().c_str()), aid, m_strTablePrefix);
    // No row: its first pass failed and has said so.
    if (key.IsEmpty()) return LevelOk;
    return SaveActivity2(db, pattern, process, aid, key);
}

// ------------------------------------------------------------------ block

int DvnConvCoreDbBe::SaveBlock(CDatabase& db, DvnfEntity& block, DvnfEntity& process, const CString& aid) {
    const DvnString name = block.IsValid() ? DvnString(block.Name()) : DvnString("");
    std::cout << "Block " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Block " << name << "...\n");
    if (!m_bCallerData) Report(51012, name);
    if (!block.IsValid()) {
        DVN_TRACE(1, 2, "Block is not defined");
        return LevelError;
    }
    int level = LevelOk;
    if (block.IsAttributeDataAttrComplete()) {
        level = SaveKindRow<DvnBlockActivitySet>(
            db, "BLOCK_ACTIVITY", "Block not added", aid, [&](DvnBlockActivitySet& row, bool&) {
                const auto setting =
                    ReturnCodeSetting(static_cast<const DvnfEntity&>(block).AttributeData()("RcCreation"));
                if (setting) row.m_RETURN_CODE_SET = *setting;
                return ReadGraphAttributes(db, block, row);
            });
    }
    if (block.IsBlockContentInMemory()) {
        // The inner diagram brackets its own steps; the caller's transaction
        // ends here and begins again after it.
        db.CommitTrans();
        level = std::max(level, SaveDiagram(db, static_cast<const DvnfEntity&>(block).AttributeData()("Diagram"),
                                            process, aid));
        db.BeginTrans();
        if (!m_bCallerData) Report(51013, name);
    }
    return level;
}

int DvnConvCoreDbBe::SaveBlock2(CDatabase& db, DvnfEntity& block, DvnfEntity& process, const CString& aid) {
    const DvnString name = block.IsValid() ? DvnString(block.Name()) : DvnString("");
    std::cout << "Block2 " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Block2 " << name << "...\n");
    if (!block.IsValid()) {
        DVN_TRACE(1, 2, "Block is not defined");
        return LevelError;
    }
    db.CommitTrans();
    const int result =
        SaveDiagram2(db, static_cast<const DvnfEntity&>(block).AttributeData()("Diagram"), process, aid);
    db.BeginTrans();
    return std::max(result, static_cast<int>(LevelOk));
}
