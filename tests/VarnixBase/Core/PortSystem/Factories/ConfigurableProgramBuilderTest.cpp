// The program builder: from a document on the host root to ports, connectors, parameters and
// quality providers, with every failure costing its item only.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"

#include "../ProgramHost.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualifiedValue;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace VarnixTest::Builder {

/// A port of doubles with one parameter, "limit" (10.0 unless set).
class LimitedPort : public Port<double> {
public:
    LimitedPort(const Zon::String& name, unsigned long dimension)
        : Port<double>(name, dimension), limit(GetParameterProvider().AddParameter<double>("limit", 10.0))
    {
    }
    Parameter<double>& limit;
};

/// A port that publishes a whole qualified record as a plain structure: its members are reached
/// by a member part in a reference ("record.Value"), with no relative data path in between.
class RecordPort : public PortBaseImpl {
public:
    RecordPort(const Zon::String& name, unsigned long dimension) : PortBaseImpl(name, dimension) {}
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        builder.AddPort<QualifiedValue<double>>(Zon::String(GetName().CStr()), record, GetAttributes());
    }
    QualifiedValue<double> record{};
};

/// A parameter whose binding is always refused.
class RefusingParameter : public IParameter {
public:
    explicit RefusingParameter(const Zon::String& name) : name(name) {}
    const Zon::String& GetName() const override { return name; }
    void Bind(const Zon::String& reference) override
    {
        if (!TryBind(reference)) {
            throw Zon::System::Commons::ArgumentException("Unable to bind parameter `{}` to `{}`.", name, reference);
        }
    }
    bool TryBind(const Zon::String&) override
    {
        ++attempts;
        return false;
    }
    void SetValueByString(const Zon::String&) override {}
    int attempts = 0;

private:
    Zon::String name;
};

class RefusingProvider : public ParameterProvider {
public:
    RefusingProvider() : parameter(std::make_shared<RefusingParameter>("target")) { Append(parameter); }
    std::shared_ptr<RefusingParameter> parameter;
};

/// A port of ints with one parameter, "target", that refuses every binding.
class RefusingPort : public Port<int> {
public:
    RefusingPort(const Zon::String& name, unsigned long dimension) : Port<int>(name, dimension) {}
    ParameterProvider& GetParameterProvider() override { return provider; }
    RefusingProvider provider;
};

class ConfigurableProgramBuilderTest : public ProgramHostTest {
protected:
    void SetUp() override
    {
        ProgramHostTest::SetUp();
        PortFactory::GetInstance().AddFactoryMethod<LimitedPort>("limited");
        PortFactory::GetInstance().AddFactoryMethod<RecordPort>("record");
        PortFactory::GetInstance().AddFactoryMethod<RefusingPort>("refusing");
    }

    ConfigurableProgramBaseImpl& Program(HostedProgram& hosted) { return hosted.GetProgram(); }

    template <class T>
    std::shared_ptr<T> PortOf(HostedProgram& hosted, const char* name)
    {
        return std::dynamic_pointer_cast<T>(hosted.GetProgram().GetPortProvider().GetPort(name));
    }

    bool CompleteThrows(HostedProgram& hosted)
    {
        try {
            hosted.GetProgram().GetBuilder().Complete();
            return false;
        } catch (const Zon::System::Commons::InvalidConfigException& failure) {
            EXPECT_EQ(std::string(failure.what()),
                      "Configuration of configurable program type `" + hosted.GetProgram().GetTypeName().ToStdString() +
                          "` is invalid.");
            return true;
        }
    }

    /// The messages of one level that the builder logged itself.
    std::vector<std::string> BuilderMessages(LogLevel level)
    {
        std::vector<std::string> messages;
        for (const auto& entry : Capture().GetEntries(level)) {
            if (entry.loggerName == Zon::CommonTypeName<ConfigurableProgramBuilder>().ToStdString()) {
                messages.push_back(entry.message);
            }
        }
        return messages;
    }
};

} // namespace VarnixTest::Builder

using VarnixTest::Builder::ConfigurableProgramBuilderTest;
using VarnixTest::Builder::LimitedPort;
using VarnixTest::Builder::RefusingPort;

