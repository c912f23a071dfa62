#include <gtest/gtest.h>

#include "VarnixBase/Sim/Inject.hpp"
#include "VarnixBase/Sim/Probe.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/Host/Clock.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Sim;
using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Commons::Meta::MetaInfoProvider;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using Zon::Plc::Commons::Gds::StaticString;

class Probes : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        HostTest::SetUp();
        library = std::make_unique<Zon::Host::TypeLibrary>("App", "App");
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(*library);
        publisher = std::make_unique<Zon::Host::PortPublisher>(*library);
        program = std::make_unique<ConfigurableProgramBaseImpl>("App/Main", "Probe", domain);
    }

    void TearDown() override
    {
        if (component != nullptr) {
            MetaInfoProvider::GetInstance().Remove(*component);
        }
        program.reset();
        publisher.reset();
        library.reset();
        HostTest::TearDown();
    }

    void Publish()
    {
        Zon::Plc::Commons::Meta::DynamicPortsBuilder builder;
        program->GetPortProvider().Publish(builder);
        component = &publisher->Publish("App/Main", builder);
        MetaInfoProvider::GetInstance().Add(*component);
    }

    Zon::Plc::Commons::Meta::DataInfo Resolve(const std::string& path)
    {
        return MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(Zon::String(path));
    }

    TraceSample Read(const PortProbe& probe)
    {
        TraceSample sample;
        probe.read(sample);
        return sample;
    }

    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    std::unique_ptr<ConfigurableProgramBaseImpl> program;
    Zon::Host::Component* component = nullptr;
};

TEST(ProbeText, QualityNamesStateAndFlags)
{
    EXPECT_EQ(QualityText(Quality{}), "Good");
    EXPECT_EQ(QualityText(Quality{QualityFlags::Overrange, QualityState::Bad}), "Bad Overrange");
    EXPECT_EQ(QualityText(Quality{QualityFlags::WireBreak | QualityFlags::Failure, QualityState::Invalid}),
              "Invalid WireBreak|Failure");
    EXPECT_EQ(QualityText(Quality{static_cast<QualityFlags>(0x8), QualityState::Questionable}), "Questionable 0x8");
}

TEST(ProbeText, Utf16RoundTrip)
{
    std::string text = "Pumpe \xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80";
    EXPECT_EQ(Utf16ToUtf8(Utf8ToUtf16(text).data(), Utf8ToUtf16(text).size()), text);
}

TEST_F(Probes, ReadPlainQualifiedAndDevicePorts)
{
    auto count = std::make_shared<Port<signed char>>("count", 1);
    auto level = std::make_shared<QualifiedPort<double>>("level", 1);
    auto raw = std::make_shared<AnalogInPort>("raw", 1);
    program->GetPortProvider().AddPort(count);
    program->GetPortProvider().AddPort(level);
    program->GetPortProvider().AddPort(raw);
    Publish();
    Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(5000));

    count->SetValue(-3);
    level->SetValue(12.5);
    auto countProbe = MakeProbe(count);
    EXPECT_EQ(countProbe.column.kind, ValueKind::Signed);
    EXPECT_EQ(countProbe.column.bits, 8u);
    EXPECT_FALSE(countProbe.column.hasQuality);
    EXPECT_EQ(Read(countProbe).value, "-3");

    auto timestamp = static_cast<const std::int64_t*>(Resolve("App/Main.level.Timestamp").address);
    auto levelProbe = MakeProbe(level, timestamp);
    EXPECT_TRUE(levelProbe.column.hasQuality);
    EXPECT_TRUE(levelProbe.column.hasTimestamp);
    auto levelSample = Read(levelProbe);
    EXPECT_EQ(levelSample.value, "12.5");
    EXPECT_EQ(levelSample.quality, "Good");
    EXPECT_EQ(levelSample.timestamp, 5000);

    WriteLiteral(Resolve("App/Main.raw"), "16#8001", "--set raw=16#8001");
    program->Execute();
    auto rawSample = Read(MakeProbe(raw));
    EXPECT_EQ(rawSample.value, "32769");
    EXPECT_EQ(rawSample.quality, "Bad Overrange");
}

