#pragma once

#include "Zon/BasicString.hpp"

namespace VarnixBase::Commons::Iec61131 {

/// Conversion of IEC 61131-3 literals into numbers and booleans. A set of static operations
/// without state.
///
/// Each target type has its grammar, matched in one pass from the left without recursion or
/// allocation (a floating-point number with `_` separators of more than 128 characters is copied
/// once), in time linear in the length of the text, for any length. Letters match in either case,
/// digits and white space are those of ASCII. The value is computed from the digits the grammar
/// took, without any further check. So:
/// - a type prefix is syntax only and never narrows the range (`usint#300` is 300);
/// - overflow is no failure: numbers in base 8, 10 and 16 give the largest (or, for a negative
///   decimal, the smallest) value of the type, while base 2 is shifted in bit by bit and wraps
///   (in `long`, the 64th digit lands in the sign bit);
/// - `TryParse` answers only whether the text is a literal. On false the result keeps what it held.
///
/// Accepted forms (letters in any case, white space on both sides allowed, `_` between digits):
/// - `unsigned long`: [`usint#`|`uint#`|`udint#`|`ulint#`] then `123`, `2#1010`, `8#17` or `16#ff`;
/// - `long`: [`sint#`|`int#`|`dint#`|`lint#`] then `-123`/`+123`/`123`, `2#...`, `8#...`, `16#...`;
/// - `bool`: [`bool#`] then `0`, `1`, `false` or `true`;
/// - `double`: [`real#`|`lreal#`] then a signed decimal with `.` and digits on both sides, and an
///   optional exponent (`1.5`, `-1.5e3`), correctly rounded. A magnitude too large gives the
///   largest finite value of its sign, one too small for the smallest subnormal a zero of its sign.
///
/// A text is read up to its first NUL. White space is space, tab, line feed, vertical tab, form
/// feed and carriage return, whatever the global locale.
class Convert {
public:
    Convert() = delete;

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
