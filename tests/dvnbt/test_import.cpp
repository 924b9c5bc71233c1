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

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtImport);

}  // namespace
