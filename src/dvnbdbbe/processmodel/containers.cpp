// Initial values of the input and output containers of activities
// (ACT_CONTAINER) and processes (PRC_CONTAINER). Only members with a value
// are stored. The process side also ends the first-pass mark 9 of a new
// PROCESS row.
#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

namespace {

// A value row unless the same one is there. Name and value are compared
// with "=" (docs/schema.md): the same name with two values gives two rows.
template <class Set>
int WriteContainerValue(CDatabase& db, const CString& table, const char* keyColumn, CString Set::*keyMember,
                        const CString& key, int inputOrOutput, const CString& name, const CString& value,
                        const char* exists, const std::function<int(CDBException*, const char*, CRecordset*)>& fail) {
    const CString cut = DvnStored::Cut(value.str(), DvnStored::ContainerValueChars);
    Set row(&db);
    CString number;
    number.Format("%d", inputOrOutput);
    row.m_strFilter = CString(keyColumn) + " = " + Quoted(key) + " AND INPUT_OR_OUTPUT = " + number +
                      " AND DOTTED_NAME = " + Quoted(name) + " AND INITIAL_VALUE = " + Quoted(cut);
    try {
        row.Open(CRecordset::snapshot, table, CRecordset::none);
    } catch (CDBException* e) {
        return fail(e, "opening", &row);
    }
    if (!row.IsEOF()) {
        DVN_TRACE(3, 2, exists);
        row.Close();
        return DvnConvCoreDbBe::LevelOk;
    }
    if (!row.CanAppend()) {
        row.Close();
        return DvnConvCoreDbBe::LevelError;
    }
    try {
        row.AddNew();
        row.*keyMember = key;
        row.m_INPUT_OR_OUTPUT = inputOrOutput;
        DvnStored::SetText(row, row.m_DOTTED_NAME, name.str());
        DvnStored::SetText(row, row.m_INITIAL_VALUE, cut.str());
        row.Update();
    } catch (CDBException* e) {
        return fail(e, "updating", &row);
    }
    row.Close();
    return DvnConvCoreDbBe::LevelOk;
}

}  // namespace

int DvnConvCoreDbBe::WalkContainers(const DvnfAttributeDataReader& attributes,
                                    const std::function<int(int, const CString&, const CString&)>& write) {
    int level = LevelOk;
    int inputOrOutput = 1;
    for (const char* container : {"InputContainer", "OutputContainer"}) {
        DvnfDataSetIterator members = attributes(container)("Members").ElementsOfSet();
        if (members.Type() == DvnfAttributeType::Set) {
            for (DvnfAttributeDataReader member = members.First(); member.IsValid(); member = members.Next()) {
                const DvnString value = member("Value").AsString("");
                if (value.IsEmpty()) continue;
                level = std::max(level, write(inputOrOutput, member("Name").AsString("").c_str(), value.c_str()));
            }
        }
        ++inputOrOutput;
    }
    return level;
}

// ------------------------------------------------------------------ activities

int DvnConvCoreDbBe::ReadActivityContainers(CDatabase& db, const DvnfAttributeDataReader& attributes,
                                            const CString& aid) {
    return WalkContainers(attributes, [&](int inputOrOutput, const CString& name, const CString& value) {
        return SaveActContainer(db, aid, inputOrOutput, name, value);
    });
}

int DvnConvCoreDbBe::SaveActContainer(CDatabase& db, const CString& aid, int inputOrOutput, const CString& name,
                                      const CString& value) {
    const int level = WriteContainerValue<DvnActContainerSet>(
        db, Table("ACT_CONTAINER"), "AID", &DvnActContainerSet::m_AID, aid, inputOrOutput, name, value,
        "Activity container value not added, already exists",
        [&](CDBException* e, const char* action, CRecordset* rs) {
            ReportDbException(e, action, "ACT_CONTAINER", rs);
            if (std::string(action) == "updating") DVN_TRACE(1, 2, "Activity container value not added");
            return static_cast<int>(LevelError);
        });
    if (level >= LevelError) DVN_TRACE(1, 2, "Activity container not added");
    return level;
}

int DvnConvCoreDbBe::DeleteActContainer(CDatabase& db, const CString& aid) {
    try {
        db.ExecuteSQL(CString("DELETE FROM ") + Table("ACT_CONTAINER") + " WHERE AID = " + Quoted(aid));
    } catch (CDBException* e) {
        return ReportDbException(e, "deleting in", "ACT_CONTAINER");
    }
    return LevelOk;
}

// ------------------------------------------------------------------ processes

int DvnConvCoreDbBe::SaveProcessContainer(CDatabase& db, DvnfEntity& process) {
    const DvnString name = process.Name();
    CString pid;
    int level = LevelOk;
    {
        DvnSimplePrcSet row(&db);
        row.m_strFilter = CString("NAME = ") + Quoted(name);
        try {
            row.Open(CRecordset::snapshot, Table("PROCESS"), CRecordset::none);
        } catch (CDBException* e) {
            return ReportDbException(e, "opening", "PROCESS", &row);
        }
        if (row.IsEOF()) {
            row.Close();
            DVN_TRACE(1, 2, "Process " << name << " not found");
            return LevelError;
        }
        try {
            row.MoveFirst();
            if (row.m_CHECKED_OUT == MarkFirstPassDone) {
                row.Edit();
                row.m_CHECKED_OUT = m_nSourceMark;
                row.Update();
            } else if (!m_bOverwrite) {
                row.Close();
                return LevelOk;
            }
        } catch (CDBException* e) {
            level = ReportDbException(e, "updating", "PROCESS", &row);
        }
        pid = row.m_PID;
        if (row.IsOpen()) row.Close();
    }
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(process).AttributeData();
    level = std::max(level, WalkContainers(attributes, [&](int inputOrOutput, const CString& member,
                                                           const CString& value) {
        return WritePrcContainer(db, pid, inputOrOutput, member, value);
    }));
    if (level > LevelWarning)
        DVN_TRACE(1, 2, "Not all Process container values for " << name << " written to database");
    return level;
}

int DvnConvCoreDbBe::WritePrcContainer(CDatabase& db, const CString& pid, int inputOrOutput, const CString& name,
                                       const CString& value) {
    return WriteContainerValue<DvnProcessContainerSet>(
        db, Table("PRC_CONTAINER"), "PID", &DvnProcessContainerSet::m_PID, pid, inputOrOutput, name, value,
        "Process container value not added, already exists",
        [&](CDBException* e, const char* action, CRecordset* rs) {
            return ReportDbException(e, action, "PRC_CONTAINER", rs);
        });
}

int DvnConvCoreDbBe::DeleteProcessContainer(CDatabase& db, const CString& pid) {
    try {
        db.ExecuteSQL(CString("DELETE FROM ") + Table("PRC_CONTAINER") + " WHERE PID = " + Quoted(pid));
    } catch (CDBException* e) {
        return ReportDbException(e, "deleting in", "PRC_CONTAINER");
    }
    return LevelOk;
}
