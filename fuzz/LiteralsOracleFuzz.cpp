// Fuzz target: every input is taken as a text and converted through all four `Convert::TryParse`
// and through the regular expressions that define the literals (tests/.../LiteralOracle.hpp).
//
// A finding, besides what the sanitizers report: any disagreement between the two, in the answer or
// in a single bit of the result (both start from the same value, which a refusal must leave).
// Inputs longer than `oracleLength` are left out: the oracle's engine recurses once per character
// and would exhaust the stack; fuzz_Literals covers every length.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include "../tests/VarnixBase/Commons/Iec61131/LiteralOracle.hpp"
#include "VarnixBase/Commons/Iec61131/Convert.hpp"

using VarnixBase::Commons::Iec61131::Convert;

namespace {

constexpr std::size_t oracleLength = 256;

template <class T>
void Compare(const std::string& text, const Zon::String& value, T sentinel, const char* type)
{
    T fast = sentinel;
    T oracle = sentinel;
    bool fastAccepted = Convert::TryParse(value, fast);
    bool oracleAccepted = VarnixTest::LiteralOracle::TryParse(text.c_str(), oracle);
    if (fastAccepted != oracleAccepted || std::memcmp(&fast, &oracle, sizeof(T)) != 0) {
        std::fprintf(stderr, "conversion and oracle disagree for %s (%s vs %s) on a text of %zu bytes\n", type,
                     fastAccepted ? "accepted" : "refused", oracleAccepted ? "accepted" : "refused", text.size());
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size > oracleLength) {
        return 0;
    }
    std::string text(reinterpret_cast<const char*>(data), size);
    Zon::String value(text);
    Compare<unsigned long>(text, value, 0x5a5a5a5a5a5a5a5aul, "unsigned long");
    Compare<long>(text, value, -0x5a5a5a5a5a5a5a5al, "long");
    Compare<bool>(text, value, size % 2 == 0, "bool");
    Compare<double>(text, value, -12345.5, "double");
    return 0;
}
