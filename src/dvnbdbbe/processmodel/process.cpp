// Store of processes: the PROCESS row, its graph and topology rows, its
// container values and its diagram.
//
// An import replaces a process as a whole. The new process is written beside
// the old one under the name "TEMP" + its key, so that two rows of one name
// never exist and the old process stays whole and readable until the new one
// is complete; then the old row goes (the schema removes what hangs below
// it) and the new row takes the name. An editor save (by identifier) changes
// the row in place. docs/store.md tells the choices made where a step fails.
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// The longest NAME; "TEMP" + key must fit in it.
constexpr int kNameChars = 255;

}  // namespace

int DvnConvCoreDbBe::SaveProcesses(CDatabase& db, bool authorized, bool byIdentifier) {
    int level = LevelOk;
    if (!byIdentifier && authorized) level = RemoveStrandedProcesses(db);
    // A process save brackets its own steps: no transaction here.
    return std::max(level, SaveLoop(
        db, "Process", authorized, ModelingRight, "Process",
        [&](DvnfEntity& entity) { return SaveProcess(db, entity, byIdentifier); }, false));
}

// A process named "TEMP" + its own key is a replacement that a broken run
// (a lost connection, a failed commit) left before it could take its name:
// the process it was to replace is still there, or was never there. It goes
// before the processes of this run are saved, with all below it.
int DvnConvCoreDbBe::RemoveStrandedProcesses(CDatabase& db) {
    db.BeginTrans();
    const int level = DeleteObject(
        db, CString("DELETE FROM ") + Table("PROCESS") + " WHERE NAME = 'TEMP' || PID", "PROCESS");
    db.CommitTrans();
    return level;
}

