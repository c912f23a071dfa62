// The providers find ports and connectors through an index by name. The index must answer exactly
// as a walk of the provider's list from the front would (exact, case-sensitive names, the first
// match wins): these tests keep that walk as the oracle and compare it with every look-up, over
// random sequences of additions with many duplicate names, names that differ only in case, the
// empty name and names with a NUL inside.
#include <functional>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "support/HostFixture.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::ArgumentException;

namespace {

class ProviderLookupTest : public VarnixTest::HostTest {
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

    TypeDomain domain;
    std::unique_ptr<ConfigurableProgramBaseImpl> program;
};

/// A name of 0 to 3 characters from a small alphabet, so that names repeat often; "a" and "A"
/// differ only in case, and a NUL may stand inside or at the end.
String RandomName(std::mt19937& random)
{
    static const char alphabet[] = {'a', 'A', 'b', '\0', '.'};
    std::uniform_int_distribution<int> length(0, 3);
    std::uniform_int_distribution<std::size_t> pick(0, sizeof(alphabet) - 1);
    std::string name;
    for (int n = length(random); n > 0; --n) {
        name += alphabet[pick(random)];
    }
    return String(name);
}

/// The look-up as a walk of the list from the front: the first element whose name is equal.
template <class T>
std::shared_ptr<T> WalkFor(const std::list<std::shared_ptr<T>>& list, const String& name)
{
    for (const auto& entry : list) {
        std::shared_ptr<T> candidate = entry;
        if (candidate->GetName() == name) {
            return candidate;
        }
    }
    return nullptr;
}

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

TEST_F(ProviderLookupTest, PortLookUpsAgreeWithAWalkOfTheListOverRandomAdditions)
{
    PortProvider& ports = program->GetPortProvider();
    std::mt19937 random(20261123);
    std::vector<std::shared_ptr<IPort>> refused;
    for (int step = 0; step < 3000; ++step) {
        String name = RandomName(random);
        // Executable and plain ports alike, through both ways of adding.
        std::shared_ptr<IPort> port;
        if (step % 3 == 0) {
            port = std::make_shared<CountingPort>(name, 1);
        } else {
            port = std::make_shared<Port<int>>(name, 1);
        }
        const bool existed = WalkFor(ports.GetPorts(), name) != nullptr;
        if (step % 2 == 0) {
            EXPECT_EQ(ports.TryAddPort(port), !existed);
        } else if (existed) {
            EXPECT_EQ(MessageOf([&] { ports.AddPort(port); }),
                      "Port `" + name.ToStdString() + "` already exists");
        } else {
            ports.AddPort(port);
        }
        if (existed) {
            refused.push_back(port);
        }

        String probe = RandomName(random);
        std::shared_ptr<IPort> expected = WalkFor(ports.GetPorts(), probe);
        std::shared_ptr<IPort> found;
        ASSERT_EQ(ports.TryGetPort(probe, found), expected != nullptr) << "step " << step;
        EXPECT_EQ(found, expected);
        EXPECT_EQ(ports.HasPort(probe), expected != nullptr);
        EXPECT_EQ(ports.HasPort(std::make_shared<Port<int>>(probe, 1)), expected != nullptr);
        if (expected != nullptr) {
            EXPECT_EQ(ports.GetPort(probe), expected);
        } else {
            EXPECT_EQ(MessageOf([&] { ports.GetPort(probe); }), "Port `" + probe.ToStdString() + "` does not exist");
        }
    }
    // Every name of the small alphabet was taken long ago; each refused port stayed outside.
    EXPECT_EQ(ports.Count(), ports.GetPorts().size());
    for (const auto& port : refused) {
        EXPECT_NE(WalkFor(ports.GetPorts(), port->GetName()), port);
        EXPECT_EQ(ports.GetPort(port->GetName()), WalkFor(ports.GetPorts(), port->GetName()));
    }
}

TEST_F(ProviderLookupTest, ConnectorLookUpsAgreeWithAWalkOfTheListOverRandomAdditions)
{
    ConnectorProvider& connectors = program->GetConnectorProvider();
    std::mt19937 random(11232026);
    for (int step = 0; step < 3000; ++step) {
        String name = RandomName(random);
        auto connector = std::make_shared<FakeConnector>(name);
        const bool existed = WalkFor(connectors.GetConnectors(), name) != nullptr;
        if (existed) {
            EXPECT_EQ(MessageOf([&] { connectors.AddConnector(connector); }),
                      "Connector `" + name.ToStdString() + "` already exists");
            EXPECT_EQ(connector.use_count(), 1);
        } else {
            connectors.AddConnector(connector);
        }

        String probe = RandomName(random);
        std::shared_ptr<IConnector> expected = WalkFor(connectors.GetConnectors(), probe);
        std::shared_ptr<IConnector> found;
        ASSERT_EQ(connectors.TryGetConnector(probe, found), expected != nullptr) << "step " << step;
        EXPECT_EQ(found, expected);
        EXPECT_EQ(connectors.HasConnector(probe), expected != nullptr);
        if (expected != nullptr) {
            EXPECT_EQ(connectors.GetConnector(probe), expected);
        } else {
            EXPECT_EQ(MessageOf([&] { connectors.GetConnector(probe); }),
                      "Connector `" + probe.ToStdString() + "` does not exist");
        }
    }
    EXPECT_EQ(connectors.Count(), connectors.GetConnectors().size());
}

TEST_F(ProviderLookupTest, ManyPortsAreEachFoundAsTheWalkFindsThem)
{
    PortProvider& ports = program->GetPortProvider();
    for (int i = 0; i < 2000; ++i) {
        ports.AddPort(std::make_shared<Port<int>>(String("p" + std::to_string(i)), 1));
    }
    for (int i = 0; i < 2100; ++i) {
        String name("p" + std::to_string(i));
        std::shared_ptr<IPort> found;
        EXPECT_EQ(ports.TryGetPort(name, found), i < 2000);
        EXPECT_EQ(found, WalkFor(ports.GetPorts(), name));
    }
    EXPECT_FALSE(ports.HasPort(String("P1")));
}

TEST_F(ProviderLookupTest, NamesThatDifferOnlyAfterANulAreDifferentNames)
{
    PortProvider& ports = program->GetPortProvider();
    auto plain = std::make_shared<Port<int>>(String("a"), 1);
    auto withNul = std::make_shared<Port<int>>(String(std::string("a\0b", 3)), 1);
    ports.AddPort(plain);
    ports.AddPort(withNul);
    EXPECT_EQ(ports.GetPort(String("a")), plain);
    EXPECT_EQ(ports.GetPort(String(std::string("a\0b", 3))), withNul);
    EXPECT_FALSE(ports.HasPort(String(std::string("a\0", 2))));
}
