#include "VarnixBase/Sim/Analysis.hpp"

#include <algorithm>
#include <functional>
#include <cstdlib>
#include <map>
#include <set>

namespace VarnixBase::Sim {

namespace {

std::string PortNameOf(const std::string& reference)
{
    return reference.substr(0, reference.find_first_of(".["));
}

} // namespace

std::vector<QualityCycle> FindQualityCycles(const OutlineProgram& program)
{
    // Nodes: ports by name (first of a name wins, as in the library), then connectors by name.
    std::map<std::string, long> portLines;
    std::map<std::string, bool> portAsks; // device ports ask their providers
    std::vector<std::string> order;
    for (const auto& port : program.ports) {
        if (portLines.emplace(port.name, port.line).second) {
            portAsks[port.name] = PortKind(port.type) == "device";
            order.push_back("port:" + port.name);
        }
    }
    std::map<std::string, long> connectorLines;
    for (const auto& connector : program.connectors) {
        if (connectorLines.emplace(connector.Name(), connector.line).second) {
            order.push_back("connector:" + connector.Name());
        }
    }
    auto resolve = [&](const std::string& ref) -> std::string {
        if (portLines.count(ref) != 0) {
            return "port:" + ref;
        }
        if (connectorLines.count(ref) != 0) {
            return "connector:" + ref;
        }
        return std::string();
    };

    std::map<std::string, std::vector<std::string>> edges; // consumer -> providers it asks
    for (const auto& port : program.ports) {
        if (!portAsks[port.name]) {
            continue;
        }
        for (const auto& ref : port.qualityProviders) {
            if (auto target = resolve(ref.text); !target.empty()) {
                edges["port:" + port.name].push_back(target);
            }
        }
    }
    for (const auto& connector : program.connectors) {
        std::string self = "connector:" + connector.Name();
        std::string start = PortNameOf(connector.startPort);
        if (portLines.count(start) != 0) {
            edges[self].push_back("port:" + start);
        }
        for (const auto& ref : connector.qualityProviders) {
            if (auto target = resolve(ref.text); !target.empty()) {
                edges[self].push_back(target);
            }
        }
        std::string end = PortNameOf(connector.endPort);
        if (portAsks.count(end) != 0 && portAsks[end]) {
            edges["port:" + end].push_back(self);
        }
    }

    // Depth-first search; a back edge closes a cycle. Each cycle is reported once, by its set.
    std::vector<QualityCycle> cycles;
    std::set<std::set<std::string>> seen;
    std::map<std::string, int> state; // 0 new, 1 on stack, 2 done
    std::vector<std::string> stack;
    auto lineOf = [&](const std::string& node) {
        return node.rfind("port:", 0) == 0 ? portLines[node.substr(5)] : connectorLines[node.substr(10)];
    };
    std::function<void(const std::string&)> visit = [&](const std::string& node) {
        state[node] = 1;
        stack.push_back(node);
        for (const auto& next : edges[node]) {
            if (state[next] == 1) {
                auto begin = std::find(stack.begin(), stack.end(), next);
                std::vector<std::string> members(begin, stack.end());
                std::set<std::string> key(members.begin(), members.end());
                if (seen.insert(key).second) {
                    // Start at the member that comes first in the document.
                    auto first = std::min_element(members.begin(), members.end(), [&](const auto& a, const auto& b) {
                        return std::find(order.begin(), order.end(), a) < std::find(order.begin(), order.end(), b);
                    });
                    std::rotate(members.begin(), first, members.end());
                    QualityCycle cycle;
                    cycle.line = lineOf(members.front());
                    for (const auto& member : members) {
                        cycle.members.push_back(member.substr(member.find(':') + 1));
                    }
                    cycles.push_back(cycle);
                }
            } else if (state[next] == 0) {
                visit(next);
            }
        }
        stack.pop_back();
        state[node] = 2;
    };
    for (const auto& node : order) {
        if (state[node] == 0) {
            visit(node);
        }
    }
    return cycles;
}

std::vector<DimensionProblem> FindDimensionProblems(const OutlineProgram& program)
{
    std::vector<DimensionProblem> problems;
    for (const auto& port : program.ports) {
        if (!port.hasDimensions) {
            continue;
        }
        long value = std::strtol(port.dimensions.c_str(), nullptr, 10);
        if (value == 0) {
            value = 1;
        }
        if (value != 1) {
            problems.push_back({port.name, value, port.line});
        }
    }
    return problems;
}

} // namespace VarnixBase::Sim
