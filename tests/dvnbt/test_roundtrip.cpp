// A whole model through dvnbt on both databases: a team with its topology,
// programs, the four kinds of list and a tool set, imported, exported,
// imported into fresh repositories of either database and exported again.
// The exports after the first are the first, byte for byte.
#include <gtest/gtest.h>

#include <filesystem>

#include "repositorydb.h"
#include "testenv.h"

namespace {

const char* const kModel = R"(
Domain "domain" { Description = "The shop"; OperationDefault { MessageRetryLimit = 7; } }
SystemGroup "SYS_GRP" { GroupIsInDomain -> "domain"; Description = "Main"; }
System "DVNSYS" { SystemIsInSystemGroup -> "SYS_GRP"; }
System "EAST" { SystemIsInSystemGroup -> "SYS_GRP"; SystemIdentifier = 42; Description = "East wing"; }

Level "1" { Name = "Clerk"; }
Level "5" { Name = "Lead"; Description = "Leads a team"; }

Category "Sales" { Description = "Customer orders"; }
Category "Stock";
Category "Tools";

Person "admin" {
  FirstName = "Ada"; LastName = "Admin"; Password = "s3cret"; Level = 5;
  AuthorizedForStaff = true; AuthorizedForProcessModeling = true; AuthorizedForTopology = true;
  AuthorizedForWorklistsOfAll = true; AuthorizedForAllCategories = 1;
  PersonHasRole -> "System administrator";
  PersonIsInOrganization -> "Office";
}
Person "anna" {
  FirstName = "Anna"; MiddleName = "B."; LastName = "Modeler"; Phone = "123"; Password = "anna-pw"; Level = 1;
  Description = "Models";
  AuthorizedForProcessModeling = true;
  AuthorizedForWorklists [ "clerk" "j\xC3\xBCrgen" "Zoe" ]
  HasSubstitute -> "clerk";
  PersonIsAuthorizedFor -> "Stock";
  PersonIsAuthorizedFor -> "Sales";
  PersonHasRole -> "Modelers";
  PersonHasRole -> "Readers";
  PersonHasRole -> "Testers";
  PersonHasRole -> "Chef d'\xC3\xA9quipe";
  PersonIsInOrganization -> "Back office";
  PersonIsInSystem -> "EAST";
}
Person "clerk" { Password = "clerk-pw"; PersonHasRole -> "Modelers"; PersonIsInOrganization -> "Office"; }
Person "Zoe" { PersonHasRole -> "Modelers"; PersonHasRole -> "Readers"; PersonIsInOrganization -> "Office";
  PersonIsAuthorizedFor -> "Sales"; PersonIsAuthorizedFor -> "Tools"; AuthorizedForWorklists [ "clerk" "Zoe" "anna" ] }
Person "j\xC3\xBCrgen" { PersonHasRole -> "Readers"; AuthorizedForAllCategories = 2; IsAbsent = true;
  PersonIsInOrganization -> "O'Brien & Co"; }

Organization "Office" { Description = "The whole team"; OrganizationHasManager -> "admin"; }
Organization "Back office" { OrganizationHasManager -> "anna"; OrganizationHasParent -> "Office"; }
Organization "O'Brien & Co" { Description = "Caf\xC3\xA9 \"quoted\""; OrganizationHasManager -> "Zoe";
  OrganizationHasParent -> "Back office"; }

Role "System administrator" { Description = "Holds every right"; }
Role "Modelers" { RoleHasCoordinator -> "anna"; }
Role "Readers" { Documentation = "Line\\one\nLine two"; }
Role "Chef d'\xC3\xA9quipe" { RoleHasCoordinator -> "j\xC3\xBCrgen"; }
Role "Testers" { Description = "Stored first"; }

DataStructure "Order" { Members [ DataStructureMember "Amount" { Name = "Amount"; Type = 3; } ] }

Program "Calc" {
  Description = "Computes"; Documentation = "Two lines\nof it"; Icon = "CALC";
  Unattended = true; ExecutionMode = 1; ExecutionUser = 1; Trusted = false; StructuresFromActivity = true;
  InputContainerAccess = true; OutputContainerAccess = false;
  ProgramHasInputStr -> "Order";
  WINNT { Type = 1; PathAndFilename = "calc.exe"; Parameter = "-v"; WorkingDirectory = "C:\\tmp";
          InheritEnvironment = true; Style = 2; Foreground = true; }
  WIN95 { Type = 4; External { Service = "w"; ExecutableType = "x"; Mapping = true; MappingType = "m";
          ForwardMapping = "f"; BackwardMappingParms = "b"; LocalUser = false; Codepage = 437; Duration { Type = 2; Hours = 1; Minutes = 2; } } }
  NK2 { Type = 1; PathAndFilename = "n"; Autoclose = false; Style = 3; }
  KRX { Type = 2; PathAndFilename = "/bin/calc"; XTerm = true; Environment = "A=1"; }
  HPUX { Type = 1; PathAndFilename = "/opt/calc"; XTerm = false; }
  Solaris { PathAndFilename = "/usr/calc"; }
  TR880 { External { Service = "t"; SecurityChecking = false; Duration { Type = 1; } } }
}
Program "Don't" { WINNT { Type = 4; PathAndFilename = "lost"; External { Service = "s"; Duration { Type = 2; } } } }
Program "Mail" { ExecutionUser = 0; WINNT { Type = 2; PathAndFilename = "mail.exe"; } ProgramHasOutputStr -> "Order"; }

Worklist "Open" { Description = "Mine"; ListCommon { Type = 1; Owner = "anna"; Where = "STATE = 'READY'";
  OrderBy = "PRIORITY"; Threshold = 0; Beep = true; } }
Worklist "Plain";
ActivitiesList "Late" { ListCommon { Type = 2; Where = "X > 1"; Threshold = 5; } }
ProcessInstancesList "Running" { ListCommon { Type = 1; Owner = "clerk"; OrderBy = "NAME"; } }
TemplatesList "All" { Description = "Every template"; }
Worklist "J\xC3\xBCrgen's" { ListCommon { Type = 1; Owner = "j\xC3\xBCrgen"; } }

ToolSet "Editor" {
  Description = "Icons"; DefaultProcessActivityIcon = "proc"; DefaultProgramActivityIcon = "prog";
  ProcessActivityIcons [ "b" "a" ] BlockActivityIcons [ "blk" ] BundleActivityIcons [ "bun" ]
  InfoActivityIcons [ "i" ] ProgramActivityIcons [ "p2" "P1" "\xC3\xA9" "_x" ]
}
ToolSet "Bare";
)";

