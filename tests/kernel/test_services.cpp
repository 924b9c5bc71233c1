// Trace, machine profile, person rights, password encoding, messages.
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
        EXPECT_STREQ(profile.CurrentConfig().c_str(), "Test");
        profile.OpenConfig(profile.CurrentConfig(), false);
        EXPECT_STREQ(profile.Find("BTODBCDataSourceName", false).c_str(), "test_dsn ; with spaces");
        EXPECT_STREQ(profile.Find("System", false).c_str(), "SYS1");
        EXPECT_TRUE(profile.Find("SystemGroup", false).IsNull());
        EXPECT_THROW(profile.OpenConfig("Missing", false), DvnNoSuchConfigException);
        profile.OpenConfig("other", false);  // names compare without case
        EXPECT_STREQ(profile.Find("BTODBCDataSourceName", false).c_str(), "other_dsn");

        // An override wins over the file, for every profile object.
        DvnProfile::SetOverride("BTODBCDataSourceName", "from_option");
        DvnProfile again;
        again.OpenConfig(again.CurrentConfig(), false);
        EXPECT_STREQ(again.Find("BTODBCDataSourceName", false).c_str(), "from_option");
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString());
        EXPECT_STREQ(again.Find("BTODBCDataSourceName", false).c_str(), "test_dsn ; with spaces");
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
        // With an override the missing file is no error.
        DvnProfile::SetOverride("BTODBCDataSourceName", "x");
        DvnProfile withOverride;
        withOverride.OpenConfig(withOverride.CurrentConfig(), false);
        EXPECT_STREQ(withOverride.Find("BTODBCDataSourceName", false).c_str(), "x");
        EXPECT_TRUE(withOverride.Find("System", false).IsNull());
    }
}

namespace {
class Person : public DvnPersonAuth {
public:
    using DvnPersonAuth::ClearRights;
    using DvnPersonAuth::SetAuthForAllWorkitems;
    using DvnPersonAuth::SetAuthForProcessCategory;
    using DvnPersonAuth::SetAuthForProcessCategoryAsAdmin;
    using DvnPersonAuth::SetAuthForStaff;
    using DvnPersonAuth::SetAuthForWorkitemsOf;
    using DvnPersonAuth::SetSystemAdmin;
    using DvnPersonAuth::SetUserID;
};
}  // namespace

TEST(DvnPersonAuth, RightsAreWhatWasSetAndAdministrationImpliesThem) {
    Person p;
    EXPECT_TRUE(p.UserID().IsNull());
    EXPECT_FALSE(p.AuthForTopologyWrite() || p.AuthForProcessModeling() || p.AuthForStaffWrite());
    p.SetUserID("GROUP", "ADMIN");
    p.SetAuthForStaff(true);
    p.SetAuthForProcessCategory("Sales");
    p.SetAuthForProcessCategoryAsAdmin("Audit");
    p.SetAuthForWorkitemsOf("BOB");
    EXPECT_STREQ(p.UserID().c_str(), "ADMIN");
    EXPECT_STREQ(p.SystemGroup().c_str(), "GROUP");
    EXPECT_TRUE(p.AuthForStaffWrite());
    EXPECT_FALSE(p.AuthForTopologyWrite());
    EXPECT_TRUE(p.AuthForProcessCategory("Sales"));
    EXPECT_TRUE(p.AuthForProcessCategory("Audit"));  // admin of a category may use it
    EXPECT_FALSE(p.AuthForProcessCategoryAsAdmin("Sales"));
    EXPECT_TRUE(p.AuthForWorkitemsOf("BOB"));
    EXPECT_FALSE(p.AuthForWorkitemsOf("EVE"));
    p.SetSystemAdmin(true);
    EXPECT_TRUE(p.AuthForTopologyWrite() && p.AuthForProcessModeling() && p.AuthForWorkitemsOf("EVE"));
    p.ClearRights();
    EXPECT_FALSE(p.IsSystemAdmin() || p.AuthForStaffWrite() || p.AuthForProcessCategory("Sales"));
}

TEST(DvnUser, PasswordEncodingIsOneWaySaltedByUserAndStable) {
    DvnString a = DvnUser::PasswordEncodeAsString("admin", "secret");
    // Stored values are compared by the database: the form must never change.
    EXPECT_STREQ(a.c_str(), "pbkdf2-sha256$2048$54248fdc71cf66bbf44a256f2525023938c8927af36c87aa5ca82b4bd40afbeb");
    EXPECT_EQ(a, DvnUser::PasswordEncodeAsString("ADMIN", "secret"));  // salt is the upper-case id
    EXPECT_NE(a, DvnUser::PasswordEncodeAsString("other", "secret"));
    EXPECT_NE(a, DvnUser::PasswordEncodeAsString("admin", "Secret"));
    EXPECT_LT(a.Length(), 255);
    EXPECT_EQ(a.str().find("secret"), std::string::npos);
    EXPECT_FALSE(DvnUser::PasswordEncodeAsString(DvnString(), DvnString()).IsEmpty());
}

TEST(DvnMessageTarget, KeepsEveryMessageAndHandsItOn) {
    DvnMessageTarget target;
    std::vector<long> heard;
    target.SetListener([&](long n, const DvnString&) { heard.push_back(n); });
    DvnMessageIF& messages = target;
    messages.Message(51366, "dsn");
    messages.Message(51368, DvnString());
    ASSERT_EQ(target.Messages().size(), 2u);
    EXPECT_EQ(target.Messages()[0].number, 51366);
    EXPECT_STREQ(target.Messages()[0].argument.c_str(), "dsn");
    EXPECT_TRUE(target.Messages()[1].argument.IsNull());
    EXPECT_EQ(heard, (std::vector<long>{51366, 51368}));
}

TEST(DvnkRequireDeathTest, BrokenPreconditionStopsWithTextFileAndLine) {
    EXPECT_DEATH(dvnkRequire(false, "person != 0", "facade.cpp", 17), "precondition failed: person != 0 \\(facade.cpp:17\\)");
    EXPECT_DEATH(DVNK_INVARIANT(1 + 1 == 3, "arithmetic"), "invariant failed: arithmetic");
    dvnkRequire(true, "holds", __FILE__, __LINE__);
    // The forms without a condition stop at once.
    EXPECT_DEATH(dvnkRequire("key != 0", "load.cpp", 9), "precondition failed: key != 0 \\(load.cpp:9\\)");
    EXPECT_DEATH(dvnkInvariant("count >= 0", "load.cpp", 10), "invariant failed: count >= 0 \\(load.cpp:10\\)");
}
