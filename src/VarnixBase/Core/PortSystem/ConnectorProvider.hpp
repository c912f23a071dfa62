#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/NameIndex.hpp"

namespace VarnixBase::Core::PortSystem {

class ConfigurableProgramBaseImpl;

/// The connectors of one program, by name, in order of adding. No two have the same name; names
/// compare exactly and case-sensitively. Look-ups go through an index by name kept beside the
/// list, so they cost the same whatever the number of connectors, and find what a walk of the
/// list from the front would find. Every
/// connector added is appended to the program's executables. Nothing is ever removed.
/// Unlike the port side there is no adding that answers false, and no publishing.
class ConnectorProvider : public Zon::System::Commons::Diagnostics::Logging::Loggable<ConnectorProvider> {
public:
    /// Stores the reference to the owning program.
    explicit ConnectorProvider(ConfigurableProgramBaseImpl& program);
    virtual ~ConnectorProvider();
    ConnectorProvider(const ConnectorProvider&) = delete;
    ConnectorProvider& operator=(const ConnectorProvider&) = delete;

    /// Number of connectors.
    std::size_t Count() const;
    /// True if a connector of that name exists.
    bool HasConnector(const String& name);
    /// True if a connector of the argument's name exists: it compares names, not identity.
    /// An empty argument throws `Zon::System::Commons::ArgumentException`.
    bool HasConnector(std::shared_ptr<IConnector> connector);
    /// True, and `connector` set, if found; false and `connector` untouched otherwise.
    bool TryGetConnector(const String& name, std::shared_ptr<IConnector>& connector);
    /// The connector of that name. Throws `Zon::System::Commons::ArgumentException`
    /// "Connector `{0}` does not exist" when there is none.
    std::shared_ptr<IConnector> GetConnector(const String& name);
    /// Appends `connector` and hands it to the program's executables. Throws
    /// `Zon::System::Commons::ArgumentException` "Connector `{0}` already exists" when the name
    /// exists already; the list is then unchanged.
    void AddConnector(std::shared_ptr<IConnector> connector);

    /// The connectors in the order of adding, for tools that list or trace a program's connectors.
    const std::list<std::shared_ptr<IConnector>>& GetConnectors() const noexcept { return connectors; }

private:
    ConfigurableProgramBaseImpl& program;
    std::list<std::shared_ptr<IConnector>> connectors;
    /// Each connector's name to its place in `connectors`.
    NameIndex<std::list<std::shared_ptr<IConnector>>::const_iterator> index;
};

} // namespace VarnixBase::Core::PortSystem
