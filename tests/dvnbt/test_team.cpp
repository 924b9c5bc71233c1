// A team file as the initial load of a fresh repository: its persons become
// the users, each logs in with the password of the file and works under its
// own rights.
#include <gtest/gtest.h>

#include "dvnfcorn.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

class DvnbtTeam : public RepositoryTest {
protected:
    // dvnbt import, logged in as user with password when user is given.
    CliResult Import(std::vector<std::string> args, const std::string& user = "", const std::string& password = "") {
        args.insert(args.begin(), "import");
        if (!user.empty()) args.insert(args.begin(), {"--user", user});
        return RunDvnbt(DvnbtArgs(args), {"DVNBT_PASSWORD=" + password});
    }
    static std::string Line(long number, const char* argument) {
        return DvnfMessageHandler::Format(number, DvnString(argument)).str() + "\n";
    }
    TrxFiles files;
};

TEST_P(DvnbtTeam, ThePersonsOfTheInitialLoadLogInWithTheirPasswordsAndRights) {
    // The topology that the persons name comes first, as it is stored.
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    const std::string team = files.Write(
        "Level \"1\" { Name = \"Clerk\"; }\n"
        "Person \"admin\" { Password = \"s3cret\"; AuthorizedForStaff = true; "
        "PersonHasRole -> \"System administrator\"; }\n"
        "Person \"clerk\" { Password = \"clerk-pw\"; AuthorizedForStaff = true; }\n"
        "Person \"j\\xC3\\xBCrgen\" { Password = \"j-pw\"; AuthorizedForProcessModeling = true; }\n"
        "Role \"System administrator\" {}\n");
    CliResult load = Import({"--initial-load", team});
    ASSERT_EQ(load.status, 0) << load.err;
    // No password is stored in clear.
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PERSON WHERE PASSWORD NOT LIKE 'pbkdf2-sha256$%'"), "0");

    // The administrator may load again; a clerk may not.
    EXPECT_EQ(Import({"--initial-load", team}, "admin", "s3cret").status, 0);
    CliResult clerkLoad = Import({"--initial-load", team}, "clerk", "clerk-pw");
    EXPECT_NE(clerkLoad.status, 0);
    EXPECT_NE(clerkLoad.err.find("CLERK is not one"), std::string::npos) << clerkLoad.err;
    CliResult wrong = Import({team}, "clerk", "s3cret");
    EXPECT_NE(wrong.err.find("login refused"), std::string::npos) << wrong.err;

    // Each works under the rights of the file: the clerk may define staff
    // but no categories, Jürgen (a name beyond ASCII) the other way round.
    const std::string category = files.Write("Category \"Sales\" {}\n");
    CliResult clerk = Import({category}, "clerk", "clerk-pw");
    EXPECT_EQ(clerk.status, 3) << clerk.err;
    EXPECT_NE(clerk.err.find(Line(51165, "Category")), std::string::npos) << clerk.err;
    CliResult juergen = Import({category}, "j\xC3\xBCrgen", "j-pw");
    EXPECT_EQ(juergen.status, 0) << juergen.err;
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "1");
    CliResult level = Import({files.Write("Level \"2\" {}\n")}, "j\xC3\xBC" "rgen", "j-pw");
    EXPECT_NE(level.err.find(Line(51166, "Level")), std::string::npos) << level.err;

    // A re-import without a password resets it to the default.
    EXPECT_EQ(Import({files.Write("Person \"clerk\" { AuthorizedForStaff = true; }\n")}, "clerk", "clerk-pw").status,
              0);
    EXPECT_NE(Import({category}, "clerk", "marmoset").err.find(Line(51165, "Category")), std::string::npos);
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtTeam);

}  // namespace
