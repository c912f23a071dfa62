#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

#include "GraphDoubles.hpp"

using namespace VarnixBase::Core::PortSystem;
using namespace VarnixTest::Graph;
using VarnixBase::Core::Types::PnDeviceState;
using Zon::Plc::Commons::Meta::DynamicPortsBuilder;
using Zon::Plc::Commons::Meta::StandardAttribute;
using Zon::Plc::Commons::Meta::TypeSystem::TypeDomain;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// A device state port published into its own builder, with the status bits written the way the
/// controller writes them: one byte through the published address.
class PnDeviceStatePortTest : public VarnixTest::HostTest {
protected:
    void SetUp() override
    {
        VarnixTest::HostTest::SetUp();
        port = std::make_unique<PnDeviceStatePort>("device", 1);
        port->Publish(builder);
        ASSERT_EQ(builder.GetEntries().size(), 1u);
    }
    void TearDown() override
    {
        port.reset();
        VarnixTest::HostTest::TearDown();
    }

    void WriteBits(std::uint8_t bits) { std::memcpy(builder.GetEntries()[0].address, &bits, sizeof(bits)); }
    void WriteBits(PnDeviceState bits) { WriteBits(static_cast<std::uint8_t>(bits)); }

    /// The quality after the controller wrote `bits` and one cycle ran.
    template <class Bits>
    Quality QualityOf(Bits bits)
    {
        WriteBits(bits);
        port->Execute();
        return port->GetQuality();
    }

    DynamicPortsBuilder builder;
    std::unique_ptr<PnDeviceStatePort> port;
};

constexpr PnDeviceState IsPrimary = PnDeviceState::IS_PRIMARY;
constexpr PnDeviceState ArValid = PnDeviceState::AR_VALID;
constexpr PnDeviceState ApplRun = PnDeviceState::APPL_RUN;
constexpr PnDeviceState PnNoDiag = PnDeviceState::PN_NO_DIAG;

} // namespace

TEST_F(PnDeviceStatePortTest, AValueOf0AfterExecuteIsInvalidWithFailure)
{
    EXPECT_EQ(QualityOf(PnDeviceState::None), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
}

TEST_F(PnDeviceStatePortTest, AValueOfArValidAloneIsQuestionableWithFlags0)
{
    EXPECT_EQ(QualityOf(ArValid), MakeQuality(QualityState::Questionable, QualityFlags::None));
}

TEST_F(PnDeviceStatePortTest, ArValidWithPnNoDiagIsGood)
{
    EXPECT_EQ(QualityOf(ArValid | PnNoDiag), MakeQuality(QualityState::Good));
}

TEST_F(PnDeviceStatePortTest, PnNoDiagAloneIsInvalid)
{
    EXPECT_EQ(QualityOf(PnNoDiag), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
}

TEST_F(PnDeviceStatePortTest, IsPrimaryAndApplRunHaveNoEffectOnQuality)
{
    EXPECT_EQ(QualityOf(IsPrimary | ApplRun), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
    EXPECT_EQ(QualityOf(ArValid | IsPrimary | ApplRun), MakeQuality(QualityState::Questionable));
    EXPECT_EQ(QualityOf(ArValid | PnNoDiag | IsPrimary | ApplRun), MakeQuality(QualityState::Good));
}

TEST_F(PnDeviceStatePortTest, EveryByteValueIsJudgedByItsTwoBitsAlone)
{
    for (unsigned raw = 0; raw <= 0xFF; ++raw) {
        bool arValid = (raw & 4u) != 0;
        bool noDiag = (raw & 32u) != 0;
        Quality expected = !arValid ? MakeQuality(QualityState::Invalid, QualityFlags::Failure)
                           : !noDiag ? MakeQuality(QualityState::Questionable)
                                     : MakeQuality(QualityState::Good);
        EXPECT_EQ(QualityOf(static_cast<std::uint8_t>(raw)), expected) << raw;
        EXPECT_EQ(static_cast<unsigned>(port->GetValue()), raw);
    }
}

TEST_F(PnDeviceStatePortTest, BeforeTheFirstExecuteTheQualityIsGoodAlsoForAValueOf0)
{
    EXPECT_EQ(port->GetValue(), PnDeviceState::None);
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Good));
}

TEST_F(PnDeviceStatePortTest, TheQualityIsDerivedAnewInEachExecute)
{
    EXPECT_EQ(QualityOf(PnDeviceState::None), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
    WriteBits(ArValid | PnNoDiag);
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
    port->Execute();
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Good));
}

TEST_F(PnDeviceStatePortTest, SetValueHasNoEffectOnWhatGetValueReturns)
{
    WriteBits(ArValid);
    port->SetValue(ArValid | PnNoDiag);
    EXPECT_EQ(port->GetValue(), ArValid);
    FakeConnector connector("copy");
    port->SetValue(PnNoDiag, connector);
    EXPECT_EQ(port->GetValue(), ArValid);
    static_cast<PortBase<PnDeviceState>&>(*port).SetValue(IsPrimary);
    EXPECT_EQ(port->GetValue(), ArValid);
    port->Execute();
    EXPECT_EQ(port->GetQuality(), MakeQuality(QualityState::Questionable));
}

