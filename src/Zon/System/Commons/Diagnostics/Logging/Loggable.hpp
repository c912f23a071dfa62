#pragma once

#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace Zon::System::Commons::Diagnostics::Logging {

/// Logging mix-in: one logger per class, named by the common type name of `T`.
/// Constructing a `Loggable<T>` sets the class logger up, which needs the log manager of the
/// application domain: without a domain it throws "Singleton instance of type '{0}' was not
/// created yet!", without a log manager "AppDomain Singleton instance of type '{0}' was not
/// created yet!".
template <class T>
class Loggable {
public:
    /// The class logger.
    static LoggerBase& GetLogger()
    {
        static LoggerBase& logger = Logging::GetLogger(CommonTypeName<T>());
        return logger;
    }

protected:
    Loggable() { SetupLogger(); }
    Loggable(const Loggable&) = default;
    Loggable& operator=(const Loggable&) = default;
    ~Loggable() = default;

    static void SetupLogger()
    {
        LogManager::GetInstance();
        GetLogger();
    }
};

} // namespace Zon::System::Commons::Diagnostics::Logging
