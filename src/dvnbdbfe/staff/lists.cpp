// Load of the four kinds of list: one row each in WORK_LIST,
// ACT_INSTANCE_LIST, PRC_INSTANCE_LIST and PRC_TEMPLATE_LIST, the settings
// into the group "ListCommon" where a definition file gives them.
#include "dvnbdbfe.h"
#include "dvnstaffsets.h"

namespace {
template <class Set>
CString ListKey(const Set& row) {
    return row.m_LIST_ID;
}
template <class Set>
CString ListName(const Set& row) {
    return row.m_NAME;
}
}  // namespace

const DvnConvCoreDbFe::Kind<DvnWListSet> DvnConvCoreDbFe::WorkListKind = {
    .typeName = "Worklist", .table = "WORK_LIST", .keyColumn = "LIST_ID", .plural = "Work Lists",
    .progress = 51507, .notFound = 51543, .lookFirst = false,
    .key = ListKey<DvnWListSet>, .name = ListName<DvnWListSet>, .fill = &DvnConvCoreDbFe::WorkListRow,
};

const DvnConvCoreDbFe::Kind<DvnListSet> DvnConvCoreDbFe::OtherListKinds[3] = {
    {.typeName = "ActivitiesList", .table = "ACT_INSTANCE_LIST", .keyColumn = "LIST_ID",
     .plural = "Activity Instance Lists", .progress = 51504, .notFound = 51540, .lookFirst = false,
     .key = ListKey<DvnListSet>, .name = ListName<DvnListSet>, .fill = &DvnConvCoreDbFe::ListRow},
    {.typeName = "ProcessInstancesList", .table = "PRC_INSTANCE_LIST", .keyColumn = "LIST_ID",
     .plural = "Process Instance Lists", .progress = 51505, .notFound = 51541, .lookFirst = false,
     .key = ListKey<DvnListSet>, .name = ListName<DvnListSet>, .fill = &DvnConvCoreDbFe::ListRow},
    {.typeName = "TemplatesList", .table = "PRC_TEMPLATE_LIST", .keyColumn = "LIST_ID",
     .plural = "Process Template Lists", .progress = 51506, .notFound = 51542, .lookFirst = false,
     .key = ListKey<DvnListSet>, .name = ListName<DvnListSet>, .fill = &DvnConvCoreDbFe::ListRow},
};

// A key is looked for in all four tables; a key that one of them holds is
// no miss in the other three.
void DvnConvCoreDbFe::Lists(DvnString const& id) {
    long found = LoadKind(WorkListKind, id, false);
    for (const Kind<DvnListSet>& kind : OtherListKinds) found += LoadKind(kind, id, false);
    if (found > 0 || id.IsNull() || id.str().empty()) return;
    Report(WorkListKind.notFound, id);
    for (const Kind<DvnListSet>& kind : OtherListKinds) Report(kind.notFound, id);
}

void DvnConvCoreDbFe::WorkList(DvnString const& id) { LoadKind(WorkListKind, id); }

void DvnConvCoreDbFe::OtherLists(int kind, DvnString const& id) {
    if (kind < 0 || kind > 2) return;
    LoadKind(OtherListKinds[kind], id);
}

int DvnConvCoreDbFe::ListRow(DvnListSet& row, DvnfEntity& list) {
    if (!TakeState(list, row.m_CHECKED_OUT)) return LevelOk;
    GetListSettings(&row, list);
    return LevelOk;
}

// "Beep" stands with the other settings, where the store reads it.
int DvnConvCoreDbFe::WorkListRow(DvnWListSet& row, DvnfEntity& list) {
    if (!TakeState(list, row.m_CHECKED_OUT)) return LevelOk;
    list.AttributeData()("ListCommon")("Beep") = !row.IsFieldNull(&row.m_BEEP_OPTION) && row.m_BEEP_OPTION != 0;
    GetListSettings(&row, list);
    return LevelOk;
}

void DvnConvCoreDbFe::GetListSettings(DvnListSet* row, DvnfEntity& list) {
    DvnfAttributeData attributes = list.AttributeData();
    CopyText(*row, row->m_DESCRIPTION, attributes("Description"));
    DvnfAttributeData common = attributes("ListCommon");
    // A list of no type (a number the store left alone) has neither type nor owner.
    if (!row->IsFieldNull(&row->m_TYPE)) {
        if (row->m_TYPE == 2) {
            common("Type") = 2L;
            common.Reset("Owner");
        } else {
            // The owner's key as the user id a definition file names; a
            // person who is gone reads as "Faehler".
            common("Type") = 1L;
            DvnPersonSet person(m_pDatabase);
            CString owner("Faehler");
            ReadRows(person, SelectFrom("PERSON", "PERSON_ID", row->m_OWNER),
                     [&](DvnPersonSet& found) { owner = found.m_USERID; });
            common("Owner") = owner.c_str();
        }
    }
    CopyText(*row, row->m_SORT_CRITERIA, common("OrderBy"));
    CopyText(*row, row->m_FILTER, common("Where"));
    CopyLong(*row, row->m_THRESHOLD, common("Threshold"));
}
