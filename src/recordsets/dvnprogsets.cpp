#include "dvnprogsets.h"

#include "dvnlookup.h"

using dvnlookup::FirstValue;
using dvnlookup::FirstValueQuiet;
using dvnlookup::Literal;
using dvnlookup::WithTombstoneRule;

DVN_IMPLEMENT_RECORDSET(DvnProgramSet, DVN_PROGRAM_COLUMNS, "PROGRAM")
DVN_IMPLEMENT_RECORDSET(DvnPlatformSet, DVN_PLATFORM_COLUMNS, "WINNT_EXTENT")
DVN_IMPLEMENT_BASE_FIRST(DvnWPlatformSet, DvnPlatformSet, DVN_W_PLATFORM_COLUMNS, "WINNT_EXTENT")
DVN_IMPLEMENT_BASE_FIRST(DvnOPlatformSet, DvnPlatformSet, DVN_O_PLATFORM_COLUMNS, "NK2_EXTENT")
DVN_IMPLEMENT_BASE_FIRST(DvnXPlatformSet, DvnPlatformSet, DVN_X_PLATFORM_COLUMNS, "KRX_EXTENT")
DVN_IMPLEMENT_RECORDSET(DvnExternalService, DVN_EXTERNAL_SERVICE_COLUMNS, "EXTERNAL_SERVICE")

CString DvnProgramSet::GetProgramID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValueQuiet(*this, prefix + "PROGRAM", WithTombstoneRule("NAME = " + name, includeDeleted),
                           "[PROGRAM_ID]");
}

DvnfString DvnProgramSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "PROGRAM",
                                  WithTombstoneRule("PROGRAM_ID = " + Literal(id), includeDeleted), "[NAME]");
}
