#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ValueConversion.hpp"

using VarnixBase::Core::PortSystem::ConvertValue;
using VarnixBase::Core::PortSystem::ScaleLimit;

TEST(ValueConversion, SameTypeKeepsTheValue)
{
    EXPECT_EQ(ConvertValue<int>(-7), -7);
    EXPECT_EQ(ConvertValue<double>(2.5), 2.5);
    EXPECT_TRUE(std::isnan(ConvertValue<double>(std::nan(""))));
}

TEST(ValueConversion, IntegerToWiderIntegerExtends)
{
    EXPECT_EQ(ConvertValue<long>(static_cast<signed char>(-1)), -1L);
    EXPECT_EQ(ConvertValue<unsigned long>(static_cast<unsigned char>(200)), 200UL);
    EXPECT_EQ(ConvertValue<int>(static_cast<unsigned short>(65535)), 65535);
    EXPECT_EQ(ConvertValue<unsigned long>(-1), 0xFFFFFFFFFFFFFFFFUL); // sign-extended, then unsigned
}

TEST(ValueConversion, IntegerToNarrowerIntegerKeepsTheLowBits)
{
    EXPECT_EQ(ConvertValue<unsigned char>(300), 44);
    EXPECT_EQ(ConvertValue<signed char>(200), -56);
    EXPECT_EQ(ConvertValue<short>(70000), 4464);
    EXPECT_EQ(ConvertValue<int>(0x1'0000'0005L), 5);
    EXPECT_EQ(ConvertValue<unsigned int>(-1), 0xFFFFFFFFu);
}

TEST(ValueConversion, ToBoolIsTrueWhenNotZero)
{
    EXPECT_TRUE(ConvertValue<bool>(2));
    EXPECT_FALSE(ConvertValue<bool>(0L));
    EXPECT_TRUE(ConvertValue<bool>(std::nan("")));
    EXPECT_FALSE(ConvertValue<bool>(-0.0));
    EXPECT_TRUE(ConvertValue<bool>(0.001f));
}

TEST(ValueConversion, BoolToNumberIsZeroOrOne)
{
    EXPECT_EQ(ConvertValue<int>(true), 1);
    EXPECT_EQ(ConvertValue<double>(false), 0.0);
    EXPECT_EQ(ConvertValue<unsigned char>(true), 1);
}

TEST(ValueConversion, IntegerToFloatingPointRoundsToNearest)
{
    EXPECT_EQ(ConvertValue<double>(9007199254740993L), 9007199254740992.0);
    EXPECT_EQ(ConvertValue<float>(16777217), 16777216.0f);
    EXPECT_EQ(ConvertValue<double>(0xFFFFFFFFFFFFFFFFUL), 18446744073709551616.0); // top bit counts
}

TEST(ValueConversion, FloatingPointToSmallIntegersTruncatesTowardZeroThenWraps)
{
    EXPECT_EQ(ConvertValue<int>(2.9), 2);
    EXPECT_EQ(ConvertValue<int>(-2.9), -2);
    EXPECT_EQ(ConvertValue<unsigned char>(300.7), 44);
    EXPECT_EQ(ConvertValue<signed char>(-129.5f), 127);
    EXPECT_EQ(ConvertValue<unsigned short>(-1.0), 65535);
}

TEST(ValueConversion, FloatingPointToUnsignedIntAndLongGoesThroughSixtyFourBits)
{
    EXPECT_EQ(ConvertValue<unsigned int>(4294967295.0), 4294967295u);
    EXPECT_EQ(ConvertValue<unsigned int>(4294967301.0), 5u);
    EXPECT_EQ(ConvertValue<long>(-3.99), -3L);
    EXPECT_EQ(ConvertValue<long>(1e15), 1000000000000000L);
}

TEST(ValueConversion, FloatingPointToUnsignedLongCoversTheFullRange)
{
    EXPECT_EQ(ConvertValue<unsigned long>(9223372036854775808.0), 9223372036854775808UL);
    EXPECT_EQ(ConvertValue<unsigned long>(18446744073709549568.0), 18446744073709549568UL);
    EXPECT_EQ(ConvertValue<unsigned long>(12.75f), 12UL);
}

// A constant expression cannot contain undefined behaviour, so the compiler proves here that the
// out-of-range conversions are defined. Which value they give is the processor's business.
static_assert(ConvertValue<int>(1e300) == ConvertValue<int>(1e300));
static_assert(ConvertValue<long>(-1e300) == ConvertValue<long>(-1e300));
static_assert(ConvertValue<unsigned long>(-1e300) == ConvertValue<unsigned long>(-1e300));
static_assert(ConvertValue<short>(std::numeric_limits<double>::quiet_NaN()) ==
              ConvertValue<short>(std::numeric_limits<double>::quiet_NaN()));

TEST(ValueConversion, OutOfRangeFloatingPointGivesTheSameValueEveryTime)
{
    volatile double huge = 1e300;
    EXPECT_EQ(ConvertValue<int>(huge), ConvertValue<int>(1e300));
    EXPECT_EQ(ConvertValue<unsigned long>(-huge), ConvertValue<unsigned long>(-1e300));
}

TEST(ValueConversion, FloatAndDouble)
{
    EXPECT_EQ(ConvertValue<double>(0.1f), static_cast<double>(0.1f));
    EXPECT_EQ(ConvertValue<float>(0.1), 0.1f);
    EXPECT_EQ(ConvertValue<float>(1e300), std::numeric_limits<float>::infinity());
    EXPECT_EQ(ConvertValue<float>(-1e300), -std::numeric_limits<float>::infinity());
}

TEST(ValueConversion, ScaleLimitsAreTheLargestValues)
{
    EXPECT_EQ(ScaleLimit<signed char>(), 127);
    EXPECT_EQ(ScaleLimit<unsigned char>(), 255);
    EXPECT_EQ(ScaleLimit<short>(), 32767);
    EXPECT_EQ(ScaleLimit<unsigned short>(), 65535);
    EXPECT_EQ(ScaleLimit<int>(), 2147483647);
    EXPECT_EQ(ScaleLimit<unsigned int>(), 4294967295u);
    EXPECT_EQ(ScaleLimit<long>(), 9223372036854775807L);
    EXPECT_EQ(ScaleLimit<unsigned long>(), 18446744073709551615UL);
    EXPECT_EQ(ScaleLimit<float>(), std::numeric_limits<float>::infinity());
    EXPECT_EQ(ScaleLimit<double>(), 1.7976931348623157e308);
}
