// A fresh database per test holding the whole repository schema, created
// as `dvnbt init` creates it, on SQLite and on PostgreSQL.
#pragma once

#include "testdb.h"

class RepositoryTest : public DbTest {
protected:
    void PrepareSchema() override;
    CString prefix;  // "DVBT."
};
