#pragma once

#include "Zon/BasicString.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// One `QualityProvider` element of a `.prog.config`: which object judges the quality of a port
/// or connector. Nothing is checked here; the builder resolves the reference later.
struct QualityProviderSettings {
    /// The reference to the quality provider; empty when the element has no `ref`.
    Zon::String ref;

    bool operator==(const QualityProviderSettings&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
