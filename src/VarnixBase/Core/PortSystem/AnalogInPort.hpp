#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::PortSystem {

class IConnector;

/// The raw 16-bit value of an analog input card, which the controller writes through the
/// published address. The top range of the value carries the card's error codes, and each cycle
/// the port derives its own quality from them:
///
/// | value  | state   | flags         |
/// |--------|---------|---------------|
/// | 0x8001 | Bad     | Overrange     |
/// | 0x8002 | Invalid | WireBreak     |
/// | 0x8004 | Invalid | Failure       |
/// | 0x8010 | Invalid | Configuration |
/// | 0x8020 | Invalid | PowerFailure  |
/// | 0x8040 | Invalid | DeviceDefect  |
/// | 0x8080 | Bad     | Underrange    |
///
/// Codes are compared for equality, not as bits: any other value, also from 0x8000 upward, is
/// `Good`. The port is executable, so a port provider puts it on the program's cycle, where it
/// runs ahead of the connectors.
class AnalogInPort : public PortBase<unsigned short>,
                     public Commons::IExecutable,
                     public Zon::System::Commons::Diagnostics::Logging::Loggable<AnalogInPort> {
public:
    /// `dimension` is kept by the base, but the port always holds one value.
    AnalogInPort(const String& name, unsigned long dimension);
    ~AnalogInPort() override;

    /// The quality providers' combination, combined with the quality derived in the last
    /// `Execute` (the worse state, the union of the flags). Before the first `Execute` the
    /// derived quality is `Good` with no flags.
    QualitySystem::Quality GetQuality() override;
    /// Always 1.
    unsigned long GetDimension() override;
    /// Logs "Publish {name}: address={address}, attributes={attributes}" at level 7, then enters
    /// the raw value as a variable of type `unsigned short` with the port's current attributes.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override;
    /// Does nothing: the value changes only through the published address.
    void SetValue(unsigned short newValue) override;
    /// Does nothing either.
    void SetValue(unsigned short newValue, IConnector& connector);
    /// The raw value.
    unsigned short GetValue() const override;
    /// Derives the quality from the raw value, from scratch: reads the value once, compares it
    /// with the error codes, allocates nothing and takes no lock.
    void Execute() override;

private:
    unsigned short value = 0;
    QualitySystem::Quality quality;
};

} // namespace VarnixBase::Core::PortSystem
