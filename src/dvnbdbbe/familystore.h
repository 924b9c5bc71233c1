// One save routine for the families whose object is one row of one table
// (categories, data structures, and the staff and topology objects as they
// come): the family descriptor, which states what is a family's own, and the
// routine and loop that run the protocol every such family shares. Internal
// header of the store; docs/design.md, "One save routine for single-row
// families", tells the protocol step by step.
#pragma once

#include <algorithm>
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "storedforms.h"

// A number the file gives, or the fallback when it gives none; a value that
// is no number reads 0.
inline long NumberOr(const DvnfAttributeDataReader& value, long fallback) {
    return value.IsDefined() ? value.AsLong(0) : fallback;
}

// What a family of single rows states. Set is its recordset class; the
// routine reads the columns CHECKED_OUT and CHECKED_OUT_BY that every such
// class has, and the key through `key`. Hooks take the back end as their
// first argument; a null hook is a step the family does not have.
template <class Set>
struct DvnConvCoreDbBe::Family {
    // The numbers reported with the name (held: the name and the holder).
    struct Messages {
        long added;         // row inserted
        long updated;       // row rewritten in place, or left as a tombstone
        long kept;          // row exists, overwrite off: left as it is
        long held;          // CHECKED_OUT_BY names a user; 0: never tested
        long deleted;       // row removed for good
        long cannotAppend;  // the insert is refused or fails
        long cannotUpdate;  // the update is refused or fails
    };

    // ---- the loop
    const char* typeName;  // entity type of the core model: "Category"
    const char* kind;      // the kind in words, as refusals say it: "Data Structure"
    const Right* right;    // the right that gates the family

    // ---- the row
    const char* table;         // bare table name: "CATEGORY"
    const char* keyColumn;     // key column of the delete statement: "CATID"
    CString Set::*key;         // the key member: &DvnCategorySet::m_CATID
    const char* progress;      // progress line before the name: "Category "
    const char* invalidTrace;  // trace of an entity that is not valid
    const char* deleteKeyword; // 51273 before the name: "DELETE PROCESS_CATEGORY "
    Messages messages;
    // An entity in state 3 returns 0 before anything is opened.
    bool skipUnchanged = false;

    // ---- the family's own steps
    // The columns of the row, name and mark included; isNew on an insert.
    int (*read)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, Set&, bool isNew) = nullptr;
    // Before a row is deleted or made a tombstone: 0, or a level above 0
    // after the family's message, and the row stays. A database exception
    // may go up: it ends the object as a failed read.
    int (*inUse)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, const CString& key) = nullptr;
    // The second pass over the same map, after the first has gone through
    // it all (inserts write the mark 9 for it). Null: one pass.
    int (*secondPass)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&) = nullptr;

    // ---- variations of the coming families
    // The condition that finds the row by the entity's name. Null: "NAME = "
    // and the name quoted.
    CString (*filter)(const DvnString& name) = nullptr;
    // Not 0: a row is never deleted; a deletion is refused with this message
    // (the name) and level 4, after the held test.
    long refuseDelete = 0;
    // An attribute step at level 8 or more leaves the row unwritten: the
    // cannot-append or cannot-update message, and that level. Otherwise the
    // row is written all the same and only the added message is left out.
    bool readErrorStops = false;
    // A tombstone is also reported as 51273 with the keyword and the name.
    bool tombstoneNotFound = false;
    // After the row is written and closed (insert, update, tombstone; not a
    // physical delete): what hangs from the row. Its level counts.
    int (*afterWrite)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, const CString& key, bool tombstone) = nullptr;

    // ---- variations of the staff families
    // A key that is not a text member (a number): its text. Null: `key`.
    CString (*keyText)(const Set& row) = nullptr;
    // Before a row is inserted: 0, or a level above 0 after the family's
    // message, and nothing is written.
    int (*beforeInsert)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&) = nullptr;

    CString KeyOf(const Set& row) const { return keyText ? keyText(row) : row.*key; }
    // Not 0: a name of more characters is reported with this message (the
    // whole name) and the save goes on with its first nameChars characters.
    size_t nameChars = 0;
    long nameTooLong = 0;
    // After the name is known and before the progress line: 0, or a level
    // above 0 after the family's message, and nothing is opened (the one
    // domain, the one system group). name: as the rows are found by it.
    int (*beforeRow)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, const DvnString& name, bool toDelete) = nullptr;
    // After a row was deleted for good: what hung from it. Its level counts.
    int (*afterDelete)(DvnConvCoreDbBe&, CDatabase&, const CString& key) = nullptr;
    // Traced when an entity's level rises above the highest so far, in
    // the first pass and in the second.
    const char* failedTrace = nullptr;
    const char* secondPassFailedTrace = nullptr;
    // The trace of the progress line when it differs from `progress`.
    const char* progressTrace = nullptr;
    // Before a row is deleted for good: removes what hangs from it and gives
    // 0, or a level above 0 and the row stays.
    int (*deleteDependents)(DvnConvCoreDbBe&, CDatabase&, const CString& key) = nullptr;

    // ---- variations of the program execution agents
    // A row found through what the entity names, not by its name: sets the
    // condition that finds the row and the name the save reports, before the
    // progress line; 0, or a level above 0 after the family's messages, and
    // nothing is opened. Takes the place of `filter`.
    int (*locate)(DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, bool toDelete, DvnString& name,
                  CString& filter) = nullptr;
    // ---- variations of the servers
    // The name the rows are found by, from the entity's name (a server: the
    // first part of its full name). Null: the entity's name.
    DvnString (*nameOf)(const DvnString& entityName) = nullptr;
    // A filter that needs the back end (a server: its name within the
    // system that the check before the row found). Null: `filter`.
    CString (*filterWith)(const DvnConvCoreDbBe&, const DvnString& name) = nullptr;
};

