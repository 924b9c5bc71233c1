// Store of systems: one row each in SYSTEM, with its group, node and queue
// manager, a number that no other system has, the mark of the one primary
// system, and its settings, which are null where the file leaves them out
// (the group's count). Names are kept to their first 8 characters. A system
// that persons or servers still belong to, or the primary one, stays; the
// servers the same file deletes go first.
#include <cstdlib>

#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"

namespace {
constexpr size_t kNameChars = 8;
CString StoredName(const DvnString& name) { return CString(DvnStored::Cut(name.str(), kNameChars)); }
CString Quoted(const CString& name) { return CString(ReturnQuotedString(DvnString(name.c_str()), "'", "'").c_str()); }
// Draws of an identifier before a run gives up (each draw that is taken
// by another system is followed by the next).
constexpr int kIdentifierDraws = 1000;
}  // namespace

const DvnConvCoreDbBe::Family<DvnSystemSet> DvnConvCoreDbBe::SystemFamily = {
    .typeName = "System",
    .kind = "System",
    .right = &TopologyRight,
    .table = "SYSTEM",
    .keyColumn = "SYSTEM_ID",
    .key = &DvnSystemSet::m_SYSTEM_ID,
    .progress = "System ",
    .invalidTrace = "System is not defined",
    .deleteKeyword = "DELETE SYSTEM ",
    .messages = {.added = 51025, .updated = 51057, .kept = 51089, .held = 51152, .deleted = 51223,
                 .cannotAppend = 51321, .cannotUpdate = 51353},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnSystemSet& row, bool isNew) {
        return be.ReadSystemAttributes(db, entity, row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.SystemInUse(db, entity, key);
    },
    .readErrorStops = true,
    // A tombstone keeps the settings it had.
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key, bool tombstone) {
        return tombstone ? static_cast<int>(LevelOk) : be.SaveTopologySettings(db, entity, key, TopologyLevel::System);
    },
    .nameChars = kNameChars,
    .nameTooLong = 51125,
    .afterDelete = [](DvnConvCoreDbBe& be, CDatabase& db, const CString& key) {
        return be.DeleteTopologySettings(db, key, TopologyLevel::System);
    },
    .failedTrace = "System not successfully written to database",
};

int DvnConvCoreDbBe::SaveSystems(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, SystemFamily); }

int DvnConvCoreDbBe::SaveSystem(CDatabase& db, DvnfEntity& entity) { return SaveSingleRow(db, entity, SystemFamily); }

namespace {
// The first row of the statement that counts, or false; spareTombstones:
// a row marked 4 does not count. Set is named, not deduced from the member
// (which may be its base's, whose columns are fewer). A database exception
// goes up.
template <class Set, class Owner>
bool FirstHolder(CDatabase& db, const CString& statement, CString Owner::*name, bool spareTombstones,
                 CString& holder) {
    Set rs(&db);
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    for (; !rs.IsEOF(); rs.MoveNext()) {
        if (spareTombstones && rs.m_CHECKED_OUT == DvnConvCoreDbBe::MarkTombstone) continue;
        holder = rs.*name;
        return true;
    }
    return false;
}
}  // namespace

