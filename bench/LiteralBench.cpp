// What converting a literal costs, per target type, beside the standard library's own conversion
// of the same digits. Literals are converted at start-up (parameter values), never in the cycle.
#include <benchmark/benchmark.h>

#include <cstdlib>

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

} // namespace
