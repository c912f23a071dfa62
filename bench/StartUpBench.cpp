// What starting a program costs, for 100, 1000 and 10000 ports and connectors from a generated
// document (the one bench/gen_program.py writes): `N` float64 ports "p<i>" and `N` scale
// connectors in a ring, p<i> -> p<i+1>, each with a `gain` parameter. One item is one port and one
// connector with its parameter; the figures are per item, so that growth faster than linear shows
// as a per-item time that rises with N.
//
// Each iteration times the three phases of a controller's start-up (the program's construction,
// the publishing of its ports, the domain proxy's event that builds the connectors) and reports
// them as counters in nanoseconds per item ("construct", "publish", "event"); tearing the program
// down is not timed.
//
// The baseline builds the same graph by hand from the same file: libxml2 reads the document, the
// ports are made directly and kept in a hash map by name, publishing enters each port's address in
// a hash map by its path, and each connector finds its ports and their addresses by hash, converts
// its gain with `strtod` and keeps the two pointers and the gain. It shows what the work costs when
// every look-up is constant time.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include <libxml/parser.h>
#include <libxml/tree.h>

#include "BenchHost.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "Zon/Host/PrivateDirectory.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using VarnixBase::Core::PortSystem::Port;

std::string RingDocument(std::size_t count)
{
    std::string xml = "<Configuration><Program type=\"StartUp\"><Ports>\n";
    for (std::size_t i = 0; i < count; ++i) {
        xml += "<Port name=\"p" + std::to_string(i) + "\" type=\"float64\"/>\n";
    }
    xml += "</Ports><Connectors>\n";
    for (std::size_t i = 0; i < count; ++i) {
        xml += "<Connector startPort=\"p" + std::to_string(i) + "\" endPort=\"p" + std::to_string((i + 1) % count) +
               "\" type=\"scale\"><Parameter name=\"gain\" value=\"0.5\"/></Connector>\n";
    }
    xml += "</Connectors></Program></Configuration>\n";
    return xml;
}

/// Time per phase, summed over the iterations.
struct Phases {
    double construct = 0, publish = 0, event = 0;

    void Report(benchmark::State& state, std::size_t count) const
    {
        const double items = static_cast<double>(state.iterations()) * static_cast<double>(count);
        state.counters["construct"] = construct * 1e9 / items;
        state.counters["publish"] = publish * 1e9 / items;
        state.counters["event"] = event * 1e9 / items;
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(count));
    }
};

double Seconds(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

void BM_StartUp(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    const std::string document = RingDocument(count);
    Phases phases;
    for (auto _ : state) {
        // A fresh host for every start: the host's type library hands out a user type code for
        // every publishing and takes none back, so one host would run out of them.
        auto host = std::make_unique<Bench::Host>();
        host->WriteDocument("StartUp", document);
        auto t0 = Clock::now();
        host->Construct("StartUp");
        auto t1 = Clock::now();
        host->Publish();
        auto t2 = Clock::now();
        host->RaiseEvent();
        auto t3 = Clock::now();
        state.SetIterationTime(Seconds(t0, t3));
        phases.construct += Seconds(t0, t1);
        phases.publish += Seconds(t1, t2);
        phases.event += Seconds(t2, t3);
        if (host->Program().GetProgram().GetConnectorProvider().Count() != count) {
            state.SkipWithError("the program was not built as generated");
            break;
        }
    }
    phases.Report(state, count);
}
BENCHMARK(BM_StartUp)->Arg(100)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

/// The text of attribute `name` of `node`, or empty.
std::string Attribute(xmlNode* node, const char* name)
{
    xmlChar* value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
    std::string text = value != nullptr ? reinterpret_cast<const char*>(value) : "";
    xmlFree(value);
    return text;
}

/// Calls `visit` for every element named `name` below `node`.
template <class F>
void ForEachElement(xmlNode* node, const char* name, F&& visit)
{
    for (xmlNode* child = node; child != nullptr; child = child->next) {
        if (child->type != XML_ELEMENT_NODE) {
            continue;
        }
        if (std::strcmp(reinterpret_cast<const char*>(child->name), name) == 0) {
            visit(child);
        } else {
            ForEachElement(child->children, name, visit);
        }
    }
}

/// The same graph, by hand.
struct HandBuilt {
    struct Connector {
        const double* in;
        double* out;
        double gain;
    };
    struct Ends {
        std::string start, end, gain;
    };
    std::unordered_map<std::string, std::shared_ptr<Port<double>>> ports;
    std::vector<Ends> connectorEnds;
    std::unordered_map<std::string, double*> published;
    std::vector<std::shared_ptr<Connector>> connectors;
};

void BM_StartUp_Baseline(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    Bench::Host host;
    Zon::Host::PrivateDirectory scratch("varnix-bench");
    const std::string file = (scratch.Path() / "StartUp.prog.config").string();
    {
        std::ofstream stream(file, std::ios::binary | std::ios::trunc);
        stream << RingDocument(count);
    }
    Phases phases;
    for (auto _ : state) {
        auto graph = std::make_unique<HandBuilt>();
        auto t0 = Clock::now();
        xmlDoc* document = xmlReadFile(file.c_str(), nullptr, XML_PARSE_NONET);
        xmlNode* root = xmlDocGetRootElement(document);
        ForEachElement(root, "Port", [&](xmlNode* node) {
            std::string name = Attribute(node, "name");
            auto port = std::make_shared<Port<double>>(Zon::String(name), 1);
            graph->ports.emplace(std::move(name), std::move(port));
        });
        ForEachElement(root, "Connector", [&](xmlNode* node) {
            HandBuilt::Ends ends{Attribute(node, "startPort"), Attribute(node, "endPort"), ""};
            ForEachElement(node->children, "Parameter", [&](xmlNode* parameter) {
                if (Attribute(parameter, "name") == "gain") {
                    ends.gain = Attribute(parameter, "value");
                }
            });
            graph->connectorEnds.push_back(std::move(ends));
        });
        xmlFreeDoc(document);
        auto t1 = Clock::now();
        Zon::Plc::Commons::Meta::DynamicPortsBuilder builder;
        for (const auto& [name, port] : graph->ports) {
            port->Publish(builder);
        }
        for (const auto& entry : builder.GetEntries()) {
            graph->published.emplace("App/Main." + entry.name.ToStdString(), static_cast<double*>(entry.address));
        }
        auto t2 = Clock::now();
        for (const auto& [start, end, gain] : graph->connectorEnds) {
            if (graph->ports.count(start) == 0 || graph->ports.count(end) == 0) {
                state.SkipWithError("a connector names a port that does not exist");
                break;
            }
            graph->connectors.push_back(std::make_shared<HandBuilt::Connector>(
                HandBuilt::Connector{graph->published.at("App/Main." + start), graph->published.at("App/Main." + end),
                                     std::strtod(gain.c_str(), nullptr)}));
        }
        auto t3 = Clock::now();
        state.SetIterationTime(Seconds(t0, t3));
        phases.construct += Seconds(t0, t1);
        phases.publish += Seconds(t1, t2);
        phases.event += Seconds(t2, t3);
        if (graph->connectors.size() != count) {
            state.SkipWithError("the graph was not built as generated");
            break;
        }
    }
    phases.Report(state, count);
}
BENCHMARK(BM_StartUp_Baseline)->Arg(100)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
