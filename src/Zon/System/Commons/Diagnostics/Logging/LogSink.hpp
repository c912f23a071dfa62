#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"

namespace Zon::System::Commons::Diagnostics::Logging {

/// Where log messages go. A sink has its own level threshold: it receives the messages whose
/// level number is at most its threshold.
class ILogSink {
public:
    virtual ~ILogSink() = default;
    virtual void Write(const LogEntry& entry) = 0;
    virtual LogLevel GetThreshold() const noexcept = 0;
};

/// Writes "<level> <logger>: <message>" lines to standard error.
class ConsoleSink : public ILogSink {
public:
    explicit ConsoleSink(LogLevel threshold = LogLevel::Warning) noexcept : threshold(threshold) {}
    void Write(const LogEntry& entry) override;
    LogLevel GetThreshold() const noexcept override { return threshold; }

private:
    LogLevel threshold;
};

/// Keeps every message in memory, for tests and tools that read what was logged.
/// Safe to write from several threads.
class CaptureSink : public ILogSink {
public:
    explicit CaptureSink(LogLevel threshold = LogLevel::Trace) noexcept : threshold(threshold) {}
    void Write(const LogEntry& entry) override;
    LogLevel GetThreshold() const noexcept override { return threshold; }

    /// A copy of all entries so far, in order.
    std::vector<LogEntry> GetEntries() const;
    /// The entries of one level, in order.
    std::vector<LogEntry> GetEntries(LogLevel level) const;
    /// The messages of one level, in order.
    std::vector<std::string> GetMessages(LogLevel level) const;
    /// Number of entries of `level` whose message equals `message` exactly.
    std::size_t Count(LogLevel level, std::string_view message) const;
    /// Number of entries of `level` whose message contains `part`.
    std::size_t CountContaining(LogLevel level, std::string_view part) const;
    std::size_t Size() const;
    void Clear();

private:
    LogLevel threshold;
    mutable std::mutex mutex;
    std::vector<LogEntry> entries;
};

} // namespace Zon::System::Commons::Diagnostics::Logging
