// The rows of the process model whose owner row is gone: what a delete, a
// replacement or an editor rewrite must never leave behind.
#pragma once

#include <string>
#include <vector>

#include "odbcframe.h"

// One query per table, counting its rows whose owner is missing (a process,
// an activity, an enclosing block, a connector's end, a data connector, a
// control connector, a data structure). "TABLE|count" for each table that
// has any; empty when the repository is whole.
std::vector<std::string> OrphanRows(CDatabase& db);
