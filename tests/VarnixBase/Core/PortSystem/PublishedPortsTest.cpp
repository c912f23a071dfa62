// Ports published through the host resolve by variable path through the library's own walk.
#include <gtest/gtest.h>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"
#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"
#include "VarnixBase/Commons/Gds/StaticStringAdapter.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/QualitySystem/QualityTypeDescription.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "support/HostFixture.hpp"

using namespace VarnixBase::Core::PortSystem;
using VarnixBase::Commons::Meta::MetaInfoProvider;
using Zon::Plc::Commons::Gds::StaticString;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;

class PublishedPorts : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        HostTest::SetUp();
        library = std::make_unique<Zon::Host::TypeLibrary>("App", "App");
        VarnixBase::Core::QualitySystem::DescribeQualityTypes(*library);
        publisher = std::make_unique<Zon::Host::PortPublisher>(*library);
    }

    void TearDown() override
    {
        if (component != nullptr) {
            MetaInfoProvider::GetInstance().Remove(*component);
        }
        publisher.reset();
        library.reset();
        HostTest::TearDown();
    }

    void Publish(PortProvider& ports)
    {
        DynamicPortsBuilder builder;
        ports.Publish(builder);
        component = &publisher->Publish("App/Main", builder);
        MetaInfoProvider::GetInstance().Add(*component);
    }

    Zon::Plc::Commons::Meta::DataInfo Resolve(const char* path)
    {
        return MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path);
    }

    std::unique_ptr<Zon::Host::TypeLibrary> library;
    std::unique_ptr<Zon::Host::PortPublisher> publisher;
    Zon::Host::Component* component = nullptr;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain domain;
};

TEST_F(PublishedPorts, PlainAndQualifiedPortsResolveToTheirValues)
{
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    auto count = std::make_shared<Port<int>>("count", 1);
    auto level = std::make_shared<QualifiedPort<double>>("level", 1);
    program.GetPortProvider().AddPort(count);
    program.GetPortProvider().AddPort(level);
    Publish(program.GetPortProvider());

    count->SetValue(42);
    auto countInfo = Resolve("App/Main.count");
    ASSERT_NE(countInfo.address, nullptr);
    EXPECT_EQ(*static_cast<int*>(countInfo.address), 42);
    EXPECT_EQ(GetCommonTypeName(countInfo), "int");

    level->SetValue(2.5);
    auto valueInfo = Resolve("App/Main.level.Value");
    ASSERT_NE(valueInfo.address, nullptr);
    EXPECT_EQ(*static_cast<double*>(valueInfo.address), 2.5);
    EXPECT_EQ(GetCommonTypeName(valueInfo), "double");

    auto wholeInfo = Resolve("App/Main.level");
    EXPECT_EQ(GetCommonTypeName(wholeInfo), Zon::CommonTypeName<VarnixBase::Core::QualitySystem::QualifiedValue<double>>());
    auto stateInfo = Resolve("App/Main.level.Quality.State");
    EXPECT_EQ(static_cast<char*>(stateInfo.address) - static_cast<char*>(wholeInfo.address),
              static_cast<std::ptrdiff_t>(offsetof(VarnixBase::Core::QualitySystem::QualifiedValue<double>, quality) +
                                          offsetof(VarnixBase::Core::QualitySystem::Quality, state)));
}

TEST_F(PublishedPorts, WritingThroughTheResolvedAddressChangesThePort)
{
    ConfigurableProgramBaseImpl program("App/Main", "Tank", domain);
    auto level = std::make_shared<QualifiedPort<float>>("level", 1);
    program.GetPortProvider().AddPort(level);
    Publish(program.GetPortProvider());
    *static_cast<float*>(Resolve("App/Main.level.Value").address) = 7.25f;
    EXPECT_EQ(level->GetValue(), 7.25f);
}

TEST_F(PublishedPorts, EveryPortValueTypeResolvesWithTheNameConnectorsAreRegisteredUnder)
{
    ConfigurableProgramBaseImpl program("App/Main", "All", domain);
    auto& ports = program.GetPortProvider();
    ports.AddPort(std::make_shared<Port<bool>>("b", 1));
    ports.AddPort(std::make_shared<Port<signed char>>("i8", 1));
    ports.AddPort(std::make_shared<Port<unsigned char>>("u8", 1));
    ports.AddPort(std::make_shared<Port<short>>("i16", 1));
    ports.AddPort(std::make_shared<Port<unsigned short>>("u16", 1));
    ports.AddPort(std::make_shared<Port<int>>("i32", 1));
    ports.AddPort(std::make_shared<Port<unsigned int>>("u32", 1));
    ports.AddPort(std::make_shared<Port<long>>("i64", 1));
    ports.AddPort(std::make_shared<Port<unsigned long>>("u64", 1));
    ports.AddPort(std::make_shared<Port<float>>("f32", 1));
    ports.AddPort(std::make_shared<QualifiedPort<double>>("f64", 1));
    ports.AddPort(std::make_shared<Port<StaticString<80, char>>>("s80", 1));
    ports.AddPort(std::make_shared<QualifiedPort<StaticString<512, char16_t>>>("w512", 1));
    Publish(ports);

    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.b")), Zon::CommonTypeName<bool>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.i8")), Zon::CommonTypeName<signed char>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.u8")), Zon::CommonTypeName<unsigned char>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.i16")), Zon::CommonTypeName<short>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.u16")), Zon::CommonTypeName<unsigned short>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.i32")), Zon::CommonTypeName<int>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.u32")), Zon::CommonTypeName<unsigned int>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.i64")), Zon::CommonTypeName<long>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.u64")), Zon::CommonTypeName<unsigned long>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.f32")), Zon::CommonTypeName<float>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.f64.Value")), Zon::CommonTypeName<double>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.s80")),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char>>());
    EXPECT_EQ(GetCommonTypeName(Resolve("App/Main.w512.Value")),
              Zon::CommonTypeName<VarnixBase::Commons::Gds::StaticStringAdapter<char16_t>>());
}

TEST_F(PublishedPorts, DevicePortsResolveToTheirRawValues)
{
    ConfigurableProgramBaseImpl program("App/Main", "Devices", domain);
    auto raw = std::make_shared<AnalogInPort>("raw", 1);
    auto device = std::make_shared<PnDeviceStatePort>("device", 1);
    program.GetPortProvider().AddPort(raw);
    program.GetPortProvider().AddPort(device);
    Publish(program.GetPortProvider());

    auto rawInfo = Resolve("App/Main.raw");
    EXPECT_EQ(GetCommonTypeName(rawInfo), "unsigned short");
    *static_cast<unsigned short*>(rawInfo.address) = 0x8001; // as the input module writes it
    auto deviceInfo = Resolve("App/Main.device");
    EXPECT_EQ(GetCommonTypeName(deviceInfo), "unsigned char");
    *static_cast<unsigned char*>(deviceInfo.address) = 4;
    program.Execute();
    EXPECT_EQ(raw->GetValue(), 0x8001);
    EXPECT_EQ(raw->GetQuality().state, VarnixBase::Core::QualitySystem::QualityState::Bad);
    EXPECT_EQ(device->GetQuality().state, VarnixBase::Core::QualitySystem::QualityState::Questionable);
}
