#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "Zon/Host/Clock.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using VarnixBase::Commons::IExecutable;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;

namespace {

class ConfigurableProgram : public VarnixTest::HostTest {
protected:
    TypeDomain domain;
};

/// Copies an `int` from one published address to another, then raises `changed`: the shape of a
/// connector's cycle, with its data pointers resolved once beforehand.
class CopyingConnector : public FakeConnector {
public:
    CopyingConnector(const String& name, const int* source, int* destination)
        : FakeConnector(name), source(source), destination(destination)
    {
    }
    void Execute() override
    {
        *destination = *source;
        changed(*this);
    }
    const int* source;
    int* destination;
};

} // namespace

TEST_F(ConfigurableProgram, GetTypeNameReturnsTheSecondArgumentAndGetInstancePathTheFirst)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    EXPECT_EQ(program.GetTypeName(), String("TankControl"));
    EXPECT_EQ(program.GetInstancePath(), String("App/Main"));
    const IConfigurableProgram& asInterface = program;
    EXPECT_EQ(asInterface.GetTypeName(), String("TankControl"));
    EXPECT_EQ(asInterface.GetInstancePath(), String("App/Main"));
}

TEST_F(ConfigurableProgram, IsNotInitializedAfterConstruction)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    EXPECT_FALSE(program.IsInitialized());
}

TEST_F(ConfigurableProgram, ProvidersStartEmptyAndAreTheSameObjectsEveryTime)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    EXPECT_EQ(program.GetPortProvider().Count(), 0u);
    EXPECT_EQ(program.GetConnectorProvider().Count(), 0u);
    EXPECT_EQ(&program.GetPortProvider(), &program.GetPortProvider());
    EXPECT_EQ(&program.GetConnectorProvider(), &program.GetConnectorProvider());
}

TEST_F(ConfigurableProgram, WithAnEmptyListExecuteReturnsAtOnce)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    Capture().Clear();
    VarnixTest::ResourceCounter counter;
    EXPECT_NO_THROW(program.Execute());
    EXPECT_EQ(counter.Allocations(), 0u);
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(ConfigurableProgram, ExecuteRunsTheExecutablesInTheOrderOfAdding)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    std::vector<std::string> journal;
    program.AddExecutable(std::make_shared<JournalExecutable>("a", journal));
    program.AddExecutable(std::make_shared<JournalExecutable>("b", journal));
    program.AddExecutable(std::make_shared<JournalExecutable>("c", journal));
    program.Execute();
    EXPECT_EQ(journal, (std::vector<std::string>{"a", "b", "c"}));
}

TEST_F(ConfigurableProgram, AThrowingExecutableStopsTheCycleAndThoseBehindRunOnlyOnceItStopsThrowing)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    std::vector<std::string> journal;
    auto failing = std::make_shared<FailingExecutable>(journal);
    program.AddExecutable(std::make_shared<JournalExecutable>("before", journal));
    program.AddExecutable(failing);
    program.AddExecutable(std::make_shared<JournalExecutable>("after", journal));

    EXPECT_THROW(program.Execute(), std::runtime_error);
    EXPECT_EQ(journal, (std::vector<std::string>{"before"}));
    EXPECT_THROW(program.Execute(), std::runtime_error);
    EXPECT_EQ(journal, (std::vector<std::string>{"before", "before"}));

    failing->failing = false;
    program.Execute();
    EXPECT_EQ(journal, (std::vector<std::string>{"before", "before", "before", "failing", "after"}));
}

TEST_F(ConfigurableProgram, TheSameExecutableAddedTwiceRunsTwiceInEachCycle)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    std::vector<std::string> journal;
    auto once = std::make_shared<JournalExecutable>("x", journal);
    program.AddExecutable(once);
    program.AddExecutable(once);
    program.Execute();
    EXPECT_EQ(journal.size(), 2u);
    program.Execute();
    EXPECT_EQ(journal.size(), 4u);
}

TEST_F(ConfigurableProgram, AddExecutableSharesOwnershipWithTheCaller)
{
    std::vector<std::string> journal;
    auto executable = std::make_shared<JournalExecutable>("x", journal);
    {
        ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
        program.AddExecutable(executable);
        EXPECT_EQ(executable.use_count(), 2);
    }
    EXPECT_EQ(executable.use_count(), 1);
}

TEST_F(ConfigurableProgram, ExecutablePortsRunBeforeConnectorsInTheirOrderOfAdding)
{
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    auto connector = std::make_shared<FakeConnector>("copy");
    auto port = std::make_shared<CountingPort>("counter", 1);
    // The connector's run sees the port's run of the same cycle.
    int seenByConnector = -1;
    struct Observer {
        CountingPort* port;
        int* seen;
        void OnChanged(IConnector&) { *seen = port->GetValue(); }
    } observer{port.get(), &seenByConnector};
    connector->changed += Zon::make_delegate(&observer, &Observer::OnChanged);

    program.GetPortProvider().AddPort(port);
    program.GetConnectorProvider().AddConnector(connector);
    program.Execute();
    EXPECT_EQ(port->GetValue(), 1);
    EXPECT_EQ(connector->runs, 1);
    EXPECT_EQ(seenByConnector, 1);
}

TEST_F(ConfigurableProgram, ExecuteOfPortsAndConnectorsAllocatesNothingAndTakesNoLock)
{
    Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(1'700'000'000'000'000));
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    auto first = std::make_shared<CountingPort>("first", 1);
    auto second = std::make_shared<CountingPort>("second", 1);
    auto target = std::make_shared<QualifiedPort<int>>("target", 1);
    program.GetPortProvider().AddPort(first);
    program.GetPortProvider().AddPort(second);
    program.GetPortProvider().AddPort(target);

    DynamicPortsBuilder builder;
    program.GetPortProvider().Publish(builder);
    const auto& entries = builder.GetEntries();
    ASSERT_EQ(entries.size(), 3u);
    auto* source = static_cast<const int*>(entries[0].address);
    auto* destination = reinterpret_cast<int*>(static_cast<char*>(entries[2].address) +
                                               offsetof(VarnixBase::Core::QualitySystem::QualifiedValue<int>, value));

    auto connector = std::make_shared<CopyingConnector>("copy", source, destination);
    connector->AddQualityProvider(first);
    connector->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable)));
    connector->changed += Zon::make_delegate(static_cast<IPort*>(target.get()), &IPort::OnChange);
    program.GetConnectorProvider().AddConnector(connector);

    {
        VarnixTest::ResourceCounter counter;
        program.Execute();
        program.Execute();
        program.Execute();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    // The cycles did run: the ports counted, the connector copied, the end port took its quality.
    EXPECT_EQ(first->GetValue(), 3);
    EXPECT_EQ(second->GetValue(), 3);
    EXPECT_EQ(target->GetValue(), 3);
    EXPECT_EQ(target->GetQuality().state, QualityState::Questionable);
}
