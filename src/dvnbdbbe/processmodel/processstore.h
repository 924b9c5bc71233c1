// Small helpers shared by the files of the process store.
#pragma once

#include <optional>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnlookup.h"
#include "storedforms.h"

namespace processstore {

// Any text as an SQL string literal: in single quotes, a quote inside
// doubled. Names, keys and values from a file all go through it.
inline CString Quoted(const DvnString& text) {
    return dvnlookup::Literal(std::string_view(text.c_str(), static_cast<size_t>(text.Length())));
}
inline CString Quoted(const CString& text) { return dvnlookup::Literal(std::string_view(text.c_str())); }

inline constexpr const char* kDefaultDataStructure = "Default Data Structure";

// "Implementation"."Type" of an activity.
enum ImplementationType : long { ProgramType = 1, ProcessType = 2, BlockType = 3, BundleType = 4, InfoType = 5 };

// ---- readings shared by the activity, kind and process attribute stores

// A number attribute when it is defined.
inline std::optional<long> Given(const DvnfAttributeDataReader& value) {
    return value.IsDefined() ? std::optional<long>(value.AsLong(0)) : std::nullopt;
}

// A text attribute into a column; NULL when not defined (or empty).
inline void SetTextOrNull(CRecordset& row, CString& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        DvnStored::SetText(row, member, value.AsString("").str());
    else
        row.SetFieldNull(&member);
}

// A yes/no attribute as 1 or 0; NULL when not defined.
inline void SetFlagOrNull(CRecordset& row, long& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        member = value.AsBool(false) ? 1 : 0;
    else
        row.SetFieldNull(&member);
}

// "Description" cut to the column and "Documentation" whole, each NULL when
// not defined.
inline void SetDescriptionAndDocumentation(CRecordset& row, CString& description, CString& documentation,
                                           const DvnfAttributeDataReader& attributes) {
    const DvnfAttributeDataReader text = attributes("Description");
    if (text.IsDefined())
        DvnStored::SetText(row, description, DvnStored::Cut(text.AsString("").str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&description);
    SetTextOrNull(row, documentation, attributes("Documentation"));
}

// The "ActivityDefault" settings, which an activity's extent and a process's
// topology row hold in columns of the same names.
template <class Set>
void ReadActivityDefaults(Set& row, const DvnfAttributeDataReader& defaults) {
    SetFlagOrNull(row, row.m_ENFORCE_IM_EXEC, defaults("EnforceImmedExecution"));
    SetFlagOrNull(row, row.m_CHECKOUT_POSSIBLE, defaults("CheckoutPossible"));
    SetFlagOrNull(row, row.m_INCL_PRC_ASSGMNT, defaults("IncludeProcessAssignment"));
    SetFlagOrNull(row, row.m_PREFER_LOCAL_USERS, defaults("PreferLocalUsers"));
    SetFlagOrNull(row, row.m_PREFER_NABSENT_USR, defaults("PreferNonAbsentUsers"));
    SetFlagOrNull(row, row.m_SELECT_LEAST_WRKLD, defaults("SelectLeastWorkload"));
    SetFlagOrNull(row, row.m_SUBSTITUTION, defaults("Substitution"));
    SetFlagOrNull(row, row.m_USE_SUBST_FOR_NOT, defaults("NotificationSubstitution"));
    SetFlagOrNull(row, row.m_SECOND_NOTIFICAT, defaults("DuplicateNotification"));
    SetTextOrNull(row, row.m_AUDIT_EVENTS_TO_DB, defaults("AuditFilterDB"));
    SetTextOrNull(row, row.m_AUDIT_EVENTS_TO_HX, defaults("AuditFilterHX"));
}

// The key of a link's target (a person, role, organization, category,
// program, system): found under the target's name, or under the name its
// key has in the table (and then the key itself, when the name finds
// nothing), or under the fallback name. name receives the name used (empty:
// none, and so no key). Lookups by name write a database exception on
// standard output; one of a name by key goes up. With keys, a name's key is
// read once while they keep it (by table and name).
template <class Set, class ByName>
CString ResolveKey(CDatabase& db, DvnfEntity& target, const CString& prefix, const char* fallback, ByName byName,
                   DvnString& name, DvnKeysByName* keys = nullptr) {
    Set set(&db);
    const CString oid = target.IsValid() ? CString(target.OID().c_str()) : CString();
    name = target.IsValid() ? DvnString(target.Name()) : DvnString("");
    if (name.IsEmpty() && !oid.IsEmpty()) name = set.GetName(oid, prefix, false);
    if (name.IsEmpty() && fallback) name = fallback;
    if (name.IsEmpty()) return CString();
    auto read = [&] { return (set.*byName)(Quoted(name), prefix, false); };
    CString key = keys ? keys->Find(set, name, read) : read();
    if (key.IsEmpty() && !oid.IsEmpty() && !set.GetName(oid, prefix, false).IsEmpty()) key = oid;
    return key;
}

// The stored form of "RcCreation": the attribute and the column run
// opposite ways (0 gives 3, 1 gives 2, 2 gives 1; not defined 1). Empty for
// any other value.
inline std::optional<long> ReturnCodeSetting(const DvnfAttributeDataReader& value) {
    if (!value.IsDefined()) return 1;
    const long given = value.AsLong(0);
    if (given < 0 || given > 2) return std::nullopt;
    return 3 - given;
}

// A number column from a value of an entity; null when it is not defined.
inline void SetLongOrNull(CRecordset& row, long& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        member = value.AsLong(0);
    else
        row.SetFieldNull(&member);
}

}  // namespace processstore
