// Loads of persons, roles, organizations and levels: every column rule,
// links only to rows that exist, relations in a fixed order, tombstones bare.
#include <gtest/gtest.h>

#include "../loadrun.h"

namespace {

using Lines = std::vector<std::string>;

class StaffLoad : public RepositoryTest {
protected:
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    static Lines Elements(DvnfEntity& entity, const char* set) {
        Lines out;
        DvnfDataSetIterator elements = entity.AttributeData()(set).ElementsOfSet();
        for (auto e = elements.First(); e.IsValid(); e = elements.Next()) out.push_back(e.AsString("").str());
        return out;
    }
};

TEST_P(StaffLoad, APersonComesBackWithItsColumnsAndOnlyTheLinksWhoseRowsExist) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    AddCategory(Db(), "K1", "Sales");
    AddCategory(Db(), "K2", "Billing");
    AddRole(Db(), "R2", "Clerks");
    AddRole(Db(), "R1", "Auditors");
    AddOrganization(Db(), "O1", "Office");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, LEVEL_ID, SYSTEM, SYSTEM_GROUP, SUBSTITUTE, ORGANIZATION_ID, "
         "PASSWORD, PERSONID, FIRSTNAME, LASTNAME, PHONENUMBER, ABSENT_FLAG, STAFF_AUTH, TOPOLOGY_AUTH, "
         "GLOBAL_PRC_AUTH, GLOBAL_PADM_AUTH, GLOBAL_PERS_AUTH, RESET_ABSENT_IND, CHECKED_OUT, DESCRIPTION) VALUES "
         "('P1', 'ANN', 5, 'S1', 'G1', 'P2', 'O1', 'pbkdf2-sha256$2048$ab', 'E-1', 'Ann', 'Lee', '123', 1, 1, 0, "
         "0, 0, 0, 0, 0, 'Lead'), "
         "('P2', 'BOB', 0, 'SX', 'GX', 'PX', 'OX', NULL, NULL, NULL, NULL, NULL, 0, 0, 0, 1, 1, 1, NULL, 5, NULL), "
         "('P3', 'CY', 1, 'S1', 'G1', NULL, NULL, 'x', NULL, 'Cy', NULL, NULL, 0, 1, 1, 0, 0, 0, 0, 4, 'gone'), "
         "('P4', 'DEE', 1, 'S1', 'G1', NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0, 0, 0, 1, 0, NULL, 0, 3, NULL)");
    for (const char* relation : {"ROLE_INCL_PERSON VALUES ('R2', 'P1')", "ROLE_INCL_PERSON VALUES ('R1', 'P1')",
                                 "ROLE_INCL_PERSON VALUES ('RX', 'P1')", "PERS_HAS_PRC_AUTH VALUES ('P1', 'K1')",
                                 "PERS_HAS_PRC_AUTH VALUES ('P1', 'KX')", "PERS_SEL_PADM_AUTH VALUES ('P1', 'K2')",
                                 "PERS_HAS_PRC_AUTH VALUES ('P2', 'K1')", "PERS_AUTH_FOR_PERS VALUES ('P1', 'P4')",
                                 "PERS_AUTH_FOR_PERS VALUES ('P1', 'PX')", "PERS_AUTH_FOR_PERS VALUES ('P1', 'P2')"})
        Exec(std::string("INSERT INTO DVBT.") + relation);

    LoadRun run(Db());
    run.fe.Persons(DvnString(""));
    EXPECT_EQ(run.Count("Person"), 4u);
    DvnfEntity& ann = run.Get("Person", "P1");
    ASSERT_TRUE(ann.IsValid());
    EXPECT_EQ(ann.Name().str(), "ANN");
    EXPECT_EQ(Defined(ann.AttributeData(),
                      {"PersonId", "Password", "FirstName", "MiddleName", "LastName", "Phone", "Level",
                       "AuthorizedForStaff", "AuthorizedForTopology", "AuthorizedForAllCategories",
                       "AuthorizedForWorklistsOfAll", "IsAbsent", "ResetAbsent", "Description"}),
              "PersonId=E-1 Password=pbkdf2-sha256$2048$ab FirstName=Ann LastName=Lee Phone=123 Level=5 "
              "AuthorizedForStaff=true AuthorizedForWorklistsOfAll=false IsAbsent=true ResetAbsent=false "
              "Description=Lead");
    // Relations in the order of their keys; the dangling ones left out.
    EXPECT_EQ(LinkKeys(ann), "PersonIsInSystemGroup>G1 PersonIsInSystem>S1 HasSubstitute>P2 PersonHasRole>R1 "
                             "PersonHasRole>R2 PersonIsInOrganization>O1 PersonIsAuthorizedAsAdminFor>K2 "
                             "PersonIsAuthorizedFor>K1");
    EXPECT_EQ(Elements(ann, "AuthorizedForWorklists"), (Lines{"BOB", "DEE"}));

    // Level 0 is no level; both global rights give 1 and hide the rows;
    // dangling references make no link.
    DvnfEntity& bob = run.Get("Person", "P2");
    EXPECT_EQ(Defined(bob.AttributeData(), {"Level", "Password", "AuthorizedForAllCategories",
                                            "AuthorizedForWorklistsOfAll", "IsAbsent"}),
              "AuthorizedForAllCategories=1 AuthorizedForWorklistsOfAll=true IsAbsent=false");
    EXPECT_EQ(LinkKeys(bob), "");
    EXPECT_EQ(bob.State(), 2);

    // A tombstone is bare; GLOBAL_PERS_AUTH NULL says nothing of work lists.
    DvnfEntity& cy = run.Get("Person", "P3");
    EXPECT_EQ(cy.State(), 1);
    EXPECT_EQ(Defined(cy.AttributeData(), {"FirstName", "Password", "Description", "AuthorizedForStaff"}), "");
    DvnfEntity& dee = run.Get("Person", "P4");
    EXPECT_EQ(Defined(dee.AttributeData(), {"AuthorizedForAllCategories", "AuthorizedForWorklistsOfAll"}),
              "AuthorizedForAllCategories=2");

    LoadRun one(Db());
    one.fe.Persons(DvnString("P9"));
    EXPECT_EQ(one.Messages(), (Lines{"51536|P9"}));
}

