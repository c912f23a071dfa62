#include "VarnixBase/Sim/RealTimePacer.hpp"

#include <algorithm>
#include <cerrno>
#include <pthread.h>
#include <sched.h>

#include <fmt/format.h>

namespace VarnixBase::Sim {

namespace {

constexpr std::int64_t NanosecondsPerSecond = 1000000000;

std::int64_t Nanoseconds(const timespec& time) noexcept
{
    return static_cast<std::int64_t>(time.tv_sec) * NanosecondsPerSecond + time.tv_nsec;
}

timespec Now() noexcept
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

} // namespace

RealTimePacer::RealTimePacer(std::chrono::microseconds cycleTime, std::vector<double>* samples) : samples(samples)
{
    report.cycleTime = cycleTime;
    sched_param former{};
    ::pthread_getschedparam(::pthread_self(), &formerPolicy, &former);
    formerPriority = former.sched_priority;
    sched_param wanted{};
    wanted.sched_priority = Priority;
    if (::pthread_setschedparam(::pthread_self(), SCHED_FIFO, &wanted) == 0) {
        report.priority = Priority;
    }
    start = Now();
}

RealTimePacer::~RealTimePacer()
{
    if (report.priority != 0) {
        sched_param former{};
        former.sched_priority = formerPriority;
        ::pthread_setschedparam(::pthread_self(), formerPolicy, &former);
    }
}

timespec RealTimePacer::Deadline(std::uint64_t cycle) const noexcept
{
    std::int64_t due = Nanoseconds(start) + static_cast<std::int64_t>(cycle) * report.cycleTime.count() * 1000;
    timespec deadline{};
    deadline.tv_sec = static_cast<time_t>(due / NanosecondsPerSecond);
    deadline.tv_nsec = static_cast<long>(due % NanosecondsPerSecond);
    return deadline;
}

void RealTimePacer::WaitForNextCycle()
{
    timespec deadline = Deadline(report.cycles);
    // Interrupted by a signal (SIGINT asking the run to stop): sleep the rest, the caller looks at
    // its stop flag after this cycle.
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
    double lateness = static_cast<double>(Nanoseconds(Now()) - Nanoseconds(deadline)) / 1000.0;
    lateness = std::max(lateness, 0.0);
    report.minimum = report.cycles == 0 ? lateness : std::min(report.minimum, lateness);
    report.maximum = std::max(report.maximum, lateness);
    sum += lateness;
    report.cycles += 1;
    report.mean = sum / static_cast<double>(report.cycles);
    std::size_t bucket = 0;
    while (bucket < RealTimeReport::BucketBounds.size() && lateness >= RealTimeReport::BucketBounds[bucket]) {
        ++bucket;
    }
    report.histogram[bucket] += 1;
    if (samples != nullptr) {
        samples->push_back(lateness);
    }
}

void RealTimePacer::EndOfCycle()
{
    if (Nanoseconds(Now()) > Nanoseconds(Deadline(report.cycles))) {
        report.overruns += 1;
    }
}

void WriteRealTimeReport(std::ostream& out, const RealTimeReport& report)
{
    out << fmt::format("real time: {} cycles of {} us, {} overruns; lateness of cycle starts: min {:.1f} us, "
                       "mean {:.1f} us, max {:.1f} us\n",
                       report.cycles, report.cycleTime.count(), report.overruns, report.minimum, report.mean,
                       report.maximum);
    out << (report.priority != 0
                ? fmt::format("cycles ran at real-time priority {} (SCHED_FIFO)\n", report.priority)
                : std::string("cycles ran at normal priority: the system refused a real-time one (run as root or "
                              "grant CAP_SYS_NICE for steadier cycles)\n"));
    out << "lateness          cycles\n";
    double lower = 0;
    for (std::size_t i = 0; i < report.histogram.size(); ++i) {
        std::string range = i < RealTimeReport::BucketBounds.size()
                                ? fmt::format("{:g}-{:g} us", lower, RealTimeReport::BucketBounds[i])
                                : fmt::format(">= {:g} us", lower);
        out << fmt::format("  {:<14}  {:>8}\n", range, report.histogram[i]);
        if (i < RealTimeReport::BucketBounds.size()) {
            lower = RealTimeReport::BucketBounds[i];
        }
    }
}

} // namespace VarnixBase::Sim
