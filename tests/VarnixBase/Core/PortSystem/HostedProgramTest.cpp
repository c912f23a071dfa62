// Programs end to end: a document on the host root, the program constructed from it, its ports
// published, the domain proxy's event, then several task cycles on the virtual clock, with the
// device values written where the controller writes them: through the published variables.
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/Types/PnDeviceState.hpp"
#include "VarnixBase/Example/DemoStringConnector.hpp"
#include "VarnixBase/Example/StringPort_s.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/Plc/Commons/Meta/PortDataType.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"

#include "support/ResourceCounter.hpp"

#include "ProgramHost.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualifiedValue;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

/// The example's text record is published as a structure of its own.
template <>
struct Zon::Plc::Commons::Meta::PortDataType<VarnixBase::Example::StringPort_s>
    : Zon::Plc::Commons::Meta::PortDataTypeCode<Zon::Plc::Commons::Meta::UserTypeCode> {};

namespace {

/// A port type of an application's own: it publishes a `StringPort_s`, which the example's text
/// connector reads.
class TextRecordPort : public PortBaseImpl {
public:
    TextRecordPort(const String& name, unsigned long dimension) : PortBaseImpl(name, dimension) {}

    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        builder.AddPort<VarnixBase::Example::StringPort_s>(String(GetName().CStr()), record, GetAttributes());
    }

private:
    VarnixBase::Example::StringPort_s record;
};

class HostedProgramTest : public VarnixTest::ProgramHostTest {
protected:
    std::int64_t Now() const { return Zon::DateTime::Now().ToUnixTimeMicroseconds(); }
};

} // namespace

TEST_F(HostedProgramTest, NamedByItsInstancePathAndPublishedUnderIt)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
        <Port name="count" type="int32"/>
    </Ports></Program></Configuration>)");
    auto& program = Construct("Tank");
    EXPECT_EQ(program.GetName(), Zon::String("App/Main"));
    program.Publish(*publisher);
    At<int>("App/Main.count") = 12;
    EXPECT_EQ(std::static_pointer_cast<Port<int>>(program.GetProgram().GetPortProvider().GetPort("count"))->GetValue(),
              12);
}

TEST_F(HostedProgramTest, WithdrawnPortsNoLongerResolve)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
        <Port name="count" type="int32"/>
    </Ports></Program></Configuration>)");
    auto& program = Construct("Tank");
    program.Publish(*publisher);
    // A withdrawn program resolves as one that was never published, and its instance path is
    // free for publishing again.
    EXPECT_ANY_THROW(At<int>("App/Other.count"));
    program.Withdraw();
    EXPECT_ANY_THROW(At<int>("App/Main.count"));
    program.Publish(*publisher);
    At<int>("App/Main.count") = 5;
    EXPECT_EQ(std::static_pointer_cast<Port<int>>(program.GetProgram().GetPortProvider().GetPort("count"))->GetValue(), 5);
}

