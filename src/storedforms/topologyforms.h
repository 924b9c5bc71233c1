// The numberings of the topology, one table each, read by the stores and the
// loads alike: the kinds of server and the platforms.
#pragma once

#include <array>
#include <optional>

namespace DvnStored {

// One kind of server under its numbers. A server entity names its kind by
// "Type"; the settings tables of domain, group and system hold one row per
// SERVER_TYPE; an export asks by section and by kind of server. The user
// defined program execution server has no settings row and no group.
struct ServerKind {
    long entityType;       // "Type" of a Server entity, 1..8
    long serverType;       // SERVER_TYPE of the settings rows, 1..7; 0: none
    const char* group;     // group under "ServerDefault"; null: none
    const char* table;     // table of the servers of this kind
    long exportGroup;      // section of an export
    long svrKind;          // kind of server of an export command
};

// In the order of SERVER_TYPE, the user defined one last.
inline constexpr std::array<ServerKind, 8> ServerKinds = {{
    {3, 1, "ExecutionServer", "EXECUTION_SERVER", 23, 4},
    {6, 2, "SchedulingServer", "SCHEDULING_SERVER", 26, 6},
    {5, 3, "ModelingServer", "MODELLING_SERVER", 25, 10},
    {1, 4, "CleanupServer", "CLEANUP_SERVER", 21, 7},
    {4, 5, "GatewayServer", "GATEWAY_SERVER", 24, 11},
    {2, 6, "DistributionServer", "DISTRIBUTION_SRV", 22, 9},
    {7, 7, "ProgramExecutionServer", "PE_SERVER", 30, 12},
    {8, 0, nullptr, "USER_PE_SERVER", 32, 13},
}};
inline constexpr long ServerTypes = 7;  // settings rows per level object

// The kind of a SERVER_TYPE or of an entity's "Type"; null when none has it.
constexpr const ServerKind* KindOfServerType(long serverType) {
    for (const auto& kind : ServerKinds)
        if (kind.serverType != 0 && kind.serverType == serverType) return &kind;
    return nullptr;
}
constexpr const ServerKind* KindOfEntityType(long entityType) {
    for (const auto& kind : ServerKinds)
        if (kind.entityType == entityType) return &kind;
    return nullptr;
}

// The platforms: the core model's "Platform" value and the number stored in
// PES_PLATFORM, PLATFORM, OPERATING_SYSTEM and the program extent tables.
struct Platform {
    long model;         // "Platform" of the core model, 0..6
    long stored;        // stored number, 1..7
    const char* group;  // attribute group of a program's platform settings
    const char* table;  // program extent table; null: none
};
inline constexpr std::array<Platform, 7> Platforms = {{
    {0, 2, "KRX", "KRX_EXTENT"},
    {1, 3, "HPUX", "HPUX_EXTENT"},
    {2, 1, "NK2", "NK2_EXTENT"},
    {3, 4, "WIN95", "WIN95_EXTENT"},
    {4, 5, "WINNT", "WINNT_EXTENT"},
    {5, 6, "TR880", nullptr},
    {6, 7, "Solaris", "SOLARIS_EXTENT"},
}};

// Both ways of the map; nothing for a number outside it.
constexpr std::optional<long> StoredPlatform(long model) {
    for (const auto& p : Platforms)
        if (p.model == model) return p.stored;
    return std::nullopt;
}
constexpr std::optional<long> ModelPlatform(long stored) {
    for (const auto& p : Platforms)
        if (p.stored == stored) return p.model;
    return std::nullopt;
}

}  // namespace DvnStored
