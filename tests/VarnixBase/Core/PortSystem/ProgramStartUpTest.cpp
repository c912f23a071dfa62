// A configurable program between its construction and its first full cycle: the domain proxy,
// the subscription to its event, the two build phases.
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "Zon/AppDomain.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Plc/Commons/Domain/PlcDomainProxy.hpp"

#include "ProgramHost.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualifiedValue;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

class ProgramStartUp : public VarnixTest::ProgramHostTest {
protected:
    std::size_t Subscribers() { return Runtime().GetDomainProxy().PortsPublished.GetSubscriberCount(); }

    static constexpr const char* TankDocument = R"(<Configuration><Program type="Tank">
  <Ports><Port name="raw" type="AnalogIn"/><Port name="level" type="qualified.float64"/></Ports>
  <Connectors><Connector startPort="raw" endPort="level" type="scale"><Parameter name="gain" value="2.0"/></Connector></Connectors>
</Program></Configuration>)";
};

std::string MessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const Zon::Exception& failure) {
        return failure.GetMessage().ToStdString();
    }
    return "(no exception)";
}

} // namespace

TEST(ProgramStartUpWithoutDomain, ConstructionWithoutAnApplicationDomainThrowsWithTheDomainsTypeName)
{
    TypeDomain domain;
    EXPECT_EQ(MessageOf([&] { ConfigurableProgramBaseImpl program("App/Main", "Tank", domain); }),
              "Singleton instance of type 'Zon.AppDomain' was not created yet!");
}

TEST(ProgramStartUpWithoutProxy, ConstructionWithoutADomainProxyThrowsWithTheProxysTypeName)
{
    VarnixTest::TempDir root;
    Zon::Host::RuntimeOptions options;
    options.fileSystemRoot = root.Path().string();
    options.consoleLevel.reset();
    options.createDomainProxy = false;
    Zon::Host::Runtime runtime(options);
    TypeDomain domain;
    EXPECT_EQ(MessageOf([&] { ConfigurableProgramBaseImpl program("App/Main", "Tank", domain); }),
              "AppDomain Singleton instance of type 'Zon.Plc.Commons.Domain.PlcDomainProxy' was not created yet!");
    // Nothing was read: the failure comes before the configuration.
    EXPECT_EQ(runtime.GetCapture().CountContaining(LogLevel::Info, "Loading program configuration"), 0u);
}

TEST_F(ProgramStartUp, TheConstructorSubscribesOneMethodDelegateAndTheDestructorRemovesIt)
{
    std::size_t before = Subscribers();
    {
        ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
        EXPECT_EQ(Subscribers(), before + 1);
        ConfigurableProgramBaseImpl other("App/Other", "Tank", domain);
        EXPECT_EQ(Subscribers(), before + 2);
    }
    EXPECT_EQ(Subscribers(), before);
    // With the subscription gone, the event reaches nobody.
    EXPECT_NO_THROW(Runtime().RaisePortsPublished());
}

TEST_F(ProgramStartUp, TheDestructorRemovesOnlyItsOwnSubscription)
{
    WriteDocument("Tank", TankDocument);
    auto& kept = Construct("Tank", "App/Kept");
    kept.Publish(*publisher);
    {
        ConfigurableProgramBaseImpl gone("App/Gone", "Tank", domain);
    }
    Runtime().RaisePortsPublished();
    EXPECT_TRUE(kept.GetProgram().IsInitialized());
    EXPECT_EQ(kept.GetProgram().GetConnectorProvider().Count(), 1u);
}

TEST_F(ProgramStartUp, AfterConstructionThePortsExistAndThereIsNoConnectorYet)
{
    WriteDocument("Tank", TankDocument);
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    EXPECT_EQ(program.GetPortProvider().Count(), 2u);
    EXPECT_EQ(program.GetConnectorProvider().Count(), 0u);
    EXPECT_FALSE(program.IsInitialized());
}

TEST_F(ProgramStartUp, TheProxysEventRunsTheSecondPhaseAndInitialisesTheProgram)
{
    WriteDocument("Tank", TankDocument);
    auto& program = Construct("Tank");
    program.Publish(*publisher);
    Runtime().RaisePortsPublished();
    EXPECT_TRUE(program.GetProgram().IsInitialized());
    EXPECT_EQ(program.GetProgram().GetConnectorProvider().Count(), 1u);
}

TEST_F(ProgramStartUp, ExecuteBeforeTheEventRunsExecutablePortsOnlyAndNoConnector)
{
    WriteDocument("Tank", TankDocument);
    auto& program = Construct("Tank");
    program.Publish(*publisher);
    auto raw = program.GetProgram().GetPortProvider().GetPort("raw");
    auto& level = At<QualifiedValue<double>>("App/Main.level");

    At<std::uint16_t>("App/Main.raw") = 0x8001;
    Cycle(program);
    // The device port ran: it judged its raw value.
    EXPECT_EQ(raw->GetQuality().state, QualityState::Bad);
    EXPECT_EQ(raw->GetQuality().flags, QualityFlags::Overrange);
    // No connector ran: the end port was never written.
    EXPECT_EQ(level.value, 0.0);
    EXPECT_EQ(level.timestamp, 0);
    EXPECT_FALSE(program.GetProgram().IsInitialized());

    Runtime().RaisePortsPublished();
    At<std::uint16_t>("App/Main.raw") = 100;
    Cycle(program);
    EXPECT_EQ(raw->GetQuality().state, QualityState::Good);
    EXPECT_EQ(level.value, 200.0);
    EXPECT_EQ(level.timestamp, Zon::DateTime::Now().ToUnixTimeMicroseconds());
}