// The name of the first row that the statement gives, or false when it gives
// none; for in-use tests. A database exception goes up, the recordset closed.
template <class Set>
bool FirstRowName(CDatabase& db, const CString& statement, DvnString& name) {
    Set rs(&db);
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    if (rs.IsEOF()) return false;
    name = rs.m_NAME.c_str();
    return true;
}

// The DESCRIPTION of a family's row: "Description" cut to 254 characters,
// NULL when the entity gives none.
template <class Set>
void SetDescription(Set& row, DvnfEntity& entity) {
    auto description = entity.AttributeData()("Description");
    if (description.IsDefined())
        DvnStored::SetText(row, row.m_DESCRIPTION,
                           DvnStored::Cut(description.AsString("").c_str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&row.m_DESCRIPTION);
}

// The DOCUMENTATION of a family's row: "Documentation", NULL when the
// entity gives none.
template <class Set>
void SetDocumentation(Set& row, DvnfEntity& entity) {
    auto documentation = entity.AttributeData()("Documentation");
    if (documentation.IsDefined())
        DvnStored::SetText(row, row.m_DOCUMENTATION, documentation.AsString("").str());
    else
        row.SetFieldNull(&row.m_DOCUMENTATION);
}

template <class Set>
int DvnConvCoreDbBe::SaveFamily(CDatabase& db, bool authorized, const Family<Set>& family) {
    // The highest level so far of a pass; a rise is traced when the family says.
    auto tracing = [](const char* trace, int& highest, int level) {
        if (level > highest) {
            if (trace) DVN_TRACE(1, 2, trace);
            highest = level;
        }
        return level;
    };
    int highest = LevelOk;
    int level = SaveLoop(db, family.typeName, authorized, *family.right, family.kind, [&](DvnfEntity& entity) {
        return tracing(family.failedTrace, highest, SaveSingleRow(db, entity, family));
    });
    // Without the right the first pass wrote nothing, and what hangs from
    // rows that were there before is not to be touched either.
    if (!family.secondPass || !authorized) return level;
    highest = LevelOk;
    return std::max(level, SecondPassLoop(db, family.typeName, [&](DvnfEntity& entity) {
                        // A nameless entity was refused by the first pass.
                        if (entity.Name().IsEmpty()) return static_cast<int>(LevelOk);
                        return tracing(family.secondPassFailedTrace, highest, family.secondPass(*this, db, entity));
                    }));
}

template <class Set>
int DvnConvCoreDbBe::SaveSingleRow(CDatabase& db, DvnfEntity& entity, const Family<Set>& family) {
    const auto& msg = family.messages;
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, family.invalidTrace);
        return LevelError;
    }
    if (family.skipUnchanged && entity.State() == StateUnchanged) return LevelOk;
    const bool toDelete = entity.State() == StateDeleted;
    DvnString name = entity.Name();
    if (family.nameOf) name = family.nameOf(name);
    // No lookup finds an empty name again (it is stored as null): every run
    // would add a row, and a second pass would never find its own.
    if (name.IsEmpty()) {
        Report(51901, DvnString(family.kind));
        DVN_TRACE(1, 2, family.kind << " without a name is not stored");
        return LevelError;
    }
    if (family.nameChars) {
        const DvnString cut(DvnStored::Cut(name.str(), family.nameChars));
        if (cut.str() != name.str()) {
            Report(family.nameTooLong, name);
            name = cut;
        }
    }
    if (family.beforeRow) {
        const int refused = family.beforeRow(*this, db, entity, name, toDelete);
        if (refused > LevelOk) return refused;
    }
    CString located;
    if (family.locate) {
        const int refused = family.locate(*this, db, entity, toDelete, name, located);
        if (refused > LevelOk) return refused;
    }
    std::cout << family.progress << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, (family.progressTrace ? family.progressTrace : family.progress) << name << "...\n");

    Set row(&db);
    row.m_strFilter = family.filterWith ? family.filterWith(*this, name)
                      : family.filter ? family.filter(name)
                                      : CString("NAME = ") + ReturnQuotedString(name, "'", "'").c_str();
    if (family.locate) row.m_strFilter = located;
    try {
        row.Open(CRecordset::snapshot, Table(family.table), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", family.table, &row);
    }

    // ---- no row: insert
    if (row.IsEOF()) {
        if (toDelete) {
            row.Close();
            Report(51273, DvnString(family.deleteKeyword) | name);
            return LevelOk;
        }
        if (!row.CanAppend()) {
            row.Close();
            Report(msg.cannotAppend, name);
            return LevelError;
        }
        if (family.beforeInsert) {
            int refused = LevelOk;
            try {
                refused = family.beforeInsert(*this, db, entity);
            } catch (CDBException* e) {
                return ReportDbException(e, "reading", family.table, &row);
            }
            if (refused > LevelOk) {
                if (row.IsOpen()) row.Close();
                return refused;
            }
        }
        int level = LevelOk;
        CString key;
        try {
            row.AddNew();
            level = family.read(*this, db, entity, row, true);
            if (level >= LevelError && family.readErrorStops) {
                row.Close();
                Report(msg.cannotAppend, name);
                return level;
            }
            key = family.KeyOf(row);  // the members do not outlive the insert
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", family.table, &row);
            Report(msg.cannotAppend, name);
            return LevelError;
        }
        if (level < LevelError) Report(msg.added, name);
        row.Close();
        if (family.afterWrite) level = std::max(level, family.afterWrite(*this, db, entity, key, false));
        return level;
    }

    // ---- a row: left alone, refused, deleted, or rewritten in place
    if (!m_bOverwrite && !toDelete) {
        row.Close();
        Report(msg.kept, name);
        return LevelOk;
    }

    int level = LevelOk;
    CString key;
    try {
        row.MoveFirst();
        if (msg.held && !row.IsFieldNull(&row.m_CHECKED_OUT_BY)) {
            Report(msg.held, name, DvnString(row.m_CHECKED_OUT_BY.c_str()));
            row.Close();
            return LevelWarning;
        }
        key = family.KeyOf(row);
        if (toDelete) {
            if (family.refuseDelete) {
                row.Close();
                Report(family.refuseDelete, name);
                return LevelWarning;
            }
            if (family.inUse) {
                level = family.inUse(*this, db, entity, key);
                if (level > LevelOk) {
                    row.Close();
                    return level;
                }
            }
            if (m_nSourceMark == MarkClean) {
                // The key is quoted: a family keyed by its name may hold any text there.
                const CString statement = CString("DELETE FROM ") + m_strTablePrefix + family.table + " WHERE " +
                                          family.keyColumn + " = " +
                                          ReturnQuotedString(DvnString(key.c_str()), "'", "'").c_str();
                row.Close();
                if (family.deleteDependents) {
                    level = family.deleteDependents(*this, db, key);
                    if (level > LevelOk) return level;
                }
                level = DeleteObject(db, statement, family.table);
                if (level == LevelOk) Report(msg.deleted, name);
                if (level == LevelOk && family.afterDelete) level = family.afterDelete(*this, db, key);
                return level;
            }
        }
        row.Edit();
        if (toDelete) {
            row.m_CHECKED_OUT = MarkTombstone;
        } else {
            level = family.read(*this, db, entity, row, false);
            if (level >= LevelError && family.readErrorStops) {
                row.Close();
                Report(msg.cannotUpdate, name);
                return level;
            }
        }
    } catch (CDBException* e) {
        ReportDbException(e, "reading", family.table, &row);
        Report(msg.cannotUpdate, name);
        return LevelError;
    }

    if (!row.CanUpdate()) {
        Report(msg.cannotUpdate, name);
        level = LevelError;
    } else {
        try {
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", family.table, &row);
            Report(msg.cannotUpdate, name);
            return LevelError;
        }
        Report(msg.updated, name);
    }
    if (row.IsOpen()) row.Close();
    if (level >= LevelError) return level;
    if (toDelete && family.tombstoneNotFound) Report(51273, DvnString(family.deleteKeyword) | name);
    if (family.afterWrite) level = std::max(level, family.afterWrite(*this, db, entity, key, toDelete));
    return level;
}
