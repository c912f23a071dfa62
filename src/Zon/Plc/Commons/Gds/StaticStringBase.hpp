#pragma once

#include <cstddef>
#include <cstdint>

#include "Zon/BasicString.hpp"

namespace Zon::Plc::Commons::Gds {

/// The untyped side of a fixed-capacity string (`StaticString<N, C>`).
///
/// Every fixed string has the same memory layout, which the controller relies on:
///   offset 0: `capacity` (unsigned 16-bit, N)
///   offset 2: `length`   (unsigned 16-bit, units in use)
///   offset 4: `data`     (N + 1 units of C, zero-terminated)
/// The base holds no field of its own; it reaches the fields of the string it is the base of
/// through that fixed layout, so that code that does not know N can still read and write text.
class StaticStringBase {
public:
    /// Byte offset of `capacity`, `length` and `data` within every fixed string.
    static constexpr std::size_t CapacityOffset = 0;
    static constexpr std::size_t LengthOffset = 2;
    static constexpr std::size_t DataOffset = 4;

    /// The address of `data` as 8-bit units. On a string of `char16_t` this is the byte view of
    /// the 16-bit units.
    char* GetData() noexcept { return reinterpret_cast<char*>(this) + DataOffset; }
    const char* GetData() const noexcept { return reinterpret_cast<const char*>(this) + DataOffset; }

    /// The address of `data` as 16-bit units. Only meaningful on a string of `char16_t`.
    char16_t* GetData16() noexcept { return reinterpret_cast<char16_t*>(GetData()); }
    const char16_t* GetData16() const noexcept { return reinterpret_cast<const char16_t*>(GetData()); }

    /// The `capacity` field of the string.
    std::uint16_t GetCapacity() const noexcept;
    /// The `length` field of the string.
    std::uint16_t GetLength() const noexcept;

    /// A `String` of the 8-bit text at `text`, up to its first zero byte. A null pointer gives an
    /// empty string.
    static String ConvertStaticString(const char* text);

    /// Stores `text` into the `data` of a fixed string of `capacity` units, one byte per unit.
    /// - The text is taken up to its first zero byte, and cut to `capacity` units.
    /// - `destination[count]` and every unit after it up to `destination[capacity]` are set to
    ///   zero, so the result is always terminated and no old text stays behind its end.
    /// - Exactly `capacity + 1` units are written; nothing past `destination[capacity]`.
    /// Returns the number of units of text stored (the new `length`). A null `destination`
    /// writes nothing and returns 0.
    static std::uint16_t AssignStaticString(char* destination, std::uint16_t capacity, const String& text) noexcept;

    /// As above for a string of 16-bit units: each byte of `text` is widened to one unit
    /// (as an unsigned 8-bit number, so bytes 0x80 to 0xFF become U+0080 to U+00FF).
    static std::uint16_t AssignStaticString(char16_t* destination, std::uint16_t capacity, const String& text) noexcept;

protected:
    StaticStringBase() = default;
    StaticStringBase(const StaticStringBase&) = default;
    StaticStringBase& operator=(const StaticStringBase&) = default;
    ~StaticStringBase() = default;
};

} // namespace Zon::Plc::Commons::Gds
