#pragma once

#include <cstddef>

#include "Zon/BasicString.hpp"

namespace VarnixBase::Commons::Iec61131 {

/// Conversion of IEC 61131-3 literals into numbers and booleans. A set of static operations
/// without state.
///
/// Each target type has one regular expression (ECMAScript grammar, case-insensitive, built anew
/// on every call under the global locale) that decides whether a text is a literal of that type;
/// the value is then computed from the expression's groups without any further check. So:
/// - a type prefix is syntax only and never narrows the range (`usint#300` is 300);
/// - overflow is no failure: numbers in base 8, 10 and 16 go through a string stream, which
///   stores the largest (or, for a negative decimal, the smallest) value of the type, while base 2
///   is shifted in bit by bit and wraps (in `long`, the 64th digit lands in the sign bit);
/// - `TryParse` answers only whether the text matched. On false the result keeps what it held.
///
/// Accepted forms (letters in any case, white space on both sides allowed, `_` between digits):
/// - `unsigned long`: [`usint#`|`uint#`|`udint#`|`ulint#`] then `123`, `2#1010`, `8#17` or `16#ff`;
/// - `long`: [`sint#`|`int#`|`dint#`|`lint#`] then `-123`/`+123`/`123`, `2#...`, `8#...`, `16#...`;
/// - `bool`: [`bool#`] then `0`, `1`, `false` or `true`;
/// - `double`: [`real#`|`lreal#`] then a signed decimal with `.` and digits on both sides, and an
///   optional exponent (`1.5`, `-1.5e3`). A magnitude too large gives the largest finite value.
///
/// A text is read up to its first NUL. The regular-expression engine matches recursively, one
/// level per character, so a text whose literal part (what is left without the white space at both
/// ends) is longer than `MaxLiteralLength` is refused before it reaches the engine: such a text
/// would otherwise exhaust the stack. No literal of these types needs nearly as many characters.
class Convert {
public:
    Convert() = delete;

    /// The longest literal, white space at both ends not counted, that is looked at.
    static constexpr std::size_t MaxLiteralLength = 1024;

    static bool TryParse(const Zon::String& value, unsigned long& result);
    static bool TryParse(const Zon::String& value, long& result);
    static bool TryParse(const Zon::String& value, bool& result);
    static bool TryParse(const Zon::String& value, double& result);

    /// The value of an unsigned literal; otherwise throws `Zon::System::Commons::ArgumentException`
    /// "Value `{0}` is not an IEC61131 compliant unsigned integer".
    static unsigned long ToUint(const Zon::String& value);
    /// The value of a signed literal; otherwise throws `Zon::System::Commons::ArgumentException`
    /// "Value `{0}` is not an IEC61131 compliant signed integer".
    static long ToInt(const Zon::String& value);
    /// The value of a boolean literal; otherwise throws `Zon::System::Commons::ArgumentException`
    /// "Value `{0}` is not an IEC61131 compliant boolean".
    static bool ToBoolean(const Zon::String& value);
    /// The value of a floating-point literal; otherwise throws
    /// `Zon::System::Commons::ArgumentException` "Value `{0}` is not an IEC61131 compliant floating point".
    static double ToFloat(const Zon::String& value);
};

} // namespace VarnixBase::Commons::Iec61131
