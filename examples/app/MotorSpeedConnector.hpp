#pragma once

#include "MotorStatus.hpp"
#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "Zon/BasicString.hpp"

namespace MotorApp {

/// A connector type of the application: reads a `MotorStatus` and writes the speed of the machine
/// behind the gear, the motor speed divided by the parameter "ratio" (1.0 by default; a ratio of
/// 0 gives 0), into a `double`. The document binds "ratio" to a port with `ref`, so a new gear
/// ratio takes effect in the next cycle. The end port takes the connector's quality, that is the
/// motor status port's judgement of the drive.
///
/// Registered with `ConnectorFactory::AddFactoryMethod<MotorSpeedConnector>`, which takes the pair
/// of type names from `InputType` and `OutputType`.
class MotorSpeedConnector : public VarnixBase::Core::PortSystem::ConnectorBaseImpl {
public:
    using InputType = MotorStatus;
    using OutputType = double;

    /// Resolves both variable paths through the meta data; a path without address is refused.
    MotorSpeedConnector(const Zon::String& name, const Zon::String& startPath, const Zon::String& endPath);

    void Execute() override;

private:
    const MotorStatus* source;
    VarnixBase::Commons::Meta::DataAccessValue<double> destination;
    VarnixBase::Core::PortSystem::Parameter<double>& ratio;
};

} // namespace MotorApp
