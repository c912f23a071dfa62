#include "VarnixBase/Sim/Stimulus.hpp"

#include "VarnixBase/Sim/Scenario.hpp"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

#include <fmt/format.h>

namespace VarnixBase::Sim {

namespace {

bool AllDigits(const std::string& text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

std::uint64_t ParseCycle(const std::string& text, const std::string& origin)
{
    if (!AllDigits(text) || text.size() > 18) {
        throw UsageError(fmt::format("{}: cycle '{}' is not a whole number from 1 on", origin, text));
    }
    std::uint64_t cycle = std::stoull(text);
    if (cycle == 0) {
        throw UsageError(fmt::format("{}: cycles count from 1", origin));
    }
    return cycle;
}

std::vector<std::string> SplitCsvLine(const std::string& line, const std::string& origin)
{
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;
    bool wasQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quoted) {
            if (c == '"') {
                if (i + 1 < line.size() && line[i + 1] == '"') {
                    field += '"';
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                field += c;
            }
        } else if (c == '"' && field.empty() && !wasQuoted) {
            quoted = true;
            wasQuoted = true;
        } else if (c == ',') {
            fields.push_back(field);
            field.clear();
            wasQuoted = false;
        } else if (c != '\r') {
            field += c;
        }
    }
    if (quoted) {
        throw UsageError(fmt::format("{}: unterminated quote", origin));
    }
    fields.push_back(field);
    return fields;
}

std::string Trim(const std::string& text)
{
    std::size_t start = text.find_first_not_of(" \t");
    if (start == std::string::npos) {
        return std::string();
    }
    std::size_t end = text.find_last_not_of(" \t");
    return text.substr(start, end - start + 1);
}

} // namespace

StimulusEntry ParseSetOption(const std::string& text)
{
    std::string origin = "--set " + text;
    std::size_t equals = text.find('=');
    if (equals == std::string::npos) {
        throw UsageError(fmt::format("{}: expected PORT=LITERAL[@CYCLE]", origin));
    }
    StimulusEntry entry;
    entry.origin = origin;
    entry.port = text.substr(0, equals);
    if (entry.port.empty()) {
        throw UsageError(fmt::format("{}: the port name is empty", origin));
    }
    std::string rest = text.substr(equals + 1);
    std::size_t at = rest.rfind('@');
    if (at != std::string::npos && AllDigits(rest.substr(at + 1))) {
        entry.cycle = ParseCycle(rest.substr(at + 1), origin);
        rest = rest.substr(0, at);
    }
    entry.literal = rest;
    return entry;
}

namespace {

/// Reads the columns of the header line: stimuli by port name, expectations as "expect PORT",
/// "expect PORT.quality", "expect PORT.time". Returns, per column, the index into
/// `scenario.columns` of an expectation, or -1 for a stimulus (its port in `ports`).
std::vector<long> ReadHeader(const std::vector<std::string>& fields, const std::string& origin, Scenario& scenario,
                             std::vector<std::string>& ports)
{
    if (Trim(fields.front()) != "cycle" || fields.size() < 2) {
        throw UsageError(fmt::format("{}: the header must be \"cycle,PORT,...\"", origin));
    }
    std::vector<long> kinds;
    for (std::size_t i = 1; i < fields.size(); ++i) {
        std::string column = Trim(fields[i]);
        if (column.empty()) {
            throw UsageError(fmt::format("{}: column {} has no port name", origin, i + 1));
        }
        ports.push_back(column);
        if (column.rfind("expect", 0) != 0 || column.size() == 6 || (column[6] != ' ' && column[6] != '\t')) {
            kinds.push_back(-1);
            continue;
        }
        ExpectColumn expect;
        expect.name = Trim(column.substr(6));
        expect.port = expect.name;
        auto endsWith = [&](const std::string& suffix) {
            return expect.port.size() > suffix.size() &&
                   expect.port.compare(expect.port.size() - suffix.size(), suffix.size(), suffix) == 0;
        };
        if (endsWith(".quality")) {
            expect.field = ExpectedField::Quality;
            expect.port.resize(expect.port.size() - 8);
        } else if (endsWith(".time")) {
            expect.field = ExpectedField::Time;
            expect.port.resize(expect.port.size() - 5);
        }
        if (expect.port.empty()) {
            throw UsageError(fmt::format("{}: column {} \"{}\" names no port: expected \"expect PORT\", "
                                         "\"expect PORT.quality\" or \"expect PORT.time\"",
                                         origin, i + 1, column));
        }
        kinds.push_back(static_cast<long>(scenario.columns.size()));
        scenario.columns.push_back(std::move(expect));
    }
    return kinds;
}

/// The parser of stimulus files and scenarios. `strict`: cycles must rise from line to line, as a
/// scenario's rows must; a stimulus file may list them in any order.
Scenario Parse(const std::string& text, const std::string& name, bool strict)
{
    Scenario scenario;
    scenario.file = name;
    std::istringstream lines(text);
    std::string line;
    std::vector<std::string> ports;
    std::vector<long> kinds;
    std::size_t lineNumber = 0;
    std::uint64_t previous = 0;
    long previousLine = 0;
    while (std::getline(lines, line)) {
        ++lineNumber;
        std::string origin = fmt::format("{}:{}", name, lineNumber);
        std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed.front() == '#') {
            continue;
        }
        auto fields = SplitCsvLine(line, origin);
        if (ports.empty()) {
            kinds = ReadHeader(fields, origin, scenario, ports);
            scenario.headerLine = static_cast<long>(lineNumber);
            continue;
        }
        if (fields.size() > ports.size() + 1) {
            throw UsageError(fmt::format("{}: {} fields, the header has {}", origin, fields.size(), ports.size() + 1));
        }
        std::uint64_t cycle = ParseCycle(Trim(fields.front()), origin);
        if (strict && cycle == previous) {
            throw UsageError(fmt::format("{}: cycle {} appears a second time (first on line {}); a cycle may "
                                         "appear once",
                                         origin, cycle, previousLine));
        }
        if (strict && cycle < previous) {
            throw UsageError(fmt::format("{}: cycle {} is out of order: it follows cycle {}; cycles must rise "
                                         "from line to line",
                                         origin, cycle, previous));
        }
        previous = cycle;
        previousLine = static_cast<long>(lineNumber);
        ExpectationRow row;
        row.cycle = cycle;
        row.line = static_cast<long>(lineNumber);
        row.first = scenario.expectations.size();
        for (std::size_t i = 1; i < fields.size(); ++i) {
            if (fields[i].empty()) {
                continue;
            }
            if (kinds[i - 1] < 0) {
                scenario.stimuli.push_back(StimulusEntry{cycle, ports[i - 1], fields[i], origin});
            } else {
                scenario.expectations.push_back(Expectation{static_cast<std::uint32_t>(kinds[i - 1]), fields[i]});
            }
            scenario.lastCycle = std::max(scenario.lastCycle, cycle);
        }
        row.count = scenario.expectations.size() - row.first;
        if (row.count > 0) {
            scenario.rows.push_back(row);
        }
    }
    if (ports.empty()) {
        throw UsageError(fmt::format("{}: no header line \"cycle,PORT,...\"", name));
    }
    std::stable_sort(scenario.stimuli.begin(), scenario.stimuli.end(),
                     [](const StimulusEntry& a, const StimulusEntry& b) { return a.cycle < b.cycle; });
    return scenario;
}

std::string ReadFile(const std::string& path, const char* what)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw UsageError(fmt::format("{}: cannot open the {}", path, what));
    }
    std::stringstream content;
    content << stream.rdbuf();
    return content.str();
}

} // namespace

std::vector<StimulusEntry> ParseStimulus(const std::string& text, const std::string& name)
{
    return Parse(text, name, false).stimuli;
}

std::vector<StimulusEntry> LoadStimulusFile(const std::string& path)
{
    return ParseStimulus(ReadFile(path, "stimulus file"), path);
}

Scenario ParseScenario(const std::string& text, const std::string& name)
{
    return Parse(text, name, true);
}

Scenario LoadScenario(const std::string& path)
{
    return ParseScenario(ReadFile(path, "scenario"), path);
}

} // namespace VarnixBase::Sim
