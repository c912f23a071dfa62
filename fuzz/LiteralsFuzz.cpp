// Fuzz target: every input is taken as a text and converted through all four `Convert::TryParse`.
//
// What counts as a finding, besides what the sanitizers report:
// - a `TryParse` that refuses the text but changes its result variable (each starts from a value
//   that no literal gives, and the boolean one alternately from true and false);
// - a boolean result that is neither true nor false, or a floating-point result that is not
//   finite (a magnitude too large gives the largest finite value);
// - any exception out of `TryParse`.
// The `To...` operations are left out: they add nothing but a throw on top of `TryParse`, and each
// call compiles its expression anew, which would halve the executions.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <type_traits>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"

using VarnixBase::Commons::Iec61131::Convert;

namespace {

[[noreturn]] void Fail(const char* what, const Zon::String& value)
{
    std::fprintf(stderr, "%s, for a text of %zu bytes\n", what, value.ToStdString().size());
    std::abort();
}

template <class T>
void Check(const Zon::String& value, T sentinel)
{
    T result = sentinel;
    bool accepted = false;
    try {
        accepted = Convert::TryParse(value, result);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "TryParse let an exception out: %s\n", e.what());
        std::abort();
    }
    if (!accepted && std::memcmp(&result, &sentinel, sizeof(T)) != 0) {
        Fail("a refused text changed the result", value);
    }
    if constexpr (std::is_same_v<T, bool>) {
        unsigned char byte = 0;
        std::memcpy(&byte, &result, 1);
        if (byte > 1) {
            Fail("a boolean result is neither true nor false", value);
        }
    }
    if constexpr (std::is_same_v<T, double>) {
        if (accepted && !std::isfinite(result)) {
            Fail("an accepted floating-point literal gave a value that is not finite", value);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Zon::String value(std::string(reinterpret_cast<const char*>(data), size));
    Check<unsigned long>(value, 0x5a5a5a5a5a5a5a5aul);
    Check<long>(value, -0x5a5a5a5a5a5a5a5al);
    Check<bool>(value, size % 2 == 0);
    Check<double>(value, -12345.5);
    return 0;
}
