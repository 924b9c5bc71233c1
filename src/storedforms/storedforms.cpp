#include "storedforms.h"

#include <cstdint>

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

}  // namespace DvnStored
