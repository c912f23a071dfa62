#pragma once

#include "MotorStatus.hpp"
#include "VarnixBase/Commons/Meta/DataAccessValue.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "Zon/BasicString.hpp"

namespace MotorApp {

/// A connector type of the application: derives from a `MotorStatus` whether the motor runs
/// (enabled, not tripped, and turning at least at the parameter "threshold", in rpm, 1.0 by
/// default) and writes it into a `bool`.
class MotorRunningConnector : public VarnixBase::Core::PortSystem::ConnectorBaseImpl {
public:
    using InputType = MotorStatus;
    using OutputType = bool;

    MotorRunningConnector(const Zon::String& name, const Zon::String& startPath, const Zon::String& endPath);

    void Execute() override;

private:
    const MotorStatus* source;
    VarnixBase::Commons::Meta::DataAccessValue<bool> destination;
    VarnixBase::Core::PortSystem::Parameter<double>& threshold;
};

} // namespace MotorApp
