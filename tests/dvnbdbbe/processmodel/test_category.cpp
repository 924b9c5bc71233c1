// Categories: their texts, and the refusal to delete one a process names.
#include "../storetests.h"

namespace {

using CategoryStore = StoreTest;

TEST_P(CategoryStore, TextsAreCutRewrittenOrNullAndACategoryAProcessNamesStays) {
    auto text = [&](const char* column, const char* name) {
        return QueryValue(Db(), std::string("SELECT ") + column + " FROM DVBT.CATEGORY WHERE NAME = '" + name + "'");
    };
    // The description is cut at 254 characters, never inside a two-byte one;
    // the documentation is kept whole; texts not given are NULL.
    const std::string d255(255, 'e'), doc(3000, 'x');
    std::string umlauts;
    for (int i = 0; i < 300; ++i) umlauts += "\xC3\xA4";
    {
        BackEndRun run(true);
        DvnfEntity& cut = run.Add("Category", "Cut");
        cut.AttributeData()("Description") = d255;
        cut.AttributeData()("Documentation") = doc;
        run.Add("Category", "Wide").AttributeData()("Description") = umlauts;
        run.Add("Category", "Bare");
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    }
    EXPECT_EQ(text("DESCRIPTION", "Cut"), d255.substr(0, 254));
    EXPECT_EQ(text("DOCUMENTATION", "Cut"), doc);
    EXPECT_EQ(text("DESCRIPTION", "Wide"), umlauts.substr(0, 2 * 254));
    EXPECT_EQ(text("DESCRIPTION", "Bare") + text("DOCUMENTATION", "Bare"), "<null><null>");
    {
        // An update rewrites the texts: a text gone from the file becomes NULL.
        BackEndRun run(true);
        run.Add("Category", "Cut").AttributeData()("Description") = "short";
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    }
    EXPECT_EQ(text("DESCRIPTION", "Cut") + "|" + text("DOCUMENTATION", "Cut"), "short|<null>");

    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, CATID, CHECKED_OUT) SELECT 'P1', 'Ordering', CATID, 0 FROM "
         "DVBT.CATEGORY WHERE NAME = 'Bare'");
    for (bool source : {true, false}) {
        BackEndRun run(source);
        run.Delete("Category", "Bare");
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51242|Bare|Ordering"}));
    }
    EXPECT_EQ(Marks("CATEGORY"), (Lines{"Bare|0", "Cut|0", "Wide|0"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(CategoryStore);

}  // namespace
