// What checking a scenario's expectations costs: the tank example for a million cycles with one
// expectation on every cycle (`expect display`), beside the same scenario without its expectation
// column, both run by `RunScenario` on a fresh simulation. The scenario is read once, outside the
// timed part; each iteration builds the program anew (not timed) and runs every cycle.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "BenchHost.hpp"
#include "VarnixBase/Sim/Scenario.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

#ifndef VARNIX_EXAMPLES_DIR
#error "VARNIX_EXAMPLES_DIR must name the examples directory"
#endif

namespace {

using namespace VarnixBase::Sim;

constexpr std::uint64_t Cycles = 1'000'000;
const std::string TankDocument = std::string(VARNIX_EXAMPLES_DIR) + "/tank/TankProgram.prog.config";

/// Cycle 1 writes 2500 into `raw`, so that the display holds 25 from then on; with `expect` every
/// cycle checks that it does.
Scenario MakeScenario(bool expect)
{
    std::string text = expect ? "cycle,raw,expect display\n1,2500,25\n" : "cycle,raw\n1,2500\n";
    text.reserve(Cycles * 12);
    for (std::uint64_t cycle = 2; cycle <= Cycles; ++cycle) {
        text += std::to_string(cycle);
        text += expect ? ",,25\n" : ",\n";
    }
    return ParseScenario(text, "tank.bench.csv");
}

void RunTank(benchmark::State& state, bool expect)
{
    Bench::MakeMultiThreaded();
    const Scenario scenario = MakeScenario(expect);
    ScenarioOptions options;
    options.cycles = Cycles;
    SimulationOptions simulationOptions;
    simulationOptions.document = TankDocument;
    simulationOptions.consoleLevel.reset();
    std::unique_ptr<Simulation> simulation;
    for (auto _ : state) {
        state.PauseTiming();
        simulation.reset(); // one simulation in the process at a time
        simulation = std::make_unique<Simulation>(simulationOptions);
        state.ResumeTiming();
        auto result = RunScenario(*simulation, scenario, options);
        if (!result.Passed() || result.cycles != Cycles || result.expectations != (expect ? Cycles : 0)) {
            state.SkipWithError("the scenario did not run as it should");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Cycles));
}

void BM_ScenarioTank(benchmark::State& state)
{
    RunTank(state, true);
}
BENCHMARK(BM_ScenarioTank)->Unit(benchmark::kMillisecond);

void BM_ScenarioTank_Baseline(benchmark::State& state)
{
    RunTank(state, false);
}
BENCHMARK(BM_ScenarioTank_Baseline)->Unit(benchmark::kMillisecond);

} // namespace
