#pragma once

#include <vector>

#include "VarnixBase/Core/PortSystem/Configuration/ConnectorSettings.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/PortSettings.hpp"
#include "Zon/BasicString.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// One `Program` element of a `.prog.config`: the ports and connectors that a program type gets.
/// Several `Ports` and `Connectors` elements of one `Program` accumulate here in document order.
struct ConfigurableProgramSettings {
    /// The program type that this entry configures.
    Zon::String type;
    std::vector<PortSettings> ports;
    std::vector<ConnectorSettings> connectors;

    bool operator==(const ConfigurableProgramSettings&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
