#pragma once

#include <cstdint>

#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettingsBase.hpp"
#include "VarnixBase/Core/PortSystem/Configuration/QualityProviderSettingsBase.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// One `Port` element of a `.prog.config`, as it stands in the document: the port type is not
/// looked up and the values are not validated here.
struct PortSettings : ParameterSettingsBase, QualityProviderSettingsBase {
    Zon::String name;
    /// A port type name, as the port factory knows them.
    Zon::String type;
    /// The flags named in the element's `attributes`, OR-ed together.
    Zon::Plc::Commons::Meta::StandardAttribute attributes = Zon::Plc::Commons::Meta::StandardAttribute::None;
    /// The element's `dimensions`; 1 when absent, empty or 0. Only 1 is supported in practice.
    std::uint64_t dimensions = 1;

    bool operator==(const PortSettings&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
