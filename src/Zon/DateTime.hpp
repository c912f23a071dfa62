#pragma once

#include <cstdint>

namespace Zon {

/// A point in time as one 64-bit raw value: the top two bits are the kind (0 unspecified, 1 UTC,
/// 2 local) and the other 62 bits count 100-nanosecond ticks since 0001-01-01T00:00:00.
/// `Now()` reads the host clock (see `Zon::Host::Clock`): the real clock by default, or a virtual
/// clock that is set and advanced by hand.
class DateTime {
public:
    enum class Kind : std::uint8_t { Unspecified = 0, Utc = 1, Local = 2 };

    static constexpr std::uint64_t KindShift = 62;
    static constexpr std::uint64_t TicksMask = 0x3FFFFFFFFFFFFFFFull;
    static constexpr std::int64_t TicksPerMicrosecond = 10;
    /// Ticks from 0001-01-01 to 1970-01-01.
    static constexpr std::int64_t UnixEpochTicks = 621355968000000000LL;

    constexpr DateTime() noexcept = default;
    constexpr explicit DateTime(std::uint64_t rawValue) noexcept : value(rawValue) {}

    /// The current time of the host clock, kind UTC.
    static DateTime Now() noexcept;
    static constexpr DateTime FromUnixTimeMicroseconds(std::int64_t microseconds, Kind kind = Kind::Utc) noexcept
    {
        return FromTicks(UnixEpochTicks + microseconds * TicksPerMicrosecond, kind);
    }
    static constexpr DateTime FromTicks(std::int64_t ticks, Kind kind = Kind::Utc) noexcept
    {
        return DateTime((static_cast<std::uint64_t>(ticks) & TicksMask) |
                        (static_cast<std::uint64_t>(kind) << KindShift));
    }

    constexpr std::uint64_t GetValue() const noexcept { return value; }
    constexpr std::int64_t GetTicks() const noexcept { return static_cast<std::int64_t>(value & TicksMask); }
    constexpr Kind GetKind() const noexcept { return static_cast<Kind>(value >> KindShift); }

    /// Microseconds since the Unix epoch, as a signed 64-bit number.
    constexpr std::int64_t ToUnixTimeMicroseconds() const noexcept
    {
        return (GetTicks() - UnixEpochTicks) / TicksPerMicrosecond;
    }

    friend constexpr bool operator==(DateTime a, DateTime b) noexcept { return a.value == b.value; }

private:
    std::uint64_t value = 0;
};

} // namespace Zon
