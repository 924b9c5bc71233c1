// Every recordset class of the schema.
#pragma once

#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvnstaffsets.h"
#include "dvntoposets.h"