class DvnbtRoundTrip : public RepositoryTest {
protected:
    void TearDown() override {
        std::error_code ec;
        if (!m_dir.empty()) std::filesystem::remove_all(m_dir, ec);
        RepositoryTest::TearDown();
    }
    // A fresh SQLite repository of its own (dvnbt init); its file.
    std::string FreshFile() {
        if (m_dir.empty()) {
            char pattern[] = "/tmp/dvnroundtrip-XXXXXX";
            m_dir = mkdtemp(pattern);
        }
        const std::string file = m_dir + "/repo" + std::to_string(++m_count) + ".db";
        EXPECT_EQ(RunDvnbt({"--db", file, "init"}).status, 0);
        return file;
    }
    // The text imported as the initial load of the repository (no --db:
    // this test's database), then exported whole by its administrator.
    CliResult Trip(const std::string& text, const std::string& db = "", const std::string& before = "") {
        auto args = [&](std::vector<std::string> rest) {
            if (db.empty()) return DvnbtArgs(rest);
            rest.insert(rest.begin(), {"--db", db});
            return rest;
        };
        if (!before.empty()) {
            EXPECT_EQ(RunDvnbt(args({"import", "--initial-load", files.Write(before)})).status, 0);
        }
        CliResult load = RunDvnbt(args({"import", "--initial-load", files.Write(text)}));
        EXPECT_EQ(load.status, 0) << load.err;
        CliResult out = RunDvnbt(args({"--user", "admin", "export"}), {"DVNBT_PASSWORD=s3cret"});
        EXPECT_EQ(out.status, 0) << out.err;
        return out;
    }
    TrxFiles files;
    std::string m_dir;
    int m_count = 0;
};

TEST_P(DvnbtRoundTrip, TeamProgramsListsAndToolSetsGoRoundUnchanged) {
    // SQLite first, then this database (PostgreSQL in its run), then SQLite
    // again: each export is the first. A role and a category that an earlier
    // import stored come first in the table, not in the alphabet; names in
    // both cases fold to user ids in another order than the file's.
    const CliResult first = Trip(kModel, FreshFile(), "Role \"Testers\";\nCategory \"Tools\";\n");
    const CliResult second = Trip(first.out);
    EXPECT_EQ(second.out, first.out);
    const CliResult third = Trip(second.out, FreshFile());
    EXPECT_EQ(third.out, first.out);

    // Every section holds what the file gave.
    for (const char* kind : {"Level: 2\n", "Person: 5\n", "Role: 5\n", "Organization: 3\n", "Program: 3\n", "Worklist: 3\n", "ActivitiesList: 1\n", "ProcessInstancesList: 1\n",
                             "TemplatesList: 1\n", "ToolSet: 2\n", "Domain: 1\n", "SystemGroup: 1\n", "System: 2\n"})
        EXPECT_NE(first.err.find(kind), std::string::npos) << kind << first.err;
    // Passwords travel in their stored form: the administrator logged in
    // with the password of the file at every step.
    EXPECT_EQ(first.out.find("s3cret"), std::string::npos);
    EXPECT_NE(first.out.find("Password = \"pbkdf2-sha256$"), std::string::npos) << first.out;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PERSON WHERE PASSWORD LIKE 'pbkdf2-sha256$%'"), "5");
}

