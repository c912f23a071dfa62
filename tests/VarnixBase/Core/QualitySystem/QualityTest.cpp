#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/QualitySystem/Quality.hpp"

using namespace VarnixBase::Core::QualitySystem;

namespace {
template <class T>
std::string Text(const T& value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}
} // namespace

TEST(QualityState, HasTheNumbersOfItsScale)
{
    EXPECT_EQ(sizeof(QualityState), 1u);
    EXPECT_EQ(static_cast<int>(QualityState::None), 0);
    EXPECT_EQ(static_cast<int>(QualityState::Good), 1);
    EXPECT_EQ(static_cast<int>(QualityState::Questionable), 2);
    EXPECT_EQ(static_cast<int>(QualityState::Invalid), 128);
    EXPECT_EQ(static_cast<int>(QualityState::Bad), 255);
}

TEST(QualityState, TheTextOf128IsInvalidAndOf255IsBad)
{
    EXPECT_STREQ(Zon::GetEnumString(static_cast<QualityState>(128)), "Invalid");
    EXPECT_STREQ(Zon::GetEnumString(static_cast<QualityState>(255)), "Bad");
    EXPECT_EQ(Text(static_cast<QualityState>(128)), "Invalid");
    EXPECT_EQ(Text(static_cast<QualityState>(255)), "Bad");
}

TEST(QualityState, EveryNameReadsBackToItsValue)
{
    for (const char* name : {"None", "Good", "Questionable", "Invalid", "Bad"}) {
        QualityState state = QualityState::Good;
        ASSERT_TRUE(Zon::TryGetEnumValue(name, state)) << name;
        EXPECT_STREQ(Zon::GetEnumString(state), name);
    }
}

TEST(QualityState, StreamInputSetsFailbitForAnUnknownName)
{
    QualityState state = QualityState::Good;
    std::istringstream stream("bad");
    stream >> state;
    EXPECT_TRUE(stream.fail());
    EXPECT_EQ(state, QualityState::Good);

    std::istringstream known("Questionable");
    known >> state;
    EXPECT_FALSE(known.fail());
    EXPECT_EQ(state, QualityState::Questionable);
}

TEST(QualityState, ANumberWithoutANamePrintsAsTheNumber)
{
    EXPECT_EQ(Text(static_cast<QualityState>(3)), "3");
}

TEST(QualityFlags, HasTheBitsOfItsTable)
{
    EXPECT_EQ(sizeof(QualityFlags), 4u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::DeviceDefect), 0x1u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::PowerFailure), 0x2u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::WireBreak), 0x4u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Failure), 0x20u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Overflow), 0x100u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::BadReference), 0x200u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Oscillatory), 0x400u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Outdated), 0x800u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Inconsistent), 0x1000u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Inaccurate), 0x2000u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Source), 0x02000000u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Blocked), 0x04000000u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Test), 0x08000000u);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::Configuration), 0x10000000u);
}

TEST(QualityFlags, OutOfRangeIsOverrangeWithUnderrange)
{
    EXPECT_EQ(QualityFlags::Overrange | QualityFlags::Underrange, QualityFlags::OutOfRange);
    EXPECT_EQ(static_cast<std::uint32_t>(QualityFlags::OutOfRange), 0xC0u);
}

TEST(QualityFlags, TheTextWireBreakParsesTo4)
{
    QualityFlags flags = QualityFlags::None;
    ASSERT_TRUE(Zon::TryGetEnumValue("WireBreak", flags));
    EXPECT_EQ(static_cast<std::uint32_t>(flags), 4u);

    QualityFlags streamed = QualityFlags::None;
    std::istringstream stream("WireBreak");
    stream >> streamed;
    EXPECT_FALSE(stream.fail());
    EXPECT_EQ(static_cast<std::uint32_t>(streamed), 4u);
}

TEST(QualityFlags, NamesAreCaseSensitive)
{
    QualityFlags flags = QualityFlags::Test;
    EXPECT_FALSE(Zon::TryGetEnumValue("wirebreak", flags));
    EXPECT_EQ(flags, QualityFlags::Test);
}

TEST(QualityFlags, NamedValuesPrintTheirNameAndOtherCombinationsTheirNumber)
{
    EXPECT_EQ(Text(QualityFlags::None), "None");
    EXPECT_EQ(Text(QualityFlags::Configuration), "Configuration");
    EXPECT_EQ(Text(QualityFlags::Overrange | QualityFlags::Underrange), "OutOfRange");
    EXPECT_EQ(Text(QualityFlags::WireBreak | QualityFlags::Overflow), "260");
}

TEST(QualityFlags, BitwiseOperatorsWorkOnTheBits)
{
    QualityFlags flags = QualityFlags::WireBreak;
    flags |= QualityFlags::Test;
    EXPECT_EQ(static_cast<std::uint32_t>(flags), 0x08000004u);
    EXPECT_EQ(flags & QualityFlags::Test, QualityFlags::Test);
    flags &= ~QualityFlags::WireBreak;
    EXPECT_EQ(flags, QualityFlags::Test);
    flags ^= QualityFlags::Test;
    EXPECT_EQ(flags, QualityFlags::None);
}

TEST(Quality, FlagsComeFirstThenTheState)
{
    EXPECT_EQ(offsetof(Quality, flags), 0u);
    EXPECT_EQ(offsetof(Quality, state), 4u);
    EXPECT_EQ(sizeof(Quality), 8u);
}

TEST(Quality, ANewRecordIsGoodWithoutFlags)
{
    Quality quality;
    EXPECT_EQ(quality.state, QualityState::Good);
    EXPECT_EQ(quality.flags, QualityFlags::None);
}

TEST(Quality, AsOneWordTheFlagsAreTheLowBitsAndTheStateBits32To39)
{
    Quality quality;
    quality.flags = QualityFlags::WireBreak | QualityFlags::Configuration;
    quality.state = QualityState::Invalid;
    std::uint64_t word = 0;
    std::memcpy(&word, &quality, sizeof(word));
    EXPECT_EQ(word & 0xFFFFFFFFu, 0x10000004u);
    EXPECT_EQ((word >> 32) & 0xFFu, 128u);
}

TEST(Quality, PrintsStateAndFlags)
{
    Quality quality;
    quality.state = QualityState::Bad;
    quality.flags = QualityFlags::WireBreak;
    EXPECT_EQ(Text(quality), "Bad/WireBreak");
    EXPECT_EQ(fmt::format("{}", Quality{}), "Good/None");
}
