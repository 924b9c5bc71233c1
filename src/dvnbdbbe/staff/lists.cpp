// Store of the four kinds of list, each a family of one row. Activity
// instance, process instance and process template lists share their columns
// and one save that is told the table; a work list has BEEP_OPTION more and
// a save of its own. List owners are persons, found by user id.
#include "dvnlookup.h"
#include "dvnstaffsets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {

// What tells the lists of common columns apart; the rest of their family is
// the same for all three.
struct ListKind {
    const char* typeName;
    const char* kind;  // as the refusal of the staff right says it
    const char* table;
    const char* progress;      // the label and a blank
    const char* invalidTrace;  // the label and " is not defined"
    const char* deleteKeyword;
};

// The key of the live person whose user id is the name, folded as at login;
// empty when there is none. A database failure goes up, so that it fails the
// list instead of passing for an owner who is not there.
CString OwnerKey(CDatabase& db, const DvnString& name, const CString& prefix) {
    DvnPersonSet persons(&db);
    const CString folded = ReturnQuotedString(DvnUser::FoldUserId(name), "'", "'").c_str();
    return dvnlookup::FirstRow(persons, prefix + "PERSON", dvnlookup::WithTombstoneRule("USERID = " + folded, false),
                               CString(), [&] { return persons.m_PERSON_ID; });
}

}  // namespace

// The family of a list kind whose row is a DvnListSet; the attribute step is
// that of every list.
#define DVN_LIST_FAMILY(Set, k, readStep, msgs)                                                              \
    {                                                                                                    \
        .typeName = (k).typeName, .kind = (k).kind, .right = &StaffRight, .table = (k).table,            \
        .keyColumn = "LIST_ID", .key = &Set::m_LIST_ID, .progress = (k).progress,                        \
        .invalidTrace = (k).invalidTrace, .deleteKeyword = (k).deleteKeyword, .messages = msgs,          \
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, Set& row, bool isNew) {       \
            return be.readStep(db, entity, row, isNew);                                                   \
        },                                                                                               \
    }

namespace {
constexpr ListKind kActInstance{"ActivitiesList", "Activity Instance List", "ACT_INSTANCE_LIST",
                                "Activity instance list ", "Activity instance list is not defined",
                                "DELETE ACTIVITIES_LIST "};
constexpr ListKind kPrcInstance{"ProcessInstancesList", "Process Instance List", "PRC_INSTANCE_LIST",
                                "Process instance list ", "Process instance list is not defined",
                                "DELETE PROCESS_INSTANCES_LIST "};
constexpr ListKind kPrcTemplate{"TemplatesList", "Process Template List", "PRC_TEMPLATE_LIST",
                                "Process template list ", "Process template list is not defined",
                                "DELETE TEMPLATE_LIST "};
constexpr ListKind kWork{"Worklist", "Work List", "WORK_LIST", "Work list ", "Work list is not defiend",
                         "DELETE WORKLIST "};
}  // namespace

const DvnConvCoreDbBe::Family<DvnListSet> DvnConvCoreDbBe::ActInstanceListFamily = DVN_LIST_FAMILY(
    DvnListSet, kActInstance, ReadListAttributes,
    (Family<DvnListSet>::Messages{.added = 51006, .updated = 51042, .kept = 51074, .held = 51141, .deleted = 51214,
                                  .cannotAppend = 51306, .cannotUpdate = 51338}));

const DvnConvCoreDbBe::Family<DvnListSet> DvnConvCoreDbBe::PrcInstanceListFamily = DVN_LIST_FAMILY(
    DvnListSet, kPrcInstance, ReadListAttributes,
    (Family<DvnListSet>::Messages{.added = 51007, .updated = 51043, .kept = 51075, .held = 51142, .deleted = 51215,
                                  .cannotAppend = 51307, .cannotUpdate = 51339}));

const DvnConvCoreDbBe::Family<DvnListSet> DvnConvCoreDbBe::PrcTemplateListFamily = DVN_LIST_FAMILY(
    DvnListSet, kPrcTemplate, ReadListAttributes,
    (Family<DvnListSet>::Messages{.added = 51008, .updated = 51044, .kept = 51076, .held = 51143, .deleted = 51216,
                                  .cannotAppend = 51308, .cannotUpdate = 51340}));

