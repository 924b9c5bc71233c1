// dvnbt import on both databases: options, standard output, messages on
// standard error, exit statuses.
#include <gtest/gtest.h>

#include "dvnfcorn.h"
#include "repositorydb.h"
#include "staffrows.h"
#include "testenv.h"

namespace {

class DvnbtImport : public RepositoryTest {
protected:
    std::string File(const std::string& text) { return m_files.Write(text); }
    // dvnbt import on this test's database, logged in as user (password "pw") when given.
    CliResult Import(std::vector<std::string> args, const std::string& user = "") {
        std::vector<std::string> all = IsPostgres() ? std::vector<std::string>{"--dsn", DataSource()}
                                                    : std::vector<std::string>{"--db", DbFile()};
        if (!user.empty()) all.insert(all.end(), {"--user", user});
        all.push_back("import");
        all.insert(all.end(), args.begin(), args.end());
        return RunDvnbt(all, {"DVNBT_PASSWORD=pw"});
    }
    std::vector<std::string> Rows() {
        return QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME");
    }
    static std::string Line(long number, const char* a1, const char* a2 = nullptr) {
        return DvnfMessageHandler::Format(number, DvnString(a1), DvnString(a2)).str() + "\n";
    }

private:
    TrxFiles m_files;
};

TEST_P(DvnbtImport, StoresPrintsProgressAndReportsMessagesOnStandardError) {
    std::string file = File("Category \"Sales\" { Description = \"Orders\"; }\n");
    CliResult r = Import({"--initial-load", file});
    EXPECT_EQ(r.status, 0) << r.err;
    // Standard output holds the import's own lines only; the note that no
    // login was needed goes with the messages.
    EXPECT_EQ(r.out,
              "Version, Release, Level\nCategory Sales...\n\n"
              "Finished with Process Model import \nNo errors during import.\n");
    EXPECT_NE(r.err.find("dvnbt: the repository has no users yet: importing as initial load"), std::string::npos);
    EXPECT_NE(r.err.find(Line(51019, "Sales")), std::string::npos) << r.err;
    EXPECT_EQ(Rows(), (std::vector<std::string>{"Sales|0|Orders"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.VERSION"), "1");

    // --no-overwrite: the row stays and the run says so.
    CliResult kept = Import({"--initial-load", "--no-overwrite", File("Category \"Sales\" { Description = \"X\"; }\n")});
    EXPECT_EQ(kept.status, 0) << kept.err;
    EXPECT_NE(kept.err.find(Line(51083, "Sales")), std::string::npos) << kept.err;
    EXPECT_EQ(Rows(), (std::vector<std::string>{"Sales|0|Orders"}));

    // --mark-changes: new rows 5, updated rows 3, deletions as tombstones.
    CliResult marked = Import({"--initial-load", "--mark-changes",
                               File("Category \"New\" {}\nCategory \"Sales\" {}\n")});
    EXPECT_EQ(marked.status, 0) << marked.err;
    EXPECT_EQ(Rows(), (std::vector<std::string>{"New|5|<null>", "Sales|3|<null>"}));
    CliResult gone = Import({"--initial-load", "--mark-changes", File("delete Category \"New\";\n")});
    EXPECT_EQ(gone.status, 0) << gone.err;
    EXPECT_EQ(Rows(), (std::vector<std::string>{"New|4|<null>", "Sales|3|<null>"}));
    // Without it deletions are physical.
    CliResult removed = Import({"--initial-load", File("delete Category \"Sales\";\n")});
    EXPECT_NE(removed.err.find(Line(51219, "Sales")), std::string::npos) << removed.err;
    EXPECT_EQ(Rows(), (std::vector<std::string>{"New|4|<null>"}));
}

TEST_P(DvnbtImport, ExitStatusFollowsTheLevelUnderTheRightsOfTheUser) {
    // A repository without users imports only as an initial load.
    std::string file = File("Category \"A\" {}\n");
    CliResult nobody = Import({file});
    EXPECT_EQ(nobody.status, 1);
    EXPECT_NE(nobody.err.find("no users yet"), std::string::npos) << nobody.err;

    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G1", .password = "pw", .staff = 1});
    AddPerson(Db(), {.id = "P2", .userId = "MODELER", .systemGroup = "G1", .password = "pw", .staff = 1,
                     .processModeling = 1});

    // Without the modelling right the categories are refused: warnings, nothing stored.
    CliResult refused = Import({file}, "clerk");
    EXPECT_EQ(refused.status, 3) << refused.err;
    EXPECT_NE(refused.err.find(Line(51165, "Category")), std::string::npos) << refused.err;
    EXPECT_NE(refused.out.find("Warnings found during import.\n"), std::string::npos);
    EXPECT_TRUE(Rows().empty());

    // Objects of a kind that cannot be stored yet: errors, the rest is stored.
    CliResult partly = Import({File("Role \"Clerk\" {}\nCategory \"A\" {}\n")}, "modeler");
    EXPECT_EQ(partly.status, 4) << partly.err;
    EXPECT_NE(partly.err.find(Line(51900, "Clerk", "Role")), std::string::npos) << partly.err;
    EXPECT_NE(partly.out.find("Errors found during import.\n"), std::string::npos);
    EXPECT_EQ(Rows().size(), 1u);

    // A file that does not parse: failure, nothing stored.
    std::string bad = File("Category \"B\" {\n");
    CliResult failed = Import({bad}, "modeler");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.out, "Could not load TRX" + bad);
    EXPECT_NE(failed.err.find(Line(51301, bad.c_str())), std::string::npos) << failed.err;
    EXPECT_NE(failed.err.find("dvnbt: import of " + bad + " failed"), std::string::npos);
    EXPECT_EQ(Rows().size(), 1u);

    for (auto args : std::vector<std::vector<std::string>>{{}, {"--bogus", bad}, {bad, bad}}) {
        CliResult usage = Import(args);
        EXPECT_EQ(usage.status, 2) << testing::PrintToString(args);
        EXPECT_EQ(usage.err.rfind("dvnbt: ", 0), 0u) << usage.err;
    }
}

TEST_P(DvnbtImport, DataStructuresReferringToEachOtherAreStoredReplacedAndDeleted) {
    auto members = [&] {
        return QueryRows(Db(), "SELECT s.NAME, m.MEMBER, m.SEQUENCE_NO, t.NAME, m.DATA_TYPE, m.ARRAY_SIZE "
                               "FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s ON s.DSID = m.DSID "
                               "LEFT JOIN DVBT.DATA_STRUCTURE t ON t.DSID = m.TYPE_DS ORDER BY s.NAME, m.SEQUENCE_NO");
    };
    auto structures = [&] {
        return QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.DATA_STRUCTURE "
                               "WHERE NAME <> 'Default Data Structure' ORDER BY NAME");
    };
    // Order names Party, stored after it, and Address, stored before it;
    // Odd names a structure that exists nowhere and gets the default one.
    CliResult r = Import({"--initial-load", File(R"(
DataStructure "Order" {
  Description = "An order";
  Members [
    DataStructureMember "Customer" { Name = "Customer"; Type = 4; HasSubStructure -> "Party"; }
    DataStructureMember "ShipTo" { Name = "ShipTo"; Type = 4; HasSubStructure -> "Address"; }
    DataStructureMember "Lines" { Name = "Lines"; Type = 2; Cardinality = 20; }
  ]
}
DataStructure "Party" { Members [ DataStructureMember "Name" { Name = "Name"; } ] }
DataStructure "Address" { Members [ DataStructureMember "Street" { Name = "Street"; Type = 1; } ] }
DataStructure "Odd" { Members [ DataStructureMember "Ghost" { Name = "Ghost"; Type = 4; HasSubStructure -> "Nowhere"; } ] }
)")});
    EXPECT_EQ(r.status, 3) << r.err;  // warnings: a name defined nowhere, the default used
    EXPECT_NE(r.err.find(Line(51102, "Nowhere")), std::string::npos) << r.err;
    EXPECT_NE(r.out.find("Structure Party...\n\nStructure Address second pass ...\n\nStructure member Street...\n\n"),
              std::string::npos)
        << r.out;
    EXPECT_EQ(structures(), (std::vector<std::string>{"Address|0|<null>", "Odd|0|<null>", "Order|0|An order",
                                                      "Party|0|<null>"}));
    EXPECT_EQ(members(), (std::vector<std::string>{
                             "Address|Street|1|<null>|5|<null>", "Odd|Ghost|1|Default Data Structure|7|<null>",
                             "Order|Customer|1|Party|7|<null>", "Order|ShipTo|2|Address|7|<null>",
                             "Order|Lines|3|<null>|6|20", "Party|Name|1|<null>|1|<null>"}));

    // Marking changes: Order's members are written anew in their new order,
    // the dropped one is gone; a structure left out of the file is left alone.
    CliResult again = Import({"--initial-load", "--mark-changes", File(R"(
DataStructure "Order" { Members [
  DataStructureMember "Lines" { Name = "Lines"; Type = 3; }
  DataStructureMember "ShipTo" { Name = "ShipTo"; Type = 4; HasSubStructure -> "Address"; }
] }
DataStructure "Address" { Members [ DataStructureMember "Street" { Name = "Street"; Type = 1; } ] }
)")});
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(members(), (std::vector<std::string>{
                             "Address|Street|1|<null>|5|<null>", "Odd|Ghost|1|Default Data Structure|7|<null>",
                             "Order|Lines|1|<null>|3|<null>", "Order|ShipTo|2|Address|7|<null>",
                             "Party|Name|1|<null>|1|<null>"}));
    EXPECT_EQ(structures(), (std::vector<std::string>{"Address|3|<null>", "Odd|0|<null>", "Order|3|<null>",
                                                      "Party|0|<null>"}));

    // Address is the type of a member of Order: refused alone, deleted
    // together with Order (which comes after it by name).
    CliResult refused = Import({"--initial-load", File("delete DataStructure \"Address\";\n")});
    EXPECT_EQ(refused.status, 3) << refused.err;
    EXPECT_NE(refused.err.find(DvnfMessageHandler::Format(51247, DvnString("Address"), DvnString("Order"),
                                                          DvnString("ShipTo"))
                                   .str()),
              std::string::npos)
        << refused.err;
    CliResult gone =
        Import({"--initial-load", File("delete DataStructure \"Address\";\ndelete DataStructure \"Order\";\n")});
    EXPECT_EQ(gone.status, 0) << gone.err;
    EXPECT_NE(gone.err.find(Line(51221, "Order") + Line(51221, "Address")), std::string::npos) << gone.err;
    EXPECT_EQ(structures(), (std::vector<std::string>{"Odd|0|<null>", "Party|0|<null>"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtImport);

}  // namespace
