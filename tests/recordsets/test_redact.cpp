// Passwords hidden from printed connect strings and error texts.
#include <gtest/gtest.h>

#include "redact.h"

namespace {

TEST(RedactPassword, HidesEverySpellingOfThePasswordAttributeAndItsValueAnywhere) {
    struct Case {
        const char* text;
        const char* connect;
        const char* printed;
    } cases[] = {
        {"DSN=pg;UID=anna;PWD=s3cret;Port=5432", "", "DSN=pg;UID=anna;PWD=********;Port=5432"},
        {"DSN=pg;Password=s3cret;Database=t", "", "DSN=pg;Password=********;Database=t"},
        {"DSN=pg;PASSWORD = s3cret ;Database=t", "", "DSN=pg;PASSWORD = ********;Database=t"},
        {"DSN=pg;SSLPassword=k3y", "", "DSN=pg;SSLPassword=********"},
        // In braces a value may hold ';' and a doubled brace.
        {"DSN=pg;PWD={a;b}}c};UID=x", "", "DSN=pg;PWD=********;UID=x"},
        {"DSN=pg;pqopt={password=s3cret sslmode=off}", "", "DSN=pg;pqopt={password=********"},
        // No value: nothing to hide, the attribute stays.
        {"DSN=pg;UID=;PWD=", "", "DSN=pg;UID=;PWD="},
        {"dvnbt_pg;Database=t_1", "", "dvnbt_pg;Database=t_1"},
        // Two values; the second one is also quoted bare further on.
        {"DSN=a;PWD=one;Password=two: 'two' refused", "", "DSN=a;PWD=********;Password=********"},
        // An error text about a connect string: the connect string's
        // passwords are hidden wherever the text quotes them.
        {"FATAL: password \"hunter22\" is wrong for hunter22", "DSN=pg;UID=u;PWD=hunter22",
         "FATAL: password \"********\" is wrong for ********"},
        {"State:28P01,Native:1,Origin:[pg]", "DSN=pg;PWD=", "State:28P01,Native:1,Origin:[pg]"},
        // A value that holds another is hidden whole.
        {"ab and abcd", "DSN=x;PWD=ab;Password=abcd", "******** and ********"},
        // Stars alone already read as hidden.
        {"DSN=x;PWD=**", "", "DSN=x;PWD=********"},
    };
    for (const Case& c : cases) EXPECT_EQ(RedactPassword(c.text, c.connect).str(), c.printed) << c.text;
    EXPECT_EQ(MaskedPassword("").str(), "");
    EXPECT_EQ(MaskedPassword("x").str(), "********");
}

}  // namespace
