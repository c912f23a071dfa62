#pragma once

#include <typeinfo>

#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/Plc/Commons/Meta/TypeInfo.hpp"

namespace VarnixBase::Core::QualitySystem {

/// Describes to a type library of the host what qualified ports publish, so that variable paths
/// into them resolve: the fixed strings of the port value types, `Quality` (members "Flags" and
/// "State") and `QualifiedValue<T>` for every port value type (members "Timestamp", "Quality" and
/// "Value"), each under its common type name. Types the library knows already are left alone, so
/// calling it twice is harmless. On a controller the firmware has these descriptions from the
/// application's meta data; a host (the simulator, tests, an application run on a PC) calls this
/// once on the type library of its components.
template <class Library>
void DescribeQualityTypes(Library& library)
{
    using Zon::Plc::Commons::Gds::StaticString;
    auto known = [&library](const std::type_info& type) {
        Zon::Plc::Commons::Meta::TypeInfo info;
        return library.TryDescribe(type, info);
    };
    auto fixedString = [&]<class S, class Unit>() {
        if (!known(typeid(S))) {
            library.template AddFixedString<S, Unit>();
        }
    };
    fixedString.template operator()<StaticString<80, char>, char>();
    fixedString.template operator()<StaticString<512, char>, char>();
    fixedString.template operator()<StaticString<80, char16_t>, char16_t>();
    fixedString.template operator()<StaticString<512, char16_t>, char16_t>();

    if (!known(typeid(Quality))) {
        library.template AddStruct<Quality>().Member("Flags", &Quality::flags).Member("State", &Quality::state);
    }
    auto qualified = [&]<class T>() {
        using Value = QualifiedValue<T>;
        if (!known(typeid(Value))) {
            library.template AddStruct<Value>()
                .Member("Timestamp", &Value::timestamp)
                .Member("Quality", &Value::quality)
                .Member("Value", &Value::value);
        }
    };
    qualified.template operator()<bool>();
    qualified.template operator()<signed char>();
    qualified.template operator()<unsigned char>();
    qualified.template operator()<short>();
    qualified.template operator()<unsigned short>();
    qualified.template operator()<int>();
    qualified.template operator()<unsigned int>();
    qualified.template operator()<long>();
    qualified.template operator()<unsigned long>();
    qualified.template operator()<float>();
    qualified.template operator()<double>();
    qualified.template operator()<StaticString<80, char>>();
    qualified.template operator()<StaticString<512, char>>();
    qualified.template operator()<StaticString<80, char16_t>>();
    qualified.template operator()<StaticString<512, char16_t>>();
}

} // namespace VarnixBase::Core::QualitySystem
