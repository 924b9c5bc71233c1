// Recordset classes of programs: the general settings, one table per
// platform, and the external services.
#pragma once

#include "dvncolumns.h"
#include "dvnkernn.h"

#define DVN_PROGRAM_COLUMNS(C)                                                          \
    C(TEXT, PROGRAM_ID) C(TEXT, NAME) C(TEXT, INPUT_DS) C(TEXT, OUTPUT_DS)              \
    C(INT, DS_FROM_ACTIVITY) C(INT, UNATTENDED) C(LONG, INPUT_ACCESS) C(LONG, OUTPUT_ACCESS) \
    C(LONG, EXECUTION_USER) C(LONG, EXECUTION_MODE) C(LONG, TRUST_MODE)                 \
    C(TEXT, USER_DEFINED_ICON) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)              \
    C(DOC, DOCUMENTATION) C(TEXT, DESCRIPTION)

class DvnProgramSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProgramSet, DVN_PROGRAM_COLUMNS)
    // name in quoted form; a database exception is written on standard output.
    CString GetProgramID(const CString& name, const CString& prefix, bool includeDeleted);
    // A database exception goes up.
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

// The columns every platform table shares; the platform's own follow them.
#define DVN_PLATFORM_COLUMNS(C)                                                         \
    C(TEXT, PATH_AND_FILE_NAME) C(TEXT, PROGRAM_ID) C(LONG, INHERIT_ENV) C(TEXT, ENVIRONMENT) \
    C(LONG, IMPLEMENTATION_TYP) C(TEXT, WORKING_DIR) C(TEXT, COMMAND_LINE_PARM)         \
    C(TEXT, ENTRY_POINT) C(LONG, KEEP_LOADED) C(LONG, FENCED) C(LONG, DLL_V2_COMPAT)

class DvnPlatformSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPlatformSet, DVN_PLATFORM_COLUMNS)
};

// WINNT_EXTENT and WIN95_EXTENT.
#define DVN_W_PLATFORM_COLUMNS(C) C(LONG, START_IN_FOREGRND) C(LONG, STYLE)
// NK2_EXTENT.
#define DVN_O_PLATFORM_COLUMNS(C) C(LONG, AUTOMATIC_CLOSE) C(LONG, START_IN_FOREGRND) C(LONG, STYLE)
// KRX_EXTENT, HPUX_EXTENT and SOLARIS_EXTENT.
#define DVN_X_PLATFORM_COLUMNS(C) C(LONG, RUN_IN_XTERM)

class DvnWPlatformSet : public DvnPlatformSet {
    DVN_DECLARE_RECORDSET(DvnWPlatformSet, DVN_W_PLATFORM_COLUMNS)
};

class DvnOPlatformSet : public DvnPlatformSet {
    DVN_DECLARE_RECORDSET(DvnOPlatformSet, DVN_O_PLATFORM_COLUMNS)
};

class DvnXPlatformSet : public DvnPlatformSet {
    DVN_DECLARE_RECORDSET(DvnXPlatformSet, DVN_X_PLATFORM_COLUMNS)
};

#define DVN_EXTERNAL_SERVICE_COLUMNS(C)                                                 \
    C(LONG, PLATFORM) C(TEXT, PROGRAM_ID) C(TEXT, SERVICE) C(TEXT, SERVICE_TYPE)         \
    C(TEXT, EXECUTABLE) C(TEXT, EXECUTABLE_TYPE) C(TEXT, INVOCATION_TYPE)               \
    C(LONG, LOCAL_USER) C(LONG, SECURITY_CHECKING) C(LONG, CODEPAGE) C(LONG, DURATION)  \
    C(LONG, MAPPING) C(TEXT, MAPPING_TYPE) C(TEXT, FORWARD_MAPPING)                     \
    C(TEXT, BACKWARD_MAPPING) C(TEXT, FORWARD_MAP_PARAM) C(TEXT, BACKWARD_MAP_PARAM)

class DvnExternalService : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnExternalService, DVN_EXTERNAL_SERVICE_COLUMNS)
};
