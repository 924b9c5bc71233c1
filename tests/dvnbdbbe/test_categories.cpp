// The back-end frame on categories and the row of VERSION: inserts, updates
// in place, row marks, deletions and tombstones, refusals, the right, texts.
#include <gtest/gtest.h>

#include "backendrun.h"

namespace {

class CategoryStore : public RepositoryTest {
protected:
    std::string Row(const std::string& name) {
        return QueryValue(Db(), "SELECT CHECKED_OUT FROM DVBT.CATEGORY WHERE NAME = '" + name + "'") + "|" +
               QueryValue(Db(), "SELECT CHECKED_OUT_BY FROM DVBT.CATEGORY WHERE NAME = '" + name + "'");
    }
    std::string Key(const std::string& name) {
        return QueryValue(Db(), "SELECT CATID FROM DVBT.CATEGORY WHERE NAME = '" + name + "'");
    }
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
};

TEST_P(CategoryStore, InsertsAndUpdatesInPlaceWithTheRowMarksOfTheSourceOption) {
    {
        // Marking run: new rows get 5, no holder is stamped (the current user is empty).
        BackEndRun run(/*sourceOption=*/false);
        run.Add("Category", "Sales");
        run.Add("Category", "Billing");
        testing::internal::CaptureStdout();
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
        std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(out, "Category Billing...\n\nCategory Sales...\n\n");
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51019|Billing", "51019|Sales"}));
    }
    EXPECT_EQ(Row("Sales"), "5|<null>");
    const std::string salesKey = Key("Sales");
    EXPECT_EQ(salesKey.size(), 32u);
    EXPECT_NE(salesKey, Key("Billing"));

    // A row of this run's kind (5) stays 5; a clean (0) or changed (3) row becomes 3.
    Exec("UPDATE DVBT.CATEGORY SET CHECKED_OUT = 0 WHERE NAME = 'Billing'");
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K3', 'Audit', 3)");
    {
        BackEndRun run(false);
        run.Add("Category", "Sales");
        run.Add("Category", "Billing");
        run.Add("Category", "Audit");
        run.be.SetCurrentUser(DvnString(""));
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51051|Audit", "51051|Billing", "51051|Sales"}));
    }
    EXPECT_EQ(Row("Sales"), "5|<null>");
    EXPECT_EQ(Row("Billing"), "3|<null>");
    EXPECT_EQ(Row("Audit"), "3|<null>");
    EXPECT_EQ(Key("Sales"), salesKey);  // the key stays

    // A clean run writes 0 whatever the row held.
    {
        BackEndRun run(true);
        run.Add("Category", "Sales");
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    }
    EXPECT_EQ(Row("Sales"), "0|<null>");
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "3");
}

TEST_P(CategoryStore, DescriptionIsCutAt255DocumentationKeptWholeAndUndefinedTextsAreNull) {
    const std::string d254(254, 'd'), d255(255, 'e'), doc(3000, 'x');
    // 200 two-byte characters: cut by characters, never inside one.
    std::string umlauts;
    for (int i = 0; i < 300; ++i) umlauts += "\xC3\xA4";
    {
        BackEndRun run(true);
        run.Add("Category", "Kept").AttributeData()("Description") = d254;
        DvnfEntity& cut = run.Add("Category", "Cut");
        cut.AttributeData()("Description") = d255;
        cut.AttributeData()("Documentation") = doc;
        run.Add("Category", "Wide").AttributeData()("Description") = umlauts;
        run.Add("Category", "Bare");
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    }
    auto text = [&](const char* column, const char* name) {
        return QueryValue(Db(), std::string("SELECT ") + column + " FROM DVBT.CATEGORY WHERE NAME = '" + name + "'");
    };
    EXPECT_EQ(text("DESCRIPTION", "Kept"), d254);
    EXPECT_EQ(text("DESCRIPTION", "Cut"), d255.substr(0, 254));
    EXPECT_EQ(text("DOCUMENTATION", "Cut"), doc);
    EXPECT_EQ(text("DESCRIPTION", "Wide"), umlauts.substr(0, 2 * 254));
    EXPECT_EQ(text("DESCRIPTION", "Bare"), "<null>");
    EXPECT_EQ(text("DOCUMENTATION", "Bare"), "<null>");

    // An update rewrites the texts: a description gone from the file becomes NULL.
    {
        BackEndRun run(true);
        run.Add("Category", "Cut").AttributeData()("Description") = "short";
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    }
    EXPECT_EQ(text("DESCRIPTION", "Cut"), "short");
    EXPECT_EQ(text("DOCUMENTATION", "Cut"), "<null>");
}

