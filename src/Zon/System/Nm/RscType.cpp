#include "Zon/System/Nm/RscType.hpp"

using Zon::System::Nm::RscType;

template <>
const std::map<RscType, const char*> Zon::EnumStrings<RscType>::Values = {
    {RscType::Uint16, "Uint16"},
    {RscType::StdString, "StdString"},
    {RscType::String, "String"},
    {RscType::AnsiString, "AnsiString"},
    {RscType::Utf8String, "Utf8String"},
    {RscType::None, "None"},
};