namespace {

/// An application's own port classes: probed as the library class they derive from.
class CounterPort : public Port<int> {
public:
    using Port<int>::Port;
};

class FilteredLevelPort : public QualifiedPort<float> {
public:
    using QualifiedPort<float>::QualifiedPort;
};

} // namespace

TEST_F(Probes, EveryPortOfAClassIsProbedAsTheFirstOfItsClass)
{
    // The class that takes a port is found once per port class; later ports of the same class, and
    // ports of classes derived from a known one, must still get the probe of their own kind.
    std::vector<std::shared_ptr<IPort>> ports = {
        std::make_shared<Port<int>>("a", 1),         std::make_shared<CounterPort>("b", 1),
        std::make_shared<Port<unsigned char>>("c", 1), std::make_shared<Port<int>>("d", 1),
        std::make_shared<CounterPort>("e", 1),       std::make_shared<FilteredLevelPort>("f", 1),
        std::make_shared<QualifiedPort<float>>("g", 1), std::make_shared<FilteredLevelPort>("h", 1),
    };
    std::static_pointer_cast<Port<int>>(ports[3])->SetValue(-7);
    std::static_pointer_cast<Port<int>>(ports[4])->SetValue(42);
    std::static_pointer_cast<QualifiedPort<float>>(ports[7])->SetValue(2.5f);
    struct Expected {
        ValueKind kind;
        unsigned bits;
        bool hasQuality;
        std::string value;
    };
    std::vector<Expected> expected = {
        {ValueKind::Signed, 32, false, "0"}, {ValueKind::Signed, 32, false, "0"},
        {ValueKind::Unsigned, 8, false, "0"}, {ValueKind::Signed, 32, false, "-7"},
        {ValueKind::Signed, 32, false, "42"}, {ValueKind::Real, 32, true, "0"},
        {ValueKind::Real, 32, true, "0"}, {ValueKind::Real, 32, true, "2.5"},
    };
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = 0; i < ports.size(); ++i) {
            auto probe = MakeProbe(ports[i]);
            EXPECT_EQ(probe.column.name, ports[i]->GetName().ToStdString());
            EXPECT_EQ(probe.column.kind, expected[i].kind) << "port " << i;
            EXPECT_EQ(probe.column.bits, expected[i].bits) << "port " << i;
            EXPECT_EQ(probe.column.hasQuality, expected[i].hasQuality) << "port " << i;
            EXPECT_EQ(Read(probe).value, expected[i].value) << "port " << i;
            long double number = 0;
            ASSERT_TRUE(probe.number);
            EXPECT_TRUE(probe.number(number));
            EXPECT_EQ(probe.quality != nullptr, expected[i].hasQuality) << "port " << i;
        }
    }
}

TEST_F(Probes, LiteralsAreWrittenByTheVariablesType)
{
    auto flag = std::make_shared<Port<bool>>("flag", 1);
    auto small = std::make_shared<Port<short>>("small", 1);
    auto real = std::make_shared<QualifiedPort<float>>("real", 1);
    auto text = std::make_shared<Port<StaticString<80, char>>>("text", 1);
    auto wide = std::make_shared<Port<StaticString<80, char16_t>>>("wide", 1);
    for (auto port : std::vector<std::shared_ptr<IPort>>{flag, small, real, text, wide}) {
        program->GetPortProvider().AddPort(port);
    }
    Publish();

    WriteLiteral(Resolve("App/Main.flag"), "TRUE", "t");
    EXPECT_TRUE(flag->GetValue());
    WriteLiteral(Resolve("App/Main.small"), "int#-300", "t");
    EXPECT_EQ(small->GetValue(), -300);
    WriteLiteral(Resolve("App/Main.real.Value"), "2", "t");
    EXPECT_EQ(real->GetValue(), 2.0f);
    WriteLiteral(Resolve("App/Main.real.Value"), "1.5e1", "t");
    EXPECT_EQ(real->GetValue(), 15.0f);
    WriteLiteral(Resolve("App/Main.text"), "Tank 1", "t");
    EXPECT_EQ(Read(MakeProbe(text)).value, "Tank 1");
    WriteLiteral(Resolve("App/Main.wide"), "Pumpe \xC3\xA4", "t");
    EXPECT_EQ(Read(MakeProbe(wide)).value, "Pumpe \xC3\xA4");
}

