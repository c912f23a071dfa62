#pragma once

#include <string_view>

#include "Zon/BasicString.hpp"
#include "Zon/IEnumerator.hpp"
#include "Zon/Plc/Commons/Meta/ChildTypeInfo.hpp"
#include "Zon/Plc/Commons/Meta/TypeIdentifier.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace VarnixBase::Commons::Meta {

/// Questions about types: the known namespaces, the types of a namespace, a type's description
/// and its members. Unknown namespaces get empty answers, not failures.
class ITypeBrowser {
public:
    virtual ~ITypeBrowser() = default;

    /// The known namespaces, in ascending order.
    virtual Zon::IEnumerator<Zon::String>::Ptr GetNamespaces() = 0;
    /// The types of a namespace.
    virtual Zon::IEnumerator<Zon::Plc::Commons::Meta::TypeInfo>::Ptr GetTypes(const Zon::String& nameSpace) = 0;
    /// The members of a type.
    virtual Zon::IEnumerator<Zon::Plc::Commons::Meta::ChildTypeInfo>::Ptr
    GetChildren(const Zon::Plc::Commons::Meta::TypeIdentifier& type) = 0;
    /// The description of a type; data type 0 when unknown.
    virtual Zon::Plc::Commons::Meta::TypeInfo GetTypeInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type) = 0;
    /// The member `name` of a type; data type 0 when unknown.
    virtual Zon::Plc::Commons::Meta::ChildTypeInfo GetChildInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type,
                                                                const Zon::String& name) = 0;
    /// The member `name` of a type, as `GetChildInfo` answers it (trace lines included), without
    /// a copy of the record where its provider keeps it; otherwise the answer is kept in
    /// `storage`. The answer stays valid while the type's library is registered and not changed.
    /// `type` may lie in `storage`.
    virtual const Zon::Plc::Commons::Meta::ChildTypeInfo&
    FindChildInfo(const Zon::Plc::Commons::Meta::TypeIdentifier& type, std::string_view name,
                  Zon::Plc::Commons::Meta::ChildTypeInfo& storage) = 0;
};

} // namespace VarnixBase::Commons::Meta
