#pragma once

#include <vector>

#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettings.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// The quality providers of a port or connector, in document order.
struct QualityProviderSettingsBase {
    std::vector<QualityProviderSettings> qualityProviders;

    bool operator==(const QualityProviderSettingsBase&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
