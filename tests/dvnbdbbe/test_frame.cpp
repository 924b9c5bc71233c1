// What every store shares: the life of a row (insert, update in place with
// the marks of the source option, overwrite off, deletion as a tombstone or
// for good, held rows, database failures), and the default system names.
// The rights of the sections: tests/dvnbdbif/test_import.cpp.
#include <gtest/gtest.h>

#include "backendrun.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

struct Store {
    const char* type;
    const char* table;
    const char* key;  // key column
    int (DvnConvCoreDbBe::*save)(CDatabase&, bool);
    int passes;  // a held row is refused, and a failure reported, in each
    long inserted, updated, removed, kept, held;
    const char* missing;  // a deleted name without a row: 51273 with this before it
};

const Store kStores[] = {
    {"Category", "CATEGORY", "CATID", &DvnConvCoreDbBe::SaveCategories, 1, 51019, 51051, 51219, 51083, 51146,
     "DELETE PROCESS_CATEGORY "},
    {"DataStructure", "DATA_STRUCTURE", "DSID", &DvnConvCoreDbBe::SaveDataStructures, 2, 51021, 51053, 51221, 51085,
     51148, "DELETE STRUCTURE "},
};

class Frame : public StoreTest {};

TEST_P(Frame, RowsAreInsertedUpdatedInPlaceAndDeletedUnderTheOptions) {
    for (const Store& s : kStores) {
        SCOPED_TRACE(s.type);
        const std::string table = s.table;
        auto save = [&](BackEndRun& run) { return (run.be.*s.save)(Db(), true); };
        auto msg = [](long number, const std::string& name) { return std::to_string(number) + "|" + name; };
        // A row of this run's kind (5) stays 5, a clean (0) or changed (3)
        // one becomes 3, in place; a new row gets 5; a row a user holds is refused.
        Exec("INSERT INTO DVBT." + table + " (" + s.key + ", NAME, CHECKED_OUT, CHECKED_OUT_BY) VALUES ('K1', " +
             "'Sales', 5, NULL), ('K2', 'Billing', 0, NULL), ('K3', 'Audit', 3, NULL), ('K4', 'Held', 0, 'ADMIN')");
        {
            BackEndRun run(/*sourceOption=*/false);
            for (const char* name : {"Sales", "Billing", "Audit", "Held", "New"}) run.Add(s.type, name);
            EXPECT_EQ(save(run), 4);
            Lines expected = {msg(s.updated, "Audit"), msg(s.updated, "Billing"), msg(s.held, "Held|ADMIN"),
                              msg(s.inserted, "New"), msg(s.updated, "Sales")};
            if (s.passes == 2) expected.push_back(msg(s.held, "Held|ADMIN"));
            EXPECT_EQ(run.Messages(), expected);
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|3", "Billing|3", "Held|0", "New|5", "Sales|5"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT " + std::string(s.key) + " FROM DVBT." + table + " WHERE NAME = 'Sales'"),
                  "K1");

        // A clean run writes 0 and deletes for good; a missing row is no error.
        {
            BackEndRun run(true);
            run.Add(s.type, "Sales");
            run.Delete(s.type, "Billing");
            run.Delete(s.type, "Nowhere");
            EXPECT_EQ(save(run), 0);
            EXPECT_EQ(run.Messages(),
                      (Lines{msg(s.removed, "Billing"), "51273|" + (s.missing + std::string("Nowhere")),
                             msg(s.updated, "Sales")}));
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|3", "Held|0", "New|5", "Sales|0"}));

        // Overwrite off leaves rows alone but still deletes, here as a tombstone.
        {
            BackEndRun run(false);
            run.be.SetOverwriteOption(false);
            run.Add(s.type, "Sales");
            run.Delete(s.type, "Audit");
            run.Add(s.type, "Fresh");
            EXPECT_EQ(save(run), 0);
            EXPECT_EQ(run.Messages(), (Lines{msg(s.updated, "Audit"), msg(s.inserted, "Fresh"), msg(s.kept, "Sales")}));
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|4", "Fresh|5", "Held|0", "New|5", "Sales|0"}));

        // A database failure is reported per object and the loop goes on.
        Exec("DROP TABLE DVBT." + table);
        BackEndRun run(true);
        run.Add(s.type, "A");
        run.Add(s.type, "B");
        EXPECT_EQ(save(run), 8);
        EXPECT_EQ(run.handler.Count(51368), 2u * s.passes);
        EXPECT_FALSE(run.handler.Entries()[0].args[0].IsEmpty());  // the driver's text
    }
}

TEST(FrameDefaults, SystemNamesComeFromTheProfileOrTheirFallbacksOnce) {
    {
        ProfileFile profile("current = Work\n[Work]\nSystem = PRODSYS\nSystemGroup = PRODGRP\n");
        DvnConvCoreDbBe be;
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");
        EXPECT_EQ(be.DefaultSysGrp().str(), "PRODGRP");
        ProfileFile other("current = Work\n[Work]\nSystem = OTHER\n");
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");  // kept from the first call
    }
    ProfileFile none("current = Work\n[Work]\n");
    DvnConvCoreDbBe be;
    EXPECT_EQ(be.DefaultSystem().str(), "DVNSYS");
    EXPECT_EQ(be.DefaultSysGrp().str(), "SYS_GRP");
}

DVN_INSTANTIATE_BOTH_BACKENDS(Frame);

}  // namespace
