#pragma once

#include <memory>

#include "VarnixBase/Core/PortSystem/Configuration/ParameterSettings.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"

namespace VarnixBase::Core::PortSystem {

/// A parameter of the document that waits for the program's second build phase, because it is
/// bound by `ref` to a variable that resolves only once the ports are published.
struct ParameterBinding {
    /// The parameters of the port or connector that owns the parameter. Not owning: `owner`
    /// keeps the object behind it alive.
    ParameterProvider* parameterProvider = nullptr;
    /// The `Parameter` element: `name`, and `ref` (or, for a binding appended by an application,
    /// `value`).
    Configuration::ParameterSettings settings;
    /// The port or connector that `parameterProvider` belongs to, held jointly. A port or
    /// connector can be refused after its bindings were appended (at a duplicate name, say); it
    /// is then in no provider of the program, and this reference is what keeps the parameters
    /// alive until the binding is resolved and cleared. Such a binding is resolved like any other
    /// and touches only the refused object.
    std::shared_ptr<void> owner;
};

} // namespace VarnixBase::Core::PortSystem
