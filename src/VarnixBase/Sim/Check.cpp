#include "VarnixBase/Sim/Check.hpp"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <regex>
#include <set>

#include <fmt/format.h>

#include "VarnixBase/Sim/Analysis.hpp"
#include "VarnixBase/Sim/Simulation.hpp"

namespace VarnixBase::Sim {

using Zon::System::Commons::Diagnostics::Logging::LogEntry;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

/// The first text between backticks in `message` after `prefix`, or "".
std::string Quoted(const std::string& message, std::size_t from = 0)
{
    std::size_t open = message.find('`', from);
    if (open == std::string::npos) {
        return std::string();
    }
    std::size_t close = message.find('`', open + 1);
    return close == std::string::npos ? std::string() : message.substr(open + 1, close - open - 1);
}

bool StartsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

struct Cursor {
    explicit Cursor(const OutlineProgram& program) : program(program) {}

    const OutlineProgram& program;
    std::size_t port = 0;
    std::size_t connector = 0;
    std::set<const OutlineParameter*> boundParameters;
    const OutlineParameter* lastBound = nullptr;
    std::set<const OutlineReference*> usedReferences;

    std::vector<const OutlineParameter*> RefParameters() const
    {
        std::vector<const OutlineParameter*> result;
        for (const auto& port : program.ports) {
            for (const auto& parameter : port.parameters) {
                if (!parameter.ref.empty()) {
                    result.push_back(&parameter);
                }
            }
        }
        for (const auto& connector : program.connectors) {
            for (const auto& parameter : connector.parameters) {
                if (!parameter.ref.empty()) {
                    result.push_back(&parameter);
                }
            }
        }
        return result;
    }

    const OutlineParameter* NextRefParameter(const std::string& name)
    {
        for (const auto* parameter : RefParameters()) {
            if (boundParameters.count(parameter) == 0 && (name.empty() || parameter->name == name)) {
                boundParameters.insert(parameter);
                return parameter;
            }
        }
        return nullptr;
    }

    const OutlineReference* NextQualityReference(const std::string& ref)
    {
        auto take = [&](const std::vector<OutlineReference>& references) -> const OutlineReference* {
            for (const auto& reference : references) {
                if (usedReferences.count(&reference) == 0 && reference.text == ref) {
                    usedReferences.insert(&reference);
                    return &reference;
                }
            }
            return nullptr;
        };
        for (const auto& port : program.ports) {
            if (const auto* found = take(port.qualityProviders)) {
                return found;
            }
        }
        for (const auto& connector : program.connectors) {
            if (const auto* found = take(connector.qualityProviders)) {
                return found;
            }
        }
        return nullptr;
    }
};

template <class Owner>
long ParameterLine(const Owner& owner, const std::string& message)
{
    std::string name = Quoted(message);
    for (const auto& parameter : owner.parameters) {
        if (parameter.name == name) {
            return parameter.line;
        }
    }
    return owner.line;
}

} // namespace

