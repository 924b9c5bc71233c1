#include <gtest/gtest.h>

#include "dvnkernn.h"
#include "cstring.h"

TEST(DvnString, NullIsNotEmptyAndCopiesShareRep) {
    DvnString null, empty(""), fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(null.IsNull());
    EXPECT_TRUE(fromNull.IsNull());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_FALSE(null == empty);
    EXPECT_TRUE(null == fromNull);
    DvnString a("abc");
    DvnString b = a;
    EXPECT_EQ(a.Data(), b.Data());  // shared, counted
    b = DvnString("x");
    EXPECT_STREQ(a.c_str(), "abc");
}

TEST(DvnString, OperationsKeepTheirMeaning) {
    DvnString s("O'Brien");
    EXPECT_STREQ(s.AsQuoted("'", "'").c_str(), "'O''Brien'");
    EXPECT_STREQ(s.SubString(2, 3).c_str(), "Bri");
    EXPECT_STREQ(s.SubString(5).c_str(), "en");
    EXPECT_EQ(DvnString("-42").AsLong(), -42);
    EXPECT_STREQ(DvnString::FromLong(7, 3).c_str(), "007");
    EXPECT_STREQ((DvnString("a") | DvnString("b")).c_str(), "ab");
    DvnString::Tokenizer t(DvnString(" a, b,,c "), ",", true, true);
    std::vector<std::string> tokens;
    while (!t.Empty()) tokens.push_back(t.Next().str());
    EXPECT_EQ(tokens, (std::vector<std::string>{"a", "b", "c"}));
}

TEST(CString, TextOperations) {
    CString s("  Hello World  ");
    s.TrimLeft();
    s.TrimRight();
    EXPECT_EQ(s, "Hello World");
    EXPECT_EQ(s.Find("World"), 6);
    EXPECT_EQ(s.FindOneOf("xo"), 4);
    EXPECT_EQ(s.Left(5), "Hello");
    EXPECT_EQ(s.Mid(6), "World");
    EXPECT_EQ(s.Mid(6, 3), "Wor");
    EXPECT_EQ(s.Right(3), "rld");
    s.MakeUpper();
    EXPECT_EQ(s, "HELLO WORLD");
    CString f;
    f.Format("%09ld", 255000128L);
    EXPECT_EQ(f, "255000128");
}
