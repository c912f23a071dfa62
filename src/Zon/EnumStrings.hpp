#pragma once

#include <cstring>
#include <istream>
#include <map>
#include <ostream>
#include <string>
#include <type_traits>

namespace Zon {

/// The name table of an enumeration: a map from value to name, defined once per enumeration
/// (`template <> const std::map<E, const char*> Zon::EnumStrings<E>::Values = {...};`) in the
/// source file of the library that owns the enumeration, so it is filled while that library loads.
template <class T>
struct EnumStrings {
    static const std::map<T, const char*> Values;
};

/// The name of `value`. A value outside the table raises `std::out_of_range` ("map::at").
template <class T>
const char* GetEnumString(T value)
{
    return EnumStrings<T>::Values.at(value);
}

/// Walks the table in ascending value order and compares names with `strcmp`, exactly and
/// case-sensitively. True and `value` set on a match; false and `value` untouched otherwise.
template <class T>
bool TryGetEnumValue(const char* name, T& value)
{
    if (name == nullptr) {
        return false;
    }
    for (const auto& [entryValue, entryName] : EnumStrings<T>::Values) {
        if (std::strcmp(entryName, name) == 0) {
            value = entryValue;
            return true;
        }
    }
    return false;
}

/// Writes the name of `value`, or its number when the table has no entry for it.
template <class T>
std::ostream& WriteEnum(std::ostream& stream, T value)
{
    const auto& values = EnumStrings<T>::Values;
    auto found = values.find(value);
    if (found != values.end()) {
        return stream << found->second;
    }
    return stream << static_cast<unsigned long long>(static_cast<std::underlying_type_t<T>>(value));
}

/// Reads one word and sets `value` to the entry of that name; an unknown word sets failbit and
/// leaves `value` as it was.
template <class T>
std::istream& ReadEnum(std::istream& stream, T& value)
{
    std::string word;
    if (!(stream >> word)) {
        return stream;
    }
    if (!TryGetEnumValue(word.c_str(), value)) {
        stream.setstate(std::ios::failbit);
    }
    return stream;
}

} // namespace Zon

/// Gives an enumeration `operator<<` and `operator>>` driven by its `Zon::EnumStrings` table.
/// Use in the enumeration's own namespace, so that argument-dependent lookup finds them.
#define ZON_ENUM_STREAM_OPERATORS(Enum)                                                     \
    inline std::ostream& operator<<(std::ostream& stream, Enum value)                       \
    {                                                                                       \
        return ::Zon::WriteEnum(stream, value);                                             \
    }                                                                                       \
    inline std::istream& operator>>(std::istream& stream, Enum& value)                      \
    {                                                                                       \
        return ::Zon::ReadEnum(stream, value);                                              \
    }

/// Declares the name table of `Enum` (defined in one source file with an initializer).
#define ZON_DECLARE_ENUM_STRINGS(Enum) \
    template <>                        \
    const std::map<Enum, const char*> Zon::EnumStrings<Enum>::Values

/// Lets fmt format a type through its `operator<<` (enumerations with a name table, flag sets).
#define ZON_FORMAT_AS_OSTREAM(Type) \
    template <>                     \
    struct fmt::formatter<Type> : fmt::ostream_formatter {}
