// The one way in which a recordset class reads one value by key: set the
// filter, open read-only as a snapshot on prefix plus table, take the first
// row, close on every path.
#pragma once

#include <iostream>
#include <string_view>

#include "odbcframe.h"

// One number: the first column of a statement such as "SELECT COUNT(*)".
class DvnCountSet : public CRecordset {
public:
    explicit DvnCountSet(CDatabase* db) : CRecordset(db) {
        m_nFields = 1;
        m_nDefaultType = snapshot;
    }
    void DoFieldExchange(CFieldExchange* pFX) override {
        pFX->SetFieldType(CFieldExchange::outputColumn);
        RFX_Long(pFX, "[N]", m_N);
    }
    long m_N = 0;
};

namespace dvnlookup {

// The filter with " AND CHECKED_OUT <> 4" behind it unless tombstones count.
CString WithTombstoneRule(const CString& filter, bool includeDeleted);

// A bare name or identifier as an SQL string literal: in quotes, with every
// quote inside doubled.
CString Literal(std::string_view bare);
inline CString Literal(const CString& bare) { return Literal(std::string_view(bare.str())); }

// Opens rs on table with filter and returns take() of the first row, or
// empty when there is none or Open refuses. A CDBException goes up, with the
// recordset closed.
template <class T, class Take>
T FirstRow(CRecordset& rs, const CString& table, const CString& filter, T empty, Take take) {
    struct Closer {
        CRecordset& rs;
        ~Closer() {
            if (rs.IsOpen()) rs.Close();
        }
    } closer{rs};
    rs.m_strFilter = filter;
    if (!rs.Open(CRecordset::snapshot, table, CRecordset::readOnly)) return empty;
    if (rs.GetRecordCount() < 1 || rs.IsEOF()) return empty;
    return take();
}

// As FirstRow, but a CDBException writes its text and an end of line on
// standard output, is deleted, and gives the empty result.
template <class T, class Take>
T FirstRowQuiet(CRecordset& rs, const CString& table, const CString& filter, T empty, Take take) {
    try {
        return FirstRow(rs, table, filter, empty, take);
    } catch (CDBException* e) {
        std::cout << e->m_strError << std::endl;
        e->Delete();
        return empty;
    }
}

// One text column of a table (a literal such as "[AID]"): the set a lookup
// of one value opens, so that the driver fetches and converts that column
// alone and not every column of the row.
class ValueSet : public CRecordset {
public:
    ValueSet(CDatabase* db, const char* column) : CRecordset(db), m_column(column) {
        m_nFields = 1;
        m_nDefaultType = snapshot;
    }
    void DoFieldExchange(CFieldExchange* pFX) override {
        pFX->SetFieldType(CFieldExchange::outputColumn);
        RFX_Text(pFX, m_column, m_value);
    }
    CString m_value;

private:
    const char* m_column;
};

// FirstRow of one text column, on the database of rs, as a T made from its
// characters: empty when there is no row. rs keeps the filter, as after
// FirstRow, and stays closed.
template <class T = CString>
T FirstValue(CRecordset& rs, const CString& table, const CString& filter, const char* column) {
    ValueSet value(rs.m_pDatabase, column);
    rs.m_strFilter = filter;
    return FirstRow(value, table, filter, T(""), [&] { return T(value.m_value.c_str()); });
}

// FirstRowQuiet of one text column.
template <class T = CString>
T FirstValueQuiet(CRecordset& rs, const CString& table, const CString& filter, const char* column) {
    ValueSet value(rs.m_pDatabase, column);
    rs.m_strFilter = filter;
    return FirstRowQuiet(value, table, filter, T(""), [&] { return T(value.m_value.c_str()); });
}

}  // namespace dvnlookup
