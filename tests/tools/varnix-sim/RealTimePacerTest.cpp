// Cycles on absolute deadlines: the schedule, the lateness statistics and overruns.
#include <algorithm>
#include <chrono>
#include <numeric>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/RealTimePacer.hpp"

using namespace VarnixBase::Sim;

TEST(RealTimePacer, CyclesStartNoEarlierThanTheirDeadlinesAndEveryStartIsCounted)
{
    std::vector<double> samples;
    samples.reserve(8);
    auto begin = std::chrono::steady_clock::now();
    RealTimePacer pacer(std::chrono::microseconds(2000), &samples);
    for (int i = 0; i < 6; ++i) {
        pacer.WaitForNextCycle();
        pacer.EndOfCycle();
    }
    // The sixth cycle is due 5 cycle times after the first.
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::microseconds(10000));
    const auto& report = pacer.Report();
    EXPECT_EQ(report.cycles, 6u);
    ASSERT_EQ(samples.size(), 6u);
    EXPECT_EQ(std::accumulate(report.histogram.begin(), report.histogram.end(), std::uint64_t{0}), 6u);
    EXPECT_LE(report.minimum, report.mean);
    EXPECT_LE(report.mean, report.maximum);
    EXPECT_DOUBLE_EQ(report.maximum, *std::max_element(samples.begin(), samples.end()));
    EXPECT_NEAR(report.mean, std::accumulate(samples.begin(), samples.end(), 0.0) / 6.0, 1e-9);
}

TEST(RealTimePacer, ACycleThatEndsAfterTheNextDeadlineIsAnOverrunAndTheNextStartsLate)
{
    RealTimePacer pacer(std::chrono::microseconds(1000));
    pacer.WaitForNextCycle();
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    pacer.EndOfCycle();
    pacer.WaitForNextCycle();
    pacer.EndOfCycle();
    const auto& report = pacer.Report();
    EXPECT_GE(report.overruns, 1u);
    EXPECT_GE(report.maximum, 3000.0) << "the second cycle was due 1 ms after the first, which took 5 ms";
    std::ostringstream text;
    WriteRealTimeReport(text, report);
    EXPECT_NE(text.str().find("real time: 2 cycles of 1000 us, "), std::string::npos) << text.str();
    EXPECT_NE(text.str().find(">= 10000 us"), std::string::npos) << text.str();
}
