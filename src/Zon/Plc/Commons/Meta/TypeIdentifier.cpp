#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"

#include <utility>

namespace Zon::Plc::Commons::Meta {

TypeIdentifier::TypeIdentifier(String nameSpace, String name) : nameSpace(std::move(nameSpace)), name(std::move(name)) {}

String TypeIdentifier::GetFullName() const
{
    if (nameSpace.IsEmpty()) {
        return name;
    }
    return nameSpace + "::" + name;
}

std::ostream& operator<<(std::ostream& stream, const TypeIdentifier& identifier)
{
    return stream << identifier.GetFullName();
}

} // namespace Zon::Plc::Commons::Meta