TEST_F(HostedProgramTest, AnalogInThroughScaleIntoAQualifiedPortCarriesValueQualityAndTheHostClocksTime)
{
    WriteDocument("Tank", R"(<Configuration>
  <Program type="Tank">
    <Ports>
      <Port name="raw" type="AnalogIn"/>
      <Port name="level" type="qualified.float64"/>
    </Ports>
    <Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.5"/>
        <Parameter name="offset" value="1.0"/>
      </Connector>
    </Connectors>
  </Program>
</Configuration>)");
    auto& program = Start("Tank");
    ASSERT_TRUE(program.GetProgram().IsInitialized());
    ASSERT_EQ(program.GetProgram().GetConnectorProvider().Count(), 1u);
    EXPECT_NO_THROW(program.GetProgram().GetBuilder().Complete());
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Total 2 ports and 1 connections in `Tank`."), 1u);

    auto& raw = At<std::uint16_t>("App/Main.raw");
    auto& level = At<QualifiedValue<double>>("App/Main.level");

    raw = 1000;
    Cycle(program);
    EXPECT_EQ(level.value, 501.0);
    EXPECT_EQ(level.quality.state, QualityState::Good);
    EXPECT_EQ(level.quality.flags, QualityFlags::None);
    EXPECT_EQ(level.timestamp, Now());

    raw = 0x8001;
    Cycle(program);
    EXPECT_EQ(level.value, 0x8001 * 0.5 + 1.0);
    EXPECT_EQ(level.quality.state, QualityState::Bad);
    EXPECT_EQ(level.quality.flags, QualityFlags::Overrange);
    EXPECT_EQ(level.timestamp, Now());
    Cycle(program);
    EXPECT_EQ(level.quality.state, QualityState::Bad);
    EXPECT_EQ(level.quality.flags, QualityFlags::Overrange);

    raw = 100;
    Cycle(program);
    EXPECT_EQ(level.value, 51.0);
    EXPECT_EQ(level.quality.state, QualityState::Good);
    EXPECT_EQ(level.quality.flags, QualityFlags::None);
    EXPECT_EQ(level.timestamp, Now());
    EXPECT_EQ(level.timestamp, StartMicroseconds + 4 * 10'000);
}

TEST_F(HostedProgramTest, ACopyChainAgainstTheDataFlowTakesOneCyclePerLink)
{
    WriteDocument("Chain", R"(<Configuration><Program type="Chain">
  <Ports>
    <Port name="a" type="int32"/><Port name="b" type="int32"/>
    <Port name="c" type="int32"/><Port name="d" type="int32"/>
  </Ports>
  <Connectors>
    <Connector startPort="c" endPort="d" type="copy"/>
    <Connector startPort="b" endPort="c" type="copy"/>
    <Connector startPort="a" endPort="b" type="copy"/>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Chain");
    At<int>("App/Main.a") = 7;
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.b"), 7);
    EXPECT_EQ(At<int>("App/Main.c"), 0);
    EXPECT_EQ(At<int>("App/Main.d"), 0);
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.c"), 7);
    EXPECT_EQ(At<int>("App/Main.d"), 0);
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.d"), 7);
}

TEST_F(HostedProgramTest, ACopyChainAlongTheDataFlowTakesEffectWithinOneCycle)
{
    WriteDocument("Chain", R"(<Configuration><Program type="Chain">
  <Ports>
    <Port name="a" type="int32"/><Port name="b" type="int64"/>
    <Port name="c" type="float64"/><Port name="d" type="qualified.int16"/>
  </Ports>
  <Connectors>
    <Connector startPort="a" endPort="b" type="copy"/>
    <Connector startPort="b" endPort="c" type="copy"/>
    <Connector startPort="c" endPort="d" type="copy"/>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Chain");
    At<int>("App/Main.a") = 7;
    Cycle(program);
    EXPECT_EQ(At<long>("App/Main.b"), 7);
    EXPECT_EQ(At<double>("App/Main.c"), 7.0);
    EXPECT_EQ(At<short>("App/Main.d.Value"), 7);
    At<int>("App/Main.a") = -3;
    Cycle(program);
    EXPECT_EQ(At<short>("App/Main.d.Value"), -3);
}

TEST_F(HostedProgramTest, ParametersByValueAndBoundByReferenceTheBoundOneFollowsItsPort)
{
    WriteDocument("Mix", R"(<Configuration><Program type="Mix">
  <Ports>
    <Port name="input" type="float64"/>
    <Port name="bias" type="float64"/>
    <Port name="factor" type="qualified.float64"/>
    <Port name="biased" type="float64"/>
    <Port name="scaled" type="float64"/>
  </Ports>
  <Connectors>
    <Connector startPort="input" endPort="biased" type="scale">
      <Parameter name="gain" value="2.0"/>
      <Parameter name="offset" ref="bias"/>
    </Connector>
    <Connector startPort="input" endPort="scaled" type="scale">
      <Parameter name="gain" ref="factor"/>
    </Connector>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Mix");
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Bind 2 parameters in `Mix`"), 1u);
    // The reference of a qualified port gets its relative data path behind the whole reference.
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Bind parameter `gain` to reference `App/Main.factor.Value` in `Mix`."),
              1u);
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Bind parameter `offset` to reference `App/Main.bias` in `Mix`."), 1u);

    At<double>("App/Main.input") = 10.0;
    At<double>("App/Main.bias") = 1.0;
    At<double>("App/Main.factor.Value") = 3.0;
    Cycle(program);
    EXPECT_EQ(At<double>("App/Main.biased"), 21.0);
    EXPECT_EQ(At<double>("App/Main.scaled"), 30.0);

    At<double>("App/Main.bias") = 5.0;
    At<double>("App/Main.factor.Value") = 0.5;
    Cycle(program);
    EXPECT_EQ(At<double>("App/Main.biased"), 25.0);
    EXPECT_EQ(At<double>("App/Main.scaled"), 5.0);
    EXPECT_NO_THROW(program.GetProgram().GetBuilder().Complete());
}

TEST_F(HostedProgramTest, AQualityProviderNamingAConnectorByItsGeneratedNameCarriesItsQuality)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="raw" type="AnalogIn"/>
    <Port name="level" type="qualified.float64"/>
    <Port name="setpoint" type="float64"/>
    <Port name="target" type="qualified.float64"/>
  </Ports>
  <Connectors>
    <Connector startPort="raw" endPort="level" type="scale"/>
    <Connector startPort="setpoint" endPort="target" type="copy">
      <QualityProvider ref="raw:level"/>
    </Connector>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Bind 1 quality providers in `Tank`"), 1u);
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Add quality provider raw:level to `Tank`"), 1u);
    auto& target = At<QualifiedValue<double>>("App/Main.target");
    At<double>("App/Main.setpoint") = 42.0;

    At<std::uint16_t>("App/Main.raw") = 0x8001;
    Cycle(program);
    EXPECT_EQ(target.value, 42.0);
    EXPECT_EQ(target.quality.state, QualityState::Bad);
    EXPECT_EQ(target.quality.flags, QualityFlags::Overrange);

    At<std::uint16_t>("App/Main.raw") = 100;
    Cycle(program);
    EXPECT_EQ(target.quality.state, QualityState::Good);
    EXPECT_EQ(target.quality.flags, QualityFlags::None);
    EXPECT_NO_THROW(program.GetProgram().GetBuilder().Complete());
}

TEST_F(HostedProgramTest, OneBadItemOfEachKindBesideGoodOnesTheGoodPartRunsEachFailureIsLoggedAndCompleteThrows)
{
    WriteDocument("Plant", R"(<Configuration><Program type="Plant">
  <Ports>
    <Port name="a" type="int32"/>
    <Port name="ghost" type="bogus"/>
    <Port name="b" type="int32">
      <Parameter name="gain" value="2.0"/>
      <QualityProvider ref="nobody"/>
    </Port>
    <Port name="a" type="float64"/>
    <Port name="flag" type="boolean"/>
    <Port name="other" type="boolean"/>
    <Port name="c" type="qualified.int32"/>
  </Ports>
  <Connectors>
    <Connector startPort="a" endPort="b" type="copy"/>
    <Connector startPort="nowhere" endPort="b" type="copy"/>
    <Connector startPort="a" endPort="c" type="blend"/>
    <Connector startPort="flag" endPort="other" type="scale"/>
    <Connector startPort="b" endPort="c" type="scale">
      <Parameter name="gain" value="abc"/>
      <Parameter name="invert" ref="flag"/>
      <Parameter name="nothing" ref="a"/>
    </Connector>
  </Connectors>
</Program></Configuration>)");
    auto& program = Construct("Plant");
    program.Publish(*publisher);
    // A pending parameter that names neither a value nor a reference cannot come from a document
    // (the reader refuses it); an application can append one.
    ParameterProvider own;
    own.AddParameter<double>("offset", 0.0);
    program.GetProgram().GetBuilder().AddParameterBinding(ParameterBinding{&own, {"offset", "", ""}, nullptr});
    Runtime().RaisePortsPublished();

    std::vector<std::string> expected{
        "Port `ghost` has unsupported type `bogus`",
        "Parameter `gain` not found",
        "Port `a` already exists",
        "Port `nowhere` does not exist",
        "Connector type `blend` not available: inputType=`int` outputType=`int`",
        "Connector type `scale` not available: inputType=`bool` outputType=`bool`",
        "Parameter `gain` of type `double` has invalid configuration `abc`",
        "Parameter `offset` has invalid configuration in `Plant`",
        "Parameter `nothing` does not exist in `Plant`.",
        "Quality provider reference `nobody` does not exist in `Plant`",
    };
    EXPECT_EQ(Errors(), expected);

    // The good part: five ports, the copy a -> b and the scale b -> c with its good parameter.
    EXPECT_EQ(program.GetProgram().GetPortProvider().Count(), 5u);
    EXPECT_EQ(program.GetProgram().GetConnectorProvider().Count(), 2u);
    At<int>("App/Main.a") = 4;
    At<bool>("App/Main.flag") = false;
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.b"), 4);
    EXPECT_EQ(At<int>("App/Main.c.Value"), 4);
    At<int>("App/Main.a") = 9;
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.c.Value"), 9);

    try {
        program.GetProgram().GetBuilder().Complete();
        FAIL() << "Complete did not throw";
    } catch (const Zon::System::Commons::InvalidConfigException& failure) {
        EXPECT_EQ(std::string(failure.what()), "Configuration of configurable program type `Plant` is invalid.");
    }
}

TEST_F(HostedProgramTest, AMissingDocumentLeavesAProgramWithNoPortsAndOneErrorLine)
{
    auto& program = Start("Nothing");
    EXPECT_TRUE(program.GetProgram().IsInitialized());
    EXPECT_EQ(program.GetProgram().GetPortProvider().Count(), 0u);
    EXPECT_EQ(program.GetProgram().GetConnectorProvider().Count(), 0u);
    EXPECT_EQ(Errors().size(), 1u);
    Cycle(program);
    EXPECT_NO_THROW(program.GetProgram().GetBuilder().Complete());
}

TEST_F(HostedProgramTest, ABrokenDocumentLeavesAProgramWithNoPortsAndOneErrorLine)
{
    WriteDocument("Broken", "<Configuration><Program type=\"Broken\"><Ports><Port name=\"a\"");
    auto& program = Start("Broken");
    EXPECT_EQ(program.GetProgram().GetPortProvider().Count(), 0u);
    std::vector<std::string> expected{
        "Load configuration for `Broken.prog.config` failed: Invalid XML "
        "`/opt/varnix/data/VarnixBase/Core/PortSystem/Broken.prog.config`"};
    EXPECT_EQ(Errors(), expected);
}

TEST_F(HostedProgramTest, TwoProgramsOfOneComponentRunSideBySide)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
        <Port name="in" type="int32"/><Port name="out" type="int32"/>
      </Ports><Connectors><Connector startPort="in" endPort="out" type="copy"/></Connectors>
    </Program></Configuration>)");
    auto& first = Construct("Tank", "App/First");
    auto& second = Construct("Tank", "App/Second");
    first.Publish(*publisher);
    second.Publish(*publisher);
    Runtime().RaisePortsPublished();
    At<int>("App/First.in") = 1;
    At<int>("App/Second.in") = 2;
    Cycle(first);
    Cycle(second);
    EXPECT_EQ(At<int>("App/First.out"), 1);
    EXPECT_EQ(At<int>("App/Second.out"), 2);
}

