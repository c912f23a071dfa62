#pragma once

#include <cstdint>

#include <fmt/ostream.h>

#include "Zon/EnumStrings.hpp"

namespace Zon::System::Nm {

/// The type tag of an `RscVariant`: one byte that says what the variant's storage holds.
/// Tags without a name here are passed on unchanged and print as their number.
enum class RscType : std::uint8_t {
    /// A 16-bit unsigned integer in the first two bytes of the storage.
    Uint16 = 7,
    /// Text handed over as a `std::string`, held zero-terminated in the storage. A payload field
    /// declared with one of the zero-terminated string tags takes it over under its own tag.
    StdString = 18,
    /// A zero-terminated string in the storage.
    String = 19,
    /// A zero-terminated string of single-byte characters in the storage.
    AnsiString = 26,
    /// A zero-terminated UTF-8 string in the storage.
    Utf8String = 36,
    /// The variant holds no value.
    None = 255,
};

ZON_ENUM_STREAM_OPERATORS(RscType)

/// True for the tags whose value is a zero-terminated text in the storage (`String`,
/// `AnsiString`, `Utf8String`).
constexpr bool IsZeroTerminatedString(RscType type) noexcept
{
    return type == RscType::String || type == RscType::AnsiString || type == RscType::Utf8String;
}

} // namespace Zon::System::Nm

ZON_DECLARE_ENUM_STRINGS(Zon::System::Nm::RscType);
ZON_FORMAT_AS_OSTREAM(Zon::System::Nm::RscType);
