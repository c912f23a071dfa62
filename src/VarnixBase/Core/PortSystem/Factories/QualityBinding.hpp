#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"

namespace VarnixBase::Core::PortSystem {

/// A quality reference of the document that waits for the program's second build phase: the
/// port or connector that is to receive a quality provider, and the `ref` that names the
/// provider (a port by its name, or a connector by its generated name "start:end").
struct QualityBinding {
    /// The port or connector that receives the provider. Held jointly, so it lives at least as
    /// long as the binding.
    std::shared_ptr<QualitySystem::IQualityConsumer> consumer;
    /// The `ref` of the `QualityProvider` element, compared whole with port and connector names.
    Zon::String ref;
};

} // namespace VarnixBase::Core::PortSystem
