#include <sstream>

#include <gtest/gtest.h>

#include "Zon/Format.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"

using Zon::Plc::Commons::Meta::StandardAttribute;

namespace {
std::string Text(StandardAttribute attributes)
{
    std::ostringstream stream;
    stream << attributes;
    return stream.str();
}
} // namespace

TEST(StandardAttribute, FitsSixtyFourBits)
{
    EXPECT_EQ(sizeof(StandardAttribute), 8u);
}

TEST(StandardAttribute, ZeroHasATextOfItsOwn)
{
    EXPECT_EQ(Text(StandardAttribute::None), "None");
}

TEST(StandardAttribute, PrintsSingleFlagsByName)
{
    EXPECT_EQ(Text(StandardAttribute::Input), "Input");
    EXPECT_EQ(Text(StandardAttribute::Retain), "Retain");
    EXPECT_EQ(Text(StandardAttribute::Diagnostic), "Diagnostic");
}

TEST(StandardAttribute, PrintsCombinationsLowestBitFirstAndUnnamedBitsInHex)
{
    EXPECT_EQ(Text(StandardAttribute::Retain | StandardAttribute::Input), "Input|Retain");
    EXPECT_EQ(Text(static_cast<StandardAttribute>(1ull << 40)), "0x10000000000");
    EXPECT_EQ(Text(StandardAttribute::Output | static_cast<StandardAttribute>(1ull << 63)), "Output|0x8000000000000000");
}

TEST(StandardAttribute, ReadsOneName)
{
    StandardAttribute value = StandardAttribute::None;
    std::istringstream stream("ReadOnly");
    stream >> value;
    EXPECT_FALSE(stream.fail());
    EXPECT_EQ(value, StandardAttribute::ReadOnly);
}

TEST(StandardAttribute, AnUnknownNameSetsFailbitAndKeepsTheValue)
{
    StandardAttribute value = StandardAttribute::Hidden;
    std::istringstream misspelt("Inptu");
    misspelt >> value;
    EXPECT_TRUE(misspelt.fail());
    EXPECT_EQ(value, StandardAttribute::Hidden);
    std::istringstream lowerCase("input");
    lowerCase >> value;
    EXPECT_TRUE(lowerCase.fail());
    EXPECT_EQ(value, StandardAttribute::Hidden);
}

TEST(StandardAttribute, FormatsThroughFmt)
{
    EXPECT_EQ(Zon::FormatStrict("attributes={}", StandardAttribute::Input | StandardAttribute::Output),
              "attributes=Input|Output");
}
