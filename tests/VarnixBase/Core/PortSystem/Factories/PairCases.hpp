#pragma once

// The 223 built-in pairs of the connector factory as test cases: for each pair, how to create its
// connector through the factory between two ports published through the host, execute it once and
// check the value that arrives. The cases are built in two translation units of their own (one
// per connector type), since every pair instantiates its own checks.

#include <ostream>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/CopyConnector.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/PortSystem/ScaleConnector.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "Zon/CommonTypeName.hpp"

#include "../ConnectorTestSupport.hpp"

namespace ConnectorTest {

using VarnixBase::Core::PortSystem::ConnectorFactory;
using VarnixBase::Core::PortSystem::CopyConnector;
using VarnixBase::Core::PortSystem::IConnector;
using VarnixBase::Core::PortSystem::IPort;
using VarnixBase::Core::PortSystem::ScaleConnector;

inline ConnectorFactory& Factory()
{
    return ConnectorFactory::GetInstance();
}

template <class T>
std::string TypeName()
{
    return Zon::CommonTypeName<T>().ToStdString();
}

/// The numeric value types in the order of registration.
template <class... T>
struct TypeList {};
using NumericTypes = TypeList<bool, signed char, unsigned char, short, unsigned short, int, unsigned int, long,
                              unsigned long, float, double>;
using ScaleTypes =
    TypeList<signed char, unsigned char, short, unsigned short, int, unsigned int, long, unsigned long, float, double>;

template <class T, class... List>
constexpr int IndexOf(TypeList<List...>)
{
    int index = 0;
    bool found = false;
    ((found = found || std::is_same_v<T, List>, index += found ? 0 : 1), ...);
    return index;
}

/// The value put at the start of a pair: in range of every value type, and different for each
/// input type, so that a connector that read the wrong variable would be seen.
template <class I>
I SampleOf()
{
    if constexpr (std::is_same_v<I, bool>) {
        return true;
    } else {
        return static_cast<I>(20 + IndexOf<I>(NumericTypes{}));
    }
}

/// One built-in pair: the connector type and the two type names it is registered under, and how
/// to create it through the factory between two published ports, execute it once and check the
/// value that arrives at the end port.
struct PairCase {
    std::string type;
    std::string inputType;
    std::string outputType;
    std::string label;
    void (*run)(PublishedPortsFixture& ports);
};

/// Names a pair in test output.
inline void PrintTo(const PairCase& pair, std::ostream* stream)
{
    *stream << pair.label;
}

/// Creates a connector of `type` from the start port of `I` to the end port of `O`, subscribes
/// the end port to its event as the program builder does, and executes it once.
template <class I, class O, class Expected>
std::shared_ptr<IConnector> CreateAndExecute(PublishedPortsFixture& ports, const char* type)
{
    auto connector = Factory().Create(String(type), String("pair"), StartPortPath<I>(), EndPortPath<O>());
    EXPECT_NE(dynamic_cast<Expected*>(connector.get()), nullptr);
    EXPECT_EQ(connector->GetName(), String("pair"));
    auto& end = *ports.Ports<O>().out;
    connector->changed += Zon::make_delegate(static_cast<IPort*>(&end), &IPort::OnChange);
    connector->Execute();
    EXPECT_EQ(end.GetQuality(), VarnixBase::Core::QualitySystem::Quality{});
    return connector;
}

template <class I, class O>
void RunCopy(PublishedPortsFixture& ports)
{
    ports.Ports<I>().in->SetValue(SampleOf<I>());
    CreateAndExecute<I, O, CopyConnector<I, O>>(ports, "copy");
    O expected{};
    if constexpr (std::is_same_v<O, bool>) {
        expected = true;
    } else if constexpr (std::is_same_v<I, bool>) {
        expected = static_cast<O>(1);
    } else {
        expected = static_cast<O>(20 + IndexOf<I>(NumericTypes{}));
    }
    EXPECT_EQ(ports.Ports<O>().out->GetValue(), expected);
}

template <class I, class O>
void RunScale(PublishedPortsFixture& ports)
{
    ports.Ports<I>().in->SetValue(SampleOf<I>());
    auto connector = Factory().Create(String("scale"), String("pair"), StartPortPath<I>(), EndPortPath<O>());
    ASSERT_NE((dynamic_cast<ScaleConnector<I, O>*>(connector.get())), nullptr);
    connector->GetParameterProvider().GetParameter(String("gain"))->SetValueByString(String("2.0"));
    connector->GetParameterProvider().GetParameter(String("offset"))->SetValueByString(String("1.0"));
    auto& end = *ports.Ports<O>().out;
    connector->changed += Zon::make_delegate(static_cast<IPort*>(&end), &IPort::OnChange);
    connector->Execute();
    EXPECT_EQ(end.GetValue(), static_cast<O>(2 * (20 + IndexOf<I>(NumericTypes{})) + 1));
}

template <class I, class O>
PairCase MakeCase(const char* type, void (*run)(PublishedPortsFixture&))
{
    return PairCase{type, TypeName<I>(), TypeName<O>(),
                    std::string(type) + "_" + MemberName<I>() + "_to_" + MemberName<O>(), run};
}

template <class I, class... O>
void AddCopyRow(std::vector<PairCase>& cases, TypeList<O...>)
{
    (cases.push_back(MakeCase<I, O>("copy", &RunCopy<I, O>)), ...);
}

template <class I, class... O>
void AddScaleRow(std::vector<PairCase>& cases, TypeList<O...>)
{
    (cases.push_back(MakeCase<I, O>("scale", &RunScale<I, O>)), ...);
}

/// The 121 numeric "copy" pairs and the two text pairs, in their order of registration.
std::vector<PairCase> CopyPairCases();
/// The 100 "scale" pairs, in their order of registration.
std::vector<PairCase> ScalePairCases();

/// The 223 built-in pairs in their order of registration: all "copy" pairs, then all "scale"
/// pairs.
inline std::vector<PairCase> BuiltInPairs()
{
    std::vector<PairCase> cases = CopyPairCases();
    std::vector<PairCase> scale = ScalePairCases();
    cases.insert(cases.end(), scale.begin(), scale.end());
    return cases;
}

} // namespace ConnectorTest
