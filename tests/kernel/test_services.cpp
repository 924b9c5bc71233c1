// Trace, machine profile, password encoding, broken preconditions.
#include <gtest/gtest.h>

#include "dvnkernn.h"
#include "testenv.h"

TEST(DvnTrace, OffByDefaultAndFilteredByLevelAndCategoryWhenOn) {
    EXPECT_FALSE(DvnTrace::Enabled(1, 2));
    {
        TraceCapture trace;
        setenv("DVN_TRACE_LEVEL", "1", 1);
        setenv("DVN_TRACE_CATEGORIES", "0x2", 1);
        DvnTrace::ConfigureFromEnvironment();
        DVN_TRACE(1, 2, "error trace " << 42);
        DVN_TRACE(2, 8, "progress must not appear");
        DVN_TRACE(3, 1, "detail must not appear");
        std::string text = trace.Text();
        EXPECT_NE(text.find("error trace 42"), std::string::npos) << text;
        EXPECT_NE(text.find("(n/a)"), std::string::npos);
        EXPECT_EQ(text.find("must not appear"), std::string::npos) << text;
    }
    EXPECT_FALSE(DvnTrace::_On);
}

TEST(DvnProfile, ReadsTheCurrentConfigurationAndRaisesOnWhatIsMissing) {
    {
        ProfileFile file(
            "# machine profile\n"
            "current = Test\n"
            "[Other]\nBTODBCDataSourceName = other_dsn\n"
            "[Test]\n  btodbcdatasourcename = test_dsn ; with spaces\nSystem=SYS1\n");
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        EXPECT_STREQ(profile.Find("BTODBCDataSourceName", false).c_str(), "test_dsn ; with spaces");
        EXPECT_TRUE(profile.Find("SystemGroup", false).IsNull());
        EXPECT_THROW(profile.OpenConfig("Missing", false), DvnNoSuchConfigException);
        profile.OpenConfig("other", false);  // names compare without case
        EXPECT_STREQ(profile.Find("BTODBCDataSourceName", false).c_str(), "other_dsn");

        // An override, set once for the process, wins over the file.
        DvnProfile::SetOverride("BTODBCDataSourceName", "from_option");
        EXPECT_STREQ(profile.Find("BTODBCDataSourceName", false).c_str(), "from_option");
    }
    {
        ProfileFile noCurrent("[Test]\nSystem=SYS1\n");
        DvnProfile profile;
        EXPECT_THROW(profile.CurrentConfig(), DvnNoDefaultConfigException);
    }
    {
        ProfileFile file("");
        setenv("DVN_PROFILE", "/nonexistent/dir/profile", 1);
        DvnProfile profile;
        try {
            profile.CurrentConfig();
            ADD_FAILURE() << "no exception for a missing profile";
        } catch (const DvnOSException& e) {
            EXPECT_NE(e.ServiceName().str().find("/nonexistent/dir/profile"), std::string::npos);
            EXPECT_NE(e.ReturnCode(), 0);
        }
    }
}

TEST(DvnUser, PasswordEncodingIsOneWaySaltedByUserAndStable) {
    DvnString a = DvnUser::PasswordEncodeAsString("admin", "secret");
    // Stored values are compared by the database: the form must never change.
    EXPECT_STREQ(a.c_str(), "pbkdf2-sha256$2048$54248fdc71cf66bbf44a256f2525023938c8927af36c87aa5ca82b4bd40afbeb");
    EXPECT_EQ(a, DvnUser::PasswordEncodeAsString("ADMIN", "secret"));  // salt is the upper-case id
    EXPECT_NE(a, DvnUser::PasswordEncodeAsString("other", "secret"));
    EXPECT_NE(a, DvnUser::PasswordEncodeAsString("admin", "Secret"));
    EXPECT_FALSE(DvnUser::PasswordEncodeAsString(DvnString(), DvnString()).IsEmpty());
}

TEST(DvnkRequireDeathTest, BrokenPreconditionStopsWithTextFileAndLine) {
    EXPECT_DEATH(dvnkRequire(false, "person != 0", "facade.cpp", 17), "precondition failed: person != 0 \\(facade.cpp:17\\)");
    EXPECT_DEATH(DVNK_INVARIANT(1 + 1 == 3, "arithmetic"), "invariant failed: arithmetic");
    dvnkRequire(true, "holds", __FILE__, __LINE__);
    // The forms without a condition stop at once.
    EXPECT_DEATH(dvnkRequire("key != 0", "load.cpp", 9), "precondition failed: key != 0 \\(load.cpp:9\\)");
    EXPECT_DEATH(dvnkInvariant("count >= 0", "load.cpp", 10), "invariant failed: count >= 0 \\(load.cpp:10\\)");
}
