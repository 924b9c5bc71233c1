// The sections of an export whose kinds have no load yet. Each row below
// stands in for the load of one section: it reads nothing and counts the
// objects that the section leaves out, and ReportPending says so once per
// kind (51912), so that an export never leaves objects out silently. An
// empty table says nothing.
//
// When the load of a kind lands, it defines the section in the file of its
// family and its row here goes; nothing else changes.
#include <algorithm>

#include "dvnbdbfe.h"
#include "dvnlookup.h"

#define DVN_PENDING_SECTION(Section, kind, key, ...) \
    void DvnConvCoreDbFe::Section(DvnString const& id) { Pending({kind, key, {__VA_ARGS__}}, id); }

// ------------------------------------------------------------ the rows
// ------------------------------------------------------------ end of the rows

void DvnConvCoreDbFe::Pending(const PendingKind& kind, DvnString const& id) {
    const bool all = id.IsNull() || id.str().empty();
    auto it = std::find_if(m_pending.begin(), m_pending.end(),
                           [&](const PendingCount& c) { return c.kind == kind.kind; });
    if (it == m_pending.end()) it = m_pending.insert(m_pending.end(), PendingCount{kind.kind, 0, false, {}});
    if (it->all) return;
    if (!all && std::find(it->keys.begin(), it->keys.end(), id.str()) != it->keys.end()) return;
    long objects = 0;
    for (const char* table : kind.tables) {
        CString statement = CString("SELECT COUNT(*) AS N FROM ") + Table(table);
        if (!all) statement += CString(" WHERE ") + kind.keyColumn + " = " + Literal(id);
        DvnCountSet rs(m_pDatabase);
        ReadRows(rs, statement, [&](DvnCountSet& row) { objects += row.m_N; });
    }
    it->objects += objects;
    if (all) {
        it->all = true;
        it->keys.clear();
    } else {
        it->keys.push_back(id.str());
    }
}

int DvnConvCoreDbFe::ReportPending() {
    int reported = 0;
    for (const PendingCount& count : m_pending) {
        if (count.objects == 0) continue;
        Report(51912, DvnString(count.kind), DvnString::FromLong(count.objects));
        DVN_TRACE(1, 8, count.kind << ": " << count.objects << " objects not exported, no load yet");
        ++reported;
    }
    m_pending.clear();
    return reported;
}
