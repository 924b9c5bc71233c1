// Store of process categories.
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "storedforms.h"

int DvnConvCoreDbBe::SaveCategories(CDatabase& db, bool authorized) {
    return SaveLoop(db, "Category", authorized, ModelingRight, "Category",
                    [&](DvnfEntity& entity) { return SaveCategory(db, entity); });
}

int DvnConvCoreDbBe::SaveCategory(CDatabase& db, DvnfEntity& entity) {
    if (!entity.IsValid()) {
        DVN_TRACE(1, 2, "Category is nor defined");
        return LevelError;
    }
    const bool toDelete = entity.State() == StateDeleted;
    const DvnString name = entity.Name();
    std::cout << "Category " << name << "...\n" << std::endl;
    DVN_TRACE(3, 1, "Category " << name << "...\n");

    DvnCategorySet row(&db);
    row.m_strFilter = CString("NAME = ") + ReturnQuotedString(name, "'", "'").c_str();
    try {
        row.Open(CRecordset::snapshot, Table("CATEGORY"), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", "CATEGORY", &row);
    }

    if (row.IsEOF()) {
        if (toDelete) {
            row.Close();
            Report(51273, DvnString("DELETE PROCESS_CATEGORY ") | name);
            return LevelOk;
        }
        if (!row.CanAppend()) {
            row.Close();
            Report(51315, name);
            return LevelError;
        }
        int level = LevelOk;
        try {
            row.AddNew();
            level = ReadCategoryAttributes(db, entity, row, true);
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", "CATEGORY", &row);
            Report(51315, name);
            return LevelError;
        }
        Report(51019, name);
        row.Close();
        return level;
    }

    if (!m_bOverwrite && !toDelete) {
        row.Close();
        Report(51083, name);
        return LevelOk;
    }

    int level = LevelOk;
    try {
        row.MoveFirst();
        if (!row.IsFieldNull(&row.m_CHECKED_OUT_BY)) {
            Report(51146, name, DvnString(row.m_CHECKED_OUT_BY.c_str()));
            row.Close();
            return LevelWarning;
        }
        const CString key = row.m_CATID;
        if (toDelete) {
            // A category that a process still names stays.
            DvnProcessSet process(&db);
            process.Open(CRecordset::snapshot,
                         CString("SELECT * FROM ") + m_strTablePrefix + "PROCESS WHERE CATID ='" + key + "'",
                         CRecordset::readOnly);
            if (!process.IsEOF()) {
                Report(51242, name, DvnString(process.m_NAME.c_str()));
                process.Close();
                row.Close();
                return LevelWarning;
            }
            process.Close();
            if (m_nSourceMark == MarkClean) {
                const CString statement =
                    CString("DELETE FROM ") + m_strTablePrefix + "CATEGORY WHERE CATID = '" + key + "'";
                row.Close();
                level = DeleteObject(db, statement, "CATEGORY");
                if (level == LevelOk) Report(51219, name);
                return level;
            }
        }
        row.Edit();
        if (toDelete)
            row.m_CHECKED_OUT = MarkTombstone;
        else
            level = ReadCategoryAttributes(db, entity, row, false);
    } catch (CDBException* e) {
        ReportDbException(e, "reading", "CATEGORY", &row);
        Report(51347, name);
        return LevelError;
    }

    if (!row.CanUpdate()) {
        Report(51347, name);
        level = LevelError;
    } else {
        try {
            row.Update();
        } catch (CDBException* e) {
            ReportDbException(e, "updating", "CATEGORY", &row);
            Report(51347, name);
            return LevelError;
        }
        Report(51051, name);
    }
    if (row.IsOpen()) row.Close();
    return level;
}

int DvnConvCoreDbBe::ReadCategoryAttributes(CDatabase&, DvnfEntity& entity, DvnCategorySet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    if (isNew) {
        row.m_CATID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = m_nSourceMark;
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    DvnfAttributeData attributes = entity.AttributeData();
    auto description = attributes("Description");
    if (description.IsDefined())
        DvnStored::SetText(row, row.m_DESCRIPTION,
                           DvnStored::Cut(description.AsString("").c_str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&row.m_DESCRIPTION);
    auto documentation = attributes("Documentation");
    if (documentation.IsDefined())
        DvnStored::SetText(row, row.m_DOCUMENTATION, documentation.AsString("").c_str());
    else
        row.SetFieldNull(&row.m_DOCUMENTATION);
    return LevelOk;
}
