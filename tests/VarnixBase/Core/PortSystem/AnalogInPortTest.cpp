#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// An analog input port published into its own builder, with the raw value written the way the
/// controller writes it: through the published address.
class AnalogInPortTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        port = std::make_unique<AnalogInPort>("raw", 1);
        port->Publish(builder);
        ASSERT_EQ(builder.GetEntries().size(), 1u);
    }
    void TearDown() override
    {
        port.reset();
        VarnixTest::HostTest::TearDown();
    }

    void WriteRaw(unsigned short raw) { std::memcpy(builder.GetEntries()[0].address, &raw, sizeof(raw)); }

    /// The quality after the controller wrote `raw` and one cycle ran.
    Quality QualityOf(unsigned short raw)
    {
        WriteRaw(raw);
        port->Execute();
        return port->GetQuality();
    }

    DynamicPortsBuilder builder;
    std::unique_ptr<AnalogInPort> port;
};

struct ErrorCode {
    unsigned short raw;
    QualityState state;
    QualityFlags flags;
};

} // namespace

TEST_F(AnalogInPortTest, AValueOf0x7FFFIsGood)
{
    EXPECT_EQ(QualityOf(0x7FFF), MakeQuality(QualityState::Good));
}

TEST_F(AnalogInPortTest, AValueOf0x8000IsGood)
{
    EXPECT_EQ(QualityOf(0x8000), MakeQuality(QualityState::Good));
}

TEST_F(AnalogInPortTest, AValueOf0x8001IsBadWithOverrangeAndBackToGoodWhenTheValueBecomes100AndExecuteHasRun)
{
    EXPECT_EQ(QualityOf(0x8001), MakeQuality(QualityState::Bad, QualityFlags::Overrange));
    WriteRaw(100);
    // Until the next cycle the port still reports what it derived last.
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Bad, QualityFlags::Overrange));
    port->Execute();
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Good));
    EXPECT_EQ(port->GetValue(), 100);
}

TEST_F(AnalogInPortTest, EachErrorCodeGivesItsStateAndFlag)
{
    const ErrorCode codes[] = {
        {0x8001, QualityState::Bad, QualityFlags::Overrange},
        {0x8002, QualityState::Invalid, QualityFlags::WireBreak},
        {0x8004, QualityState::Invalid, QualityFlags::Failure},
        {0x8010, QualityState::Invalid, QualityFlags::Configuration},
        {0x8020, QualityState::Invalid, QualityFlags::PowerFailure},
        {0x8040, QualityState::Invalid, QualityFlags::DeviceDefect},
        {0x8080, QualityState::Bad, QualityFlags::Underrange},
    };
    for (const auto& code : codes) {
        EXPECT_EQ(QualityOf(code.raw), MakeQuality(code.state, code.flags)) << std::hex << code.raw;
    }
}

TEST_F(AnalogInPortTest, CodesAreComparedForEqualityNotAsBits)
{
    // 0x8003 looks like overrange with wire break, but is no code of the table.
    for (unsigned short raw : {0x8003, 0x8006, 0x80FF, 0x8100, 0xFFFF, 0x0001, 0x0080}) {
        EXPECT_EQ(QualityOf(raw), MakeQuality(QualityState::Good)) << std::hex << raw;
    }
}

TEST_F(AnalogInPortTest, EveryOtherValueFrom0x8000UpwardIsGood)
{
    const unsigned short codes[] = {0x8001, 0x8002, 0x8004, 0x8010, 0x8020, 0x8040, 0x8080};
    unsigned goodValues = 0;
    for (unsigned raw = 0x8000; raw <= 0xFFFF; ++raw) {
        bool isCode = false;
        for (unsigned short code : codes) {
            isCode = isCode || raw == code;
        }
        Quality quality = QualityOf(static_cast<unsigned short>(raw));
        if (isCode) {
            EXPECT_NE(quality.state, QualityState::Good) << std::hex << raw;
        } else {
            ASSERT_EQ(quality, MakeQuality(QualityState::Good)) << std::hex << raw;
            ++goodValues;
        }
    }
    EXPECT_EQ(goodValues, 0x8000u - 7u);
}

TEST_F(AnalogInPortTest, BeforeTheFirstExecuteTheQualityIsGoodWhateverTheValue)
{
    WriteRaw(0x8002);
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Good));
}

TEST_F(AnalogInPortTest, SetValueHasNoEffectOnWhatGetValueReturns)
{
    WriteRaw(1234);
    port->SetValue(77);
    EXPECT_EQ(port->GetValue(), 1234);
    FakeConnector connector("copy");
    port->SetValue(88, connector);
    EXPECT_EQ(port->GetValue(), 1234);
    static_cast<PortBase<unsigned short>&>(*port).SetValue(99);
    EXPECT_EQ(port->GetValue(), 1234);
    // Nor does it reach the quality.
    port->Execute();
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Good));
}

TEST_F(AnalogInPortTest, ANewPortHoldsZero)
{
    AnalogInPort fresh("fresh", 1);
    EXPECT_EQ(fresh.GetValue(), 0);
    EXPECT_EQ(fresh.GetName(), String("fresh"));
}

