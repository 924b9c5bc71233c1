// Stored forms of values: how a text of the core model becomes a column
// value, shared by the stores and the loads.
#pragma once

#include <array>
#include <optional>
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

// A duration: the counts of "Years", "Months", "Weeks", "Days", "Hours",
// "Minutes" and "Seconds", in that order, each absent when not given. A month
// counts 30 days and a year 365.
using DurationUnits = std::array<std::optional<long>, 7>;
inline constexpr std::array<long, 7> UnitSeconds = {31536000, 2592000, 604800, 86400, 3600, 60, 1};

// The stored value of a duration: the sum of count times weight over the
// given units, in seconds. The column holds 32 bits: the sum wraps as a
// 32-bit two's complement number (a count that overflows it is not refused).
long Seconds(const DurationUnits& units);

// The stored value of a colour: red times 1,000,000, plus green times 1,000,
// plus blue, so that the nine decimal digits read RRRGGGBBB. A part above 999
// runs into the next one (the column keeps what the sum gives, wrapped to 32
// bits like a duration).
long PackedColor(long red, long green, long blue);

// The stored text of a time event, from "Every" (1 day, 2 month, 3 week, 4
// year), "On" (1 Monday .. 7 Sunday), "AtHours" and "AtMinutes", each absent
// when not given: "ANYTIME", "EVERY DAY", "EVERY MONTH ON MONDAY AT 14.05",
// "EVERY WEDNESDAY", " AT 7.00", " AT 30". A value outside its range adds
// no word.
std::string TimeEvent(std::optional<long> every, std::optional<long> on, std::optional<long> atHours,
                      std::optional<long> atMinutes);

// ---------------------------------------------------------------- loads
// The stored forms undone, for the loads.

// The three parts of a stored colour: its value written with "%09ld", the
// first three digits red, the next three green, the three after them blue.
struct ColorParts {
    long red, green, blue;
};
ColorParts UnpackedColor(long value);

// The parts of a font that a load sets besides its name: the size unless
// -1 (NULL), the style when it is 1 or 2, the descriptor unless empty.
struct FontParts {
    std::optional<long> size, style;
    std::optional<std::string> descriptor;
};
FontParts FontSetting(long size, long style, const std::string& descriptor);

// A stored period: 0 none ("Type" 0), 999999999 unlimited ("Type" 1),
// anything else "Type" 2 with the seconds.
struct PeriodParts {
    long type;
    std::optional<long> seconds;
};
PeriodParts Period(long value);

// A stored time event read back. "ANYTIME" gives anyTimeWord (the other
// parts are then to be removed); otherwise each part is set when its word
// was met. A text that matches nothing gives nothing.
struct TimeEventParts {
    bool anyTimeWord = false;
    std::optional<bool> anyTime;
    std::optional<long> every, on, atHours, atMinutes;
};
TimeEventParts ParsedTimeEvent(std::string text);

}  // namespace DvnStored
