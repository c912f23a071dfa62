#pragma once

#include "Zon/BasicString.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// One `Parameter` element of a `.prog.config`. A parameter carries either a literal `value`,
/// converted later by the parameter itself, or a `ref` to a variable; the document reader makes
/// sure that exactly one of the two attributes was present.
struct ParameterSettings {
    Zon::String name;
    Zon::String value;
    Zon::String ref;

    bool operator==(const ParameterSettings&) const = default;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
