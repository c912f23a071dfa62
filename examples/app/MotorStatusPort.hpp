#pragma once

#include "MotorStatus.hpp"
#include "VarnixBase/Core/PortSystem/PortBase.hpp"
#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"

namespace MotorApp {

/// A port type of the application: it holds a `MotorStatus` and publishes it as one structure.
///
/// It judges its own data: a tripped drive makes the status `Bad` with `DeviceDefect`, a warning
/// code without a trip makes it `Questionable`; otherwise it is `Good`. Quality providers that the
/// document adds to the port are combined with that judgement. Connectors that start here take
/// this quality along to their end ports.
class MotorStatusPort : public VarnixBase::Core::PortSystem::PortBase<MotorStatus> {
public:
    MotorStatusPort(const Zon::String& name, unsigned long dimension) : PortBase<MotorStatus>(name, dimension) {}

    VarnixBase::Core::QualitySystem::Quality GetQuality() override
    {
        using namespace VarnixBase::Core::QualitySystem;
        Quality own;
        if (status.fault) {
            own.state = QualityState::Bad;
            own.flags = QualityFlags::DeviceDefect;
        } else if (status.errorCode != 0) {
            own.state = QualityState::Questionable;
        }
        return CombineQuality(own, PortBase<MotorStatus>::GetQuality());
    }

    /// Enters the status's own memory as a variable of type `MotorStatus`.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override
    {
        builder.AddPort<MotorStatus>(GetName(), status, GetAttributes());
    }

    void SetValue(MotorStatus value) override { status = value; }
    MotorStatus GetValue() const override { return status; }

private:
    MotorStatus status{};
};

} // namespace MotorApp
