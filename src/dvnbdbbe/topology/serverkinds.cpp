// The kinds of server, each a family of one row: its table, texts and
// messages, what it checks before an insert or a deletion, and the columns
// it reads. A server's row is found by its own name (the first part of its
// full name, cut to 8) within the system that GetServerSystem finds; a
// program execution server by its system alone. Settings the server leaves
// out are null: its system, group and domain count.
#include <algorithm>

#include "dvntoposets.h"
#include "familystore.h"
#include "serversettings.h"
#include "storedforms.h"
#include "topologyforms.h"

namespace {

// What tells the kinds apart but their columns and checks.
struct ServerWords {
    const char* table;
    const char* progress;       // the progress line before the name
    const char* invalidTrace;
    long added, updated, kept, held, deleted, cannotAppend, cannotUpdate;
};

const ServerWords kCleanup = {"CLEANUP_SERVER", "Cleanup server ", "Cleanup server is not defined",
                              51031, 51063, 51095, 51159, 0, 51327, 51359};
const ServerWords kDistribution = {"DISTRIBUTION_SRV", "Distribution server ",
                                   "Distribution server is not defined", 51032, 51064, 51096, 51160, 0, 51328, 51360};
const ServerWords kExecution = {"EXECUTION_SERVER", "Execution server ", "Execution server is not defined",
                                51033, 51065, 51097, 51161, 51231, 51329, 51361};
const ServerWords kGateway = {"GATEWAY_SERVER", "Gateway server ", "Gateway server is nor defined",
                              51034, 51066, 51098, 51162, 0, 51330, 51362};
const ServerWords kModeling = {"MODELLING_SERVER", "Modeling server ", "Modeling server is not defined",
                               51035, 51067, 51099, 51163, 0, 51331, 51363};
const ServerWords kScheduling = {"SCHEDULING_SERVER", "Scheduling server ", "Scheduling server is not defined",
                                 51036, 51068, 51100, 51164, 0, 51332, 51364};
const ServerWords kProgramExecution = {"PE_SERVER", "Program execution server ",
                                       "Program execution server is not defined",
                                       51133, 51134, 51135, 51157, 51235, 51369, 51370};
const ServerWords kUserDefined = {"USER_PE_SERVER", "User defined program execution server ",
                                  "User defined program execution server is not defined",
                                  51193, 51197, 51196, 51192, 51236, 51375, 51376};
const ServerWords kAdmin = {"ADMIN_SERVER", "Admin server ", "Admin server is not defined",
                            51030, 51062, 51094, 51158, 0, 51326, 51358};

DvnString ServerNameOf(const DvnString& entityName) {
    return DvnString(DvnfTRXData::SplitFQName(entityName, nullptr, nullptr, nullptr).str());
}

// The steps all kinds share, into a family whose words (DVN_SERVER_WORDS)
// and own steps the caller has set. F is the family's type.
template <class F>
F ServerFamilyOf(F family, bool bySystemOnly = false) {
    family.nameOf = &ServerNameOf;
    family.nameChars = 8;
    family.nameTooLong = 51126;
    family.beforeRow = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const DvnString& name, bool) {
        return be.ServerSystemBeforeRow(db, entity, name);
    };
    family.filterWith = bySystemOnly ? +[](const DvnConvCoreDbBe& be, const DvnString& name) {
        return be.ServerFilter(name, true);
    } : +[](const DvnConvCoreDbBe& be, const DvnString& name) { return be.ServerFilter(name, false); };
    return family;
}

// The group of the server's kind below "ServerDefault".
DvnfAttributeDataReader KindGroup(DvnfEntity& entity) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const DvnStored::ServerKind* kind = DvnStored::KindOfEntityType(attributes("Type").AsLong(0));
    return attributes("ServerDefault")(kind && kind->group ? kind->group : "");
}

}  // namespace

// ------------------------------------------------------------------ the families