TEST_F(ConfigurableProgramBuilderTest, ADocumentWithoutAProgramOfTheTypeGivesNoPortNoConnectorAndNoFailure)
{
    WriteDocument("Tank", R"(<Configuration>
  <Program type="Pump"><Ports><Port name="a" type="int32"/><Port name="b" type="int32"/></Ports>
    <Connectors><Connector startPort="a" endPort="b" type="copy"/></Connectors></Program>
  <Program type="tank"><Ports><Port name="c" type="int32"/></Ports></Program>
</Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Program(program).GetPortProvider().Count(), 0u);
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 0u);
    EXPECT_TRUE(Errors().empty());
    EXPECT_FALSE(CompleteThrows(program));
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Total 0 ports and 0 connections in `Tank`."), 1u);
}

TEST_F(ConfigurableProgramBuilderTest, TwoProgramEntriesOfTheSameTypeAreBothBuiltAndEachLogsItsOwnCount)
{
    WriteDocument("Tank", R"(<Configuration>
  <Program type="Tank"><Ports><Port name="a" type="int32"/><Port name="b" type="int32"/></Ports>
    <Connectors><Connector startPort="a" endPort="b" type="copy"/></Connectors></Program>
  <Program type="Tank"><Ports><Port name="c" type="int32"/></Ports>
    <Connectors><Connector startPort="b" endPort="c" type="copy"/><Connector startPort="a" endPort="c" type="copy"/></Connectors>
  </Program>
</Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Program(program).GetPortProvider().Count(), 3u);
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 3u);
    std::vector<std::string> expected{"Loading program configuration `/opt/varnix/data/VarnixBase/Core/PortSystem/Tank.prog.config`",
                                      "Add 2 ports to `App/Main`",
                                      "Add 1 ports to `App/Main`",
                                      "Add 1 connectors inside `App/Main`",
                                      "Add 2 connectors inside `App/Main`"};
    std::vector<std::string> builderInfo;
    for (const auto& entry : Capture().GetEntries(LogLevel::Info)) {
        if (entry.loggerName == "VarnixBase.Core.PortSystem.ConfigurableProgramBuilder") {
            builderInfo.push_back(entry.message);
        }
    }
    EXPECT_EQ(builderInfo, expected);
}

TEST_F(ConfigurableProgramBuilderTest, AnEntryWithAnEmptyPortsListLogsNoCountLine)
{
    WriteDocument("Tank", R"(<Configuration>
  <Program type="Tank"><Ports/><Connectors/></Program>
  <Program type="Tank"/>
</Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Program(program).GetPortProvider().Count(), 0u);
    EXPECT_EQ(Capture().CountContaining(LogLevel::Info, " ports to "), 0u);
    EXPECT_EQ(Capture().CountContaining(LogLevel::Info, " connectors inside "), 0u);
}

TEST_F(ConfigurableProgramBuilderTest, APortOfUnknownTypeBetweenTwoGoodPortsLeavesTheGoodOnesAndCompleteThrows)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="a" type="int32"/>
  <Port name="b" type="qualified.AnalogIn"/>
  <Port name="c" type="float64"/>
</Ports></Program></Configuration>)");
    auto& program = Start("Tank");
    auto& ports = Program(program).GetPortProvider();
    EXPECT_EQ(ports.Count(), 2u);
    EXPECT_TRUE(ports.HasPort("a"));
    EXPECT_FALSE(ports.HasPort("b"));
    EXPECT_TRUE(ports.HasPort("c"));
    EXPECT_EQ(Errors(), std::vector<std::string>{"Port `b` has unsupported type `qualified.AnalogIn`"});
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, ABadParameterValueOnAPortLeavesThePortWithTheParameterDefaultAndCompleteThrows)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="high" type="limited"><Parameter name="limit" value="much"/></Port>
  <Port name="low" type="limited"><Parameter name="limit" value="2.5"/></Port>
