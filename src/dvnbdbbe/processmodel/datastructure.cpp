// Store of data structures: the rows of DATA_STRUCTURE in a first pass and
// their ordered members in DATA_STRUCTURE_MBR in a second one, so that a
// member may name a structure that stands later in the same file. Between the
// passes a row inserted by this run carries the mark 9.
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {

const char* const kDefaultDataStructure = "Default Data Structure";

// "Description" cut to the column, "Documentation" whole; either NULL when
// not defined.
void ReadTexts(const DvnfAttributeDataReader& attributes, CRecordset& row, CString& description,
               CString& documentation) {
    auto text = attributes("Description");
    if (text.IsDefined())
        DvnStored::SetText(row, description, DvnStored::Cut(text.AsString("").c_str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&description);
    text = attributes("Documentation");
    if (text.IsDefined())
        DvnStored::SetText(row, documentation, text.AsString("").c_str());
    else
        row.SetFieldNull(&documentation);
}

}  // namespace

// ------------------------------------------------------------------ first pass

const DvnConvCoreDbBe::Family<DvnDataStructureSet> DvnConvCoreDbBe::DataStructureFamily = {
    .typeName = "DataStructure",
    .kind = "Data Structure",
    .right = &ModelingRight,
    .table = "DATA_STRUCTURE",
    .keyColumn = "DSID",
    .key = &DvnDataStructureSet::m_DSID,
    .progress = "Structure ",
    .invalidTrace = "DATA_STRUCTURE is not defined",
    .deleteKeyword = "DELETE STRUCTURE ",
    .messages = {.added = 51021, .updated = 51053, .kept = 51085, .held = 51148, .deleted = 51221,
                 .cannotAppend = 51317, .cannotUpdate = 51349},
    .skipUnchanged = true,
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnDataStructureSet& row, bool isNew) {
        return be.ReadDataStructureAttributes(db, entity, entity.AttributeData(), row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.DataStructureInUse(db, entity, key);
    },
    .secondPass = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
        return be.SaveDataStructure2(db, entity);
    },
};

int DvnConvCoreDbBe::SaveDataStructures(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, DataStructureFamily);
}

int DvnConvCoreDbBe::SaveDataStructure(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, DataStructureFamily);
}

