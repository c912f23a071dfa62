// What raising a connector's change event costs, beside a direct virtual call doing the same work.
// The subscriber's method is kept out of line, so that the baseline pays for one real call per
// subscriber, as a port's `OnChange` does (the compiler could otherwise inline it into the loop,
// which no event can).
#include <benchmark/benchmark.h>

#include <vector>

#include "Zon/Event.hpp"

namespace {

struct Sink {
    virtual ~Sink() = default;
    [[gnu::noinline]] virtual void OnChange(int& value) { value += 1; }
};

void BM_EventRaise(benchmark::State& state)
{
    const auto subscribers = static_cast<std::size_t>(state.range(0));
    std::vector<Sink> sinks(subscribers);
    Zon::event<int&> changed;
    for (auto& sink : sinks) {
        changed += Zon::make_delegate(&sink, &Sink::OnChange);
    }
    int value = 0;
    for (auto _ : state) {
        changed(value);
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(subscribers));
}
BENCHMARK(BM_EventRaise)->Arg(1)->Arg(4);

void BM_EventRaise_Baseline(benchmark::State& state)
{
    const auto subscribers = static_cast<std::size_t>(state.range(0));
    std::vector<Sink> sinks(subscribers);
    std::vector<Sink*> targets;
    for (auto& sink : sinks) {
        targets.push_back(&sink);
    }
    int value = 0;
    for (auto _ : state) {
        for (std::size_t i = targets.size(); i-- > 0;) {
            targets[i]->OnChange(value);
        }
        benchmark::DoNotOptimize(value);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(subscribers));
}
BENCHMARK(BM_EventRaise_Baseline)->Arg(1)->Arg(4);

} // namespace
