#pragma once

#include <vector>

#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettings.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// The parameters of a port or connector, in document order.
struct ParameterSettingsBase {
    std::vector<ParameterSettings> parameters;

    bool operator==(const ParameterSettingsBase&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
