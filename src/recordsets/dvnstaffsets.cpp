#include "dvnstaffsets.h"

#include "dvnkernn.h"
#include "dvnlookup.h"

using dvnlookup::FirstRowQuiet;
using dvnlookup::FirstValue;
using dvnlookup::FirstValueQuiet;
using dvnlookup::Literal;
using dvnlookup::WithTombstoneRule;

DVN_IMPLEMENT_RECORDSET(DvnPersonSet, DVN_PERSON_COLUMNS, "PERSON")
DVN_IMPLEMENT_RECORDSET(DvnRoleSet, DVN_ROLE_COLUMNS, "ROLE")
DVN_IMPLEMENT_RECORDSET(DvnRelRoleSet, DVN_ROLE_INCL_PERSON_COLUMNS, "ROLE_INCL_PERSON")
DVN_IMPLEMENT_RECORDSET(DvnOrganizationSet, DVN_ORGANIZATION_COLUMNS, "ORGANIZATION")
DVN_IMPLEMENT_RECORDSET(DvnStaffLevelSet, DVN_STAFF_LEVEL_COLUMNS, "STAFF_LEVEL")
DVN_IMPLEMENT_RECORDSET(DvnPersAut4PersSet, DVN_PERS_AUTH_FOR_PERS_COLUMNS, "PERS_AUTH_FOR_PERS")
DVN_IMPLEMENT_RECORDSET(DvnPersHasPrcAuthSet, DVN_PERS_CATEGORY_COLUMNS, "PERS_HAS_PRC_AUTH")
DVN_IMPLEMENT_RECORDSET(DvnPersSelPadmAuthSet, DVN_PERS_CATEGORY_COLUMNS, "PERS_SEL_PADM_AUTH")
DVN_IMPLEMENT_RECORDSET(DvnListSet, DVN_LIST_COLUMNS, "ACT_INSTANCE_LIST")
DVN_IMPLEMENT_BETWEEN(DvnWListSet, DvnListSet, DVN_WORK_LIST_OWN_COLUMNS, "WORK_LIST")
DVN_IMPLEMENT_RECORDSET(DvnPersonHasActivityListSet, DVN_PERS_HAS_ACT_INSTL_COLUMNS, "PERS_HAS_ACT_INSTL")
DVN_IMPLEMENT_RECORDSET(DvnPersonHasPrcInstanceListSet, DVN_PERS_HAS_PRC_INSTL_COLUMNS, "PERS_HAS_PRC_INSTL")
DVN_IMPLEMENT_RECORDSET(DvnPersonHasPrcTemplateListSet, DVN_PERS_HAS_PRC_TMPLT_COLUMNS, "PERS_HAS_PRC_TMPLT")
DVN_IMPLEMENT_RECORDSET(DvnPersonHasWorkListSet, DVN_PERS_HAS_WRK_LST_COLUMNS, "PERS_HAS_WRK_LST")

void DvnListSet::ExchangeHead(CFieldExchange* pFX) {
    pFX->SetFieldType(CFieldExchange::outputColumn);
    DVN_EXCHANGE_COLUMNS(DVN_LIST_HEAD_COLUMNS)
}

void DvnListSet::ExchangeTail(CFieldExchange* pFX) {
    DVN_EXCHANGE_COLUMNS(DVN_LIST_TAIL_COLUMNS)
}

// ----------------------------------------------------------------- lookups
CString DvnPersonSet::GetPersonID(const CString& name, const CString& prefix, bool includeDeleted) {
    // Folded as the store folds a person's name (DvnUser::FoldUserId), so
    // that the login and every lookup meet the stored USERID.
    const CString upper(DvnUser::FoldUserId(DvnString(name.c_str())).c_str());
    return FirstValueQuiet(*this, prefix + "PERSON", WithTombstoneRule("USERID = " + upper, includeDeleted),
                           "[PERSON_ID]");
}

DvnfString DvnPersonSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "PERSON",
                                  WithTombstoneRule("PERSON_ID = " + Literal(id), includeDeleted), "[USERID]");
}

CString DvnRoleSet::GetRoleID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValueQuiet(*this, prefix + "ROLE", WithTombstoneRule("NAME = " + name, includeDeleted), "[ROLE_ID]");
}

DvnfString DvnRoleSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "ROLE", WithTombstoneRule("ROLE_ID = " + Literal(id), includeDeleted),
                                  "[NAME]");
}

CString DvnOrganizationSet::GetOrganizationID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValueQuiet(*this, prefix + "ORGANIZATION", WithTombstoneRule("NAME = " + name, includeDeleted),
                           "[ORGANIZATION_ID]");
}

DvnfString DvnOrganizationSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "ORGANIZATION",
                                  WithTombstoneRule("ORGANIZATION_ID = " + Literal(id), includeDeleted), "[NAME]");
}

long DvnStaffLevelSet::GetLevelID(long level, const CString& prefix) {
    CString filter;
    filter.Format("LEVEL_ID = %ld", level);
    return FirstRowQuiet(*this, prefix + "STAFF_LEVEL", filter, -1L, [&] { return m_LEVEL_ID; });
}

long DvnStaffLevelSet::GetDefaultLevelID(const CString& prefix) {
    // The lowest number, one row read: both databases give the same default.
    return FirstRowQuiet(*this, prefix + "STAFF_LEVEL",
                         "LEVEL_ID = (SELECT MIN(LEVEL_ID) FROM " + prefix + "STAFF_LEVEL)", -1L,
                         [&] { return m_LEVEL_ID; });
}

CString DvnListSet::GetListID(const CString& name, const CString& prefix, const CString& table) {
    return FirstValueQuiet(*this, prefix + table, "NAME = " + name, "[LIST_ID]");
}
