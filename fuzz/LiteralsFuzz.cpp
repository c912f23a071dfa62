// Fuzz target: every input is taken as a text and converted through all four `Convert::TryParse`.
//
// What counts as a finding, besides what the sanitizers report:
// - a `TryParse` that refuses the text but changes its result variable (each starts from a value
//   that no literal gives, and the boolean one alternately from true and false);
// - a boolean result that is neither true nor false, or a floating-point result that is not
//   finite (a magnitude too large gives the largest finite value);
// - any exception out of `TryParse`;
// - a text that converts otherwise once white space is put around it (every length is read, so the
//   longer text must give the same answer and the same value).
// The `To...` operations are left out: they add nothing but a throw on top of `TryParse`.
// Inputs of every length are taken; fuzz_LiteralsOracle compares short ones with the expressions
// that define the literals.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"

using VarnixBase::Commons::Iec61131::Convert;

namespace {

[[noreturn]] void Fail(const char* what, const Zon::String& value)
{
    std::fprintf(stderr, "%s, for a text of %zu bytes\n", what, value.ToStdString().size());
    std::abort();
}

template <class T>
void Check(const Zon::String& value, const Zon::String& padded, T sentinel)
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
    T paddedResult = sentinel;
    if (Convert::TryParse(padded, paddedResult) != accepted || std::memcmp(&result, &paddedResult, sizeof(T)) != 0) {
        Fail("white space around the text changed its conversion", value);
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
    const char* text = reinterpret_cast<const char*>(data);
    Zon::String value(text, size);
    // White space before the text, and after it up to its first NUL (what follows is not read).
    const void* nul = std::memchr(text, '\0', size);
    std::size_t read = nul != nullptr ? static_cast<std::size_t>(static_cast<const char*>(nul) - text) : size;
    std::string padded;
    padded.reserve(read + 7);
    padded.append(" \t\v").append(text, read).append("\r\n\f ");
    Zon::String paddedValue(std::move(padded));
    Check<unsigned long>(value, paddedValue, 0x5a5a5a5a5a5a5a5aul);
    Check<long>(value, paddedValue, -0x5a5a5a5a5a5a5a5al);
    Check<bool>(value, paddedValue, size % 2 == 0);
    Check<double>(value, paddedValue, -12345.5);
    return 0;
}
