#include "VarnixBase/Core/PortSystem/ConnectorProvider.hpp"

#include <iterator>
#include <utility>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::System::Commons::ArgumentException;

ConnectorProvider::ConnectorProvider(ConfigurableProgramBaseImpl& program) : program(program)
{
}

ConnectorProvider::~ConnectorProvider() = default;

std::size_t ConnectorProvider::Count() const
{
    return connectors.size();
}

bool ConnectorProvider::HasConnector(const String& name)
{
    std::shared_ptr<IConnector> found;
    return TryGetConnector(name, found);
}

bool ConnectorProvider::HasConnector(std::shared_ptr<IConnector> connector)
{
    // An empty pointer has no name to look for.
    if (connector == nullptr) {
        throw ArgumentException("Connector argument is empty");
    }
    return HasConnector(connector->GetName());
}

bool ConnectorProvider::TryGetConnector(const String& name, std::shared_ptr<IConnector>& connector)
{
    const auto* found = index.Find(name.View());
    if (found == nullptr) {
        return false;
    }
    connector = **found;
    return true;
}

std::shared_ptr<IConnector> ConnectorProvider::GetConnector(const String& name)
{
    std::shared_ptr<IConnector> connector;
    if (!TryGetConnector(name, connector)) {
        throw ArgumentException("Connector `{0}` does not exist", name);
    }
    return connector;
}

void ConnectorProvider::AddConnector(std::shared_ptr<IConnector> connector)
{
    if (HasConnector(connector)) {
        throw ArgumentException("Connector `{0}` already exists", connector->GetName());
    }
    connectors.push_back(connector);
    const String& name = connector->GetName();
    bool indexed = false;
    try {
        indexed = index.Insert(name.View(), std::prev(connectors.cend()));
        program.AddExecutable(std::move(connector));
    } catch (...) {
        if (indexed) {
            index.Erase(name.View());
        }
        connectors.pop_back();
        throw;
    }
}

} // namespace VarnixBase::Core::PortSystem
