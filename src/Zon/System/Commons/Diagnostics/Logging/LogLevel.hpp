#pragma once

#include <ostream>
#include <string>

namespace Zon::System::Commons::Diagnostics::Logging {

/// Log levels as the platform numbers them: the more detailed a message, the higher its number.
enum class LogLevel : int {
    Error = 3,
    Warning = 5,
    Info = 6,
    Debug = 7,
    Trace = 8,
};

/// "error", "warning", "info", "debug", "trace", or the number for any other value.
const char* LogLevelName(LogLevel level) noexcept;
/// Reads one of the names above; false for anything else.
bool TryParseLogLevel(const std::string& text, LogLevel& level) noexcept;

std::ostream& operator<<(std::ostream& stream, LogLevel level);

/// One message as it reaches the sinks.
struct LogEntry {
    LogLevel level;
    std::string loggerName;
    std::string message;
};

} // namespace Zon::System::Commons::Diagnostics::Logging