TEST_P(CategoryStore, OverwriteOffLeavesRowsAloneButStillDeletes) {
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION) VALUES ('K1', 'Sales', 0, 'old')");
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K2', 'Gone', 0)");
    BackEndRun run(true);
    run.be.SetOverwriteOption(false);
    run.Add("Category", "Sales").AttributeData()("Description") = "new";
    run.Add("Category", "Gone").State(DvnfObject::StateDeleted);
    run.Add("Category", "Fresh");
    EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51019|Fresh", "51219|Gone", "51083|Sales"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT DESCRIPTION FROM DVBT.CATEGORY WHERE NAME = 'Sales'"), "old");
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY WHERE NAME = 'Gone'"), "0");
}

TEST_P(CategoryStore, DeletionIsPhysicalOrATombstoneAndAMissingRowIsNoError) {
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION) VALUES ('K1', 'Old', 0, 'kept')");
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K2', 'Older', 0)");
    {
        BackEndRun run(false);  // marking: the row stays as a tombstone
        run.Add("Category", "Old").State(DvnfObject::StateDeleted);
        run.Add("Category", "Nowhere").State(DvnfObject::StateDeleted);
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
        EXPECT_EQ(run.Messages(),
                  (std::vector<std::string>{"51273|DELETE PROCESS_CATEGORY Nowhere", "51051|Old"}));
    }
    EXPECT_EQ(QueryRows(Db(), "SELECT CATID, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY WHERE NAME = 'Old'"),
              (std::vector<std::string>{"K1|4|kept"}));
    {
        BackEndRun run(true);  // clean: the row goes
        run.Add("Category", "Older").State(DvnfObject::StateDeleted);
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51219|Older"}));
    }
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY WHERE NAME = 'Older'"), "0");
}

TEST_P(CategoryStore, ACategoryNamedByAProcessOrHeldByAUserIsRefused) {
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K1', 'Used', 0)");
    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, CATID, CHECKED_OUT) VALUES ('P1', 'Ordering', 'K1', 0)");
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, CHECKED_OUT_BY) VALUES ('K2', 'Held', 0, 'ADMIN')");
    for (bool source : {true, false}) {
        BackEndRun run(source);
        run.Add("Category", "Used").State(DvnfObject::StateDeleted);
        run.Add("Category", "Held").AttributeData()("Description") = "changed";
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51146|Held|ADMIN", "51242|Used|Ordering"}));
    }
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME"),
              (std::vector<std::string>{"Held|0|<null>", "Used|0|<null>"}));
}

TEST_P(CategoryStore, WithoutTheRightTheFirstObjectToSaveIsRefusedOnce) {
    {
        // Only skeletons (state 0): nothing to save, nothing reported.
        BackEndRun run(true);
        run.Add("Category", "Named").State(DvnfObject::StateNone);
        EXPECT_EQ(run.be.SaveCategories(Db(), false), 0);
        EXPECT_TRUE(run.Messages().empty());
    }
    BackEndRun run(true);
    run.Add("Category", "A");
    run.Add("Category", "B");
    EXPECT_EQ(run.be.SaveCategories(Db(), false), 4);
    EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51165|Category"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
}

TEST_P(CategoryStore, ADatabaseFailureIsReportedAndTheLoopGoesOn) {
    Exec("DROP TABLE DVBT.CATEGORY");
    BackEndRun run(true);
    run.Add("Category", "A");
    run.Add("Category", "B");
    EXPECT_EQ(run.be.SaveCategories(Db(), true), 8);
    ASSERT_EQ(run.handler.Entries().size(), 2u);  // one per object
    EXPECT_EQ(run.handler.Count(51368), 2u);
    EXPECT_FALSE(run.handler.Entries()[0].args[0].IsEmpty());  // the driver's text
}

TEST_P(CategoryStore, TheVersionRowIsWrittenOnceAndKept) {
    BackEndRun run(true);
    run.be.SetTablePrefix(prefix);
    testing::internal::CaptureStdout();
    EXPECT_EQ(run.be.SaveVersion(Db()), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Version, Release, Level\n");
    EXPECT_EQ(QueryRows(Db(), "SELECT VERSION, RELEASE, MOD_LEVEL FROM DVBT.VERSION"),
              (std::vector<std::string>{"3|3|0"}));
    Exec("UPDATE DVBT.VERSION SET MOD_LEVEL = 7");
    EXPECT_EQ(run.be.SaveVersion(Db()), 0);
    EXPECT_EQ(QueryRows(Db(), "SELECT VERSION, RELEASE, MOD_LEVEL FROM DVBT.VERSION"),
              (std::vector<std::string>{"3|3|7"}));
    Exec("DROP TABLE DVBT.VERSION");
    EXPECT_EQ(run.be.SaveVersion(Db()), 8);
    EXPECT_EQ(run.handler.Count(51368), 1u);
}

DVN_INSTANTIATE_BOTH_BACKENDS(CategoryStore);

}  // namespace
