#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "support/HostFixture.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::ArgumentException;

namespace {

class ConnectorProviderTest : public VarnixTest::HostTest {
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
    ConnectorProvider& Connectors() { return program->GetConnectorProvider(); }

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

TEST_F(ConnectorProviderTest, AnEmptyProviderHasCount0AndTryGetConnectorReturnsFalse)
{
    std::shared_ptr<IConnector> connector;
    EXPECT_EQ(Connectors().Count(), 0u);
    EXPECT_FALSE(Connectors().TryGetConnector(String("copy"), connector));
    EXPECT_EQ(connector, nullptr);
    EXPECT_FALSE(Connectors().HasConnector(String("copy")));
}

TEST_F(ConnectorProviderTest, AddedConnectorsAreFoundByName)
{
    auto copy = std::make_shared<FakeConnector>("copy");
    auto scale = std::make_shared<FakeConnector>("scale");
    Connectors().AddConnector(copy);
    Connectors().AddConnector(scale);
    EXPECT_EQ(Connectors().Count(), 2u);
    std::shared_ptr<IConnector> found;
    ASSERT_TRUE(Connectors().TryGetConnector(String("scale"), found));
    EXPECT_EQ(found, scale);
    EXPECT_EQ(Connectors().GetConnector(String("copy")), copy);
}

TEST_F(ConnectorProviderTest, EveryConnectorAddedJoinsTheExecutablesInTheOrderOfAdding)
{
    std::vector<std::string> journal;
    struct Recorder {
        std::vector<std::string>* journal;
        void OnChanged(IConnector& connector) { journal->push_back(connector.GetName().ToStdString()); }
    } recorder{&journal};
    auto second = std::make_shared<FakeConnector>("second");
    auto first = std::make_shared<FakeConnector>("first");
    first->changed += Zon::make_delegate(&recorder, &Recorder::OnChanged);
    second->changed += Zon::make_delegate(&recorder, &Recorder::OnChanged);
    Connectors().AddConnector(first);
    Connectors().AddConnector(second);
    EXPECT_EQ(first.use_count(), 3);
    program->Execute();
    EXPECT_EQ(journal, (std::vector<std::string>{"first", "second"}));
}

TEST_F(ConnectorProviderTest, ADuplicateConnectorThrowsAndLeavesTheListAndTheExecutablesUnchanged)
{
    auto first = std::make_shared<FakeConnector>("copy");
    auto duplicate = std::make_shared<FakeConnector>("copy");
    Connectors().AddConnector(first);
    EXPECT_EQ(MessageOf([&] { Connectors().AddConnector(duplicate); }), "Connector `copy` already exists");
    EXPECT_EQ(Connectors().Count(), 1u);
    EXPECT_EQ(duplicate.use_count(), 1);
    program->Execute();
    EXPECT_EQ(first->runs, 1);
    EXPECT_EQ(duplicate->runs, 0);
}

TEST_F(ConnectorProviderTest, HasConnectorWithAnotherObjectOfAnExistingNameIsTrue)
{
    Connectors().AddConnector(std::make_shared<FakeConnector>("copy"));
    EXPECT_TRUE(Connectors().HasConnector(std::make_shared<FakeConnector>("copy")));
    EXPECT_FALSE(Connectors().HasConnector(std::make_shared<FakeConnector>("scale")));
}

TEST_F(ConnectorProviderTest, ANameThatDiffersOnlyInCaseCountsAsDifferent)
{
    Connectors().AddConnector(std::make_shared<FakeConnector>("Copy"));
    EXPECT_FALSE(Connectors().HasConnector(String("copy")));
    EXPECT_NO_THROW(Connectors().AddConnector(std::make_shared<FakeConnector>("copy")));
    EXPECT_EQ(Connectors().Count(), 2u);
}

TEST_F(ConnectorProviderTest, GetConnectorOfAnUnknownNameThrows)
{
    EXPECT_EQ(MessageOf([&] { Connectors().GetConnector(String("scale")); }), "Connector `scale` does not exist");
}

TEST_F(ConnectorProviderTest, AnEmptyConnectorArgumentIsRefusedAndChangesNothing)
{
    EXPECT_THROW(Connectors().AddConnector(nullptr), ArgumentException);
    EXPECT_THROW(Connectors().HasConnector(std::shared_ptr<IConnector>()), ArgumentException);
    EXPECT_EQ(Connectors().Count(), 0u);
}
