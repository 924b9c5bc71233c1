// Load of categories: states from row marks, bare tombstones, the null rule,
// an object met twice, a key that is not there, and the fill of a skeleton
// (a failed read: test_process.cpp).
#include <gtest/gtest.h>

#include <algorithm>

#include "../loadrun.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

class CategoryLoad : public RepositoryTest {
protected:
    static std::string Texts(const DvnfEntity& e) { return Defined(e.AttributeData(), {"Description", "Documentation"}); }
    static Lines Sorted(Lines lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    }
};

TEST_P(CategoryLoad, RowsBecomeCategoriesInTheStateOfTheirMarkOnceEachAndFillSkeletonsByKey) {
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION, DOCUMENTATION) VALUES "
                   "('C1', 'Sales', 0, 'Customer orders', 'Long text'), ('C2', 'Obsolete', 4, 'gone', 'gone too'), "
                   "('C3', 'Pending', 9, NULL, 'only docs'), ('C4', 'Fresh', 5, 'new', NULL), "
                   "('C5', 'Edited', 3, NULL, NULL), ('C''6', 'Quoted', 0, 'q', NULL)"});
    LoadRun run(Db());
    TraceCapture trace;
    run.fe.Categories(DvnString("C1"));
    EXPECT_EQ(run.Messages(), (Lines{"51513|Sales"}));
    run.handler.Clear();
    // One progress message per row, whatever order the database gives them
    // in; the held one is passed over in silence.
    run.fe.Categories(DvnString(""));
    EXPECT_EQ(Sorted(run.Messages()),
              (Lines{"51513|Edited", "51513|Fresh", "51513|Obsolete", "51513|Pending", "51513|Quoted"}));
    EXPECT_NE(trace.Text().find("Number of Categories found: 6"), std::string::npos);
    const struct {
        const char* oid;
        const char* name;
        DvnfObject::State_t state;
        const char* texts;
    } expected[] = {
        {"C1", "Sales", 3, "Description=Customer orders Documentation=Long text"},
        {"C2", "Obsolete", 1, ""},  // a tombstone: no attributes
        {"C3", "Pending", 3, "Documentation=only docs"},  // mark 9 is unchanged; NULL is not defined
        {"C4", "Fresh", 2, "Description=new"},
        {"C5", "Edited", 4, ""},
    };
    for (const auto& e : expected) {
        const DvnfEntity& category = run.Get("Category", e.oid);
        ASSERT_TRUE(category.IsValid()) << e.oid;
        EXPECT_EQ(category.Name().str(), e.name);
        EXPECT_EQ(category.State(), e.state) << e.oid;
        EXPECT_EQ(Texts(category), e.texts) << e.oid;
    }
    // Met again: only the tombstone, whose state says nothing was loaded, is
    // read again, into the same entity.
    run.handler.Clear();
    run.fe.Categories(DvnString(""));
    EXPECT_EQ(run.Messages(), (Lines{"51513|Obsolete"}));
    EXPECT_EQ(run.Count("Category"), 6u);
    EXPECT_EQ(run.Get("Category", "C2").State(), DvnfObject::StateDeleted);

    // A skeleton filled by its key is unchanged whatever the mark; a
    // tombstone or a key without a row leaves it.
    LoadRun fill(Db());
    const struct {
        const char* oid;
        DvnfObject::State_t state;
        const char* texts;
    } cases[] = {
        {"C1", 3, "Description=Customer orders Documentation=Long text"},
        {"C4", 3, "Description=new"},
        {"C'6", 3, "Description=q"},  // the key goes into the statement as a literal
        {"C2", 0, ""},
        {"NONE", 0, ""},
    };
    for (const auto& c : cases) {
        DvnfEntity& skeleton = fill.data.GetEntityByOID(DvnfString("Category"), DvnfString(c.oid), true);
        EXPECT_EQ(fill.fe.CategoryToCore(skeleton), 0) << c.oid;
        EXPECT_EQ(skeleton.State(), c.state) << c.oid;
        EXPECT_EQ(Texts(skeleton), c.texts) << c.oid;
    }
    EXPECT_EQ(fill.Messages(), Lines{});

    // A key that is not there is reported; on an empty table a load of all says nothing.
    fill.fe.Categories(DvnString("NOPE"));
    EXPECT_EQ(fill.Messages(), (Lines{"51549|NOPE"}));
    EXPECT_EQ(fill.Count("Category"), 5u);  // the skeletons only
    ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});
    LoadRun empty(Db());
    empty.fe.Categories(DvnString(""));
    EXPECT_EQ(empty.Messages(), Lines{});
}

DVN_INSTANTIATE_BOTH_BACKENDS(CategoryLoad);

}  // namespace
