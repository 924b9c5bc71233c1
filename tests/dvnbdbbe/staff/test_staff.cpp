// Staff: levels, persons, organizations and roles in their two passes, the
// refusals, and the chains that give a person its system, group and level.
#include "../storetests.h"
#include "dvnbauth.h"

namespace {

// A stored password form that costs little to make: it is kept as it comes.
std::string Stored(const char* user, const char* password = "pw") {
    return DvnUser::PasswordEncodeWithRounds(DvnString(user), DvnString(password), 2048).str();
}

class StaffStore : public StoreTest {
protected:
    // The topology and staff a person needs: the default group and system,
    // levels 1 and 5, two categories.
    void Seed() {
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddSystem(Db(), "S1", "DVNSYS", "G1");
        Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, NAME, CHECKED_OUT) VALUES (5, 'Lead', 0)");
        Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, NAME, CHECKED_OUT) VALUES (1, 'Clerk', 0)");
        AddCategory(Db(), "K1", "Sales");
        AddCategory(Db(), "K2", "Billing");
    }
    // A person as a file defines it, with a password in stored form.
    static DvnfEntity& Person(ImportRun& run, const char* name) {
        DvnfEntity& person = run.Add("Person", name);
        person.AttributeData()("Password") = Stored(name);
        return person;
    }
    static void Link(ImportRun& run, DvnfEntity& from, const char* link, const char* type, const char* to) {
        run.data.AddLinkByName(from, DvnfString(link), DvnfString(type), DvnfString(to));
    }
    // The saves of an import, in the order of an import.
    static int SaveStaff(ImportRun& run, CDatabase& db, bool authorized = true) {
        int level = run.be.SaveLevels(db, authorized);
        level = std::max(level, run.be.SavePeople(db, authorized));
        level = std::max(level, run.be.SaveOrgs(db, authorized));
        level = std::max(level, run.be.SaveRoles(db, authorized));
        return std::max(level, run.be.SavePeople2(db, authorized));
    }
    // user|level|system|group|substitute|organization|mark of every person.
    Lines Persons() {
        return QueryRows(Db(),
                         "SELECT p.USERID, p.LEVEL_ID, p.SYSTEM, p.SYSTEM_GROUP, s.USERID, o.NAME, p.CHECKED_OUT "
                         "FROM DVBT.PERSON p LEFT JOIN DVBT.PERSON s ON s.PERSON_ID = p.SUBSTITUTE "
                         "LEFT JOIN DVBT.ORGANIZATION o ON o.ORGANIZATION_ID = p.ORGANIZATION_ID ORDER BY p.USERID");
    }
    // Every relation of the persons, by names: "table|user|target".
    Lines Relations() {
        return QueryRows(
            Db(),
            "SELECT 'role', p.USERID, r.NAME FROM DVBT.ROLE_INCL_PERSON x JOIN DVBT.PERSON p ON p.PERSON_ID = "
            "x.PERSON_ID JOIN DVBT.ROLE r ON r.ROLE_ID = x.ROLE_ID UNION ALL "
            "SELECT 'list', p.USERID, q.USERID FROM DVBT.PERS_AUTH_FOR_PERS x JOIN DVBT.PERSON p ON p.PERSON_ID = "
            "x.PERSON_ID JOIN DVBT.PERSON q ON q.PERSON_ID = x.AUTH_FOR_PERSON UNION ALL "
            "SELECT 'cat', p.USERID, c.NAME FROM DVBT.PERS_HAS_PRC_AUTH x JOIN DVBT.PERSON p ON p.PERSON_ID = "
            "x.PERSON_ID JOIN DVBT.CATEGORY c ON c.CATID = x.CATID UNION ALL "
            "SELECT 'admin', p.USERID, c.NAME FROM DVBT.PERS_SEL_PADM_AUTH x JOIN DVBT.PERSON p ON p.PERSON_ID = "
            "x.PERSON_ID JOIN DVBT.CATEGORY c ON c.CATID = x.CATID ORDER BY 1, 2, 3");
    }
    std::string Count(const std::string& table, const std::string& where = "1 = 1") {
        return QueryValue(Db(), "SELECT COUNT(*) FROM DVBT." + table + " WHERE " + where);
    }
    // Seed and the team, stored by an import.
    void StoredTeam() {
        Seed();
        ImportRun run(true);
        Team(run);
        ASSERT_EQ(SaveStaff(run, Db()), 0) << testing::PrintToString(run.Messages());
    }
    // The team of team.trx, with passwords, and ann's right for Sales when asked.
    static void Team(ImportRun& run, bool withSalesRight = true) {
        Read(run, "team.trx");
        for (const char* name : {"ann", "bob"})
            run.data.GetEntityByName(DvnfString("Person"), DvnfString(name)).AttributeData()("Password") = Stored(name);
        if (withSalesRight)
            Link(run, run.data.GetEntityByName(DvnfString("Person"), DvnfString("ann")), "PersonIsAuthorizedFor",
                 "Category", "Sales");
    }
};

