// Load of categories: states from row marks, bare tombstones, the null rule,
// an object met twice, a key that is not there, and the fill of a skeleton.
#include <gtest/gtest.h>

#include <algorithm>

#include "../loadrun.h"
#include "odbccall.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

class CategoryLoad : public RepositoryTest {
protected:
    void Rows() {
        ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION, DOCUMENTATION) VALUES "
                       "('C1', 'Sales', 0, 'Customer orders', 'Long text'), "
                       "('C2', 'Obsolete', 4, 'gone', 'gone too'), "
                       "('C3', 'Pending', 9, NULL, 'only docs'), "
                       "('C4', 'Fresh', 5, 'new', NULL), "
                       "('C5', 'Edited', 3, NULL, NULL)"});
    }
    static std::string Texts(const DvnfEntity& e) {
        return Defined(e.AttributeData(), {"Description", "Documentation"});
    }
    static Lines Sorted(Lines lines) {
        std::sort(lines.begin(), lines.end());
        return lines;
    }
};

TEST_P(CategoryLoad, EveryRowBecomesACategoryInTheStateOfItsMarkAndATombstoneStaysBare) {
    Rows();
    LoadRun run(Db());
    TraceCapture trace;
    run.fe.Categories(DvnString(""));
    // One progress message per row, whatever order the database gives them in.
    EXPECT_EQ(Sorted(run.Messages()),
              (Lines{"51513|Edited", "51513|Fresh", "51513|Obsolete", "51513|Pending", "51513|Sales"}));
    EXPECT_NE(trace.Text().find("Number of Categories found: 5"), std::string::npos);

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
}

TEST_P(CategoryLoad, AnObjectMetTwiceIsLoadedOnceAndAKeyThatIsNotThereIsReported) {
    Rows();
    LoadRun run(Db());
    run.fe.Categories(DvnString("C1"));
    EXPECT_EQ(run.Messages(), (Lines{"51513|Sales"}));
    // The held categories are passed over in silence; only the tombstone,
    // whose state says nothing was loaded, is read again, into the same entity.
    run.fe.Categories(DvnString(""));
    run.fe.Categories(DvnString(""));
    EXPECT_EQ(Sorted(run.Messages()), (Lines{"51513|Edited", "51513|Fresh", "51513|Obsolete", "51513|Obsolete",
                                              "51513|Pending", "51513|Sales"}));
    EXPECT_EQ(run.Count("Category"), 5u);
    EXPECT_EQ(Texts(run.Get("Category", "C1")), "Description=Customer orders Documentation=Long text");
    EXPECT_EQ(run.Get("Category", "C2").State(), DvnfObject::StateDeleted);

    LoadRun missing(Db());
    missing.fe.Categories(DvnString("NOPE"));
    EXPECT_EQ(missing.Messages(), (Lines{"51549|NOPE"}));
    EXPECT_EQ(missing.Count("Category"), 0u);
    // On an empty table a load of all says nothing.
    ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});
    LoadRun empty(Db());
    empty.fe.Categories(DvnString(""));
    EXPECT_EQ(empty.Messages(), Lines{});
}

TEST_P(CategoryLoad, ASkeletonIsFilledByItsKeyAndATombstoneOrAMissingRowLeavesIt) {
    Rows();
    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, DESCRIPTION) VALUES ('C''6', 'Quoted', 0, 'q')"});
    LoadRun run(Db());
    const struct {
        const char* oid;
        DvnfObject::State_t state;
        const char* texts;
    } cases[] = {
        {"C1", 3, "Description=Customer orders Documentation=Long text"},
        {"C4", 3, "Description=new"},  // state 3 whatever the mark
        {"C'6", 3, "Description=q"},   // the key goes into the statement as a literal
        {"C2", 0, ""},                 // a tombstone is not read
        {"NONE", 0, ""},
    };
    for (const auto& c : cases) {
        DvnfEntity& skeleton = run.data.GetEntityByOID(DvnfString("Category"), DvnfString(c.oid), true);
        EXPECT_EQ(run.fe.CategoryToCore(skeleton), 0) << c.oid;
        EXPECT_EQ(skeleton.State(), c.state) << c.oid;
        EXPECT_EQ(Texts(skeleton), c.texts) << c.oid;
    }
    EXPECT_EQ(run.Messages(), Lines{});
}

TEST_P(CategoryLoad, AFailedReadOfOneCategoryIsTracedAndGivesEightWhileALoadOfTheKindLetsItGoUp) {
    Rows();
    LoadRun run(Db());
    DvnfEntity& skeleton = run.data.GetEntityByOID(DvnfString("Category"), DvnfString("C1"), true);
    TraceCapture trace;
    DvnOdbcFaults::Reset();
    DvnOdbcFaults::FailCall(1, "08S01");
    EXPECT_EQ(run.fe.CategoryToCore(skeleton), 8);
    EXPECT_TRUE(DvnOdbcFaults::Fired());
    EXPECT_NE(trace.Text().find("Exception In CategoryToCore: rc = -1 Error: Communication link failure"),
              std::string::npos)
        << trace.Text();
    EXPECT_EQ(skeleton.State(), 0);

    DvnOdbcFaults::Reset();
    DvnOdbcFaults::FailCall(1, "08S01");
    bool raised = false;
    try {
        run.fe.Categories(DvnString(""));
    } catch (CDBException* e) {
        raised = true;
        e->Delete();
    }
    EXPECT_TRUE(raised);
    DvnOdbcFaults::Reset();
    EXPECT_EQ(run.Messages(), Lines{});
}

DVN_INSTANTIATE_BOTH_BACKENDS(CategoryLoad);

}  // namespace
