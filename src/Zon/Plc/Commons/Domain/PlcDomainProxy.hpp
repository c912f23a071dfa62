#pragma once

#include "Zon/Event.hpp"

namespace Zon::Plc::Commons::Domain {

/// The application domain's representative of the controller. A singleton of the domain.
class PlcDomainProxy {
public:
    PlcDomainProxy() = default;
    PlcDomainProxy(const PlcDomainProxy&) = delete;
    PlcDomainProxy& operator=(const PlcDomainProxy&) = delete;

    /// Raised by the controller once the applications have published their ports, so that
    /// configurable programs can build what refers to those ports (their second build phase).
    /// Takes method delegates only.
    Zon::event<> PortsPublished;

    /// The proxy of the domain; fails as every domain singleton does when it is missing.
    static PlcDomainProxy& GetInstance();
};

} // namespace Zon::Plc::Commons::Domain
