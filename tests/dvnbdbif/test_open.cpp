// Opening a connection from a named data source or the machine profile, and
// the table prefix.
#include <gtest/gtest.h>

#include "dvnbdbif.h"
#include "testdb.h"
#include "testenv.h"

namespace {

class Open : public DbTest {};

TEST_P(Open, ByNameOrFromTheProfileAndAnOpenConnectionIsKept) {
    TraceCapture trace;
    CDatabase named;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile(DataSource().c_str(), named, DvnString(), DvnString()), 0);
    EXPECT_EQ(named.GetQueryTimeout(), 60u);
    // By name, user and password are not traced; from the profile they are,
    // empty when null.
    EXPECT_EQ(trace.Text().find("open database with userid"), std::string::npos) << trace.Text();
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + "\n");
    CDatabase profiled;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(profiled, DvnString(), DvnString()), 0)
        << DvnConvCoreDbIF::LastOpenError();
    EXPECT_NE(trace.Text().find("open database with userid:  and password: \n"), std::string::npos) << trace.Text();
    // It reaches this test's database: a table made here is seen.
    ExecAll(Db(), {"CREATE TABLE DVBT.MARK (X INTEGER)", "INSERT INTO DVBT.MARK VALUES (7)"});
    EXPECT_EQ(QueryValue(profiled, "SELECT X FROM DVBT.MARK"), "7");

    // An open connection is kept as it is, whatever the name or profile says.
    SQLHDBC before = named.m_hdbc;
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile("no_such_dsn", named, "x", "y"), 0);
    ProfileFile missingKey("current = T\n[T]\nSystem = S\n");
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(named, DvnString(), DvnString()), 0);
    EXPECT_EQ(named.m_hdbc, before);
}

TEST_P(Open, FailuresGiveTwelveAndLeaveTheConnectionClosed) {
    TraceCapture trace;
    CDatabase db;
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile("dvnbt_no_such_dsn", db, DvnString(), DvnString()), 12);
    EXPECT_NE(DvnConvCoreDbIF::LastOpenError().Find("Data source name not found"), -1);
    struct Case {
        std::string profile;
        const char* traced;
        bool tried;  // a connection was attempted
    } cases[] = {
        {"current = Work\n[Work]\nSystem = SYS\n", "BTODBCDriverName variable not set in machine profile", false},
        {"current = Work\n[Work]\nBTODBCDataSourceName = dvnbt_no_such_dsn\n",
         "db.Open failed:Data source name not found", true},
    };
    for (const Case& c : cases) {
        ProfileFile profile(c.profile);
        const size_t mark = trace.Text().size();
        EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, "u", "p"), 12);
        const std::string text = trace.Text().substr(mark);
        EXPECT_NE(text.find(c.traced), std::string::npos) << text;
        // The user as it is, the password masked.
        EXPECT_EQ(text.find("open database with userid: u and password: ********\n") != std::string::npos, c.tried)
            << text;
        EXPECT_EQ(text.find("password: p"), std::string::npos) << text;
    }
    EXPECT_EQ(db.m_hdbc, nullptr);
}

TEST_P(Open, TheUserAndPasswordGivenAreUsedAndThePasswordIsNeverShown) {
    // SQLite takes any user and password; PostgreSQL needs a role that must
    // give its password, or a wrong one would not fail.
    PgRole role{"someone", "sqlitepw4711"};
    if (IsPostgres()) {
        role = PgSecretRole();
        if (role.user.empty()) GTEST_SKIP() << "the test server has no role that needs a password (scripts/pg-temp.sh)";
    }
    TraceCapture trace;
    CDatabase db;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile(DataSource().c_str(), db, DvnString(role.user),
                                                    DvnString(role.password)),
              0)
        << DvnConvCoreDbIF::LastOpenError();
    if (IsPostgres()) {
        EXPECT_EQ(QueryValue(db, "SELECT current_user"), role.user);
    }
    // The driver gives the password back in the completed connect string;
    // what may be shown of it masks the password.
    std::string expected = db.GetConnect().str();
    const size_t at = expected.find("PWD=" + role.password);
    ASSERT_NE(at, std::string::npos) << expected;
    expected.replace(at + 4, role.password.size(), "********");
    const std::string shown = RedactPassword(db.GetConnect()).str();
    EXPECT_EQ(shown, expected);
    db.Close();

    if (IsPostgres()) {
        const std::string refusal = "password authentication failed for user \"" + role.user + "\"";
        struct Case {
            DvnString password;
            std::string reason;
        } cases[] = {{DvnString(("wrong" + role.password).c_str()), refusal},
                     {DvnString(), "no password supplied"},
                     // Unbraced, the ';' would end the password and hand the
                     // driver a port of its own.
                     {DvnString(("wrong;Port=1;" + role.password).c_str()), refusal}};
        for (const Case& c : cases) {
            CDatabase refused;
            EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile(DataSource().c_str(), refused, DvnString(role.user),
                                                            c.password),
                      12);
            EXPECT_NE(DvnConvCoreDbIF::LastOpenError().str().find(c.reason), std::string::npos)
                << DvnConvCoreDbIF::LastOpenError();
            EXPECT_EQ(refused.m_hdbc, nullptr);
        }
    }
    EXPECT_EQ(trace.Text().find(role.password), std::string::npos) << trace.Text();
}

DVN_INSTANTIATE_BOTH_BACKENDS(Open);

// The prefix depends on the driver's file type only.
class FakeConnection : public CDatabase {
public:
    explicit FakeConnection(const char* connect) { m_strConnect = connect; }
};

TEST(TablePrefix, OnlyExactlyMSAccessGetsTheFlatPrefix) {
    auto prefix = [](const char* connect) {
        FakeConnection db(connect);
        return DvnConvCoreDbIF::GetTablePrefix(db);
    };
    EXPECT_EQ(prefix("DSN=x;FIL=MS Access;DriverId=25"), "DVBT_");
    EXPECT_EQ(prefix("DSN=x;FIL=MS Access"), "DVBT_");
    EXPECT_EQ(prefix("DSN=x;FIL=MS Access 2000;"), "DVBT.");
    EXPECT_EQ(prefix("DSN=x;UID=a"), "DVBT.");
}

}  // namespace

TEST(ConnectString, AUserOrPasswordThatWouldEndTheAttributeGoesInBraces) {
    struct Case {
        const char* password;
        const char* expected;
    } cases[] = {{"", "DSN=d;UID=u;PWD="},
                 {"plain}x", "DSN=d;UID=u;PWD=plain}x"},
                 {"a;b", "DSN=d;UID=u;PWD={a;b}"},
                 {"a}b;c", "DSN=d;UID=u;PWD={a}}b;c}"},
                 {"{x", "DSN=d;UID=u;PWD={{x}"},
                 {" x", "DSN=d;UID=u;PWD={ x}"}};
    for (const Case& c : cases)
        EXPECT_EQ(DvnConvCoreDbIF::BuildConnectString("d", "u", c.password).str(), c.expected) << c.password;
    EXPECT_EQ(DvnConvCoreDbIF::BuildConnectString("d", "a;b", "p").str(), "DSN=d;UID={a;b};PWD=p");
    // What may be printed of it hides the whole braced value.
    EXPECT_EQ(RedactPassword(DvnConvCoreDbIF::BuildConnectString("d", "u", "a}b;c")).str(), "DSN=d;UID=u;PWD=********");
}
