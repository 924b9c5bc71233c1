// A fresh database per test holding the whole repository schema, created
// as `dvnbt init` creates it, on SQLite and on PostgreSQL.
#pragma once

#include <string>

#include "testdb.h"

class RepositoryTest : public DbTest {
protected:
    void PrepareSchema() override;
    bool WithRepositorySchema() const override { return true; }
    CString prefix;  // "DVBT."
};

// Staff rows written straight into the tables, for tests that need users in
// a repository before persons can be imported.
struct TestPerson {
    std::string id;           // PERSON_ID
    std::string userId;       // USERID, stored as given
    std::string systemGroup;  // SYSTEM_GROUP (an identifier)
    std::string password;     // in clear; stored encoded
    int staff = 0, topology = 0, processModeling = 0, operation = 0, setAuthorization = 0;
    int globalProcess = 0, globalProcessAdmin = 0;
    int globalPerson = -1;  // -1: GLOBAL_PERS_AUTH stays NULL
};

void AddSystemGroup(CDatabase& db, const std::string& id, const std::string& name);
void AddPerson(CDatabase& db, const TestPerson& person);
void AddCategory(CDatabase& db, const std::string& id, const std::string& name);
void AddRole(CDatabase& db, const std::string& id, const std::string& name);
void AddOrganization(CDatabase& db, const std::string& id, const std::string& name);
void AddProgram(CDatabase& db, const std::string& id, const std::string& name);
// A row of a two-column relation: PERS_SEL_PADM_AUTH, PERS_HAS_PRC_AUTH,
// PERS_AUTH_FOR_PERS or ROLE_INCL_PERSON (whose first column is the role).
void AddRelation(CDatabase& db, const std::string& table, const std::string& first, const std::string& second);
