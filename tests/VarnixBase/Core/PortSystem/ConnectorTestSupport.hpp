#pragma once

// Shared pieces of the parameter, connector and connector factory tests: a host component
// "Conn" whose variables live in real memory and are typed through a host type library, and a
// fixture that registers it with the meta info provider for the duration of a test.
//
// Variables:
//   "Conn/In" and "Conn/Out"  structures `Ends` with one member per connector value type
//                             ("Bool", "SInt8", ..., "Float64", "Text", "WText")
//   "Conn/Settings"           a structure with a `double` "factor" and a `bool` "enabled"
//   "Conn/Port"               a `StringPort_s`
//   "Conn/Tiny"               a narrow fixed string of capacity 4
//   "Conn/Start"              a qualified `int` (time stamp, quality, value)
//
// `PublishedPortsFixture` adds ports published through the host as the program instance
// "App/Main": for each connector value type a plain start port "in_<member>" and a qualified end
// port "out_<member>", so that "App/Main.in_Int32" and "App/Main.out_Int32.Value" resolve to the
// ports' own memory.

#include <cstdint>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>

#include <gtest/gtest.h>

#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "VarnixBase/Example/StringPort_s.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Host/StructBuilder.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "support/HostFixture.hpp"

namespace ConnectorTest {

using Zon::String;
using Narrow80 = Zon::Plc::Commons::Gds::StaticString<80, char>;
using Wide80 = Zon::Plc::Commons::Gds::StaticString<80, char16_t>;
using Narrow4 = Zon::Plc::Commons::Gds::StaticString<4, char>;
using NarrowText = VarnixBase::Commons::Gds::StaticStringAdapter<char>;
using WideText = VarnixBase::Commons::Gds::StaticStringAdapter<char16_t>;

/// One member for each value type a connector can join.
struct Ends {
    bool b = false;
    signed char sc = 0;
    unsigned char uc = 0;
    short s = 0;
    unsigned short us = 0;
    int i = 0;
    unsigned int ui = 0;
    long l = 0;
    unsigned long ul = 0;
    float f = 0.0f;
    double d = 0.0;
    Narrow80 text;
    Wide80 wide;
};

/// Values that parameters bind to.
struct Settings {
    double factor = 0.0;
    bool enabled = false;
};

using QualifiedInt = VarnixBase::Core::QualitySystem::QualifiedValue<int>;

/// The member name of the value type `T` in `Ends`.
template <class T>
const char* MemberName()
{
    if constexpr (std::is_same_v<T, bool>) return "Bool";
    else if constexpr (std::is_same_v<T, signed char>) return "SInt8";
    else if constexpr (std::is_same_v<T, unsigned char>) return "UInt8";
    else if constexpr (std::is_same_v<T, short>) return "Int16";
    else if constexpr (std::is_same_v<T, unsigned short>) return "UInt16";
    else if constexpr (std::is_same_v<T, int>) return "Int32";
    else if constexpr (std::is_same_v<T, unsigned int>) return "UInt32";
    else if constexpr (std::is_same_v<T, long>) return "Int64";
    else if constexpr (std::is_same_v<T, unsigned long>) return "UInt64";
    else if constexpr (std::is_same_v<T, float>) return "Float32";
    else if constexpr (std::is_same_v<T, double>) return "Float64";
    else if constexpr (std::is_same_v<T, NarrowText>) return "Text";
    else {
        static_assert(std::is_same_v<T, WideText>);
        return "WText";
    }
}

/// The member of `Ends` that holds a value of type `T` (a numeric type; texts through their own
/// members).
template <class T>
T& Slot(Ends& ends)
{
    if constexpr (std::is_same_v<T, bool>) return ends.b;
    else if constexpr (std::is_same_v<T, signed char>) return ends.sc;
    else if constexpr (std::is_same_v<T, unsigned char>) return ends.uc;
    else if constexpr (std::is_same_v<T, short>) return ends.s;
    else if constexpr (std::is_same_v<T, unsigned short>) return ends.us;
    else if constexpr (std::is_same_v<T, int>) return ends.i;
    else if constexpr (std::is_same_v<T, unsigned int>) return ends.ui;
    else if constexpr (std::is_same_v<T, long>) return ends.l;
    else if constexpr (std::is_same_v<T, unsigned long>) return ends.ul;
    else if constexpr (std::is_same_v<T, float>) return ends.f;
    else {
        static_assert(std::is_same_v<T, double>);
        return ends.d;
    }
}

/// "Conn/In.<member of T>".
template <class T>
String InPath()
{
    return String("Conn/In.") + MemberName<T>();
}

/// "Conn/Out.<member of T>".
template <class T>
String OutPath()
{
    return String("Conn/Out.") + MemberName<T>();
}

/// The types of the test variables in `library`, described member by member from the real types.
inline void DescribeTypes(Zon::Host::TypeLibrary& library)
{
    library.AddFixedString<Narrow80>("Text80");
    library.AddFixedString<Wide80, char16_t>("WText80");
    library.AddFixedString<Narrow4>("Text4");
    library.AddStruct<Ends>("Ends")
        .Member("Bool", &Ends::b)
        .Member("SInt8", &Ends::sc)
        .Member("UInt8", &Ends::uc)
        .Member("Int16", &Ends::s)
        .Member("UInt16", &Ends::us)
        .Member("Int32", &Ends::i)
        .Member("UInt32", &Ends::ui)
        .Member("Int64", &Ends::l)
        .Member("UInt64", &Ends::ul)
        .Member("Float32", &Ends::f)
        .Member("Float64", &Ends::d)
        .Member("Text", &Ends::text)
        .Member("WText", &Ends::wide);
    library.AddStruct<Settings>("Settings").Member("factor", &Settings::factor).Member("enabled", &Settings::enabled);
    library.AddStruct<VarnixBase::Core::QualitySystem::Quality>("TestQuality")
        .Member("Flags", &VarnixBase::Core::QualitySystem::Quality::flags)
        .Member("State", &VarnixBase::Core::QualitySystem::Quality::state);
    library.AddStruct<QualifiedInt>("TestQualifiedInt")
        .Member("Timestamp", &QualifiedInt::timestamp)
        .Member("Quality", &QualifiedInt::quality)
        .Member("Value", &QualifiedInt::value);
    // Under its common type name, so that it meets the connector classes on it.
    library.AddStruct<VarnixBase::Example::StringPort_s>()
        .Member("text", &VarnixBase::Example::StringPort_s::text)
        .Member("code", &VarnixBase::Example::StringPort_s::code)
        .Member("state", &VarnixBase::Example::StringPort_s::state);
}

/// A host runtime, a type library "ConnLib" with the test types, and the component "Conn"
/// registered with the meta info provider from `SetUp` to `TearDown`.
class ConnectorFixture : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        DescribeTypes(library);
        component.AddVariable("In", in);
        component.AddVariable("Out", out);
        component.AddVariable("Settings", settings);
        component.AddVariable("Port", port);
        component.AddVariable("Tiny", tiny);
        component.AddVariable("Start", start);
        Provider().Add(component);
        Capture().Clear();
    }

    void TearDown() override
    {
        Provider().Remove(component);
        VarnixTest::HostTest::TearDown();
    }

    static VarnixBase::Commons::Meta::MetaInfoProvider& Provider()
    {
        return VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance();
    }

    using Level = Zon::System::Commons::Diagnostics::Logging::LogLevel;

    Zon::Host::TypeLibrary library{"ConnLib", "ConnTest"};
    Zon::Host::Component component{"Conn", library};
    Ends in{};
    Ends out{};
    Settings settings{};
    VarnixBase::Example::StringPort_s port{};
    Narrow4 tiny{};
    /// Lies right behind `tiny`, to show that nothing writes past its end.
    unsigned char guard[8] = {0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5};
    QualifiedInt start{};
};