TEST_F(ProgramStartUp, ApplyPortsHasNoEffectAtAnyTime)
{
    WriteDocument("Tank", TankDocument);
    auto& hosted = Construct("Tank");
    ConfigurableProgramBaseImpl& program = hosted.GetProgram();
    std::size_t logged = Capture().Size();

    program.ApplyPorts();
    EXPECT_EQ(program.GetPortProvider().Count(), 2u);
    EXPECT_EQ(program.GetConnectorProvider().Count(), 0u);
    EXPECT_FALSE(program.IsInitialized());
    EXPECT_EQ(Capture().Size(), logged);

    hosted.Publish(*publisher);
    program.ApplyPorts();
    Runtime().RaisePortsPublished();
    EXPECT_EQ(program.GetConnectorProvider().Count(), 1u);
    logged = Capture().Size();
    program.ApplyPorts();
    EXPECT_EQ(program.GetPortProvider().Count(), 2u);
    EXPECT_EQ(program.GetConnectorProvider().Count(), 1u);
    EXPECT_TRUE(program.IsInitialized());
    EXPECT_EQ(Capture().Size(), logged);

    At<std::uint16_t>("App/Main.raw") = 4;
    Cycle(hosted);
    EXPECT_EQ(At<double>("App/Main.level.Value"), 8.0);
}

TEST_F(ProgramStartUp, ApplyConfigurationInitialisesAndDropsTheParsedSettings)
{
    WriteDocument("Tank", TankDocument);
    auto& hosted = Construct("Tank");
    hosted.Publish(*publisher);
    hosted.GetProgram().ApplyConfiguration();
    EXPECT_TRUE(hosted.GetProgram().IsInitialized());
    // The settings are gone: the event then builds no connector.
    Runtime().RaisePortsPublished();
    EXPECT_EQ(hosted.GetProgram().GetConnectorProvider().Count(), 0u);
    EXPECT_EQ(hosted.GetProgram().GetPortProvider().Count(), 2u);
}

TEST_F(ProgramStartUp, ASecondEventRunsTheSecondPhaseAgainWithoutEffect)
{
    WriteDocument("Tank", TankDocument);
    auto& program = Start("Tank");
    ASSERT_EQ(program.GetProgram().GetConnectorProvider().Count(), 1u);
    Runtime().RaisePortsPublished();
    EXPECT_EQ(program.GetProgram().GetConnectorProvider().Count(), 1u);
    EXPECT_TRUE(program.GetProgram().IsInitialized());
    At<std::uint16_t>("App/Main.raw") = 3;
    Cycle(program);
    EXPECT_EQ(At<double>("App/Main.level.Value"), 6.0);
}

TEST_F(ProgramStartUp, AFailureThatIsNoPlatformExceptionLeavesTheConstructorAndTakesTheSubscriptionBack)
{
    // A creator registered without a function: the builder does not catch the standard
    // bad-function-call, so it leaves the first build phase and the constructor.
    PortFactory::GetInstance().AddFactoryMethod("hollow", std::make_shared<PortFactory::FactoryMethod>());
    WriteDocument("Tank", R"(<Configuration><Program type="Tank"><Ports><Port name="a" type="hollow"/></Ports></Program></Configuration>)");
    std::size_t before = Subscribers();
    EXPECT_THROW(ConfigurableProgramBaseImpl("App/Main", "Tank", domain), std::bad_function_call);
    EXPECT_EQ(Subscribers(), before);
    EXPECT_NO_THROW(Runtime().RaisePortsPublished());
}

TEST_F(ProgramStartUp, TheTypeNameIsTheStemOfTheConfigurationFileName)
{
    WriteDocument("Pump.Station", R"(<Configuration><Program type="Pump.Station"><Ports><Port name="a" type="int32"/></Ports></Program></Configuration>)");
    ConfigurableProgramBaseImpl program("App/Main", "Pump.Station", domain);
    EXPECT_TRUE(program.GetPortProvider().HasPort("a"));
}

using ProgramStartUpDeathTest = ProgramStartUp;

TEST_F(ProgramStartUpDeathTest, DestroyingAProgramWhoseDomainProxyIsGoneEndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            auto program = std::make_unique<ConfigurableProgramBaseImpl>("App/Main", "Tank", domain);
            Runtime().GetDomain().Unregister<Zon::Plc::Commons::Domain::PlcDomainProxy>();
            program.reset();
        },
        "");
}
