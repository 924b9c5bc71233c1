// A file imported and loaded back gives its own canonical text, up to the
// differences that docs/load.md lists, and two repositories that hold it give
// the same text.
#include <gtest/gtest.h>

#include "loadrun.h"
#include "roundtrip.h"

namespace {

class RoundTrip : public RoundTripTest {
protected:
    // Categories, structures and processes of the repository, loaded as an
    // export loads them into fresh core data, and written.
    std::string Loaded() {
        LoadRun run(Db());
        run.fe.Categories(DvnString(""));
        run.fe.DataStructures(DvnString(""));
        run.fe.Processes(DvnString(""));
        return DvnTRXWriter(run.data).Write();
    }
};

TEST_P(RoundTrip, CategoriesAndStructuresComeBackAsTheyWereWritten) {
    // Forward and backward references between structures, every kind of
    // member, texts with line breaks and beyond ASCII; the default structure
    // stands in every repository.
    const std::string input = TestData("dvnbdbfe/catalog.trx");
    ASSERT_EQ(Import(input), 0);
    EXPECT_EQ(Loaded(), Canonical(input));
}

TEST_P(RoundTrip, WhatTheStoreChangesComesBackChanged) {
    // Texts cut to 254 characters, members without a type or structure
    // completed, a member's name taken from "Name", an unknown type 0.
    ASSERT_EQ(Import(TestData("dvnbdbfe/changes.trx")), 0);
    // A deletion kept as a tombstone comes back as a deletion.
    ASSERT_EQ(Import("delete Category \"Obsolete\";", false), 0);
    EXPECT_EQ(Loaded(), Canonical(TestData("dvnbdbfe/changes.expected.trx")));
}

TEST_P(RoundTrip, AProcessComesBackAsItWasWritten) {
    // What the process corpus (test_corpus.cpp) does not hold, written as
    // the load gives it back: the defaults that the store sets written out.
    const std::string order = TestData("dvnbdbfe/order.trx");
    const std::string canonical = Canonical(order);
    ASSERT_EQ(Import(order), 0);
    const std::string loaded = Loaded();
    EXPECT_EQ(loaded, canonical);
    // Imported again, with fresh keys, the repository gives the same text.
    ASSERT_EQ(Import(order), 0);
    EXPECT_EQ(Loaded(), loaded);
}

DVN_INSTANTIATE_BOTH_BACKENDS(RoundTrip);

}  // namespace
