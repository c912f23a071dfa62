#include "VarnixBase/Sim/Graph.hpp"

#include <map>
#include <set>
#include <string>

namespace VarnixBase::Sim {

namespace {

/// A Graphviz string. Backslashes pass unchanged, so that "\n" in a label is a line break.
std::string Quote(const std::string& text)
{
    std::string out = "\"";
    for (char c : text) {
        if (c == '"') {
            out += '\\';
        }
        out += c;
    }
    return out + "\"";
}

std::string PortNameOf(const std::string& reference)
{
    return reference.substr(0, reference.find_first_of(".["));
}

} // namespace

void WriteDot(std::ostream& out, const OutlineProgram& program)
{
    out << "digraph " << Quote(program.type) << " {\n";
    out << "  rankdir=LR;\n  node [fontname=\"Helvetica\", fontsize=11];\n  edge [fontname=\"Helvetica\", fontsize=9];\n";
    std::map<std::string, std::string> portTypes;
    for (const auto& port : program.ports) {
        if (!portTypes.emplace(port.name, port.type).second) {
            continue;
        }
        std::string kind = PortKind(port.type);
        std::string shape = kind == "device" ? "doubleoctagon" : "box";
        std::string style = kind == "qualified" ? ", style=rounded" : "";
        out << "  " << Quote("port:" + port.name) << " [label=" << Quote(port.name + "\\n" + port.type)
            << ", shape=" << shape << style << "];\n";
    }
    std::set<std::string> connectorNodes;
    for (const auto& connector : program.connectors) {
        std::string from = PortNameOf(connector.startPort);
        std::string to = PortNameOf(connector.endPort);
        std::string types = PortValueType(portTypes[from]) + " -> " + PortValueType(portTypes[to]);
        bool bound = false;
        for (const auto& other : program.ports) {
            for (const auto& ref : other.qualityProviders) {
                bound = bound || ref.text == connector.Name();
            }
        }
        for (const auto& other : program.connectors) {
            for (const auto& ref : other.qualityProviders) {
                bound = bound || ref.text == connector.Name();
            }
        }
        bound = bound || !connector.qualityProviders.empty();
        std::string label = connector.type + "\\n" + types;
        if (bound && connectorNodes.insert(connector.Name()).second) {
            // A connector that takes part in quality bindings gets a point of its own on its edge.
            std::string mid = "connector:" + connector.Name();
            out << "  " << Quote(mid) << " [shape=point, width=0.08, xlabel=" << Quote(connector.Name()) << "];\n";
            out << "  " << Quote("port:" + from) << " -> " << Quote(mid) << " [label=" << Quote(label)
                << ", arrowhead=none];\n";
            out << "  " << Quote(mid) << " -> " << Quote("port:" + to) << ";\n";
        } else {
            out << "  " << Quote("port:" + from) << " -> " << Quote("port:" + to) << " [label=" << Quote(label)
                << "];\n";
        }
    }
    auto bindingSource = [&](const std::string& ref) {
        if (portTypes.count(ref) != 0) {
            return "port:" + ref;
        }
        return "connector:" + ref;
    };
    for (const auto& port : program.ports) {
        for (const auto& ref : port.qualityProviders) {
            out << "  " << Quote(bindingSource(ref.text)) << " -> " << Quote("port:" + port.name)
                << " [style=dashed, color=gray40];\n";
        }
    }
    for (const auto& connector : program.connectors) {
        for (const auto& ref : connector.qualityProviders) {
            out << "  " << Quote(bindingSource(ref.text)) << " -> " << Quote("connector:" + connector.Name())
                << " [style=dashed, color=gray40];\n";
        }
    }
    out << "}\n";
}

} // namespace VarnixBase::Sim
