// What converting a literal costs, per target type, beside the standard library's own conversion
// of the same digits. Literals are converted at start-up (parameter values), never in the cycle.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdlib>
#include <vector>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"

namespace {

using VarnixBase::Commons::Iec61131::Convert;

const Zon::String UnsignedText("udint#4000000000");
const Zon::String SignedText("-1234567");
const Zon::String BoolText("TRUE");
const Zon::String RealText("1.5e3");

void BM_Literal_Unsigned(benchmark::State& state)
{
    unsigned long value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Convert::TryParse(UnsignedText, value));
    }
}
BENCHMARK(BM_Literal_Unsigned);

void BM_Literal_Unsigned_Baseline(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::strtoul("4000000000", nullptr, 10));
    }
}
BENCHMARK(BM_Literal_Unsigned_Baseline);

void BM_Literal_Signed(benchmark::State& state)
{
    long value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Convert::TryParse(SignedText, value));
    }
}
BENCHMARK(BM_Literal_Signed);

void BM_Literal_Signed_Baseline(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::strtol("-1234567", nullptr, 10));
    }
}
BENCHMARK(BM_Literal_Signed_Baseline);

void BM_Literal_Bool(benchmark::State& state)
{
    bool value = false;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Convert::TryParse(BoolText, value));
    }
}
BENCHMARK(BM_Literal_Bool);

void BM_Literal_Bool_Baseline(benchmark::State& state)
{
    const char* text = "TRUE";
    benchmark::DoNotOptimize(text);
    for (auto _ : state) {
        benchmark::DoNotOptimize(text[0] == 'T' || text[0] == 't' || text[0] == '1');
    }
}
BENCHMARK(BM_Literal_Bool_Baseline);

void BM_Literal_Real(benchmark::State& state)
{
    double value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Convert::TryParse(RealText, value));
    }
}
BENCHMARK(BM_Literal_Real);

void BM_Literal_Real_Baseline(benchmark::State& state)
{
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::strtod("1.5e3", nullptr));
    }
}
BENCHMARK(BM_Literal_Real_Baseline);

// Mixed literals: each text beside the same number as the C library reads it (its digits, sign and
// base, without prefix and separators). One iteration converts all of them; items are texts.
struct IntegerCase {
    const char* literal;
    const char* digits;
    int base;
};

constexpr std::array<IntegerCase, 8> IntegerCases = {{
    {"42", "42", 10},
    {"-1234567", "-1234567", 10},
    {"dint#-1_000_000", "-1000000", 10},
    {"16#7FFF_FFFF", "7FFFFFFF", 16},
    {"2#1010_1010", "10101010", 2},
    {"8#777", "777", 8},
    {"  int#+99  ", "  +99  ", 10},
    {"9223372036854775808", "9223372036854775808", 10},
}};

/// Converts the literal of every case to a `T` per iteration.
template <class T, class Cases>
void ConvertEach(benchmark::State& state, const Cases& cases)
{
    std::vector<Zon::String> texts;
    for (const auto& entry : cases) {
        texts.emplace_back(entry.literal);
    }
    T value{};
    for (auto _ : state) {
        for (const auto& text : texts) {
            benchmark::DoNotOptimize(Convert::TryParse(text, value));
            benchmark::DoNotOptimize(value);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(texts.size()));
}

void BM_Literal_SignedMixed(benchmark::State& state)
{
    ConvertEach<long>(state, IntegerCases);
}
BENCHMARK(BM_Literal_SignedMixed);

void BM_Literal_SignedMixed_Baseline(benchmark::State& state)
{
    for (auto _ : state) {
        for (const auto& entry : IntegerCases) {
            const char* digits = entry.digits;
            benchmark::DoNotOptimize(digits);
            benchmark::DoNotOptimize(std::strtol(digits, nullptr, entry.base));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(IntegerCases.size()));
}
BENCHMARK(BM_Literal_SignedMixed_Baseline);

struct RealCase {
    const char* literal;
    const char* digits;
};

constexpr std::array<RealCase, 6> RealCases = {{
    {"1.5e3", "1.5e3"},
    {"-0.125", "-0.125"},
    {"lreal#3.141_592_653_589_793", "3.141592653589793"},
    {"real#1.0e-5", "1.0e-5"},
    {"12345.678", "12345.678"},
    {"  2.5  ", "  2.5  "},
}};

void BM_Literal_RealMixed(benchmark::State& state)
{
    ConvertEach<double>(state, RealCases);
}
BENCHMARK(BM_Literal_RealMixed);

void BM_Literal_RealMixed_Baseline(benchmark::State& state)
{
    for (auto _ : state) {
        for (const auto& entry : RealCases) {
            const char* digits = entry.digits;
            benchmark::DoNotOptimize(digits);
            benchmark::DoNotOptimize(std::strtod(digits, nullptr));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(RealCases.size()));
}
BENCHMARK(BM_Literal_RealMixed_Baseline);

} // namespace
