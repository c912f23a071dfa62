#include <sstream>

#include <gtest/gtest.h>

#include "Zon/BasicVersion.hpp"
#include "Zon/EnumStrings.hpp"
#include "Zon/SecureStrncpy.hpp"

namespace Sample {
enum class Mode : unsigned char { Off = 0, On = 1, Auto = 4 };
ZON_ENUM_STREAM_OPERATORS(Mode)
} // namespace Sample

template <>
const std::map<Sample::Mode, const char*> Zon::EnumStrings<Sample::Mode>::Values = {
    {Sample::Mode::Off, "Off"}, {Sample::Mode::On, "On"}, {Sample::Mode::Auto, "Auto"}};

TEST(EnumStrings, NamesAndValues)
{
    EXPECT_STREQ(Zon::GetEnumString(Sample::Mode::Auto), "Auto");
    EXPECT_THROW(Zon::GetEnumString(static_cast<Sample::Mode>(2)), std::out_of_range);
    Sample::Mode mode = Sample::Mode::Off;
    EXPECT_TRUE(Zon::TryGetEnumValue("On", mode));
    EXPECT_EQ(mode, Sample::Mode::On);
    EXPECT_FALSE(Zon::TryGetEnumValue("auto", mode));
    EXPECT_EQ(mode, Sample::Mode::On);
}

TEST(EnumStrings, StreamOperatorsComeFromTheTable)
{
    std::ostringstream out;
    out << Sample::Mode::Auto << ' ' << static_cast<Sample::Mode>(2);
    EXPECT_EQ(out.str(), "Auto 2");
    std::istringstream in("On Bogus");
    Sample::Mode mode = Sample::Mode::Off;
    in >> mode;
    EXPECT_EQ(mode, Sample::Mode::On);
    in >> mode;
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(mode, Sample::Mode::On);
}

TEST(BasicVersion, HoldsItsFields)
{
    Zon::BasicVersion version("VarnixBase.Core", 1, 7, 1, 70000, "beta");
    EXPECT_EQ(version.GetName(), "VarnixBase.Core");
    EXPECT_EQ(version.GetMajor(), 1);
    EXPECT_EQ(version.GetMinor(), 7);
    EXPECT_EQ(version.GetPatch(), 1);
    EXPECT_EQ(version.GetBuild(), 70000u);
    EXPECT_EQ(version.GetState(), "beta");
    std::ostringstream out;
    out << version;
    EXPECT_EQ(out.str(), "VarnixBase.Core 1.7.1.70000-beta");
}

TEST(SecureStrncpy, NeverWritesPastTheDestinationAndAlwaysTerminates)
{
    char buffer[6];
    std::memset(buffer, 'x', sizeof(buffer));
    EXPECT_EQ(Zon::SecureStrncpy(buffer, 4, "abcdef", 6), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], 'x');
    EXPECT_EQ(Zon::SecureStrncpy(buffer, 6, "abcdef", 2), 2u);
    EXPECT_STREQ(buffer, "ab");
    EXPECT_EQ(Zon::SecureStrncpy(buffer, 6, "a", 5), 1u);
    EXPECT_STREQ(buffer, "a");
    EXPECT_EQ(Zon::SecureStrncpy(buffer, 0, "abc", 3), 0u);
}
