#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"
#include "VarnixBase/Core/PortSystem/NameIndex.hpp"

namespace VarnixBase::Core::PortSystem {

class ConfigurableProgramBaseImpl;

/// The ports of one program, by name, in order of adding. No two have the same name; names
/// compare exactly and case-sensitively. Look-ups go through an index by name kept beside the
/// list, so they cost the same whatever the number of ports, and find what a walk of the list
/// from the front would find (the list itself, its order and every message are as they were). Adding a
/// port that is also executable appends it to the program's executables, so that it runs every
/// cycle. Nothing is ever removed.
class PortProvider : public Zon::System::Commons::Diagnostics::Logging::Loggable<PortProvider> {
public:
    /// Stores the reference to the owning program and does no more with it.
    explicit PortProvider(ConfigurableProgramBaseImpl& program);
    virtual ~PortProvider();
    PortProvider(const PortProvider&) = delete;
    PortProvider& operator=(const PortProvider&) = delete;

    /// Number of ports.
    std::size_t Count() const;
    /// True if a port of that name exists.
    bool HasPort(const String& name);
    /// True if a port of the argument's name exists: it compares names, not identity.
    /// An empty argument throws `Zon::System::Commons::ArgumentException`.
    bool HasPort(std::shared_ptr<IPort> port);
    /// True, and `port` set, if a port of that name exists; false and `port` untouched otherwise.
    bool TryGetPort(const String& name, std::shared_ptr<IPort>& port);
    /// The port of that name. Throws `Zon::System::Commons::ArgumentException`
    /// "Port `{0}` does not exist" when there is none.
    std::shared_ptr<IPort> GetPort(const String& name);
    /// Appends `port` and, when it is an `IExecutable`, hands it to the program's executables.
    /// False, and nothing changed, when the name exists already. An empty argument throws
    /// `Zon::System::Commons::ArgumentException`.
    bool TryAddPort(std::shared_ptr<IPort> port);
    /// As `TryAddPort`, but throws `Zon::System::Commons::ArgumentException`
    /// "Port `{0}` already exists" when the name exists already.
    void AddPort(std::shared_ptr<IPort> port);
    /// Calls `Publish` on each port, in the order of adding.
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder);

    /// The ports in the order of adding, for tools that list or trace a program's ports.
    const std::list<std::shared_ptr<IPort>>& GetPorts() const noexcept { return ports; }

private:
    ConfigurableProgramBaseImpl& program;
    std::list<std::shared_ptr<IPort>> ports;
    /// Each port's name to its place in `ports`.
    NameIndex<std::list<std::shared_ptr<IPort>>::const_iterator> index;
};

} // namespace VarnixBase::Core::PortSystem
