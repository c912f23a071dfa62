// What one cycle costs per connector (or per executable port), for 1, 10, 100 and 1000 of them in
// one program built from a generated document, beside a hand-written loop that does the same
// loads, conversions and stores through the same pointers (the published addresses of the ports
// and the parameters' own addresses), without the program's list, shared pointers, virtual calls
// and change events.
//
// Kinds:
// - CopyInt:       `copy` int32 -> int32 between plain ports;
// - CopyQualified: `copy` int32 -> qualified.int32 (the end port takes time stamp and quality in
//                  `OnChange`);
// - Scale:         `scale` float64 -> int16 with "gain" and "offset" set by the document;
// - AnalogIn:      AnalogIn ports alone (each one executable), deriving their quality;
// - Text16/Text80: `copy` string80 -> string80 of a text of 16 and of 80 characters.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "BenchHost.hpp"
#include "VarnixBase/Core/PortSystem/Parameter.hpp"
#include "VarnixBase/Core/QualitySystem/QualifiedValue.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "Zon/Plc/Commons/Gds/StaticString.hpp"

namespace {

using VarnixBase::Core::PortSystem::Parameter;
using VarnixBase::Core::QualitySystem::QualifiedValue;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;
using Text80 = Zon::Plc::Commons::Gds::StaticString<80, char>;

/// A document with one program of type "Cycle": `count` connectors of `type` from "in<i>" (of
/// `inType`) to "out<i>" (of `outType`), with `parameters` inside each connector; or, when `type`
/// is empty, `count` ports "in<i>" alone.
std::string Document(std::size_t count, const char* inType, const char* outType, const char* type,
                     const char* parameters = "")
{
    std::string xml = "<Configuration><Program type=\"Cycle\"><Ports>\n";
    for (std::size_t i = 0; i < count; ++i) {
        xml += "<Port name=\"in" + std::to_string(i) + "\" type=\"" + inType + "\"/>\n";
        if (*type != '\0') {
            xml += "<Port name=\"out" + std::to_string(i) + "\" type=\"" + outType + "\"/>\n";
        }
    }
    xml += "</Ports><Connectors>\n";
    for (std::size_t i = 0; *type != '\0' && i < count; ++i) {
        xml += "<Connector startPort=\"in" + std::to_string(i) + "\" endPort=\"out" + std::to_string(i) +
               "\" type=\"" + type + "\">" + parameters + "</Connector>\n";
    }
    xml += "</Connectors></Program></Configuration>\n";
    return xml;
}

/// Starts the program of `xml` on `host` and checks that it has `ports` ports and `connectors`
/// connectors.
VarnixBase::Core::PortSystem::ConfigurableProgramBaseImpl& Start(Bench::Host& host, const std::string& xml,
                                                                 std::size_t ports, std::size_t connectors,
                                                                 benchmark::State& state)
{
    host.WriteDocument("Cycle", xml);
    auto& program = host.Start("Cycle").GetProgram();
    if (program.GetPortProvider().Count() != ports || program.GetConnectorProvider().Count() != connectors) {
        state.SkipWithError("the program was not built as generated");
    }
    return program;
}

std::string In(std::size_t i) { return "App/Main.in" + std::to_string(i); }
std::string Out(std::size_t i) { return "App/Main.out" + std::to_string(i); }

void Finish(benchmark::State& state, std::size_t count)
{
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
}

const std::vector<std::int64_t> Counts{1, 10, 100, 1000};

// copy int32 -> int32 ------------------------------------------------------------------------------

void BM_CycleCopyInt(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "int32", "int32", "copy"), 2 * count, count, state);
    for (std::size_t i = 0; i < count; ++i) {
        *host.At<int>(In(i)) = static_cast<int>(i);
    }
    for (auto _ : state) {
        program.Execute();
    }
    benchmark::DoNotOptimize(*host.At<int>(Out(count - 1)));
    Finish(state, count);
}
BENCHMARK(BM_CycleCopyInt)->ArgsProduct({Counts});