// The progress line says "Work list", its trace "Work List".
const DvnConvCoreDbBe::Family<DvnWListSet> DvnConvCoreDbBe::WorkListFamily = [] {
    Family<DvnWListSet> family = DVN_LIST_FAMILY(
        DvnWListSet, kWork, ReadWorkListAttributes,
        (Family<DvnWListSet>::Messages{.added = 51009, .updated = 51045, .kept = 51077, .held = 51144,
                                       .deleted = 51217, .cannotAppend = 51309, .cannotUpdate = 51341}));
    family.progressTrace = "Work List ";
    return family;
}();

#undef DVN_LIST_FAMILY

int DvnConvCoreDbBe::SaveActInstanceLists(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, ActInstanceListFamily);
}

int DvnConvCoreDbBe::SavePrcInstanceLists(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, PrcInstanceListFamily);
}

int DvnConvCoreDbBe::SavePrcTemplateLists(CDatabase& db, bool authorized) {
    return SaveFamily(db, authorized, PrcTemplateListFamily);
}

int DvnConvCoreDbBe::SaveWorkLists(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, WorkListFamily); }

int DvnConvCoreDbBe::SaveList(CDatabase& db, DvnfEntity& entity, const CString& table) {
    for (const Family<DvnListSet>* family : {&ActInstanceListFamily, &PrcInstanceListFamily, &PrcTemplateListFamily})
        if (table == family->table) return SaveSingleRow(db, entity, *family);
    DVN_TRACE(1, 2, "No list is kept in table " << table);
    return LevelError;
}

int DvnConvCoreDbBe::SaveWorkList(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, WorkListFamily);
}

int DvnConvCoreDbBe::ReadListAttributes(CDatabase& db, DvnfEntity& entity, DvnListSet& row, bool isNew) {
    row.m_NAME = entity.Name().c_str();
    StampRow(row, &DvnListSet::m_LIST_ID, isNew);
    DvnfAttributeData attributes = entity.AttributeData();
    const DvnfAttributeDataReader common = attributes("ListCommon");

    // Public (2) unless it says it is owned (1); another number leaves both
    // columns as they are.
    const DvnfAttributeDataReader type = common("Type");
    if (!type.IsDefined()) {
        row.m_TYPE = 2;
    } else if (type.AsLong(0) == 1) {
        row.m_TYPE = 1;
        const DvnfAttributeDataReader owner = common("Owner");
        const DvnString ownerName = owner.IsDefined() ? DvnString(owner.AsString("")) : DvnString();
        const CString id = ownerName.IsNull() ? CString() : OwnerKey(db, ownerName, m_strTablePrefix);
        // An owner who is not there is no error: the list is kept without one.
        if (id.IsEmpty())
            DVN_TRACE(3, 2, "List owner " << (ownerName.IsNull() ? "<null>" : ownerName.str())
                                          << " not found in database");
        DvnStored::SetText(row, row.m_OWNER, id.str());
    } else if (type.AsLong(0) == 2) {
        row.m_TYPE = 2;
    }

    // Filter, sort order and threshold stay as the row holds them when the
    // file does not give them.
    if (common("Where").IsDefined()) DvnStored::SetText(row, row.m_FILTER, common("Where").AsString("").str());
    if (common("OrderBy").IsDefined())
        DvnStored::SetText(row, row.m_SORT_CRITERIA, common("OrderBy").AsString("").str());
    if (common("Threshold").IsDefined()) row.m_THRESHOLD = common("Threshold").AsLong(0);

    SetDescription(row, entity);
    return LevelOk;
}

int DvnConvCoreDbBe::ReadWorkListAttributes(CDatabase& db, DvnfEntity& entity, DvnWListSet& row, bool isNew) {
    const int level = ReadListAttributes(db, entity, row, isNew);
    // "Beep" belongs with the other list settings; one given beside them,
    // as a work list once was written, counts when they hold none.
    DvnfAttributeData attributes = entity.AttributeData();
    DvnfAttributeDataReader beep = attributes("ListCommon")("Beep");
    if (!beep.IsDefined()) beep = attributes("Beep");
    row.m_BEEP_OPTION = beep.AsBool(false) ? 1 : 0;
    return level;
}
