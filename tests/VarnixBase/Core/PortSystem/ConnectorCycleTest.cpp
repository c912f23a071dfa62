// The cycle path of connectors: `Execute` of a copy, a scale and a text connector, with the
// change event delivering to a qualified end port, allocates nothing and takes no lock.

#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Core/QualitySystem/QualityFlags.hpp"
#include "VarnixBase/Core/QualitySystem/QualityState.hpp"
#include "Zon/DateTime.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
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

class ConnectorCycleTest : public ConnectorFixture {
protected:
    void SetUp() override
    {
        ConnectorFixture::SetUp();
        Clock::UseVirtual(DateTime::FromUnixTimeMicroseconds(Start));
    }
    void TearDown() override
    {
        Clock::UseReal();
        ConnectorFixture::TearDown();
    }

    /// Publishes `port` and declares its record as the root variable `name` of "Conn", typed as
    /// `typeName` of the test library: "Conn/<name>.Value" is then the port's value.
    template <class T>
    void Declare(QualifiedPort<T>& port, const char* name, const char* typeName)
    {
        port.Publish(builder);
        component.AddVariable(String(name), builder.GetEntries().back().address,
                              library.GetTypeInfo(String(typeName)));
    }

    static std::shared_ptr<IConnector> Create(const char* type, const String& start, const char* end)
    {
        return ConnectorFactory::GetInstance().Create(String(type), String("c"), start, String(end));
    }

    static void Subscribe(IConnector& connector, IPort& end)
    {
        connector.changed += Zon::make_delegate(&end, &IPort::OnChange);
    }

    static constexpr std::int64_t Start = 1'700'000'000'000'000;
    Zon::Plc::Commons::Meta::DynamicPortsBuilder builder;
};

} // namespace

TEST_F(ConnectorCycleTest, ExecuteOfCopyScaleAndShortTextConnectorsWithQualifiedEndPortsAllocatesNothingAndTakesNoLock)
{
    QualifiedPort<int> count("count", 1);
    QualifiedPort<double> level("level", 1);
    QualifiedPort<Narrow80> status("status", 1);
    Declare(count, "Count", "TestQualifiedInt");
    Declare(level, "Level", "TestQualifiedDouble");
    Declare(status, "Status", "TestQualifiedText");

    auto copy = Create("copy", InPath<short>(), "Conn/Count.Value");
    auto scale = Create("scale", InPath<int>(), "Conn/Level.Value");
    auto text = Create("copy", InPath<NarrowText>(), "Conn/Status.Value");
    scale->GetParameterProvider().GetParameter(String("gain"))->SetValueByString(String("0.5"));
    scale->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable)));
    Subscribe(*copy, count);
    Subscribe(*scale, level);
    Subscribe(*text, status);

    in.s = -7;
    in.i = 9;
    in.text = Narrow80("short text");
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 10));
    {
        VarnixTest::ResourceCounter counter;
        copy->Execute();
        scale->Execute();
        text->Execute();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(count.GetValue(), -7);
    EXPECT_EQ(level.GetValue(), 4.5);
    EXPECT_EQ(std::string(status.GetValue().data), "short text");
    EXPECT_EQ(count.GetQuality(), MakeQuality(QualityState::Good));
    EXPECT_EQ(level.GetQuality(), MakeQuality(QualityState::Questionable));
    // The invert path with a zero gain is on the cycle path too.
    scale->GetParameterProvider().GetParameter(String("invert"))->SetValueByString(String("true"));
    scale->GetParameterProvider().GetParameter(String("gain"))->SetValueByString(String("0.0"));
    {
        VarnixTest::ResourceCounter counter;
        scale->Execute();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(level.GetValue(), 1.7976931348623157e308);
}

TEST_F(ConnectorCycleTest, AQualifiedEndPortTakesTheTimeStampAndTheConnectorsQualityButNotTheScaleLimitsInvalid)
{
    QualifiedPort<double> level("level", 1);
    Declare(level, "Level", "TestQualifiedDouble");
    auto scale = Create("scale", InPath<double>(), "Conn/Level.Value");
    scale->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good, QualityFlags::Test)));
    scale->GetParameterProvider().GetParameter(String("invert"))->SetValueByString(String("true"));
    scale->GetParameterProvider().GetParameter(String("gain"))->SetValueByString(String("0.0"));
    Subscribe(*scale, level);
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 42));
    scale->Execute();
    EXPECT_EQ(level.GetValue(), 1.7976931348623157e308);
    EXPECT_EQ(level.GetQuality(), MakeQuality(QualityState::Good, QualityFlags::Test));
    const auto* record = static_cast<const QualifiedDouble*>(builder.GetEntries().back().address);
    EXPECT_EQ(record->timestamp, Start + 42);
}
