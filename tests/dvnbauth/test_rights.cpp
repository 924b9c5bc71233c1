// The rights a user gets from the staff tables of a repository.
#include <gtest/gtest.h>

#include "dvnbauth.h"
#include "repositorydb.h"

namespace {

// A repository with two system groups, three categories and a fresh
// authorization object per test.
class Authorization : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystemGroup(Db(), "G2", "OTHER_GRP");
        AddCategory(Db(), "C1", "Claims");
        AddCategory(Db(), "C2", "Loans");
        AddCategory(Db(), "C3", "Travel");
        DvnBTAuthorization::DestroyInstance();
        auth = DvnBTAuthorization::GetInstance();
        // A second database user that reaches this database: on PostgreSQL
        // the role that needs its password where the server has one.
        if (!IsPostgres()) {
            other = {"someone", "other-pw"};
        } else if (!PgSecretRole().user.empty()) {
            other = PgSecretRole();
            GrantToSecretRole();
        }
    }
    // Loads the rights of userId in group into the object with the given
    // database user; the messages.
    DvnMessageTarget SetUser(const char* userId, const char* group = "SYS_GRP", const std::string& ds = "",
                             const PgRole& dbUser = {"postgres", "login-pw"}) {
        DvnMessageTarget target;
        auth->SetUser(target, DvnString(group), DvnString(userId), DvnString(dbUser.user),
                      DvnString(dbUser.password), DvnString(ds.empty() ? DataSource() : ds));
        return target;
    }
    // Each password check gives its answer and no message.
    struct Attempt {
        const char *user, *group, *password;
        bool valid;
    };
    void ExpectLogins(std::initializer_list<Attempt> attempts) {
        for (const Attempt& a : attempts) {
            DvnMessageTarget target;
            EXPECT_EQ(auth->IsPasswordValid(target, a.group, a.user, a.password, DvnString(DataSource())), a.valid)
                << a.user << " " << a.group << " " << a.password;
            EXPECT_TRUE(target.Messages().empty()) << a.user;
        }
    }
    void Login(const char* userId) {
        EXPECT_TRUE(SetUser(userId).Messages().empty());
        ASSERT_EQ(auth->UserID(), DvnString(userId));
        EXPECT_EQ(auth->DbUser(), DvnString("postgres"));
        EXPECT_EQ(auth->DbPassword(), DvnString("login-pw"));
    }
    bool Category(const char* name) { return auth->AuthForProcessCategory(DvnString(name)); }
    bool CategoryAsAdmin(const char* name) { return auth->AuthForProcessCategoryAsAdmin(DvnString(name)); }
    bool WorkitemsOf(const char* userId) { return auth->AuthForWorkitemsOf(DvnString(userId)); }

    DvnBTAuthorization* auth = nullptr;
    PgRole other{"postgres", "other-pw"};
};

TEST_P(Authorization, SetUserLoadsFlagsAndTheRightsOfEachCategoryAndPerson) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .staff = 1,
                     .processModeling = 1, .setAuthorization = 1, .globalPerson = 0});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .globalPerson = 0});
    AddPerson(Db(), {.id = "P3", .userId = "CARLA", .systemGroup = "G1", .password = "c"});
    AddRelation(Db(), "PERS_SEL_PADM_AUTH", "P1", "C1");
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P1", "C2");
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P2", "C3");
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P1", "P2");
    // Only the role of that exact name makes an administrator.
    AddRole(Db(), "R1", "system administrator");
    AddRole(Db(), "R2", "System administrator");
    AddRelation(Db(), "ROLE_INCL_PERSON", "R1", "P1");
    AddRelation(Db(), "ROLE_INCL_PERSON", "R2", "P3");

    Login("ANNA");
    EXPECT_TRUE(auth->AuthForStaffWrite() && auth->AuthForProcessModeling() && auth->AuthForSetAuthorization());
    EXPECT_FALSE(auth->AuthForTopologyWrite() || auth->AuthForOperation() || auth->IsSystemAdmin());
    EXPECT_TRUE(CategoryAsAdmin("Claims") && Category("Claims"));  // an administrator may use the category
    EXPECT_TRUE(Category("Loans"));
    EXPECT_FALSE(CategoryAsAdmin("Loans"));
    EXPECT_FALSE(Category("Travel"));  // BORIS's right
    EXPECT_TRUE(WorkitemsOf("BORIS"));
    EXPECT_FALSE(WorkitemsOf("CARLA"));

    // Another user's rights replace these entirely.
    Login("BORIS");
    EXPECT_FALSE(auth->AuthForStaffWrite());
    EXPECT_FALSE(CategoryAsAdmin("Claims") || Category("Loans") || WorkitemsOf("BORIS"));
    EXPECT_TRUE(Category("Travel"));
    Login("CARLA");
    EXPECT_TRUE(auth->IsSystemAdmin() && auth->AuthForTopologyWrite() && auth->AuthForProcessModeling() &&
                auth->AuthForStaffWrite());
}

