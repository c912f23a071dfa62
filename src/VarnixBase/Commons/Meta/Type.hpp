#pragma once

#include <typeinfo>

#include "Zon/BasicString.hpp"

namespace VarnixBase::Commons::Meta {

/// A run-time type with its name by the rule of common type names. For `bool`, `signed char`,
/// `unsigned char`, `short`, `unsigned short`, `int`, `unsigned int`, `long`, `unsigned long`,
/// `float` and `double` the name is their common type name, whatever name is given; any other
/// type (`char` included) is known by the name given.
class Type {
public:
    /// `typeInfo` is kept as it is; it may be null, which is no type of the list above.
    Type(const std::type_info* typeInfo, const Zon::String& name);

    const std::type_info* GetTypeInfo() const noexcept { return typeInfo; }
    const Zon::String& GetFullName() const noexcept { return fullName; }

private:
    const std::type_info* typeInfo;
    Zon::String fullName;
};

} // namespace VarnixBase::Commons::Meta