int DvnConvCoreDbBe::SaveProcess(CDatabase& db, DvnfEntity& entity, bool byIdentifier) {
    const bool import = !byIdentifier;
    const DvnKeysByName::Span keys(m_processKeys);
    // In an import a process in state 3 is one the file only calls, filled
    // by the on-demand reader: it is not the file's to replace.
    if (import && entity.State() == StateUnchanged) return LevelOk;

    const CString pid = entity.OID().c_str();
    const DvnString name = entity.Name();
    const CString quotedName = Quoted(name);
    const CString ownFilter = byIdentifier ? CString("PID = ") + Quoted(pid) : CString("NAME = ") + quotedName;
    int mark = m_nSourceMark;
    bool replaced = false;
    int level = LevelOk;
    int sub = LevelOk;
    m_savingProcess = name;

    // 1. Progress.
    std::cout << "Process " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Process " << name << "...\n");
    db.BeginTrans();

    if (import && pid.GetLength() + 4 > kNameChars) {
        DVN_TRACE(1, 2, "Process key " << pid << " leaves no room for the temporary name");
        Report(51310, name);
        db.CommitTrans();
        return LevelError;
    }

    // What a return after step 6 undoes: the temporary name of the entity
    // and the holder stamp on the old row.
    CString oldPid;
    bool stamped = false;
    auto leave = [&](int result) {
        if (entity.Name() != name) entity.Name(DvnfString(name));
        if (stamped) {
            db.BeginTrans();
            try {
                db.ExecuteSQL(CString("UPDATE ") + Table("PROCESS") + " SET CHECKED_OUT_BY = NULL WHERE PID = " +
                              Quoted(oldPid));
            } catch (CDBException* e) {
                ReportDbException(e, "updating", "PROCESS");
            }
            db.CommitTrans();
        }
        return result;
    };

    // 2. The row of the process, by key or by name.
    {
        DvnSimplePrcSet simple(&db);
        simple.m_strFilter = ownFilter;
        try {
            simple.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
        } catch (CDBException* e) {
            ReportDbException(e, "opening", "PROCESS", &simple);
            db.CommitTrans();
            return LevelError;
        }

        // 3. The editor's process is tidied before anything is stored.
        if (byIdentifier) {
            DvnfProcessCleaner cleaner(*m_pCoreData, m_pReader);
            cleaner(entity);
        }

        try {
            if (simple.IsEOF()) {
                // 4. No row.
                if (entity.State() == StateDeleted) {
                    simple.Close();
                    Report(51273, DvnString("DELETE PROCESS ") | name);
                    db.CommitTrans();
                    return LevelOk;
                }
                entity.State(StateNew);
                if (import) {
                    mark = MarkFirstPassDone;
                } else {
                    DvnSimplePrcSet other(&db);
                    other.m_strFilter = CString("NAME = ") + quotedName;
                    other.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::readOnly);
                    if (!other.IsEOF()) {
                        other.Close();
                        simple.Close();
                        Report(51078, name);
                        db.CommitTrans();
                        return LevelOk;
                    }
                    mark = MarkNewEditor;
                }
            } else if (entity.State() == StateDeleted) {
                // 5. Deletion: one Delete (the schema removes what hangs
                // below), or the tombstone that leaves all below alone.
                simple.MoveFirst();
                if (m_nSourceMark == MarkClean) {
                    try {
                        simple.Delete();
                    } catch (CDBException* e) {
                        ReportDbException(e, "deleting record in", "PROCESS", &simple);
                        db.CommitTrans();
                        return LevelError;
                    }
                    Report(51218, name);
                    simple.Close();
                    db.CommitTrans();
                    return LevelOk;
                }
                try {
                    simple.Edit();
                    simple.m_CHECKED_OUT = MarkTombstone;
                    simple.Update();
                } catch (CDBException* e) {
                    ReportDbException(e, "updating", "PROCESS", &simple);
                    Report(51342, name);
                    db.CommitTrans();
                    return LevelError;
                }
                Report(51046, name);
                simple.Close();
                db.CommitTrans();
                return LevelOk;
            } else if (import) {
                // 6. An older process of that name: held for this user until
                // the new one replaces it.
                if (!m_bOverwrite) {
                    simple.Close();
                    Report(51078, name);
                    db.CommitTrans();
                    return LevelOk;
                }
                simple.MoveFirst();
                if (!simple.IsFieldNull(&simple.m_CHECKED_OUT_BY)) {
                    Report(51145, name, DvnString(simple.m_CHECKED_OUT_BY.c_str()));
                    simple.Close();
                    db.CommitTrans();
                    return LevelWarning;
                }
                if (!simple.CanUpdate()) {
                    simple.Close();
                    Report(51342, name);
                    db.CommitTrans();
                    return LevelError;
                }
                if ((simple.m_CHECKED_OUT == MarkClean || simple.m_CHECKED_OUT == MarkChanged) &&
                    m_nSourceMark == MarkNew)
                    mark = MarkChanged;
                oldPid = simple.m_PID;
                if (!m_strCurrentUser.IsEmpty()) {
                    try {
                        simple.Edit();
                        simple.m_CHECKED_OUT_BY = m_strCurrentUser.c_str();
                        simple.Update();
                    } catch (CDBException* e) {
                        ReportDbException(e, "updating", "PROCESS", &simple);
                        Report(51342, name);
                        db.CommitTrans();
                        return LevelError;
                    }
                    stamped = true;
                }
                replaced = true;
                entity.State(StateNew);
            } else {
                // 7. By identifier: a rename must not take another's name.
                simple.MoveFirst();
                if (CString(name.c_str()) != simple.m_NAME) {
                    DvnSimplePrcSet other(&db);
                    other.m_strFilter =
                        CString("NAME = ") + quotedName + " AND NOT (PID = " + Quoted(pid) + ")";
                    other.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::readOnly);
                    if (!other.IsEOF()) {
                        other.Close();
                        simple.Close();
                        Report(51078, name);
                        db.CommitTrans();
                        return LevelOk;
                    }
                }
                const int rowMark = simple.m_CHECKED_OUT;
                if (rowMark == MarkNew || rowMark == MarkNewEditor)
                    mark = rowMark;
                else if (rowMark == MarkClean)
                    mark = entity.State() == StateUnchanged ? MarkClean : MarkChanged;
            }
        } catch (CDBException* e) {
            ReportDbException(e, "opening", "PROCESS", &simple);
            db.CommitTrans();
            return leave(LevelError);
        }
        // 8.
        simple.Close();
    }

    const bool isNew = entity.State() == StateNew && !replaced;
    DvnProcessSet row(&db);
    row.m_strFilter = ownFilter;
    try {
        row.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
    } catch (CDBException* e) {
        ReportDbException(e, "opening", "PROCESS", &row);
        db.CommitTrans();
        return leave(LevelError);
    }
    if (!row.CanAppend()) {
        row.Close();
        Report(51310, name);
        db.CommitTrans();
        return leave(LevelError);
    }

    // 9. From here until the new process is complete it carries the
    // temporary name.
    if (import) entity.Name(DvnfString("TEMP") | DvnfString(pid.c_str()));

    // 10. Position the row.
    bool skipRow = false;
    try {
        if (row.IsEOF()) {
            if (entity.State() != StateNew) {
                row.Close();
                Report(51342, name);
                db.CommitTrans();
                return leave(LevelError);
            }
            row.AddNew();
        } else if (byIdentifier) {
            row.MoveFirst();
            if (entity.State() == StateUnchanged)
                skipRow = true;
            else
                row.Edit();
        } else {
            row.AddNew();
        }
    } catch (CDBException* e) {
        ReportDbException(e, "updating", "PROCESS", &row);
        Report(isNew ? 51310 : 51342, name);
        db.CommitTrans();
        return leave(LevelError);
    }
    if (!m_bCallerData) Report(51010, name);

    if (!skipRow) {
        // 11. Fill the row.
        if (!m_strCurrentUser.IsEmpty()) row.m_CHECKED_OUT_BY = m_strCurrentUser.c_str();
        try {
            level = ReadProcessInitAttributes(db, entity, row, pid, mark);
        } catch (CDBException* e) {
            level = ReportDbException(e, "reading", "DATA_STRUCTURE");
        }
        if (entity.IsAttributeDataAttrComplete() && level < LevelError) {
            try {
                sub = ReadProcessAttributes(db, entity, row);
            } catch (CDBException* e) {
                sub = ReportDbException(e, "reading", "PROCESS");
            }
            level = std::max(level, sub);
        }

        // 12. Write it, then what hangs from the row.
        if (level >= LevelError) {
            row.Close();
            Report(isNew ? 51310 : 51342, name);
            db.CommitTrans();
            return leave(LevelError);
        }
        try {
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", "PROCESS", &row);
            Report(isNew ? 51310 : 51342, name);
            db.CommitTrans();
            return leave(LevelError);
        }
        row.Close();
        if (sub < 5) {
            sub = SaveProcessGraphAttributes(db, entity, pid);
            if (entity.IsAttributeDataAttrComplete())
                sub = std::max(sub, SaveProcessTopologyAttributes(db, entity, pid));
            level = std::max(level, sub);
            // A new row keeps its first-pass mark until the containers are
            // written: they run for it whatever the flags say.
            if (entity.IsAttributeDataContainerComplete() || mark == MarkFirstPassDone) {
                int containers = LevelOk;
                if (entity.State() != StateNew) containers = DeleteProcessContainer(db, pid);
                if (containers < LevelError || entity.State() == StateNew)
                    containers = std::max(containers, SaveProcessContainer(db, entity));
                level = std::max(level, containers);
            }
        }
    }

    // 13. The diagram, in transactions of its own.
    if (row.IsOpen()) row.Close();
    db.CommitTrans();
    if (sub != LevelOk && import) {
        // The new row stands without its diagram: it goes, and the old
        // process stays as it was.
        db.BeginTrans();
        DeleteObject(db, CString("DELETE FROM ") + Table("PROCESS") + " WHERE PID = " + Quoted(pid), "PROCESS");
        db.CommitTrans();
        Report(isNew ? 51310 : 51342, name);
        return leave(LevelError);
    }
    if (sub == LevelOk) {
        const DvnfAttributeDataReader diagram = static_cast<const DvnfEntity&>(entity).AttributeData()("Diagram");
        sub = SaveDiagram(db, diagram, entity, CString());
        level = std::max(level, sub);
        if (import) {
            // A process activity that calls this process was stored with the
            // temporary name.
            db.BeginTrans();
            try {
                db.ExecuteSQL(CString("UPDATE ") + Table("PROCESS_ACTIVITY") + " SET PROCESS = " + quotedName +
                              " WHERE PROCESS = " + Quoted(entity.Name()));
            } catch (CDBException* e) {
                Report(51368, DvnString(e->m_strError.c_str()));
                DVN_TRACE(1, 2, "ODBC Exception in renaming process: rc =" << e->m_nRetCode << "Error: "
                                                                            << e->m_strError);
                e->Delete();
                level = LevelError;
            }
            db.CommitTrans();
        }
        level = std::max(level, SaveDiagram2(db, diagram, entity, CString()));
        if (!m_bCallerData) Report(51011, name);
    }

    // 14. The new process takes the old one's place and its name, in one
    // transaction: should either step fail, the transaction is rolled back
    // (the old process stays whole) and the new row goes.
    if (import) {
        db.BeginTrans();
        DvnSimplePrcSet old(&db);
        const char* action = "opening";
        try {
            if (replaced) {
                old.m_strFilter = CString("NAME = ") + quotedName;
                old.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
                action = "deleting record in";
                if (!old.IsEOF()) {
                    old.MoveFirst();
                    old.Delete();
                }
                old.Close();
            }
            action = "renaming in";
            db.ExecuteSQL(CString("UPDATE ") + Table("PROCESS") + " SET NAME = " + quotedName + " WHERE PID = " +
                          Quoted(pid));
            action = "committing";
            db.CommitTrans();
        } catch (CDBException* e) {
            ReportDbException(e, action, "PROCESS", &old);
            if (db.InTransaction()) db.Rollback();
            db.BeginTrans();
            DeleteObject(db, CString("DELETE FROM ") + Table("PROCESS") + " WHERE PID = " + Quoted(pid), "PROCESS");
            db.CommitTrans();
            Report(replaced ? 51342 : 51310, name);
            return leave(LevelError);
        }
        if (replaced) stamped = false;  // the stamped row is gone
        entity.Name(DvnfString(name));
    }

    // 15. A process changed only below its row is still marked changed; the
    // holder stamp of this run goes.
    db.BeginTrans();
    if (entity.State() == StateChanged || !m_strCurrentUser.IsEmpty()) {
        DvnSimplePrcSet last(&db);
        last.m_strFilter = CString("NAME = ") + quotedName;
        try {
            last.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
            if (!last.CanAppend()) {
                last.Close();
                Report(51310, name);
                db.CommitTrans();
                return leave(LevelError);
            }
            if (!last.IsEOF()) {
                last.MoveFirst();
                last.Edit();
                if (entity.State() == StateChanged && last.m_CHECKED_OUT == MarkClean)
                    last.m_CHECKED_OUT = MarkChanged;
                if (!m_strCurrentUser.IsEmpty()) last.SetFieldNull(&last.m_CHECKED_OUT_BY);
                last.Update();
            }
            last.Close();
        } catch (CDBException* e) {
            level = ReportDbException(e, "updating", "PROCESS", &last);
        }
    }

    // 16.
    if (entity.State() == StateChanged)
        Report(51046, name);
    else if (entity.State() == StateNew)
        Report(replaced ? 51046 : 51014, name);
    db.CommitTrans();
    ResetState(entity);
    return level;
}

