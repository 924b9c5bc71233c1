// Categories: their texts, and the refusal to delete one a process names.
#include <gtest/gtest.h>

#include "backendrun.h"

namespace {

class CategoryStore : public StoreTest {
protected:
    std::string Text(const char* column, const char* name) {
        return QueryValue(Db(), std::string("SELECT ") + column + " FROM DVBT.CATEGORY WHERE NAME = '" + name + "'");
    }
};

TEST_P(CategoryStore, DescriptionIsCutAt254CharactersDocumentationKeptWholeAndUndefinedTextsAreNull) {
    const std::string d255(255, 'e'), doc(3000, 'x');
    // Two-byte characters: cut by characters, never inside one.
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
    EXPECT_EQ(Text("DESCRIPTION", "Cut"), d255.substr(0, 254));
    EXPECT_EQ(Text("DOCUMENTATION", "Cut"), doc);
    EXPECT_EQ(Text("DESCRIPTION", "Wide"), umlauts.substr(0, 2 * 254));
    EXPECT_EQ(Text("DESCRIPTION", "Bare"), "<null>");
    EXPECT_EQ(Text("DOCUMENTATION", "Bare"), "<null>");

    // An update rewrites the texts: a text gone from the file becomes NULL.
    BackEndRun run(true);
    run.Add("Category", "Cut").AttributeData()("Description") = "short";
    EXPECT_EQ(run.be.SaveCategories(Db(), true), 0);
    EXPECT_EQ(Text("DESCRIPTION", "Cut"), "short");
    EXPECT_EQ(Text("DOCUMENTATION", "Cut"), "<null>");
}

TEST_P(CategoryStore, ACategoryNamedByAProcessStaysWithEitherSourceOption) {
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K1', 'Used', 0)");
    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, CATID, CHECKED_OUT) VALUES ('P1', 'Ordering', 'K1', 0)");
    for (bool source : {true, false}) {
        BackEndRun run(source);
        run.Delete("Category", "Used");
        EXPECT_EQ(run.be.SaveCategories(Db(), true), 4);
        EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51242|Used|Ordering"}));
    }
    EXPECT_EQ(Marks("CATEGORY"), (std::vector<std::string>{"Used|0"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(CategoryStore);

}  // namespace
