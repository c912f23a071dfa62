#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Zon/Format.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/Plc/Commons/DataTypeEnum.hpp"

using Zon::Plc::Commons::DataType;
using Zon::Plc::Commons::DataTypeEnum;

namespace {
std::string Text(DataTypeEnum code)
{
    std::ostringstream stream;
    stream << code;
    return stream.str();
}
} // namespace

TEST(DataTypeEnum, CodesHaveTheControllerNumbers)
{
    EXPECT_EQ(DataTypeEnum::Boolean, 3u);
    EXPECT_EQ(DataTypeEnum::UInt8, 4u);
    EXPECT_EQ(DataTypeEnum::Int8, 5u);
    EXPECT_EQ(DataTypeEnum::Char8, 6u);
    EXPECT_EQ(DataTypeEnum::Char16, 7u);
    EXPECT_EQ(DataTypeEnum::UInt16, 8u);
    EXPECT_EQ(DataTypeEnum::Int16, 9u);
    EXPECT_EQ(DataTypeEnum::UInt32, 10u);
    EXPECT_EQ(DataTypeEnum::Int32, 11u);
    EXPECT_EQ(DataTypeEnum::UInt64, 12u);
    EXPECT_EQ(DataTypeEnum::Int64, 13u);
    EXPECT_EQ(DataTypeEnum::Float32, 14u);
    EXPECT_EQ(DataTypeEnum::Float64, 15u);
    EXPECT_EQ(DataTypeEnum::StaticString, 42u);
    EXPECT_EQ(DataTypeEnum::StaticWString, 46u);
    EXPECT_EQ(DataTypeEnum::FirstUserType, 65u);
    EXPECT_EQ(DataTypeEnum::LastUserType, 254u);
}

TEST(DataTypeEnum, FlagsAreThirtyTwoBitsWithThePointerBitAndTheIndirectMask)
{
    static_assert(sizeof(DataType) == 4);
    EXPECT_EQ(Zon::Plc::Commons::DataTypePointerBit, 0x0200u);
    EXPECT_EQ(Zon::Plc::Commons::DataTypeIndirectMask, 0x1200u);
}

TEST(DataTypeEnum, SizesOfTheBaseTypesMatchTheirCppTypes)
{
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Boolean).GetSize(), sizeof(bool));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::UInt8).GetSize(), sizeof(unsigned char));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Int8).GetSize(), sizeof(signed char));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Char8).GetSize(), sizeof(char));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Char16).GetSize(), sizeof(char16_t));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::UInt16).GetSize(), sizeof(unsigned short));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Int16).GetSize(), sizeof(short));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::UInt32).GetSize(), sizeof(unsigned int));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Int32).GetSize(), sizeof(int));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::UInt64).GetSize(), sizeof(unsigned long));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Int64).GetSize(), sizeof(long));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Float32).GetSize(), sizeof(float));
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Float64).GetSize(), sizeof(double));
}

TEST(DataTypeEnum, CodesWithoutAFixedSizeHaveSizeZero)
{
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::None).GetSize(), 0u);
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::StaticString).GetSize(), 0u);
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::StaticWString).GetSize(), 0u);
    EXPECT_EQ(DataTypeEnum(70).GetSize(), 0u);
    EXPECT_EQ(DataTypeEnum(16).GetSize(), 0u);
}

TEST(DataTypeEnum, SizeLooksAtTheBaseTypeOnly)
{
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Float64 | Zon::Plc::Commons::DataTypePointerBit).GetSize(), 8u);
    EXPECT_EQ(DataTypeEnum(DataTypeEnum::Int16 | Zon::Plc::Commons::DataTypeIndirectMask).GetSize(), 2u);
}

TEST(DataTypeEnum, UserTypesAreTheCodesFrom65To254)
{
    EXPECT_FALSE(DataTypeEnum(64).IsUserType());
    EXPECT_TRUE(DataTypeEnum(65).IsUserType());
    EXPECT_TRUE(DataTypeEnum(254).IsUserType());
    EXPECT_FALSE(DataTypeEnum(255).IsUserType());
    EXPECT_TRUE(DataTypeEnum(65 | Zon::Plc::Commons::DataTypePointerBit).IsUserType());
}

TEST(DataTypeEnum, KeepsAllThirtyTwoBitsAndGivesTheBaseTypeApart)
{
    DataTypeEnum code(0x120F);
    EXPECT_EQ(code.GetValue(), 0x120Fu);
    EXPECT_EQ(code.GetBaseType().GetValue(), 15u);
}

TEST(DataTypeEnum, StreamsNamesOfKnownCodesAndNumbersOfOthers)
{
    EXPECT_EQ(Text(DataTypeEnum::Float64), "Float64");
    EXPECT_EQ(Text(DataTypeEnum::Int32), "Int32");
    EXPECT_EQ(Text(DataTypeEnum::StaticWString), "StaticWString");
    EXPECT_EQ(Text(DataTypeEnum::None), "None");
    EXPECT_EQ(Text(16), "16");
    EXPECT_EQ(Text(0x020F), "527");
    EXPECT_EQ(fmt::format("{}", DataTypeEnum(DataTypeEnum::Boolean)), "Boolean");
}
