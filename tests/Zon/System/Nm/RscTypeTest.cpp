#include <sstream>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Zon/System/Nm/RscType.hpp"

using Zon::System::Nm::RscType;

TEST(RscType, TagsHaveTheirNumbers)
{
    EXPECT_EQ(static_cast<int>(RscType::Uint16), 7);
    EXPECT_EQ(static_cast<int>(RscType::StdString), 18);
    EXPECT_EQ(static_cast<int>(RscType::String), 19);
    EXPECT_EQ(static_cast<int>(RscType::AnsiString), 26);
    EXPECT_EQ(static_cast<int>(RscType::Utf8String), 36);
    EXPECT_EQ(static_cast<int>(RscType::None), 255);
    EXPECT_EQ(sizeof(RscType), 1u);
}

TEST(RscType, StreamOutputGivesTheNameOrTheNumber)
{
    std::ostringstream stream;
    stream << RscType::Uint16 << ' ' << RscType::String << ' ' << RscType::None << ' ' << static_cast<RscType>(42);
    EXPECT_EQ(stream.str(), "Uint16 String None 42");
    EXPECT_EQ(fmt::format("{}", RscType::StdString), "StdString");
}

TEST(RscType, StreamInputReadsANameBack)
{
    std::istringstream stream("Utf8String Bogus");
    RscType type = RscType::None;
    stream >> type;
    EXPECT_EQ(type, RscType::Utf8String);
    stream >> type;
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(type, RscType::Utf8String);
}

TEST(RscType, ZeroTerminatedStringTags)
{
    EXPECT_TRUE(Zon::System::Nm::IsZeroTerminatedString(RscType::String));
    EXPECT_TRUE(Zon::System::Nm::IsZeroTerminatedString(RscType::AnsiString));
    EXPECT_TRUE(Zon::System::Nm::IsZeroTerminatedString(RscType::Utf8String));
    EXPECT_FALSE(Zon::System::Nm::IsZeroTerminatedString(RscType::StdString));
    EXPECT_FALSE(Zon::System::Nm::IsZeroTerminatedString(RscType::Uint16));
    EXPECT_FALSE(Zon::System::Nm::IsZeroTerminatedString(RscType::None));
}