// ------------------------------------------------------------------ rows beside PROCESS

namespace {

// A row beside PROCESS, found by the process's key: inserted or updated,
// with the columns that fill gives; label names the row in the trace
// ("Process graph attributes").
template <class Set, class Fill>
int SaveRowBesideProcess(DvnConvCoreDbBe& be, CDatabase& db, const char* table, const char* label, const CString& pid,
                         int (DvnConvCoreDbBe::*report)(CDBException*, const char*, const char*, CRecordset*),
                         Fill fill) {
    Set row(&db);
    row.m_strFilter = CString("PID = ") + Quoted(pid);
    bool inserting = false;
    int level = DvnConvCoreDbBe::LevelOk;
    try {
        row.Open(CRecordset::snapshot, be.GetTablePrefix() + table, CRecordset::none);
    } catch (CDBException* e) {
        return (be.*report)(e, "opening", table, &row);
    }
    try {
        if (row.IsEOF()) {
            if (!row.CanAppend()) {
                row.Close();
                DVN_TRACE(1, 2, label << " not added");
                return DvnConvCoreDbBe::LevelError;
            }
            inserting = true;
            row.AddNew();
        } else {
            row.MoveFirst();
            row.Edit();
        }
        row.m_PID = pid;
        level = fill(row);
        row.Update();
    } catch (CDBException* e) {
        (be.*report)(e, "updating", table, &row);
        if (inserting) DVN_TRACE(1, 2, label << " not added");
        return DvnConvCoreDbBe::LevelError;
    }
    row.Close();
    return level;
}

}  // namespace

