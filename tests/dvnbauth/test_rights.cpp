#include <gtest/gtest.h>

#include "dvnbauth.h"
#include "repositorydb.h"
#include "staffrows.h"
#include "testenv.h"

namespace {

// A repository with the schema, two system groups, three categories and a
// fresh authorization object per test.
class Authorization : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystemGroup(Db(), "G2", "OTHER_GRP");
        AddCategory(Db(), "C1", "Claims");
        AddCategory(Db(), "C2", "Loans");
        AddCategory(Db(), "C3", "Travel");
    }
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnBTAuthorization::DestroyInstance();
        auth = DvnBTAuthorization::GetInstance();
        ds = DvnString(DataSource());
    }
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        DvnProfile::ClearOverrides();
        RepositoryTest::TearDown();
    }
    // Loads the rights of userId in SYS_GRP and expects no message.
    void Login(const char* userId) {
        DvnMessageTarget target;
        auth->SetUser(target, DvnString("SYS_GRP"), DvnString(userId), DvnString("postgres"), DvnString("pw"), ds);
        EXPECT_TRUE(target.Messages().empty());
        ASSERT_EQ(auth->UserID(), DvnString(userId));
    }
    bool PasswordValid(const char* group, const char* user, const char* password, DvnMessageTarget& target) {
        return auth->IsPasswordValid(target, DvnString(group), DvnString(user), DvnString(password), ds);
    }

    DvnBTAuthorization* auth = nullptr;
    DvnString ds;
};

TEST_P(Authorization, HasUsersCountsPersonsAndReportsAnUnreachableDatabase) {
    DvnMessageTarget target;
    EXPECT_FALSE(auth->HasUsers(target, ds));
    EXPECT_TRUE(target.Messages().empty());  // an empty PERSON table is no failure

    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a"});
    EXPECT_TRUE(auth->HasUsers(target, ds));
    // An empty data source name means the data source of the machine profile.
    DvnProfile::SetOverride(DvnString("BTODBCDataSourceName"), ds);
    EXPECT_TRUE(auth->HasUsers(target, DvnString("")));
    EXPECT_TRUE(target.Messages().empty());

    TraceCapture trace;
    const DvnString missing("no_such_data_source");
    EXPECT_FALSE(auth->HasUsers(target, missing));
    ASSERT_EQ(target.Messages().size(), 1u);
    EXPECT_EQ(target.Messages()[0].number, 51366);
    EXPECT_EQ(target.Messages()[0].argument, missing);

    // A repository without its tables: a database exception, and false.
    target.Clear();
    ExecAll(Db(), {"DROP TABLE DVBT.PERSON"});
    EXPECT_FALSE(auth->HasUsers(target, ds));
    ASSERT_EQ(target.Messages().size(), 1u);
    EXPECT_EQ(target.Messages()[0].number, 51368);
    EXPECT_NE(trace.Text().find("Open database failed"), std::string::npos);
    EXPECT_NE(trace.Text().find("Exception opening table PERSON: rc ="), std::string::npos);
}

TEST_P(Authorization, PasswordMatchesOnlyUserGroupAndPasswordTogether) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "s3cret"});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G2", .password = "b0ris"});
    DvnMessageTarget target;
    EXPECT_TRUE(PasswordValid("SYS_GRP", "ANNA", "s3cret", target));
    EXPECT_FALSE(PasswordValid("SYS_GRP", "ANNA", "S3CRET", target));
    EXPECT_FALSE(PasswordValid("SYS_GRP", "ANNA", "", target));
    EXPECT_FALSE(PasswordValid("SYS_GRP", "NOBODY", "s3cret", target));
    // The right user and password, but in another system group.
    EXPECT_TRUE(PasswordValid("OTHER_GRP", "BORIS", "b0ris", target));
    EXPECT_FALSE(PasswordValid("SYS_GRP", "BORIS", "b0ris", target));
    // An unknown group compares against an empty group identifier.
    EXPECT_FALSE(PasswordValid("NO_SUCH_GRP", "ANNA", "s3cret", target));
    // Quotes in the input stay text.
    EXPECT_FALSE(PasswordValid("SYS_GRP", "ANNA' OR 'x'='x", "x' OR 'x'='x", target));
    EXPECT_TRUE(target.Messages().empty());
}

