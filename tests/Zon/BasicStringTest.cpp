#include <sstream>

#include <gtest/gtest.h>

#include "Zon/BasicString.hpp"
#include "Zon/Format.hpp"

using Zon::String;

TEST(BasicString, ConstructsFromCStringsAndStdStrings)
{
    String fromC("level");
    String fromStd(std::string("level"));
    String fromNull(static_cast<const char*>(nullptr));
    EXPECT_EQ(fromC, fromStd);
    EXPECT_STREQ(fromC.CStr(), "level");
    EXPECT_EQ(fromC.Length(), 5u);
    EXPECT_TRUE(fromNull.IsEmpty());
}

TEST(BasicString, HasValueSemantics)
{
    String original("abc");
    String copy = original;
    copy += "d";
    EXPECT_EQ(original, "abc");
    EXPECT_EQ(copy, "abcd");
}

TEST(BasicString, ComparesBytewiseAndCaseSensitively)
{
    EXPECT_NE(String("Level"), String("level"));
    EXPECT_LT(String("B"), String("a")); // 'B' (0x42) before 'a' (0x61)
    EXPECT_LT(String("ab"), String("abc"));
    EXPECT_LT(String("a\x7f"), String("a\x80"));
}

TEST(BasicString, ConcatenatesAndStreams)
{
    String joined = String("App") + "/" + String("Main");
    std::ostringstream stream;
    stream << joined;
    EXPECT_EQ(stream.str(), "App/Main");
}

TEST(BasicString, FormatsWithFmt)
{
    EXPECT_EQ(Zon::FormatStrict("{}:{}", String("a"), String("b")), "a:b");
    EXPECT_EQ(Zon::FormatStrict("Port `{0}`", String("p")), "Port `p`");
}

TEST(BasicString, KeepsEmbeddedBytesUpToItsLength)
{
    String text("a\0b", 3);
    EXPECT_EQ(text.Length(), 3u);
    EXPECT_EQ(text.Find('b'), 2u);
    EXPECT_EQ(text.Substr(10), String());
}
