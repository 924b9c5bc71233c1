// Opening a connection from the machine profile or a named data source, and
// the table prefix.
#include <gtest/gtest.h>

#include "dvnbdbif.h"
#include "testdb.h"
#include "testenv.h"

namespace {

class Open : public DbTest {};

TEST_P(Open, FromANamedDataSourceAndAlreadyOpenConnections) {
    CDatabase db;
    EXPECT_EQ(db.m_hdbc, nullptr);
    TraceCapture trace;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile(DataSource().c_str(), db, DvnString(), DvnString()), 0);
    EXPECT_NE(db.m_hdbc, nullptr);
    EXPECT_EQ(db.GetQueryTimeout(), 60u);
    EXPECT_EQ(DvnConvCoreDbIF::GetTablePrefix(db), "DVBT.");
    // A named data source is opened without tracing user and password.
    EXPECT_EQ(trace.Text().find("open database with userid"), std::string::npos) << trace.Text();
    EXPECT_EQ(DvnConvCoreDbIF::BuildConnectString("dsn", "", ""), "DSN=dsn;UID=;PWD=");
    EXPECT_EQ(DvnConvCoreDbIF::BuildConnectString("dsn", "u", "p"), "DSN=dsn;UID=u;PWD=p");

    // An open connection is kept as it is, whatever the name or profile says.
    SQLHDBC before = db.m_hdbc;
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile("no_such_dsn", db, "x", "y"), 0);
    ProfileFile missingKey("current = T\n[T]\nSystem = S\n");
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, DvnString(), DvnString()), 0);
    EXPECT_EQ(db.m_hdbc, before);
    db.Close();
}

TEST_P(Open, FromTheMachineProfile) {
    ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = " + DataSource() + "\n");
    CDatabase db;
    TraceCapture trace;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, DvnString(), DvnString()), 0)
        << DvnConvCoreDbIF::LastOpenError();
    EXPECT_NE(db.m_hdbc, nullptr);
    EXPECT_EQ(db.GetQueryTimeout(), 60u);
    // A null user and password leave both values empty.
    EXPECT_NE(trace.Text().find("open database with userid:  and password: \n"), std::string::npos) << trace.Text();
    EXPECT_TRUE(DvnConvCoreDbIF::LastOpenError().IsEmpty());
    // The connection reaches this test's database: a table made here is seen.
    ExecAll(Db(), {"CREATE TABLE DVBT.MARK (X INTEGER)", "INSERT INTO DVBT.MARK VALUES (7)"});
    EXPECT_EQ(QueryValue(db, "SELECT X FROM DVBT.MARK"), "7");
}

TEST_P(Open, FailuresGiveTwelveAndLeaveTheConnectionClosed) {
    TraceCapture trace;
    CDatabase db;
    EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile("dvnbt_no_such_dsn", db, DvnString(), DvnString()), 12);
    EXPECT_EQ(db.m_hdbc, nullptr);
    EXPECT_NE(trace.Text().find("Exception In Open Database: rc =-1Error: "), std::string::npos) << trace.Text();
    EXPECT_NE(trace.Text().find("State: State:IM002"), std::string::npos) << trace.Text();
    EXPECT_NE(DvnConvCoreDbIF::LastOpenError().Find("Data source name not found"), -1);
    {
        // A profile without the key: 12, and no connection is tried.
        ProfileFile profile("current = Work\n[Work]\nSystem = SYS\n");
        size_t mark = trace.Text().size();
        EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, "u", "p"), 12);
        std::string text = trace.Text().substr(mark);
        EXPECT_NE(text.find("BTODBCDriverName variable not set in machine profile"), std::string::npos) << text;
        EXPECT_EQ(text.find("open database with userid"), std::string::npos) << text;
    }
    {
        ProfileFile profile("current = Elsewhere\n[Work]\nBTODBCDataSourceName = " + DataSource() + "\n");
        size_t mark = trace.Text().size();
        EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, DvnString(), DvnString()), 12);
        EXPECT_NE(trace.Text().substr(mark).find("profile error"), std::string::npos);
    }
    {
        ProfileFile profile("");
        setenv("DVN_PROFILE", "/nonexistent/profile", 1);
        size_t mark = trace.Text().size();
        EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, DvnString(), DvnString()), 12);
        EXPECT_NE(trace.Text().substr(mark).find("profile not found:open /nonexistent/profile"), std::string::npos)
            << trace.Text().substr(mark);
    }
    {
        ProfileFile profile("current = Work\n[Work]\nBTODBCDataSourceName = dvnbt_no_such_dsn\n");
        size_t mark = trace.Text().size();
        EXPECT_EQ(DvnConvCoreDbIF::OpenDatabaseFromProfile(db, DvnString(), DvnString()), 12);
        EXPECT_NE(trace.Text().substr(mark).find("db.Open failed:Data source name not found"), std::string::npos);
    }
    EXPECT_EQ(db.m_hdbc, nullptr);
}

DVN_INSTANTIATE_BOTH_BACKENDS(Open);

// The prefix depends on the driver's file type only.
class FakeConnection : public CDatabase {
public:
    explicit FakeConnection(const char* connect) { m_strConnect = connect; }
};

TEST(TablePrefix, OnlyExactlyMSAccessGetsTheFlatPrefix) {
    struct Case {
        const char* connect;
        const char* prefix;
    } cases[] = {
        {"DSN=x;DBQ=c:\\a.mdb;FIL=MS Access;DriverId=25", "DVBT_"},
        {"DSN=x;FIL=MS Access", "DVBT_"},
        {"DSN=x;FIL=MS Access 2000;", "DVBT."},
        {"DSN=x;FIL=ms access;", "DVBT."},
        {"DSN=x;FIL=Excel 8.0;", "DVBT."},
        {"DSN=x;UID=a", "DVBT."},
        {"", "DVBT."},
    };
    for (const Case& c : cases) {
        FakeConnection db(c.connect);
        EXPECT_EQ(DvnConvCoreDbIF::GetTablePrefix(db), c.prefix) << c.connect;
    }
}

TEST(ConnectString, PasswordsAreLeftOutWhenPrinted) {
    EXPECT_EQ(RedactPassword("DSN=a;UID=u;PWD=secret;PORT=1"), "DSN=a;UID=u;PORT=1");
    EXPECT_EQ(RedactPassword("DSN=a;PWD={se;cret};X=1"), "DSN=a;X=1");
    EXPECT_EQ(RedactPassword("DSN=a;pwd="), "DSN=a");
}

}  // namespace