TEST_P(Authorization, GlobalRightsSkipTheTablesTheyCover) {
    // A global process right: the per-category tables are not read.
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .globalProcess = 1});
    AddRelation(Db(), "PERS_SEL_PADM_AUTH", "P1", "C1");
    // A null global person right: the person relation is not read either,
    // and the work-item rights stay as they were.
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .globalPerson = -1});
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P2", "P1");
    AddPerson(Db(), {.id = "P3", .userId = "CARLA", .systemGroup = "G1", .password = "c",
                     .globalProcessAdmin = 1, .globalPerson = 1});
    AddPerson(Db(), {.id = "P4", .userId = "DORA", .systemGroup = "G1", .password = "d", .globalPerson = 0});
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P4", "P3");

    Login("ANNA");
    EXPECT_TRUE(auth->AuthForAllProcessCategories() && Category("Claims"));
    EXPECT_FALSE(auth->AuthForAllProcessCategoriesAsAdmin() || CategoryAsAdmin("Claims"));

    Login("DORA");
    Login("BORIS");  // keeps DORA's work-item rights
    EXPECT_FALSE(auth->AuthForAllWorkitems() || WorkitemsOf("ANNA"));
    EXPECT_TRUE(WorkitemsOf("CARLA"));

    // A global person right of 1 covers everybody; again kept over a null one.
    Login("CARLA");
    EXPECT_FALSE(auth->AuthForAllProcessCategories());
    EXPECT_TRUE(auth->AuthForAllProcessCategoriesAsAdmin() && auth->AuthForAllWorkitems());
    Login("BORIS");
    EXPECT_TRUE(auth->AuthForAllWorkitems());
    // A defined global person right of 0 replaces them.
    Login("DORA");
    EXPECT_FALSE(auth->AuthForAllWorkitems() || WorkitemsOf("ANNA"));
}

TEST_P(Authorization, AFailedSetUserLeavesTheObjectAsItWas) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .topology = 1});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G2", .password = "b", .staff = 1});
    Login("ANNA");
    // Each failure below comes with another database user: neither the user
    // nor the database user of the object may change.
    auto expectUnchanged = [&] {
        EXPECT_EQ(auth->UserID(), DvnString("ANNA"));
        EXPECT_EQ(auth->SystemGroup(), DvnString("SYS_GRP"));
        EXPECT_TRUE(auth->AuthForTopologyWrite());
        EXPECT_FALSE(auth->AuthForStaffWrite());
        EXPECT_EQ(auth->DbUser(), DvnString("postgres"));
        EXPECT_EQ(auth->DbPassword(), DvnString("login-pw"));
    };
    // Unknown user; a user of another group; an unknown group: no row, no message.
    EXPECT_TRUE(SetUser("NOBODY", "SYS_GRP", "", other).Messages().empty());
    EXPECT_TRUE(SetUser("BORIS", "SYS_GRP", "", other).Messages().empty());
    EXPECT_TRUE(SetUser("BORIS", "NO_SUCH", "", other).Messages().empty());
    expectUnchanged();

    // A data source that cannot be opened: 51366 with its name, the
    // password masked. The person found but a later read failing: 51368,
    // and nothing of the half-read rights is taken over.
    auto reported = [&](const std::string& ds) {
        const auto messages = SetUser("BORIS", "OTHER_GRP", ds, other).Messages();
        return messages.size() == 1 ? std::to_string(messages[0].number) + "|" + messages[0].argument.str() : "?";
    };
    EXPECT_EQ(reported("no_such_data_source"), "51366|no_such_data_source");
    expectUnchanged();
    EXPECT_EQ(reported("no_such_data_source;pwd=Zq7secret"), "51366|no_such_data_source;pwd=********");
    expectUnchanged();
    ExecAll(Db(), {"DROP TABLE DVBT.ROLE_INCL_PERSON"});
    EXPECT_EQ(reported("").substr(0, 6), "51368|");
    expectUnchanged();
}

