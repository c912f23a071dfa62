#include "Zon/Plc/Commons/Meta/DataTag.hpp"

namespace Zon::Plc::Commons::Meta {

DataTag::DataTag(const String& name, const void* address, DataType dataType, const TypeIdentifier& typeIdentifier,
                 bool isConstant)
    : name(name),
      dataType(dataType),
      typeIdentifier(typeIdentifier),
      // The record describes the memory; whether it may be written is the variable's affair.
      address(const_cast<void*>(address)),
      isConstant(isConstant)
{
}

} // namespace Zon::Plc::Commons::Meta
