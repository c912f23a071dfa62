#include "VarnixBase/Core/PortSystem/HostedProgram.hpp"

#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"

namespace VarnixBase::Core::PortSystem {

HostedProgram::HostedProgram(const Zon::String& instancePath, const Zon::String& typeName,
                             Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain)
    : ProgramBase(instancePath), program(instancePath, typeName, typeDomain)
{
}

HostedProgram::~HostedProgram()
{
    Withdraw();
}

Zon::Host::Component& HostedProgram::Publish(Zon::Host::PortPublisher& portPublisher)
{
    Zon::Plc::Commons::Meta::DynamicPortsBuilder builder;
    program.GetPortProvider().Publish(builder);
    Zon::Host::Component& component = portPublisher.Publish(program.GetInstancePath(), builder);
    publisher = &portPublisher;
    Commons::Meta::MetaInfoProvider::GetInstance().Add(component);
    return component;
}

void HostedProgram::Withdraw()
{
    if (publisher != nullptr) {
        publisher->Withdraw(program.GetInstancePath());
        publisher = nullptr;
    }
}

void HostedProgram::Execute()
{
    program.Execute();
}

} // namespace VarnixBase::Core::PortSystem
