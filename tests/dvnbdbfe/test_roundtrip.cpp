// A file imported and loaded back gives its own canonical text, up to the
// differences that docs/load.md lists.
#include <gtest/gtest.h>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfffdn.h"
#include "loadrun.h"
#include "testenv.h"

namespace {

class RoundTrip : public RepositoryTest {
protected:
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        RepositoryTest::TearDown();
    }
    // Imports the text as an initial load; the level.
    int Import(const std::string& text, bool sourceOption = true) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        const int level = facade.ImportTRX(DvnString(m_files.Write(text)), DvnString(DataSource()), true,
                                           sourceOption, true);
        testing::internal::GetCapturedStdout();
        return level;
    }
    // The text as the writer writes what the parser made of it.
    static std::string Canonical(const std::string& text) {
        DvnfCollectingMessageHandler handler;
        DvnfTRXData data(DvnfTRXTypes::_instance, &handler);
        std::string error;
        EXPECT_EQ(DvnTRXFrontend(data, nullptr).ReadText(text, "expected", 0, nullptr, &error), 0) << error;
        return DvnTRXWriter(data).Write();
    }
    // Categories and structures of the repository, loaded into fresh core data and written.
    std::string Loaded() {
        LoadRun run(Db());
        run.fe.Categories(DvnString(""));
        run.fe.DataStructures(DvnString(""));
        return DvnTRXWriter(run.data).Write();
    }
    TrxFiles m_files;
};

TEST_P(RoundTrip, CategoriesAndStructuresComeBackAsTheyWereWritten) {
    // Forward and backward references between structures, every kind of
    // member, texts with line breaks and beyond ASCII; the default structure
    // stands in every repository.
    const std::string input = R"(
Category "Sales" { Description = "Customer orders"; Documentation = "Line one\nLine two"; }
Category "Empty";
Category "Caf\xC3\xA9" { Description = "\xC3\xA9t\xC3\xA9"; }
DataStructure "Address" {
  Description = "Where";
  Documentation = "Kept whole";
  Members [
    DataStructureMember "Street" { Name = "Street"; Type = 0; Cardinality = 2; Description = "s"; Documentation = "d"; }
    DataStructureMember "Zip" { Name = "Zip"; Type = 1; }
  ]
}
DataStructure "Order" {
  Members [
    DataStructureMember "Customer" { Name = "Customer"; Type = 4; HasSubStructure -> "Party"; }
    DataStructureMember "Amount" { Name = "Amount"; Type = 3; }
    DataStructureMember "Lines" { Name = "Lines"; Type = 2; Cardinality = 20; }
    DataStructureMember "ShipTo" { Name = "ShipTo"; Type = 4; HasSubStructure -> "Address"; }
  ]
}
DataStructure "Party" {
  Members [ DataStructureMember "Orders" { Name = "Orders"; Type = 4; Cardinality = 10; HasSubStructure -> "Order"; } ]
}
DataStructure "Default Data Structure";
)";
    ASSERT_EQ(Import(input), 0);
    EXPECT_EQ(Loaded(), Canonical(input));
}

TEST_P(RoundTrip, WhatTheStoreChangesComesBackChanged) {
    const std::string cut(254, 'x');
    const std::string input = R"(
Category "Blank" { Description = ""; }
Category "Obsolete" { Description = "soon gone"; }
DataStructure "Diff" {
  Description = ")" + cut + R"(yyyy";
  Members [
    DataStructureMember "NoType" { Name = "NoType"; }
    DataStructureMember "Loose" { Name = "Loose"; Type = 4; }
    DataStructureMember "Renamed" { Name = "Other"; Type = 1; }
    DataStructureMember "Big" { Name = "Big"; Type = 7; }
  ]
}
)";
    ASSERT_EQ(Import(input), 0);
    // A deletion kept as a tombstone comes back as a deletion.
    ASSERT_EQ(Import("delete Category \"Obsolete\";", false), 0);
    const std::string expected = R"(
Category "Blank";
delete Category "Obsolete";
DataStructure "Diff" {
  Description = ")" + cut + R"(";
  Members [
    DataStructureMember "NoType" { Name = "NoType"; Type = 0; }
    DataStructureMember "Loose" { Name = "Loose"; Type = 4; HasSubStructure -> "Default Data Structure"; }
    DataStructureMember "Other" { Name = "Other"; Type = 1; }
    DataStructureMember "Big" { Name = "Big"; Type = 0; }
  ]
}
DataStructure "Default Data Structure";
)";
    EXPECT_EQ(Loaded(), Canonical(expected));
}

DVN_INSTANTIATE_BOTH_BACKENDS(RoundTrip);

}  // namespace
