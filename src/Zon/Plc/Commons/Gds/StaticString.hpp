#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "Zon/Plc/Commons/Gds/StaticStringBase.hpp"

namespace Zon::Plc::Commons::Gds {

/// A string of at most `N` units of `C` (`char` or `char16_t`) held inline, in the layout that
/// the controller publishes: `capacity` (N), `length`, then `data` with N + 1 units, of which the
/// ones from `length` on are zero. The type is trivially copyable, so a published string can be
/// read and written as plain memory.
template <int N, class C = char>
class StaticString : public StaticStringBase {
    static_assert(N >= 0 && N <= 0xFFFF, "the capacity of a fixed string is an unsigned 16-bit number");
    static_assert(std::is_same_v<C, char> || std::is_same_v<C, char16_t>, "a fixed string holds char or char16_t");

public:
    using CharType = C;
    static constexpr std::uint16_t Capacity = static_cast<std::uint16_t>(N);

    std::uint16_t capacity = Capacity;
    std::uint16_t length = 0;
    C data[N + 1] = {};

    /// An empty string.
    StaticString() noexcept = default;

    /// The text at `text` up to its first zero unit, cut to `N` units. A null pointer gives an
    /// empty string.
    StaticString(const C* text) noexcept
    {
        if (text == nullptr) {
            return;
        }
        std::size_t count = 0;
        while (count < Capacity && text[count] != C()) {
            data[count] = text[count];
            ++count;
        }
        length = static_cast<std::uint16_t>(count);
    }

    /// The units in use, at most `N` whatever the `length` field says.
    std::size_t Size() const noexcept { return std::min<std::size_t>(length, Capacity); }

    /// Equal when both hold the same units up to their length (capacities may differ).
    template <int M>
    friend bool operator==(const StaticString& a, const StaticString<M, C>& b) noexcept
    {
        std::size_t size = a.Size();
        if (size != b.Size()) {
            return false;
        }
        return std::equal(a.data, a.data + size, b.data);
    }
};

/// True when `StaticString<N, C>` has the published layout: `capacity` at byte 0, `length` at
/// byte 2, `data` at byte 4 with N + 1 units, and the base at the same address as the string.
template <int N, class C>
constexpr bool HasPublishedLayout() noexcept
{
    using S = StaticString<N, C>;
    return std::is_standard_layout_v<S> && std::is_trivially_copyable_v<S> &&
           offsetof(S, capacity) == StaticStringBase::CapacityOffset &&
           offsetof(S, length) == StaticStringBase::LengthOffset &&
           offsetof(S, data) == StaticStringBase::DataOffset &&
           sizeof(S::capacity) == 2 && sizeof(S::length) == 2 &&
           sizeof(S::data) == (static_cast<std::size_t>(N) + 1) * sizeof(C);
}

static_assert(HasPublishedLayout<0, char>());
static_assert(HasPublishedLayout<80, char>());
static_assert(HasPublishedLayout<512, char>());
static_assert(HasPublishedLayout<80, char16_t>());
static_assert(HasPublishedLayout<512, char16_t>());

} // namespace Zon::Plc::Commons::Gds
