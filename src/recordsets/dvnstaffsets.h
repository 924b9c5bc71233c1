// Recordset classes of staff definitions and of the four kinds of list.
#pragma once

#include "dvncolumns.h"
#include "dvnkernn.h"

#define DVN_PERSON_COLUMNS(C)                                                           \
    C(TEXT, PERSON_ID) C(TEXT, USERID) C(LONG, LEVEL_ID) C(TEXT, SYSTEM)                \
    C(TEXT, SYSTEM_GROUP) C(TEXT, SUBSTITUTE) C(TEXT, ORGANIZATION_ID) C(TEXT, PASSWORD) \
    C(TEXT, PERSONID) C(TEXT, FIRSTNAME) C(TEXT, MIDDLENAME) C(TEXT, LASTNAME)          \
    C(TEXT, PHONENUMBER) C(TEXT, SECONDPHONE) C(INT, ABSENT_FLAG)                       \
    C(TEXT, LOGON_BLKD_UNTIL) C(INT, STAFF_AUTH) C(INT, TOPOLOGY_AUTH)                  \
    C(INT, GLOBAL_PRC_AUTH) C(INT, GLOBAL_PADM_AUTH) C(INT, OPERATION_AUTH)             \
    C(INT, PROC_DEF_AUTH) C(INT, SAUTH_DEF_AUTH) C(INT, RESET_ABSENT_IND)               \
    C(INT, GLOBAL_PERS_AUTH) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)                \
    C(TEXT, DESCRIPTION)

class DvnPersonSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersonSet, DVN_PERSON_COLUMNS)
    // name in quoted form; its letters a-z in any case: USERID holds the
    // name folded by DvnUser::FoldUserId, and so is name. A database
    // exception is written on standard output.
    CString GetPersonID(const CString& name, const CString& prefix, bool includeDeleted);
    // A database exception goes up.
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

#define DVN_ROLE_COLUMNS(C)                                                             \
    C(TEXT, ROLE_ID) C(TEXT, NAME) C(TEXT, COORDINATOR_ID) C(INT, CHECKED_OUT)          \
    C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnRoleSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnRoleSet, DVN_ROLE_COLUMNS)
    // name in quoted form; a database exception is written on standard output.
    CString GetRoleID(const CString& name, const CString& prefix, bool includeDeleted);
    // A database exception goes up.
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

#define DVN_ROLE_INCL_PERSON_COLUMNS(C) C(TEXT, ROLE_ID) C(TEXT, PERSON_ID)

class DvnRelRoleSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnRelRoleSet, DVN_ROLE_INCL_PERSON_COLUMNS)
};

#define DVN_ORGANIZATION_COLUMNS(C)                                                     \
    C(TEXT, ORGANIZATION_ID) C(TEXT, NAME) C(TEXT, PARENT_ORG_ID) C(TEXT, MANAGER_ID)   \
    C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnOrganizationSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnOrganizationSet, DVN_ORGANIZATION_COLUMNS)
    // name in quoted form; a database exception is written on standard output.
    CString GetOrganizationID(const CString& name, const CString& prefix, bool includeDeleted);
    // A database exception goes up.
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

#define DVN_STAFF_LEVEL_COLUMNS(C)                                                      \
    C(LONG, LEVEL_ID) C(TEXT, NAME) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)         \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnStaffLevelSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnStaffLevelSet, DVN_STAFF_LEVEL_COLUMNS)
    // -1 when there is no such row; a database exception is written on
    // standard output and gives -1.
    long GetLevelID(long level, const CString& prefix);
    long GetDefaultLevelID(const CString& prefix);
};

#define DVN_PERS_AUTH_FOR_PERS_COLUMNS(C) C(TEXT, PERSON_ID) C(TEXT, AUTH_FOR_PERSON)
#define DVN_PERS_CATEGORY_COLUMNS(C) C(TEXT, PERSON_ID) C(TEXT, CATID)

class DvnPersAut4PersSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersAut4PersSet, DVN_PERS_AUTH_FOR_PERS_COLUMNS)
};

class DvnPersHasPrcAuthSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersHasPrcAuthSet, DVN_PERS_CATEGORY_COLUMNS)
};

class DvnPersSelPadmAuthSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersSelPadmAuthSet, DVN_PERS_CATEGORY_COLUMNS)
};

// ------------------------------------------------------------------- lists
// The list columns in two parts: WORK_LIST has BEEP_OPTION between them.
#define DVN_LIST_HEAD_COLUMNS(C)                                                        \
    C(TEXT, LIST_ID) C(TEXT, NAME) C(LONG, TYPE) C(TEXT, OWNER) C(LTEXT, FILTER)         \
    C(TEXT, SORT_CRITERIA)
#define DVN_LIST_TAIL_COLUMNS(C)                                                        \
    C(LONG, THRESHOLD) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY) C(TEXT, DESCRIPTION)
#define DVN_LIST_COLUMNS(C) DVN_LIST_HEAD_COLUMNS(C) DVN_LIST_TAIL_COLUMNS(C)

// ACT_INSTANCE_LIST, PRC_INSTANCE_LIST and PRC_TEMPLATE_LIST: the caller
// names the table when it opens the recordset.
class DvnListSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnListSet, DVN_LIST_COLUMNS)
    // name in quoted form, table bare (as "WORK_LIST"); a database exception
    // is written on standard output.
    CString GetListID(const CString& name, const CString& prefix, const CString& table);

protected:
    void ExchangeHead(CFieldExchange* pFX);
    void ExchangeTail(CFieldExchange* pFX);
};

#define DVN_WORK_LIST_OWN_COLUMNS(C) C(INT, BEEP_OPTION)

class DvnWListSet : public DvnListSet {
    DVN_DECLARE_RECORDSET(DvnWListSet, DVN_WORK_LIST_OWN_COLUMNS)
};

#define DVN_PERS_HAS_ACT_INSTL_COLUMNS(C) C(TEXT, PERSON) C(TEXT, ACT_INSTANCE_LIST)
#define DVN_PERS_HAS_PRC_INSTL_COLUMNS(C) C(TEXT, PERSON) C(TEXT, PRC_INSTANCE_LIST)
#define DVN_PERS_HAS_PRC_TMPLT_COLUMNS(C) C(TEXT, PERSON) C(TEXT, PRC_TEMPLATE_LIST)
#define DVN_PERS_HAS_WRK_LST_COLUMNS(C) C(TEXT, PERSON) C(TEXT, WORK_LIST)

class DvnPersonHasActivityListSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersonHasActivityListSet, DVN_PERS_HAS_ACT_INSTL_COLUMNS)
};

class DvnPersonHasPrcInstanceListSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersonHasPrcInstanceListSet, DVN_PERS_HAS_PRC_INSTL_COLUMNS)
};

class DvnPersonHasPrcTemplateListSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersonHasPrcTemplateListSet, DVN_PERS_HAS_PRC_TMPLT_COLUMNS)
};

class DvnPersonHasWorkListSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnPersonHasWorkListSet, DVN_PERS_HAS_WRK_LST_COLUMNS)
};
