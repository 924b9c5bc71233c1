// dvnbt export on both databases: TRX only on standard output, the file
// written whole or not at all, exit statuses, and the round trip of
// categories and structures through export and import.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "importtest.h"

namespace {

const std::string kCorpus = ReadData("corpus.trx");

using DvnbtExport = DvnbtImportTest;

TEST_P(DvnbtExport, CategoriesAndStructuresGoRoundUnchanged) {
    // From a fresh SQLite file into this database (PostgreSQL in its run):
    // the same text again.
    const std::string fresh = FreshFile();
    ASSERT_EQ(RunDvnbt({"--db", fresh, "import", "--initial-load", files.Write(kCorpus)}).status, 0);
    CliResult first = RunDvnbt({"--db", fresh, "export"});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_NE(first.out.find("DataStructure \"Party\""), std::string::npos) << first.out;
    ASSERT_EQ(Run({"import", "--initial-load", files.Write(first.out)}).status, 0);
    EXPECT_EQ(Run({"export"}).out, first.out);
    // A kind named: its objects only.
    CliResult categories = Run({"export", "Category"});
    EXPECT_NE(categories.out.find("Category \"O'Brien\""), std::string::npos) << categories.out;
    EXPECT_EQ(categories.out.find("DataStructure"), std::string::npos) << categories.out;

    // The list: kind and name per object, in the order of the text.
    CliResult list = Run({"export", "--list", "--quiet", "category"});
    EXPECT_EQ(list.out, "Category\tEmpty\nCategory\tO'Brien\nCategory\tSales\n");
    EXPECT_EQ(list.err, "dvnbt: the repository has no users yet: exporting with all rights\n" +
                            Line(51513, "Empty") + Line(51513, "O'Brien") + Line(51513, "Sales"));

    // --deep with a structure brings what it holds, at any depth.
    CliResult deep = Run({"export", "--deep", "--list", "--quiet", "DataStructure", "Party"});
    EXPECT_EQ(deep.out, "DataStructure\tAddress\nDataStructure\tOrder\nDataStructure\tParty\n") << deep.err;
}

TEST_P(DvnbtExport, TheTextGoesToStandardOutputOrWholeToTheFileAndTheStatusSaysWhatWasLeftOut) {
    ASSERT_EQ(Run({"import", "--initial-load", files.Write("Category \"Sales\" {}\n")}).status, 0);
    CliResult shown = Run({"export"});
    EXPECT_EQ(shown.status, 0);
    // The import made the default node and queue manager.
    EXPECT_EQ(shown.out,
              "Node \"Default Node\" {\n  OperatingSystem = 4;\n}\n\n"
              "QueueManager \"Default Queue Manager\" {\n  Name = \"DVNQM\";\n  System = 1;\n}\n\n"
              "Category \"Sales\" {}\n\nDataStructure \"Default Data Structure\" {}\n");
    // Progress and messages: standard error.
    EXPECT_EQ(Missing(shown, {Line(51513, "Sales"), "Category: 1\nDataStructure: 1\n"}), "");

    // -o: the same text in the file, nothing on standard output; an existing
    // file is replaced.
    const std::string out = files.Folder() + "/out.trx";
    { std::ofstream(out) << "old"; }
    CliResult written = Run({"export", "-o", out, "--quiet"});
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_EQ(written.out, "");
    EXPECT_EQ(ReadFile(out), shown.out);

    // A failed export leaves the file as it was: no such folder, a database
    // that cannot be opened.
    { std::ofstream(out) << "old"; }
    CliResult noFolder = Run({"export", "-o", files.Folder() + "/none/out.trx"});
    EXPECT_EQ(noFolder.status, 1);
    EXPECT_NE(noFolder.err.find("cannot write"), std::string::npos) << noFolder.err;
    CliResult noDb = RunDvnbt({"--db", files.Folder() + "/missing.db", "export", "-o", out});
    EXPECT_EQ(noDb.status, 1);
    EXPECT_EQ(ReadFile(out), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(files.Folder()), {}), 2);  // out.trx and the import

