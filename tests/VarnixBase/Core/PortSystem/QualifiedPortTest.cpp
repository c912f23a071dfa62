#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

#include "GraphDoubles.hpp"
#include "PortValueSamples.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using VarnixBase::Core::QualitySystem::QualifiedValue;
using Zon::DateTime;
using Zon::Host::Clock;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

template <class T>
class TypedQualifiedPort : public VarnixTest::HostTest {};
TYPED_TEST_SUITE(TypedQualifiedPort, PortValueTypes);

class QualifiedPortFixture : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        Clock::UseVirtual(DateTime::FromUnixTimeMicroseconds(Start));
    }
    void TearDown() override
    {
        Clock::UseReal();
        VarnixTest::HostTest::TearDown();
    }

    /// The published record of a port.
    template <class T>
    static QualifiedValue<T>* Published(QualifiedPort<T>& port, DynamicPortsBuilder& builder)
    {
        port.Publish(builder);
        return static_cast<QualifiedValue<T>*>(builder.GetEntries().back().address);
    }

    static constexpr std::int64_t Start = 1'700'000'000'000'000;
};

using Narrow80 = StaticString<80, char>;
using Wide80 = StaticString<80, char16_t>;

} // namespace

TYPED_TEST(TypedQualifiedPort, GetRelativeDataPathIsValue)
{
    QualifiedPort<TypeParam> port("p", 1);
    EXPECT_EQ(port.GetRelativeDataPath(), String("Value"));
}

TYPED_TEST(TypedQualifiedPort, SetValueStoresAndGetValueReturnsIt)
{
    QualifiedPort<TypeParam> port("p", 1);
    EXPECT_TRUE(port.GetValue() == ZeroValue<TypeParam>());
    port.SetValue(SampleValue<TypeParam>());
    EXPECT_TRUE(port.GetValue() == SampleValue<TypeParam>());
}

TYPED_TEST(TypedQualifiedPort, PublishEntersTheWholeQualifiedValueAsAStructure)
{
    using Record = QualifiedValue<TypeParam>;
    QualifiedPort<TypeParam> port("p", 1);
    port.AddAttributes(StandardAttribute::Server);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    ASSERT_EQ(builder.GetEntries().size(), 1u);
    const auto& entry = builder.GetEntries()[0];
    EXPECT_EQ(entry.name, String("p"));
    EXPECT_EQ(entry.dataType, 65u);
    EXPECT_EQ(entry.typeName, Zon::CommonTypeName<Record>());
    EXPECT_EQ(entry.size, sizeof(Record));
    EXPECT_EQ(entry.alignment, alignof(Record));
    EXPECT_EQ(entry.attributes, StandardAttribute::Server);
    // The address is that of the record, not of its payload: the payload is at offset 16.
    TypeParam sample = SampleValue<TypeParam>();
    std::memcpy(static_cast<char*>(entry.address) + offsetof(Record, value), &sample, sizeof(TypeParam));
    EXPECT_TRUE(port.GetValue() == sample);
}

TYPED_TEST(TypedQualifiedPort, SetValueGetValueGetQualityAndOnChangeAllocateNothing)
{
    QualifiedPort<TypeParam> port("p", 1);
    FakeConnector connector("copy");
    TypeParam sample = SampleValue<TypeParam>();
    VarnixTest::ResourceCounter counter;
    port.SetValue(sample);
    TypeParam back = port.GetValue();
    port.OnChange(connector);
    (void)port.GetQuality();
    EXPECT_EQ(counter.Allocations(), 0u);
    EXPECT_EQ(counter.Locks(), 0u);
    EXPECT_TRUE(back == sample);
}

TEST_F(QualifiedPortFixture, ANewQualifiedPortOfIntReportsGoodFlags0Timestamp0Value0)
{
    QualifiedPort<int> port("p", 1);
    EXPECT_EQ(port.GetQuality().state, QualityState::Good);
    EXPECT_EQ(port.GetQuality().flags, QualityFlags::None);
    EXPECT_EQ(port.GetValue(), 0);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    EXPECT_EQ(record->timestamp, 0);
    EXPECT_EQ(record->quality, MakeQuality(QualityState::Good));
    EXPECT_EQ(record->value, 0);
}

TEST_F(QualifiedPortFixture, TheRecordIsPublishedWithTimestampQualityAndValueAtTheirOffsets)
{
    QualifiedPort<double> port("level", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    const auto& entry = builder.GetEntries().at(0);
    EXPECT_EQ(entry.typeName, String("VarnixBase.Core.QualitySystem.QualifiedValue<double>"));
    EXPECT_EQ(entry.size, 24u);
    EXPECT_EQ(entry.alignment, 8u);

    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 5));
    port.SetValue(2.5);
    const auto* bytes = static_cast<const unsigned char*>(entry.address);
    std::int64_t timestamp = 0;
    std::uint32_t flags = 0xFFFFFFFF;
    std::uint8_t state = 0;
    double value = 0.0;
    std::memcpy(&timestamp, bytes + 0, sizeof(timestamp));
    std::memcpy(&flags, bytes + 8, sizeof(flags));
    std::memcpy(&state, bytes + 12, sizeof(state));
    std::memcpy(&value, bytes + 16, sizeof(value));
    EXPECT_EQ(timestamp, Start + 5);
    EXPECT_EQ(flags, 0u);
    EXPECT_EQ(state, 1u);
    EXPECT_EQ(value, 2.5);
}