TEST_P(StaffLoad, RolesOrganizationsAndLevelsLinkOnlyToRowsThatExist) {
    AddPerson(Db(), {.id = "P1", .userId = "ANN", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "BOB", .systemGroup = "G1", .password = "pw"});
    Exec("INSERT INTO DVBT.ROLE (ROLE_ID, NAME, COORDINATOR_ID, CHECKED_OUT, DESCRIPTION) VALUES "
         "('R1', 'Clerks', 'P1', 0, 'Front desk'), ('R2', 'Orphans', 'PX', 0, NULL)");
    for (const char* member : {"('R1', 'P2')", "('R1', 'PX')", "('R1', 'P1')"})
        Exec(std::string("INSERT INTO DVBT.ROLE_INCL_PERSON VALUES ") + member);
    Exec("INSERT INTO DVBT.ORGANIZATION (ORGANIZATION_ID, NAME, PARENT_ORG_ID, MANAGER_ID, CHECKED_OUT) VALUES "
         "('O1', 'Top', NULL, 'P1', 0), ('O2', 'Sub', 'O1', 'PX', 0), ('O3', 'Lost', 'OX', 'P2', 4)");
    Exec("UPDATE DVBT.PERSON SET ORGANIZATION_ID = 'O2'");

    LoadRun run(Db());
    run.fe.Roles(DvnString(""));
    run.fe.Orgs(DvnString(""));
    DvnfEntity& clerks = run.Get("Role", "R1");
    EXPECT_EQ(LinkKeys(clerks), "RoleHasCoordinator>P1 RoleHasPerson>P1 RoleHasPerson>P2");
    EXPECT_EQ(Defined(clerks.AttributeData(), {"Description", "Documentation"}), "Description=Front desk");
    EXPECT_EQ(LinkKeys(run.Get("Role", "R2")), "");
    EXPECT_EQ(LinkKeys(run.Get("Organization", "O2")),
              "OrganizationHasParent>O1 OrganizationHasPerson>P1 OrganizationHasPerson>P2");
    EXPECT_EQ(LinkKeys(run.Get("Organization", "O1")), "OrganizationHasManager>P1");
    EXPECT_EQ(run.Get("Organization", "O3").State(), 1);

    // Levels: the number is key and name; a key that is no number or has no
    // row is not found, an empty table says nothing.
    LoadRun levels(Db());
    levels.fe.Levels(DvnString(""));
    levels.fe.Levels(DvnString("5"));
    levels.fe.Levels(DvnString("5; DROP TABLE X"));
    EXPECT_EQ(levels.Messages(), (Lines{"51539|5", "51539|5; DROP TABLE X"}));
    Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, NAME, CHECKED_OUT, DESCRIPTION, DOCUMENTATION) VALUES "
         "(5, 'Lead', 0, 'Leads', 'not read')");
    LoadRun five(Db());
    five.fe.Levels(DvnString("5"));
    five.fe.Roles(DvnString("R9"));
    five.fe.Orgs(DvnString("O9"));
    EXPECT_EQ(five.Messages(), (Lines{"51503|5", "51537|R9", "51538|O9"}));
    EXPECT_EQ(Defined(five.Get("Level", "5").AttributeData(), {"Name", "Description", "Documentation"}),
              "Name=Lead Description=Leads");
}

