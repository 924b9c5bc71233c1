// The login of dvnbt on both databases: who may replace a repository.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "repositorydb.h"
#include "staffrows.h"
#include "testenv.h"

namespace {

class DvnbtLogin : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystemGroup(Db(), "G2", "OTHER_GRP");
    }
    // dvnbt on this test's database, then the given arguments.
    CliResult Run(std::vector<std::string> args, const std::vector<std::string>& env = {}) {
        std::vector<std::string> all = IsPostgres() ? std::vector<std::string>{"--dsn", DataSource()}
                                                    : std::vector<std::string>{"--db", DbFile()};
        all.insert(all.end(), args.begin(), args.end());
        return RunDvnbt(all, env);
    }
    // A TRX file of two categories, kept for the test.
    std::string CategoryFile() {
        std::string path = (std::filesystem::temp_directory_path() / ("dvnbt_login_" + std::to_string(getpid()) + ".trx")).string();
        std::ofstream(path) << "Category \"Claims\" {}\nCategory \"Loans\" {}\n";
        return path;
    }
    std::string Count(const char* table) { return QueryValue(Db(), "SELECT COUNT(*) FROM " + prefix.str() + table); }
    std::string Persons() { return QueryValue(Db(), "SELECT COUNT(*) FROM " + prefix.str() + "PERSON"); }
    void AddAdministrator(const char* id, const char* userId, const char* groupId, const char* password) {
        AddRole(Db(), "R_" + std::string(id), "System administrator");
        AddPerson(Db(), {.id = id, .userId = userId, .systemGroup = groupId, .password = password});
        AddRelation(Db(), "ROLE_INCL_PERSON", "R_" + std::string(id), id);
    }
};

TEST_P(DvnbtLogin, ReplacingARepositoryWithUsersNeedsAnAdministratorsLogin) {
    AddAdministrator("P1", "ANNA", "G2", "anna-pw");
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "boris-pw", .staff = 1});
    struct Refused {
        std::vector<std::string> args, env;
        const char* why;
    };
    for (const Refused& r : std::vector<Refused>{
             {{"init", "--recreate"}, {}, "no user given"},
             {{"init", "--recreate"}, {"DVNBT_USER=anna"}, "no password for ANNA"},
             {{"--user", "anna", "--system-group", "OTHER_GRP", "init", "--recreate"}, {"DVNBT_PASSWORD=wrong"},
              "login refused: unknown user ANNA"},
             {{"--user", "nobody", "--system-group", "OTHER_GRP", "init", "--recreate"}, {"DVNBT_PASSWORD=anna-pw"},
              "login refused"},
             // The right password in the default group, where ANNA is not.
             {{"--user", "anna", "init", "--recreate"}, {"DVNBT_PASSWORD=anna-pw"}, "in system group SYS_GRP"},
             {{"--user", "boris", "init", "--recreate"}, {"DVNBT_PASSWORD=boris-pw"},
              "needs a system administrator"},
         }) {
        CliResult result = Run(r.args, r.env);
        EXPECT_EQ(result.status, 1) << r.why;
        EXPECT_NE(result.err.find(r.why), std::string::npos) << result.err;
        EXPECT_EQ(Persons(), "2") << r.why;  // nothing was touched
    }

    // The user from the environment, the group from the machine profile.
    ProfileFile profile("current = Work\n[Work]\nSystemGroup = OTHER_GRP\n");
    CliResult done = Run({"init", "--recreate"}, {"DVNBT_USER=Anna", "DVNBT_PASSWORD=anna-pw"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Persons(), "0");
}

TEST_P(DvnbtLogin, ARepositoryWithoutPersonsNeedsNoLoginToBeReplaced) {
    CliResult done = Run({"init", "--recreate"});
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Persons(), "0");
}

TEST_P(DvnbtLogin, AnImportRunsUnderTheLoggedInUsersRights) {
    const std::string file = CategoryFile();
    AddPerson(Db(), {.id = "P1", .userId = "MODELLER", .systemGroup = "G1", .password = "m", .processModeling = 1});
    // A wrong password or an unknown user changes nothing.
    for (const char* user : {"DVNBT_USER=modeller", "DVNBT_USER=stranger"}) {
        CliResult wrong = Run({"import", "--initial-load", file}, {user, "DVNBT_PASSWORD=wrong"});
        EXPECT_EQ(wrong.status, 1) << user;
        EXPECT_NE(wrong.err.find("login refused"), std::string::npos) << wrong.err;
        EXPECT_TRUE(wrong.out.empty()) << wrong.out;
        EXPECT_EQ(Count("CATEGORY"), "0");
        EXPECT_EQ(Count("VERSION"), "0");
    }
    // The right password: the modelling right stores the categories, but an
    // initial load on a repository with users is an administrator's.
    const std::vector<std::string> modeller = {"DVNBT_USER=modeller", "DVNBT_PASSWORD=m"};
    CliResult notAdmin = Run({"import", "--initial-load", file}, modeller);
    EXPECT_EQ(notAdmin.status, 1);
    EXPECT_NE(notAdmin.err.find("MODELLER is not one"), std::string::npos) << notAdmin.err;
    EXPECT_EQ(Count("VERSION"), "0");
    CliResult stored = Run({"import", file}, modeller);
    EXPECT_EQ(stored.status, 0) << stored.err;
    EXPECT_EQ(Count("CATEGORY"), "2");
    std::filesystem::remove(file);
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtLogin);
