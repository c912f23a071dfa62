#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace Zon::System::Commons::Diagnostics::Logging {

/// The log manager: a singleton of the application domain that owns the sinks. While one exists,
/// every logger writes through it. `GetInstance()` fails as every domain singleton does when the
/// domain or the manager is missing.
class LogManager {
public:
    LogManager();
    ~LogManager();
    LogManager(const LogManager&) = delete;
    LogManager& operator=(const LogManager&) = delete;

    static LogManager& GetInstance();

    void AddSink(std::shared_ptr<ILogSink> sink);
    void RemoveSink(const std::shared_ptr<ILogSink>& sink);

    /// The highest level number that any sink takes.
    LogLevel GetLevel() const noexcept { return static_cast<LogLevel>(level.load(std::memory_order_relaxed)); }

    void Write(const LogEntry& entry);

    /// The manager that loggers write through now, or null.
    static LogManager* GetCurrent() noexcept;

private:
    void UpdateLevel();

    std::mutex mutex;
    std::vector<std::shared_ptr<ILogSink>> sinks;
    std::atomic<int> level{0};
};

} // namespace Zon::System::Commons::Diagnostics::Logging
