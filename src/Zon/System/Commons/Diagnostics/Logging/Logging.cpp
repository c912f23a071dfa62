#include <cstdio>
#include <map>
#include <string>

#include "Zon/AppDomain.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace Zon::System::Commons::Diagnostics::Logging {

namespace {

std::atomic<LogManager*> currentManager{nullptr};

struct LoggerRegistry {
    std::mutex mutex;
    std::map<std::string, std::unique_ptr<LoggerBase>> loggers;
};

LoggerRegistry& Registry()
{
    // Never destroyed: loggers are referenced from function-local statics of every class and
    // may be used until the very end of the process.
    static LoggerRegistry* registry = new LoggerRegistry();
    return *registry;
}

} // namespace

const char* LogLevelName(LogLevel level) noexcept
{
    switch (level) {
    case LogLevel::Error: return "error";
    case LogLevel::Warning: return "warning";
    case LogLevel::Info: return "info";
    case LogLevel::Debug: return "debug";
    case LogLevel::Trace: return "trace";
    }
    return "unknown";
}

bool TryParseLogLevel(const std::string& text, LogLevel& level) noexcept
{
    for (LogLevel candidate : {LogLevel::Error, LogLevel::Warning, LogLevel::Info, LogLevel::Debug, LogLevel::Trace}) {
        if (text == LogLevelName(candidate)) {
            level = candidate;
            return true;
        }
    }
    return false;
}

std::ostream& operator<<(std::ostream& stream, LogLevel level)
{
    return stream << LogLevelName(level);
}

// ---- LoggerBase ----

LoggerBase::LoggerBase(String name) : name(std::move(name)) {}

bool LoggerBase::IsEnabled(LogLevel level) noexcept
{
    LogManager* manager = currentManager.load(std::memory_order_acquire);
    return manager != nullptr && static_cast<int>(level) <= static_cast<int>(manager->GetLevel());
}

void LoggerBase::Write(LogLevel level, std::string message) const noexcept
{
    LogManager* manager = currentManager.load(std::memory_order_acquire);
    if (manager == nullptr) {
        return;
    }
    try {
        manager->Write(LogEntry{level, name.ToStdString(), std::move(message)});
    } catch (...) {
        // A failing sink must not turn a log call into a failure of the caller.
    }
}

LoggerBase& GetLogger(const String& name)
{
    LoggerRegistry& registry = Registry();
    std::lock_guard guard(registry.mutex);
    auto& slot = registry.loggers[name.ToStdString()];
    if (!slot) {
        slot = std::make_unique<LoggerBase>(name);
    }
    return *slot;
}

LoggerBase& GetRootLogger()
{
    static LoggerBase& root = GetLogger("Root");
    return root;
}

// ---- LogManager ----

LogManager::LogManager()
{
    currentManager.store(this, std::memory_order_release);
}

LogManager::~LogManager()
{
    LogManager* self = this;
    currentManager.compare_exchange_strong(self, nullptr, std::memory_order_acq_rel);
}

LogManager& LogManager::GetInstance()
{
    return AppDomainSingleton<LogManager>::GetInstance();
}

LogManager* LogManager::GetCurrent() noexcept
{
    return currentManager.load(std::memory_order_acquire);
}

void LogManager::AddSink(std::shared_ptr<ILogSink> sink)
{
    std::lock_guard guard(mutex);
    sinks.push_back(std::move(sink));
    UpdateLevel();
}

void LogManager::RemoveSink(const std::shared_ptr<ILogSink>& sink)
{
    std::lock_guard guard(mutex);
    std::erase(sinks, sink);
    UpdateLevel();
}

void LogManager::UpdateLevel()
{
    int highest = 0;
    for (const auto& sink : sinks) {
        highest = std::max(highest, static_cast<int>(sink->GetThreshold()));
    }
    level.store(highest, std::memory_order_relaxed);
}

void LogManager::Write(const LogEntry& entry)
{
    std::lock_guard guard(mutex);
    for (const auto& sink : sinks) {
        if (static_cast<int>(entry.level) <= static_cast<int>(sink->GetThreshold())) {
            sink->Write(entry);
        }
    }
}

// ---- Sinks ----

void ConsoleSink::Write(const LogEntry& entry)
{
    std::fprintf(stderr, "%-7s %s: %s\n", LogLevelName(entry.level), entry.loggerName.c_str(), entry.message.c_str());
}

void CaptureSink::Write(const LogEntry& entry)
{
    std::lock_guard guard(mutex);
    entries.push_back(entry);
}

std::vector<LogEntry> CaptureSink::GetEntries() const
{
    std::lock_guard guard(mutex);
    return entries;
}

std::vector<LogEntry> CaptureSink::GetEntries(LogLevel level) const
{
    std::lock_guard guard(mutex);
    std::vector<LogEntry> result;
    for (const auto& entry : entries) {
        if (entry.level == level) {
            result.push_back(entry);
        }
    }
    return result;
}

std::vector<std::string> CaptureSink::GetMessages(LogLevel level) const
{
    std::vector<std::string> result;
    for (auto& entry : GetEntries(level)) {
        result.push_back(std::move(entry.message));
    }
    return result;
}

std::size_t CaptureSink::Count(LogLevel level, std::string_view message) const
{
    std::lock_guard guard(mutex);
    std::size_t count = 0;
    for (const auto& entry : entries) {
        count += (entry.level == level && entry.message == message) ? 1 : 0;
    }
    return count;
}

std::size_t CaptureSink::CountContaining(LogLevel level, std::string_view part) const
{
    std::lock_guard guard(mutex);
    std::size_t count = 0;
    for (const auto& entry : entries) {
        count += (entry.level == level && entry.message.find(part) != std::string::npos) ? 1 : 0;
    }
    return count;
}

std::size_t CaptureSink::Size() const
{
    std::lock_guard guard(mutex);
    return entries.size();
}

void CaptureSink::Clear()
{
    std::lock_guard guard(mutex);
    entries.clear();
}

} // namespace Zon::System::Commons::Diagnostics::Logging
