#pragma once

#include <cstdint>
#include <istream>
#include <ostream>

#include <fmt/ostream.h>

#include "VarnixBase/Commons/EnumDictionary.hpp"

namespace VarnixBase::Commons::Meta {

/// How the conditions of a data filter combine.
enum class FilterCombine : std::uint8_t {
    None = 0,
    Or = 1,
    And = 2,
    Not = 4,
};

/// The names of `FilterCombine` ("None", "Or", "And", "Not"), with the empty text for invalid
/// values. Built while the library loads.
extern const EnumDictionary<FilterCombine> FilterCombineDictionary;

/// The name of `value`; throws `Zon::Exception` for a value without a name (such as 3).
inline const char* GetEnumString(FilterCombine value)
{
    return FilterCombineDictionary.GetEnumString(value);
}

/// True and `value` set when `text` is one of the names, exactly.
inline bool TryGetEnumValue(const char* text, FilterCombine& value)
{
    return FilterCombineDictionary.TryGetEnumValue(text, value);
}

inline std::ostream& operator<<(std::ostream& stream, FilterCombine value)
{
    return FilterCombineDictionary.Write(stream, value);
}

inline std::istream& operator>>(std::istream& stream, FilterCombine& value)
{
    return FilterCombineDictionary.Read(stream, value);
}

} // namespace VarnixBase::Commons::Meta

template <>
struct fmt::formatter<VarnixBase::Commons::Meta::FilterCombine> : fmt::ostream_formatter {};
