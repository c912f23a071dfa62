#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "Zon/Exception.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;

namespace {

struct Listener {
    explicit Listener(int id, std::vector<int>& calls) : id(id), calls(calls) {}
    void OnChanged(IConnector& connector)
    {
        calls.push_back(id);
        last = &connector;
    }
    int id;
    std::vector<int>& calls;
    IConnector* last = nullptr;
};

} // namespace

TEST(IConnector, ChangedStartsWithNoSubscribers)
{
    FakeConnector connector("copy");
    EXPECT_TRUE(connector.changed.IsEmpty());
    EXPECT_NO_THROW(connector.Execute());
}

TEST(IConnector, ChangedCallsSubscribersWithTheConnectorMostRecentFirst)
{
    FakeConnector connector("copy");
    std::vector<int> calls;
    Listener first(1, calls);
    Listener second(2, calls);
    connector.changed += Zon::make_delegate(&first, &Listener::OnChanged);
    connector.changed += Zon::make_delegate(&second, &Listener::OnChanged);
    connector.Execute();
    EXPECT_EQ(calls, (std::vector<int>{2, 1}));
    EXPECT_EQ(first.last, &connector);
}

TEST(IConnector, ChangedRefusesLambdaSubscribers)
{
    FakeConnector connector("copy");
    try {
        connector.changed += [](IConnector&) {};
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_EQ(error.GetMessage(), Zon::String("Lambda delegates are not supported by events."));
    }
}

TEST(IConnector, IsAnExecutableAndAQualityProviderAndConsumer)
{
    auto connector = std::make_shared<FakeConnector>("copy");
    std::shared_ptr<VarnixBase::Commons::IExecutable> executable = connector;
    std::shared_ptr<IQualityProvider> provider = connector;
    std::shared_ptr<VarnixBase::Core::QualitySystem::IQualityConsumer> consumer = connector;
    consumer->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad)));
    executable->Execute();
    EXPECT_EQ(connector->runs, 1);
    EXPECT_EQ(provider->GetQuality().state, QualityState::Bad);
    EXPECT_EQ(consumer->GetQualityProviders().size(), 1u);
}
