#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace VarnixBase::Commons::Gds {

/// A view of the memory of a fixed-capacity string of the controller, whatever its capacity:
/// an unsigned 16-bit `capacity`, an unsigned 16-bit `length`, then the units of the text
/// (`capacity` + 1 of them, room for the terminator included). A pointer to an adapter is formed
/// from the address of such a string (as variable path resolution gives it); the adapter is
/// never a string of its own, and a copy of it holds the two counts only.
///
/// `C` is the string's unit: `char` for strings of 8-bit units, `char16_t` for 16-bit units. Its
/// common type name (`Zon::CommonTypeName<StaticStringAdapter<char>>()`) is the name under which
/// string ports and connectors meet.
template <class C>
class StaticStringAdapter {
public:
    static_assert(std::is_same_v<C, char> || std::is_same_v<C, char16_t>,
                  "fixed strings have 8-bit (char) or 16-bit (char16_t) units");
    using CharType = C;

    /// Bytes from the start of the string to its first unit.
    static constexpr std::size_t DataOffset = 2 * sizeof(std::uint16_t);

    std::uint16_t GetCapacity() const noexcept { return capacity; }
    std::uint16_t GetLength() const noexcept { return length; }

    /// The text as 8-bit units: for a string of `char` its units, for a string of `char16_t`
    /// the bytes of its units.
    char* GetData() noexcept { return reinterpret_cast<char*>(this) + DataOffset; }
    const char* GetData() const noexcept { return reinterpret_cast<const char*>(this) + DataOffset; }

    /// The text as 16-bit units, for strings of `char16_t`.
    char16_t* GetData16() noexcept
    {
        return reinterpret_cast<char16_t*>(reinterpret_cast<unsigned char*>(this) + DataOffset);
    }
    const char16_t* GetData16() const noexcept
    {
        return reinterpret_cast<const char16_t*>(reinterpret_cast<const unsigned char*>(this) + DataOffset);
    }

    /// The number of units the text can hold, without the terminator.
    std::uint16_t capacity;
    /// The number of units of the text.
    std::uint16_t length;
};

} // namespace VarnixBase::Commons::Gds
