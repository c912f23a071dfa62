#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConnectorBase.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/CopyConnector.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/ParseException.hpp"

#include "ConnectorTestSupport.hpp"
#include "GraphDoubles.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::IQualityProvider;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using VarnixTest::Graph::FixedQualityProvider;
using VarnixTest::Graph::MakeQuality;

namespace {

/// The smallest concrete connector: no data, `Execute` only raises the event.
class BareConnector : public ConnectorBaseImpl {
public:
    explicit BareConnector(const String& name) : ConnectorBaseImpl(name) {}
    void Execute() override { changed(*this); }
};

/// A connector on two `int` variables that only counts its runs.
class CountingConnector : public ConnectorBase<int, int> {
public:
    CountingConnector(const String& name, const String& start, const String& end) : ConnectorBase(name, start, end) {}
    void Execute() override
    {
        ++runs;
        changed(*this);
    }
    int* Source() const { return source.GetDataPointer(); }
    int* Destination() const { return destination.GetDataPointer(); }
    int runs = 0;
};

struct Listener {
    Listener(int id, std::vector<int>& calls) : id(id), calls(calls) {}
    void OnChanged(IConnector& connector)
    {
        calls.push_back(id);
        last = &connector;
    }
    int id;
    std::vector<int>& calls;
    IConnector* last = nullptr;
};

/// A provider that fails.
class ThrowingProvider : public IQualityProvider {
public:
    Quality GetQuality() override { throw std::runtime_error("provider failed"); }
};

std::shared_ptr<IQualityProvider> Fixed(QualityState state, QualityFlags flags = QualityFlags::None)
{
    return std::make_shared<FixedQualityProvider>(MakeQuality(state, flags));
}

class ConnectorBaseTest : public ConnectorFixture {};

} // namespace

TEST(ConnectorBaseImpl, KeepsItsNameAndStartsWithNoParametersAndNoProviders)
{
    BareConnector connector("link");
    EXPECT_EQ(connector.GetName(), String("link"));
    EXPECT_EQ(connector.GetParameterProvider().Count(), 0u);
    EXPECT_TRUE(connector.GetQualityProviders().empty());
    EXPECT_TRUE(connector.changed.IsEmpty());
}

TEST(ConnectorBaseImpl, WithNoQualityProviderGetQualityIsGoodWithoutFlags)
{
    BareConnector connector("link");
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::None));
}

TEST(ConnectorBaseImpl, ProvidersQuestionableAndBadGiveBad)
{
    BareConnector connector("link");
    connector.AddQualityProvider(Fixed(QualityState::Questionable));
    connector.AddQualityProvider(Fixed(QualityState::Bad));
    EXPECT_EQ(connector.GetQuality().state, QualityState::Bad);
}

TEST(ConnectorBaseImpl, ProvidersGoodAndQuestionableGiveQuestionable)
{
    BareConnector connector("link");
    connector.AddQualityProvider(Fixed(QualityState::Good));
    connector.AddQualityProvider(Fixed(QualityState::Questionable));
    EXPECT_EQ(connector.GetQuality().state, QualityState::Questionable);
}

TEST(ConnectorBaseImpl, ProvidersWithWireBreakAndOverflowGiveBothFlags)
{
    BareConnector connector("link");
    connector.AddQualityProvider(Fixed(QualityState::Good, QualityFlags::WireBreak));
    connector.AddQualityProvider(Fixed(QualityState::Good, QualityFlags::Overflow));
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::WireBreak | QualityFlags::Overflow));
}

TEST(ConnectorBaseImpl, AStateValueOfZeroFromAProviderDoesNotLowerTheResultBelowGood)
{
    BareConnector connector("link");
    connector.AddQualityProvider(Fixed(static_cast<QualityState>(0)));
    EXPECT_EQ(connector.GetQuality().state, QualityState::Good);
}

TEST(ConnectorBaseImpl, GetQualityIsComputedAnewAtEveryCall)
{
    BareConnector connector("link");
    auto provider = std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good));
    connector.AddQualityProvider(provider);
    EXPECT_EQ(connector.GetQuality().state, QualityState::Good);
    provider->quality = MakeQuality(QualityState::Bad, QualityFlags::Overflow);
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Bad, QualityFlags::Overflow));
}

