#include "Zon/Host/Runtime.hpp"

#include "Zon/AppDomain.hpp"
#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/Plc/Commons/Domain/PlcDomainProxy.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

namespace Zon::Host {

using namespace Zon::System::Commons::Diagnostics::Logging;
using Zon::Plc::Commons::Domain::PlcDomainProxy;

Runtime::Runtime(RuntimeOptions runtimeOptions) : options(std::move(runtimeOptions))
{
    if (Singleton<AppDomain>::IsCreated()) {
        throw System::Commons::InvalidOperationException("A host runtime exists already.");
    }
    previousRoot = FileSystemRoot::Get();
    FileSystemRoot::Set(options.fileSystemRoot);
    AppDomain& domain = Singleton<AppDomain>::CreateInstance();
    if (options.createLogManager) {
        auto& manager = domain.Register(std::make_shared<LogManager>());
        if (options.consoleLevel) {
            manager.AddSink(std::make_shared<ConsoleSink>(*options.consoleLevel));
        }
        if (options.captureLevel) {
            capture = std::make_shared<CaptureSink>(*options.captureLevel);
            manager.AddSink(capture);
        }
    }
    if (options.createDomainProxy) {
        domain.Register(std::make_shared<PlcDomainProxy>());
    }
}

Runtime::~Runtime()
{
    if (AppDomain* domain = Singleton<AppDomain>::GetInstance()) {
        domain->Unregister<PlcDomainProxy>();
        domain->Unregister<LogManager>();
    }
    Singleton<AppDomain>::DisposeInstance();
    FileSystemRoot::Set(previousRoot);
}

AppDomain& Runtime::GetDomain()
{
    return *Singleton<AppDomain>::GetInstance();
}

PlcDomainProxy& Runtime::GetDomainProxy()
{
    return PlcDomainProxy::GetInstance();
}

CaptureSink& Runtime::GetCapture()
{
    if (!capture) {
        throw System::Commons::InvalidOperationException("The host runtime was made without a capture sink.");
    }
    return *capture;
}

void Runtime::RaisePortsPublished()
{
    GetDomainProxy().PortsPublished();
}

} // namespace Zon::Host
