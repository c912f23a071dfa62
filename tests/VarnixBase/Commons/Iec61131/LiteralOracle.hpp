#pragma once

// The literal conversion as regular expressions define it: one ECMAScript expression per target
// type, case-insensitive, searched over the text up to its first NUL; the value then computed from
// the groups through a string stream (bases 8, 10, 16 and the floating-point number) or bit by bit
// (base 2), exactly as the conversion worked before its own matcher replaced the expressions.
// `Convert::TryParse` must give the same answer and the same value for every text; the tests and
// the fuzz target `fuzz_LiteralsOracle` compare the two.
//
// The expressions are compiled once, under the global locale of that moment (the classic one in
// the tests). The engine matches recursively, about one level per character, so a text of a few
// thousand characters exhausts the stack: give the oracle short texts only (a few hundred
// characters), and check longer ones against values computed otherwise.

#include <cstring>
#include <ios>
#include <regex>
#include <sstream>

namespace VarnixTest::LiteralOracle {

namespace Detail {

inline const std::regex& UnsignedExpression()
{
    static const std::regex expression(
        R"re(^\s*(?:(u[sdl]?int)#)?(?:(\d(?:_?\d)*)|(?:2#((?:_?[01])+)|8#((?:_?[0-7])+)|16#((?:_?[0-9a-f])+)))\s*$)re",
        std::regex::icase);
    return expression;
}

inline const std::regex& SignedExpression()
{
    static const std::regex expression(
        R"re(^\s*(?:([sdl]?int)#)?(?:([-+]?\d(?:_?\d)*)|(?:2#((?:_?[01])+)|8#((?:_?[0-7])+)|16#((?:_?[0-9a-f])+)))\s*$)re",
        std::regex::icase);
    return expression;
}

inline const std::regex& BooleanExpression()
{
    static const std::regex expression(R"re(^\s*(?:bool#)?(0|1|false|true)\s*$)re", std::regex::icase);
    return expression;
}

inline const std::regex& FloatExpression()
{
    static const std::regex expression(
        R"re(^\s*(?:(l?real)#)?((?:[-+]?\d(?:_?\d)*)\.\d+(?:_?\d)*(?:e[-+]?\d(?:_?\d)*)?)\s*$)re",
        std::regex::icase);
    return expression;
}

/// Searches the text up to its first NUL with `expression`.
inline bool Match(const char* text, const std::regex& expression, std::cmatch& match)
{
    return std::regex_search(text, text + std::strlen(text), match, expression);
}

inline bool IsFilled(const std::csub_match& group)
{
    return group.matched && group.length() > 0;
}

/// The group's digits without `_`, extracted by a string stream in `base`; the stream's state is
/// not looked at.
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

/// The group's binary digits shifted in one by one, with no check.
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
bool TryParseInteger(const char* text, const std::regex& expression, T& result)
{
    std::cmatch match;
    if (!Match(text, expression, match)) {
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

} // namespace Detail

inline bool TryParse(const char* text, unsigned long& result)
{
    return Detail::TryParseInteger(text, Detail::UnsignedExpression(), result);
}

inline bool TryParse(const char* text, long& result)
{
    return Detail::TryParseInteger(text, Detail::SignedExpression(), result);
}

inline bool TryParse(const char* text, bool& result)
{
    std::cmatch match;
    if (!Detail::Match(text, Detail::BooleanExpression(), match)) {
        return false;
    }
    char first = *match[1].first;
    result = first == 't' || first == 'T' || first == '1';
    return true;
}

inline bool TryParse(const char* text, double& result)
{
    std::cmatch match;
    if (!Detail::Match(text, Detail::FloatExpression(), match)) {
        return false;
    }
    Detail::ExtractThroughStream(match[2], std::dec, result);
    return true;
}

} // namespace VarnixTest::LiteralOracle