TEST_F(HostedProgramTest, CyclesOfAProgramBuiltFromADocumentAllocateNothingAndTakeNoLock)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="raw" type="AnalogIn"/><Port name="bias" type="float64"/>
    <Port name="level" type="qualified.float64"/><Port name="copy" type="qualified.int32"/>
  </Ports>
  <Connectors>
    <Connector startPort="raw" endPort="level" type="scale"><Parameter name="offset" ref="bias"/></Connector>
    <Connector startPort="level" endPort="copy" type="copy"/>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    auto& raw = At<std::uint16_t>("App/Main.raw");
    At<double>("App/Main.bias") = 0.5;
    {
        VarnixTest::ResourceCounter counter;
        for (std::uint16_t value : {std::uint16_t{10}, std::uint16_t{0x8001}, std::uint16_t{20}}) {
            raw = value;
            program.Execute();
        }
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(At<double>("App/Main.level.Value"), 20.5);
    EXPECT_EQ(At<int>("App/Main.copy.Value"), 20);
}

TEST_F(HostedProgramTest, CyclesOfAProgramWithEveryPortAndConnectorKindAllocateNothingAndTakeNoLock)
{
    using Zon::Plc::Commons::Gds::StaticString;
    using Text80 = StaticString<80, char>;
    using Text512 = StaticString<512, char>;
    using Wide80 = StaticString<80, char16_t>;
    using Wide512 = StaticString<512, char16_t>;
    using VarnixBase::Core::Types::PnDeviceState;
    using VarnixBase::Example::StringPort_s;
    PortFactory::GetInstance().AddFactoryMethod<TextRecordPort>("textRecord");
    ConnectorFactory::GetInstance().AddFactoryMethod<VarnixBase::Example::DemoStringConnector>("demoString");
    library->AddStruct<StringPort_s>()
        .Member("text", &StringPort_s::text)
        .Member("code", &StringPort_s::code)
        .Member("state", &StringPort_s::state);

    // Every port type: the device ports, each numeric type plain (start) and qualified (end), the
    // four texts of both families, and the application's record. Connectors of every kind: a copy
    // of each numeric type into a qualified port and a copy out of a qualified port, short texts
    // of both widths between plain and qualified ports, scales forwards, backwards and with a zero
    // gain (parameters by value and bound by reference, a device port as quality provider), and
    // the example's text connector.
    const std::vector<std::string> numeric{"boolean", "int8",   "uint8",  "int16",   "uint16", "int32",
                                           "uint32",  "int64", "uint64", "float32", "float64"};
    std::string xml = R"(<Configuration><Program type="Every"><Ports>
      <Port name="raw" type="AnalogIn"/><Port name="device" type="PnDeviceState"/>
      <Port name="bias" type="float64"/><Port name="level" type="qualified.float64"/>
      <Port name="halved" type="int16"/><Port name="limit" type="qualified.float32"/>
      <Port name="wide" type="int64"/>
      <Port name="s80" type="string80"/><Port name="s512" type="string512"/>
      <Port name="qs80" type="qualified.string80"/><Port name="qs512" type="qualified.string512"/>
      <Port name="w80" type="wstring80"/><Port name="w512" type="wstring512"/>
      <Port name="qw80" type="qualified.wstring80"/><Port name="qw512" type="qualified.wstring512"/>
      <Port name="record" type="textRecord"/><Port name="recordText" type="qualified.string80"/>
)";
    for (const auto& type : numeric) {
        xml += "<Port name=\"p_" + type + "\" type=\"" + type + "\"/>";
        xml += "<Port name=\"q_" + type + "\" type=\"qualified." + type + "\"/>\n";
    }
    xml += R"(</Ports><Connectors>
      <Connector startPort="raw" endPort="level" type="scale">
        <Parameter name="gain" value="0.5"/><Parameter name="offset" ref="bias"/>
        <QualityProvider ref="device"/>
      </Connector>
      <Connector startPort="p_float64" endPort="halved" type="scale">
        <Parameter name="gain" value="2.0"/><Parameter name="invert" value="true"/>
      </Connector>
      <Connector startPort="p_int32" endPort="limit" type="scale">
        <Parameter name="gain" value="0.0"/><Parameter name="invert" value="true"/>
      </Connector>
      <Connector startPort="q_int32" endPort="wide" type="copy"/>
      <Connector startPort="s80" endPort="qs80" type="copy"/>
      <Connector startPort="s80" endPort="s512" type="copy"/>
      <Connector startPort="qs80" endPort="qs512" type="copy"/>
      <Connector startPort="w80" endPort="qw80" type="copy"/>
      <Connector startPort="w80" endPort="w512" type="copy"/>
      <Connector startPort="qw80" endPort="qw512" type="copy"/>
      <Connector startPort="record" endPort="recordText" type="demoString"/>
)";
    for (const auto& type : numeric) {
        xml += "<Connector startPort=\"p_" + type + "\" endPort=\"q_" + type + "\" type=\"copy\"/>\n";
    }
    xml += "</Connectors></Program></Configuration>";
    WriteDocument("Every", xml);
    auto& program = Start("Every");
    ASSERT_NO_THROW(program.GetProgram().GetBuilder().Complete());
    ASSERT_EQ(program.GetProgram().GetPortProvider().Count(), 17u + 2 * numeric.size());
    ASSERT_EQ(program.GetProgram().GetConnectorProvider().Count(), 11u + numeric.size());

    auto& raw = At<std::uint16_t>("App/Main.raw");
    auto& device = At<std::uint8_t>("App/Main.device");
    auto& input = At<int>("App/Main.p_int32");
    At<double>("App/Main.bias") = 0.25;
    At<double>("App/Main.p_float64") = 9.0;
    At<bool>("App/Main.p_boolean") = true;
    At<Text80>("App/Main.s80") = Text80("short text");
    At<Wide80>("App/Main.w80") = Wide80(u"wide");
    At<StringPort_s>("App/Main.record").text = Text80("record text");

    const std::uint16_t raws[] = {10, 0x8001, 0x8002, 20};
    const std::uint8_t devices[] = {static_cast<std::uint8_t>(PnDeviceState::AR_VALID),
                                    static_cast<std::uint8_t>(PnDeviceState::AR_VALID) |
                                        static_cast<std::uint8_t>(PnDeviceState::PN_NO_DIAG)};
    constexpr int Cycles = 1000;
    {
        VarnixTest::ResourceCounter counter;
        for (int cycle = 0; cycle < Cycles; ++cycle) {
            raw = raws[cycle % 4];
            device = devices[cycle % 2];
            input = cycle;
            Cycle(program);
        }
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }

    // The last cycle ran everything: raw 20, a device with diagnosis, input 999.
    const auto& level = At<QualifiedValue<double>>("App/Main.level");
    EXPECT_EQ(level.value, 10.25);
    EXPECT_EQ(level.quality.state, QualityState::Good);
    EXPECT_EQ(level.timestamp, Now());
    EXPECT_EQ(At<short>("App/Main.halved"), 4);
    EXPECT_EQ(At<QualifiedValue<float>>("App/Main.limit").value, std::numeric_limits<float>::infinity());
    EXPECT_EQ(At<QualifiedValue<int>>("App/Main.q_int32").value, 999);
    EXPECT_EQ(At<long>("App/Main.wide"), 998); // one cycle behind: it runs before the copy into q_int32
    EXPECT_EQ(At<QualifiedValue<bool>>("App/Main.q_boolean").value, true);
    EXPECT_EQ(At<QualifiedValue<double>>("App/Main.q_float64").value, 9.0);
    EXPECT_EQ(At<QualifiedValue<double>>("App/Main.q_float64").timestamp, Now());
    EXPECT_EQ(std::string(At<QualifiedValue<Text80>>("App/Main.qs80").value.data), "short text");
    EXPECT_EQ(std::string(At<Text512>("App/Main.s512").data), "short text");
    EXPECT_EQ(std::string(At<QualifiedValue<Text512>>("App/Main.qs512").value.data), "short text");
    EXPECT_EQ(At<QualifiedValue<Wide80>>("App/Main.qw80").value.length, 1u);
    EXPECT_EQ(At<Wide512>("App/Main.w512").data[0], u'w');
    const auto& recordText = At<QualifiedValue<Text80>>("App/Main.recordText");
    EXPECT_EQ(std::string(recordText.value.data, recordText.value.length), "record text");
    EXPECT_EQ(recordText.timestamp, Now());
}