TEST_P(StaffStore, TwoPassesResolveForwardNamesAndOverwriteDecidesOverRowsAndRelations) {
    Seed();
    {
        // Without the right: reported once per kind, the second pass silent, nothing stored.
        ImportRun run(true);
        Team(run);
        run.Add("Level", "3");
        EXPECT_EQ(SaveStaff(run, Db(), false), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51166|Level", "51166|Person", "51166|Organization", "51166|Role"}));
        for (const char* table : {"PERSON", "ORGANIZATION", "ROLE", "ROLE_INCL_PERSON"}) EXPECT_EQ(Count(table), "0");
        EXPECT_EQ(Count("STAFF_LEVEL"), "2");
    }
    {
        ImportRun run(true);
        Team(run);
        EXPECT_EQ(SaveStaff(run, Db()), 0) << testing::PrintToString(run.Messages());
    }
    const Lines persons{"ANN|5|S1|G1|BOB|Sub|0", "BOB|1|S1|G1|<null>|Top|0"};
    const Lines relations{"admin|ANN|Billing", "cat|ANN|Sales",         "list|ANN|BOB",
                          "role|ANN|Clerks",   "role|BOB|System administrator"};
    EXPECT_EQ(Persons(), persons);
    EXPECT_EQ(Relations(), relations);
    // The child came first: its parent is written by the second pass.
    EXPECT_EQ(QueryRows(Db(), "SELECT o.NAME, p.NAME, m.USERID FROM DVBT.ORGANIZATION o LEFT JOIN DVBT.ORGANIZATION p "
                              "ON p.ORGANIZATION_ID = o.PARENT_ORG_ID JOIN DVBT.PERSON m ON m.PERSON_ID = o.MANAGER_ID "
                              "ORDER BY o.NAME"),
              (Lines{"Sub|Top|ANN", "Top|<null>|BOB"}));
    for (const char* table : {"PERSON", "ORGANIZATION", "ROLE"}) EXPECT_EQ(Count(table, "CHECKED_OUT <> 0"), "0");
    EXPECT_EQ(QueryValue(Db(), "SELECT PASSWORD FROM DVBT.PERSON WHERE USERID = 'ANN'"), Stored("ann"));

    // Overwrite off: neither rows nor relations change, whatever the file says.
    {
        ImportRun run(true);
        run.be.SetOverwriteOption(false);
        Team(run, false);
        run.data.GetEntityByName(DvnfString("Person"), DvnfString("ann")).AttributeData()("Level") = 1L;
        EXPECT_EQ(SaveStaff(run, Db()), 0);
        const Lines messages = run.Messages();
        for (const char* kept : {"51070|ann", "51070|bob", "51072|Sub", "51071|Clerks"})
            EXPECT_NE(std::find(messages.begin(), messages.end(), kept), messages.end()) << kept;
    }
    EXPECT_EQ(Persons(), persons);
    EXPECT_EQ(Relations(), relations);

    // Overwrite on, marking changes: the relations are replaced whole (the
    // dropped category goes), a definition without password gets the
    // default back, and the organization keeps only members of this run.
    {
        ImportRun run(false);
        Team(run, false);
        run.data.GetEntityByName(DvnfString("Person"), DvnfString("bob")).AttributeData().Reset("Password");
        EXPECT_EQ(SaveStaff(run, Db()), 0) << testing::PrintToString(run.Messages());
    }
    EXPECT_EQ(Relations(), (Lines{"admin|ANN|Billing", "list|ANN|BOB", "role|ANN|Clerks",
                                  "role|BOB|System administrator"}));
    EXPECT_EQ(Persons(), (Lines{"ANN|5|S1|G1|BOB|Sub|3", "BOB|1|S1|G1|<null>|Top|3"}));
    EXPECT_TRUE(DvnUser::PasswordMatches(
        "BOB", "marmoset", DvnString(QueryValue(Db(), "SELECT PASSWORD FROM DVBT.PERSON WHERE USERID = 'BOB'"))));
}

TEST_P(StaffStore, HeldRowsAndReferencedObjectsAreRefusedWithEitherSourceOption) {
    StoredTeam();
    {
        ImportRun run(true);
        for (const char* name : {"cy", "dee", "eve"}) Person(run, name);
        ASSERT_EQ(SaveStaff(run, Db()), 0);
    }
    auto id = [&](const char* user) {
        return QueryValue(Db(), std::string("SELECT PERSON_ID FROM DVBT.PERSON WHERE USERID = '") + user + "'");
    };
    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, ADMINISTRATOR, ROLE, CHECKED_OUT) VALUES ('P1', 'Ordering', '" +
         id("CY") + "', (SELECT ROLE_ID FROM DVBT.ROLE WHERE NAME = 'Clerks'), 0)");
    Exec("INSERT INTO DVBT.WORK_LIST (LIST_ID, NAME, TYPE, OWNER, CHECKED_OUT) VALUES ('W1', 'Mine', 1, '" +
         id("DEE") + "', 0)");
    Exec("UPDATE DVBT.STAFF_LEVEL SET CHECKED_OUT_BY = 'KIM' WHERE LEVEL_ID = 5");
    for (bool source : {false, true}) {
        SCOPED_TRACE(source);
        ImportRun run(source);
        for (const char* name : {"ann", "bob", "cy", "dee"}) run.Delete("Person", name);
        run.Delete("Role", "Clerks");
        run.Delete("Organization", "Top");
        run.Delete("Level", "1");
        run.Add("Level", "5");
        EXPECT_EQ(SaveStaff(run, Db()), 4);
        // ann manages Sub, bob is the administrator, cy administers a
        // process, dee owns a work list; the role is used by a process;
        // Top has a child that stays; levels are never deleted.
        EXPECT_EQ(run.Messages(),
                  (Lines{"51255|1", "51140|5|KIM", "51239|ann|Sub", "51238|bob", "51240|cy|Ordering",
                         "51921|dee|a work list", "51241|Top", "51270|Clerks"}));
    }
    EXPECT_EQ(Count("PERSON"), "5");
    EXPECT_EQ(Count("PERSON", "CHECKED_OUT <> 0"), "0");
    EXPECT_EQ(Count("ROLE", "CHECKED_OUT <> 0"), "0");
    EXPECT_EQ(Count("STAFF_LEVEL"), "2");

    // A person nothing names goes with its relation rows; a tombstone keeps them.
    Exec("INSERT INTO DVBT.PERS_AUTH_FOR_PERS VALUES ('" + id("ANN") + "', '" + id("EVE") + "')");
    Exec("INSERT INTO DVBT.PERS_HAS_PRC_AUTH VALUES ('" + id("EVE") + "', 'K1')");
    Exec("INSERT INTO DVBT.ROLE_INCL_PERSON VALUES ('R9', '" + id("EVE") + "')");
    const std::string eve = id("EVE");
    {
        ImportRun run(false);
        run.Delete("Person", "eve");
        EXPECT_EQ(SaveStaff(run, Db()), 0);
        EXPECT_EQ(QueryValue(Db(), "SELECT CHECKED_OUT FROM DVBT.PERSON WHERE USERID = 'EVE'"), "4");
        EXPECT_EQ(Count("PERS_HAS_PRC_AUTH", "PERSON_ID = '" + eve + "'"), "1");
    }
    ImportRun run(true);
    run.Delete("Person", "eve");
    run.Delete("Person", "nobody");
    EXPECT_EQ(SaveStaff(run, Db()), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51210|eve", "51273|DELETE PERSON nobody"}));
    for (const char* table : {"PERSON", "ROLE_INCL_PERSON", "PERS_HAS_PRC_AUTH"})
        EXPECT_EQ(Count(table, "PERSON_ID = '" + eve + "'"), "0") << table;
    EXPECT_EQ(Count("PERS_AUTH_FOR_PERS", "AUTH_FOR_PERSON = '" + eve + "'"), "0");
}

TEST_P(StaffStore, AnOrganizationGoesWithItsSubtreeOrNotAtAllAndAFreeRoleTakesItsMembers) {
    StoredTeam();
    {
        ImportRun run(true);
        DvnfEntity& leaf = run.Add("Organization", "Leaf");
        Link(run, leaf, "OrganizationHasManager", "Person", "ann");
        Link(run, leaf, "OrganizationHasParent", "Organization", "Sub");
        ASSERT_EQ(SaveStaff(run, Db()), 0);
    }
    // A child that an activity names stays, and so does its whole chain up.
    Exec("INSERT INTO DVBT.ACTIVITY_EXTENT (AID, ORGANIZATION) VALUES ('A1', (SELECT ORGANIZATION_ID FROM "
         "DVBT.ORGANIZATION WHERE NAME = 'Leaf'))");
    {
        ImportRun run(true);
        for (const char* name : {"Top", "Sub", "Leaf"}) run.Delete("Organization", name);
        EXPECT_EQ(run.be.SaveOrgs(Db(), true), 4);
        // Leaf, then Sub tries its child again, then Top finds Sub's child
        // already passed (state 0) and stops.
        EXPECT_EQ(run.Messages(), (Lines{"51272|Leaf", "51272|Leaf", "51241|Sub", "51241|Sub", "51241|Top"}));
    }
    EXPECT_EQ(Count("ORGANIZATION"), "3");

    // Freed, the subtree goes bottom up in one run, each entry once, and
    // the persons lose their organization.
    Exec("DELETE FROM DVBT.ACTIVITY_EXTENT");
    {
        ImportRun run(true);
        for (const char* name : {"Top", "Sub", "Leaf"}) run.Delete("Organization", name);
        run.Delete("Role", "Clerks");
        EXPECT_EQ(run.be.SaveOrgs(Db(), true), 0);
        EXPECT_EQ(run.be.SaveRoles(Db(), true), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51212|Leaf", "51212|Sub", "51212|Top", "51211|Clerks"}));
    }
    EXPECT_EQ(Count("ORGANIZATION"), "0");
    EXPECT_EQ(Count("PERSON", "ORGANIZATION_ID IS NOT NULL"), "0");
    EXPECT_EQ(Relations(), (Lines{"admin|ANN|Billing", "cat|ANN|Sales", "list|ANN|BOB",
                                  "role|BOB|System administrator"}));
    EXPECT_EQ(Count("ROLE_INCL_PERSON"), "1");
}

TEST_P(StaffStore, APersonGetsSystemGroupAndLevelAlongItsChains) {
    ImportRun none(true);
    Person(none, "ann");
    // No system at all: no row.
    Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, CHECKED_OUT) VALUES (2, 0)");
    // The group of the higher key comes first: the default is the lowest key.
    AddSystemGroup(Db(), "G9", "Last");
    AddSystemGroup(Db(), "G7", "Other");
    EXPECT_EQ(none.be.SavePeople(Db(), true), 8);
    EXPECT_EQ(none.Messages(), (Lines{"51106", "51302|ann"}));
    EXPECT_EQ(Count("PERSON"), "0");

    // No group of the default name: the lowest key, a warning. A system
    // named but not stored falls back to the default.
    AddSystem(Db(), "S2", "Zeta", "G7");
    AddSystem(Db(), "S1", "DVNSYS", "G7");
    AddSystem(Db(), "S3", "Third", "G9");
    {
        ImportRun run(true);
        DvnfEntity& ann = Person(run, "ann");
        Link(run, ann, "PersonIsInSystem", "System", "Nowhere");
        ann.AttributeData()("Level") = 9L;
        EXPECT_EQ(run.be.SavePeople(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51103|Nowhere", "51001|ann"}));
    }
    // A named group and system win; an unknown level falls to the lowest.
    {
        ImportRun run(true);
        DvnfEntity& bob = Person(run, "bob");
        Link(run, bob, "PersonIsInSystemGroup", "SystemGroup", "Last");
        Link(run, bob, "PersonIsInSystem", "System", "Zeta");
        EXPECT_EQ(run.be.SavePeople(Db(), true), 0);
    }
    EXPECT_EQ(QueryRows(Db(), "SELECT USERID, SYSTEM, SYSTEM_GROUP, LEVEL_ID, CHECKED_OUT FROM DVBT.PERSON ORDER BY 1"),
              (Lines{"ANN|S1|G7|2|9", "BOB|S2|G9|2|9"}));

    // A server of the person's name in the person's group refuses it; one in
    // another group does not.
    AddServer(Db(), "USER_PE_SERVER", "U1", "CY", "S1");
    AddServer(Db(), "PE_SERVER", "E1", "DEE", "S1");
    AddServer(Db(), "PE_SERVER", "E2", "EVE", "S3");
    ImportRun run(true);
    for (const char* name : {"cy", "dee", "eve"})
        Link(run, Person(run, name), "PersonIsInSystemGroup", "SystemGroup", "Other");
    EXPECT_EQ(run.be.SavePeople(Db(), true), 4);
    EXPECT_EQ(run.Messages(), (Lines{"51187|cy", "51189|dee", "51001|eve"}));

    // Without any level a person is not stored.
    Exec("DELETE FROM DVBT.STAFF_LEVEL");
    ImportRun levelless(true);
    Person(levelless, "fay");
    EXPECT_EQ(levelless.be.SavePeople(Db(), true), 8);
    EXPECT_EQ(levelless.Messages(), (Lines{"51305|fay", "51302|fay"}));
}

TEST_P(StaffStore, TheSystemAdministratorRoleHasOneMemberAndSurvivesAFileThatOnlyNamesIt) {
    StoredTeam();
    // A second administrator is refused; the first, re-imported, stays one.
    {
        ImportRun run(true);
        Link(run, Person(run, "ann"), "PersonHasRole", "Role", "System administrator");
        Link(run, Person(run, "bob"), "PersonHasRole", "Role", "System administrator");
        EXPECT_EQ(SaveStaff(run, Db()), 4);
        const Lines messages = run.Messages();
        EXPECT_NE(std::find(messages.begin(), messages.end(), "51182|System administrator|ANN"), messages.end());
    }
    EXPECT_EQ(Count("ROLE_INCL_PERSON"), "1");
    const std::string admin = "role|BOB|System administrator";
    auto hasAdmin = [&] {
        const Lines relations = Relations();
        return std::find(relations.begin(), relations.end(), admin) != relations.end();
    };
    EXPECT_TRUE(hasAdmin());

    // The role alone keeps its administrator; any other role alone loses
    // its members, which come back from the persons' side.
    ImportRun run(true);
    run.Add("Role", "System administrator");
    DvnfEntity& clerks = run.Add("Role", "Clerks");
    Link(run, clerks, "RoleHasPerson", "Person", "ghost");
    EXPECT_EQ(SaveStaff(run, Db()), 4);
    EXPECT_EQ(run.Messages(), (Lines{"51039|Clerks", "51170|ghost", "51039|System administrator"}));
    EXPECT_TRUE(hasAdmin());
    EXPECT_EQ(Count("ROLE_INCL_PERSON"), "1");
}

TEST_P(StaffStore, ALevelIsFoundByItsNumber) {
    ImportRun run(false);
    run.Add("Level", "03").AttributeData()("Name") = "Senior";
    run.Add("Level", "x").AttributeData()("Description") = std::string(300, 'd');
    EXPECT_EQ(run.be.SaveLevels(Db(), true), 0);
    ImportRun again(false);
    again.Add("Level", "3");
    EXPECT_EQ(again.be.SaveLevels(Db(), true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51005|03", "51005|x"}));
    EXPECT_EQ(again.Messages(), (Lines{"51041|3"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT LEVEL_ID, NAME, CHECKED_OUT, LENGTH(DESCRIPTION) FROM DVBT.STAFF_LEVEL "
                              "ORDER BY LEVEL_ID"),
              (Lines{"0|<null>|5|254", "3|Senior|5|<null>"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(StaffStore);

}  // namespace