</Ports></Program></Configuration>)");
    auto& program = Construct("Tank");
    ASSERT_EQ(Program(program).GetPortProvider().Count(), 2u);
    EXPECT_EQ(PortOf<LimitedPort>(program, "high")->limit.GetValue(), 10.0);
    EXPECT_EQ(PortOf<LimitedPort>(program, "low")->limit.GetValue(), 2.5);
    EXPECT_EQ(Errors(), std::vector<std::string>{"Parameter `limit` of type `double` has invalid configuration `much`"});
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AParameterThatAPortDoesNotHaveCostsThatParameterOnly)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="high" type="limited">
    <Parameter name="limits" value="1.0"/>
    <Parameter name="limit" value="3.0"/>
  </Port>
</Ports></Program></Configuration>)");
    auto& program = Construct("Tank");
    ASSERT_EQ(Program(program).GetPortProvider().Count(), 1u);
    EXPECT_EQ(PortOf<LimitedPort>(program, "high")->limit.GetValue(), 3.0);
    EXPECT_EQ(Errors(), std::vector<std::string>{"Parameter `limits` not found"});
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AConnectorFromAToBIsNamedAColonBAndAQualityProviderCanNameIt)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="a" type="int32"/><Port name="b" type="int32"/>
    <Port name="watch" type="AnalogIn"><QualityProvider ref="a:b"/></Port>
  </Ports>
  <Connectors><Connector startPort="a" endPort="b" type="copy"/></Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    std::shared_ptr<IConnector> connector;
    ASSERT_TRUE(Program(program).GetConnectorProvider().TryGetConnector("a:b", connector));
    EXPECT_EQ(connector->GetName(), Zon::String("a:b"));
    auto watch = Program(program).GetPortProvider().GetPort("watch");
    ASSERT_EQ(watch->GetQualityProviders().size(), 1u);
    EXPECT_EQ(watch->GetQualityProviders().front().get(), static_cast<VarnixBase::Core::QualitySystem::IQualityProvider*>(connector.get()));
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Add `copy` connector `a:b` to `Tank`"), 1u);
    EXPECT_FALSE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AConnectorWhoseStartPortHoldsAMemberPartKeepsItInItsNameAndLooksUpThePortNameAlone)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="record" type="record"/><Port name="level" type="qualified.float64"/></Ports>
  <Connectors><Connector startPort="record.Value" endPort="level" type="copy"/></Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    std::shared_ptr<IConnector> connector;
    ASSERT_TRUE(Program(program).GetConnectorProvider().TryGetConnector("record.Value:level", connector));
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "copy from App/Main.record.Value to App/Main.level.Value"), 1u);
    // The connector takes the quality of the port named by the part in front of the member.
    auto record = Program(program).GetPortProvider().GetPort("record");
    ASSERT_EQ(connector->GetQualityProviders().size(), 1u);
    EXPECT_EQ(connector->GetQualityProviders().front().get(),
              static_cast<VarnixBase::Core::QualitySystem::IQualityProvider*>(record.get()));

    At<double>("App/Main.record.Value") = 6.5;
    Cycle(program);
    EXPECT_EQ(At<double>("App/Main.level.Value"), 6.5);
}

TEST_F(ConfigurableProgramBuilderTest, APortReferenceGetsTheRelativeDataPathBetweenThePortNameAndTheMemberPart)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="level" type="qualified.float64"/><Port name="plain" type="float64"/></Ports>
  <Connectors>
    <Connector startPort="level.raw[2]" endPort="plain.raw[2]" type="copy"/>
    <Connector startPort="plain[1].x" endPort="level[0]" type="copy"/>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "copy from App/Main.level.Value.raw[2] to App/Main.plain.raw[2]"), 1u);
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "copy from App/Main.plain[1].x to App/Main.level.Value[0]"), 1u);
    // Neither path resolves to a variable: both connectors fail at their creation.
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 0u);
    EXPECT_EQ(BuilderMessages(LogLevel::Error).size(), 2u);
}

