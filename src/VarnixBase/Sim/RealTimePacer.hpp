#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <time.h>
#include <vector>

namespace VarnixBase::Sim {

/// How well a run kept its real-time schedule: the lateness of every cycle start behind its
/// deadline, and the cycles that ran past the deadline of the next one, as a task watchdog counts.
struct RealTimeReport {
    /// Upper bounds of the histogram's buckets in microseconds; the last bucket has none.
    static constexpr std::array<double, 10> BucketBounds{10, 20, 50, 100, 200, 500, 1000, 2000, 5000, 10000};

    std::uint64_t cycles = 0;
    std::chrono::microseconds cycleTime{0};
    std::uint64_t overruns = 0;
    double minimum = 0, mean = 0, maximum = 0; ///< lateness of cycle starts, microseconds
    std::array<std::uint64_t, BucketBounds.size() + 1> histogram{};
    /// The cycle thread's real-time priority (`SCHED_FIFO`), 0 when the system refused it.
    int priority = 0;
};

/// Writes the report's lines for the run's summary: overruns, lateness min/mean/max, histogram.
void WriteRealTimeReport(std::ostream& out, const RealTimeReport& report);

/// Runs cycles on absolute deadlines of the monotonic clock: cycle k (from 0) is due at
/// start + k * cycle time, and the wait sleeps until that instant (`clock_nanosleep` with
/// `TIMER_ABSTIME`), so that the time one cycle takes never shifts the ones after it. A cycle that
/// is due already starts at once; a late schedule is caught up, never skipped.
/// The constructing thread asks for a real-time priority (`SCHED_FIFO`, `Priority`), as a
/// controller's task runs, so that other work on the machine delays its cycles less; without the
/// privilege it runs at its normal priority and the report says so.
/// Nothing here allocates after construction, except appending to the optional sample list.
class RealTimePacer {
public:
    /// `samples`, when not null, receives the lateness of every cycle start in microseconds
    /// (reserve it beforehand to keep the loop free of allocations).
    explicit RealTimePacer(std::chrono::microseconds cycleTime, std::vector<double>* samples = nullptr);
    /// Gives the thread its former scheduling back.
    ~RealTimePacer();
    RealTimePacer(const RealTimePacer&) = delete;
    RealTimePacer& operator=(const RealTimePacer&) = delete;

    static constexpr int Priority = 40;

    /// Sleeps until the next cycle is due and records how late it starts.
    void WaitForNextCycle();
    /// Marks the end of the cycle's work: an overrun when it ends after the next cycle's deadline.
    void EndOfCycle();

    const RealTimeReport& Report() const noexcept { return report; }

private:
    timespec Deadline(std::uint64_t cycle) const noexcept;

    RealTimeReport report;
    std::vector<double>* samples;
    timespec start{};
    double sum = 0;
    int formerPolicy = 0;
    int formerPriority = 0;
};

} // namespace VarnixBase::Sim
