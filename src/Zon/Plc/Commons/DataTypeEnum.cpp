#include "Zon/Plc/Commons/DataTypeEnum.hpp"

namespace Zon::Plc::Commons {

std::size_t DataTypeEnum::GetSize() const noexcept
{
    switch (value & 0xFFu) {
    case Boolean:
    case UInt8:
    case Int8:
    case Char8:
        return 1;
    case Char16:
    case UInt16:
    case Int16:
        return 2;
    case UInt32:
    case Int32:
    case Float32:
        return 4;
    case UInt64:
    case Int64:
    case Float64:
        return 8;
    default:
        return 0;
    }
}

const char* DataTypeEnum::GetName() const noexcept
{
    switch (value) {
    case None: return "None";
    case Boolean: return "Boolean";
    case UInt8: return "UInt8";
    case Int8: return "Int8";
    case Char8: return "Char8";
    case Char16: return "Char16";
    case UInt16: return "UInt16";
    case Int16: return "Int16";
    case UInt32: return "UInt32";
    case Int32: return "Int32";
    case UInt64: return "UInt64";
    case Int64: return "Int64";
    case Float32: return "Float32";
    case Float64: return "Float64";
    case StaticString: return "StaticString";
    case StaticWString: return "StaticWString";
    default: return nullptr;
    }
}

std::ostream& operator<<(std::ostream& stream, DataTypeEnum code)
{
    const char* name = code.GetName();
    if (name != nullptr) {
        return stream << name;
    }
    return stream << code.GetValue();
}

} // namespace Zon::Plc::Commons