// A row kept as a tombstone (mark 4) is nobody and grants nothing; a row
// without a mark is live.
TEST_P(Authorization, TombstonesNeitherLogInNorGrantAnything) {
    // Names are unique, tombstones included (a re-import revives the row of
    // its name), so each tombstone here has a name of its own.
    AddSystemGroup(Db(), "G9", "GONE_GRP", 4);
    AddSystemGroup(Db(), "G3", "THIRD_GRP");
    AddCategory(Db(), "C9", "Archive", 4);
    AddRole(Db(), "R9", "System administrator", 4);
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .globalPerson = 0});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .mark = -1});
    AddPerson(Db(), {.id = "P9", .userId = "GHOST", .systemGroup = "G1", .password = "g", .staff = 1,
                     .globalProcess = 1, .mark = 4});
    AddPerson(Db(), {.id = "P3", .userId = "EVA", .systemGroup = "G3", .password = "e", .topology = 1});
    AddPerson(Db(), {.id = "P4", .userId = "OTTO", .systemGroup = "G9", .password = "o"});
    for (const char* person : {"P1", "P2", "P9"}) AddRelation(Db(), "ROLE_INCL_PERSON", "R9", person);
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P1", "C1");
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P1", "C9");
    AddRelation(Db(), "PERS_SEL_PADM_AUTH", "P1", "C9");
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P1", "P2");
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P1", "P9");

    ExpectLogins({{"ANNA", "SYS_GRP", "a", true},
                  {"BORIS", "SYS_GRP", "b", true},  // no mark: live
                  {"GHOST", "SYS_GRP", "g", false},
                  {"EVA", "THIRD_GRP", "e", true},
                  {"OTTO", "GONE_GRP", "o", false}});  // a tombstoned group

    Login("ANNA");
    EXPECT_FALSE(auth->IsSystemAdmin());
    EXPECT_TRUE(Category("Claims"));
    EXPECT_FALSE(Category("Archive") || CategoryAsAdmin("Archive"));
    EXPECT_TRUE(WorkitemsOf("BORIS"));
    EXPECT_FALSE(WorkitemsOf("GHOST"));
    Login("BORIS");
    EXPECT_FALSE(auth->IsSystemAdmin());
    // The same role without a mark is live and makes its members administrators.
    ExecAll(Db(), {"UPDATE DVBT.ROLE SET CHECKED_OUT = NULL WHERE ROLE_ID = 'R9'"});
    Login("BORIS");
    EXPECT_TRUE(auth->IsSystemAdmin());
    // The tombstone is not found: the object stays BORIS's.
    EXPECT_TRUE(SetUser("GHOST").Messages().empty());
    EXPECT_EQ(auth->UserID(), DvnString("BORIS"));
    EXPECT_TRUE(SetUser("EVA", "THIRD_GRP").Messages().empty());
    EXPECT_EQ(auth->UserID(), DvnString("EVA"));
    EXPECT_TRUE(auth->AuthForTopologyWrite());
}

// HasUsers decides whether an initial load runs with every right: any live
// person row means users, with a key or without.
TEST_P(Authorization, HasUsersCountsEveryLivePersonRow) {
    const TestPerson tombstone{.id = "P9", .userId = "GHOST", .systemGroup = "G1", .password = "g", .mark = 4};
    const TestPerson keyless{.id = "", .userId = "ANNA", .systemGroup = "G1", .password = "a"};
    const TestPerson unmarked{.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .mark = -1};
    struct Case {
        const char* rows;
        std::vector<TestPerson> persons;
        bool users;
    } cases[] = {
        {"none", {}, false},
        {"a tombstone", {tombstone}, false},
        {"a row without a mark", {unmarked}, true},
        {"a tombstone and a row without a key", {tombstone, keyless}, true},
    };
    for (const Case& c : cases) {
        ExecAll(Db(), {"DELETE FROM DVBT.PERSON"});
        for (const TestPerson& p : c.persons) AddPerson(Db(), p);
        DvnMessageTarget target;
        EXPECT_EQ(auth->HasUsers(target, DvnString(DataSource())), c.users) << c.rows;
        EXPECT_TRUE(target.Messages().empty()) << c.rows;
    }
}

// The stored form names its scheme and rounds: the form of today (600000
// rounds) and the earlier one (2048) both log in, each with its own count;
// a form of an unknown scheme logs nobody in.
TEST_P(Authorization, EveryStoredPasswordFormIsCheckedAsItSays) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "new-pw",
                     .rounds = DvnUser::kPasswordRounds});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "old-pw"});
    AddPerson(Db(), {.id = "P3", .userId = "CARLA", .systemGroup = "G1", .password = "c"});
    AddPerson(Db(), {.id = "P4", .userId = "DORA", .systemGroup = "G1", .password = "d"});
    EXPECT_EQ(QueryValue(Db(), "SELECT PASSWORD FROM DVBT.PERSON WHERE PERSON_ID = 'P1'").rfind(
                  "pbkdf2-sha256$600000$", 0),
              0u);
    // CARLA's and DORA's own digests under another scheme or count.
    ExecAll(Db(), {"UPDATE DVBT.PERSON SET PASSWORD = REPLACE(PASSWORD, 'pbkdf2-sha256$', 'pbkdf2-sha1$') "
                   "WHERE PERSON_ID = 'P3'",
                   "UPDATE DVBT.PERSON SET PASSWORD = REPLACE(PASSWORD, '$2048$', '$2049$') WHERE PERSON_ID = 'P4'"});
    // "boris": the caller folds.
    ExpectLogins({{"ANNA", "SYS_GRP", "new-pw", true},     {"BORIS", "SYS_GRP", "old-pw", true},
                  {"BORIS", "OTHER_GRP", "old-pw", false}, {"boris", "SYS_GRP", "old-pw", false},
                  {"CARLA", "SYS_GRP", "c", false},        {"DORA", "SYS_GRP", "d", false}});
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(Authorization);
