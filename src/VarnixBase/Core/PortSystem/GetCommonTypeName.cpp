#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"

#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/Plc/Commons/DataType.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::CommonTypeName;
using Zon::Plc::Commons::DataTypeEnum;
using Zon::System::Commons::Diagnostics::Logging::GetRootLogger;

Zon::String GetCommonTypeName(const DataTypeEnum& dataType)
{
    switch (dataType.GetValue()) {
    case DataTypeEnum::Boolean: return CommonTypeName<bool>();
    case DataTypeEnum::UInt8: return CommonTypeName<unsigned char>();
    case DataTypeEnum::Int8: return CommonTypeName<signed char>();
    case DataTypeEnum::Char8: return CommonTypeName<char>();
    case DataTypeEnum::Char16: return CommonTypeName<char16_t>();
    case DataTypeEnum::UInt16: return CommonTypeName<unsigned short>();
    case DataTypeEnum::Int16: return CommonTypeName<short>();
    case DataTypeEnum::UInt32: return CommonTypeName<unsigned int>();
    case DataTypeEnum::Int32: return CommonTypeName<int>();
    case DataTypeEnum::UInt64: return CommonTypeName<unsigned long>();
    case DataTypeEnum::Int64: return CommonTypeName<long>();
    case DataTypeEnum::Float32: return CommonTypeName<float>();
    case DataTypeEnum::Float64: return CommonTypeName<double>();
    case DataTypeEnum::StaticString: return CommonTypeName<Commons::Gds::StaticStringAdapter<char>>();
    case DataTypeEnum::StaticWString: return CommonTypeName<Commons::Gds::StaticStringAdapter<char16_t>>();
    default:
        GetRootLogger().Error("### GetCommonTypeName: {0}", dataType);
        return Zon::String();
    }
}

Zon::String GetCommonTypeName(const Zon::Plc::Commons::Meta::DataInfo& dataInfo)
{
    const Zon::Plc::Commons::DataType code = dataInfo.dataType;
    const Zon::Plc::Commons::DataType base = code & Zon::Plc::Commons::DataTypeBaseMask;
    if (base >= DataTypeEnum::FirstUserType && base <= DataTypeEnum::LastUserType) {
        return dataInfo.typeIdentifier.GetName();
    }
    if ((code & Zon::Plc::Commons::DataTypePointerBit) != 0) {
        return GetCommonTypeName(DataTypeEnum(base));
    }
    if (base >= 1 && base <= 64) {
        return GetCommonTypeName(DataTypeEnum(code));
    }
    GetRootLogger().Info("### Unknown type: {0}", dataInfo.typeIdentifier.GetFullName());
    return "<unknown-type>";
}

} // namespace VarnixBase::Core::PortSystem