std::vector<Problem> AttributeLog(const DocumentOutline& outline, const OutlineProgram& program,
                                  const std::vector<LogEntry>& log)
{
    static const std::regex unknownAttribute("^(\\w+) attribute is unknown: `(.*)`$");
    std::vector<Problem> problems;
    Cursor cursor(program);
    std::set<std::size_t> usedElements;
    enum class Phase { Document, Ports, Connectors, Parameters, Qualities } phase = Phase::Document;

    for (const auto& entry : log) {
        const std::string& message = entry.message;
        if (entry.level == LogLevel::Info) {
            if (StartsWith(message, "Add ") && message.find(" ports to `") != std::string::npos) {
                phase = Phase::Ports;
            } else if (StartsWith(message, "Add ") && message.find(" connectors inside `") != std::string::npos) {
                phase = Phase::Connectors;
            } else if (StartsWith(message, "Bind ") && message.find(" parameters in `") != std::string::npos) {
                phase = Phase::Parameters;
            } else if (StartsWith(message, "Bind ") && message.find(" quality providers in `") != std::string::npos) {
                phase = Phase::Qualities;
            }
            continue;
        }
        if (entry.level == LogLevel::Debug) {
            if (phase == Phase::Ports && StartsWith(message, "Add port `")) {
                ++cursor.port;
            } else if (phase == Phase::Connectors && StartsWith(message, "Add `") &&
                       message.find("` connector `") != std::string::npos) {
                ++cursor.connector;
            } else if (phase == Phase::Parameters && StartsWith(message, "Bind parameter `")) {
                cursor.lastBound = cursor.NextRefParameter(Quoted(message));
            } else if (phase == Phase::Qualities && StartsWith(message, "Add quality provider ")) {
                std::string ref = message.substr(std::strlen("Add quality provider "));
                ref = ref.substr(0, ref.rfind(" to `"));
                cursor.NextQualityReference(ref);
            }
            continue;
        }
        if (entry.level != LogLevel::Error && entry.level != LogLevel::Warning) {
            continue;
        }
        Problem problem;
        problem.severity = entry.level == LogLevel::Error ? "error" : "warning";
        problem.message = message;
        problem.line = program.line;
        std::smatch match;
        if (std::regex_match(message, match, unknownAttribute)) {
            for (std::size_t i = 0; i < outline.elements.size(); ++i) {
                const auto& element = outline.elements[i];
                if (usedElements.count(i) == 0 && element.kind == match[1].str() &&
                    std::find(element.attributes.begin(), element.attributes.end(), match[2].str()) !=
                        element.attributes.end()) {
                    usedElements.insert(i);
                    problem.line = element.line;
                    break;
                }
            }
        } else if (message == "Port dimension other than 1 is currently not supported") {
            for (std::size_t i = 0; i < outline.elements.size(); ++i) {
                const auto& element = outline.elements[i];
                if (usedElements.count(i) == 0 && element.kind == "Port" &&
                    std::find(element.attributes.begin(), element.attributes.end(), "dimensions") !=
                        element.attributes.end()) {
                    usedElements.insert(i);
                    problem.line = element.line;
                    break;
                }
            }
        } else if (StartsWith(message, "Load configuration for `")) {
            problem.line = 0;
        } else if (phase == Phase::Ports && cursor.port < program.ports.size()) {
            const auto& port = program.ports[cursor.port];
            if (StartsWith(message, "Parameter `")) {
                problem.line = ParameterLine(port, message);
            } else {
                problem.line = port.line;
                ++cursor.port;
            }
        } else if (phase == Phase::Connectors && cursor.connector < program.connectors.size()) {
            const auto& connector = program.connectors[cursor.connector];
            if (StartsWith(message, "Parameter `")) {
                problem.line = ParameterLine(connector, message);
            } else {
                problem.line = connector.line;
                ++cursor.connector;
            }
        } else if (phase == Phase::Parameters) {
            const OutlineParameter* parameter = nullptr;
            if (StartsWith(message, "Unable to bind parameter `")) {
                parameter = cursor.lastBound;
            } else if (StartsWith(message, "Parameter `")) {
                parameter = cursor.NextRefParameter(Quoted(message));
            } else {
                parameter = cursor.NextRefParameter(std::string());
            }
            if (parameter != nullptr) {
                problem.line = parameter->line;
            }
        } else if (phase == Phase::Qualities && StartsWith(message, "Quality provider reference `")) {
            if (const auto* reference = cursor.NextQualityReference(Quoted(message))) {
                problem.line = reference->line;
            }
        }
        problems.push_back(problem);
    }
    return problems;
}

std::vector<Problem> QualityCycleProblems(const OutlineProgram& program)
{
    std::vector<Problem> problems;
    for (const auto& cycle : FindQualityCycles(program)) {
        std::string members;
        for (const auto& member : cycle.members) {
            members += member + " -> ";
        }
        members += cycle.members.front();
        problems.push_back({"error", cycle.line,
                            fmt::format("quality providers form a cycle: {}; reading a quality would recurse without end",
                                        members)});
    }
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    return problems;
}

std::vector<Problem> CollectProblems(Simulation& simulation)
{
    const auto& program = simulation.GetProgramOutline();
    auto problems = AttributeLog(simulation.GetOutline(), program, simulation.GetLog());
    std::string verdict = simulation.Complete();
    if (!verdict.empty()) {
        problems.push_back({"error", program.line, verdict});
    }
    for (auto& cycle : QualityCycleProblems(program)) {
        problems.push_back(std::move(cycle));
    }
    for (const auto& dimension : FindDimensionProblems(program)) {
        problems.push_back({"warning", dimension.line,
                            fmt::format("port `{}` has dimension {}; only 1 is supported, a port holds one value",
                                        dimension.port, dimension.dimensions)});
    }
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.line < b.line; });
    return problems;
}

std::string AbbreviateQuoted(const std::string& message)
{
    std::string result;
    std::size_t from = 0;
    while (from < message.size()) {
        std::size_t open = message.find('`', from);
        std::size_t close = open == std::string::npos ? std::string::npos : message.find('`', open + 1);
        if (close == std::string::npos) {
            result.append(message, from, std::string::npos);
            break;
        }
        std::size_t length = close - open - 1;
        result.append(message, from, open + 1 - from);
        if (length > MaxQuotedLength) {
            // The shown start ends on a character boundary of UTF-8.
            std::size_t shown = AbbreviatedLength;
            while (shown > 0 && (static_cast<unsigned char>(message[open + 1 + shown]) & 0xC0U) == 0x80U) {
                --shown;
            }
            result += fmt::format("{}...({} bytes)", message.substr(open + 1, shown), length);
        } else {
            result.append(message, open + 1, length);
        }
        result += '`';
        from = close + 1;
    }
    return result;
}

void WriteProblems(std::ostream& out, const std::string& file, const std::vector<Problem>& problems)
{
    for (const auto& problem : problems) {
        std::string message = AbbreviateQuoted(problem.message);
        if (problem.line > 0) {
            out << fmt::format("{}:{}: {}: {}\n", file, problem.line, problem.severity, message);
        } else {
            out << fmt::format("{}: {}: {}\n", file, problem.severity, message);
        }
    }
}

} // namespace VarnixBase::Sim
