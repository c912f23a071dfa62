#pragma once

#include <string>

#include <fmt/format.h>
#include <fmt/ostream.h>

#include "Zon/BasicString.hpp"

namespace Zon {

/// Applies a run-time format text with `{}` or `{0}` placeholders to its arguments.
/// Throws `fmt::format_error` when the text does not parse or does not fit the arguments.
template <class... Args>
std::string FormatStrict(std::string_view format, const Args&... args)
{
    return fmt::vformat(format, fmt::make_format_args(args...));
}

/// As `FormatStrict`, but never throws: a format text that does not parse, or that asks for more
/// arguments than given, comes back as it stands. Messages are often exception texts used as
/// format texts, so a stray brace must not turn a report into a failure.
template <class... Args>
std::string FormatSafe(std::string_view format, const Args&... args) noexcept
{
    try {
        return FormatStrict(format, args...);
    } catch (...) {
        try {
            return std::string(format);
        } catch (...) {
            return std::string();
        }
    }
}

} // namespace Zon