TEST_F(QualifiedPortFixture, PublishLogsTheAddressOfTheWholeRecordAtLevel7)
{
    QualifiedPort<int> port("level", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(builder.GetEntries().at(0).address));
    auto entries = Capture().GetEntries(LogLevel::Debug);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Core.PortSystem.QualifiedPort<int>");
    EXPECT_EQ(entries[0].message, "Publish level: address=" + std::to_string(address) + ", attributes=None");
}

TEST_F(QualifiedPortFixture, SetValueTakesTheTimeStampOfNow)
{
    QualifiedPort<int> port("p", 1);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 1234));
    port.SetValue(5);
    EXPECT_EQ(record->timestamp, Start + 1234);
    EXPECT_EQ(record->value, 5);
}

TEST_F(QualifiedPortFixture, SetValueOnAPortWhoseQualityWasBadResetsItToGoodFlags0)
{
    QualifiedPort<int> port("p", 1);
    FakeConnector connector("copy");
    connector.ownQuality = MakeQuality(QualityState::Bad, QualityFlags::WireBreak);
    port.OnChange(connector);
    ASSERT_EQ(port.GetQuality(), MakeQuality(QualityState::Bad, QualityFlags::WireBreak));
    port.SetValue(3);
    EXPECT_EQ(port.GetQuality().state, QualityState::Good);
    EXPECT_EQ(port.GetQuality().flags, QualityFlags::None);
}

TEST_F(QualifiedPortFixture, OnChangeTakesTheConnectorsQuality)
{
    QualifiedPort<double> port("p", 1);
    FakeConnector connector("copy");
    connector.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable, QualityFlags::Overrange)));
    connector.ownQuality = MakeQuality(QualityState::Good, QualityFlags::Inaccurate);
    port.OnChange(connector);
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Questionable, QualityFlags::Overrange | QualityFlags::Inaccurate));
}

TEST_F(QualifiedPortFixture, OnChangeLeavesTheValueAndChangesTheTimeStampEvenIfTheQualityDidNotChange)
{
    QualifiedPort<int> port("p", 1);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    port.SetValue(7);
    ASSERT_EQ(record->timestamp, Start);
    FakeConnector connector("copy");
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 10));
    port.OnChange(connector);
    EXPECT_EQ(record->timestamp, Start + 10);
    EXPECT_EQ(record->value, 7);
    Clock::Set(DateTime::FromUnixTimeMicroseconds(Start + 20));
    port.OnChange(connector);
    EXPECT_EQ(record->timestamp, Start + 20);
    EXPECT_EQ(record->quality, MakeQuality(QualityState::Good));
    EXPECT_EQ(port.GetValue(), 7);
}

TEST_F(QualifiedPortFixture, AValueWrittenThroughTheAddressIsKeptByOnChange)
{
    QualifiedPort<int> port("p", 1);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    FakeConnector connector("copy");
    connector.changed += Zon::make_delegate(static_cast<IPort*>(&port), &IPort::OnChange);
    record->value = 99; // what a connector does before raising its event
    connector.Execute();
    EXPECT_EQ(port.GetValue(), 99);
    EXPECT_EQ(record->timestamp, Start);
}

TEST_F(QualifiedPortFixture, QualityProvidersAddedToAQualifiedPortDoNotChangeItsQuality)
{
    QualifiedPort<int> port("p", 1);
    port.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad)));
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Good));
    EXPECT_EQ(port.GetQualityProviders().size(), 1u);
}

TEST_F(QualifiedPortFixture, AStringOf81UnitsSetOnACapacityOf80Holds80UnitsAndATerminator)
{
    Wide80 source;
    std::fill(std::begin(source.data), std::end(source.data), u'q');
    QualifiedPort<Wide80> port("wide", 1);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    port.SetValue(source);
    EXPECT_EQ(record->value.length, 80u);
    EXPECT_EQ(record->value.data[79], u'q');
    EXPECT_EQ(record->value.data[80], u'\0');
}

TEST_F(QualifiedPortFixture, SettingAShorterStringAfterALongerOneLeavesAllLaterUnitsZero)
{
    QualifiedPort<Narrow80> port("text", 1);
    DynamicPortsBuilder builder;
    auto* record = Published(port, builder);
    port.SetValue(Narrow80("the first and longer text"));
    port.SetValue(Narrow80("second"));
    EXPECT_EQ(record->value.length, 6u);
    for (std::size_t i = 6; i <= 80; ++i) {
        EXPECT_EQ(record->value.data[i], '\0') << i;
    }
}
