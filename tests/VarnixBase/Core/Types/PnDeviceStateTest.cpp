#include <cstdint>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "VarnixBase/Core/Types/PnDeviceState.hpp"

using VarnixBase::Core::Types::PnDeviceState;

namespace {
std::string Text(PnDeviceState value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}
} // namespace

TEST(PnDeviceState, IsOneUnsignedByteWithTheNumbersOfItsBits)
{
    EXPECT_EQ(sizeof(PnDeviceState), 1u);
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<PnDeviceState>, std::uint8_t>));
    EXPECT_EQ(static_cast<int>(PnDeviceState::None), 0);
    EXPECT_EQ(static_cast<int>(PnDeviceState::IS_PRIMARY), 1);
    EXPECT_EQ(static_cast<int>(PnDeviceState::AR_VALID), 4);
    EXPECT_EQ(static_cast<int>(PnDeviceState::APPL_RUN), 16);
    EXPECT_EQ(static_cast<int>(PnDeviceState::PN_NO_DIAG), 32);
}

TEST(PnDeviceState, TheNameTableHoldsExactlyTheFiveNames)
{
    const std::map<PnDeviceState, std::string> expected{
        {PnDeviceState::None, "None"},
        {PnDeviceState::IS_PRIMARY, "IS_PRIMARY"},
        {PnDeviceState::AR_VALID, "AR_VALID"},
        {PnDeviceState::APPL_RUN, "APPL_RUN"},
        {PnDeviceState::PN_NO_DIAG, "PN_NO_DIAG"},
    };
    const auto& table = Zon::EnumStrings<PnDeviceState>::Values;
    ASSERT_EQ(table.size(), expected.size());
    for (const auto& [value, name] : expected) {
        EXPECT_EQ(Zon::GetEnumString(value), name);
    }
}

TEST(PnDeviceState, EveryNameReadsBackToItsValue)
{
    for (const char* name : {"None", "IS_PRIMARY", "AR_VALID", "APPL_RUN", "PN_NO_DIAG"}) {
        PnDeviceState state = PnDeviceState::APPL_RUN;
        if (std::string(name) == "APPL_RUN") {
            state = PnDeviceState::None;
        }
        ASSERT_TRUE(Zon::TryGetEnumValue(name, state)) << name;
        EXPECT_STREQ(Zon::GetEnumString(state), name);
    }
}

TEST(PnDeviceState, TryGetEnumValueIsExactAndCaseSensitiveAndLeavesTheValueOnAMiss)
{
    PnDeviceState state = PnDeviceState::IS_PRIMARY;
    EXPECT_FALSE(Zon::TryGetEnumValue("ar_valid", state));
    EXPECT_FALSE(Zon::TryGetEnumValue("AR_VALID ", state));
    EXPECT_FALSE(Zon::TryGetEnumValue("", state));
    EXPECT_EQ(state, PnDeviceState::IS_PRIMARY);
}

TEST(PnDeviceState, ACombinationHasNoNameAndPrintsAsItsNumber)
{
    PnDeviceState both = PnDeviceState::AR_VALID | PnDeviceState::PN_NO_DIAG;
    EXPECT_EQ(static_cast<int>(both), 36);
    EXPECT_EQ(Text(both), "36");
    EXPECT_THROW(Zon::GetEnumString(both), std::out_of_range);
    EXPECT_EQ(Text(PnDeviceState::AR_VALID), "AR_VALID");
    EXPECT_EQ(fmt::format("{}", PnDeviceState::PN_NO_DIAG), "PN_NO_DIAG");
}

TEST(PnDeviceState, StreamInputReadsOneNameAndSetsFailbitForAnUnknownOne)
{
    PnDeviceState state = PnDeviceState::None;
    std::istringstream known("APPL_RUN");
    known >> state;
    EXPECT_FALSE(known.fail());
    EXPECT_EQ(state, PnDeviceState::APPL_RUN);

    std::istringstream unknown("36");
    unknown >> state;
    EXPECT_TRUE(unknown.fail());
    EXPECT_EQ(state, PnDeviceState::APPL_RUN);
}

TEST(PnDeviceState, BitOperatorsCombineAndTestSingleBits)
{
    PnDeviceState state = PnDeviceState::IS_PRIMARY;
    state |= PnDeviceState::AR_VALID;
    EXPECT_TRUE(HasBits(state, PnDeviceState::AR_VALID));
    EXPECT_TRUE(HasBits(state, PnDeviceState::AR_VALID | PnDeviceState::IS_PRIMARY));
    EXPECT_FALSE(HasBits(state, PnDeviceState::AR_VALID | PnDeviceState::PN_NO_DIAG));
    state &= ~PnDeviceState::IS_PRIMARY;
    EXPECT_EQ(state, PnDeviceState::AR_VALID);
    EXPECT_TRUE(HasBits(PnDeviceState::None, PnDeviceState::None));
}
