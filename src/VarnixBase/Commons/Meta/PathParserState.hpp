#pragma once

#include <cstdint>
#include <istream>
#include <ostream>

#include <fmt/ostream.h>

#include "VarnixBase/Commons/EnumDictionary.hpp"

namespace VarnixBase::Commons::Meta {

/// Where the walk of a variable path stands.
enum class PathParserState : std::uint8_t {
    /// Reading a member name.
    ParseMembers = 0,
    /// Reading the digits of an index.
    ParseIndex = 1,
    /// Just after a "]": deciding what follows an index.
    ParseChildSwitch = 2,
};

/// The names of `PathParserState`, with the empty text for invalid values. Built while the
/// library loads.
extern const EnumDictionary<PathParserState> PathParserStateDictionary;

/// The name of `value`; throws `Zon::Exception` for a value without a name.
inline const char* GetEnumString(PathParserState value)
{
    return PathParserStateDictionary.GetEnumString(value);
}

/// True and `value` set when `text` is one of the names, exactly.
inline bool TryGetEnumValue(const char* text, PathParserState& value)
{
    return PathParserStateDictionary.TryGetEnumValue(text, value);
}

inline std::ostream& operator<<(std::ostream& stream, PathParserState value)
{
    return PathParserStateDictionary.Write(stream, value);
}

inline std::istream& operator>>(std::istream& stream, PathParserState& value)
{
    return PathParserStateDictionary.Read(stream, value);
}

} // namespace VarnixBase::Commons::Meta

template <>
struct fmt::formatter<VarnixBase::Commons::Meta::PathParserState> : fmt::ostream_formatter {};