TEST_F(ConfigurableProgramBuilderTest, AParameterReferenceGetsTheRelativeDataPathBehindTheWholeReference)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="level" type="qualified.float64"/><Port name="a" type="float64"/><Port name="b" type="float64"/>
  </Ports>
  <Connectors>
    <Connector startPort="a" endPort="b" type="scale">
      <Parameter name="gain" ref="level.raw"/>
      <Parameter name="offset" ref="level"/>
    </Connector>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Bind parameter `gain` to reference `App/Main.level.raw.Value` in `Tank`."),
              1u);
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Bind parameter `offset` to reference `App/Main.level.Value` in `Tank`."),
              1u);
    // "App/Main.level.raw.Value" names no variable of the component: the binding is made to no
    // address, which the parameter reads as zero, while "offset" follows the port.
    EXPECT_TRUE(Errors().empty());
    At<double>("App/Main.a") = 2.0;
    At<double>("App/Main.level.Value") = 0.25;
    Cycle(program);
    EXPECT_EQ(At<double>("App/Main.b"), 0.25);
}

TEST_F(ConfigurableProgramBuilderTest, AMissingLegacyAndDataFileGiveOneErrorLineWithTheFileNameAloneAndTheProgramComesUp)
{
    auto& program = Start("Tank");
    EXPECT_TRUE(Program(program).IsInitialized());
    EXPECT_EQ(Errors(), std::vector<std::string>{
                            "Load configuration for `Tank.prog.config` failed: File "
                            "`/opt/varnix/data/VarnixBase/Core/PortSystem/Tank.prog.config` not found."});
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Loading program configuration "
                                              "`/opt/varnix/data/VarnixBase/Core/PortSystem/Tank.prog.config`"),
              1u);
    Cycle(program);
    EXPECT_FALSE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AFileInTheLegacyDirectoryWinsOverANewerOneUnderTheDataDirectory)
{
    WritePlatformFile(std::string(LegacyDirectory) + "/Tank.prog.config",
                      R"(<C><Program type="Tank"><Ports><Port name="legacy" type="int32"/></Ports></Program></C>)");
    WriteDocument("Tank", R"(<C><Program type="Tank"><Ports><Port name="local" type="int32"/></Ports></Program></C>)");
    using Zon::System::Commons::Io::FileSystemInfo;
    FileSystemInfo::SetLastWriteTime(std::string(LegacyDirectory) + "/Tank.prog.config",
                                     Zon::DateTime::FromUnixTimeMicroseconds(1'500'000'000'000'000));
    FileSystemInfo::SetLastWriteTime(std::string(DataDirectory) + "/Tank.prog.config",
                                     Zon::DateTime::FromUnixTimeMicroseconds(1'600'000'000'000'000));
    auto& program = Construct("Tank");
    EXPECT_TRUE(Program(program).GetPortProvider().HasPort("legacy"));
    EXPECT_FALSE(Program(program).GetPortProvider().HasPort("local"));
    EXPECT_EQ(Messages(LogLevel::Warning),
              std::vector<std::string>{"Loading program configuration from legacy path "
                                       "`/opt/varnix/projects/VarnixBase/Config/Types/Tank.prog.config`."});
}

TEST_F(ConfigurableProgramBuilderTest, ARefNamingAMissingPortIsReportedByThePortLookUpAndNotAsARefusedBinding)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="a" type="float64"/><Port name="b" type="float64"/></Ports>
  <Connectors><Connector startPort="a" endPort="b" type="scale"><Parameter name="gain" ref="ghost.x"/></Connector></Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Errors(), std::vector<std::string>{"Port `ghost` does not exist"});
    EXPECT_EQ(Capture().CountContaining(LogLevel::Error, "Unable to bind parameter"), 0u);
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AfterClearConfigurationAFurtherAddParametersLogsNothing)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="a" type="float64"/><Port name="b" type="float64"/></Ports>
  <Connectors><Connector startPort="a" endPort="b" type="scale"><Parameter name="gain" ref="a"/></Connector></Connectors>
</Program></Configuration>)");
    auto& program = Construct("Tank");
    program.Publish(*publisher);
    auto& builder = Program(program).GetBuilder();
    builder.AddConnectors();
    builder.ClearConfiguration();
    Capture().Clear();
    builder.AddParameters();
    EXPECT_EQ(Capture().Size(), 0u);
    builder.AddConnectors();
    builder.AddQualityProviders();
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 1u);
}

