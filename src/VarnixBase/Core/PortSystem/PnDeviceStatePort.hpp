#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "VarnixBase/Core/Types/PnDeviceState.hpp"

namespace VarnixBase::Core::PortSystem {

class IConnector;

/// The status bits of a field device on the network, which the controller writes through the
/// published address as one unsigned 8-bit value. Each cycle the port derives its own quality
/// from them:
///
/// - `AR_VALID` clear: `Invalid` with `Failure` (whatever else is set);
/// - `AR_VALID` set and `PN_NO_DIAG` clear (the device reports a diagnosis): `Questionable`,
///   no flags;
/// - both set: `Good`.
///
/// `IS_PRIMARY` and `APPL_RUN` do not count. The port is executable, so a port provider puts it on
/// the program's cycle, where it runs ahead of the connectors.
class PnDeviceStatePort : public PortBase<Types::PnDeviceState>,
                          public Commons::IExecutable,
                          public Zon::System::Commons::Diagnostics::Logging::Loggable<PnDeviceStatePort> {
public:
    /// `dimension` is kept by the base, but the port always holds one value.
    PnDeviceStatePort(const String& name, unsigned long dimension);
    ~PnDeviceStatePort() override;

    /// The quality providers' combination, combined with the quality derived in the last
    /// `Execute` (the worse state, the union of the flags). Before the first `Execute` the
    /// derived quality is `Good` with no flags, also for a value of 0.
    QualitySystem::Quality GetQuality() override;
    /// Always 1.
    unsigned long GetDimension() override;
    /// Logs "Publish {name}: address={address}, attributes={attributes}" at level 7, then enters
    /// the status bits as a variable of type `unsigned char` with the port's current attributes.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override;
    /// Does nothing: the value changes only through the published address.
    void SetValue(Types::PnDeviceState newValue) override;
    /// Does nothing either.
    void SetValue(Types::PnDeviceState newValue, IConnector& connector);
    /// The status bits.
    Types::PnDeviceState GetValue() const override;
    /// Derives the quality from the status bits, from scratch: reads the value once, tests two
    /// bits, allocates nothing and takes no lock.
    void Execute() override;

private:
    Types::PnDeviceState value = Types::PnDeviceState::None;
    QualitySystem::Quality quality;
};

} // namespace VarnixBase::Core::PortSystem
