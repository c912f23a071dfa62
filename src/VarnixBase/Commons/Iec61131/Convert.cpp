#include "VarnixBase/Commons/Iec61131/Convert.hpp"

#include <array>
#include <cfloat>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <system_error>

#include "Zon/System/Commons/ArgumentException.hpp"

namespace VarnixBase::Commons::Iec61131 {

using Zon::System::Commons::ArgumentException;

namespace {

// Every literal is read in one pass from the left over the C string of the value, so a text ends at
// its first NUL: no character class below takes NUL, and each step stops at it. Nothing is
// recursive and nothing is allocated, except the copy of a floating-point number with separators
// that does not fit the buffer on the stack.

/// ASCII white space: space, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsBlank(char unit) noexcept
{
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

constexpr bool IsDigit(char unit) noexcept
{
    return unit >= '0' && unit <= '9';
}

/// The ASCII letter in lower case; any other byte as it is.
constexpr char Lower(char unit) noexcept
{
    return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit - 'A' + 'a') : unit;
}

/// The value of a digit in `Base` (2, 8 or 16; letters in either case), or -1.
template <unsigned Base>
constexpr int DigitValue(char unit) noexcept
{
    auto digit = static_cast<unsigned>(static_cast<unsigned char>(unit)) - '0';
    if constexpr (Base == 16) {
        if (digit >= 10) {
            // Setting bit 5 turns an upper-case letter into its lower case, and keeps a lower-case one.
            auto letter = (static_cast<unsigned>(static_cast<unsigned char>(unit)) | 0x20u) - 'a';
            digit = letter < 6 ? letter + 10 : Base;
        }
    }
    return digit < Base ? static_cast<int>(digit) : -1;
}

const char* SkipBlanks(const char* at) noexcept
{
    while (IsBlank(*at)) {
        ++at;
    }
    return at;
}

/// True when only white space follows `at` up to the end of the text.
bool OnlyBlanksFollow(const char* at) noexcept
{
    return *SkipBlanks(at) == '\0';
}

/// Takes `word` (lower case, no NUL) at `at` in either case and moves past it.
bool TakeWord(const char*& at, std::string_view word) noexcept
{
    for (std::size_t index = 0; index < word.size(); ++index) {
        if (Lower(at[index]) != word[index]) {
            return false;
        }
    }
    at += word.size();
    return true;
}

/// Takes a decimal digit run, a digit followed by digits that may each have one `_` before them,
/// and moves past it. Adds each digit to `magnitude` and sets `overflow` once it would pass
/// `limit`. Returns false when no digit stands at `at`. A `_` that no digit follows ends the run
/// in front of it.
bool TakeDecimalRun(const char*& at, unsigned long limit, unsigned long& magnitude, bool& overflow) noexcept
{
    if (!IsDigit(*at)) {
        return false;
    }
    const unsigned long cutoff = limit / 10;
    const unsigned long lastDigit = limit % 10;
    for (;;) {
        auto digit = static_cast<unsigned long>(*at - '0');
        if (magnitude > cutoff || (magnitude == cutoff && digit > lastDigit)) {
            overflow = true;
        } else {
            magnitude = magnitude * 10 + digit;
        }
        if (IsDigit(at[1])) {
            at += 1;
        } else if (at[1] == '_' && IsDigit(at[2])) {
            at += 2;
        } else {
            ++at;
            return true;
        }
    }
}

/// Takes the digits of a based number (each digit may have one `_` before it, at least one digit)
/// and moves past them. Base 2 shifts each digit in without any check, so that digits beyond the
/// 64th push the oldest out; bases 8 and 16 stop at `Limit` and set `overflow`. The base and the
/// limit are constants, so that the check per digit is a comparison with a constant.
template <unsigned Base, unsigned long Limit>
bool TakeBasedRun(const char*& at, unsigned long& magnitude, bool& overflow) noexcept
{
    constexpr unsigned long cutoff = Limit / Base;
    constexpr unsigned long lastDigit = Limit % Base;
    const char* cursor = at;
    for (;;) {
        const char* digitAt = *cursor == '_' ? cursor + 1 : cursor;
        int digit = DigitValue<Base>(*digitAt);
        if (digit < 0) {
            break;
        }
        cursor = digitAt + 1;
        auto value = static_cast<unsigned long>(digit);
        if constexpr (Base == 2) {
            magnitude = (magnitude << 1) | value;
        } else if (magnitude > cutoff || (magnitude == cutoff && value > lastDigit)) {
            overflow = true;
        } else {
            magnitude = magnitude * Base + value;
        }
    }
    bool any = cursor != at;
    at = cursor;
    return any;
}

/// The number of an integer literal, once its type prefix is behind `at`: a decimal number (with
/// a sign when `T` is signed) or `2#`, `8#`, `16#` and digits of that base, then only white space. Out
/// of range, bases 8, 10 and 16 give the largest value of the type, or for a negative decimal the
/// smallest; base 2 wraps. `result` is written only when the text is a literal.
template <class T>
bool TakeIntegerBody(const char* at, T& result) noexcept
{
    constexpr bool isSigned = std::numeric_limits<T>::is_signed;
    constexpr auto largest = static_cast<unsigned long>(std::numeric_limits<T>::max());
    unsigned long magnitude = 0;
    bool overflow = false;
    bool negative = false;
    bool wraps = false;
    bool taken = false;
    if (at[0] == '2' && at[1] == '#') {
        at += 2;
        wraps = true;
        taken = TakeBasedRun<2, largest>(at, magnitude, overflow);
    } else if (at[0] == '8' && at[1] == '#') {
        at += 2;
        taken = TakeBasedRun<8, largest>(at, magnitude, overflow);
    } else if (at[0] == '1' && at[1] == '6' && at[2] == '#') {
        at += 3;
        taken = TakeBasedRun<16, largest>(at, magnitude, overflow);
    } else {
        if constexpr (isSigned) {
            negative = *at == '-';
            if (*at == '-' || *at == '+') {
                ++at;
            }
        }
        unsigned long limit = negative ? largest + 1 : largest;
        taken = TakeDecimalRun(at, limit, magnitude, overflow);
    }
    if (!taken) {
        return false;
    }
    if (!OnlyBlanksFollow(at)) {
        return false;
    }
    if (wraps) {
        result = static_cast<T>(magnitude);
    } else if (overflow) {
        result = negative ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
    } else {
        result = static_cast<T>(negative ? 0ul - magnitude : magnitude);
    }
    return true;
}

/// A floating-point literal's number as its digits are read: the first 19 significant digits as an
/// integer, and the power of ten that scales them. When every digit beyond the 19th is a zero,
/// the number is exactly `significand` times ten to the power `scale` plus the exponent.
struct DecimalNumber {
    std::uint64_t significand = 0;
    int digits = 0;          // significant digits in `significand`, at most 19
    long scale = 0;          // minus the digits taken after the point, plus the zeros dropped before it
    bool inexact = false;    // a digit other than zero was dropped beyond the 19th
    bool separated = false;  // a `_` stands in the number
};

/// Takes a decimal digit run (a digit, then digits that may each have one `_` before them) of the
/// integer part or, with `fraction`, of the fraction, and adds its digits to `number`. Returns
/// false when no digit stands at `at`.
bool TakeSignificantRun(const char*& at, DecimalNumber& number, bool fraction) noexcept
{
    if (!IsDigit(*at)) {
        return false;
    }
    for (;;) {
        auto digit = static_cast<std::uint64_t>(*at - '0');
        if (number.significand == 0 && digit == 0) {
            number.scale -= fraction ? 1 : 0;
        } else if (number.digits < 19) {
            number.significand = number.significand * 10 + digit;
            ++number.digits;
            number.scale -= fraction ? 1 : 0;
        } else {
            number.inexact = number.inexact || digit != 0;
            number.scale += fraction ? 0 : 1;
        }
        if (IsDigit(at[1])) {
            at += 1;
        } else if (at[1] == '_' && IsDigit(at[2])) {
            number.separated = true;
            at += 2;
        } else {
            ++at;
            return true;
        }
    }
}

/// Takes the decimal digit run of an exponent and its value, which stops growing far beyond any
/// exponent a `double` reaches.
bool TakeExponentRun(const char*& at, long& exponent, bool& separated) noexcept
{
    if (!IsDigit(*at)) {
        return false;
    }
    constexpr long bound = 1L << 40;
    for (;;) {
        if (exponent < bound) {
            exponent = exponent * 10 + (*at - '0');
        }
        if (IsDigit(at[1])) {
            at += 1;
        } else if (at[1] == '_' && IsDigit(at[2])) {
            separated = true;
            at += 2;
        } else {
            ++at;
            return true;
        }
    }
}

/// The powers of ten that a `double` holds exactly.
constexpr std::array<double, 23> exactPowersOfTen = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                     1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                     1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// True where one multiplication or division of `double`s is rounded once, to the nearest value:
/// then an integer of at most 53 bits times or divided by an exact power of ten is the correctly
/// rounded value of the decimal number.
constexpr bool singleRounding = std::numeric_limits<double>::is_iec559 && FLT_EVAL_METHOD == 0;

/// The magnitude of `number` scaled by `power`, when one exact operation gives it correctly
/// rounded: a significand of at most 2 to the 53rd (exact as a `double`) and a power of ten of
/// at most 22 either way. False otherwise.
bool TryExactMagnitude(const DecimalNumber& number, long power, double& magnitude) noexcept
{
    if (number.significand == 0) {
        magnitude = 0.0;
        return true;
    }
    if (!singleRounding || number.inexact || number.significand > (std::uint64_t{1} << 53) || power < -22 ||
        power > 22) {
        return false;
    }
    auto significand = static_cast<double>(number.significand);
    magnitude = power < 0 ? significand / exactPowersOfTen[static_cast<std::size_t>(-power)]
                          : significand * exactPowersOfTen[static_cast<std::size_t>(power)];
    return true;
}

/// The decimal exponent of the leading digit of a number in the form the floating-point literal
/// checked (sign, digits, `.`, digits, optional exponent, `_` separators), counted with saturation
/// far beyond any exponent a `double` reaches. Only its sign is used: it tells a number too large
/// from one too small for a `double`.
long LeadingExponent(const char* first, const char* last) noexcept
{
    constexpr long bound = 1L << 40;
    long position = 0;
    bool seenNonZero = false;
    bool inFraction = false;
    const char* at = first;
    for (; at != last && Lower(*at) != 'e'; ++at) {
        if (*at == '.') {
            inFraction = true;
        } else if (IsDigit(*at)) {
            if (!seenNonZero && *at != '0') {
                seenNonZero = true;
                position = inFraction ? position - 1 : 0;
            } else if (!seenNonZero && inFraction) {
                --position;
            } else if (seenNonZero && !inFraction && position < bound) {
                ++position;
            }
        }
    }
    long exponent = 0;
    bool negative = false;
    for (; at != last; ++at) {
        if (*at == '-') {
            negative = true;
        } else if (IsDigit(*at) && exponent < bound) {
            exponent = exponent * 10 + (*at - '0');
        }
    }
    return position + (negative ? -exponent : exponent);
}

/// Converts the checked number in [first, last), without its `_`, to a `double` the way the
/// C library reads it in the classic locale, correctly rounded. A magnitude too large for a
/// `double` gives the largest finite value of its sign, one too small a zero of its sign.
double ToDouble(const char* first, const char* last, bool separated)
{
    bool negative = *first == '-';
    const char* digits = (*first == '-' || *first == '+') ? first + 1 : first;
    std::array<char, 128> buffer;
    std::string heap;
    const char* begin = digits;
    const char* end = last;
    if (separated) {
        char* out = buffer.data();
        if (static_cast<std::size_t>(last - digits) > buffer.size()) {
            heap.resize(static_cast<std::size_t>(last - digits));
            out = heap.data();
        }
        begin = out;
        for (const char* at = digits; at != last; ++at) {
            if (*at != '_') {
                *out++ = *at;
            }
        }
        end = out;
    }
    double magnitude = 0.0;
    auto [stop, error] = std::from_chars(begin, end, magnitude, std::chars_format::general);
    static_cast<void>(stop);
    if (error == std::errc::result_out_of_range) {
        magnitude = LeadingExponent(first, last) > 0 ? std::numeric_limits<double>::max() : 0.0;
    }
    return negative ? -magnitude : magnitude;
}

} // namespace

bool Convert::TryParse(const Zon::String& value, unsigned long& result)
{
    const char* at = SkipBlanks(value.CStr());
    if (Lower(*at) == 'u') {
        const char* prefix = at + 1;
        char size = Lower(*prefix);
        if (size == 's' || size == 'd' || size == 'l') {
            ++prefix;
        }
        if (!TakeWord(prefix, "int#")) {
            return false;
        }
        at = prefix;
    }
    return TakeIntegerBody(at, result);
}

bool Convert::TryParse(const Zon::String& value, long& result)
{
    const char* at = SkipBlanks(value.CStr());
    const char* prefix = at;
    char size = Lower(*prefix);
    if (size == 's' || size == 'd' || size == 'l') {
        ++prefix;
    }
    if (TakeWord(prefix, "int#")) {
        at = prefix;
    }
    return TakeIntegerBody(at, result);
}

bool Convert::TryParse(const Zon::String& value, bool& result)
{
    const char* at = SkipBlanks(value.CStr());
    TakeWord(at, "bool#");
    bool truth = false;
    if (*at == '0' || *at == '1') {
        truth = *at == '1';
        ++at;
    } else if (TakeWord(at, "true")) {
        truth = true;
    } else if (!TakeWord(at, "false")) {
        return false;
    }
    if (!OnlyBlanksFollow(at)) {
        return false;
    }
    result = truth;
    return true;
}

bool Convert::TryParse(const Zon::String& value, double& result)
{
    const char* at = SkipBlanks(value.CStr());
    const char* prefix = at;
    if (Lower(*prefix) == 'l') {
        ++prefix;
    }
    if (TakeWord(prefix, "real#")) {
        at = prefix;
    }
    const char* first = at;
    bool negative = *at == '-';
    if (*at == '-' || *at == '+') {
        ++at;
    }
    DecimalNumber number;
    if (!TakeSignificantRun(at, number, false) || *at != '.') {
        return false;
    }
    ++at;
    if (!TakeSignificantRun(at, number, true)) {
        return false;
    }
    long exponent = 0;
    if (Lower(*at) == 'e') {
        ++at;
        bool negativeExponent = *at == '-';
        if (*at == '-' || *at == '+') {
            ++at;
        }
        if (!TakeExponentRun(at, exponent, number.separated)) {
            return false;
        }
        exponent = negativeExponent ? -exponent : exponent;
    }
    if (!OnlyBlanksFollow(at)) {
        return false;
    }
    double magnitude = 0.0;
    if (TryExactMagnitude(number, number.scale + exponent, magnitude)) {
        result = negative ? -magnitude : magnitude;
    } else {
        result = ToDouble(first, at, number.separated);
    }
    return true;
}

unsigned long Convert::ToUint(const Zon::String& value)
{
    unsigned long result = 0;
    if (!TryParse(value, result)) {
        throw ArgumentException("Value `{0}` is not an IEC61131 compliant unsigned integer", value);
    }
    return result;
}

long Convert::ToInt(const Zon::String& value)
{
    long result = 0;
    if (!TryParse(value, result)) {
        throw ArgumentException("Value `{0}` is not an IEC61131 compliant signed integer", value);
    }
    return result;
}

bool Convert::ToBoolean(const Zon::String& value)
{
    bool result = false;
    if (!TryParse(value, result)) {
        throw ArgumentException("Value `{0}` is not an IEC61131 compliant boolean", value);
    }
    return result;
}

double Convert::ToFloat(const Zon::String& value)
{
    double result = 0.0;
    if (!TryParse(value, result)) {
        throw ArgumentException("Value `{0}` is not an IEC61131 compliant floating point", value);
    }
    return result;
}

} // namespace VarnixBase::Commons::Iec61131