TEST_F(ConfigurableProgramBuilderTest, ASecondRunOfTheSecondPhaseFindsNothingAndLogsNothing)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="a" type="float64"/><Port name="b" type="float64"><QualityProvider ref="a"/></Port></Ports>
  <Connectors><Connector startPort="a" endPort="b" type="scale"><Parameter name="gain" ref="a"/></Connector></Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    auto b = Program(program).GetPortProvider().GetPort("b");
    std::size_t providers = b->GetQualityProviders().size();
    Capture().Clear();
    Runtime().RaisePortsPublished();
    EXPECT_EQ(Capture().Size(), 0u);
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 1u);
    EXPECT_EQ(b->GetQualityProviders().size(), providers);
    EXPECT_TRUE(Program(program).IsInitialized());
}

TEST_F(ConfigurableProgramBuilderTest, ASuccessfulBuildLogsEachStepAtItsLevel)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="a" type="float64" attributes="Retain Input"/>
    <Port name="b" type="qualified.float64"><QualityProvider ref="a"/></Port>
  </Ports>
  <Connectors><Connector startPort="a" endPort="b" type="scale"><Parameter name="gain" ref="a"/></Connector></Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    program.GetProgram().GetBuilder().Complete();
    std::vector<std::pair<LogLevel, std::string>> expected{
        {LogLevel::Info, "Loading program configuration `/opt/varnix/data/VarnixBase/Core/PortSystem/Tank.prog.config`"},
        {LogLevel::Info, "Add 2 ports to `App/Main`"},
        {LogLevel::Debug, "Add port `a`, type: `float64`, attributes: `Input|Retain` to `Tank`"},
        {LogLevel::Debug, "Add port `b`, type: `qualified.float64`, attributes: `None` to `Tank`"},
        {LogLevel::Info, "Add 1 connectors inside `App/Main`"},
        {LogLevel::Debug, "scale from App/Main.a to App/Main.b.Value"},
        {LogLevel::Debug, "Add `scale` connector `a:b` to `Tank`"},
        {LogLevel::Info, "Bind 1 parameters in `Tank`"},
        {LogLevel::Debug, "Bind parameter `gain` to reference `App/Main.a` in `Tank`."},
        {LogLevel::Info, "Bind 1 quality providers in `Tank`"},
        {LogLevel::Debug, "Add quality provider a to `Tank`"},
        {LogLevel::Info, "Total 2 ports and 1 connections in `Tank`."},
    };
    std::vector<std::pair<LogLevel, std::string>> logged;
    for (const auto& entry : Capture().GetEntries()) {
        if (entry.loggerName == "VarnixBase.Core.PortSystem.ConfigurableProgramBuilder") {
            logged.emplace_back(entry.level, entry.message);
        }
    }
    EXPECT_EQ(logged, expected);
}

TEST_F(ConfigurableProgramBuilderTest, ARefusedBindingIsLoggedWithTheReferenceAndDoesNotCountAsAFailure)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="a" type="float64"/>
  <Port name="r" type="refusing"><Parameter name="target" ref="a"/></Port>
</Ports></Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(PortOf<RefusingPort>(program, "r")->provider.parameter->attempts, 1);
    EXPECT_EQ(Errors(), std::vector<std::string>{"Unable to bind parameter `target` to reference `a` in `Tank`."});
    EXPECT_FALSE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AQualityReferenceThatNamesNothingIsAFailureAndIsComparedWhole)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="a" type="float64"/>
  <Port name="w" type="AnalogIn"><QualityProvider ref="a.Value"/><QualityProvider ref="a"/></Port>
</Ports></Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Errors(), std::vector<std::string>{"Quality provider reference `a.Value` does not exist in `Tank`"});
    EXPECT_EQ(Program(program).GetPortProvider().GetPort("w")->GetQualityProviders().size(), 1u);
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AQualityReferenceNamesAPortBeforeAConnectorOfTheSameName)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports>
    <Port name="a" type="int32"/><Port name="b" type="int32"/><Port name="a:b" type="int32"/>
    <Port name="w" type="AnalogIn"><QualityProvider ref="a:b"/></Port>
  </Ports>
  <Connectors><Connector startPort="a" endPort="b" type="copy"/></Connectors>
