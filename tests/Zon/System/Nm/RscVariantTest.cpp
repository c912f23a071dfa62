#include <cstdint>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Nm/RscVariant.hpp"

using namespace Zon::System::Nm;

TEST(RscVariant, HoldsItsStorageAndOneTagByte)
{
    EXPECT_EQ(sizeof(RscVariant<512>), 513u);
    EXPECT_EQ(RscVariant<512>::StorageSize, 512u);
    RscVariant<512> variant;
    variant.SetType(RscType::Uint16);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&variant)[512], 7); // the tag follows the storage
    variant.SetType(RscType::None);
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&variant)[512], 255);
}

TEST(RscVariant, NewVariantHoldsNoValueAndZeroedStorage)
{
    RscVariant<512> variant;
    EXPECT_EQ(variant.GetType(), RscType::None);
    for (std::size_t i = 0; i < 512; ++i) {
        ASSERT_EQ(variant.GetData()[i], 0) << i;
    }
    EXPECT_EQ(variant.GetText(), "");
}

TEST(RscVariant, Uint16SitsInTheFirstBytes)
{
    RscVariant<512> variant;
    variant.SetValue<std::uint16_t>(0xBEEF, RscType::Uint16);
    EXPECT_EQ(variant.GetType(), RscType::Uint16);
    EXPECT_EQ(variant.GetValue<std::uint16_t>(), 0xBEEF);
    std::uint16_t raw = 0;
    std::memcpy(&raw, variant.GetData(), sizeof(raw));
    EXPECT_EQ(raw, 0xBEEF);
}

TEST(RscVariant, TextIsStoredZeroTerminated)
{
    RscVariant<512> variant;
    variant.SetText("beta", RscType::String);
    EXPECT_EQ(variant.GetType(), RscType::String);
    EXPECT_STREQ(variant.GetChars(), "beta");
    EXPECT_EQ(variant.GetText(), "beta");
}

TEST(RscVariant, TextOfFullLengthFitsWithItsTerminator)
{
    RscVariant<512> variant;
    variant.SetText(std::string(511, 'x'), RscType::String);
    EXPECT_EQ(variant.GetText(), std::string(511, 'x'));
    EXPECT_EQ(variant.GetData()[511], 0);
}

TEST(RscVariant, TooLongTextIsRefusedAndTheVariantKept)
{
    RscVariant<512> variant;
    variant.SetText("kept", RscType::Utf8String);
    try {
        variant.SetText(std::string(512, 'x'), RscType::String);
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::ArgumentException& e) {
        EXPECT_STREQ(e.what(), "Cannot copy string: argument string length 512 exceeds MaxStringSize 512");
    }
    EXPECT_EQ(variant.GetType(), RscType::Utf8String);
    EXPECT_EQ(variant.GetText(), "kept");
}

TEST(RscVariant, TextReadingNeverPassesTheStorage)
{
    RscVariant<8> variant;
    std::memset(variant.GetData(), 'a', 8); // no terminator anywhere
    EXPECT_EQ(variant.GetText(), "aaaaaaaa");
}

TEST(RscVariant, ShorterTextClearsWhatALongerOneLeft)
{
    RscVariant<16> variant;
    variant.SetText("long text here", RscType::String);
    variant.SetText("ab", RscType::String);
    EXPECT_EQ(variant.GetText(), "ab");
    EXPECT_EQ(variant.GetData()[5], 0);
}
