#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

class PortProviderTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        program = std::make_unique<ConfigurableProgramBaseImpl>("App/Main", "TankControl", domain);
    }
    void TearDown() override
    {
        program.reset();
        VarnixTest::HostTest::TearDown();
    }
    PortProvider& Ports() { return program->GetPortProvider(); }

    TypeDomain domain;
    std::unique_ptr<ConfigurableProgramBaseImpl> program;
};

std::string MessageOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (const ArgumentException& error) {
        return error.GetMessage().ToStdString();
    }
    return "no exception";
}

} // namespace

TEST_F(PortProviderTest, AnEmptyProviderHasCount0AndTryGetPortReturnsFalse)
{
    std::shared_ptr<IPort> port;
    EXPECT_EQ(Ports().Count(), 0u);
    EXPECT_FALSE(Ports().TryGetPort(String("level"), port));
    EXPECT_EQ(port, nullptr);
    EXPECT_FALSE(Ports().HasPort(String("level")));
}

TEST_F(PortProviderTest, AddedPortsAreFoundByName)
{
    auto level = std::make_shared<Port<double>>("level", 1);
    auto count = std::make_shared<Port<int>>("count", 1);
    EXPECT_TRUE(Ports().TryAddPort(level));
    Ports().AddPort(count);
    EXPECT_EQ(Ports().Count(), 2u);
    std::shared_ptr<IPort> found;
    ASSERT_TRUE(Ports().TryGetPort(String("count"), found));
    EXPECT_EQ(found, count);
    EXPECT_EQ(Ports().GetPort(String("level")), level);
}

TEST_F(PortProviderTest, ASecondPortOfTheSameNameIsRefusedEvenIfItIsAnotherObjectOrAnotherType)
{
    auto first = std::make_shared<Port<int>>("level", 1);
    Ports().AddPort(first);
    EXPECT_FALSE(Ports().TryAddPort(std::make_shared<Port<int>>("level", 1)));
    EXPECT_FALSE(Ports().TryAddPort(std::make_shared<QualifiedPort<double>>("level", 1)));
    EXPECT_EQ(MessageOf([&] { Ports().AddPort(std::make_shared<Port<bool>>("level", 1)); }),
              "Port `level` already exists");
    EXPECT_EQ(Ports().Count(), 1u);
    EXPECT_EQ(Ports().GetPort(String("level")), first);
}

TEST_F(PortProviderTest, HasPortWithAnotherObjectOfAnExistingNameIsTrue)
{
    Ports().AddPort(std::make_shared<Port<int>>("level", 1));
    EXPECT_TRUE(Ports().HasPort(std::make_shared<QualifiedPort<float>>("level", 1)));
    EXPECT_FALSE(Ports().HasPort(std::make_shared<Port<int>>("other", 1)));
}

TEST_F(PortProviderTest, AddingAnExecutablePortLengthensTheExecutablesByOneAndAPlainPortDoesNot)
{
    auto executable = std::make_shared<CountingPort>("counter", 1);
    auto plain = std::make_shared<Port<int>>("plain", 1);
    Ports().AddPort(executable);
    Ports().AddPort(plain);
    // Held by the test, the provider and, for the executable one, the program's executables.
    EXPECT_EQ(executable.use_count(), 3);
    EXPECT_EQ(plain.use_count(), 2);
    program->Execute();
    EXPECT_EQ(executable->GetValue(), 1);
    program->Execute();
    EXPECT_EQ(executable->GetValue(), 2);
}

TEST_F(PortProviderTest, TryAddPortOfADuplicateExecutablePortDoesNotAddItToTheExecutablesEither)
{
    auto first = std::make_shared<CountingPort>("counter", 1);
    auto duplicate = std::make_shared<CountingPort>("counter", 1);
    Ports().AddPort(first);
    EXPECT_FALSE(Ports().TryAddPort(duplicate));
    EXPECT_EQ(duplicate.use_count(), 1);
    program->Execute();
    EXPECT_EQ(first->GetValue(), 1);
    EXPECT_EQ(duplicate->GetValue(), 0);
}

TEST_F(PortProviderTest, ANameThatDiffersOnlyInCaseCountsAsDifferent)
{
    Ports().AddPort(std::make_shared<Port<int>>("Level", 1));
    EXPECT_FALSE(Ports().HasPort(String("level")));
    EXPECT_TRUE(Ports().TryAddPort(std::make_shared<Port<int>>("level", 1)));
    EXPECT_EQ(Ports().Count(), 2u);
    EXPECT_EQ(Ports().GetPort(String("Level"))->GetName(), String("Level"));
    EXPECT_EQ(Ports().GetPort(String("level"))->GetName(), String("level"));
}

TEST_F(PortProviderTest, PublishOnAProviderWithTwoPortsCallsThemInTheOrderInWhichTheyWereAdded)
{
    Ports().AddPort(std::make_shared<Port<int>>("zeta", 1));
    Ports().AddPort(std::make_shared<QualifiedPort<double>>("alpha", 1));
    DynamicPortsBuilder builder;
    Ports().Publish(builder);
    const auto& entries = builder.GetEntries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, String("zeta"));
    EXPECT_EQ(entries[1].name, String("alpha"));
    auto messages = Capture().GetMessages(LogLevel::Debug);
    ASSERT_EQ(messages.size(), 2u);
    EXPECT_EQ(messages[0].rfind("Publish zeta:", 0), 0u);
    EXPECT_EQ(messages[1].rfind("Publish alpha:", 0), 0u);
}

TEST_F(PortProviderTest, GetPortOfAnUnknownNameThrows)
{
    Ports().AddPort(std::make_shared<Port<int>>("level", 1));
    EXPECT_EQ(MessageOf([&] { Ports().GetPort(String("pressure")); }), "Port `pressure` does not exist");
    EXPECT_EQ(Ports().Count(), 1u);
}

TEST_F(PortProviderTest, TryGetPortWithAMissLeavesTheArgumentAsItWas)
{
    auto held = std::make_shared<Port<int>>("held", 1);
    std::shared_ptr<IPort> port = held;
    EXPECT_FALSE(Ports().TryGetPort(String("other"), port));
    EXPECT_EQ(port, held);
}

TEST_F(PortProviderTest, AnEmptyPortArgumentIsRefusedAndChangesNothing)
{
    EXPECT_THROW(Ports().TryAddPort(nullptr), ArgumentException);
    EXPECT_THROW(Ports().AddPort(nullptr), ArgumentException);
    EXPECT_THROW(Ports().HasPort(std::shared_ptr<IPort>()), ArgumentException);
    EXPECT_EQ(Ports().Count(), 0u);
}