TEST_F(PnDeviceStatePortTest, AQualityProviderWithBadMakesGetQualityBadAlsoWhenThePortsOwnQualityIsGood)
{
    auto provider = std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Bad, QualityFlags::Blocked));
    port->AddQualityProvider(provider);
    EXPECT_EQ(QualityOf(ArValid | PnNoDiag), MakeQuality(QualityState::Bad, QualityFlags::Blocked));
    // With an own quality of `Invalid` and `Failure`, the flags of both appear.
    EXPECT_EQ(QualityOf(PnDeviceState::None), MakeQuality(QualityState::Bad, QualityFlags::Blocked | QualityFlags::Failure));
}

TEST_F(PnDeviceStatePortTest, GetQualityTakesTheWorseOfTheProvidersStateAndItsOwn)
{
    port->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good, QualityFlags::Test)));
    port->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Questionable)));
    EXPECT_EQ(QualityOf(ArValid | PnNoDiag), MakeQuality(QualityState::Questionable, QualityFlags::Test));
    EXPECT_EQ(QualityOf(ArValid), MakeQuality(QualityState::Questionable, QualityFlags::Test));
    EXPECT_EQ(QualityOf(PnNoDiag), MakeQuality(QualityState::Invalid, QualityFlags::Test | QualityFlags::Failure));
}

TEST_F(PnDeviceStatePortTest, ADimensionOf5AtConstructionStillGivesGetDimension1)
{
    PnDeviceStatePort wide("wide", 5);
    EXPECT_EQ(wide.GetDimension(), 1u);
    EXPECT_EQ(wide.PortBaseImpl::GetDimension(), 5u);
    EXPECT_EQ(static_cast<IPort&>(wide).GetDimension(), 1u);
}

TEST_F(PnDeviceStatePortTest, PublishEntersTheBitsAsUnsignedCharAtTheAddressOfTheValue)
{
    PnDeviceStatePort other("state", 1);
    other.AddAttributes(StandardAttribute::Input);
    DynamicPortsBuilder ownBuilder;
    other.Publish(ownBuilder);
    ASSERT_EQ(ownBuilder.GetEntries().size(), 1u);
    const auto& entry = ownBuilder.GetEntries()[0];
    EXPECT_EQ(entry.name, String("state"));
    EXPECT_EQ(entry.dataType, 4u);
    EXPECT_EQ(entry.typeName, String("unsigned char"));
    EXPECT_EQ(entry.size, 1u);
    EXPECT_EQ(entry.alignment, 1u);
    EXPECT_TRUE(entry.arrayDimensions.empty());
    EXPECT_EQ(entry.attributes, StandardAttribute::Input);
    *static_cast<unsigned char*>(entry.address) = 36;
    EXPECT_EQ(other.GetValue(), ArValid | PnNoDiag);
}

TEST_F(PnDeviceStatePortTest, PublishLogsNameAddressAndAttributesAtLevel7WithItsOwnLogger)
{
    PnDeviceStatePort other("state", 1);
    Capture().Clear();
    DynamicPortsBuilder ownBuilder;
    other.Publish(ownBuilder);
    auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(ownBuilder.GetEntries().at(0).address));
    auto entries = Capture().GetEntries(LogLevel::Debug);
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(static_cast<int>(entries[0].level), 7);
    EXPECT_EQ(entries[0].loggerName, "VarnixBase.Core.PortSystem.PnDeviceStatePort");
    EXPECT_EQ(entries[0].message, "Publish state: address=" + std::to_string(address) + ", attributes=None");
}

TEST_F(PnDeviceStatePortTest, ExecuteAllocatesNothingAndTakesNoLock)
{
    port->AddQualityProvider(std::make_shared<FixedQualityProvider>(MakeQuality(QualityState::Good, QualityFlags::Test)));
    WriteBits(ArValid);
    port->Execute(); // a first run outside the count
    Quality quality;
    {
        VarnixTest::ResourceCounter counter;
        port->Execute();
        WriteBits(PnDeviceState::None);
        port->Execute();
        quality = port->GetQuality();
        EXPECT_EQ(counter.Allocations(), 0u);
        EXPECT_EQ(counter.Locks(), 0u);
    }
    EXPECT_EQ(quality, MakeQuality(QualityState::Invalid, QualityFlags::Test | QualityFlags::Failure));
}

TEST_F(PnDeviceStatePortTest, AddingItToAPortProviderPutsItOnTheProgramsCycle)
{
    TypeDomain domain;
    ConfigurableProgramBaseImpl program("App/Main", "Monitor", domain);
    auto device = std::make_shared<PnDeviceStatePort>("device", 1);
    program.GetPortProvider().AddPort(device);
    EXPECT_EQ(device.use_count(), 3);
    program.Execute();
    EXPECT_EQ(device->GetQuality(), MakeQuality(QualityState::Invalid, QualityFlags::Failure));
}
