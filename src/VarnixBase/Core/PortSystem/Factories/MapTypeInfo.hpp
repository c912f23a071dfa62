#pragma once

#include <ostream>

#include "Zon/BasicString.hpp"
#include "Zon/EnumStrings.hpp"
#include "Zon/Format.hpp"

namespace VarnixBase::Core::PortSystem {

/// The pair of value types a connector joins, by common type name: the key under which the
/// connector factory keeps one creator per connector type.
struct MapTypeInfo {
    /// Common type name of the value at the start port.
    Zon::String inputType;
    /// Common type name of the value at the end port.
    Zon::String outputType;

    /// A is before B when A's input type is less than B's, and otherwise exactly when A's output
    /// type is less than B's (also when A's input type is the greater). Names compare byte by byte,
    /// the shorter of two equal prefixes first.
    ///
    /// This is an "or" of the two comparisons, not the lexicographic order of the pair: two
    /// different keys can each be before the other, so it is no strict weak order. Only equal keys
    /// are equivalent. Kept in an `OrderedArrayMap`, every distinct key that is inserted stays,
    /// but the map's own search can miss a key that is present, so look-ups walk the map.
    friend bool operator<(const MapTypeInfo& a, const MapTypeInfo& b) noexcept
    {
        if (a.inputType < b.inputType) {
            return true;
        }
        return a.outputType < b.outputType;
    }

    friend bool operator==(const MapTypeInfo& a, const MapTypeInfo& b) noexcept
    {
        return a.inputType == b.inputType && a.outputType == b.outputType;
    }
};

/// Writes "(<inputType>, <outputType>)".
inline std::ostream& operator<<(std::ostream& stream, const MapTypeInfo& key)
{
    return stream << '(' << key.inputType << ", " << key.outputType << ')';
}

} // namespace VarnixBase::Core::PortSystem

ZON_FORMAT_AS_OSTREAM(VarnixBase::Core::PortSystem::MapTypeInfo);
