#pragma once

#include <cstring>
#include <initializer_list>
#include <istream>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zon/CommonTypeName.hpp"
#include "Zon/Exception.hpp"

namespace VarnixBase::Commons {

/// The name table of an enumeration with an 8-bit underlying type: pairs of value and name,
/// looked up by exact value (values that look like bits are no flags here: a combination that
/// is not in the table has no name), and a text that stands for invalid values.
template <class E>
class EnumDictionary {
public:
    static_assert(std::is_enum_v<E> && sizeof(E) == 1, "a dictionary of an enumeration with 8-bit values");
    using Entry = std::pair<E, const char*>;

    EnumDictionary(const char* invalidText, std::initializer_list<Entry> entries)
        : invalidText(invalidText), entries(entries)
    {
    }

    /// The text that stands for values without a name.
    const char* GetInvalidText() const noexcept { return invalidText; }

    /// The name of `value`, or null when the table has none.
    const char* Find(E value) const noexcept
    {
        for (const auto& [entryValue, name] : entries) {
            if (entryValue == value) {
                return name;
            }
        }
        return nullptr;
    }

    /// The name of `value`, or the invalid text.
    const char* GetText(E value) const noexcept
    {
        const char* name = Find(value);
        return name != nullptr ? name : invalidText;
    }

    /// The name of `value`. A value without a name throws `Zon::Exception` "Could not find enum
    /// string of enum '{}' for value '{}'." with the enumeration's common type name and the number.
    const char* GetEnumString(E value) const
    {
        const char* name = Find(value);
        if (name == nullptr) {
            throw Zon::Exception("Could not find enum string of enum '{}' for value '{}'.", Zon::CommonTypeName<E>(),
                                 static_cast<unsigned>(static_cast<std::underlying_type_t<E>>(value)));
        }
        return name;
    }

    /// True and `value` set when `text` is a name of the table, exactly, case included.
    bool TryGetEnumValue(const char* text, E& value) const noexcept
    {
        if (text == nullptr) {
            return false;
        }
        for (const auto& [entryValue, name] : entries) {
            if (std::strcmp(name, text) == 0) {
                value = entryValue;
                return true;
            }
        }
        return false;
    }

    /// Writes the name of `value`. A value without a name writes its single byte and sets the
    /// stream's failbit.
    std::ostream& Write(std::ostream& stream, E value) const
    {
        const char* name = Find(value);
        if (name != nullptr) {
            return stream << name;
        }
        stream.put(static_cast<char>(static_cast<std::underlying_type_t<E>>(value)));
        stream.setstate(std::ios::failbit);
        return stream;
    }

    /// Reads one word and sets `value` to the entry of that name. An unknown word sets failbit
    /// and leaves `value` as it was.
    std::istream& Read(std::istream& stream, E& value) const
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

private:
    const char* invalidText;
    std::vector<Entry> entries;
};

} // namespace VarnixBase::Commons
