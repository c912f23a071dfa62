#pragma once

#include <cstdint>

#include "Zon/EnumStrings.hpp"
#include "Zon/Format.hpp"

namespace VarnixBase::Core::Types {

/// The status bits that a field device on the network reports about its connection, as one
/// unsigned 8-bit value. Only the single bits have names; a combination prints as its number.
enum class PnDeviceState : std::uint8_t {
    None = 0,
    /// The device is the primary one of a redundant pair.
    IS_PRIMARY = 1,
    /// The application relation to the device is established and valid.
    AR_VALID = 4,
    /// The device's application is running.
    APPL_RUN = 16,
    /// The device reports no diagnosis.
    PN_NO_DIAG = 32,
};

constexpr PnDeviceState operator|(PnDeviceState a, PnDeviceState b) noexcept
{
    return static_cast<PnDeviceState>(static_cast<std::uint8_t>(a) | static_cast<std::uint8_t>(b));
}
constexpr PnDeviceState operator&(PnDeviceState a, PnDeviceState b) noexcept
{
    return static_cast<PnDeviceState>(static_cast<std::uint8_t>(a) & static_cast<std::uint8_t>(b));
}
constexpr PnDeviceState operator~(PnDeviceState a) noexcept
{
    return static_cast<PnDeviceState>(static_cast<std::uint8_t>(~static_cast<std::uint8_t>(a)));
}
constexpr PnDeviceState& operator|=(PnDeviceState& a, PnDeviceState b) noexcept { return a = a | b; }
constexpr PnDeviceState& operator&=(PnDeviceState& a, PnDeviceState b) noexcept { return a = a & b; }

/// True when every bit of `bits` is set in `state`.
constexpr bool HasBits(PnDeviceState state, PnDeviceState bits) noexcept
{
    return (state & bits) == bits;
}

/// Text form through the name table: a named value prints as its name, any other value (such as
/// a combination of bits) as its number; reading takes exactly one name.
ZON_ENUM_STREAM_OPERATORS(PnDeviceState)

} // namespace VarnixBase::Core::Types

ZON_DECLARE_ENUM_STRINGS(VarnixBase::Core::Types::PnDeviceState);
ZON_FORMAT_AS_OSTREAM(VarnixBase::Core::Types::PnDeviceState);
