// Implementation of the recordset layer: see odbcframe.h.
#include "odbcframe.h"
