#include "storedforms.h"

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

}  // namespace DvnStored