// The fields of a family that the words of its kind give.
#define DVN_SERVER_WORDS(Set, w)                                                                               \
    .typeName = "Server", .kind = "Server", .right = &TopologyRight, .table = w.table, .keyColumn = "SERVER_ID", \
    .key = &Set::m_SERVER_ID, .progress = w.progress, .invalidTrace = w.invalidTrace,                          \
    .deleteKeyword = "DELETE SERVER ",                                                                          \
    .messages = {w.added, w.updated, w.kept, w.held, w.deleted, w.cannotAppend, w.cannotUpdate}

const DvnConvCoreDbBe::Family<DvnCleanupServerSet> DvnConvCoreDbBe::CleanupServerFamily =
    ServerFamilyOf(Family<DvnCleanupServerSet>{
        DVN_SERVER_WORDS(DvnCleanupServerSet, kCleanup),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnCleanupServerSet& row, bool isNew) {
            return std::max(be.ReadCleanupServerAttributes(db, entity, row),
                            be.ReadServerAttributes(db, entity, row, isNew));
        },
        .refuseDelete = 51259,
        .beforeInsert = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
            return be.OneServerOfKindInGroup(db, entity, "CLEANUP_SERVER", 51175);
        },
    });

const DvnConvCoreDbBe::Family<DvnDistributionServerSet> DvnConvCoreDbBe::DistributionServerFamily =
    ServerFamilyOf(Family<DvnDistributionServerSet>{
        DVN_SERVER_WORDS(DvnDistributionServerSet, kDistribution),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnDistributionServerSet& row,
                   bool isNew) {
            return std::max(be.ReadDistributionServerAttributes(db, entity, row),
                            be.ReadServerAttributes(db, entity, row, isNew));
        },
        .refuseDelete = 51260,
    });

const DvnConvCoreDbBe::Family<DvnExecutionServerSet> DvnConvCoreDbBe::ExecutionServerFamily =
    ServerFamilyOf(Family<DvnExecutionServerSet>{
        DVN_SERVER_WORDS(DvnExecutionServerSet, kExecution),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnExecutionServerSet& row,
                   bool isNew) {
            return std::max(be.ReadExecutionServerAttributes(db, entity, row),
                            be.ReadServerAttributes(db, entity, row, isNew));
        },
    });

const DvnConvCoreDbBe::Family<DvnServerSet> DvnConvCoreDbBe::GatewayServerFamily =
    ServerFamilyOf(Family<DvnServerSet>{
        DVN_SERVER_WORDS(DvnServerSet, kGateway),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnServerSet& row, bool isNew) {
            return be.ReadServerAttributes(db, entity, row, isNew);
        },
        .refuseDelete = 51261,
    });

const DvnConvCoreDbBe::Family<DvnServerSet> DvnConvCoreDbBe::ModelingServerFamily =
    ServerFamilyOf(Family<DvnServerSet>{
        DVN_SERVER_WORDS(DvnServerSet, kModeling),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnServerSet& row, bool isNew) {
            return be.ReadServerAttributes(db, entity, row, isNew);
        },
        .refuseDelete = 51262,
    });

const DvnConvCoreDbBe::Family<DvnSchedulingServerSet> DvnConvCoreDbBe::SchedulingServerFamily =
    ServerFamilyOf(Family<DvnSchedulingServerSet>{
        DVN_SERVER_WORDS(DvnSchedulingServerSet, kScheduling),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnSchedulingServerSet& row,
                   bool isNew) {
            return std::max(be.ReadSchedulingServerAttributes(db, entity, row),
                            be.ReadServerAttributes(db, entity, row, isNew));
        },
        .refuseDelete = 51263,
        .beforeInsert = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
            return be.OneServerOfKindInGroup(db, entity, "SCHEDULING_SERVER", 51176);
        },
    });