TEST_F(AnalogInPortTest, AQualityProviderWithBadMakesGetQualityBadAlsoWhenThePortsOwnQualityIsGood)
{
    auto provider = std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad, QualityFlags::Outdated));
    port->AddQualityProvider(provider);
    EXPECT_EQ(QualityOf(100), MakeQuality(QualityState::Bad, QualityFlags::Outdated));
    // With an own quality of `Invalid` and `WireBreak`, the flags of both appear.
    EXPECT_EQ(QualityOf(0x8002), MakeQuality(QualityState::Bad, QualityFlags::Outdated | QualityFlags::WireBreak));
}

TEST_F(AnalogInPortTest, GetQualityTakesTheWorseOfTheProvidersStateAndItsOwn)
{
    auto provider = std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable, QualityFlags::Test));
    port->AddQualityProvider(provider);
    EXPECT_EQ(QualityOf(100), MakeQuality(QualityState::Questionable, QualityFlags::Test));
    EXPECT_EQ(QualityOf(0x8004), MakeQuality(QualityState::Invalid, QualityFlags::Test | QualityFlags::Failure));
    // `None` is the smallest number and never lowers the own state.
    provider->quality = MakeQuality(QualityState::None);
    EXPECT_EQ(QualityOf(100), MakeQuality(QualityState::Good));
    // Each call asks the providers anew.
    provider->quality = MakeQuality(QualityState::Bad);
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Bad));
}

TEST_F(AnalogInPortTest, ADimensionOf5AtConstructionStillGivesGetDimension1)
{
    AnalogInPort wide("wide", 5);
    EXPECT_EQ(wide.GetDimension(), 1u);
    // The base keeps what was passed.
    EXPECT_EQ(wide.PortBaseImpl::GetDimension(), 5u);
    EXPECT_EQ(static_cast<IPort&>(wide).GetDimension(), 1u);
}

TEST_F(AnalogInPortTest, PublishEntersTheRawValueAsUnsignedShortAtTheAddressOfTheValue)
{
    AnalogInPort other("level", 1);
    other.AddAttributes(StandardAttribute::Input);
    DynamicPortsBuilder ownBuilder;
    other.Publish(ownBuilder);
    ASSERT_EQ(ownBuilder.GetEntries().size(), 1u);
    const auto& entry = ownBuilder.GetEntries()[0];
    EXPECT_EQ(entry.name, String("level"));
    EXPECT_EQ(entry.dataType, 8u);
    EXPECT_EQ(entry.typeName, String("unsigned short"));
    EXPECT_EQ(entry.size, sizeof(unsigned short));
    EXPECT_EQ(entry.alignment, alignof(unsigned short));
    EXPECT_TRUE(entry.arrayDimensions.empty());
    EXPECT_EQ(entry.attributes, StandardAttribute::Input);
    // The address is the port's own value field.
    *static_cast<unsigned short*>(entry.address) = 0x1234;
    EXPECT_EQ(other.GetValue(), 0x1234);
}

TEST_F(AnalogInPortTest, PublishLogsNameAddressAndAttributesAtLevel7WithItsOwnLogger)
{
    AnalogInPort other("level", 1);
    other.AddAttributes(StandardAttribute::Input | StandardAttribute::Retain);
    Capture().Clear();
    DynamicPortsBuilder ownBuilder;
    other.Publish(ownBuilder);
    auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(ownBuilder.GetEntries().at(0).address));
    auto entries = Capture().GetEntries(LogLevel::Debug);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(static_cast<int>(entries[0].level), 7);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Core.PortSystem.AnalogInPort");
    EXPECT_EQ(entries[0].message, "Publish level: address=" + std::to_string(address) + ", attributes=Input|Retain");
}

TEST_F(AnalogInPortTest, ExecuteAllocatesNothingAndTakesNoLock)
{
    port->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable)));
    WriteRaw(0x8010);
    port->Execute(); // a first run outside the count
    Quality quality;
    {
        VarnixTest::ResourceCounter counter;
        port->Execute();
        WriteRaw(0x8080);
        port->Execute();
        quality = port->GetQuality();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(quality, MakeQuality(QualityState::Bad, QualityFlags::Underrange));
}

TEST_F(AnalogInPortTest, AddingAnAnalogInPortLengthensTheProgramsExecutablesByOneAndAPortOfIntDoesNot)
{
    TypeDomain domain;
    ConfigurableProgramBaseImpl program("App/Main", "TankControl", domain);
    auto analog = std::make_shared<AnalogInPort>("analog", 1);
    auto plain = std::make_shared<Port<int>>("plain", 1);
    program.GetPortProvider().AddPort(analog);
    program.GetPortProvider().AddPort(plain);
    // Held by the test, the provider and, for the analog port only, the program's executables.
    EXPECT_EQ(analog.use_count(), 3);
    EXPECT_EQ(plain.use_count(), 2);

    // The program's cycle runs the port: a code written through its address shows after it.
    DynamicPortsBuilder ownBuilder;
    program.GetPortProvider().Publish(ownBuilder);
    ASSERT_EQ(ownBuilder.GetEntries().size(), 2u);
    *static_cast<unsigned short*>(ownBuilder.GetEntries()[0].address) = 0x8040;
    EXPECT_EQ(analog->GetQuality(), MakeQuality(QualityState::Good));
    program.Execute();
    EXPECT_EQ(analog->GetQuality(), MakeQuality(QualityState::Invalid, QualityFlags::DeviceDefect));
}
