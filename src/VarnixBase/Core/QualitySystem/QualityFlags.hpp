#pragma once

#include <cstdint>

#include "Zon/EnumStrings.hpp"
#include "Zon/Format.hpp"

namespace VarnixBase::Core::QualitySystem {

/// Why a value is not fully trusted: a 32-bit set of reasons, one bit each, except `None` and
/// `OutOfRange` (which is `Overrange` with `Underrange`). Combining ors the flags.
enum class QualityFlags : std::uint32_t {
    None = 0,
    DeviceDefect = 0x00000001,
    PowerFailure = 0x00000002,
    WireBreak = 0x00000004,
    Failure = 0x00000020,
    Overrange = 0x00000040,
    Underrange = 0x00000080,
    OutOfRange = 0x000000C0,
    Overflow = 0x00000100,
    BadReference = 0x00000200,
    Oscillatory = 0x00000400,
    Outdated = 0x00000800,
    Inconsistent = 0x00001000,
    Inaccurate = 0x00002000,
    Source = 0x02000000,
    Blocked = 0x04000000,
    Test = 0x08000000,
    Configuration = 0x10000000,
};

constexpr QualityFlags operator|(QualityFlags a, QualityFlags b) noexcept
{
    return static_cast<QualityFlags>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr QualityFlags operator&(QualityFlags a, QualityFlags b) noexcept
{
    return static_cast<QualityFlags>(static_cast<std::uint32_t>(a) & static_cast<std::uint32_t>(b));
}
constexpr QualityFlags operator^(QualityFlags a, QualityFlags b) noexcept
{
    return static_cast<QualityFlags>(static_cast<std::uint32_t>(a) ^ static_cast<std::uint32_t>(b));
}
constexpr QualityFlags operator~(QualityFlags a) noexcept
{
    return static_cast<QualityFlags>(~static_cast<std::uint32_t>(a));
}
constexpr QualityFlags& operator|=(QualityFlags& a, QualityFlags b) noexcept { return a = a | b; }
constexpr QualityFlags& operator&=(QualityFlags& a, QualityFlags b) noexcept { return a = a & b; }
constexpr QualityFlags& operator^=(QualityFlags& a, QualityFlags b) noexcept { return a = a ^ b; }

/// Text form through the name table: a value that is a name of the table (including
/// `OutOfRange`) prints as that name, any other value as its number.
ZON_ENUM_STREAM_OPERATORS(QualityFlags)

} // namespace VarnixBase::Core::QualitySystem

ZON_DECLARE_ENUM_STRINGS(VarnixBase::Core::QualitySystem::QualityFlags);
ZON_FORMAT_AS_OSTREAM(VarnixBase::Core::QualitySystem::QualityFlags);
