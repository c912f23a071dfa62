#pragma once

#include <exception>
#include <string>

#include "Zon/BasicString.hpp"
#include "Zon/Format.hpp"

namespace Zon {

/// The platform's base exception. It is built from a format text and its arguments
/// (`{}` or `{0}` placeholders); `GetMessage()` and `what()` give the formatted text.
/// A format text that does not fit its arguments is kept as it stands.
class Exception : public std::exception {
public:
    Exception() = default;
    explicit Exception(const char* message) : message(message != nullptr ? message : "") {}
    explicit Exception(const String& message) : message(message) {}
    template <class A0, class... Args>
    Exception(std::string_view format, const A0& arg0, const Args&... args)
        : message(FormatSafe(format, arg0, args...))
    {
    }
    ~Exception() override;

    const String& GetMessage() const noexcept { return message; }
    const char* what() const noexcept override { return message.CStr(); }

private:
    String message;
};

} // namespace Zon

/// Declares an exception class derived from `Zon::Exception` with the same constructors.
#define ZON_DECLARE_EXCEPTION(name)                                                   \
    class name : public ::Zon::Exception {                                            \
    public:                                                                           \
        using ::Zon::Exception::Exception;                                            \
        ~name() override;                                                             \
    }
