// What the loads of processes, activities and diagrams share. Internal
// header of the front end.
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "dvnbdbfe.h"

namespace processload {

// A column as a value, or nothing when it is NULL.
inline std::optional<long> Value(const CRecordset& row, const long& member) {
    if (row.IsFieldNull(&member)) return std::nullopt;
    return member;
}
inline std::optional<std::string> Value(const CRecordset& row, const CString& member) {
    if (row.IsFieldNull(&member)) return std::nullopt;
    return member.str();
}
inline void Put(const std::optional<long>& value, DvnfAttributeData target) {
    if (value) target = *value;
}
inline void Put(const std::optional<std::string>& value, DvnfAttributeData target) {
    if (value) target = value->c_str();
}
// An x/y pair, only when both are there.
inline void PutPair(const std::optional<long>& x, const std::optional<long>& y, DvnfAttributeData target) {
    if (!x || !y) return;
    target("Xpos") = *x;
    target("Ypos") = *y;
}

}  // namespace processload

template <class Set>
void DvnConvCoreDbFe::TextsInOrder(const char* table, const char* keyColumn, const CString& key,
                                   CString Set::*member, DvnfAttributeData target) {
    std::vector<std::string> texts;
    Set rs(m_pDatabase);
    ReadRows(rs, SelectFrom(table, keyColumn, key), [&](Set& row) { texts.push_back((row.*member).str()); });
    std::sort(texts.begin(), texts.end());
    for (const std::string& text : texts) target.NewSetElement() = text.c_str();
}

template <class Set>
void DvnConvCoreDbFe::ContainerValues(const char* table, const char* keyColumn, const CString& key,
                                      DvnfAttributeData attributes) {
    for (int io = 1; io <= 2; ++io) {
        DvnfAttributeData members = attributes(io == 1 ? "InputContainer" : "OutputContainer")("Members");
        members.Reset();
        std::vector<std::pair<std::string, std::string>> values;
        Set rs(m_pDatabase);
        ReadRows(rs,
                 SelectFrom(table, keyColumn, key) + " AND INPUT_OR_OUTPUT = " + (io == 1 ? "1" : "2"),
                 [&](Set& row) { values.emplace_back(row.m_DOTTED_NAME.str(), row.m_INITIAL_VALUE.str()); });
        std::sort(values.begin(), values.end());
        for (const auto& [name, value] : values) {
            DvnfAttributeData member = members.NewSetElement();
            member("Name") = name.c_str();
            member("Value") = value.c_str();
        }
    }
}
