// No database password reaches what dvnbt prints or traces, whatever its
// spelling and whichever road brings it: in the data source, from
// --db-user and $DVNBT_DB_PASSWORD, or from the machine profile.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "repositorydb.h"
#include "testenv.h"

namespace {

class DvnbtSecrets : public RepositoryTest {
protected:
    // dvnbt with the trace on at every level into a file of its own; the
    // trace's text in `trace`.
    CliResult RunTraced(const std::vector<std::string>& args, std::vector<std::string> env, std::string& trace) {
        const std::string file = files.Folder() + "/trace" + std::to_string(++runs) + ".txt";
        env.push_back("DVN_TRACE=1");
        env.push_back("DVN_TRACE_FILE=" + file);
        CliResult r = RunDvnbt(args, env);
        std::stringstream text;
        text << std::ifstream(file).rdbuf();
        trace = text.str();
        return r;
    }
    // Runs dvnbt and expects its exit status, and the secret nowhere.
    CliResult Expect(int status, const std::vector<std::string>& args, const std::vector<std::string>& env,
                     const std::string& secret) {
        std::string trace;
        CliResult r = RunTraced(args, env, trace);
        const std::string what = testing::PrintToString(args);
        EXPECT_EQ(r.status, status) << what << "\n" << r.err;
        // A failed open traces the driver's error text.
        if (status != 0) {
            EXPECT_NE(trace.find("Exception In Open Database"), std::string::npos) << what << trace;
        }
        EXPECT_EQ(r.out.find(secret), std::string::npos) << what << "\n" << r.out;
        EXPECT_EQ(r.err.find(secret), std::string::npos) << what << "\n" << r.err;
        EXPECT_EQ(trace.find(secret), std::string::npos) << what << "\n" << trace;
        return r;
    }

    TrxFiles files;
    int runs = 0;
};

TEST_P(DvnbtSecrets, NoPasswordInTheDataSourceIsPrintedWhateverItsSpelling) {
    const std::string trx = files.Write("Category \"Claims\" {}\n");
    int n = 0;
    for (const char* spelling : {"PWD=", "pwd=", "Password=", "PASSWORD="}) {
        const std::string secret = "Zq7s3cret" + std::to_string(++n);
        SCOPED_TRACE(spelling);
        // A data source that opens: the password is not needed by either
        // test server, and neither refuses it.
        const std::string good = DataSource() + ";" + spelling + secret;
        CliResult ping = Expect(0, {"--dsn", good, "ping"}, {}, secret);
        EXPECT_NE(ping.out.find("connect: "), std::string::npos) << ping.out;
        Expect(0, {"--dsn", good, "import", "--initial-load", trx}, {}, secret);

        // One that does not open: the data source is named, its password hidden.
        const std::string bad = std::string("dvnbt_no_such_dsn;") + spelling + secret;
        CliResult refused = Expect(1, {"--dsn", bad, "ping"}, {}, secret);
        EXPECT_NE(refused.err.find("cannot open data source dvnbt_no_such_dsn;" + std::string(spelling) + "********"),
                  std::string::npos)
            << refused.err;
        // An import names it the same way before it logs in.
        CliResult login = Expect(1, {"--dsn", bad, "import", trx}, {}, secret);
        EXPECT_NE(login.err.find("cannot open data source dvnbt_no_such_dsn;" + std::string(spelling) + "********"),
                  std::string::npos)
            << login.err;
    }
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.CATEGORY"), "Claims");
}

TEST_P(DvnbtSecrets, NoPasswordOfTheCommandLineOrTheProfileIsPrinted) {
    const std::string trx = files.Write("Category \"Claims\" {}\n");
    const std::string secret = "Kx9dbs3cret";
    const std::vector<std::string> env{"DVNBT_DB_PASSWORD=" + secret};
    // --db-user with the password from the environment: the user the test
    // server knows, and one it does not know (PostgreSQL refuses it; the
    // SQLite driver has no users).
    Expect(0, {"--dsn", DataSource(), "--db-user", "postgres", "ping"}, env, secret);
    Expect(0, {"--dsn", DataSource(), "--db-user", "postgres", "import", "--initial-load", trx}, env, secret);
    Expect(IsPostgres() ? 1 : 0, {"--dsn", DataSource(), "--db-user", "dvnbt_nobody", "ping"}, env, secret);
    Expect(1, {"--dsn", "dvnbt_no_such_dsn", "--db-user", "postgres", "import", trx}, env, secret);

    // The data source of the machine profile, with a password of its own:
    // the detail trace of the open says that a password was given, masked.
    const std::string profiled = "Pr0fs3cret";
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + ";Password=" + profiled +
                        "\n");
    for (const std::vector<std::string>& args :
         {std::vector<std::string>{"--db-user", "postgres", "ping"},
          std::vector<std::string>{"--db-user", "postgres", "import", "--initial-load", trx}}) {
        std::string trace;
        CliResult r = RunTraced(args, env, trace);
        EXPECT_EQ(r.status, 0) << r.err;
        EXPECT_NE(trace.find("open database with userid: postgres and password: ********\n"), std::string::npos)
            << trace;
        for (const std::string& hidden : {secret, profiled}) {
            EXPECT_EQ(r.out.find(hidden), std::string::npos) << r.out;
            EXPECT_EQ(r.err.find(hidden), std::string::npos) << r.err;
            EXPECT_EQ(trace.find(hidden), std::string::npos) << trace;
        }
    }
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtSecrets);
