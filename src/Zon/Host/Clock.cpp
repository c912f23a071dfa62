#include "Zon/Host/Clock.hpp"

#include <atomic>

namespace Zon {

namespace {
std::atomic<bool> virtualMode{false};
std::atomic<std::uint64_t> virtualValue{0};
} // namespace

DateTime DateTime::Now() noexcept
{
    return Host::Clock::Now();
}

namespace Host {

void Clock::UseVirtual(DateTime start) noexcept
{
    virtualValue.store(start.GetValue(), std::memory_order_relaxed);
    virtualMode.store(true, std::memory_order_release);
}

void Clock::UseReal() noexcept
{
    virtualMode.store(false, std::memory_order_release);
}

bool Clock::IsVirtual() noexcept
{
    return virtualMode.load(std::memory_order_acquire);
}

void Clock::Set(DateTime time) noexcept
{
    UseVirtual(time);
}

void Clock::Advance(std::chrono::microseconds step) noexcept
{
    DateTime current(virtualValue.load(std::memory_order_relaxed));
    DateTime next = DateTime::FromTicks(current.GetTicks() + step.count() * DateTime::TicksPerMicrosecond,
                                        current.GetKind());
    UseVirtual(next);
}

DateTime Clock::Now() noexcept
{
    if (virtualMode.load(std::memory_order_acquire)) {
        return DateTime(virtualValue.load(std::memory_order_relaxed));
    }
    auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    auto micros = std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count();
    return DateTime::FromUnixTimeMicroseconds(micros);
}

} // namespace Host
} // namespace Zon
