#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

#include "GraphDoubles.hpp"
#include "PortValueSamples.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

template <class T>
class TypedPort : public VarnixTest::HostTest {};
TYPED_TEST_SUITE(TypedPort, PortValueTypes);

class PortFixture : public VarnixTest::HostTest {};

using Narrow80 = StaticString<80, char>;
using Wide80 = StaticString<80, char16_t>;

} // namespace

TYPED_TEST(TypedPort, ANewPortHoldsAZeroOrEmptyValue)
{
    Port<TypeParam> port("p", 1);
    EXPECT_TRUE(port.GetValue() == ZeroValue<TypeParam>());
}

TYPED_TEST(TypedPort, SetValueStoresAndGetValueReturnsIt)
{
    Port<TypeParam> port("p", 1);
    port.SetValue(SampleValue<TypeParam>());
    EXPECT_TRUE(port.GetValue() == SampleValue<TypeParam>());
}

TYPED_TEST(TypedPort, ANewPortReportsGoodAlsoIfAQualityProviderWithStateBadWasAdded)
{
    Port<TypeParam> port("p", 1);
    port.AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad, QualityFlags::WireBreak)));
    EXPECT_EQ(port.GetQuality(), MakeQuality(QualityState::Good));
    // The provider is kept and listed all the same.
    EXPECT_EQ(port.GetQualityProviders().size(), 1u);
}

TYPED_TEST(TypedPort, GetRelativeDataPathIsEmpty)
{
    Port<TypeParam> port("p", 1);
    EXPECT_EQ(port.GetRelativeDataPath(), String(""));
}

TYPED_TEST(TypedPort, PublishEntersTheValueWithItsTypeSizeAndAttributes)
{
    Port<TypeParam> port("p", 1);
    port.AddAttributes(StandardAttribute::Output);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    ASSERT_EQ(builder.GetEntries().size(), 1u);
    const auto& entry = builder.GetEntries()[0];
    EXPECT_EQ(entry.name, String("p"));
    EXPECT_EQ(entry.dataType, Zon::Plc::Commons::Meta::PortDataType<TypeParam>::Code);
    EXPECT_EQ(entry.typeName, Zon::CommonTypeName<TypeParam>());
    EXPECT_EQ(entry.size, sizeof(TypeParam));
    EXPECT_EQ(entry.alignment, alignof(TypeParam));
    EXPECT_TRUE(entry.arrayDimensions.empty());
    EXPECT_EQ(entry.attributes, StandardAttribute::Output);
    // The address is the port's own value: what the controller writes there, the port reads.
    TypeParam sample = SampleValue<TypeParam>();
    std::memcpy(entry.address, &sample, sizeof(TypeParam));
    EXPECT_TRUE(port.GetValue() == sample);
}

TYPED_TEST(TypedPort, SetValueAndGetValueAllocateNothing)
{
    Port<TypeParam> port("p", 1);
    TypeParam sample = SampleValue<TypeParam>();
    VarnixTest::ResourceCounter counter;
    port.SetValue(sample);
    TypeParam back = port.GetValue();
    (void)port.GetQuality();
    EXPECT_EQ(counter.Allocations(), 0u);
    EXPECT_EQ(counter.Locks(), 0u);
    EXPECT_TRUE(back == sample);
}

TEST_F(PortFixture, PublishLogsNameAddressAndAttributesAtLevel7)
{
    Port<int> port("level", 1);
    port.AddAttributes(StandardAttribute::Input);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(builder.GetEntries().at(0).address));
    auto entries = Capture().GetEntries(LogLevel::Debug);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(static_cast<int>(entries[0].level), 7);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Core.PortSystem.Port<int>");
    EXPECT_EQ(entries[0].message, "Publish level: address=" + std::to_string(address) + ", attributes=Input");
}

TEST_F(PortFixture, PublishPassesTheAttributesOfThatMoment)
{
    Port<double> port("level", 1);
    port.AddAttributes(StandardAttribute::Input | StandardAttribute::Retain);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    port.RemoveAttributes(StandardAttribute::Retain);
    EXPECT_EQ(builder.GetEntries().at(0).attributes, StandardAttribute::Input | StandardAttribute::Retain);
    EXPECT_EQ(Capture().Count(LogLevel::Debug,
                              "Publish level: address=" +
                                  std::to_string(reinterpret_cast<std::uintptr_t>(builder.GetEntries()[0].address)) +
                                  ", attributes=Input|Retain"),
              1u);
}

