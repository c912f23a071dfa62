#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>

#include <fmt/ostream.h>

namespace Zon::Plc::Commons {

/// A data type code as the controller's meta data holds it. The low 8 bits name the base type;
/// the bits above carry flags (see `DataType`). A `DataTypeEnum` keeps all 32 bits it is given,
/// so a code with flags left in it is a code that names no base type.
class DataTypeEnum {
public:
    /// The base type codes. Codes from `FirstUserType` to `LastUserType` are user types
    /// (structures), numbered by the library that describes them.
    enum Code : std::uint32_t {
        None = 0,
        Boolean = 3,
        UInt8 = 4,
        Int8 = 5,
        Char8 = 6,
        Char16 = 7,
        UInt16 = 8,
        Int16 = 9,
        UInt32 = 10,
        Int32 = 11,
        UInt64 = 12,
        Int64 = 13,
        Float32 = 14,
        Float64 = 15,
        /// A fixed-capacity string of 8-bit units.
        StaticString = 42,
        /// A fixed-capacity string of 16-bit units.
        StaticWString = 46,
        FirstUserType = 65,
        LastUserType = 254,
    };

    constexpr DataTypeEnum() noexcept = default;
    constexpr DataTypeEnum(std::uint32_t value) noexcept : value(value) {}

    constexpr std::uint32_t GetValue() const noexcept { return value; }
    constexpr operator std::uint32_t() const noexcept { return value; }

    /// The low 8 bits: the base type without flags.
    constexpr DataTypeEnum GetBaseType() const noexcept { return DataTypeEnum(value & 0xFFu); }

    /// True for the codes of user types (65 to 254), judged by the low 8 bits.
    constexpr bool IsUserType() const noexcept
    {
        auto base = value & 0xFFu;
        return base >= FirstUserType && base <= LastUserType;
    }

    /// The size in bytes of the base type (judged by the low 8 bits); 0 for codes whose size is
    /// not fixed by the code alone (none, strings, user types and unknown codes).
    std::size_t GetSize() const noexcept;

    /// The name of a base type code such as "Int32", or null for a value that has none
    /// (flags included).
    const char* GetName() const noexcept;

private:
    std::uint32_t value = None;
};

/// Writes the code's name ("Float64"), or its decimal number when the value has no name.
std::ostream& operator<<(std::ostream& stream, DataTypeEnum code);

} // namespace Zon::Plc::Commons

template <>
struct fmt::formatter<Zon::Plc::Commons::DataTypeEnum> : fmt::ostream_formatter {};
