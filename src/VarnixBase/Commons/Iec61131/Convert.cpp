#include "VarnixBase/Commons/Iec61131/Convert.hpp"

#include <cstring>
#include <ios>
#include <regex>
#include <sstream>

#include "Zon/System/Commons/ArgumentException.hpp"

namespace VarnixBase::Commons::Iec61131 {

using Zon::System::Commons::ArgumentException;

namespace {

constexpr const char* unsignedPattern =
    R"re(^\s*(?:(u[sdl]?int)#)?(?:(\d(?:_?\d)*)|(?:2#((?:_?[01])+)|8#((?:_?[0-7])+)|16#((?:_?[0-9a-f])+)))\s*$)re";
constexpr const char* signedPattern =
    R"re(^\s*(?:([sdl]?int)#)?(?:([-+]?\d(?:_?\d)*)|(?:2#((?:_?[01])+)|8#((?:_?[0-7])+)|16#((?:_?[0-9a-f])+)))\s*$)re";
constexpr const char* booleanPattern = R"re(^\s*(?:bool#)?(0|1|false|true)\s*$)re";
constexpr const char* floatPattern =
    R"re(^\s*(?:(l?real)#)?((?:[-+]?\d(?:_?\d)*)\.\d+(?:_?\d)*(?:e[-+]?\d(?:_?\d)*)?)\s*$)re";

/// White space as every locale has it; the expressions accept it at both ends.
bool IsBlank(char unit) noexcept
{
    return unit == ' ' || unit == '\t' || unit == '\n' || unit == '\v' || unit == '\f' || unit == '\r';
}

/// Matches the text, up to its first NUL, against `pattern` as a whole. White space at both ends
/// is cut off first, which changes nothing about the match since the expressions take any amount
/// of it there, and keeps the engine's recursion to the literal itself. A literal longer than
/// `Convert::MaxLiteralLength` does not match.
bool Match(const Zon::String& value, const char* pattern, std::cmatch& match)
{
    const char* first = value.CStr();
    const char* last = first + std::strlen(first);
    while (first != last && IsBlank(*first)) {
        ++first;
    }
    while (last != first && IsBlank(*(last - 1))) {
        --last;
    }
    if (static_cast<std::size_t>(last - first) > Convert::MaxLiteralLength) {
        return false;
    }
    std::regex expression(pattern, std::regex::icase);
    return std::regex_search(first, last, match, expression);
}

bool IsFilled(const std::csub_match& group) noexcept
{
    return group.matched && group.length() > 0;
}

/// Reads the group's digits, without `_`, through a string stream in `base`. The stream's state
/// is not looked at: out of range, the extraction stores the type's largest or smallest value.
template <class T>
void ExtractThroughStream(const std::csub_match& group, std::ios_base& (*base)(std::ios_base&), T& result)
{
    std::stringstream stream;
    stream << base;
    for (const char* unit = group.first; unit != group.second; ++unit) {
        if (*unit != '_') {
            stream << *unit;
        }
    }
    stream >> result;
}

/// Shifts the group's binary digits in one by one, without any check: digits beyond the 64th
/// push the oldest bits out. The work is done on the unsigned pattern so that a digit reaching
/// the sign bit of a signed result is well defined.
template <class T>
void ExtractBinary(const std::csub_match& group, T& result)
{
    unsigned long bits = 0;
    for (const char* unit = group.first; unit != group.second; ++unit) {
        if (*unit != '_') {
            bits = (bits << 1) | (*unit == '1' ? 1ul : 0ul);
        }
    }
    result = static_cast<T>(bits);
}

template <class T>
bool TryParseInteger(const Zon::String& value, const char* pattern, T& result)
{
    std::cmatch match;
    if (!Match(value, pattern, match)) {
        return false;
    }
    if (IsFilled(match[2])) {
        ExtractThroughStream(match[2], std::dec, result);
    } else if (IsFilled(match[3])) {
        ExtractBinary(match[3], result);
    } else if (IsFilled(match[4])) {
        ExtractThroughStream(match[4], std::oct, result);
    } else if (IsFilled(match[5])) {
        ExtractThroughStream(match[5], std::hex, result);
    } else {
        return false;
    }
    return true;
}

} // namespace

bool Convert::TryParse(const Zon::String& value, unsigned long& result)
{
    return TryParseInteger(value, unsignedPattern, result);
}

bool Convert::TryParse(const Zon::String& value, long& result)
{
    return TryParseInteger(value, signedPattern, result);
}

bool Convert::TryParse(const Zon::String& value, bool& result)
{
    std::cmatch match;
    if (!Match(value, booleanPattern, match)) {
        return false;
    }
    char first = *match[1].first;
    result = first == 't' || first == 'T' || first == '1';
    return true;
}

bool Convert::TryParse(const Zon::String& value, double& result)
{
    std::cmatch match;
    if (!Match(value, floatPattern, match)) {
        return false;
    }
    ExtractThroughStream(match[2], std::dec, result);
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
