#pragma once

#include <ostream>

#include <fmt/ostream.h>

#include "Zon/BasicString.hpp"

namespace Zon::Plc::Commons::Meta {

/// Names a type: the namespace of the library that describes it, and its name in there.
/// The empty identifier (both parts empty) names no type.
class TypeIdentifier {
public:
    TypeIdentifier() = default;
    TypeIdentifier(String nameSpace, String name);

    const String& GetNamespace() const noexcept { return nameSpace; }
    const String& GetName() const noexcept { return name; }
    /// Namespace and name as one text, "Namespace::Name"; the name alone when the namespace is
    /// empty. For messages only: look-ups go by the two parts.
    String GetFullName() const;

    bool IsEmpty() const noexcept { return nameSpace.IsEmpty() && name.IsEmpty(); }

    friend bool operator==(const TypeIdentifier& a, const TypeIdentifier& b) noexcept
    {
        return a.nameSpace == b.nameSpace && a.name == b.name;
    }

private:
    String nameSpace;
    String name;
};

/// Writes the full name.
std::ostream& operator<<(std::ostream& stream, const TypeIdentifier& identifier);

} // namespace Zon::Plc::Commons::Meta

template <>
struct fmt::formatter<Zon::Plc::Commons::Meta::TypeIdentifier> : fmt::ostream_formatter {};