TEST_P(Authorization, SetUserLoadsFlagsAndTheRightsOfEachCategoryAndPerson) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .staff = 1,
                     .processModeling = 1, .setAuthorization = 1, .globalPerson = 0});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .globalPerson = 0});
    AddPerson(Db(), {.id = "P3", .userId = "CARLA", .systemGroup = "G1", .password = "c"});
    AddRelation(Db(), "PERS_SEL_PADM_AUTH", "P1", "C1");
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P1", "C2");
    AddRelation(Db(), "PERS_HAS_PRC_AUTH", "P2", "C3");
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P1", "P2");

    Login("ANNA");
    EXPECT_EQ(auth->SystemGroup(), DvnString("SYS_GRP"));
    EXPECT_EQ(auth->DbUser(), DvnString("postgres"));
    EXPECT_EQ(auth->DbPassword(), DvnString("pw"));
    EXPECT_TRUE(auth->AuthForStaffWrite());
    EXPECT_TRUE(auth->AuthForProcessModeling());
    EXPECT_TRUE(auth->AuthForSetAuthorization());
    EXPECT_FALSE(auth->AuthForTopologyWrite());
    EXPECT_FALSE(auth->AuthForOperation());
    EXPECT_FALSE(auth->IsSystemAdmin());
    EXPECT_FALSE(auth->AuthForAllProcessCategories());
    EXPECT_TRUE(auth->AuthForProcessCategoryAsAdmin(DvnString("Claims")));
    EXPECT_TRUE(auth->AuthForProcessCategory(DvnString("Loans")));
    EXPECT_FALSE(auth->AuthForProcessCategoryAsAdmin(DvnString("Loans")));
    EXPECT_FALSE(auth->AuthForProcessCategory(DvnString("Travel")));  // BORIS's right
    EXPECT_FALSE(auth->AuthForAllWorkitems());
    EXPECT_TRUE(auth->AuthForWorkitemsOf(DvnString("BORIS")));
    EXPECT_FALSE(auth->AuthForWorkitemsOf(DvnString("CARLA")));

    // Another user's rights replace these entirely.
    Login("BORIS");
    EXPECT_FALSE(auth->AuthForStaffWrite());
    EXPECT_FALSE(auth->AuthForProcessCategoryAsAdmin(DvnString("Claims")));
    EXPECT_FALSE(auth->AuthForProcessCategory(DvnString("Loans")));
    EXPECT_TRUE(auth->AuthForProcessCategory(DvnString("Travel")));
    EXPECT_FALSE(auth->AuthForWorkitemsOf(DvnString("BORIS")));
}

TEST_P(Authorization, GlobalRightsSkipTheTablesTheyCover) {
    // A global process right: the per-category tables are not read.
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .globalProcess = 1});
    AddRelation(Db(), "PERS_SEL_PADM_AUTH", "P1", "C1");
    // A null global person right: the person relation is not read either,
    // and the work-item rights stay as they were.
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b", .globalPerson = -1});
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P2", "P1");
    // A global person right of 1 covers everybody.
    AddPerson(Db(), {.id = "P3", .userId = "CARLA", .systemGroup = "G1", .password = "c",
                     .globalProcessAdmin = 1, .globalPerson = 1});
    AddPerson(Db(), {.id = "P4", .userId = "DORA", .systemGroup = "G1", .password = "d", .globalPerson = 0});
    AddRelation(Db(), "PERS_AUTH_FOR_PERS", "P4", "P3");

    Login("ANNA");
    EXPECT_TRUE(auth->AuthForAllProcessCategories());
    EXPECT_FALSE(auth->AuthForAllProcessCategoriesAsAdmin());
    EXPECT_TRUE(auth->AuthForProcessCategory(DvnString("Claims")));
    EXPECT_FALSE(auth->AuthForProcessCategoryAsAdmin(DvnString("Claims")));

    Login("DORA");
    EXPECT_FALSE(auth->AuthForAllWorkitems());
    EXPECT_TRUE(auth->AuthForWorkitemsOf(DvnString("CARLA")));
    Login("BORIS");
    EXPECT_FALSE(auth->AuthForAllWorkitems());
    EXPECT_FALSE(auth->AuthForWorkitemsOf(DvnString("ANNA")));
    EXPECT_TRUE(auth->AuthForWorkitemsOf(DvnString("CARLA")));

    Login("CARLA");
    EXPECT_FALSE(auth->AuthForAllProcessCategories());
    EXPECT_TRUE(auth->AuthForAllProcessCategoriesAsAdmin());
    EXPECT_TRUE(auth->AuthForAllWorkitems());
    Login("BORIS");
    EXPECT_TRUE(auth->AuthForAllWorkitems());
    // A defined global person right of 0 replaces them.
    Login("DORA");
    EXPECT_FALSE(auth->AuthForAllWorkitems());
    EXPECT_FALSE(auth->AuthForWorkitemsOf(DvnString("ANNA")));
}

