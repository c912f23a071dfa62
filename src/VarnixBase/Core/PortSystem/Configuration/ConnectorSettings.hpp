#pragma once

#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettingsBase.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettingsBase.hpp"
#include "Zon/BasicString.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// One `Connector` element of a `.prog.config`. A connector has no name of its own in the
/// document; the builder makes one from the two port references.
struct ConnectorSettings : ParameterSettingsBase, QualityProviderSettingsBase {
    /// The port the connector reads from, as the document writes the reference.
    Zon::String startPort;
    /// The port the connector writes to, as the document writes the reference.
    Zon::String endPort;
    /// A connector type name, as the connector factory knows them.
    Zon::String type;

    bool operator==(const ConnectorSettings&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