TEST_F(PortFixture, GetDimensionReturnsWhatWasPassedAndThePortHoldsOneValue)
{
    auto allocationsFor = [](unsigned long dimension) {
        VarnixTest::ResourceCounter counter;
        { Port<int> port("p", dimension); }
        return counter.Allocations();
    };
    { Port<int> warm("p", 1); }
    EXPECT_EQ(allocationsFor(1), allocationsFor(1'000'000));

    Port<int> port("p", 1'000'000);
    EXPECT_EQ(port.GetDimension(), 1'000'000u);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    EXPECT_EQ(builder.GetEntries().at(0).size, sizeof(int));
    EXPECT_TRUE(builder.GetEntries().at(0).arrayDimensions.empty());
}

TEST_F(PortFixture, AStringOf81UnitsSetOnACapacityOf80Holds80UnitsAndATerminator)
{
    Narrow80 source;
    std::fill(std::begin(source.data), std::end(source.data), 'x'); // 81 units, no terminator
    source.length = 80;
    Port<Narrow80> port("text", 1);
    port.SetValue(source);
    Narrow80 value = port.GetValue();
    EXPECT_EQ(value.length, 80u);
    EXPECT_EQ(value.data[79], 'x');
    EXPECT_EQ(value.data[80], '\0');

    Wide80 wideSource;
    std::fill(std::begin(wideSource.data), std::end(wideSource.data), u'y');
    Port<Wide80> widePort("wide", 1);
    widePort.SetValue(wideSource);
    Wide80 wideValue = widePort.GetValue();
    EXPECT_EQ(wideValue.length, 80u);
    EXPECT_EQ(wideValue.data[79], u'y');
    EXPECT_EQ(wideValue.data[80], u'\0');
}

TEST_F(PortFixture, SettingAShorterStringAfterALongerOneLeavesAllLaterUnitsZero)
{
    Port<Narrow80> port("text", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    const auto* published = static_cast<const Narrow80*>(builder.GetEntries().at(0).address);
    port.SetValue(Narrow80("a rather long text for the port"));
    port.SetValue(Narrow80("tiny"));
    EXPECT_EQ(published->length, 4u);
    EXPECT_EQ(std::string(published->data), "tiny");
    for (std::size_t i = 4; i <= 80; ++i) {
        EXPECT_EQ(published->data[i], '\0') << i;
    }

    Port<Wide80> widePort("wide", 1);
    widePort.SetValue(Wide80(u"a rather long text"));
    widePort.SetValue(Wide80(u"ab"));
    Wide80 wide = widePort.GetValue();
    EXPECT_EQ(wide.length, 2u);
    for (std::size_t i = 2; i <= 80; ++i) {
        EXPECT_EQ(wide.data[i], u'\0') << i;
    }
}

TEST_F(PortFixture, SettingAnEmptyWideStringLeavesLength0AndAllUnitsZero)
{
    Port<Wide80> port("wide", 1);
    port.SetValue(Wide80(u"text"));
    port.SetValue(Wide80());
    Wide80 value = port.GetValue();
    EXPECT_EQ(value.length, 0u);
    for (char16_t unit : value.data) {
        EXPECT_EQ(unit, u'\0');
    }
}

TEST_F(PortFixture, SetValueOfAStringCountsUpToTheFirstZeroUnitNotByTheLengthField)
{
    Narrow80 source("abc");
    source.length = 50; // the length field is not read
    Port<Narrow80> port("text", 1);
    port.SetValue(source);
    EXPECT_EQ(port.GetValue().length, 3u);
}

TEST_F(PortFixture, GetValueOfAStringCopiesLengthPlusOneUnitsAndNothingBehind)
{
    Port<Narrow80> port("text", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    auto* published = static_cast<Narrow80*>(builder.GetEntries().at(0).address);
    // A foreign write leaves text behind the terminator.
    std::memcpy(published->data, "abc\0XYZ", 7);
    published->length = 3;
    Narrow80 value = port.GetValue();
    EXPECT_EQ(value.capacity, 80u);
    EXPECT_EQ(value.length, 3u);
    EXPECT_EQ(std::string(value.data), "abc");
    EXPECT_EQ(value.data[4], '\0');
    EXPECT_EQ(value.data[5], '\0');
}

TEST_F(PortFixture, AStringLengthFieldAboveTheCapacityIsNeverReadPastTheString)
{
    Port<Narrow80> port("text", 1);
    DynamicPortsBuilder builder;
    port.Publish(builder);
    auto* published = static_cast<Narrow80*>(builder.GetEntries().at(0).address);
    std::memset(published->data, 'z', sizeof(published->data));
    published->length = 0xFFFF;
    published->capacity = 0xFFFF;
    Narrow80 value = port.GetValue();
    EXPECT_EQ(value.length, 0xFFFFu);
    EXPECT_EQ(value.data[80], 'z');
    // Storing clamps to the string's own capacity.
    port.SetValue(Narrow80("ok"));
    EXPECT_EQ(published->length, 2u);
}
