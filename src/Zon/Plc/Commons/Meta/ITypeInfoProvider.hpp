#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace Zon::Plc::Commons::Meta {

/// Describes the types of one namespace. Unknown types and members get empty answers: an empty
/// enumerator, `TypeInfo::Empty`, `ChildTypeInfo::Empty`.
class ITypeInfoProvider {
public:
    virtual ~ITypeInfoProvider() = default;

    /// Every type of the namespace.
    virtual IEnumerator<TypeInfo>::Ptr GetTypes() = 0;
    /// The members of a type, in declared order.
    virtual IEnumerator<ChildTypeInfo>::Ptr GetChildren(const TypeIdentifier& type) = 0;
    /// The description of a type.
    virtual TypeInfo GetTypeInfo(const TypeIdentifier& type) = 0;
    /// True when the namespace describes `type`.
    virtual bool HasType(const TypeIdentifier& type) = 0;
    /// The member `name` of a type.
    virtual ChildTypeInfo GetChildInfo(const TypeIdentifier& type, const String& name) = 0;
};

} // namespace Zon::Plc::Commons::Meta
