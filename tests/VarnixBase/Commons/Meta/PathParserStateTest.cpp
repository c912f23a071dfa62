#include <sstream>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/PathParserState.hpp"
#include "Zon/Exception.hpp"

using VarnixBase::Commons::Meta::PathParserState;

TEST(PathParserState, ValuesAreEightBitsWithTheirNumbers)
{
    static_assert(sizeof(PathParserState) == 1);
    EXPECT_EQ(static_cast<int>(PathParserState::ParseMembers), 0);
    EXPECT_EQ(static_cast<int>(PathParserState::ParseIndex), 1);
    EXPECT_EQ(static_cast<int>(PathParserState::ParseChildSwitch), 2);
}

TEST(PathParserState, NamesComeFromItsDictionary)
{
    EXPECT_STREQ(GetEnumString(PathParserState::ParseMembers), "ParseMembers");
    EXPECT_STREQ(GetEnumString(PathParserState::ParseIndex), "ParseIndex");
    EXPECT_STREQ(GetEnumString(PathParserState::ParseChildSwitch), "ParseChildSwitch");
    PathParserState state = PathParserState::ParseMembers;
    EXPECT_TRUE(TryGetEnumValue("ParseChildSwitch", state));
    EXPECT_EQ(state, PathParserState::ParseChildSwitch);
    EXPECT_FALSE(TryGetEnumValue("parseindex", state));
}

TEST(PathParserState, UnknownValueThrowsAndStreamsItsByteWithFailbit)
{
    try {
        GetEnumString(static_cast<PathParserState>(3));
        FAIL() << "no exception";
    } catch (const Zon::Exception& exception) {
        EXPECT_STREQ(exception.what(),
                     "Could not find enum string of enum 'VarnixBase.Commons.Meta.PathParserState' for value '3'.");
    }
    std::ostringstream stream;
    stream << PathParserState::ParseIndex << static_cast<PathParserState>('z');
    EXPECT_EQ(stream.str(), "ParseIndexz");
    EXPECT_TRUE(stream.fail());
}

TEST(PathParserState, StreamReadsTheName)
{
    std::istringstream stream("ParseIndex");
    PathParserState state = PathParserState::ParseMembers;
    stream >> state;
    EXPECT_EQ(state, PathParserState::ParseIndex);
    std::istringstream bad("Parse");
    bad >> state;
    EXPECT_TRUE(bad.fail());
    EXPECT_EQ(state, PathParserState::ParseIndex);
}
