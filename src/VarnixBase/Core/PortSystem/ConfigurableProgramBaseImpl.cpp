#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"

#include <cstdint>
#include <list>
#include <utility>

#include "Zon/AppDomain.hpp"
#include "Zon/Delegate.hpp"
#include "Zon/Plc/Commons/Domain/PlcDomainProxy.hpp"
#include "Zon/System/Commons/Io/File.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"
#include "Zon/System/Commons/Io/Path.hpp"
#include "VarnixBase/Core/Info/Info.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConfigurableProgramBuilder.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::Plc::Commons::Domain::PlcDomainProxy;
using Zon::System::Commons::Io::File;
using Zon::System::Commons::Io::FileSystemInfo;
using Zon::System::Commons::Io::Path;

namespace {

/// The domain proxy, looked up in the application domain's registry under the domain's read
/// lock, which is released before the caller touches the proxy's event.
PlcDomainProxy& GetDomainProxy()
{
    return Zon::AppDomainSingleton<PlcDomainProxy>::GetInstance();
}

/// True when the modification time of `source` is strictly later than that of `destination`:
/// both raw values without their top two bits (the kind of time), compared as signed numbers.
bool IsNewer(const String& source, const String& destination)
{
    constexpr std::uint64_t mask = 0x3FFFFFFFFFFFFFFFull;
    auto sourceTime = static_cast<std::int64_t>(FileSystemInfo::GetLastWriteTime(source).GetValue() & mask);
    auto destinationTime = static_cast<std::int64_t>(FileSystemInfo::GetLastWriteTime(destination).GetValue() & mask);
    return sourceTime > destinationTime;
}

} // namespace

/// The fields are built in this order and destroyed in reverse: the executables go first, the
/// names last.
struct ConfigurableProgramBaseImpl::Impl {
    Impl(const String& instancePath, const String& typeName,
         Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain, ConfigurableProgramBaseImpl& program)
        : instancePath(instancePath)
        , typeName(typeName)
        , typeDomain(typeDomain)
        , builder(program)
        , portProvider(program)
        , connectorProvider(program)
    {
    }

    String instancePath;
    String typeName;
    Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain;
    bool isInitialized = false;
    ConfigurableProgramBuilder builder;
    PortProvider portProvider;
    ConnectorProvider connectorProvider;
    std::list<std::shared_ptr<Commons::IExecutable>> executables;
};

ConfigurableProgramBaseImpl::ConfigurableProgramBaseImpl(const String& instancePath, const String& typeName,
                                                         Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain)
    : impl(std::make_unique<Impl>(instancePath, typeName, typeDomain, *this))
{
    GetDomainProxy().PortsPublished += Zon::make_delegate(this, &ConfigurableProgramBaseImpl::InitializeConnectors);
    try {
        UpdateConfiguration();
        InitializePorts();
    } catch (...) {
        // This object will never be complete: take the subscription back, so that the event
        // does not reach it once it is gone.
        if (auto* proxy = Zon::AppDomainSingleton<PlcDomainProxy>::TryGetInstance()) {
            proxy->PortsPublished -= Zon::make_delegate(this, &ConfigurableProgramBaseImpl::InitializeConnectors);
        }
        throw;
    }
}

ConfigurableProgramBaseImpl::~ConfigurableProgramBaseImpl()
{
    // A failed look-up cannot leave a destructor: it ends the process.
    GetDomainProxy().PortsPublished -= Zon::make_delegate(this, &ConfigurableProgramBaseImpl::InitializeConnectors);
    // Connectors and ports hold each other as quality providers (a connector its start port, the
    // end port its connector), so connectors in opposite directions between the same ports would
    // keep each other alive, as would any circle of providers that passes a connector. Nothing
    // of the program may outlive it: its connectors let go of their providers here.
    for (const auto& executable : impl->executables) {
        if (auto* connector = dynamic_cast<ConnectorBaseImpl*>(executable.get())) {
            connector->ReleaseQualityProviders();
        }
    }
}

void ConfigurableProgramBaseImpl::UpdateConfiguration()
{
    String fileName = GetTypeName() + ".prog.config";
    String projectFile = Path::Combine("/opt/varnix/projects/current/Libs/VarnixBase", fileName);
    String legacyFile = Path::Combine("/opt/varnix/projects/VarnixBase/Config/Types", fileName);
    String localFile = Path::Combine(Path::Combine(Info::GetDataDirectory(), "Core/PortSystem"), fileName);

    if (File::Exists(projectFile)) {
        if (File::Exists(legacyFile) && IsNewer(projectFile, legacyFile)) {
            File::Copy(projectFile, legacyFile, true, true);
        }
        if (!File::Exists(localFile) || IsNewer(projectFile, localFile)) {
            File::Copy(projectFile, localFile, true, true);
        }
    }
    if (File::Exists(legacyFile)) {
        if (!File::Exists(localFile) || IsNewer(legacyFile, localFile)) {
            File::Copy(legacyFile, localFile, true, true);
        }
    }
}

void ConfigurableProgramBaseImpl::InitializePorts()
{
    impl->builder.LoadConfiguration();
    impl->builder.AddPorts();
}

void ConfigurableProgramBaseImpl::ApplyPorts() {}

void ConfigurableProgramBaseImpl::InitializeConnectors()
{
    impl->builder.AddConnectors();
    impl->builder.AddParameters();
    impl->builder.AddQualityProviders();
    ApplyConfiguration();
}

void ConfigurableProgramBaseImpl::ApplyConfiguration()
{
    impl->isInitialized = true;
    impl->builder.ClearConfiguration();
}

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

ConfigurableProgramBuilder& ConfigurableProgramBaseImpl::GetBuilder()
{
    return impl->builder;
}

} // namespace VarnixBase::Core::PortSystem
