// Trace, machine profile, login names and password encoding, broken preconditions.
#include <gtest/gtest.h>

#include <cctype>

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
        EXPECT_THROW(DvnProfile().CurrentConfig(), DvnNoDefaultConfigException);
    }
    {
        ProfileFile file("");
        setenv("DVN_PROFILE", "/nonexistent/dir/profile", 1);
        try {
            DvnProfile().CurrentConfig();
            ADD_FAILURE() << "no exception for a missing profile";
        } catch (const DvnOSException& e) {
            EXPECT_NE(e.ServiceName().str().find("/nonexistent/dir/profile"), std::string::npos);
            EXPECT_NE(e.ReturnCode(), 0);
        }
    }
}

TEST(DvnUser, PasswordEncodingIsOneWaySaltedByUserAndStable) {
    // The form of 2048 rounds that earlier repositories hold: its text never
    // changes, or their persons could no longer log in.
    DvnString a = DvnUser::PasswordEncodeWithRounds("admin", "secret", 2048);
    EXPECT_STREQ(a.c_str(), "pbkdf2-sha256$2048$54248fdc71cf66bbf44a256f2525023938c8927af36c87aa5ca82b4bd40afbeb");
    EXPECT_EQ(a, DvnUser::PasswordEncodeWithRounds("ADMIN", "secret", 2048));  // salt is the folded id
    EXPECT_NE(a, DvnUser::PasswordEncodeWithRounds("other", "secret", 2048));
    EXPECT_FALSE(DvnUser::PasswordEncodeWithRounds(DvnString(), DvnString(), 1).IsEmpty());

    // A new password gets the product's count, and its form says so.
    const std::string fresh = DvnUser::PasswordEncodeAsString("admin", "secret").str();
    EXPECT_EQ(fresh.rfind("pbkdf2-sha256$600000$", 0), 0u) << fresh;
    EXPECT_EQ(fresh.size(), 85u);

    // Either form is read: the password is encoded as the stored text asks.
    const std::string hex = a.str().substr(19);
    std::string upperHex = hex;
    for (char& c : upperHex) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    struct Case {
        std::string stored;
        const char* password;
        bool matches;
    } cases[] = {
        {a.str(), "secret", true},
        {a.str(), "Secret", false},
        {fresh, "secret", true},
        {"pbkdf2-sha256$2048$" + upperHex, "secret", true},
        {"pbkdf2-sha256$02048$" + hex, "secret", true},
        {"pbkdf2-sha256$2049$" + hex, "secret", false},
        {"pbkdf2-sha256$$" + hex, "secret", false},
        {"pbkdf2-sha256$0$" + hex, "secret", false},
        {"pbkdf2-sha256$-2048$" + hex, "secret", false},
        {"pbkdf2-sha256$2048" + hex, "secret", false},
        // More rounds than a login should ever spend: refused unread.
        {"pbkdf2-sha256$10000001$" + hex, "secret", false},
        {"pbkdf2-sha256$999999999999$" + hex, "secret", false},
        {"pbkdf2-sha256$2048$" + hex.substr(1), "secret", false},
        {"pbkdf2-sha256$2048$" + hex + "0", "secret", false},
        {"pbkdf2-sha1$2048$" + hex, "secret", false},
        {"secret", "secret", false},
        {"", "", false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(DvnUser::PasswordMatches("Admin", c.password, DvnString(c.stored)), c.matches) << c.stored;
    EXPECT_FALSE(DvnUser::PasswordMatches("admin", "secret", DvnString()));
}

// Login names fold as persons are stored: a-z only, whatever the locale;
// a character outside ASCII keeps every byte.
TEST(DvnUser, FoldUserIdTurnsOnlyTheLettersAToZ) {
    const char* cases[][2] = {
        {"anna", "ANNA"},
        {"Anna-Maria_2 o'Neil", "ANNA-MARIA_2 O'NEIL"},
        {"j\xC3\xBCrgen", "J\xC3\xBCRGEN"},              // jürgen: the ü stays
        {"\xC3\x9Cmit", "\xC3\x9CMIT"},                  // Ümit
        {"\xD0\xB8\xD0\xB2\xD0\xB0\xD0\xBD", "\xD0\xB8\xD0\xB2\xD0\xB0\xD0\xBD"},  // иван
        {"stra\xC3\x9F" "e", "STRA\xC3\x9F" "E"},        // straße: no SS
        {"", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(DvnUser::FoldUserId(c[0]).str(), c[1]) << c[0];
    EXPECT_TRUE(DvnUser::FoldUserId(DvnString()).IsNull());
    // The salt folds the same way: the id in any case of a-z gives one form.
    EXPECT_EQ(DvnUser::PasswordEncodeWithRounds("j\xC3\xBCrgen", "pw", 1),
              DvnUser::PasswordEncodeWithRounds("J\xC3\xBCRGEN", "pw", 1));
    EXPECT_NE(DvnUser::PasswordEncodeWithRounds("j\xC3\xBCrgen", "pw", 1),
              DvnUser::PasswordEncodeWithRounds("J\xC3\x9CRGEN", "pw", 1));
}

TEST(DvnkRequireDeathTest, BrokenPreconditionStopsWithTextFileAndLine) {
    EXPECT_DEATH(dvnkRequire(false, "person != 0", "facade.cpp", 17), "precondition failed: person != 0 \\(facade.cpp:17\\)");
    EXPECT_DEATH(DVNK_INVARIANT(1 + 1 == 3, "arithmetic"), "invariant failed: arithmetic");
    dvnkRequire(true, "holds", __FILE__, __LINE__);
    // The forms without a condition stop at once.
    EXPECT_DEATH(dvnkRequire("key != 0", "load.cpp", 9), "precondition failed: key != 0 \\(load.cpp:9\\)");
    EXPECT_DEATH(dvnkInvariant("count >= 0", "load.cpp", 10), "invariant failed: count >= 0 \\(load.cpp:10\\)");
}