TEST_P(StaffLoad, WhatTheStoreWritesComesBackAsTheFileSaidUpToTheStoredForms) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    AddCategory(Db(), "K1", "Sales");
    {
        ImportRun run(true);
        run.Add("Level", "5").AttributeData()("Name") = "Lead";
        DvnfEntity& ann = run.Add("Person", "ann");
        DvnfEntity& bob = run.Add("Person", "bob");
        DvnfAttributeData a = ann.AttributeData();
        a("Password") = "pw";
        a("Level") = 5L;
        a("AuthorizedForAllCategories") = 1L;
        a("AuthorizedForStaff") = true;
        a("AuthorizedForWorklists").NewSetElement() = "bob";
        bob.AttributeData()("AuthorizedForWorklistsOfAll") = true;
        run.data.AddLinkByName(bob, DvnfString("PersonIsAuthorizedFor"), DvnfString("Category"), DvnfString("Sales"));
        run.data.AddLinkByName(ann, DvnfString("PersonHasRole"), DvnfString("Role"), DvnfString("Clerks"));
        run.Add("Role", "Clerks");
        ASSERT_EQ(run.be.SaveLevels(Db(), true), 0);
        ASSERT_EQ(run.be.SavePeople(Db(), true), 0);
        ASSERT_EQ(run.be.SaveRoles(Db(), true), 0);
        ASSERT_EQ(run.be.SavePeople2(Db(), true), 0) << testing::PrintToString(run.Messages());
    }
    LoadRun run(Db());
    run.fe.Persons(DvnString(""));
    run.fe.Roles(DvnString(""));
    const std::string annId = QueryValue(Db(), "SELECT PERSON_ID FROM DVBT.PERSON WHERE USERID = 'ANN'");
    const std::string bobId = QueryValue(Db(), "SELECT PERSON_ID FROM DVBT.PERSON WHERE USERID = 'BOB'");
    DvnfEntity& ann = run.Get("Person", annId.c_str());
    ASSERT_TRUE(ann.IsValid());
    EXPECT_EQ(ann.Name().str(), "ANN");
    EXPECT_EQ(Defined(ann.AttributeData(), {"Level", "AuthorizedForAllCategories", "AuthorizedForStaff",
                                            "AuthorizedForWorklistsOfAll"}),
              "Level=5 AuthorizedForAllCategories=1 AuthorizedForStaff=true AuthorizedForWorklistsOfAll=false");
    EXPECT_EQ(Elements(ann, "AuthorizedForWorklists"), (Lines{"BOB"}));
    EXPECT_TRUE(DvnUser::PasswordMatches("ann", "pw", ann.AttributeData()("Password").AsString("")));
    const std::string roleId = QueryValue(Db(), "SELECT ROLE_ID FROM DVBT.ROLE");
    EXPECT_EQ(LinkKeys(ann), "PersonIsInSystemGroup>G1 PersonIsInSystem>S1 PersonHasRole>" + roleId);
    DvnfEntity& bob = run.Get("Person", bobId.c_str());
    EXPECT_EQ(LinkKeys(bob), "PersonIsInSystemGroup>G1 PersonIsInSystem>S1 PersonIsAuthorizedFor>K1");
    EXPECT_EQ(Defined(bob.AttributeData(), {"AuthorizedForWorklistsOfAll"}), "AuthorizedForWorklistsOfAll=true");
    // The member comes back from the role's side too.
    EXPECT_EQ(run.Count("Role"), 1u);
    EXPECT_EQ(LinkKeys(run.Get("Role", roleId.c_str())), "RoleHasPerson>" + annId);
}

DVN_INSTANTIATE_BOTH_BACKENDS(StaffLoad);

}  // namespace
