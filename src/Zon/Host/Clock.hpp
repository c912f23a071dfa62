#pragma once

#include <chrono>
#include <cstdint>

#include "Zon/DateTime.hpp"

namespace Zon::Host {

/// The host clock behind `Zon::DateTime::Now()`. Real by default; switched to a virtual clock, it
/// shows a time that only `Set` and `Advance` change, so that runs are reproducible. Reading it
/// takes no lock and allocates nothing.
class Clock {
public:
    /// Switches to the virtual clock, standing at `start`.
    static void UseVirtual(DateTime start) noexcept;
    /// Switches back to the system's real-time clock.
    static void UseReal() noexcept;
    static bool IsVirtual() noexcept;

    /// Sets the virtual clock (switching to it).
    static void Set(DateTime time) noexcept;
    /// Moves the virtual clock forward (switching to it, from its last time).
    static void Advance(std::chrono::microseconds step) noexcept;

    static DateTime Now() noexcept;
};

} // namespace Zon::Host