    // What is left out shows in the exit status.
    AddCategory(Db(), "C9", "Gone", 4);
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "NOBODY", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "MODELER", .systemGroup = "G1", .password = "pw", .processModeling = 1});

    // No rights: every section refused, nothing written, warnings.
    CliResult none = Run({"export"}, "nobody");
    EXPECT_EQ(none.status, 3) << none.err;
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(Missing(none, {Line(51533), Line(51535)}), "");

    // An unknown name between two good ones: the good ones, and warnings.
    AddCategory(Db(), "C2", "Empty");
    CliResult named = Run({"export", "--list", "--quiet", "Category", "Sales", "Nope", "Empty"}, "modeler");
    EXPECT_EQ(named.status, 3);
    EXPECT_EQ(named.out, "Category\tEmpty\nCategory\tSales\n");
    EXPECT_EQ(Missing(named, {Line(51549)}), "");

    // A tombstone is found by its name but written only when asked for.
    CliResult tomb = Run({"export", "Category", "Gone"}, "modeler");
    EXPECT_EQ(tomb.status, 0) << tomb.err;
    EXPECT_EQ(tomb.out, "");
    EXPECT_EQ(Run({"export", "--with-deletions", "Category", "Gone"}, "modeler").out, "delete Category \"Gone\";\n");

    // Topology under its right.
    ExecAll(Db(), {"INSERT INTO DVBT.NODE (NODE_ID, NAME, CHECKED_OUT) VALUES ('N1', 'Front', 0)",
                   "INSERT INTO DVBT.NODE (NODE_ID, NAME, CHECKED_OUT) VALUES ('N2', 'Back', 0)",
                   "INSERT INTO DVBT.GATEWAY_SERVER (SERVER_ID, NAME, CHECKED_OUT) VALUES ('G1', 'GW1', 0)",
                   "INSERT INTO DVBT.GATEWAY_SERVER (SERVER_ID, NAME, CHECKED_OUT) VALUES ('G2', 'GW2', 0)"});
    CliResult pending = Run({"export", "--quiet", "Node"}, "modeler");
    EXPECT_EQ(pending.status, 3) << pending.err;  // the modelling user has no topology right
    EXPECT_EQ(Missing(pending, {Line(51535)}), "");
    AddPerson(Db(), {.id = "P3", .userId = "TOPO", .systemGroup = "G1", .password = "pw", .topology = 1});
    CliResult nodes = Run({"export", "--group", "12"}, "topo");
    EXPECT_EQ(nodes.status, 0) << nodes.err;
    EXPECT_EQ(nodes.out, "Node \"Back\" {}\n\nNode \"Default Node\" {\n  OperatingSystem = 4;\n}\n\n"
                         "Node \"Front\" {}\n");
    CliResult gateways = Run({"export", "--quiet", "--list", "--group", "24"}, "topo");
    EXPECT_EQ(gateways.status, 0) << gateways.err;
    EXPECT_EQ(gateways.out, "Server\tGW1\nServer\tGW2\n");
}

TEST_P(DvnbtExport, AnImportIntoTheDatabaseGivenFindsWhatOnlyThatDatabaseHolds) {
    const std::string program = "Program \"Calc\" { WINNT { Type = 1; PathAndFilename = \"c.exe\"; } }\n";
    ASSERT_EQ(Run({"import", "--initial-load", files.Write(kCorpus + program)}).status, 0);
    // The profile names a data source that does not exist: the structure and
    // the program that the file names are read from the database of the
    // command line, and left as they are.
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = no_such_source\n");
    CliResult r = Run({"import", "--initial-load",
                       files.Write("DataStructure \"Invoice\" { Members [ DataStructureMember \"To\" { Name = \"To\"; "
                                   "Type = 4; HasSubStructure -> \"Address\"; } ] }\n"
                                   "Process \"Order\" { Diagram { Activities [ Activity \"Run\" {\n"
                                   "  Implementation { Type = 1; AsProgram = ProgramImplementation {\n"
                                   "    ReferencesProgram -> \"Calc\"; } } } ] } }\n")});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.err.find("52009") == std::string::npos && r.err.find("Program Calc") == std::string::npos) << r.err;
    EXPECT_EQ(QueryRows(Db(), "SELECT t.NAME FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s ON s.DSID = "
                              "m.DSID JOIN DVBT.DATA_STRUCTURE t ON t.DSID = m.TYPE_DS WHERE s.NAME = 'Invoice'"),
              std::vector<std::string>{"Address"});
    EXPECT_EQ(QueryRows(Db(), "SELECT p.NAME, w.PATH_AND_FILE_NAME FROM DVBT.PROGRAM_ACTIVITY a JOIN DVBT.PROGRAM p ON "
                              "p.PROGRAM_ID = a.PROGRAM_ID JOIN DVBT.WINNT_EXTENT w ON w.PROGRAM_ID = p.PROGRAM_ID"),
              std::vector<std::string>{"Calc|c.exe"});
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtExport);

}  // namespace
