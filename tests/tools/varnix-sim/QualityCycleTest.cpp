// The quality-cycle search works on node numbers and adjacency arrays. These tests keep the
// search it replaced - a walk over maps of "port:"/"connector:" keys - as the reference and
// require the same cycles, members, member order, lines and cycle order on generated programs.

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Sim/Analysis.hpp"
#include "VarnixBase/Sim/Outline.hpp"

using namespace VarnixBase::Sim;

namespace {

std::string ReferencePortNameOf(const std::string& reference)
{
    return reference.substr(0, reference.find_first_of(".["));
}

/// The earlier search, kept unchanged as the reference.
std::vector<QualityCycle> ReferenceQualityCycles(const OutlineProgram& program)
{
    std::map<std::string, long> portLines;
    std::map<std::string, bool> portAsks;
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

    std::map<std::string, std::vector<std::string>> edges;
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
        std::string start = ReferencePortNameOf(connector.startPort);
        if (portLines.count(start) != 0) {
            edges[self].push_back("port:" + start);
        }
        for (const auto& ref : connector.qualityProviders) {
            if (auto target = resolve(ref.text); !target.empty()) {
                edges[self].push_back(target);
            }
        }
        std::string end = ReferencePortNameOf(connector.endPort);
        if (portAsks.count(end) != 0 && portAsks[end]) {
            edges["port:" + end].push_back(self);
        }
    }

    std::vector<QualityCycle> cycles;
    std::set<std::set<std::string>> seen;
    std::map<std::string, int> state;
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

/// A random program over a few names, so that names repeat, references miss, a port may be named
/// like a connector ("a:b") and paths carry members and indices.
OutlineProgram RandomProgram(std::mt19937& random)
{
    static const std::vector<std::string> portNames = {"a", "b", "c", "d", "e", "f", "a:b", "b:c"};
    static const std::vector<std::string> portTypes = {"AnalogIn", "PnDeviceState", "qualified.int32", "int32",
                                                       "float64"};
    static const std::vector<std::string> suffixes = {"", "", "", ".x", "[0]", ".Value"};
    auto pick = [&](const auto& list) -> const auto& {
        return list[std::uniform_int_distribution<std::size_t>(0, list.size() - 1)(random)];
    };
    auto chance = [&](int percent) { return std::uniform_int_distribution<int>(0, 99)(random) < percent; };
    OutlineProgram program;
    long line = 1;
    int portCount = std::uniform_int_distribution<int>(0, 9)(random);
    int connectorCount = std::uniform_int_distribution<int>(0, 12)(random);
    std::vector<std::string> connectorNames;
    for (int i = 0; i < connectorCount; ++i) {
        OutlineConnector connector;
        connector.startPort = (chance(10) ? std::string("zz") : pick(portNames)) + pick(suffixes);
        connector.endPort = (chance(10) ? std::string("zz") : pick(portNames)) + pick(suffixes);
        connector.type = "copy";
        program.connectors.push_back(connector);
        connectorNames.push_back(connector.Name());
    }
    auto reference = [&]() -> std::string {
        if (!connectorNames.empty() && chance(50)) {
            return pick(connectorNames);
        }
        return chance(15) ? std::string("missing") : pick(portNames);
    };
    for (int i = 0; i < portCount; ++i) {
        OutlinePort port;
        port.name = pick(portNames);
        port.type = pick(portTypes);
        port.line = line++;
        int references = std::uniform_int_distribution<int>(0, 3)(random);
        for (int r = 0; r < references; ++r) {
            port.qualityProviders.push_back({reference(), line++});
        }
        program.ports.push_back(port);
    }
    for (auto& connector : program.connectors) {
        connector.line = line++;
        int references = chance(60) ? 0 : std::uniform_int_distribution<int>(1, 3)(random);
        for (int r = 0; r < references; ++r) {
            connector.qualityProviders.push_back({reference(), line++});
        }
    }
    return program;
}

void ExpectSameCycles(const std::vector<QualityCycle>& expected, const std::vector<QualityCycle>& actual,
                      int round)
{
    ASSERT_EQ(expected.size(), actual.size()) << "program " << round;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(expected[i].members, actual[i].members) << "program " << round << ", cycle " << i;
        EXPECT_EQ(expected[i].line, actual[i].line) << "program " << round << ", cycle " << i;
    }
}

} // namespace

TEST(QualityCycles, AgreesWithTheReferenceOnRandomPrograms)
{
    std::mt19937 random(20261123);
    std::size_t programsWithCycles = 0;
    std::size_t cyclesSeen = 0;
    for (int round = 0; round < 4000; ++round) {
        auto program = RandomProgram(random);
        auto expected = ReferenceQualityCycles(program);
        auto actual = FindQualityCycles(program);
        ExpectSameCycles(expected, actual, round);
        if (::testing::Test::HasFailure()) {
            return;
        }
        programsWithCycles += expected.empty() ? 0 : 1;
        cyclesSeen += expected.size();
    }
    // The generator must reach the interesting cases, or the comparison proves little.
    EXPECT_GT(programsWithCycles, 400u);
    EXPECT_GT(cyclesSeen, programsWithCycles);
}

TEST(QualityCycles, NoDevicePortAndNoConnectorReferenceHasNoCycle)
{
    // Connectors ask only their start ports, and plain or qualified ports ask nobody.
    OutlineProgram program;
    program.ports = {{"a", "qualified.int32", "", false, 1, {{"a:b", 2}}, {}},
                     {"b", "qualified.int32", "", false, 3, {{"a:b", 4}}, {}}};
    program.connectors = {{"a", "b", "copy", 5, {}, {}}, {"b", "a", "copy", 6, {}, {}}};
    EXPECT_TRUE(ReferenceQualityCycles(program).empty());
    EXPECT_TRUE(FindQualityCycles(program).empty());
}

TEST(QualityCycles, ALongRingOfDevicePortsIsOneCycleWithoutDeepRecursion)
{
    // Port i feeds port i+1; each device port asks the connector that ends in it, each connector
    // its start port. 20,000 ports make a path of 40,000 nodes.
    constexpr int Count = 20000;
    OutlineProgram program;
    for (int i = 0; i < Count; ++i) {
        program.ports.push_back({"p" + std::to_string(i), "AnalogIn", "", false, i + 1, {}, {}});
    }
    for (int i = 0; i < Count; ++i) {
        program.connectors.push_back(
            {"p" + std::to_string(i), "p" + std::to_string((i + 1) % Count), "scale", Count + i + 1, {}, {}});
    }
    auto cycles = FindQualityCycles(program);
    ASSERT_EQ(cycles.size(), 1u);
    ASSERT_EQ(cycles[0].members.size(), 2u * Count);
    EXPECT_EQ(cycles[0].line, 1);
    EXPECT_EQ(cycles[0].members[0], "p0");
    EXPECT_EQ(cycles[0].members[1], "p19999:p0");
    EXPECT_EQ(cycles[0].members[2], "p19999");
    EXPECT_EQ(cycles[0].members.back(), "p0:p1");
}