/// The value type of a port on which connectors of value type `T` work: `T` itself, and for
/// texts the fixed strings of 80 units.
template <class T>
struct PortValueOf {
    using type = T;
};
template <>
struct PortValueOf<NarrowText> {
    using type = Narrow80;
};
template <>
struct PortValueOf<WideText> {
    using type = Wide80;
};

/// The start port and the end port of value type `T`.
template <class T>
struct PortPair {
    using Value = typename PortValueOf<T>::type;
    std::shared_ptr<VarnixBase::Core::PortSystem::Port<Value>> in;
    std::shared_ptr<VarnixBase::Core::PortSystem::QualifiedPort<Value>> out;
};

/// "App/Main.in_<member of T>", a plain port.
template <class T>
String StartPortPath()
{
    return String("App/Main.in_") + MemberName<T>();
}

/// "App/Main.out_<member of T>.Value", the value of a qualified port.
template <class T>
String EndPortPath()
{
    return String("App/Main.out_") + MemberName<T>() + ".Value";
}

/// `ConnectorFixture` with ports of every connector value type published through the host as the
/// program instance "App/Main", registered with the meta info provider from `SetUp` to `TearDown`.
class PublishedPortsFixture : public ConnectorFixture {
public:
    /// The ports of value type `T`.
    template <class T>
    PortPair<T>& Ports()
    {
        return std::get<PortPair<T>>(ports);
    }

protected:
    void SetUp() override
    {
        ConnectorFixture::SetUp();
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(appLibrary);
        Zon::Plc::Commons::Meta::DynamicPortsBuilder builder;
        std::apply([&builder](auto&... pair) { (Create(pair, builder), ...); }, ports);
        appComponent = &publisher.Publish(String("App/Main"), builder);
        Provider().Add(*appComponent);
        Capture().Clear();
    }

    void TearDown() override
    {
        if (appComponent != nullptr) {
            Provider().Remove(*appComponent);
        }
        ConnectorFixture::TearDown();
    }

private:
    template <class T>
    static void Create(PortPair<T>& pair, Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder)
    {
        using Value = typename PortPair<T>::Value;
        pair.in = std::make_shared<VarnixBase::Core::PortSystem::Port<Value>>(String("in_") + MemberName<T>(), 1);
        pair.out =
            std::make_shared<VarnixBase::Core::PortSystem::QualifiedPort<Value>>(String("out_") + MemberName<T>(), 1);
        pair.in->Publish(builder);
        pair.out->Publish(builder);
    }

    Zon::Host::TypeLibrary appLibrary{"App", "App"};
    Zon::Host::PortPublisher publisher{appLibrary};
    Zon::Host::Component* appComponent = nullptr;
    std::tuple<PortPair<bool>, PortPair<signed char>, PortPair<unsigned char>, PortPair<short>,
               PortPair<unsigned short>, PortPair<int>, PortPair<unsigned int>, PortPair<long>,
               PortPair<unsigned long>, PortPair<float>, PortPair<double>, PortPair<NarrowText>, PortPair<WideText>>
        ports;
};

} // namespace ConnectorTest