int DvnConvCoreDbBe::SystemInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const DvnString name(StoredName(entity.Name()).c_str());
    DvnSystemSet systems(&db);
    if (systems.GetPrimarySystem(m_strTablePrefix) == key) {
        Report(51248, name);
        return LevelWarning;
    }
    auto where = [&](const char* table) {
        return CString("SELECT * FROM ") + m_strTablePrefix + table + " WHERE SYSTEM ='" + key + "'";
    };
    CString holder;
    // A person is a person whatever its mark; a server that this run
    // leaves as a tombstone no longer holds its system.
    const bool marking = m_nSourceMark != MarkClean;
    if (FirstHolder<DvnPersonSet>(db, where("PERSON"), &DvnPersonSet::m_USERID, false, holder)) {
        Report(51250, name, DvnString(holder.c_str()));
        return LevelWarning;
    }
    // The servers of the system that this run deletes go first, in this
    // transaction, once the system is known to be free of the tests above;
    // what still holds it then keeps it.
    SaveServers(db, true, DvnString(key.c_str()));
    if (FirstHolder<DvnExecutionServerSet>(db, where("EXECUTION_SERVER"), &DvnServerSet::m_NAME, marking, holder)) {
        Report(51251, name, DvnString(holder.c_str()));
        return LevelWarning;
    }
    if (FirstHolder<DvnPEServerSet>(db, where("PE_SERVER"), &DvnServerSet::m_NAME, marking, holder)) {
        Report(51252, name, DvnString(holder.c_str()));
        return LevelWarning;
    }
    if (FirstHolder<DvnUPEServerSet>(db, where("USER_PE_SERVER"), &DvnUPEServerSet::m_NAME, marking, holder)) {
        Report(51253, name, DvnString(holder.c_str()));
        return LevelWarning;
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ReadSystemAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemSet& row, bool isNew) {
    int level = LevelOk;
    const CString name = StoredName(entity.Name());
    const DvnString shown(name.c_str());
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();

    // 1. The links.
    const CString group = GetLinkName("SystemIsInSystemGroup", entity, "SystemGroup");
    const CString node = GetLinkName("SystemRunsOnNode", entity, "Node");
    const CString queueManager = GetLinkName("SystemHasQueueManager", entity, "QueueManager");

    // 2. The identifier: the file's, else the row's, else a draw that no
    // other system holds.
    DvnSystemSet others(&db);
    const bool hadOne = !isNew && !row.IsFieldNull(&row.m_SYSTEM_IDENTIFIER);
    const long before = hadOne ? row.m_SYSTEM_IDENTIFIER : 0;
    const DvnfAttributeDataReader identifier = attributes("SystemIdentifier");
    long number = before;
    if (identifier.IsDefined()) {
        number = identifier.AsLong(0);
        if ((!hadOne || number != before) && others.GetSystemIdentifier(number, m_strTablePrefix)) {
            Report(51371, shown);
            return LevelError;
        }
    } else if (!hadOne) {
        int draws = 0;
        do {
            number = std::rand();
        } while (others.GetSystemIdentifier(number, m_strTablePrefix) && ++draws < kIdentifierDraws);
        if (draws == kIdentifierDraws) {
            Report(51371, shown);
            return LevelError;
        }
    }
    row.m_SYSTEM_IDENTIFIER = number;

    // 3. Name, key and mark.
    row.m_NAME = name;
    StampRow(row, &DvnSystemSet::m_SYSTEM_ID, isNew);

    // 4. The group: the link's, else the profile's, else the one there is.
    DvnSystemGroupSet groups(&db);
    CString groupKey;
    if (!group.IsEmpty()) {
        groupKey = groups.GetSysGrpID(StoredName(DvnString(group.c_str())), m_strTablePrefix);
        if (groupKey.IsEmpty()) {
            Report(51104, DvnString(group.c_str()));
            level = LevelWarning;
        }
    }
    if (groupKey.IsEmpty()) groupKey = groups.GetSysGrpID(DefaultSysGrp().c_str(), m_strTablePrefix);
    if (groupKey.IsEmpty()) groupKey = groups.GetDefaultSysGrpID(m_strTablePrefix);
    if (groupKey.IsEmpty()) {
        DVN_TRACE(1, 2, "System " << shown << ": no system group in the database");
        return LevelError;
    }
    row.m_SYSTEM_GROUP = groupKey;

    // 5. The node: the link's, else "Default Node", else the first there is.
    DvnNodeSet nodes(&db);
    CString nodeKey = nodes.GetNodeID(Quoted(node.IsEmpty() ? CString("Default Node") : node), m_strTablePrefix);
    if (nodeKey.IsEmpty() && !node.IsEmpty()) {
        Report(51122, DvnString(node.c_str()));
        level = std::max(level, static_cast<int>(LevelWarning));
        nodeKey = nodes.GetNodeID(Quoted("Default Node"), m_strTablePrefix);
    }
    if (nodeKey.IsEmpty()) nodeKey = nodes.GetDefaultNodeID(m_strTablePrefix);
    DvnStored::SetText(row, row.m_NODE, nodeKey.c_str());

    // 6. The queue manager: the link's, else the first there is.
    DvnQueueManagerSet managers(&db);
    CString managerKey;
    if (!queueManager.IsEmpty()) {
        managerKey = managers.GetQueueManagerID(Quoted(queueManager), m_strTablePrefix);
        if (managerKey.IsEmpty()) {
            Report(51123, shown);
            level = std::max(level, static_cast<int>(LevelWarning));
        }
    }
    if (managerKey.IsEmpty()) managerKey = managers.GetDefaultQueueManagerID(m_strTablePrefix);
    DvnStored::SetText(row, row.m_QUEUE_MANAGER, managerKey.c_str());

    // 7. The primary system: the first that says so; it stays primary.
    const DvnfAttributeDataReader primary = attributes("PrimarySystem");
    const CString primaryKey = others.GetPrimarySystem(m_strTablePrefix);
    if (primaryKey.IsEmpty()) {
        row.m_PRIMARY_SYSTEM = primary.IsDefined() && primary.AsBool(false) ? 1 : 0;
    } else if (!isNew && primaryKey == row.m_SYSTEM_ID) {
        row.m_PRIMARY_SYSTEM = 1;
        if (primary.IsDefined() && !primary.AsBool(false)) Report(51174, shown);
    } else {
        row.m_PRIMARY_SYSTEM = 0;
        if (primary.IsDefined() && primary.AsBool(false))
            Report(51173, others.GetName(primaryKey, m_strTablePrefix, true), shown);
    }

    // 8. The version.
    row.m_VERSION = NumberOr(attributes("Version"), 3);
    row.m_RELEASE = NumberOr(attributes("Release"), 3);
    row.m_MOD_LEVEL = NumberOr(attributes("Level"), 0);

    // 9. The common settings.
    return std::max(level, ReadTopologyCommonAttributes(db, entity, row, false));
}
