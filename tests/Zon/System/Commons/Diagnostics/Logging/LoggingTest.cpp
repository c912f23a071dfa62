#include <gtest/gtest.h>

#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "support/HostFixture.hpp"

using namespace Zon::System::Commons::Diagnostics::Logging;

namespace Sample::Area {
class Pump : public Loggable<Pump> {
public:
    void Start() { GetLogger().Info("Pump {} started at {}", "P1", 42); }
    void Odd() { GetLogger().Error("unmatched { brace"); }
};
} // namespace Sample::Area

class Logging : public VarnixTest::HostTest {};

TEST_F(Logging, ClassLoggerIsNamedByTheCommonTypeName)
{
    Sample::Area::Pump pump;
    pump.Start();
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].level, LogLevel::Info);
    EXPECT_EQ(entries[0].loggerName, "Sample.Area.Pump");
    EXPECT_EQ(entries[0].message, "Pump P1 started at 42");
}

TEST_F(Logging, LevelsHaveThePlatformNumbers)
{
    EXPECT_EQ(static_cast<int>(LogLevel::Error), 3);
    EXPECT_EQ(static_cast<int>(LogLevel::Warning), 5);
    EXPECT_EQ(static_cast<int>(LogLevel::Info), 6);
    EXPECT_EQ(static_cast<int>(LogLevel::Debug), 7);
    EXPECT_EQ(static_cast<int>(LogLevel::Trace), 8);
    auto& logger = GetLogger("x");
    logger.Error("e");
    logger.Warning("w");
    logger.Info("i");
    logger.Debug("d");
    logger.Trace("t");
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 5u);
    EXPECT_EQ(entries[0].level, LogLevel::Error);
    EXPECT_EQ(entries[4].level, LogLevel::Trace);
}

TEST_F(Logging, AFormatWithAnUnmatchedBraceIsWrittenAsRawText)
{
    Sample::Area::Pump pump;
    EXPECT_NO_THROW(pump.Odd());
    EXPECT_EQ(Capture().Count(LogLevel::Error, "unmatched { brace"), 1u);
    GetRootLogger().Warning("value {0} and {1}", 1); // too few arguments
    EXPECT_EQ(Capture().Count(LogLevel::Warning, "value {0} and {1}"), 1u);
}

TEST_F(Logging, RootLoggerIsNamedRoot)
{
    GetRootLogger().Error("### GetCommonTypeName: {0}", 16);
    auto entries = Capture().GetEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].loggerName, "Root");
    EXPECT_EQ(entries[0].message, "### GetCommonTypeName: 16");
}

TEST_F(Logging, SinksTakeOnlyLevelsUpToTheirThreshold)
{
    auto sink = std::make_shared<CaptureSink>(LogLevel::Warning);
    LogManager::GetInstance().AddSink(sink);
    GetRootLogger().Info("info");
    GetRootLogger().Warning("warning");
    EXPECT_EQ(sink->Size(), 1u);
    EXPECT_EQ(Capture().Size(), 2u);
    LogManager::GetInstance().RemoveSink(sink);
}

TEST(LoggingWithoutRuntime, MessagesAreDroppedQuietly)
{
    EXPECT_FALSE(LoggerBase::IsEnabled(LogLevel::Error));
    EXPECT_NO_THROW(GetRootLogger().Error("nobody listens"));
}
