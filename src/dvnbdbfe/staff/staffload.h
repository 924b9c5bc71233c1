// What the staff loads share: links only to rows that exist, and the rows of
// a relation in a fixed order. Internal header of the front end.
#pragma once

#include <string>
#include <vector>

#include "dvnbdbfe.h"
#include "dvnstaffsets.h"

template <class Set>
bool DvnConvCoreDbFe::RowExists(const char* table, const char* keyColumn, const CString& key) {
    Set rs(m_pDatabase);
    return ReadRows(rs, SelectFrom(table, keyColumn, key), [](Set&) {}) > 0;
}

template <class Set>
bool DvnConvCoreDbFe::LinkToRow(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                                const char* keyColumn, const CRecordset& row, const CString& member) {
    if (row.IsFieldNull(&member) || member.IsEmpty()) return false;
    if (!RowExists<Set>(table, keyColumn, member)) return false;
    return LinkByOID(entity, linkName, targetType, row, member);
}

template <class Set>
std::vector<CString> DvnConvCoreDbFe::ColumnOf(const CString& statement, CString Set::*member) {
    std::vector<CString> values;
    Set rs(m_pDatabase);
    ReadRows(rs, statement, [&](Set& row) { values.push_back(row.*member); });
    return values;
}

// Names, not keys, give the order of the links: keys are drawn anew in every
// repository, the names travel with the text, so a repository exported and
// imported elsewhere loads its relations in the same order. Bytewise, the
// same on every database.
template <class TargetSet>
void DvnConvCoreDbFe::LinkEach(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                               const char* keyColumn, CString TargetSet::*name, const std::vector<CString>& keys) {
    NamesAndKeys targets;
    for (const CString& key : keys) {
        TargetSet rs(m_pDatabase);
        ReadRows(rs, SelectFrom(table, keyColumn, key),
                 [&](TargetSet& row) { targets.emplace_back((row.*name).c_str(), key); });
    }
    LinkInNameOrder(entity, linkName, targetType, targets);
}

template <class TargetSet>
void DvnConvCoreDbFe::LinkEachRow(DvnfEntity& entity, const char* linkName, const char* targetType,
                                  const CString& statement, CString TargetSet::*key, CString TargetSet::*name) {
    NamesAndKeys targets;
    TargetSet rs(m_pDatabase);
    ReadRows(rs, statement, [&](TargetSet& row) { targets.emplace_back((row.*name).c_str(), row.*key); });
    LinkInNameOrder(entity, linkName, targetType, targets);
}
