#pragma once

#include <string_view>

#include "Zon/BasicString.hpp"
#include "Zon/Format.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"

namespace Zon::System::Commons::Diagnostics::Logging {

/// A named logger. Each call takes a format text with `{}` or `{0}` placeholders and its
/// arguments. The text is formatted only when some sink of the current log manager takes the
/// level; a format text that does not parse is written as it stands and never throws.
/// Loggers live for the whole process; messages logged while no log manager exists are dropped.
class LoggerBase {
public:
    explicit LoggerBase(String name);
    LoggerBase(const LoggerBase&) = delete;
    LoggerBase& operator=(const LoggerBase&) = delete;

    const String& GetName() const noexcept { return name; }

    /// True when a message of `level` would reach a sink.
    static bool IsEnabled(LogLevel level) noexcept;

    template <class... Args>
    void Log(LogLevel level, std::string_view format, const Args&... args) const noexcept
    {
        if (!IsEnabled(level)) {
            return;
        }
        if constexpr (sizeof...(Args) == 0) {
            Write(level, FormatSafe(format));
        } else {
            Write(level, FormatSafe(format, args...));
        }
    }

    template <class... Args>
    void Error(std::string_view format, const Args&... args) const noexcept { Log(LogLevel::Error, format, args...); }
    template <class... Args>
    void Warning(std::string_view format, const Args&... args) const noexcept { Log(LogLevel::Warning, format, args...); }
    template <class... Args>
    void Info(std::string_view format, const Args&... args) const noexcept { Log(LogLevel::Info, format, args...); }
    template <class... Args>
    void Debug(std::string_view format, const Args&... args) const noexcept { Log(LogLevel::Debug, format, args...); }
    template <class... Args>
    void Trace(std::string_view format, const Args&... args) const noexcept { Log(LogLevel::Trace, format, args...); }

private:
    void Write(LogLevel level, std::string message) const noexcept;

    String name;
};

/// The process's logger registry: one logger per name, created on first use, never destroyed.
LoggerBase& GetLogger(const String& name);

/// The root logger, named "Root", for code that belongs to no class.
LoggerBase& GetRootLogger();

} // namespace Zon::System::Commons::Diagnostics::Logging
