#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/DataTypeEnum.hpp"
#include "Zon/Plc/Commons/Meta/DataInfo.hpp"

namespace VarnixBase::Core::PortSystem {

/// The common type name of a base type code: "bool", "unsigned char", "signed char", "char",
/// "char16_t", "unsigned short", "short", "unsigned int", "int", "unsigned long", "long",
/// "float", "double" for the codes 3 to 15, and the names of
/// `VarnixBase::Commons::Gds::StaticStringAdapter<char>` (42) and `<char16_t>` (46). Any other
/// value, a code with flags included, gives an empty text and an error line of the root logger.
Zon::String GetCommonTypeName(const Zon::Plc::Commons::DataTypeEnum& dataType);

/// The type name of a resolved variable, as connectors are matched by it: for a user type
/// (base code 65 to 254) the type's name as the meta data holds it; for a pointer, the name of
/// its base code; for a base code from 1 to 64, the name of the whole data type (flags make it
/// empty); otherwise "<unknown-type>", with an info line of the root logger.
Zon::String GetCommonTypeName(const Zon::Plc::Commons::Meta::DataInfo& dataInfo);

} // namespace VarnixBase::Core::PortSystem
