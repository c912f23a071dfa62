#include "VarnixBase/Sim/Analysis.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace VarnixBase::Sim {

namespace {

std::string_view PortNameOf(std::string_view reference)
{
    return reference.substr(0, reference.find_first_of(".["));
}

} // namespace

std::vector<QualityCycle> FindQualityCycles(const OutlineProgram& program)
{
    // Only device ports and connectors ask their providers, and a connector without references
    // asks only its start port. Without a device port and without a reference on a connector, no
    // node that answers by asking is reached from another such node: there is no cycle.
    bool anyDevice = std::any_of(program.ports.begin(), program.ports.end(),
                                 [](const OutlinePort& port) { return PortKind(port.type) == "device"; });
    bool anyConnectorReference =
        std::any_of(program.connectors.begin(), program.connectors.end(),
                    [](const OutlineConnector& connector) { return !connector.qualityProviders.empty(); });
    if (!anyDevice && !anyConnectorReference) {
        return {};
    }

    // Nodes are numbered in document order: the ports by name (the first of a name wins, as in
    // the library), then the connectors by name. A node's number is its place in that order.
    using Node = std::uint32_t;
    constexpr Node None = std::numeric_limits<Node>::max();
    struct NodeInfo {
        std::string_view name;
        long line = 0;
        bool asks = false;
    };
    std::vector<NodeInfo> nodes;
    nodes.reserve(program.ports.size() + program.connectors.size());
    std::unordered_map<std::string_view, Node> portNodes;
    portNodes.reserve(program.ports.size());
    std::vector<Node> nodeOfPort(program.ports.size());
    for (std::size_t i = 0; i < program.ports.size(); ++i) {
        const auto& port = program.ports[i];
        auto [found, added] = portNodes.emplace(port.name, static_cast<Node>(nodes.size()));
        if (added) {
            nodes.push_back({port.name, port.line, PortKind(port.type) == "device"});
        }
        nodeOfPort[i] = found->second;
    }
    std::vector<std::string> connectorNames;
    connectorNames.reserve(program.connectors.size());
    for (const auto& connector : program.connectors) {
        connectorNames.push_back(connector.Name());
    }
    std::unordered_map<std::string_view, Node> connectorNodes;
    connectorNodes.reserve(program.connectors.size());
    std::vector<Node> nodeOfConnector(program.connectors.size());
    for (std::size_t i = 0; i < program.connectors.size(); ++i) {
        auto [found, added] = connectorNodes.emplace(connectorNames[i], static_cast<Node>(nodes.size()));
        if (added) {
            nodes.push_back({connectorNames[i], program.connectors[i].line, false});
        }
        nodeOfConnector[i] = found->second;
    }
    auto portNode = [&](std::string_view name) {
        auto found = portNodes.find(name);
        return found != portNodes.end() ? found->second : None;
    };
    // A reference names a port first, then a connector.
    auto resolve = [&](std::string_view reference) {
        if (Node port = portNode(reference); port != None) {
            return port;
        }
        auto found = connectorNodes.find(reference);
        return found != connectorNodes.end() ? found->second : None;
    };

    // Edges consumer -> provider, in the order each consumer asks: the ports' references first,
    // then, connector by connector, its start port and references, and the edge of the device
    // port it ends in.
    std::vector<std::pair<Node, Node>> edgeList;
    for (std::size_t i = 0; i < program.ports.size(); ++i) {
        Node self = nodeOfPort[i];
        if (!nodes[self].asks) {
            continue;
        }
        for (const auto& reference : program.ports[i].qualityProviders) {
            if (Node target = resolve(reference.text); target != None) {
                edgeList.emplace_back(self, target);
            }
        }
    }
    for (std::size_t i = 0; i < program.connectors.size(); ++i) {
        const auto& connector = program.connectors[i];
        Node self = nodeOfConnector[i];
        if (Node start = portNode(PortNameOf(connector.startPort)); start != None) {
            edgeList.emplace_back(self, start);
        }
        for (const auto& reference : connector.qualityProviders) {
            if (Node target = resolve(reference.text); target != None) {
                edgeList.emplace_back(self, target);
            }
        }
        if (Node end = portNode(PortNameOf(connector.endPort)); end != None && nodes[end].asks) {
            edgeList.emplace_back(end, self);
        }
    }
    // Adjacency in one array: each node's edges in the order they were added.
    std::vector<std::size_t> firstEdge(nodes.size() + 1, 0);
    for (const auto& edge : edgeList) {
        ++firstEdge[edge.first + 1];
    }
    for (std::size_t n = 0; n < nodes.size(); ++n) {
        firstEdge[n + 1] += firstEdge[n];
    }
    std::vector<Node> targets(edgeList.size());
    {
        std::vector<std::size_t> fill(firstEdge.begin(), firstEdge.end() - 1);
        for (const auto& edge : edgeList) {
            targets[fill[edge.first]++] = edge.second;
        }
    }

    // Depth-first search in document order, with a stack of its own (no recursion, so a long
    // chain cannot exhaust the thread's stack); an edge to a node on the path closes a cycle.
    // Each cycle is reported once, by its set of members, starting at the member that comes
    // first in the document.
    enum : unsigned char { Fresh, OnPath, Done };
    std::vector<unsigned char> state(nodes.size(), Fresh);
    std::vector<std::size_t> placeOnPath(nodes.size(), 0);
    struct Frame {
        Node node;
        std::size_t nextEdge;
    };
    std::vector<Frame> path;
    std::set<std::vector<Node>> seen;
    std::vector<QualityCycle> cycles;
    auto enter = [&](Node node) {
        state[node] = OnPath;
        placeOnPath[node] = path.size();
        path.push_back({node, firstEdge[node]});
    };
    for (Node root = 0; root < nodes.size(); ++root) {
        if (state[root] != Fresh) {
            continue;
        }
        enter(root);
        while (!path.empty()) {
            Frame& frame = path.back();
            if (frame.nextEdge == firstEdge[frame.node + 1]) {
                state[frame.node] = Done;
                path.pop_back();
                continue;
            }
            Node next = targets[frame.nextEdge++];
            if (state[next] == Fresh) {
                enter(next);
            } else if (state[next] == OnPath) {
                std::vector<Node> members;
                members.reserve(path.size() - placeOnPath[next]);
                for (std::size_t k = placeOnPath[next]; k < path.size(); ++k) {
                    members.push_back(path[k].node);
                }
                std::vector<Node> key = members;
                std::sort(key.begin(), key.end());
                if (seen.insert(std::move(key)).second) {
                    std::rotate(members.begin(), std::min_element(members.begin(), members.end()), members.end());
                    QualityCycle cycle;
                    cycle.line = nodes[members.front()].line;
                    cycle.members.reserve(members.size());
                    for (Node member : members) {
                        cycle.members.emplace_back(nodes[member].name);
                    }
                    cycles.push_back(std::move(cycle));
                }
            }
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
