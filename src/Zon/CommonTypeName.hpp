#pragma once

#include <typeinfo>

#include "Zon/BasicString.hpp"

namespace Zon {

/// The common type name of a type given by its run-time type information: the demangled name
/// with every "class ", "struct " and "enum " removed and every "::" replaced by ".".
/// Throws `Zon::Exception` "Demangling of type name '{0}' failed." when demangling gives nothing.
String CommonTypeNameOf(const std::type_info& type);

/// Demangles a mangled name and forms the common type name from it, as `CommonTypeNameOf`.
String CommonTypeNameFromMangled(const char* mangledName);

/// The common type name of `T`, e.g. "int", "unsigned long", "Zon.AppDomain".
template <class T>
String CommonTypeName()
{
    return CommonTypeNameOf(typeid(T));
}

} // namespace Zon
