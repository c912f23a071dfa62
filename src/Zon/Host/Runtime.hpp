#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"

namespace Zon {
class AppDomain;
namespace Plc::Commons::Domain {
class PlcDomainProxy;
}
namespace System::Commons::Diagnostics::Logging {
class CaptureSink;
class LogManager;
} // namespace System::Commons::Diagnostics::Logging
} // namespace Zon

namespace Zon::Host {

struct RuntimeOptions {
    /// Directory under which every absolute platform path lies ("/" is the machine's own root).
    std::string fileSystemRoot = "/";
    /// Create the log manager in the domain. Without it, setting up a class logger fails.
    bool createLogManager = true;
    /// Create the domain proxy in the domain. Without it, a configurable program cannot start.
    bool createDomainProxy = true;
    /// Level up to which messages go to standard error; none when empty.
    std::optional<System::Commons::Diagnostics::Logging::LogLevel> consoleLevel =
        System::Commons::Diagnostics::Logging::LogLevel::Warning;
    /// Level up to which messages are kept in the capture sink; none when empty.
    std::optional<System::Commons::Diagnostics::Logging::LogLevel> captureLevel =
        System::Commons::Diagnostics::Logging::LogLevel::Trace;
};

/// What the firmware does before any application code runs: creates the application domain, the
/// log manager and the domain proxy, and sets the file-system root. The destructor tears them down
/// in reverse. One runtime exists at a time; a second one throws `InvalidOperationException`.
class Runtime {
public:
    explicit Runtime(RuntimeOptions options = {});
    ~Runtime();
    Runtime(const Runtime&) = delete;
    Runtime& operator=(const Runtime&) = delete;

    AppDomain& GetDomain();
    /// The domain proxy; throws when the runtime was made without one.
    Plc::Commons::Domain::PlcDomainProxy& GetDomainProxy();
    /// The capture sink; throws when the runtime was made without one.
    System::Commons::Diagnostics::Logging::CaptureSink& GetCapture();
    /// Raises the domain proxy's `PortsPublished` event, as the controller does once the ports of
    /// all programs are published.
    void RaisePortsPublished();

    const RuntimeOptions& GetOptions() const noexcept { return options; }

private:
    RuntimeOptions options;
    std::string previousRoot;
    std::shared_ptr<System::Commons::Diagnostics::Logging::CaptureSink> capture;
};

} // namespace Zon::Host
