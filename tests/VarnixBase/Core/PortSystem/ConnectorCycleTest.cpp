// The cycle path of connectors between ports published through the host: `Execute` of a copy, a
// scale and a text connector, with the change event delivering to the qualified end ports,
// allocates nothing and takes no lock.

#include <cstdint>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"
#include "Zon/DateTime.hpp"
#include "Zon/Host/Clock.hpp"
#include "support/ResourceCounter.hpp"

#include "ConnectorTestSupport.hpp"
#include "GraphDoubles.hpp"

using namespace ConnectorTest;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using VarnixTest::Graph::FixedQualityProvider;
using VarnixTest::Graph::MakeQuality;
using Zon::DateTime;
using Zon::Host::Clock;

namespace {

class ConnectorCycleTest : public PublishedPortsFixture {
protected:
    void SetUp() override
    {
        PublishedPortsFixture::SetUp();
        Clock::UseVirtual(DateTime::FromUnixTimeMicroseconds(Start));
    }
    void TearDown() override
    {
        Clock::UseReal();
        PublishedPortsFixture::TearDown();
    }

    /// A connector of `type` between the start port of `I` and the end port of `O`, with the end
    /// port subscribed to its event as the program builder subscribes it.
    template <class I, class O>
    std::shared_ptr<IConnector> Connect(const char* type)
    {
        auto connector =
            ConnectorFactory::GetInstance().Create(String(type), String("c"), StartPortPath<I>(), EndPortPath<O>());
        IPort* end = Ports<O>().out.get();
        connector->changed += Zon::make_delegate(end, &IPort::OnChange);
        return connector;
    }

    static void Set(IConnector& connector, const char* name, const char* literal)
    {
        connector.GetParameterProvider().GetParameter(String(name))->SetValueByString(String(literal));
    }

    static constexpr std::int64_t Start = 1'700'000'000'000'000;
};

} // namespace

TEST_F(ConnectorCycleTest, ExecuteOfCopyScaleAndShortTextConnectorsWithQualifiedEndPortsAllocatesNothingAndTakesNoLock)
{
    auto copy = Connect<short, int>("copy");
    auto scale = Connect<int, double>("scale");
    auto text = Connect<NarrowText, NarrowText>("copy");
    Set(*scale, "gain", "0.5");
    scale->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable)));

    Ports<short>().in->SetValue(-7);
    Ports<int>().in->SetValue(9);
    Ports<NarrowText>().in->SetValue(Narrow80("short text"));
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 10));
    {
        VarnixTest::ResourceCounter counter;
        copy->Execute();
        scale->Execute();
        text->Execute();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(Ports<int>().out->GetValue(), -7);
    EXPECT_EQ(Ports<double>().out->GetValue(), 4.5);
    EXPECT_EQ(std::string(Ports<NarrowText>().out->GetValue().data), "short text");
    EXPECT_EQ(Ports<int>().out->GetQuality(), MakeQuality(QualityState::Good));
    EXPECT_EQ(Ports<double>().out->GetQuality(), MakeQuality(QualityState::Questionable));

    // The inverted path with a zero gain is on the cycle path too.
    Set(*scale, "invert", "true");
    Set(*scale, "gain", "0.0");
    {
        VarnixTest::ResourceCounter counter;
        scale->Execute();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(Ports<double>().out->GetValue(), 1.7976931348623157e308);
}

TEST_F(ConnectorCycleTest, AQualifiedEndPortTakesTheTimeStampAndTheConnectorsQualityButNotTheInvalidOfAZeroGain)
{
    auto scale = Connect<double, double>("scale");
    scale->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good, QualityFlags::Test)));
    Set(*scale, "invert", "true");
    Set(*scale, "gain", "0.0");
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 42));
    scale->Execute();
    auto& end = *Ports<double>().out;
    EXPECT_EQ(end.GetValue(), 1.7976931348623157e308);
    EXPECT_EQ(end.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::Test));
    auto stamp = VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(
        String("App/Main.out_Float64.Timestamp"));
    ASSERT_NE(stamp.address, nullptr);
    EXPECT_EQ(*static_cast<const std::int64_t*>(stamp.address), Start + 42);
}
