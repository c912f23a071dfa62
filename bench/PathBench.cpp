// What resolving a variable path costs, by depth, beside computing the same address by hand.
// Resolution happens once per handle at start-up, never in the cycle; this shows its growth.
#include <benchmark/benchmark.h>

#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/Host/TypeLibrary.hpp"

namespace {

struct Leaf {
    int b = 0;
    double c = 0;
};
struct Holder {
    Leaf* target = nullptr;
};
struct Inner {
    Leaf leaf;
    Leaf elements[3][4];
};
struct Root {
    int a = 0;
    Inner inner;
    Holder holder;
};

/// A host runtime and a component "Comp" with one root variable "Root".
class Fixture {
public:
    Fixture()
    {
        Zon::Host::RuntimeOptions options;
        options.consoleLevel.reset();
        options.captureLevel.reset();
        runtime = std::make_unique<Zon::Host::Runtime>(options);
        library.AddStruct<Leaf>("Leaf").Member("b", &Leaf::b).Member("c", &Leaf::c);
        library.AddStruct<Holder>("Holder").Member("target", &Holder::target);
        library.AddStruct<Inner>("Inner").Member("leaf", &Inner::leaf).Member("elements", &Inner::elements);
        library.AddStruct<Root>("Root").Member("a", &Root::a).Member("inner", &Root::inner).Member("holder", &Root::holder);
        root.holder.target = &pointed;
        component.AddVariable("Root", root);
        VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().Add(component);
    }
    ~Fixture() { VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().Remove(component); }

    std::unique_ptr<Zon::Host::Runtime> runtime;
    Zon::Host::TypeLibrary library{"Bench", "Bench"};
    Zon::Host::Component component{"Comp", library};
    Root root;
    Leaf pointed;
};

const char* const Paths[] = {
    "Comp/Root",                      // 0: the root itself
    "Comp/Root.a",                    // 1: member
    "Comp/Root.inner.leaf.b",         // 2: member of member
    "Comp/Root.inner.elements[1][2].c", // 3: array element
    "Comp/Root.holder.target.c",      // 4: through a pointer member
};

void BM_Resolve(benchmark::State& state)
{
    Fixture fixture;
    auto& browser = VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser();
    Zon::String path(Paths[state.range(0)]);
    for (auto _ : state) {
        auto info = browser.GetDataInfo(path);
        benchmark::DoNotOptimize(info.address);
    }
    state.SetLabel(Paths[state.range(0)]);
}
BENCHMARK(BM_Resolve)->DenseRange(0, 4);

void BM_Resolve_Baseline(benchmark::State& state)
{
    Fixture fixture;
    Root* root = &fixture.root;
    benchmark::DoNotOptimize(root);
    const auto which = state.range(0);
    for (auto _ : state) {
        const void* address = nullptr;
        switch (which) {
        case 0: address = root; break;
        case 1: address = &root->a; break;
        case 2: address = &root->inner.leaf.b; break;
        case 3: address = &root->inner.elements[1][2].c; break;
        default: address = &root->holder.target->c; break;
        }
        benchmark::DoNotOptimize(address);
    }
    state.SetLabel(Paths[which]);
}
BENCHMARK(BM_Resolve_Baseline)->DenseRange(0, 4);

} // namespace
