#pragma once

#include <cstdint>
#include <istream>
#include <ostream>

#include <fmt/ostream.h>

namespace Zon::Plc::Commons::Meta {

/// What a controller variable is: a 64-bit flag set. Ports carry one and hand it to the controller
/// when they are published; a `.prog.config` names flags in a port's `attributes`.
enum class StandardAttribute : std::uint64_t {
    None = 0,
    /// Written by the controller's tasks, read by the application.
    Input = 1ull << 0,
    /// Written by the application, read by the controller's tasks.
    Output = 1ull << 1,
    /// Kept across a warm restart of the controller.
    Retain = 1ull << 2,
    /// May not be written from outside (engineering, HMI).
    ReadOnly = 1ull << 3,
    /// Not shown in the controller's variable browsers.
    Hidden = 1ull << 4,
    /// Offered to the controller's data server for HMI and SCADA access.
    Server = 1ull << 5,
    /// Recorded by the controller's data logger.
    Archive = 1ull << 6,
    /// Offered for diagnosis (watch lists, traces).
    Diagnostic = 1ull << 7,
};

constexpr StandardAttribute operator|(StandardAttribute a, StandardAttribute b) noexcept
{
    return static_cast<StandardAttribute>(static_cast<std::uint64_t>(a) | static_cast<std::uint64_t>(b));
}
constexpr StandardAttribute operator&(StandardAttribute a, StandardAttribute b) noexcept
{
    return static_cast<StandardAttribute>(static_cast<std::uint64_t>(a) & static_cast<std::uint64_t>(b));
}
constexpr StandardAttribute operator~(StandardAttribute a) noexcept
{
    return static_cast<StandardAttribute>(~static_cast<std::uint64_t>(a));
}
constexpr StandardAttribute& operator|=(StandardAttribute& a, StandardAttribute b) noexcept { return a = a | b; }
constexpr StandardAttribute& operator&=(StandardAttribute& a, StandardAttribute b) noexcept { return a = a & b; }

/// Writes the flag set: "None" for 0, the name of a single named flag, otherwise the names of the
/// named flags joined by "|", lowest bit first, with any unnamed bits as one hexadecimal number
/// ("0x...") at the end.
std::ostream& operator<<(std::ostream& stream, StandardAttribute attributes);

/// Reads one word and sets `attributes` to the flag of that name ("None" gives 0). A name that is
/// not one of the flags, in exactly this spelling, sets failbit and leaves `attributes` as it was.
std::istream& operator>>(std::istream& stream, StandardAttribute& attributes);

} // namespace Zon::Plc::Commons::Meta

template <>
struct fmt::formatter<Zon::Plc::Commons::Meta::StandardAttribute> : fmt::ostream_formatter {};
