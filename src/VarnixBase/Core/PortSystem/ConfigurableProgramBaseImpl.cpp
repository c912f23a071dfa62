#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"

#include <list>
#include <utility>

namespace VarnixBase::Core::PortSystem {

/// The fields are built in this order and destroyed in reverse: the executables go first, the
/// names last.
struct ConfigurableProgramBaseImpl::Impl {
    Impl(const String& instancePath, const String& typeName,
         Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain, ConfigurableProgramBaseImpl& program)
        : instancePath(instancePath)
        , typeName(typeName)
        , typeDomain(typeDomain)
        , portProvider(program)
        , connectorProvider(program)
    {
    }

    String instancePath;
    String typeName;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain;
    bool isInitialized = false;
    PortProvider portProvider;
    ConnectorProvider connectorProvider;
    std::list<std::shared_ptr<Commons::IExecutable>> executables;
};

ConfigurableProgramBaseImpl::ConfigurableProgramBaseImpl(const String& instancePath, const String& typeName,
                                                         Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain)
    : impl(std::make_unique<Impl>(instancePath, typeName, typeDomain, *this))
{
}

ConfigurableProgramBaseImpl::~ConfigurableProgramBaseImpl() = default;

void ConfigurableProgramBaseImpl::Execute()
{
    for (const auto& entry : impl->executables) {
        std::shared_ptr<Commons::IExecutable> executable = entry;
        executable->Execute();
    }
}

const String& ConfigurableProgramBaseImpl::GetTypeName() const
{
    return impl->typeName;
}

const String& ConfigurableProgramBaseImpl::GetInstancePath() const
{
    return impl->instancePath;
}

bool ConfigurableProgramBaseImpl::IsInitialized() const
{
    return impl->isInitialized;
}

void ConfigurableProgramBaseImpl::AddExecutable(std::shared_ptr<Commons::IExecutable> executable)
{
    impl->executables.push_back(std::move(executable));
}

PortProvider& ConfigurableProgramBaseImpl::GetPortProvider()
{
    return impl->portProvider;
}

ConnectorProvider& ConfigurableProgramBaseImpl::GetConnectorProvider()
{
    return impl->connectorProvider;
}

} // namespace VarnixBase::Core::PortSystem
