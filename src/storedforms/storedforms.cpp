#include "storedforms.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace DvnStored {

std::string Cut(const std::string& text, size_t limit) {
    size_t characters = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        // Every byte that does not continue a UTF-8 sequence starts a character.
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            if (characters == limit) return text.substr(0, i);
            ++characters;
        }
    }
    return text;
}

void SetText(CRecordset& row, CString& member, const std::string& text) {
    if (text.empty()) {
        row.SetFieldNull(&member, true);
    } else {
        member = text;
        row.SetFieldNull(&member, false);
    }
}

long Seconds(const DurationUnits& units) {
    // Unsigned arithmetic wraps by definition; signed overflow would not.
    uint32_t sum = 0;
    for (size_t i = 0; i < units.size(); ++i)
        if (units[i]) sum += static_cast<uint32_t>(*units[i]) * static_cast<uint32_t>(UnitSeconds[i]);
    return static_cast<int32_t>(sum);
}

long PackedColor(long red, long green, long blue) {
    const uint32_t sum = static_cast<uint32_t>(red) * 1000000u + static_cast<uint32_t>(green) * 1000u +
                         static_cast<uint32_t>(blue);
    return static_cast<int32_t>(sum);
}

std::string TimeEvent(std::optional<long> every, std::optional<long> on, std::optional<long> atHours,
                      std::optional<long> atMinutes) {
    static const char* const periods[] = {"DAY", "MONTH", "WEEK", "YEAR"};
    static const char* const weekdays[] = {"MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY",
                                           "FRIDAY", "SATURDAY", "SUNDAY"};
    std::string text;
    if (every) {
        text = "EVERY ";
        if (*every >= 1 && *every <= 4) text += periods[*every - 1];
    }
    if (on) {
        text = every ? text + " ON " : std::string("EVERY ");
        if (*on >= 1 && *on <= 7) text += weekdays[*on - 1];
    }
    if (atHours || atMinutes) {
        text += " AT ";
        // Plain decimal of the value taken as unsigned, as "%u" writes it.
        if (atHours) text += std::to_string(static_cast<unsigned>(*atHours)) + ".";
        if (atMinutes) {
            const unsigned minutes = static_cast<unsigned>(*atMinutes);
            text += (minutes < 10 ? "0" : "") + std::to_string(minutes);
        } else {
            text += "00";
        }
    }
    return text.empty() ? std::string("ANYTIME") : text;
}

// ---------------------------------------------------------------- loads

ColorParts UnpackedColor(long value) {
    char digits[32];
    std::snprintf(digits, sizeof digits, "%09ld", value);
    const std::string text(digits);
    auto part = [&](size_t from) { return std::atol(text.substr(from, 3).c_str()); };
    return {part(0), part(3), part(6)};
}

FontParts FontSetting(long size, long style, const std::string& descriptor) {
    FontParts parts;
    if (size != -1) parts.size = size;
    if (style == 1 || style == 2) parts.style = style;
    if (!descriptor.empty()) parts.descriptor = descriptor;
    return parts;
}

PeriodParts Period(long value) {
    if (value == 0) return {0, std::nullopt};
    if (value == 999999999) return {1, std::nullopt};
    return {2, value};
}

namespace {

// When text begins with word: cuts it and the blank behind it, true.
bool CutWord(std::string& text, const char* word) {
    const size_t length = std::strlen(word);
    if (text.compare(0, length, word) != 0) return false;
    text.erase(0, length);
    if (!text.empty() && text[0] == ' ') text.erase(0, 1);
    return true;
}

}  // namespace

TimeEventParts ParsedTimeEvent(std::string text) {
    TimeEventParts parts;
    text.erase(0, text.find_first_not_of(" \t\r\n"));
    if (text.compare(0, 7, "ANYTIME") == 0) {
        parts.anyTimeWord = true;
        return parts;
    }
    if (CutWord(text, "EVERY")) {
        // Each test sees what the one before left.
        static const std::pair<const char*, long> periods[] = {{"DAY", 1}, {"WEEK", 3}, {"MONTH", 2}, {"YEAR", 4}};
        for (const auto& [word, every] : periods) {
            if (CutWord(text, word)) {
                parts.anyTime = false;
                parts.every = every;
            }
        }
    }
    if (CutWord(text, "ON")) {
        static const char* const weekdays[] = {"MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY",
                                               "FRIDAY", "SATURDAY", "SUNDAY"};
        for (long day = 1; day <= 7; ++day) {
            if (CutWord(text, weekdays[day - 1])) {
                parts.anyTime = false;
                parts.on = day;
            }
        }
    }
    if (CutWord(text, "AT")) {
        parts.anyTime = false;
        // Two characters or fewer are too few for a time.
        if (text.size() > 2) {
            const size_t separator = text.find_first_of(".:");
            parts.atHours = std::atol(text.substr(0, separator).c_str());
            text.erase(0, separator == std::string::npos ? text.size() : separator + 1);
            if (text.size() >= 2) parts.atMinutes = std::atol(text.substr(0, 2).c_str());
        }
    }
    return parts;
}

}  // namespace DvnStored
