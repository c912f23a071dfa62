#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/TypeLibrary.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"

namespace Zon::Host {

/// What the controller does with the ports that a program publishes, on the host.
///
/// `Publish("App/Main", builder)` enters the builder's entries as the root variable "Main" of the
/// component "App" (created at first use). Ports live at their own addresses, so the root variable
/// is a table of addresses owned by the publisher, and its type, a structure named after the
/// instance path ("App.Main"), has one pointer member per port, named after the port and typed with
/// the port's published type as the type library describes it. A path such as "App/Main.level.Value"
/// then resolves to the port's memory through the ordinary variable path walk: nothing is
/// special-cased.
///
/// The caller registers the component with the meta data (`MetaInfoProvider::Add`) after the first
/// `Publish` into it, and removes it there before the publisher goes. Published types must be
/// described in the type library: the base types and fixed strings by their codes, structures (such
/// as qualified values) by a registration of their own.
class PortPublisher {
public:
    explicit PortPublisher(TypeLibrary& library);
    ~PortPublisher();
    PortPublisher(const PortPublisher&) = delete;
    PortPublisher& operator=(const PortPublisher&) = delete;

    /// Enters the ports of `builder` under `instancePath` ("COMPONENT/PROGRAM") and returns the
    /// component. Throws `ArgumentException` for a malformed or already published instance path
    /// and for a port whose type the library does not describe or describes with another code.
    Component& Publish(const String& instancePath, const Plc::Commons::Meta::DynamicPortsBuilder& builder);

    /// Removes the root variable and the type of `instancePath`; false if it was not published.
    bool Withdraw(const String& instancePath);

    /// The component of that name, or null.
    Component* FindComponent(const String& name) const;

    TypeLibrary& GetTypeLibrary() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zon::Host
