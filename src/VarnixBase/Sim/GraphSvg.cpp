#include "VarnixBase/Sim/GraphSvg.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <unistd.h>

#include <fmt/format.h>

#include "VarnixBase/Sim/Graph.hpp"
#include "VarnixBase/Sim/SvgPlot.hpp"

namespace VarnixBase::Sim {

namespace {

std::string PortNameOf(const std::string& reference)
{
    return reference.substr(0, reference.find_first_of(".["));
}

/// A temporary file removed when it goes out of scope.
class TemporaryFile {
public:
    TemporaryFile()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "varnix-sim-graph-XXXXXX").string();
        int descriptor = ::mkstemp(pattern.data());
        if (descriptor >= 0) {
            ::close(descriptor);
            path = pattern;
        }
    }
    ~TemporaryFile()
    {
        if (!path.empty()) {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    std::string path;
};

struct Box {
    double x = 0, y = 0;
    std::string kind;
};

constexpr double NodeWidth = 170;
constexpr double NodeHeight = 44;
constexpr double ColumnStep = 270;
constexpr double RowStep = 80;
constexpr double Margin = 20;

} // namespace

std::string DotGraphSvg(const OutlineProgram& program)
{
    if (std::system("command -v dot >/dev/null 2>&1") != 0) {
        return std::string();
    }
    TemporaryFile input;
    if (input.path.empty()) {
        return std::string();
    }
    {
        std::ofstream file(input.path, std::ios::binary | std::ios::trunc);
        WriteDot(file, program);
        if (!file) {
            return std::string();
        }
    }
    // The temporary name is ours (letters, digits, '/', '-', '_' and '.'), so it needs no quoting
    // beyond the single quotes.
    std::string command = fmt::format("timeout 60 dot -Tsvg '{}' 2>/dev/null", input.path);
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return std::string();
    }
    std::string svg;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0) {
        svg.append(buffer, got);
    }
    if (::pclose(pipe) != 0) {
        return std::string();
    }
    // Inline in a page the document prolog goes, and so do the namespace declarations, which the
    // HTML parser supplies itself.
    std::size_t start = svg.find("<svg");
    std::size_t end = svg.rfind("</svg>");
    if (start == std::string::npos || end == std::string::npos || end < start) {
        return std::string();
    }
    svg = svg.substr(start, end + 6 - start);
    std::size_t tagEnd = svg.find('>');
    std::string tag = svg.substr(0, tagEnd);
    tag = std::regex_replace(tag, std::regex(" xmlns(:xlink)?=\"[^\"]*\""), "");
    tag = std::regex_replace(tag, std::regex("\\s+"), " ");
    return tag + " class=\"graph dot\"" + svg.substr(tagEnd);
}

