#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "Zon/Plc/Commons/Gds/StaticString.hpp"

namespace VarnixBase::Core::PortSystem {

/// How a port takes, stores and hands out a value of type `T`. Numbers and `bool` are taken by
/// value and stored and returned as they are.
template <class T>
struct PortValueTraits {
    using ArgumentType = T;

    static void Store(T& target, T source) noexcept { target = source; }
    static T Load(const T& source) noexcept { return source; }
};

/// Fixed strings are taken by const reference.
///
/// Storing: the source's units are counted up to its first zero unit (at most its N + 1 units);
/// the new length is the smaller of the target's capacity and the low 16 bits of that count;
/// then all N + 1 units of the target are cleared, and the new length of units is copied. The
/// clearing comes first, so the result is always terminated and no old text stays behind it.
///
/// Loading: a new string with the capacity and length fields of the stored one and its first
/// length + 1 units (the terminator included); the rest of the new string is zero.
///
/// A capacity or length field above N (which only a foreign write to the published memory can
/// cause) is read as N, so that no unit outside the string is ever touched.
template <int N, class C>
struct PortValueTraits<Zon::Plc::Commons::Gds::StaticString<N, C>> {
    using StringType = Zon::Plc::Commons::Gds::StaticString<N, C>;
    using ArgumentType = const StringType&;

    static constexpr std::size_t Units = static_cast<std::size_t>(N) + 1;

    static void Store(StringType& target, const StringType& source) noexcept
    {
        std::size_t sourceLength = 0;
        while (sourceLength < Units && source.data[sourceLength] != C()) {
            ++sourceLength;
        }
        auto lowBits = static_cast<std::uint16_t>(sourceLength);
        auto capacity = std::min<std::uint16_t>(target.capacity, StringType::Capacity);
        std::uint16_t length = std::min(capacity, lowBits);
        std::fill(target.data, target.data + Units, C());
        if (length != 0) {
            std::copy_n(source.data, length, target.data);
        }
        target.length = length;
    }

    static StringType Load(const StringType& source) noexcept
    {
        StringType result;
        result.capacity = source.capacity;
        result.length = source.length;
        std::copy_n(source.data, std::min<std::size_t>(source.length, N) + 1, result.data);
        return result;
    }
};

} // namespace VarnixBase::Core::PortSystem
