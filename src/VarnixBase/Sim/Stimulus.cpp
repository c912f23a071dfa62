#include "VarnixBase/Sim/Stimulus.hpp"

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

std::vector<StimulusEntry> ParseStimulus(const std::string& text, const std::string& name)
{
    std::vector<StimulusEntry> entries;
    std::istringstream lines(text);
    std::string line;
    std::vector<std::string> ports;
    std::size_t lineNumber = 0;
    while (std::getline(lines, line)) {
        ++lineNumber;
        std::string origin = fmt::format("{}:{}", name, lineNumber);
        std::string trimmed = Trim(line);
        if (trimmed.empty() || trimmed.front() == '#') {
            continue;
        }
        auto fields = SplitCsvLine(line, origin);
        if (ports.empty()) {
            if (Trim(fields.front()) != "cycle" || fields.size() < 2) {
                throw UsageError(fmt::format("{}: the header must be \"cycle,PORT,...\"", origin));
            }
            for (std::size_t i = 1; i < fields.size(); ++i) {
                std::string port = Trim(fields[i]);
                if (port.empty()) {
                    throw UsageError(fmt::format("{}: column {} has no port name", origin, i + 1));
                }
                ports.push_back(port);
            }
            continue;
        }
        if (fields.size() > ports.size() + 1) {
            throw UsageError(fmt::format("{}: {} fields, the header has {}", origin, fields.size(), ports.size() + 1));
        }
        std::uint64_t cycle = ParseCycle(Trim(fields.front()), origin);
        for (std::size_t i = 1; i < fields.size(); ++i) {
            if (fields[i].empty()) {
                continue;
            }
            entries.push_back(StimulusEntry{cycle, ports[i - 1], fields[i], origin});
        }
    }
    if (ports.empty()) {
        throw UsageError(fmt::format("{}: no header line \"cycle,PORT,...\"", name));
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const StimulusEntry& a, const StimulusEntry& b) { return a.cycle < b.cycle; });
    return entries;
}

std::vector<StimulusEntry> LoadStimulusFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw UsageError(fmt::format("{}: cannot open the stimulus file", path));
    }
    std::stringstream content;
    content << stream.rdbuf();
    return ParseStimulus(content.str(), path);
}

} // namespace VarnixBase::Sim