// A system has one program execution server: its row is found by the
// system alone, and a second one's name replaces the first's.
const DvnConvCoreDbBe::Family<DvnPEServerSet> DvnConvCoreDbBe::PEServerFamily = ServerFamilyOf(
    Family<DvnPEServerSet>{
        DVN_SERVER_WORDS(DvnPEServerSet, kProgramExecution),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnPEServerSet& row, bool isNew) {
            return std::max(be.ReadServerAttributes(db, entity, row, isNew),
                            be.ReadPEServerAttributes(db, entity, row));
        },
        .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
            return be.ServerInUse(db, entity, key, 51267);
        },
        .beforeInsert = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
            return be.ServerNameIsFree(db, entity, "USER_PE_SERVER", 51190, 51188);
        },
        .progressTrace = "Program Execution server ",
    },
    true);

const DvnConvCoreDbBe::Family<DvnUPEServerSet> DvnConvCoreDbBe::UPEServerFamily =
    ServerFamilyOf(Family<DvnUPEServerSet>{
        DVN_SERVER_WORDS(DvnUPEServerSet, kUserDefined),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnUPEServerSet& row, bool isNew) {
            return be.ReadUPEServerAttributes(db, entity, row, isNew);
        },
        .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
            return be.ServerInUse(db, entity, key, 51268);
        },
        .beforeInsert = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity) {
            return be.ServerNameIsFree(db, entity, "PE_SERVER", 51191, 51186);
        },
    });

const DvnConvCoreDbBe::Family<DvnAdminServerSet> DvnConvCoreDbBe::AdminServerFamily =
    ServerFamilyOf(Family<DvnAdminServerSet>{
        DVN_SERVER_WORDS(DvnAdminServerSet, kAdmin),
        .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnAdminServerSet& row, bool isNew) {
            return be.ReadAdminServerAttributes(db, entity, row, isNew);
        },
        .refuseDelete = 51258,
    });

#undef DVN_SERVER_WORDS

template <class Set>
int DvnConvCoreDbBe::SaveServerRow(CDatabase& db, DvnfEntity& entity, const Family<Set>& family) {
    m_serverSystem = CString();
    m_serverSystemLevel = LevelOk;
    m_serverCannotAppend = family.messages.cannotAppend;
    const int level = SaveSingleRow(db, entity, family);
    return level >= LevelError ? level : std::max(level, m_serverSystemLevel);
}

int DvnConvCoreDbBe::SaveCleanupServer(CDatabase& db, DvnfEntity& e) { return SaveServerRow(db, e, CleanupServerFamily); }
int DvnConvCoreDbBe::SaveDistributionServer(CDatabase& db, DvnfEntity& e) {
    return SaveServerRow(db, e, DistributionServerFamily);
}
int DvnConvCoreDbBe::SaveExecutionServer(CDatabase& db, DvnfEntity& e) {
    return SaveServerRow(db, e, ExecutionServerFamily);
}
int DvnConvCoreDbBe::SaveGatewayServer(CDatabase& db, DvnfEntity& e) { return SaveServerRow(db, e, GatewayServerFamily); }
int DvnConvCoreDbBe::SaveModelingServer(CDatabase& db, DvnfEntity& e) {
    return SaveServerRow(db, e, ModelingServerFamily);
}
int DvnConvCoreDbBe::SaveSchedulingServer(CDatabase& db, DvnfEntity& e) {
    return SaveServerRow(db, e, SchedulingServerFamily);
}
int DvnConvCoreDbBe::SavePEServer(CDatabase& db, DvnfEntity& e) { return SaveServerRow(db, e, PEServerFamily); }
int DvnConvCoreDbBe::SaveUPEServer(CDatabase& db, DvnfEntity& e) { return SaveServerRow(db, e, UPEServerFamily); }
int DvnConvCoreDbBe::SaveAdminServer(CDatabase& db, DvnfEntity& e) { return SaveServerRow(db, e, AdminServerFamily); }

// ------------------------------------------------------------------ the columns

int DvnConvCoreDbBe::ReadServerAttributes(CDatabase&, DvnfEntity& entity, DvnServerSet& row, bool isNew) {
    ReadServerIdentity(entity, row, &DvnServerSet::m_SERVER_ID, isNew);
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    return std::max(ReadServerSettings(entity, attributes, row, DvnStored::ServerTexts()),
                    ReadServerSettings(entity, KindGroup(entity)("ServerCommon"), row,
                                       DvnStored::ServerRowCommonSettings()));
}