// The window settings, colours and fonts; of a process whose attributes
// were not loaded (an editor save of its diagram alone) the row only is made
// sure of, and what it holds stays.
int DvnConvCoreDbBe::SaveProcessGraphAttributes(CDatabase& db, DvnfEntity& entity, const CString& pid) {
    return SaveRowBesideProcess<DvnProcessGraphAttrSet>(
        *this, db, "PROCESS_GRAPH_ATTR", "Process graph attributes", pid, &DvnConvCoreDbBe::ReportDbException,
        [&](DvnProcessGraphAttrSet& row) {
            if (!entity.IsAttributeDataAttrComplete()) return static_cast<int>(LevelOk);
            return std::max(ReadGraphAttributes(db, entity, row), ReadProcessGraphAttributes(db, entity, row, pid));
        });
}

int DvnConvCoreDbBe::SaveProcessTopologyAttributes(CDatabase& db, DvnfEntity& entity, const CString& pid) {
    return SaveRowBesideProcess<DvnProcessTopolAttrSet>(
        *this, db, "PROCESS_TOPOL_ATTR", "Process topology attributes", pid, &DvnConvCoreDbBe::ReportDbException,
        [&](DvnProcessTopolAttrSet& row) { return ReadProcessTopologyAttributes(db, entity, row, pid); });
}