// A structure stays while a process, an activity or a program takes it as
// input or output, or while a member of another structure is of its type.
// A structure that holds such a member and is itself being deleted in this
// run is deleted first, so that the order of names does not matter. A
// database exception goes up to the save, with every recordset closed.
int DvnConvCoreDbBe::DataStructureInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const DvnString name = entity.Name();
    const CString where = CString("WHERE INPUT_DS = '") + key + "' OR OUTPUT_DS = '" + key + "'";
    DvnString user;
    if (FirstRowName<DvnProcessSet>(db, CString("SELECT * FROM ") + m_strTablePrefix + "PROCESS " + where, user)) {
        Report(51244, name, user);
        return LevelWarning;
    }
    if (FirstRowName<DvnActivitySet>(db, CString("SELECT * FROM ") + m_strTablePrefix + "ACTIVITY " + where, user)) {
        Report(51245, name, user);
        return LevelWarning;
    }
    if (FirstRowName<DvnProgramSet>(db, CString("SELECT * FROM ") + m_strTablePrefix + "PROGRAM " + where, user)) {
        Report(51246, name, user);
        return LevelWarning;
    }

    DvnDataStructureMbrSet members(&db);
    members.Open(CRecordset::snapshot,
                 CString("SELECT * FROM ") + m_strTablePrefix + "DATA_STRUCTURE_MBR WHERE TYPE_DS = '" + key + "'",
                 CRecordset::readOnly);
    // While this structure is being deleted, a cascade that comes back to it
    // (two structures that hold members of each other, or one that holds a
    // member of its own type) passes it over.
    m_processed.Processed(entity, true);
    struct Done {
        DvnfProcessed& processed;
        DvnfEntity& entity;
        ~Done() { processed.Processed(entity, false); }
    } done{m_processed, entity};
    for (; !members.IsEOF(); members.MoveNext()) {
        DvnDataStructureSet holder(&db);
        holder.Open(CRecordset::snapshot,
                    CString("SELECT * FROM ") + m_strTablePrefix + "DATA_STRUCTURE WHERE DSID = '" + members.m_DSID +
                        "'",
                    CRecordset::readOnly);
        // No holder: the member row outlived its structure and holds nothing.
        if (holder.IsEOF()) continue;
        if (holder.m_CHECKED_OUT == MarkTombstone && m_nSourceMark == MarkNew) continue;
        const DvnString holderName(holder.m_NAME.c_str());
        holder.Close();
        DvnfEntity& other = m_pCoreData->GetEntityByName("DataStructure", holderName);
        if (other.IsValid() && m_processed.Processed(other)) continue;
        if (other.IsValid() && other.State() == StateDeleted && SaveDataStructure(db, other) == LevelOk) {
            other.State(StateNone);
            continue;
        }
        Report(51247, name, holderName, DvnString(members.m_MEMBER.c_str()));
        return LevelWarning;
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ReadDataStructureAttributes(CDatabase&, DvnfEntity& entity,
                                                 const DvnfAttributeDataReader& attributes, DvnDataStructureSet& row,
                                                 bool isNew) {
    row.m_NAME = entity.Name().c_str();
    if (isNew) {
        row.m_DSID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    ReadTexts(attributes, row, row.m_DESCRIPTION, row.m_DOCUMENTATION);
    return LevelOk;
}

// ------------------------------------------------------------------ second pass

int DvnConvCoreDbBe::SaveDataStructure2(CDatabase& db, DvnfEntity& entity) {
    if (entity.State() == StateUnchanged) return LevelOk;
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    DvnfDataSetIterator members = attributes("Members").ElementsOfSet();
    const DvnString name = entity.Name();
    std::cout << "Structure " << name << " second pass ...\n" << std::endl;
    DVN_TRACE(3, 1, "Structure " << name << " second pass ...\n");

    CString key;
    int level = LevelOk;  // a mark that could not be written is an error of the save
    {
        DvnDataStructureSet row(&db);
        row.m_strFilter = CString("NAME = ") + ReturnQuotedString(name, "'", "'").c_str();
        const char* action = "opening";
        try {
            row.Open(CRecordset::snapshot, Table("DATA_STRUCTURE"), CRecordset::none);
            // No row: the first pass failed and has said so.
            if (row.IsEOF()) return LevelOk;
            action = "reading";
            row.MoveFirst();
            const bool firstPassDone = row.m_CHECKED_OUT == MarkFirstPassDone;
            int mark = row.m_CHECKED_OUT;
            if (!SecondPassMayWrite(mark)) return LevelOk;
            if (!row.IsFieldNull(&row.m_CHECKED_OUT_BY)) {
                Report(51148, name, DvnString(row.m_CHECKED_OUT_BY.c_str()));
                return LevelWarning;
            }
            key = row.m_DSID;
            if (firstPassDone) {
                try {
                    row.Edit();
                    row.m_CHECKED_OUT = mark;
                    row.Update();
                } catch (CDBException* e) {
                    // The members are written all the same.
                    level = ReportDbException(e, "updating", "DATA_STRUCTURE");
                }
            }
        } catch (CDBException* e) {
            return ReportDbException(e, action, "DATA_STRUCTURE", &row);
        }
    }

    // The members are always written anew: the old rows go first.
    {
        DvnDataStructureMbrSet old(&db);
        old.m_strFilter = CString("DSID = '") + key + "'";
        const char* action = "opening";
        try {
            old.Open(CRecordset::snapshot, Table("DATA_STRUCTURE_MBR"), CRecordset::none);
            action = "deleting in";
            if (!old.IsEOF()) {
                for (old.MoveFirst(); !old.IsEOF(); old.MoveNext()) old.Delete();
            }
        } catch (CDBException* e) {
            return ReportDbException(e, action, "DATA_STRUCTURE_MBR", &old);
        }
    }

    long sequence = 1;
    for (DvnfAttributeDataReader member = members.First(); member.IsValid(); member = members.Next())
        level = std::max(level, SaveDataStructureMbr(db, member, key, sequence++));
    return level;
}

int DvnConvCoreDbBe::SaveDataStructureMbr(CDatabase& db, const DvnfAttributeDataReader& member, const CString& key,
                                          long sequence) {
    const DvnString name = member("Name").AsString("");
    std::cout << "Structure member " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Structure member " << name << "...\n");

    DvnDataStructureMbrSet row(&db);
    row.m_strFilter = CString("MEMBER = ") + ReturnQuotedString(name, "'", "'").c_str() + " AND DSID = '" + key + "'";
    bool inserting = true;
    const char* action = "opening";
    int level = LevelOk;
    try {
        row.Open(CRecordset::snapshot, Table("DATA_STRUCTURE_MBR"), CRecordset::none);
        if (row.IsEOF()) {
            if (!row.CanAppend()) {
                row.Close();
                Report(51318, name);
                return LevelError;
            }
            action = "updating";
            row.AddNew();
            level = ReadDataStructureMbrAttributes(db, member, row, key, sequence);
            row.Update();
            if (level < LevelError) Report(51022, name);
        } else {
            // Two members of one name: the later one wins.
            inserting = false;
            action = "reading";
            row.MoveFirst();
            action = "updating";
            row.Edit();
            level = ReadDataStructureMbrAttributes(db, member, row, key, sequence);
            if (!row.CanUpdate()) {
                Report(51350, name);
                level = LevelError;
            } else {
                row.Update();
                Report(51054, name);
            }
        }
    } catch (CDBException* e) {
        ReportDbException(e, action, "DATA_STRUCTURE_MBR", &row);
        Report(inserting ? 51318 : 51350, name);
        return LevelError;
    }
    if (row.IsOpen()) row.Close();
    return level;
}

int DvnConvCoreDbBe::ReadDataStructureMbrAttributes(CDatabase& db, const DvnfAttributeDataReader& member,
                                                    DvnDataStructureMbrSet& row, const CString& key, long sequence) {
    row.m_DSID = key;
    row.m_MEMBER = member("Name").AsString("").c_str();
    row.m_SEQUENCE_NO = sequence;
    row.SetFieldNull(&row.m_TYPE_DS);
    switch (member("Type").AsLong(0)) {
        case 1: row.m_DATA_TYPE = 5; break;
        case 2: row.m_DATA_TYPE = 6; break;
        case 3: row.m_DATA_TYPE = 3; break;
        case 4: {
            row.m_DATA_TYPE = 7;
            DvnfEntity& memberEntity = member.AsEntity();
            CString target;
            if (memberEntity.IsValid()) target = GetLinkName("HasSubStructure", memberEntity, "DataStructure");
            if (target.IsEmpty()) target = kDefaultDataStructure;
            DvnDataStructureSet structures(&db);
            CString typeKey = structures.GetDsID(ReturnQuotedString(target.c_str(), "'", "'").c_str(),
                                                 m_strTablePrefix, false);
            if (typeKey.IsEmpty()) {
                Report(51102, DvnString(target.c_str()));
                typeKey = structures.GetDsID(ReturnQuotedString(kDefaultDataStructure, "'", "'").c_str(),
                                             m_strTablePrefix, false);
            }
            DvnStored::SetText(row, row.m_TYPE_DS, typeKey.str());
            break;
        }
        default: row.m_DATA_TYPE = 1; break;
    }
    auto cardinality = member("Cardinality");
    if (cardinality.IsDefined())
        row.m_ARRAY_SIZE = cardinality.AsLong(0);
    else
        row.SetFieldNull(&row.m_ARRAY_SIZE);
    ReadTexts(member, row, row.m_DESCRIPTION, row.m_DOCUMENTATION);
    return LevelOk;
}
