#include "dvnlookup.h"

namespace dvnlookup {

CString WithTombstoneRule(const CString& filter, bool includeDeleted) {
    return includeDeleted ? filter : filter + " AND CHECKED_OUT <> 4";
}

CString Literal(std::string_view bare) {
    std::string quoted;
    quoted.reserve(bare.size() + 8);
    quoted += '\'';
    for (const char ch : bare) {
        if (ch == '\'') quoted += '\'';
        quoted += ch;
    }
    quoted += '\'';
    return CString(std::move(quoted));
}

}  // namespace dvnlookup
