#include "VarnixBase/Commons/Meta/Type.hpp"

#include "Zon/CommonTypeName.hpp"

namespace VarnixBase::Commons::Meta {

namespace {

template <class T>
bool IsType(const std::type_info& typeInfo, Zon::String& name)
{
    if (typeInfo == typeid(T)) {
        name = Zon::CommonTypeName<T>();
        return true;
    }
    return false;
}

} // namespace

Type::Type(const std::type_info* typeInfo, const Zon::String& name) : typeInfo(typeInfo)
{
    if (typeInfo != nullptr) {
        const auto& info = *typeInfo;
        if (IsType<bool>(info, fullName) || IsType<signed char>(info, fullName)
            || IsType<unsigned char>(info, fullName) || IsType<short>(info, fullName)
            || IsType<unsigned short>(info, fullName) || IsType<int>(info, fullName)
            || IsType<unsigned int>(info, fullName) || IsType<long>(info, fullName)
            || IsType<unsigned long>(info, fullName) || IsType<float>(info, fullName)
            || IsType<double>(info, fullName)) {
            return;
        }
    }
    fullName = name;
}

} // namespace VarnixBase::Commons::Meta
