// A whole model through dvnbt on both databases (roundtrip-model.trx: a
// team with its topology, programs, the four kinds of list and a tool set),
// imported, exported, imported into fresh repositories of either database
// and exported again. The exports after the first are the first, byte for
// byte; so are those of the process corpus and of the example.
#include <gtest/gtest.h>

#include "importtest.h"

namespace {

class DvnbtRoundTrip : public DvnbtImportTest {
protected:
    // The text imported as the initial load of the repository (no --db:
    // this test's database), then exported whole by its administrator.
    CliResult Trip(const std::string& text, const std::string& db = "", const std::string& before = "") {
        auto args = [&](std::vector<std::string> rest) {
            if (db.empty()) return DvnbtArgs(rest);
            rest.insert(rest.begin(), {"--db", db});
            return rest;
        };
        EXPECT_TRUE(before.empty() || RunDvnbt(args({"import", "--initial-load", files.Write(before)})).status == 0);
        CliResult load = RunDvnbt(args({"import", "--initial-load", files.Write(text)}));
        EXPECT_EQ(load.status, 0) << load.err;
        CliResult out = RunDvnbt(args({"--user", "admin", "export"}), {"DVNBT_PASSWORD=s3cret"});
        EXPECT_EQ(out.status, 0) << out.err;
        return out;
    }
    CliResult Corpus(const std::vector<std::pair<std::string, int>>& imports, int again);
};

TEST_P(DvnbtRoundTrip, TeamProgramsListsAndToolSetsGoRoundUnchanged) {
    // SQLite first, then this database (PostgreSQL in its run), then SQLite
    // again: each export is the first. A role and a category that an earlier
    // import stored come first in the table, not in the alphabet; names in
    // both cases fold to user ids in another order than the file's.
    const std::string model = ReadData("roundtrip-model.trx");
    ASSERT_NE(model.find("ToolSet \"Bare\""), std::string::npos);
    const CliResult first = Trip(model, FreshFile(), "Role \"Testers\";\nCategory \"Tools\";\n");
    const CliResult second = Trip(first.out);
    EXPECT_EQ(second.out, first.out);
    const CliResult third = Trip(second.out, FreshFile());
    EXPECT_EQ(third.out, first.out);

    // Every section holds what the file gave.
    EXPECT_EQ(Missing(first, {"Level: 2\n", "Person: 5\n", "Role: 5\n", "Organization: 3\n", "Program: 3\n",
                              "Worklist: 3\n", "ActivitiesList: 1\n", "ProcessInstancesList: 1\n", "TemplatesList: 1\n",
                              "ToolSet: 2\n", "Domain: 1\n", "SystemGroup: 1\n", "System: 2\n"}),
              "");
    // Passwords travel in their stored form: the administrator logged in
    // with the password of the file at every step.
    EXPECT_EQ(first.out.find("s3cret"), std::string::npos);
    EXPECT_NE(first.out.find("Password = \"pbkdf2-sha256$"), std::string::npos) << first.out;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PERSON WHERE PASSWORD LIKE 'pbkdf2-sha256$%'"), "5");
}

// The files imported one by one into a fresh SQLite repository (the first
// as its initial load, the others by the administrator it defines, each
// with its exit status), exported, imported into a fresh repository of
// this database (with the status `again`) and exported again: the same
// text. The first export.
CliResult DvnbtRoundTrip::Corpus(const std::vector<std::pair<std::string, int>>& imports, int again) {
    const std::vector<std::string> admin = {"DVNBT_USER=ADMIN", "DVNBT_PASSWORD=admin-pw"};
    const std::string file = FreshFile();
    for (size_t i = 0; i < imports.size(); ++i) {
        std::vector<std::string> args{"--db", file, "import", imports[i].first};
        if (i == 0) args.insert(args.begin() + 3, "--initial-load");
        CliResult r = RunDvnbt(args, i == 0 ? std::vector<std::string>{} : admin);
        EXPECT_EQ(r.status, imports[i].second) << imports[i].first << r.err;
    }
    const CliResult first = RunDvnbt({"--db", file, "export"}, admin);
    EXPECT_EQ(first.status, 0) << first.err;
    CliResult r = RunDvnbt(DvnbtArgs({"import", "--initial-load", files.Write(first.out)}));
    EXPECT_EQ(r.status, again) << r.err;
    const CliResult second = RunDvnbt(DvnbtArgs({"export"}), admin);
    EXPECT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.out, first.out);
    return first;
}

// The process corpus of tests/data/processes: 3 for each file after the
// first, which names what another file defines (52009).
TEST_P(DvnbtRoundTrip, TheProcessCorpusGoesRoundUnchanged) {
    const std::string folder = std::string(DVN_SOURCE_DIR) + "/tests/data/processes/";
    const CliResult first = Corpus({{folder + "definitions.trx", 0}, {folder + "diagram.trx", 3},
                                    {folder + "staff.trx", 3}, {folder + "differences.trx", 3}},
                                   0);
    EXPECT_EQ(Missing(first, {"Process: 4\n", "Server: 1\n", "System: 2\n", "Person: 3\n", "DataStructure: 3\n",
                              "Program: 2\n"}),
              "");
    // The program activities' server is the one the definitions stored, and
    // an annotation stored without a text comes back without one.
    EXPECT_NE(first.out.find("ReferencesPEServer -> \"PES1.DVNSYS.SYS_GRP\";"), std::string::npos);
    EXPECT_NE(first.out.find("TextAnnotation \"Blank\" {\n        Layout {"), std::string::npos) << first.out;
    EXPECT_EQ(first.out.find("Text = \"\""), std::string::npos);
}

// examples/order.trx, one object of every kind with its topology (node,
// queue manager, server, agent) and its lists; 3: its process activity
// names a process the file does not define.
TEST_P(DvnbtRoundTrip, TheExampleOrderModelGoesRoundUnchanged) {
    const CliResult first = Corpus({{std::string(DVN_SOURCE_DIR) + "/examples/order.trx", 3}}, 3);
    EXPECT_EQ(Missing(first, {"Node: 1\n", "QueueManager: 1\n", "Server: 1\n", "PEAgent: 1\n", "Process: 1\n",
                              "Worklist: 1\n", "ToolSet: 1\n"}),
              "");
    // The work list keeps its owner, the tool set its icons.
    EXPECT_NE(first.out.find("Owner = \"CLERK\";"), std::string::npos) << first.out;
    EXPECT_NE(first.out.find("  ProgramActivityIcons [\n    \"dvnbprga\"\n    \"prgbig\"\n  ]\n}"), std::string::npos)
        << first.out;
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtRoundTrip);

}  // namespace