// ------------------------------------------------------------------ attributes

CString DvnConvCoreDbBe::StructureKey(CDatabase& db, DvnfEntity& entity, const char* link, const char* container,
                                      int& level, bool activity) {
    DvnfEntity& target = GetLink(DvnfString(link), entity, DvnfString("DataStructure"));
    DvnDataStructureSet structures(&db);
    const CString oid = target.IsValid() ? CString(target.OID().c_str()) : CString();
    DvnString name = target.IsValid() ? DvnString(target.Name()) : DvnString();
    if (name.IsEmpty() && !oid.IsEmpty()) name = structures.GetName(oid, m_strTablePrefix, false);
    if (name.IsEmpty()) {
        name = kDefaultDataStructure;
        entity.AttributeData().Reset(container);
    }
    auto byName = [&](const DvnString& structure) {
        return m_processKeys.Find(structures, structure,
                                  [&] { return structures.GetDsID(Quoted(structure), m_strTablePrefix, false); });
    };
    CString key = byName(name);
    if (key.IsEmpty() && !activity && !oid.IsEmpty() && !structures.GetName(oid, m_strTablePrefix, false).IsEmpty())
        key = oid;
    if (key.IsEmpty()) {
        Report(51102, name);
        level = std::max(level, static_cast<int>(LevelWarning));
        entity.AttributeData().Reset(container);
        key = byName(DvnString(kDefaultDataStructure));
    }
    if (key.IsEmpty() && activity) key = oid;
    return key;
}

int DvnConvCoreDbBe::ReadProcessInitAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessSet& row,
                                               const CString& pid, int mark) {
    int level = LevelOk;
    row.m_PID = pid;
    row.m_NAME = entity.Name().c_str();
    const CString input = StructureKey(db, entity, "ProcessHasInputStr", "InputContainer", level, false);
    if (input.IsEmpty()) return LevelError;
    const CString output = StructureKey(db, entity, "ProcessHasOutputStr", "OutputContainer", level, false);
    if (output.IsEmpty()) return LevelError;
    row.m_INPUT_DS = input;
    row.m_OUTPUT_DS = output;
    level = std::max(level, StoreIcon(row, row.m_USER_DEFINED_ICON,
                                      static_cast<const DvnfEntity&>(entity).AttributeData()("Icon")));
    row.m_CHECKED_OUT = mark;
    return level;
}
