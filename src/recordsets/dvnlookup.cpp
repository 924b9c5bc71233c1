#include "dvnlookup.h"

namespace dvnlookup {

CString WithTombstoneRule(const CString& filter, bool includeDeleted) {
    return includeDeleted ? filter : filter + " AND CHECKED_OUT <> 4";
}

CString Literal(const CString& bare) {
    CString doubled = bare;
    doubled.Replace("'", "''");
    return "'" + doubled + "'";
}

}  // namespace dvnlookup
