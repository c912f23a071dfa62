#pragma once

#include <string_view>

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

    /// The member `name` of a type, the same record that `GetChildInfo` answers, without a copy
    /// where the provider keeps its records: the answer stays valid while the type is not
    /// changed. A provider that answers by value only leaves this as it is, and the answer is then
    /// `GetChildInfo`'s, kept in `storage`. `type` may lie in `storage`: it is read before
    /// `storage` is written.
    virtual const ChildTypeInfo& FindChildInfo(const TypeIdentifier& type, std::string_view name,
                                               ChildTypeInfo& storage)
    {
        storage = GetChildInfo(type, String(name));
        return storage;
    }
};

} // namespace Zon::Plc::Commons::Meta