TEST_P(Authorization, OnlyTheRoleOfThatExactNameMakesAnAdministrator) {
    AddRole(Db(), "R1", "system administrator");
    AddRole(Db(), "R2", "Auditors");
    AddRole(Db(), "R3", "System administrator");
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a"});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G1", .password = "b"});
    AddRelation(Db(), "ROLE_INCL_PERSON", "R1", "P1");
    AddRelation(Db(), "ROLE_INCL_PERSON", "R2", "P1");
    AddRelation(Db(), "ROLE_INCL_PERSON", "R2", "P2");
    AddRelation(Db(), "ROLE_INCL_PERSON", "R3", "P2");

    Login("ANNA");
    EXPECT_FALSE(auth->IsSystemAdmin());
    EXPECT_FALSE(auth->AuthForTopologyWrite());
    Login("BORIS");
    EXPECT_TRUE(auth->IsSystemAdmin());
    EXPECT_TRUE(auth->AuthForTopologyWrite());
    EXPECT_TRUE(auth->AuthForProcessModeling());
    EXPECT_TRUE(auth->AuthForStaffWrite());
}

TEST_P(Authorization, AFailedSetUserLeavesTheObjectAsItWas) {
    AddPerson(Db(), {.id = "P1", .userId = "ANNA", .systemGroup = "G1", .password = "a", .topology = 1});
    AddPerson(Db(), {.id = "P2", .userId = "BORIS", .systemGroup = "G2", .password = "b", .staff = 1});
    Login("ANNA");

    auto expectUnchanged = [&] {
        EXPECT_EQ(auth->UserID(), DvnString("ANNA"));
        EXPECT_EQ(auth->SystemGroup(), DvnString("SYS_GRP"));
        EXPECT_EQ(auth->DbUser(), DvnString("postgres"));
        EXPECT_EQ(auth->DbPassword(), DvnString("pw"));
        EXPECT_TRUE(auth->AuthForTopologyWrite());
        EXPECT_FALSE(auth->AuthForStaffWrite());
    };
    DvnMessageTarget target;
    // Unknown user; a user of another group; an unknown group: no row, no message.
    auth->SetUser(target, DvnString("SYS_GRP"), DvnString("NOBODY"), DvnString("postgres"), DvnString("x"), ds);
    auth->SetUser(target, DvnString("SYS_GRP"), DvnString("BORIS"), DvnString("postgres"), DvnString("x"), ds);
    auth->SetUser(target, DvnString("NO_SUCH"), DvnString("BORIS"), DvnString("postgres"), DvnString("x"), ds);
    EXPECT_TRUE(target.Messages().empty());
    expectUnchanged();

    // A data source that cannot be opened: 51366 with its name.
    const DvnString missing("no_such_data_source");
    auth->SetUser(target, DvnString("OTHER_GRP"), DvnString("BORIS"), DvnString("postgres"), DvnString("x"), missing);
    ASSERT_EQ(target.Messages().size(), 1u);
    EXPECT_EQ(target.Messages()[0].number, 51366);
    EXPECT_EQ(target.Messages()[0].argument, missing);
    expectUnchanged();

    // The person is found but a later read fails: 51368, and nothing of the
    // half-read rights is taken over.
    target.Clear();
    ExecAll(Db(), {"DROP TABLE DVBT.ROLE_INCL_PERSON"});
    auth->SetUser(target, DvnString("OTHER_GRP"), DvnString("BORIS"), DvnString("postgres"), DvnString("x"), ds);
    ASSERT_EQ(target.Messages().size(), 1u);
    EXPECT_EQ(target.Messages()[0].number, 51368);
    expectUnchanged();
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(Authorization);