void BM_CycleCopyInt_Baseline(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    Start(host, Document(count, "int32", "int32", "copy"), 2 * count, count, state);
    struct Link {
        const int* in;
        int* out;
    };
    std::vector<Link> links;
    for (std::size_t i = 0; i < count; ++i) {
        links.push_back({host.At<int>(In(i)), host.At<int>(Out(i))});
        *host.At<int>(In(i)) = static_cast<int>(i);
    }
    for (auto _ : state) {
        for (const Link& link : links) {
            *link.out = *link.in;
        }
        benchmark::ClobberMemory();
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleCopyInt_Baseline)->ArgsProduct({Counts});

// Where the time of a copy goes: the same 1000 connectors run three ways. "ProviderLoop" walks the
// connector provider's list (the same objects in the same order as the program's executables)
// without copying the shared pointers; "ProviderLoopCopy" copies each one for the call, as the
// program does; "NoSubscriber" is the program's own cycle after the end ports have left the
// connectors' change events (no event call per connector).

void BM_CyclePartProviderLoop(benchmark::State& state, bool copy)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "int32", "int32", "copy"), 2 * count, count, state);
    const auto& connectors = program.GetConnectorProvider().GetConnectors();
    for (auto _ : state) {
        if (copy) {
            for (const auto& entry : connectors) {
                std::shared_ptr<VarnixBase::Core::PortSystem::IConnector> connector = entry;
                connector->Execute();
            }
        } else {
            for (const auto& entry : connectors) {
                entry->Execute();
            }
        }
    }
    Finish(state, count);
}
BENCHMARK_CAPTURE(BM_CyclePartProviderLoop, Copy, true)->Arg(1000);
BENCHMARK_CAPTURE(BM_CyclePartProviderLoop, NoCopy, false)->Arg(1000);

void BM_CyclePartNoSubscriber(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "int32", "int32", "copy"), 2 * count, count, state);
    auto& ports = program.GetPortProvider();
    for (const auto& connector : program.GetConnectorProvider().GetConnectors()) {
        auto end = ports.GetPort(connector->GetName().Substr(connector->GetName().Find(':') + 1));
        connector->changed -= Zon::make_delegate(end.get(), &VarnixBase::Core::PortSystem::IPort::OnChange);
        if (!connector->changed.IsEmpty()) {
            state.SkipWithError("the end port is still subscribed");
        }
    }
    for (auto _ : state) {
        program.Execute();
    }
    Finish(state, count);
}
BENCHMARK(BM_CyclePartNoSubscriber)->Arg(1000);

// copy int32 -> qualified.int32 --------------------------------------------------------------------

void BM_CycleCopyQualified(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "int32", "qualified.int32", "copy"), 2 * count, count, state);
    for (std::size_t i = 0; i < count; ++i) {
        *host.At<int>(In(i)) = static_cast<int>(i);
    }
    for (auto _ : state) {
        program.Execute();
    }
    benchmark::DoNotOptimize(host.At<QualifiedValue<int>>(Out(count - 1))->timestamp);
    Finish(state, count);
}
BENCHMARK(BM_CycleCopyQualified)->ArgsProduct({Counts});

