// Store of servers: the loop over the entities of type "Server", the kind
// that "Type" names, the system a server belongs to, and the tests a server
// meets before it is inserted or deleted. The families of the eight kinds
// (and the admin server, saved by a direct call only) are in serverkinds.cpp.
#include <algorithm>

#include "dvnlookup.h"
#include "dvntoposets.h"
#include "familystore.h"
#include "storedforms.h"
#include "topologyforms.h"

namespace {
constexpr size_t kNameChars = 8;
CString Quoted(const CString& text) { return CString(ReturnQuotedString(DvnString(text.c_str()), "'", "'").c_str()); }
// A system or group name as the rows hold it (cut to 8).
CString StoredName(const CString& name) { return CString(DvnStored::Cut(name.str(), kNameChars)); }
// The name of the server's system as the entity gives it: the link, else
// the middle part of its full name.
CString SystemNameOf(DvnConvCoreDbBe& be, DvnfEntity& entity) {
    CString name = be.GetLinkName("ServerIsInSystem", entity, "System");
    if (!name.IsEmpty()) return name;
    DvnfString system;
    DvnfTRXData::SplitFQName(entity.Name(), nullptr, &system, nullptr);
    return CString(system.c_str());
}
}  // namespace

// ------------------------------------------------------------------ the loop

int DvnConvCoreDbBe::SaveServers(CDatabase& db, bool authorized, const DvnString& system) {
    // With a system: its servers that the run deletes, before the system
    // itself, in the system's transaction; each is then done for the run.
    const bool ofSystem = !system.IsNull() && !system.str().empty();
    const CString systemKey(ofSystem ? system.c_str() : "");
    CString systemName;
    if (ofSystem) systemName = CString(DvnSystemSet(&db).GetName(systemKey, m_strTablePrefix, true).c_str());
    auto belongs = [&](DvnfEntity& entity) {
        // By name when the entity names its system, which needs no lookup.
        const CString named = SystemNameOf(*this, entity);
        if (!named.IsEmpty()) return StoredName(named) == systemName;
        int rc = LevelOk;
        return GetServerSystem(db, entity, rc) == systemKey;
    };
    return SaveLoop(
        db, "Server", authorized, TopologyRight, "Server",
        [&](DvnfEntity& entity) {
            if (ofSystem && (entity.State() != StateDeleted || !belongs(entity))) return static_cast<int>(LevelOk);
            const int level = SaveServer(db, entity, system);
            if (level > LevelWarning) DVN_TRACE(1, 2, "Server not successfully written to database");
            if (ofSystem) entity.State(StateNone);
            return level;
        },
        !ofSystem);
}

namespace {
// The "Type" of a server that a deletion names: a deletion has no body, so
// the kind is that of the table which holds the name in the server's
// system (the first in the order of the kinds); 0 when none does.
long StoredServerType(DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
    int rc = DvnConvCoreDbBe::LevelOk;
    const CString system = be.GetServerSystem(db, entity, rc);
    if (system.IsEmpty()) return 0;
    const DvnString name(DvnStored::Cut(DvnfTRXData::SplitFQName(entity.Name(), nullptr, nullptr, nullptr).str(),
                                        kNameChars));
    for (const DvnStored::ServerKind& kind : DvnStored::ServerKinds) {
        DvnCountSet rs(&db);
        rs.Open(CRecordset::snapshot,
                CString("SELECT COUNT(*) AS N FROM ") + be.GetTablePrefix() + kind.table + " WHERE NAME = " +
                    ReturnQuotedString(name, "'", "'").c_str() + " AND SYSTEM = " + Quoted(system),
                CRecordset::readOnly);
        if (!rs.IsEOF() && rs.m_N > 0) return kind.entityType;
    }
    return 0;
}
}  // namespace

int DvnConvCoreDbBe::SaveServer(CDatabase& db, DvnfEntity& entity, const DvnString&) {
    const DvnfAttributeDataReader given = static_cast<const DvnfEntity&>(entity).AttributeData()("Type");
    long type = given.AsLong(0);
    if (!given.IsDefined() && entity.State() == StateDeleted) {
        type = StoredServerType(*this, db, entity);
        if (type == 0) {
            Report(51273, DvnString("DELETE SERVER ") |
                              DvnString(DvnfTRXData::SplitFQName(entity.Name(), nullptr, nullptr, nullptr).str()));
            return LevelOk;
        }
    }
    switch (type) {
        case 1: return SaveCleanupServer(db, entity);
        case 2: return SaveDistributionServer(db, entity);
        case 3: return SaveExecutionServer(db, entity);
        case 4: return SaveGatewayServer(db, entity);
        case 5: return SaveModelingServer(db, entity);
        case 6: return SaveSchedulingServer(db, entity);
        case 7: return SavePEServer(db, entity);
        case 8: return SaveUPEServer(db, entity);
        default: break;
    }
    // Saved as nothing, it would be lost without a word.
    Report(51920, entity.Name(), DvnString::FromLong(type));
    DVN_TRACE(1, 2, "Server " << entity.Name() << " has the unknown Type " << type);
    return LevelError;
}

// ------------------------------------------------------------------ system and group

CString DvnConvCoreDbBe::GetServerSystem(CDatabase& db, DvnfEntity& entity, int& rc) {
    rc = LevelOk;
    DvnSystemSet systems(&db);
    const CString name = SystemNameOf(*this, entity);
    CString key;
    if (!name.IsEmpty()) {
        key = systems.GetSystemID(StoredName(name), m_strTablePrefix, false);
        if (key.IsEmpty()) {
            Report(51103, DvnString(name.c_str()));
            rc = LevelWarning;
        }
    }
    if (key.IsEmpty()) key = systems.GetSystemID(DefaultSystem().c_str(), m_strTablePrefix, false);
    if (key.IsEmpty()) key = systems.GetDefaultSystemID(m_strTablePrefix);
    if (key.IsEmpty()) rc = LevelError;
    return key;
}