int DvnConvCoreDbBe::ReadCleanupServerAttributes(CDatabase&, DvnfEntity& entity, DvnCleanupServerSet& row) {
    return ReadServerSettings(entity, KindGroup(entity), row, DvnStored::CleanupServerSettings());
}
int DvnConvCoreDbBe::ReadDistributionServerAttributes(CDatabase&, DvnfEntity& entity,
                                                      DvnDistributionServerSet& row) {
    return ReadServerSettings(entity, KindGroup(entity), row, DvnStored::DistributionServerSettings());
}
int DvnConvCoreDbBe::ReadExecutionServerAttributes(CDatabase&, DvnfEntity& entity, DvnExecutionServerSet& row) {
    return ReadServerSettings(entity, KindGroup(entity), row, DvnStored::ExecutionServerSettings());
}
int DvnConvCoreDbBe::ReadSchedulingServerAttributes(CDatabase&, DvnfEntity& entity, DvnSchedulingServerSet& row) {
    return ReadServerSettings(entity, KindGroup(entity), row, DvnStored::SchedulingServerSettings());
}

int DvnConvCoreDbBe::ReadPEServerAttributes(CDatabase&, DvnfEntity& entity, DvnPEServerSet& row) {
    const DvnfAttributeDataReader group = KindGroup(entity);
    const int level = ReadServerSettings(entity, group, row, DvnStored::PEServerSettings());
    // A bit set: given, each column 1 or 0; left out, all three null.
    const DvnfAttributeDataReader support = group("ImplementationSupport");
    for (const auto& b : DvnStored::PEServerSupportBits()) {
        if (support.IsDefined())
            row.*b.column = support.AsLong(0) & b.bit ? 1 : 0;
        else
            row.SetFieldNull(&(row.*b.column));
    }
    return level;
}

int DvnConvCoreDbBe::ReadUPEServerAttributes(CDatabase&, DvnfEntity& entity, DvnUPEServerSet& row, bool isNew) {
    ReadServerIdentity(entity, row, &DvnUPEServerSet::m_SERVER_ID, isNew);
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(entity).AttributeData();
    const int level = ReadServerSettings(entity, attributes, row, DvnStored::UserServerTexts());
    const DvnfAttributeDataReader context = attributes("UPESContext");
    // 1 is the one value known; left out it is 1 too. Another is not written.
    auto one = [&](const char* name, long& column) {
        const DvnfAttributeDataReader value = context(name);
        if (!value.IsDefined() || value.AsLong(0) == 1) column = 1;
    };
    one("HXSystem", row.m_HXSYSTEM);
    one("MessageFormat", row.m_MESSAGE_FORMAT);
    DvnStored::SetText(row, row.m_PHYSICALQUEUE, context("PhysicalQueueName").AsString("").str());
    if (context("QueueManagerName").IsDefined())
        DvnStored::SetText(row, row.m_QMGRNAME, context("QueueManagerName").AsString("").str());
    row.m_VERSION = NumberOr(context("Version"), 3);
    row.m_RELEASE = NumberOr(context("Release"), 2);
    row.m_MOD_LEVEL = NumberOr(context("Level"), 2);
    return level;
}

int DvnConvCoreDbBe::ReadAdminServerAttributes(CDatabase&, DvnfEntity& entity, DvnAdminServerSet& row, bool isNew) {
    ReadServerIdentity(entity, row, &DvnAdminServerSet::m_SERVER_ID, isNew);
    SetDescription(row, entity);
    const DvnfAttributeDataReader documentation = static_cast<const DvnfEntity&>(entity).AttributeData()("Documentation");
    if (documentation.IsDefined())
        DvnStored::SetText(row, row.m_DOCUMENTATION, documentation.AsString("").str());
    else
        row.SetFieldNull(&row.m_DOCUMENTATION);
    return LevelOk;
}
