// What `varnix-sim run` of the tank example costs per cycle, for a million cycles with the trace
// off, beside the same program's own `Execute` in a plain loop. The simulator's cycle adds its
// check for stimuli and the step of the virtual clock; without a trace it reads the steady clock
// only around stretches of cycles, not around every `Execute`.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

#include "BenchHost.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

#ifndef VARNIX_EXAMPLES_DIR
#error "VARNIX_EXAMPLES_DIR must name the examples directory"
#endif

namespace {

constexpr std::uint64_t Cycles = 1'000'000;
const std::string TankDocument = std::string(VARNIX_EXAMPLES_DIR) + "/tank/TankProgram.prog.config";

void BM_SimTank(benchmark::State& state)
{
    Bench::MakeMultiThreaded();
    VarnixBase::Sim::SimulationOptions options;
    options.document = TankDocument;
    options.consoleLevel.reset();
    VarnixBase::Sim::Simulation simulation(options);
    VarnixBase::Sim::Simulation::RunOptions run;
    run.cycles = Cycles;
    for (auto _ : state) {
        auto summary = simulation.Run(run);
        benchmark::DoNotOptimize(summary.meanCycleMicroseconds);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Cycles));
}
BENCHMARK(BM_SimTank)->Unit(benchmark::kMillisecond);

void BM_SimTank_Baseline(benchmark::State& state)
{
    Bench::Host host;
    std::ifstream stream(TankDocument, std::ios::binary);
    std::stringstream xml;
    xml << stream.rdbuf();
    host.WriteDocument("TankProgram", xml.str());
    auto& program = host.Start("TankProgram");
    if (program.GetProgram().GetConnectorProvider().Count() != 2) {
        state.SkipWithError("the tank program was not built");
    }
    for (auto _ : state) {
        for (std::uint64_t cycle = 0; cycle < Cycles; ++cycle) {
            program.Execute();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(Cycles));
}
BENCHMARK(BM_SimTank_Baseline)->Unit(benchmark::kMillisecond);

} // namespace
