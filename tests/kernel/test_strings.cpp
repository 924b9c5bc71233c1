#include <gtest/gtest.h>

#include <climits>

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

TEST(DvnString, NumberConversionsAtTheirEdges) {
    EXPECT_EQ(DvnString().AsLong(), 0);
    EXPECT_EQ(DvnString("").AsLong(), 0);
    EXPECT_EQ(DvnString("abc").AsLong(), 0);
    EXPECT_EQ(DvnString(" 12x").AsLong(), 12);
    EXPECT_EQ(DvnString("-9223372036854775808").AsLong(), LONG_MIN);
    EXPECT_EQ(DvnString("9223372036854775808").AsLong(), 0);  // out of range
    EXPECT_STREQ(DvnString::FromLong(-42, 0).c_str(), "-42");
    EXPECT_STREQ(DvnString::FromLong(-5, 3).c_str(), "-05");
    EXPECT_STREQ(DvnString::FromLong(LONG_MIN, 0).c_str(), "-9223372036854775808");
    EXPECT_EQ(DvnString::FromLong(LONG_MIN, 0).AsLong(), LONG_MIN);
}

TEST(DvnString, NullStaysApartFromEmptyInEveryComparison) {
    DvnString null, empty("");
    EXPECT_FALSE(null == "");
    EXPECT_TRUE(null == static_cast<const char*>(nullptr));
    EXPECT_TRUE(empty == "");
    EXPECT_TRUE(null < empty);
    EXPECT_FALSE(empty < null);
    EXPECT_TRUE(null.SubString(0, 3).IsNull());
    EXPECT_FALSE(empty.SubString(0, 3).IsNull());
    EXPECT_STREQ((empty | DvnString("x")).c_str(), "x");
}

TEST(DvnString, SubStringAndTokenizerTakeWhatCallersPass) {
    DvnString s("abcdef");
    EXPECT_STREQ(s.SubString(2, LONG_MAX).c_str(), "cdef");
    EXPECT_STREQ(s.SubString(9, 2).c_str(), "");
    EXPECT_STREQ(s.SubString(-1, 2).c_str(), "ab");
    // A dotted server path, split at a character.
    DvnString::Tokenizer dotted(DvnString("PES1. SYS1 .GRP1"), '.', true, true);
    std::vector<std::string> tokens;
    while (!dotted.Empty()) tokens.push_back(dotted.Next().str());
    EXPECT_EQ(tokens, (std::vector<std::string>{"PES1", "SYS1", "GRP1"}));
    EXPECT_TRUE(dotted.Next().IsNull());
    EXPECT_TRUE(DvnString::Tokenizer(DvnString(), '.', true, true).Empty());
    EXPECT_TRUE(DvnString::Tokenizer(DvnString(" . "), ".", true, true).Empty());
    DvnString::Tokenizer keepEmpty(DvnString("a..b"), ".", false, false);
    tokens.clear();
    while (!keepEmpty.Empty()) tokens.push_back(keepEmpty.Next().str());
    EXPECT_EQ(tokens, (std::vector<std::string>{"a", "", "b"}));
}

TEST(DvnStringDeathTest, NullConcatenationAndNegativeLengthsStop) {
    DvnString null;
    EXPECT_DEATH(null | DvnString("x"), "neither side of \\| may be null");
    EXPECT_DEATH(DvnString("x") | null, "neither side of \\| may be null");
    // A negative length is a programming error, not a write before the buffer.
    EXPECT_DEATH(DvnBinary("x", -1), "a buffer length is not negative");
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
