// A fresh, empty database per test, on SQLite and on PostgreSQL.
//
// SQLite: a new file in a new temporary folder, reached through the driver
// library itself (or through $DVNBT_TEST_SQLITE_DSN with Database= added).
// PostgreSQL: a new database on the server of the data source named by
// $DVNBT_TEST_PG_DSN, reached as that data source with Database= added, with
// an empty schema "dvbt". A fixture that asks for the repository schema gets
// a copy of a template instead (a file, or CREATE DATABASE ... TEMPLATE),
// which is much cheaper than creating the tables for every test. Without $DVNBT_TEST_PG_DSN the PostgreSQL cases are
// skipped, unless $DVNBT_TEST_REQUIRE_PG=1 makes them fail.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "odbcframe.h"

enum class Backend { SQLite, PostgreSQL };
std::string BackendName(Backend);

class DbTest : public ::testing::TestWithParam<Backend> {
protected:
    void SetUp() override;
    void TearDown() override;
    // A name that OpenDatabaseFromFile(name, db, user, pwd) and
    // `dvnbt --dsn NAME` reach this database with.
    const std::string& DataSource() const { return m_dataSource; }
    // An open connection to it (opened on first call, closed in TearDown).
    CDatabase& Db();
    // SQLite: the database file (for `dvnbt --db FILE`); empty on PostgreSQL.
    std::string DbFile() const { return m_file; }
    // The arguments of dvnbt on this database (--dsn or --db), then args.
    std::vector<std::string> DvnbtArgs(const std::vector<std::string>& args) const;
    // Called by SetUp once the database exists; default: nothing.
    virtual void PrepareSchema() {}
    // True: the database starts with the repository schema, copied from a
    // template made once per schema (see testdb.cpp); false: empty.
    virtual bool WithRepositorySchema() const { return false; }

    bool IsPostgres() const { return GetParam() == Backend::PostgreSQL; }
    // PostgreSQL: lets the role that needs a password (PgSecretRole) read
    // and write the repository tables of this database.
    void GrantToSecretRole();
    // A second, independent connection to the same database.
    std::unique_ptr<CDatabase> OpenSecondConnection() const;

private:
    std::string m_dataSource;
    std::string m_file;
    std::string m_dir;
    std::string m_pgDatabase;
    std::unique_ptr<CDatabase> m_db;
};

#define DVN_INSTANTIATE_BOTH_BACKENDS(Suite)                                                       \
    INSTANTIATE_TEST_SUITE_P(Db, Suite, ::testing::Values(Backend::SQLite, Backend::PostgreSQL), \
                             [](const auto& i) { return BackendName(i.param); })

// The role of the PostgreSQL test server that must give its password
// ($DVNBT_TEST_PG_SECRET_USER and $DVNBT_TEST_PG_SECRET_PASSWORD, set by
// scripts/pg-temp.sh); user empty when the server has none.
struct PgRole {
    std::string user;
    std::string password;
};
PgRole PgSecretRole();

// Runs statements that give no rows (schema set-up in tests).
void ExecAll(CDatabase& db, std::initializer_list<const char*> statements);
// The first column of the first row of a query, as text ("<null>" for NULL,
// "<none>" when no row).
std::string QueryValue(CDatabase& db, const std::string& sql);
// Rows of a query, each row its columns joined by '|' (NULL as "<null>").
std::vector<std::string> QueryRows(CDatabase& db, const std::string& sql);
