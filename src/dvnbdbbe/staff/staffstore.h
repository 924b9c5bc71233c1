// What the staff stores (levels, persons, organizations, roles) share:
// quoting, the test for a row, the walk over links. Internal header.
#pragma once

#include <functional>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "familystore.h"
#include "storedforms.h"

namespace dvnstaff {

// A name or key as an SQL literal: in quotes, a quote inside doubled.
inline CString SqlText(const DvnString& text) { return ReturnQuotedString(text, "'", "'").c_str(); }
inline CString SqlText(const CString& text) { return SqlText(DvnString(text.c_str())); }

// Whether the table (bare, behind prefix) has a row that filter selects,
// read through the table's own recordset class. A database exception goes
// up, the recordset closed.
template <class Set>
bool AnyRow(CDatabase& db, const CString& prefix, const char* table, const CString& filter) {
    Set rs(&db);
    rs.m_strFilter = filter;
    try {
        rs.Open(CRecordset::snapshot, prefix + table, CRecordset::readOnly);
    } catch (CDBException*) {
        if (rs.IsOpen()) rs.Close();
        throw;
    }
    const bool found = !rs.IsEOF();
    rs.Close();
    return found;
}

// Calls visit with the name of the target of each valid link of that name
// from entity to the target type, in the order the links were made.
inline void ForEachLinkTarget(const DvnfTRXData& data, DvnfEntity& entity, const char* linkName,
                              const char* targetType, const std::function<void(const DvnString&)>& visit) {
    const DvnfCoreTypes& types = data.Types();
    const DvnfLinkType& linkType =
        types.GetLinkType(DvnfString(linkName), entity.Type(), types.GetEntityType(DvnfString(targetType), true), true);
    DvnfLinkTypeIterator links = entity.LinksOfType(linkType);
    for (const DvnfLink* link = &links.First(); link->IsValid(); link = &links.Next())
        visit(DvnString(link->Target().Name().c_str()));
}

// The description column: cut to 254 characters, null when not defined.
template <class Set>
void SetDescription(Set& row, DvnfEntity& entity) {
    auto description = entity.AttributeData()("Description");
    if (description.IsDefined())
        DvnStored::SetText(row, row.m_DESCRIPTION,
                           DvnStored::Cut(description.AsString("").c_str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&row.m_DESCRIPTION);
}

}  // namespace dvnstaff
