#include <chrono>

#include <gtest/gtest.h>

#include "Zon/DateTime.hpp"
#include "Zon/Host/Clock.hpp"

using Zon::DateTime;

TEST(DateTime, TopTwoBitsAreTheKind)
{
    DateTime time = DateTime::FromUnixTimeMicroseconds(1'000'000);
    EXPECT_EQ(time.GetKind(), DateTime::Kind::Utc);
    EXPECT_EQ(time.GetValue() >> 62, 1u);
    DateTime local(time.GetTicks() | (2ull << 62));
    EXPECT_EQ(local.GetKind(), DateTime::Kind::Local);
    EXPECT_EQ(local.ToUnixTimeMicroseconds(), 1'000'000);
}

TEST(DateTime, UnixMicrosecondsRoundTrip)
{
    EXPECT_EQ(DateTime::FromUnixTimeMicroseconds(0).ToUnixTimeMicroseconds(), 0);
    EXPECT_EQ(DateTime::FromUnixTimeMicroseconds(1'700'000'000'123'456).ToUnixTimeMicroseconds(), 1'700'000'000'123'456);
    EXPECT_EQ(DateTime::FromUnixTimeMicroseconds(-5).ToUnixTimeMicroseconds(), -5);
}

TEST(DateTime, NowReadsTheRealClockByDefault)
{
    Zon::Host::Clock::UseReal();
    auto before = std::chrono::duration_cast<std::chrono::microseconds>(
                      std::chrono::system_clock::now().time_since_epoch()).count();
    auto now = DateTime::Now().ToUnixTimeMicroseconds();
    auto after = std::chrono::duration_cast<std::chrono::microseconds>(
                     std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(DateTime, VirtualClockIsSetAndAdvancedByHand)
{
    Zon::Host::Clock::UseVirtual(DateTime::FromUnixTimeMicroseconds(1000));
    EXPECT_TRUE(Zon::Host::Clock::IsVirtual());
    EXPECT_EQ(DateTime::Now().ToUnixTimeMicroseconds(), 1000);
    EXPECT_EQ(DateTime::Now().ToUnixTimeMicroseconds(), 1000);
    Zon::Host::Clock::Advance(std::chrono::milliseconds(10));
    EXPECT_EQ(DateTime::Now().ToUnixTimeMicroseconds(), 11000);
    Zon::Host::Clock::UseReal();
    EXPECT_FALSE(Zon::Host::Clock::IsVirtual());
    EXPECT_GT(DateTime::Now().ToUnixTimeMicroseconds(), 1'600'000'000'000'000);
}