std::string PlainGraphSvg(const OutlineProgram& program)
{
    // Ports in document order, the first entry of a name winning as in the library.
    std::vector<std::string> names;
    std::map<std::string, std::string> types;
    for (const auto& port : program.ports) {
        if (types.emplace(port.name, port.type).second) {
            names.push_back(port.name);
        }
    }
    // Column of a port: the longest chain of connectors that leads to it. Relaxing at most once per
    // port keeps a loop of connectors from running on.
    std::map<std::string, std::size_t> rank;
    for (const auto& name : names) {
        rank[name] = 0;
    }
    for (std::size_t round = 0; round < names.size(); ++round) {
        bool changed = false;
        for (const auto& connector : program.connectors) {
            auto from = rank.find(PortNameOf(connector.startPort));
            auto to = rank.find(PortNameOf(connector.endPort));
            if (from != rank.end() && to != rank.end() && from != to && to->second < from->second + 1 &&
                from->second + 1 < names.size()) {
                to->second = from->second + 1;
                changed = true;
            }
        }
        if (!changed) {
            break;
        }
    }
    std::map<std::string, Box> boxes;
    std::map<std::size_t, std::size_t> rows;
    double width = Margin, height = Margin;
    for (const auto& name : names) {
        std::size_t column = rank[name];
        std::size_t row = rows[column]++;
        Box box;
        box.x = Margin + static_cast<double>(column) * ColumnStep;
        box.y = Margin + static_cast<double>(row) * RowStep;
        box.kind = PortKind(types[name]);
        width = std::max(width, box.x + NodeWidth + Margin);
        height = std::max(height, box.y + NodeHeight + Margin);
        boxes[name] = box;
    }

    std::string body;
    std::map<std::string, std::pair<double, double>> connectorMiddles;
    for (const auto& connector : program.connectors) {
        auto from = boxes.find(PortNameOf(connector.startPort));
        auto to = boxes.find(PortNameOf(connector.endPort));
        if (from == boxes.end() || to == boxes.end()) {
            continue;
        }
        double x1 = from->second.x + NodeWidth, y1 = from->second.y + NodeHeight / 2;
        double x2 = to->second.x, y2 = to->second.y + NodeHeight / 2;
        std::string path;
        double mx = (x1 + x2) / 2, my = (y1 + y2) / 2;
        if (x2 > x1) {
            path = fmt::format("M{:.1f} {:.1f}L{:.1f} {:.1f}", x1, y1, x2, y2);
        } else {
            // Back or within a column: around beneath the boxes.
            double below = std::max(from->second.y, to->second.y) + NodeHeight + RowStep / 2;
            x1 = from->second.x + NodeWidth / 2;
            y1 = from->second.y + NodeHeight;
            x2 = to->second.x + NodeWidth / 2;
            y2 = to->second.y + NodeHeight;
            path = fmt::format("M{:.1f} {:.1f}C{:.1f} {:.1f} {:.1f} {:.1f} {:.1f} {:.1f}", x1, y1, x1, below, x2, below,
                               x2, y2);
            mx = (x1 + x2) / 2;
            my = below - RowStep / 8;
            height = std::max(height, below + Margin);
        }
        connectorMiddles[connector.Name()] = {mx, my};
        std::string types2 = PortValueType(types[from->first]) + " -> " + PortValueType(types[to->first]);
        body += fmt::format("<g class=\"edge\"><title>{}</title><path d=\"{}\" marker-end=\"url(#graph-arrow)\"/>"
                            "<text x=\"{:.1f}\" y=\"{:.1f}\">{}</text><text x=\"{:.1f}\" y=\"{:.1f}\">{}</text></g>",
                            EscapeXml(connector.Name()), path, mx, my - 14, EscapeXml(connector.type), mx, my - 3,
                            EscapeXml(types2));
    }
    auto anchor = [&](const std::string& reference, bool consumer) -> std::pair<double, double> {
        auto box = boxes.find(reference);
        if (box != boxes.end()) {
            return {box->second.x + NodeWidth / 2, box->second.y + (consumer ? 0 : NodeHeight)};
        }
        auto middle = connectorMiddles.find(reference);
        if (middle != connectorMiddles.end()) {
            return middle->second;
        }
        return {-1, -1};
    };
    auto binding = [&](const std::string& provider, const std::string& consumer) {
        auto [x1, y1] = anchor(provider, false);
        auto [x2, y2] = anchor(consumer, true);
        if (x1 < 0 || x2 < 0) {
            return;
        }
        body += fmt::format("<g class=\"binding\"><title>quality of {} from {}</title>"
                            "<path d=\"M{:.1f} {:.1f}L{:.1f} {:.1f}\" marker-end=\"url(#graph-arrow)\"/></g>",
                            EscapeXml(consumer), EscapeXml(provider), x1, y1, x2, y2);
    };
    for (const auto& port : program.ports) {
        for (const auto& reference : port.qualityProviders) {
            binding(reference.text, port.name);
        }
    }
    for (const auto& connector : program.connectors) {
        for (const auto& reference : connector.qualityProviders) {
            binding(reference.text, connector.Name());
        }
    }
    for (const auto& name : names) {
        const Box& box = boxes[name];
        double radius = box.kind == "qualified" ? 10 : 0;
        body += fmt::format("<g class=\"node {}\"><title>{}: {}</title>", box.kind, EscapeXml(name),
                            EscapeXml(types[name]));
        body += fmt::format("<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{}\" height=\"{}\" rx=\"{}\"/>", box.x, box.y,
                            NodeWidth, NodeHeight, radius);
        if (box.kind == "device") {
            body += fmt::format("<rect x=\"{:.1f}\" y=\"{:.1f}\" width=\"{}\" height=\"{}\"/>", box.x + 3, box.y + 3,
                                NodeWidth - 6, NodeHeight - 6);
        }
        body += fmt::format("<text class=\"name\" x=\"{:.1f}\" y=\"{:.1f}\">{}</text>"
                            "<text x=\"{:.1f}\" y=\"{:.1f}\">{}</text></g>",
                            box.x + NodeWidth / 2, box.y + 19, EscapeXml(name), box.x + NodeWidth / 2, box.y + 34,
                            EscapeXml(types[name]));
    }
    return fmt::format("<svg class=\"graph plain\" viewBox=\"0 0 {0:.0f} {1:.0f}\" width=\"{0:.0f}\" height=\"{1:.0f}\" "
                       "role=\"img\" aria-label=\"{2}\"><defs><marker id=\"graph-arrow\" viewBox=\"0 0 10 10\" "
                       "refX=\"10\" refY=\"5\" markerWidth=\"7\" markerHeight=\"7\" orient=\"auto\">"
                       "<path d=\"M0 0L10 5L0 10z\"/></marker></defs>{3}</svg>",
                       width, height, EscapeXml("program " + program.type), body);
}

std::string GraphSvg(const OutlineProgram& program)
{
    std::string svg = DotGraphSvg(program);
    return svg.empty() ? PlainGraphSvg(program) : svg;
}

} // namespace VarnixBase::Sim