TEST(ConnectorBaseImpl, AConnectorAsProviderCountsWithItsOwnAggregate)
{
    auto upstream = std::make_shared<BareConnector>("upstream");
    upstream->AddQualityProvider(Fixed(QualityState::Questionable, QualityFlags::WireBreak));
    BareConnector connector("link");
    connector.AddQualityProvider(upstream);
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Questionable, QualityFlags::WireBreak));
}

TEST(ConnectorBaseImpl, AddQualityProviderAppendsWithoutCheckingForDuplicates)
{
    BareConnector connector("link");
    auto provider = Fixed(QualityState::Good);
    connector.AddQualityProvider(provider);
    connector.AddQualityProvider(provider);
    auto other = Fixed(QualityState::Bad);
    connector.AddQualityProvider(other);
    std::vector<std::shared_ptr<IQualityProvider>> listed(connector.GetQualityProviders().begin(),
                                                          connector.GetQualityProviders().end());
    EXPECT_EQ(listed, (std::vector<std::shared_ptr<IQualityProvider>>{provider, provider, other}));
}

TEST(ConnectorBaseImpl, GetQualityLetsAnExceptionOfAProviderPass)
{
    BareConnector connector("link");
    auto failing = std::make_shared<ThrowingProvider>();
    connector.AddQualityProvider(Fixed(QualityState::Good));
    connector.AddQualityProvider(failing);
    EXPECT_THROW(connector.GetQuality(), std::runtime_error);
    EXPECT_EQ(failing.use_count(), 2);
}

TEST(ConnectorBaseImpl, AConnectorWithoutSubscribersExecutesWithoutError)
{
    BareConnector connector("link");
    EXPECT_NO_THROW(connector.Execute());
}

TEST(ConnectorBaseImpl, TwoSubscribersAreCalledInTheReverseOrderOfSubscribing)
{
    BareConnector connector("link");
    std::vector<int> calls;
    Listener first(1, calls);
    Listener second(2, calls);
    connector.changed += Zon::make_delegate(&first, &Listener::OnChanged);
    connector.changed += Zon::make_delegate(&second, &Listener::OnChanged);
    connector.Execute();
    EXPECT_EQ(calls, (std::vector<int>{2, 1}));
    EXPECT_EQ(first.last, &connector);
    EXPECT_EQ(second.last, &connector);
}

TEST_F(ConnectorBaseTest, ResolvesBothPathsAtConstruction)
{
    CountingConnector connector("link", String("Conn/In.Int32"), String("Conn/Out.Int32"));
    EXPECT_EQ(connector.Source(), &in.i);
    EXPECT_EQ(connector.Destination(), &out.i);
}

TEST_F(ConnectorBaseTest, APathThatDoesNotParseFailsTheConstruction)
{
    EXPECT_THROW(CountingConnector("link", String("Conn/In.Int32"), String("Conn/Out.Int32[x]")),
                 Zon::System::Commons::ParseException);
}

TEST_F(ConnectorBaseTest, APathWithoutAddressIsRefusedAtConstruction)
{
    try {
        CountingConnector connector("link", String("Gone/In.Int32"), String("Conn/Out.Int32"));
        FAIL() << "no exception";
    } catch (const Zon::System::Commons::InvalidOperationException& error) {
        EXPECT_EQ(error.GetMessage(), String("Connector `link`: variable `Gone/In.Int32` has no address"));
    }
    EXPECT_THROW(CountingConnector("link", String("Conn/In.Int32"), String("Out.Int32")),
                 Zon::System::Commons::InvalidOperationException);
}

TEST_F(ConnectorBaseTest, GetQualityOnAConnectorMadeByHandTakesNoAccountOfThePortsItConnects)
{
    // The start is a qualified value whose quality is bad; the end a port.
    start.quality = MakeQuality(QualityState::Bad, QualityFlags::WireBreak);
    start.value = 12;
    CopyConnector<int, int> connector("link", String("Conn/Start.Value"), String("Conn/Out.Int32"));
    connector.Execute();
    EXPECT_EQ(out.i, 12);
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::None));

    Port<int> end("end", 1);
    end.AddQualityProvider(Fixed(QualityState::Bad));
    connector.changed += Zon::make_delegate(static_cast<IPort*>(&end), &IPort::OnChange);
    connector.Execute();
    EXPECT_EQ(connector.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::None));
}