</Program></Configuration>)");
    auto& program = Construct("Tank");
    program.Publish(*publisher);
    Runtime().RaisePortsPublished();
    ASSERT_EQ(Program(program).GetConnectorProvider().Count(), 1u);
    auto w = Program(program).GetPortProvider().GetPort("w");
    auto port = Program(program).GetPortProvider().GetPort("a:b");
    ASSERT_EQ(w->GetQualityProviders().size(), 1u);
    EXPECT_EQ(w->GetQualityProviders().front().get(), static_cast<VarnixBase::Core::QualitySystem::IQualityProvider*>(port.get()));
}

TEST_F(ConfigurableProgramBuilderTest, AConnectorRefusedAtADuplicateNameStaysAmongTheEndPortsQualityProvidersAndNeverRuns)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank">
  <Ports><Port name="a" type="int32"/><Port name="b" type="qualified.int32"/></Ports>
  <Connectors>
    <Connector startPort="a" endPort="b" type="copy"/>
    <Connector startPort="a" endPort="b" type="scale"><Parameter name="gain" value="100.0"/></Connector>
  </Connectors>
</Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_EQ(Errors(), std::vector<std::string>{"Connector `a:b` already exists"});
    EXPECT_EQ(Program(program).GetConnectorProvider().Count(), 1u);
    auto b = Program(program).GetPortProvider().GetPort("b");
    EXPECT_EQ(b->GetQualityProviders().size(), 2u);
    At<int>("App/Main.a") = 3;
    Cycle(program);
    EXPECT_EQ(At<int>("App/Main.b.Value"), 3);
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, APendingParameterOfARefusedPortIsBoundOnTheRefusedPortAndLeavesTheProgramsPortAlone)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports>
  <Port name="a" type="float64"/>
  <Port name="l" type="limited"/>
  <Port name="l" type="limited"><Parameter name="limit" ref="a"/></Port>
</Ports></Program></Configuration>)");
    auto& program = Construct("Tank");
    EXPECT_EQ(Errors(), std::vector<std::string>{"Port `l` already exists"});
    program.Publish(*publisher);
    Runtime().RaisePortsPublished();
    // The binding was resolved on the refused port, kept alive by the binding itself; the
    // program's own port keeps its default.
    EXPECT_EQ(Capture().Count(LogLevel::Debug, "Bind parameter `limit` to reference `App/Main.a` in `Tank`."), 1u);
    EXPECT_EQ(Errors().size(), 1u);
    At<double>("App/Main.a") = 3.0;
    EXPECT_EQ(PortOf<LimitedPort>(program, "l")->limit.GetValue(), 10.0);
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, FailuresAreRememberedAfterTheSettingsAreCleared)
{
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports><Port name="a" type="nothing"/></Ports></Program></Configuration>)");
    auto& program = Start("Tank");
    EXPECT_TRUE(Program(program).IsInitialized());
    EXPECT_TRUE(CompleteThrows(program));
    Program(program).GetBuilder().ClearConfiguration();
    EXPECT_TRUE(CompleteThrows(program));
}

TEST_F(ConfigurableProgramBuilderTest, AnAppendedBindingNeedsAProviderAndAnAppendedQualityBindingAConsumer)
{
    auto& program = Construct("Tank");
    EXPECT_THROW(Program(program).GetBuilder().AddParameterBinding(ParameterBinding{}), Zon::System::Commons::ArgumentException);
    EXPECT_THROW(Program(program).GetBuilder().AddQualityBinding(QualityBinding{}), Zon::System::Commons::ArgumentException);
}

TEST_F(ConfigurableProgramBuilderTest, AnAppendedBindingWithAValueIsSetByAddParameters)
{
    auto& program = Construct("Tank");
    ParameterProvider own;
    auto& gain = own.AddParameter<double>("gain", 1.0);
    Program(program).GetBuilder().AddParameterBinding(ParameterBinding{&own, {"gain", "4.5", ""}, nullptr});
    Program(program).GetBuilder().AddParameters();
    EXPECT_EQ(gain.GetValue(), 4.5);
    EXPECT_EQ(Capture().Count(LogLevel::Info, "Bind 1 parameters in `Tank`"), 1u);
}