TEST_P(DvnbtRoundTrip, AProgramThatOnlyTheRepositoryHoldsIsReadForAnImport) {
    ASSERT_EQ(RunDvnbt(DvnbtArgs({"import", "--initial-load",
                                  files.Write("Program \"Calc\" { WINNT { Type = 1; PathAndFilename = \"c.exe\"; } }\n")}))
                  .status,
              0);
    // The profile names a data source that does not exist: the program is
    // read from the database of the command line, and left as it is.
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = no_such_source\n");
    CliResult r = RunDvnbt(DvnbtArgs({"import", "--initial-load",
                                      files.Write("Process \"Order\" { Diagram { Activities [ Activity \"Run\" {\n"
                                                  "  Implementation { Type = 1; AsProgram = ProgramImplementation {\n"
                                                  "    ReferencesProgram -> \"Calc\"; } } } ] } }\n")}));
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err.find("52009"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("Program Calc"), std::string::npos) << r.err;
    EXPECT_EQ(QueryRows(Db(), "SELECT p.NAME, w.PATH_AND_FILE_NAME FROM DVBT.PROGRAM_ACTIVITY a JOIN DVBT.PROGRAM p ON "
                              "p.PROGRAM_ID = a.PROGRAM_ID JOIN DVBT.WINNT_EXTENT w ON w.PROGRAM_ID = p.PROGRAM_ID"),
              std::vector<std::string>{"Calc|c.exe"});
}

// The process corpus of tests/data/processes, imported file by file into a
// fresh SQLite repository (the definitions as its initial load, then the
// processes by the administrator they define), exported, imported into a
// fresh repository of this database and exported again: the same text.
TEST_P(DvnbtRoundTrip, TheProcessCorpusGoesRoundUnchanged) {
    const std::string folder = std::string(DVN_SOURCE_DIR) + "/tests/data/processes/";
    const std::vector<std::string> admin = {"DVNBT_USER=ADMIN", "DVNBT_PASSWORD=admin-pw"};
    const std::string file = FreshFile();
    CliResult r = RunDvnbt({"--db", file, "import", "--initial-load", folder + "definitions.trx"});
    ASSERT_EQ(r.status, 0) << r.err;
    for (const char* name : {"diagram.trx", "staff.trx", "differences.trx"}) {
        // 3: each names what another file defines (52009).
        r = RunDvnbt({"--db", file, "import", folder + name}, admin);
        EXPECT_EQ(r.status, 3) << name << r.err;
    }
    const CliResult first = RunDvnbt({"--db", file, "export"}, admin);
    ASSERT_EQ(first.status, 0) << first.err;
    for (const char* kind : {"Process: 4\n", "Server: 1\n", "System: 2\n", "Person: 3\n", "DataStructure: 3\n", "Program: 2\n"})
        EXPECT_NE(first.err.find(kind), std::string::npos) << kind << first.err;
    // The program activities' server is the one the definitions stored, and
    // an annotation stored without a text comes back without one.
    EXPECT_NE(first.out.find("ReferencesPEServer -> \"PES1.DVNSYS.SYS_GRP\";"), std::string::npos);
    EXPECT_NE(first.out.find("TextAnnotation \"Blank\" {\n        Layout {"), std::string::npos) << first.out;
    EXPECT_EQ(first.out.find("Text = \"\""), std::string::npos);

    r = RunDvnbt(DvnbtArgs({"import", "--initial-load", files.Write(first.out)}));
    ASSERT_EQ(r.status, 0) << r.err;
    const CliResult second = RunDvnbt(DvnbtArgs({"export"}), admin);
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.out, first.out);
}

// examples/order.trx, one object of every kind with its topology (node,
// queue manager, server, agent), the same way.
TEST_P(DvnbtRoundTrip, TheExampleOrderModelGoesRoundUnchanged) {
    const std::vector<std::string> admin = {"DVNBT_USER=ADMIN", "DVNBT_PASSWORD=admin-pw"};
    const std::string file = FreshFile();
    // 3: its process activity names a process the file does not define.
    CliResult r = RunDvnbt({"--db", file, "import", "--initial-load", std::string(DVN_SOURCE_DIR) + "/examples/order.trx"});
    EXPECT_EQ(r.status, 3) << r.err;
    const CliResult first = RunDvnbt({"--db", file, "export"}, admin);
    ASSERT_EQ(first.status, 0) << first.err;
    for (const char* kind : {"Node: 1\n", "QueueManager: 1\n", "Server: 1\n", "PEAgent: 1\n", "Process: 1\n"})
        EXPECT_NE(first.err.find(kind), std::string::npos) << kind << first.err;

    r = RunDvnbt(DvnbtArgs({"import", "--initial-load", files.Write(first.out)}));
    EXPECT_EQ(r.status, 3) << r.err;
    const CliResult second = RunDvnbt(DvnbtArgs({"export"}), admin);
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.out, first.out);
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtRoundTrip);

}  // namespace