/// The value, then the time stamp from the clock and the quality of the start (a plain port:
/// `Good`, no flags), stored into the published qualified value.
void BM_CycleCopyQualified_Baseline(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    Start(host, Document(count, "int32", "qualified.int32", "copy"), 2 * count, count, state);
    struct Link {
        const int* in;
        QualifiedValue<int>* out;
    };
    std::vector<Link> links;
    for (std::size_t i = 0; i < count; ++i) {
        links.push_back({host.At<int>(In(i)), host.At<QualifiedValue<int>>(Out(i))});
        *host.At<int>(In(i)) = static_cast<int>(i);
    }
    for (auto _ : state) {
        for (const Link& link : links) {
            link.out->value = *link.in;
            link.out->timestamp = Zon::DateTime::Now().ToUnixTimeMicroseconds();
            link.out->quality = Quality{};
        }
        benchmark::ClobberMemory();
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleCopyQualified_Baseline)->ArgsProduct({Counts});

// scale float64 -> int16 ---------------------------------------------------------------------------

const char* const ScaleParameters = "<Parameter name=\"gain\" value=\"0.5\"/><Parameter name=\"offset\" value=\"3.0\"/>";

void BM_CycleScale(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "float64", "int16", "scale", ScaleParameters), 2 * count, count, state);
    for (std::size_t i = 0; i < count; ++i) {
        *host.At<double>(In(i)) = 100.0 + static_cast<double>(i);
    }
    for (auto _ : state) {
        program.Execute();
    }
    if (*host.At<short>(Out(0)) != 53) {
        state.SkipWithError("the scale connector computed something else");
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleScale)->ArgsProduct({Counts});

/// The parameters are read through their own addresses, anew for every link, as the connector
/// reads them; the result is truncated to 32 bits and then cut to 16, as the connector converts.
void BM_CycleScale_Baseline(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "float64", "int16", "scale", ScaleParameters), 2 * count, count, state);
    struct Link {
        const double* in;
        short* out;
        const double* gain;
        const double* offset;
        const bool* invert;
    };
    std::vector<Link> links;
    auto parameter = [](const auto& connector, const char* name) {
        return std::static_pointer_cast<Parameter<double>>(connector->GetParameterProvider().GetParameter(name));
    };
    std::size_t i = 0;
    for (const auto& connector : program.GetConnectorProvider().GetConnectors()) {
        auto invert = std::static_pointer_cast<Parameter<bool>>(connector->GetParameterProvider().GetParameter("invert"));
        links.push_back({host.At<double>(In(i)), host.At<short>(Out(i)),
                         parameter(connector, "gain")->GetDataAccessValue().GetDataPointer(),
                         parameter(connector, "offset")->GetDataAccessValue().GetDataPointer(),
                         invert->GetDataAccessValue().GetDataPointer()});
        *host.At<double>(In(i)) = 100.0 + static_cast<double>(i);
        ++i;
    }
    for (auto _ : state) {
        for (const Link& link : links) {
            if (!*link.invert) {
                *link.out = static_cast<short>(static_cast<int>(*link.in * *link.gain + *link.offset));
            }
        }
        benchmark::ClobberMemory();
    }
    if (*host.At<short>(Out(0)) != 53) {
        state.SkipWithError("the baseline computed something else");
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleScale_Baseline)->ArgsProduct({Counts});

// AnalogIn ports -----------------------------------------------------------------------------------

void BM_CycleAnalogIn(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "AnalogIn", "", ""), count, 0, state);
    for (std::size_t i = 0; i < count; ++i) {
        // Every eighth card reports an overrange.
        *host.At<std::uint16_t>(In(i)) = i % 8 == 7 ? 0x8001 : static_cast<std::uint16_t>(i);
    }
    for (auto _ : state) {
        program.Execute();
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleAnalogIn)->ArgsProduct({Counts});

