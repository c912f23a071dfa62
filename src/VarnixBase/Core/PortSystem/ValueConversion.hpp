#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace VarnixBase::Core::PortSystem {

/// Plain value conversion between the numeric port types, as connectors apply it. Nothing
/// saturates and nothing reports a value that does not fit:
/// - integer to integer: sign- or zero-extended when wider, the low bits kept when narrower;
/// - anything to `bool`: true when not zero (NaN is true, -0.0 is false); `bool` to a number: 0 or 1;
/// - integer to floating point: rounded to the nearest representable value;
/// - floating point to `signed char`, `unsigned char`, `short`, `unsigned short`, `int`: truncated
///   toward zero to a signed 32-bit number, then the low bits kept;
/// - floating point to `unsigned int`, `long`: truncated toward zero to a signed 64-bit number, then
///   the low bits kept;
/// - floating point to `unsigned long`: truncated over the full unsigned range (from 2^63 up:
///   subtract 2^63, truncate, flip the top bit);
/// - `float` to `double` exact, `double` to `float` rounded to nearest.
/// A floating-point value outside the range of the intermediate integer (or NaN) gives what the
/// processor's truncating conversion gives for it: the "integer indefinite" value, the smallest
/// number of that width. The language leaves such a conversion undefined, so it is spelled out here
/// instead of left to a cast. Likewise a `double` beyond the range of `float` becomes an infinity.
namespace ValueConversion {

/// Truncation toward zero into a signed integer of width `Int`, with the processor's answer for
/// values out of range and NaN.
template <class Int, class F>
constexpr Int Truncate(F value) noexcept
{
    static_assert(std::is_floating_point_v<F> && std::is_signed_v<Int>);
    constexpr long double lower = static_cast<long double>(std::numeric_limits<Int>::min()) - 1.0L;
    constexpr long double upper = -static_cast<long double>(std::numeric_limits<Int>::min());
    long double wide = static_cast<long double>(value);
    if (!(wide > lower && wide < upper)) {
        return std::numeric_limits<Int>::min();
    }
    return static_cast<Int>(value);
}

template <class F>
constexpr std::uint64_t TruncateUnsigned64(F value) noexcept
{
    constexpr F twoTo63 = static_cast<F>(9223372036854775808.0);
    if (value >= twoTo63) {
        return static_cast<std::uint64_t>(Truncate<std::int64_t>(value - twoTo63)) ^ (1ull << 63);
    }
    return static_cast<std::uint64_t>(Truncate<std::int64_t>(value));
}

} // namespace ValueConversion

template <class O, class I>
constexpr O ConvertValue(I value) noexcept
{
    static_assert(std::is_arithmetic_v<O> && std::is_arithmetic_v<I>);
    if constexpr (std::is_same_v<O, I>) {
        return value;
    } else if constexpr (std::is_same_v<O, bool>) {
        return value != 0;
    } else if constexpr (std::is_floating_point_v<I> && std::is_integral_v<O>) {
        if constexpr (std::is_same_v<O, unsigned long>) {
            return static_cast<O>(ValueConversion::TruncateUnsigned64(value));
        } else if constexpr (sizeof(O) < 4 || std::is_same_v<O, int>) {
            return static_cast<O>(ValueConversion::Truncate<std::int32_t>(value));
        } else {
            return static_cast<O>(ValueConversion::Truncate<std::int64_t>(value));
        }
    } else if constexpr (std::is_same_v<O, float> && std::is_same_v<I, double>) {
        if (std::isfinite(value) && std::fabs(value) > static_cast<double>(std::numeric_limits<float>::max())) {
            // Beyond the largest float: round-to-nearest gives the infinity of that sign, unless the
            // value still rounds down to the largest finite float.
            constexpr double halfUlpAboveMax = 3.4028235677973366e38; // (2 - 2^-24) * 2^127
            if (std::fabs(value) < halfUlpAboveMax) {
                return std::copysign(std::numeric_limits<float>::max(), static_cast<float>(value > 0 ? 1 : -1));
            }
            return value > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
        }
        return static_cast<float>(value);
    } else {
        return static_cast<O>(value);
    }
}

/// The value a scale connector stores when it would divide by a zero gain: the largest value of
/// the output type; positive infinity for `float`, the largest finite value for `double`.
template <class O>
constexpr O ScaleLimit() noexcept
{
    if constexpr (std::is_same_v<O, float>) {
        return std::numeric_limits<float>::infinity();
    } else {
        return std::numeric_limits<O>::max();
    }
}

} // namespace VarnixBase::Core::PortSystem
