// The settings of a server row as tables, by the same rows as the layered
// settings (topologysettings.h): where each column of a server table comes
// from below the server's attributes, how it is read, and how the load puts
// it back. A server has no defaults of its own: a setting it leaves out is
// null, and the level above (its system, group, domain) counts.
#pragma once

#include <vector>

#include "dvntoposets.h"
#include "topologysettings.h"

// The server tables whose columns the tables below describe: the store and
// the load instantiate their setting routines for each, X(set class).
#define DVN_FOR_EACH_SERVER_SET(X)                                                                 \
    X(DvnServerSet) X(DvnUPEServerSet) X(DvnCleanupServerSet) X(DvnDistributionServerSet) \
        X(DvnExecutionServerSet) X(DvnSchedulingServerSet) X(DvnPEServerSet)

namespace DvnStored {

// "Description" and "Documentation" of the server itself.
const std::vector<Setting<DvnServerSet>>& ServerTexts();
const std::vector<Setting<DvnUPEServerSet>>& UserServerTexts();
// Below "ServerDefault".<kind>."ServerCommon": the common columns of every
// kind but the user defined program execution server.
const std::vector<Setting<DvnServerSet>>& ServerRowCommonSettings();
// Below "ServerDefault".<kind>: the columns of each kind of its own.
const std::vector<Setting<DvnCleanupServerSet>>& CleanupServerSettings();
const std::vector<Setting<DvnDistributionServerSet>>& DistributionServerSettings();
const std::vector<Setting<DvnExecutionServerSet>>& ExecutionServerSettings();
const std::vector<Setting<DvnSchedulingServerSet>>& SchedulingServerSettings();
const std::vector<Setting<DvnPEServerSet>>& PEServerSettings();
// "ImplementationSupport" of a program execution server.
const std::vector<Bit<DvnPEServerSet>>& PEServerSupportBits();

}  // namespace DvnStored
