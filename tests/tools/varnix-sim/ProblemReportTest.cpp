#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Check.hpp"

using namespace VarnixBase::Sim;

TEST(ProblemReportTest, ShortQuotedTextsStayAsTheyAre)
{
    std::string message = "Parameter `gain` of type `double` has invalid configuration `two`";
    EXPECT_EQ(AbbreviateQuoted(message), message);
    std::string limit(MaxQuotedLength, '7');
    EXPECT_EQ(AbbreviateQuoted("value `" + limit + "`"), "value `" + limit + "`");
}

TEST(ProblemReportTest, ALongQuotedTextShowsItsStartAndItsLength)
{
    std::string literal = "1" + std::string(99999, '7');
    EXPECT_EQ(AbbreviateQuoted("Parameter `gain` of type `double` has invalid configuration `" + literal + "` here"),
              "Parameter `gain` of type `double` has invalid configuration `1777777777777777...(100000 bytes)` here");
    std::string justOver(MaxQuotedLength + 1, 'x');
    EXPECT_EQ(AbbreviateQuoted("`" + justOver + "`"), "`" + std::string(AbbreviatedLength, 'x') + "...(65 bytes)`");
}

TEST(ProblemReportTest, TheShownStartDoesNotCutACharacterOfUtf8)
{
    // 15 ASCII letters, then a two-byte character across the cut.
    std::string text = std::string(15, 'a') + "\xC3\xA4" + std::string(100, 'b');
    EXPECT_EQ(AbbreviateQuoted("`" + text + "`"), "`" + std::string(15, 'a') + "...(117 bytes)`");
}

TEST(ProblemReportTest, AnUnpairedBacktickEndsTheMessageAsItStands)
{
    std::string tail = "`" + std::string(200, 'z');
    EXPECT_EQ(AbbreviateQuoted("one `" + std::string(100, 'y') + "` two " + tail),
              "one `" + std::string(16, 'y') + "...(100 bytes)` two " + tail);
}

TEST(ProblemReportTest, WrittenProblemsAreAbbreviated)
{
    std::ostringstream out;
    WriteProblems(out, "big.prog.config", {{"error", 10, "value `" + std::string(1000, '9') + "`"}});
    EXPECT_EQ(out.str(), "big.prog.config:10: error: value `9999999999999999...(1000 bytes)`\n");
}
