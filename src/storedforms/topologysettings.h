// The layered settings of the topology as tables, one per family: where
// each column of the settings rows comes from in an entity's attributes, how
// it is read, and its default at the domain. The store reads attributes into
// columns by them, the load puts columns back by the same tables.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "dvntoposets.h"

namespace DvnStored {

enum class Reading {
    Bool,      // AsBool, stored 1 or 0
    Long,      // AsLong
    LongWhen,  // AsLong, only while another attribute has a given value
    Map,       // AsLong through a table of values
    Interval,  // a duration in seconds; 0 counts as not given
    Timed,     // "Type" 0: 0, 1: 999999999 (no limit), 2: the duration
    Event,     // the stored text of a time event
    Text,      // AsString, cut when the column says so
};


using Pairs = std::vector<std::pair<long, long>>;

// Where a column of the family Set comes from and how it is read.
template <class Set>
struct Setting {
    const char* path;  // dotted, below the reader the family starts from
    Reading reading;
    long Set::*number = nullptr;
    CString Set::*text = nullptr;
    std::optional<long> numberDefault = {};  // at the domain; none: null there too
    const char* textDefault = nullptr;
    std::vector<std::pair<long, long>> map = {};  // Map: given value, stored value
    std::optional<long> otherwise = {};           // Map: stored for every other value
    size_t cut = 0;                               // Text: at most so many characters
    const char* when = nullptr;                   // LongWhen: this attribute ...
    long whenValue = 0;                           // ... has this value,
    long Set::*whenColumn = nullptr;              // stored in this column;
    bool loadOnlyWhen = false;                    // the load, too, reads it only then
    bool keepZero = false;                        // Interval: 0 seconds is stored, not left out
};

// The families. The common server settings stand below
// "ServerDefault".<kind>."ServerCommon", the others below the entity's
// attributes. Special readings (the query message size, "Autonomy",
// "ImplementationSupport", TERMINATE_ON_ERROR) are not in the tables.
const std::vector<Setting<DvnTopologyCommonSet>>& CommonSettings();
const std::vector<Setting<DvnTopologyPrcSet>>& ProcessSettings();
const std::vector<Setting<DvnTopologyPrgSet>>& ProgramSettings();
const std::vector<Setting<DvnTopologySvrSet>>& ServerCommonSettings();
const std::vector<Setting<DvnTopologySvsSet>>& SpecificServerSettings();

// A bit set over number columns: each bit is a column of 1 or 0.
template <class Set>
struct Bit {
    long bit;
    long Set::*column;
};
// "ProcessDefault"."Autonomy" (15: all four; domain default 0, 0, 0, 1).
const std::vector<Bit<DvnTopologyPrcSet>>& AutonomyBits();
// "ServerDefault"."ProgramExecutionServer"."ImplementationSupport".
const std::vector<Bit<DvnTopologySvsSet>>& ImplementationSupportBits();

// ---- program execution agents: "PEADefault" of an agent into its own
// row of PE_AGENT. A mode through its map; a maximum only when its mode is
// given as 1 (stored 2), the one mode that has a maximum.
struct AgentSetting {
    const char* attribute;  // below "PEADefault"
    long DvnPEASet::*column;
    Pairs map;                     // given value, stored value; empty: a number, taken ...
    const char* mode = nullptr;    // ... only while this attribute is 1
    long DvnPEASet::*modeColumn = nullptr;  // ... stored here as 2
};
const std::vector<AgentSetting>& AgentSettings();

}  // namespace DvnStored
