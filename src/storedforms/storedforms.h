// Stored forms of values: how a text of the core model becomes a column
// value, shared by the stores and the loads.
#pragma once

#include <string>

#include "odbcframe.h"

namespace DvnStored {

// Longest texts kept in the columns, in characters.
constexpr size_t DescriptionChars = 254;   // DESCRIPTION: 255 or more is cut to 254
constexpr size_t LongTextChars = 4097;     // conditions
constexpr size_t ContainerValueChars = 32672;

// The text cut to its first `limit` characters (UTF-8 code points, so that a
// character is never split) when it holds more.
std::string Cut(const std::string& text, size_t limit);

// Puts text into a column member; an empty text is stored as NULL.
void SetText(CRecordset& row, CString& member, const std::string& text);

}  // namespace DvnStored
