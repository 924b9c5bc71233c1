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
    std::string id;           // PERSON_ID; empty: NULL
    std::string userId;       // USERID, stored as given
    std::string systemGroup;  // SYSTEM_GROUP (an identifier)
    std::string password;     // in clear; stored encoded
    int staff = 0, topology = 0, processModeling = 0, operation = 0, setAuthorization = 0;
    int globalProcess = 0, globalProcessAdmin = 0;
    int globalPerson = -1;  // -1: GLOBAL_PERS_AUTH stays NULL
    int mark = 0;           // CHECKED_OUT; -1: NULL, 4: a tombstone
    // The rounds of the stored password. Tests store the form of 2048
    // rounds that earlier repositories hold: the login reads it as it reads
    // any stored form, and a login then costs milliseconds instead of the
    // fraction of a second of DvnUser::kPasswordRounds, the product's count
    // for every new password (give that where its cost is the subject).
    int rounds = 2048;
};

// A number as an SQL literal; -1 is NULL.
std::string NumberOrNull(int mark);

void AddSystemGroup(CDatabase& db, const std::string& id, const std::string& name, int mark = 0);
void AddPerson(CDatabase& db, const TestPerson& person);
void AddCategory(CDatabase& db, const std::string& id, const std::string& name, int mark = 0);
void AddRole(CDatabase& db, const std::string& id, const std::string& name, int mark = 0);
void AddOrganization(CDatabase& db, const std::string& id, const std::string& name);
void AddProgram(CDatabase& db, const std::string& id, const std::string& name);
// A row of a two-column relation: PERS_SEL_PADM_AUTH, PERS_HAS_PRC_AUTH,
// PERS_AUTH_FOR_PERS or ROLE_INCL_PERSON (whose first column is the role).
void AddRelation(CDatabase& db, const std::string& table, const std::string& first, const std::string& second);

// ---- topology rows that persons and activity kinds name: a system in a
// group, and a server of a system; table: USER_PE_SERVER or PE_SERVER.
void AddSystem(CDatabase& db, const std::string& id, const std::string& name, const std::string& systemGroup);
void AddServer(CDatabase& db, const std::string& table, const std::string& id, const std::string& name,
               const std::string& system);