CString DvnConvCoreDbBe::GetServerSystemGrp(CDatabase& db, DvnfEntity& entity, int& rc) {
    rc = LevelOk;
    DvnSystemGroupSet groups(&db);
    const CString name = GetLinkName("ServerIsInSystemGroup", entity, "SystemGroup");
    CString key;
    if (!name.IsEmpty()) {
        key = groups.GetSysGrpID(StoredName(name), m_strTablePrefix);
        if (key.IsEmpty()) {
            Report(51104, DvnString(name.c_str()));
            rc = LevelWarning;
        }
    }
    if (key.IsEmpty()) key = groups.GetSysGrpID(DefaultSysGrp().c_str(), m_strTablePrefix);
    if (key.IsEmpty()) key = groups.GetDefaultSysGrpID(m_strTablePrefix);
    if (key.IsEmpty()) rc = LevelError;
    return key;
}

// ------------------------------------------------------------------ hooks of the families

int DvnConvCoreDbBe::ServerSystemBeforeRow(CDatabase& db, DvnfEntity& entity, const DvnString& name) {
    int rc = LevelOk;
    m_serverSystem = GetServerSystem(db, entity, rc);
    if (rc >= LevelError) {
        Report(m_serverCannotAppend, name);
        DVN_TRACE(1, 2, "Server " << name << ": no system in the database");
        return LevelError;
    }
    m_serverSystemLevel = rc;
    return LevelOk;
}

CString DvnConvCoreDbBe::ServerFilter(const DvnString& name, bool bySystemOnly) const {
    // A system has one program execution server, whatever its name.
    const CString system = CString("SYSTEM = ") + Quoted(m_serverSystem);
    if (bySystemOnly) return system;
    return CString("NAME = ") + ReturnQuotedString(name, "'", "'").c_str() + " AND " + system;
}

namespace {
// Whether "SELECT COUNT(*) FROM " and the rest gives more than 0. A
// database exception goes up.
bool AnyRow(CDatabase& db, const CString& fromWhere) {
    DvnCountSet rs(&db);
    rs.Open(CRecordset::snapshot, CString("SELECT COUNT(*) AS N FROM ") + fromWhere, CRecordset::readOnly);
    const bool found = !rs.IsEOF() && rs.m_N > 0;
    rs.Close();
    return found;
}
DvnString ServerName(const DvnString& entityName) {
    return DvnString(DvnStored::Cut(DvnfTRXData::SplitFQName(entityName, nullptr, nullptr, nullptr).str(), kNameChars));
}
}  // namespace

int DvnConvCoreDbBe::OneServerOfKindInGroup(CDatabase& db, DvnfEntity& entity, const char* table, long message) {
    const CString group = DvnSystemSet(&db).GetSystemGroupID(m_serverSystem, m_strTablePrefix);
    if (!AnyRow(db, Table(table) + " WHERE SYSTEM IN (SELECT SYSTEM_ID FROM " + Table("SYSTEM") +
                        " WHERE SYSTEM_GROUP = " + Quoted(group) + ")"))
        return LevelOk;
    Report(message, ServerName(entity.Name()));
    return LevelWarning;
}

int DvnConvCoreDbBe::ServerNameIsFree(CDatabase& db, DvnfEntity& entity, const char* otherTable, long otherMessage,
                                      long personMessage) {
    const DvnString name = ServerName(entity.Name());
    const CString quoted(ReturnQuotedString(name, "'", "'").c_str());
    const CString inSystem = CString(" AND SYSTEM = ") + Quoted(m_serverSystem);
    if (AnyRow(db, Table(otherTable) + " WHERE NAME = " + quoted + inSystem)) {
        Report(otherMessage, DvnSystemSet(&db).GetName(m_serverSystem, m_strTablePrefix, true), name);
        return LevelWarning;
    }
    // A person's user id is stored folded: the server's name is compared so.
    const CString group = DvnSystemSet(&db).GetSystemGroupID(m_serverSystem, m_strTablePrefix);
    if (AnyRow(db, Table("PERSON") + " WHERE USERID = " +
                       ReturnQuotedString(DvnUser::FoldUserId(name), "'", "'").c_str() + " AND SYSTEM_GROUP = " +
                       Quoted(group))) {
        Report(personMessage, name);
        return LevelWarning;
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ServerInUse(CDatabase& db, DvnfEntity& entity, const CString& key, long message) {
    // An activity holds the server's key.
    if (!AnyRow(db, Table("PROGRAM_ACTIVITY") + " WHERE PE_SERVER = " + Quoted(key)))
        return LevelOk;
    Report(message, ServerName(entity.Name()));
    return LevelWarning;
}

template <class Set>
void DvnConvCoreDbBe::ReadServerIdentity(DvnfEntity& entity, Set& row, CString Set::*key, bool isNew) {
    row.m_NAME = ServerName(entity.Name()).c_str();
    StampRow(row, key, isNew);
    row.m_SYSTEM = m_serverSystem;
}

template void DvnConvCoreDbBe::ReadServerIdentity<DvnServerSet>(DvnfEntity&, DvnServerSet&, CString DvnServerSet::*,
                                                                bool);
template void DvnConvCoreDbBe::ReadServerIdentity<DvnUPEServerSet>(DvnfEntity&, DvnUPEServerSet&,
                                                                   CString DvnUPEServerSet::*, bool);
template void DvnConvCoreDbBe::ReadServerIdentity<DvnAdminServerSet>(DvnfEntity&, DvnAdminServerSet&,
                                                                     CString DvnAdminServerSet::*, bool);
