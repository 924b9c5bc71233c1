#include <gtest/gtest.h>

#include <climits>

#include "dvnkernn.h"

namespace {
std::vector<std::string> Tokens(DvnString::Tokenizer t) {
    std::vector<std::string> out;
    while (!t.Empty()) out.push_back(t.Next().str());
    return out;
}
}  // namespace

TEST(DvnString, NullStaysApartFromEmpty) {
    DvnString null, empty(""), fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(fromNull.IsNull());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_FALSE(null == empty);
    EXPECT_FALSE(null == "");
    EXPECT_TRUE(null == static_cast<const char*>(nullptr));
    EXPECT_TRUE(null.SubString(0, 3).IsNull());
    EXPECT_FALSE(empty.SubString(0, 3).IsNull());
    EXPECT_STREQ((empty | DvnString("x")).c_str(), "x");
    // Copies share their text until one of them is assigned.
    DvnString a("abc"), b = a;
    b = DvnString("x");
    EXPECT_STREQ(a.c_str(), "abc");
}

TEST(DvnString, OrdersByUnsignedBytesShorterFirstAndKeepsTextAfterGrowth) {
    // Byte order as the name maps of the core model rely on: a prefix first,
    // bytes compared unsigned (UTF-8 after ASCII), embedded NULs counted.
    const std::vector<DvnString> ascending{DvnString(),          DvnString(""),          DvnString("A"),
                                           DvnString("A\0", 2), DvnString("AB"),        DvnString("a"),
                                           DvnString("z"),       DvnString("\xC3\xA9"), DvnString("\xC3\xA9t\xC3\xA9")};
    for (size_t i = 0; i < ascending.size(); ++i)
        for (size_t k = 0; k < ascending.size(); ++k)
            EXPECT_EQ(ascending[i] < ascending[k], i < k) << i << " " << k;
    // A string grown in place keeps its text and its end.
    DvnString grown("abc");
    grown.Reserve(1000);
    EXPECT_STREQ(grown.c_str(), "abc");
    EXPECT_EQ(grown.Length(), 3);
    DvnBinary bytes("x\0y", 3);
    EXPECT_EQ(std::string(bytes.Data(), 3), std::string("x\0y", 3));
}

TEST(DvnString, NumberConversionsAtTheirEdges) {
    EXPECT_EQ(DvnString().AsLong(), 0);
    EXPECT_EQ(DvnString("abc").AsLong(), 0);
    EXPECT_EQ(DvnString(" 12x").AsLong(), 12);
    EXPECT_EQ(DvnString("-9223372036854775808").AsLong(), LONG_MIN);
    EXPECT_EQ(DvnString("9223372036854775808").AsLong(), 0);  // out of range
    EXPECT_STREQ(DvnString::FromLong(7, 3).c_str(), "007");
    EXPECT_STREQ(DvnString::FromLong(-5, 3).c_str(), "-05");
    EXPECT_STREQ(DvnString::FromLong(LONG_MIN, 0).c_str(), "-9223372036854775808");
}

TEST(DvnString, QuotingSubStringAndTokenizerTakeWhatCallersPass) {
    EXPECT_STREQ(DvnString("O'Brien").AsQuoted("'", "'").c_str(), "'O''Brien'");
    DvnString s("abcdef");
    EXPECT_STREQ(s.SubString(2, LONG_MAX).c_str(), "cdef");
    EXPECT_STREQ(s.SubString(9, 2).c_str(), "");
    EXPECT_STREQ(s.SubString(-1, 2).c_str(), "ab");
    EXPECT_EQ(Tokens(DvnString::Tokenizer(DvnString(" a, b,,c "), ",", true, true)),
              (std::vector<std::string>{"a", "b", "c"}));
    // A dotted server path, split at a character.
    DvnString::Tokenizer dotted(DvnString("PES1. SYS1 .GRP1"), '.', true, true);
    EXPECT_EQ(Tokens(dotted), (std::vector<std::string>{"PES1", "SYS1", "GRP1"}));
    EXPECT_TRUE(DvnString::Tokenizer(DvnString(), '.', true, true).Empty());
    EXPECT_TRUE(DvnString::Tokenizer(DvnString(" . "), ".", true, true).Empty());
    EXPECT_EQ(Tokens(DvnString::Tokenizer(DvnString("a..b"), ".", false, false)),
              (std::vector<std::string>{"a", "", "b"}));
}

TEST(DvnStringDeathTest, NullConcatenationAndNegativeLengthsStop) {
    DvnString null;
    EXPECT_DEATH(null | DvnString("x"), "neither side of \\| may be null");
    EXPECT_DEATH(DvnString("x") | null, "neither side of \\| may be null");
    // A negative length is a programming error, not a write before the buffer.
    EXPECT_DEATH(DvnBinary("x", -1), "a buffer length is not negative");
}
