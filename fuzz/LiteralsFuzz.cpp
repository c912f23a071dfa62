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

// What the sanitizers need for this target. Its only frees are those of the texts it builds itself,
// so a quarantine of 16 MB (instead of 256 MB) loses nothing; with the default, every input's
// blocks went to fresh memory until the quarantine filled, and page faults and filling that memory
// took more of the time than the conversions did. Options given in ASAN_OPTIONS still win.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=16";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const char* text = reinterpret_cast<const char*>(data);
    // The text itself in a block of its own size, so that AddressSanitizer sees a read past its end.
    Zon::String value(text, size);
    // White space before the text, and after it up to its first NUL (what follows is not read).
    // This one is built anew in the same string for every input: clearing keeps its capacity, so
    // after the first long inputs it costs no allocation.
    static Zon::String paddedValue;
    paddedValue.Clear();
    paddedValue += " \t\v";
    paddedValue += value.CStr();
    paddedValue += "\r\n\f ";
    Check<unsigned long>(value, paddedValue, 0x5a5a5a5a5a5a5a5aul);
    Check<long>(value, paddedValue, -0x5a5a5a5a5a5a5a5al);
    Check<bool>(value, paddedValue, size % 2 == 0);
    Check<double>(value, paddedValue, -12345.5);
    return 0;
}