TEST_F(Probes, ALiteralOutsideTheTypeIsRefusedWithItsOrigin)
{
    auto small = std::make_shared<Port<short>>("small", 1);
    program->GetPortProvider().AddPort(small);
    Publish();
    small->SetValue(7);
    try {
        WriteLiteral(Resolve("App/Main.small"), "70000", "--set small=70000");
        FAIL() << "no exception";
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "--set small=70000: '70000' is not a value of type short");
    }
    EXPECT_THROW(WriteLiteral(Resolve("App/Main.small"), "1.5", "x"), UsageError);
    EXPECT_THROW(WriteLiteral(Resolve("App/Main.small"), "abc", "x"), UsageError);
    EXPECT_EQ(small->GetValue(), 7);
}

TEST_F(Probes, ThePlainReadersForChecksReadWhatTheLockingReadersRead)
{
    auto count = std::make_shared<Port<signed char>>("count", 1);
    auto level = std::make_shared<QualifiedPort<double>>("level", 1);
    auto raw = std::make_shared<AnalogInPort>("raw", 1);
    auto text = std::make_shared<Port<StaticString<80, char>>>("text", 1);
    for (auto port : std::vector<std::shared_ptr<IPort>>{count, level, raw, text}) {
        program->GetPortProvider().AddPort(port);
    }
    Publish();
    Zon::Host::Clock::UseVirtual(Zon::DateTime::FromUnixTimeMicroseconds(5000));
    count->SetValue(-3);
    level->SetValue(12.5);
    WriteLiteral(Resolve("App/Main.raw"), "16#8001", "t");
    program->Execute();

    auto countProbe = MakeProbe(count);
    long double number = 0;
    ASSERT_NE(countProbe.numberOf, nullptr);
    EXPECT_EQ(countProbe.object, count.get());
    EXPECT_TRUE(countProbe.numberOf(countProbe.object, number));
    EXPECT_EQ(number, -3);
    EXPECT_EQ(countProbe.qualityOf, nullptr); // a plain port has no quality
    EXPECT_EQ(countProbe.timestamp, nullptr);

    auto timestamp = static_cast<const std::int64_t*>(Resolve("App/Main.level.Timestamp").address);
    auto levelProbe = MakeProbe(level, timestamp);
    EXPECT_TRUE(levelProbe.numberOf(levelProbe.object, number));
    EXPECT_EQ(number, 12.5);
    EXPECT_EQ(levelProbe.timestamp, timestamp);

    auto rawProbe = MakeProbe(raw);
    Quality plain, locked;
    ASSERT_NE(rawProbe.qualityOf, nullptr);
    EXPECT_TRUE(rawProbe.qualityOf(rawProbe.object, plain));
    EXPECT_TRUE(rawProbe.quality(locked));
    EXPECT_EQ(plain, locked);
    EXPECT_EQ(QualityText(plain), "Bad Overrange");
    EXPECT_TRUE(rawProbe.numberOf(rawProbe.object, number));
    EXPECT_EQ(number, 32769);

    auto textProbe = MakeProbe(text);
    EXPECT_FALSE(textProbe.numberOf(textProbe.object, number)); // text is compared as text
    EXPECT_FALSE(textProbe.number(number));
}
