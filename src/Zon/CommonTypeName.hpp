#pragma once

#include <typeinfo>

#include "Zon/BasicString.hpp"

namespace Zon {

/// The common type name of a type given by its run-time type information: the demangled name
/// with every "class ", "struct " and "enum " removed and every "::" replaced by ".".
/// Throws `Zon::Exception` "Demangling of type name '{0}' failed." when demangling gives nothing.
/// The name is formed once per type and remembered; later calls give the same text without
/// demangling again. A failed demangling is not remembered: every call throws again.
String CommonTypeNameOf(const std::type_info& type);

/// As `CommonTypeNameOf`, but the remembered name itself: the reference stays valid and unchanged
/// for the life of the process. For look-ups that only compare the name.
const String& CommonTypeNameRefOf(const std::type_info& type);

/// Demangles a mangled name and forms the common type name from it, as `CommonTypeNameOf`.
String CommonTypeNameFromMangled(const char* mangledName);

/// The common type name of `T`, e.g. "int", "unsigned long", "Zon.AppDomain".
template <class T>
String CommonTypeName()
{
    return CommonTypeNameOf(typeid(T));
}

} // namespace Zon