/// The raw value is loaded once and compared with the error codes; the derived quality is stored
/// beside it (the port keeps its own quality where only it can reach it).
void BM_CycleAnalogIn_Baseline(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    Start(host, Document(count, "AnalogIn", "", ""), count, 0, state);
    struct Card {
        const std::uint16_t* raw;
        Quality quality;
    };
    std::vector<Card> cards;
    for (std::size_t i = 0; i < count; ++i) {
        cards.push_back({host.At<std::uint16_t>(In(i)), Quality{}});
        *host.At<std::uint16_t>(In(i)) = i % 8 == 7 ? 0x8001 : static_cast<std::uint16_t>(i);
    }
    for (auto _ : state) {
        for (Card& card : cards) {
            Quality derived;
            switch (*card.raw) {
            case 0x8001: derived = Quality{QualityFlags::Overrange, QualityState::Bad}; break;
            case 0x8002: derived = Quality{QualityFlags::WireBreak, QualityState::Invalid}; break;
            case 0x8004: derived = Quality{QualityFlags::Failure, QualityState::Invalid}; break;
            case 0x8010: derived = Quality{QualityFlags::Configuration, QualityState::Invalid}; break;
            case 0x8020: derived = Quality{QualityFlags::PowerFailure, QualityState::Invalid}; break;
            case 0x8040: derived = Quality{QualityFlags::DeviceDefect, QualityState::Invalid}; break;
            case 0x8080: derived = Quality{QualityFlags::Underrange, QualityState::Bad}; break;
            default: break;
            }
            card.quality = derived;
        }
        benchmark::ClobberMemory();
    }
    Finish(state, count);
}
BENCHMARK(BM_CycleAnalogIn_Baseline)->ArgsProduct({Counts});

// copy string80 -> string80 ------------------------------------------------------------------------

/// A text of `length` characters.
Text80 TextOf(std::size_t length)
{
    Text80 text;
    for (std::size_t i = 0; i < length; ++i) {
        text.data[i] = static_cast<char>('a' + i % 26);
    }
    text.length = static_cast<std::uint16_t>(length);
    return text;
}

void CycleText(benchmark::State& state, std::size_t length)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    auto& program = Start(host, Document(count, "string80", "string80", "copy"), 2 * count, count, state);
    for (std::size_t i = 0; i < count; ++i) {
        *host.At<Text80>(In(i)) = TextOf(length);
    }
    for (auto _ : state) {
        program.Execute();
    }
    if (host.At<Text80>(Out(0))->length != length) {
        state.SkipWithError("the text was not copied");
    }
    Finish(state, count);
}

/// The text up to its first zero byte (within its buffer), cut to the destination's capacity,
/// copied, the rest of the destination's buffer cleared, and the length stored.
void CycleText_Baseline(benchmark::State& state, std::size_t length)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    Start(host, Document(count, "string80", "string80", "copy"), 2 * count, count, state);
    struct Link {
        const Text80* in;
        Text80* out;
    };
    std::vector<Link> links;
    for (std::size_t i = 0; i < count; ++i) {
        links.push_back({host.At<Text80>(In(i)), host.At<Text80>(Out(i))});
        *host.At<Text80>(In(i)) = TextOf(length);
    }
    for (auto _ : state) {
        for (const Link& link : links) {
            std::size_t units = strnlen(link.in->data, sizeof(link.in->data));
            const std::size_t capacity = link.out->capacity;
            units = units < capacity ? units : capacity;
            std::memcpy(link.out->data, link.in->data, units);
            std::memset(link.out->data + units, 0, capacity + 1 - units);
            link.out->length = static_cast<std::uint16_t>(units);
        }
        benchmark::ClobberMemory();
    }
    if (host.At<Text80>(Out(0))->length != length) {
        state.SkipWithError("the text was not copied");
    }
    Finish(state, count);
}

void BM_CycleText16(benchmark::State& state) { CycleText(state, 16); }
void BM_CycleText16_Baseline(benchmark::State& state) { CycleText_Baseline(state, 16); }
void BM_CycleText80(benchmark::State& state) { CycleText(state, 80); }
void BM_CycleText80_Baseline(benchmark::State& state) { CycleText_Baseline(state, 80); }
BENCHMARK(BM_CycleText16)->ArgsProduct({Counts});
BENCHMARK(BM_CycleText16_Baseline)->ArgsProduct({Counts});
BENCHMARK(BM_CycleText80)->ArgsProduct({Counts});
BENCHMARK(BM_CycleText80_Baseline)->ArgsProduct({Counts});

} // namespace
