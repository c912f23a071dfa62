#include <stdexcept>

#include <gtest/gtest.h>

#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/Os/ShutdownFlags.hpp"

using VarnixBase::Core::Info;
using VarnixBase::Core::Os::ShutdownFlags;

TEST(Info, IdentityConstants)
{
    EXPECT_EQ(Info::GetAppId(), "60002172000495");
    EXPECT_EQ(Info::GetAppName(), "VarnixBase");
}

TEST(Info, AppDirectoryEndsInTheIdAndProjectDirectoryInTheName)
{
    EXPECT_EQ(Info::GetAppDirectory(), "/opt/varnix/apps/60002172000495");
    EXPECT_EQ(Info::GetProjectDirectory(), "/opt/varnix/projects/VarnixBase");
}

TEST(Info, AppDataDirectoryHasTheComponentAppshome)
{
    EXPECT_EQ(Info::GetAppDataDirectory(), "/opt/varnix/appshome/data/60002172000495");
    EXPECT_NE(Info::GetAppDataDirectory().ToStdString().find("/appshome/"), std::string::npos);
}

TEST(Info, DataAndTempDirectories)
{
    EXPECT_EQ(Info::GetDataDirectory(), "/opt/varnix/data/VarnixBase");
    EXPECT_EQ(Info::GetTempDirectory(), "/var/tmp/varnixapp/60002172000495");
}

TEST(Info, VersionCalledTwiceGivesEqualButSeparateObjects)
{
    auto first = Info::GetVersion();
    auto second = Info::GetVersion();
    EXPECT_EQ(first, second);
    EXPECT_NE(&first, &second);
    EXPECT_EQ(first.GetName(), "VarnixBase.Core");
    EXPECT_EQ(first.GetMajor(), 1);
    EXPECT_EQ(first.GetMinor(), 7);
    EXPECT_EQ(first.GetPatch(), 1);
    EXPECT_EQ(first.GetBuild(), 1u);
    EXPECT_TRUE(first.GetState().IsEmpty());
}

TEST(ShutdownFlags, NamesAndNumbers)
{
    EXPECT_STREQ(Zon::GetEnumString(ShutdownFlags::Undefined), "Undefined");
    EXPECT_STREQ(Zon::GetEnumString(ShutdownFlags::Abnormal), "Abnormal");
    EXPECT_STREQ(Zon::GetEnumString(ShutdownFlags::PowerCycle), "PowerCycle");
    EXPECT_STREQ(Zon::GetEnumString(ShutdownFlags::ProcessShutdown), "ProcessShutdown");
    EXPECT_EQ(static_cast<int>(ShutdownFlags::PowerCycle), 3);
}

TEST(ShutdownFlags, TheNumberTwoHasNoName)
{
    try {
        Zon::GetEnumString(static_cast<ShutdownFlags>(2));
        FAIL() << "no exception";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "map::at");
    }
}

TEST(ShutdownFlags, LowerCaseNameIsNotFound)
{
    ShutdownFlags value = ShutdownFlags::Abnormal;
    EXPECT_FALSE(Zon::TryGetEnumValue("powercycle", value));
    EXPECT_EQ(value, ShutdownFlags::Abnormal);
    EXPECT_TRUE(Zon::TryGetEnumValue("PowerCycle", value));
    EXPECT_EQ(value, ShutdownFlags::PowerCycle);
}
