#include "VarnixBase/Core/PortSystem/PortProvider.hpp"

#include <iterator>
#include <utility>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::System::Commons::ArgumentException;

PortProvider::PortProvider(ConfigurableProgramBaseImpl& program) : program(program)
{
}

PortProvider::~PortProvider() = default;

std::size_t PortProvider::Count() const
{
    return ports.size();
}

bool PortProvider::HasPort(const String& name)
{
    std::shared_ptr<IPort> found;
    return TryGetPort(name, found);
}

bool PortProvider::HasPort(std::shared_ptr<IPort> port)
{
    // An empty pointer has no name to look for.
    if (port == nullptr) {
        throw ArgumentException("Port argument is empty");
    }
    return HasPort(port->GetName());
}

bool PortProvider::TryGetPort(const String& name, std::shared_ptr<IPort>& port)
{
    const auto* found = index.Find(name.View());
    if (found == nullptr) {
        return false;
    }
    port = **found;
    return true;
}

std::shared_ptr<IPort> PortProvider::GetPort(const String& name)
{
    std::shared_ptr<IPort> port;
    if (!TryGetPort(name, port)) {
        throw ArgumentException("Port `{0}` does not exist", name);
    }
    return port;
}

bool PortProvider::TryAddPort(std::shared_ptr<IPort> port)
{
    if (HasPort(port)) {
        return false;
    }
    ports.push_back(port);
    const String& name = port->GetName();
    try {
        index.Insert(name.View(), std::prev(ports.cend()));
    } catch (...) {
        ports.pop_back();
        throw;
    }
    auto executable = std::dynamic_pointer_cast<Commons::IExecutable>(port);
    if (executable == nullptr) {
        return true;
    }
    try {
        program.AddExecutable(std::move(executable));
    } catch (...) {
        index.Erase(name.View());
        ports.pop_back();
        throw;
    }
    return true;
}

void PortProvider::AddPort(std::shared_ptr<IPort> port)
{
    if (!TryAddPort(port)) {
        throw ArgumentException("Port `{0}` already exists", port->GetName());
    }
}

void PortProvider::Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder)
{
    for (const auto& entry : ports) {
        std::shared_ptr<IPort> port = entry;
        port->Publish(builder);
    }
}

} // namespace VarnixBase::Core::PortSystem
