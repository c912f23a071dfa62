#include "VarnixBase/Sim/Trace.hpp"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iomanip>
#include <sstream>

#include <fmt/format.h>

#include "VarnixBase/Sim/HtmlReport.hpp"

namespace VarnixBase::Sim {

namespace {

std::string CsvField(const std::string& text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (char c : text) {
        quoted += c;
        if (c == '"') {
            quoted += '"';
        }
    }
    return quoted + "\"";
}

std::string JsonString(const std::string& text)
{
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20) {
                out += fmt::format("\\u{:04x}", c);
            } else {
                out += static_cast<char>(c);
            }
        }
    }
    return out + "\"";
}

std::string FormatTime(std::int64_t micros)
{
    // Milliseconds with three decimals, relative to nothing: the writer shows controller time.
    return fmt::format("{}.{:03}", micros / 1000, std::abs(micros % 1000));
}

/// A readable table: one row per cycle; a column per port value and per port quality.
class TableWriter : public TraceWriter {
public:
    explicit TableWriter(std::ostream& out) : out(out) {}

    void Begin(const std::vector<TraceColumn>& traced) override
    {
        columns = traced;
        // Rows are written as the run goes, so widths come from the header and the kind of value:
        // wide enough for the common cases, and a longer cell simply pushes its row to the right.
        headers = {"cycle", "time ms"};
        widths = {8, 10};
        for (const auto& column : columns) {
            headers.push_back(column.name);
            std::size_t valueWidth = column.kind == ValueKind::Real ? 12 : column.kind == ValueKind::Text ? 16 : 8;
            widths.push_back(std::max(column.name.size(), valueWidth));
            if (column.hasQuality) {
                headers.push_back(fmt::format("{} quality", column.name));
                widths.push_back(std::max<std::size_t>(headers.back().size(), 17));
            }
        }
        WriteRow(headers);
        std::vector<std::string> rule;
        for (std::size_t width : widths) {
            rule.push_back(std::string(width, '-'));
        }
        WriteRow(rule);
    }

    void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) override
    {
        if (firstTime < 0) {
            firstTime = time;
        }
        std::vector<std::string> row = {std::to_string(cycle), FormatTime(time - firstTime)};
        for (std::size_t i = 0; i < columns.size() && i < samples.size(); ++i) {
            row.push_back(samples[i].value);
            if (columns[i].hasQuality) {
                row.push_back(samples[i].quality);
            }
        }
        WriteRow(row);
    }

    void End() override { out.flush(); }

private:
    void WriteRow(const std::vector<std::string>& cells)
    {
        std::string line;
        for (std::size_t i = 0; i < cells.size(); ++i) {
            std::size_t width = i < widths.size() ? widths[i] : cells[i].size();
            if (i > 0) {
                line += "  ";
            }
            // Numbers right-aligned, texts left-aligned.
            bool numeric = !cells[i].empty() && (std::isdigit(static_cast<unsigned char>(cells[i][0])) ||
                                                 (cells[i][0] == '-' && cells[i].size() > 1 &&
                                                  std::isdigit(static_cast<unsigned char>(cells[i][1]))));
            if (cells[i].size() < width) {
                std::string pad(width - cells[i].size(), ' ');
                line += numeric ? pad + cells[i] : cells[i] + pad;
            } else {
                line += cells[i];
            }
        }
        while (!line.empty() && line.back() == ' ') {
            line.pop_back();
        }
        out << line << '\n';
    }

    std::ostream& out;
    std::vector<TraceColumn> columns;
    std::vector<std::string> headers;
    std::vector<std::size_t> widths;
    std::int64_t firstTime = -1;
};

/// Comma-separated values with a header line: cycle, time in microseconds, then per port its value
/// and, where it has them, quality and time stamp.
class CsvWriter : public TraceWriter {
public:
    explicit CsvWriter(std::ostream& out) : out(out) {}

    void Begin(const std::vector<TraceColumn>& traced) override
    {
        columns = traced;
        out << "cycle,time_us";
        for (const auto& column : columns) {
            out << ',' << CsvField(column.name);
            if (column.hasQuality) {
                out << ',' << CsvField(fmt::format("{}.quality", column.name));
            }
            if (column.hasTimestamp) {
                out << ',' << CsvField(fmt::format("{}.timestamp_us", column.name));
            }
        }
        out << '\n';
    }

    void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) override
    {
        out << cycle << ',' << time;
        for (std::size_t i = 0; i < columns.size() && i < samples.size(); ++i) {
            out << ',' << CsvField(samples[i].value);
            if (columns[i].hasQuality) {
                out << ',' << CsvField(samples[i].quality);
            }
            if (columns[i].hasTimestamp) {
                out << ',' << samples[i].timestamp;
            }
        }
        out << '\n';
    }

    void End() override { out.flush(); }

private:
    std::ostream& out;
    std::vector<TraceColumn> columns;
};

/// One JSON object per line and cycle: {"cycle":..,"time_us":..,"ports":{"name":{"value":..}}}.
class JsonlWriter : public TraceWriter {
public:
    explicit JsonlWriter(std::ostream& out) : out(out) {}

    void Begin(const std::vector<TraceColumn>& traced) override { columns = traced; }

    void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) override
    {
        out << "{\"cycle\":" << cycle << ",\"time_us\":" << time << ",\"ports\":{";
        for (std::size_t i = 0; i < columns.size() && i < samples.size(); ++i) {
            if (i > 0) {
                out << ',';
            }
            out << JsonString(columns[i].name) << ":{\"value\":" << JsonValue(columns[i], samples[i].value);
            if (columns[i].hasQuality) {
                out << ",\"quality\":" << JsonString(samples[i].quality);
            }
            if (columns[i].hasTimestamp) {
                out << ",\"timestamp_us\":" << samples[i].timestamp;
            }
            out << '}';
        }
        out << "}}\n";
    }

    void End() override { out.flush(); }

private:
    static std::string JsonValue(const TraceColumn& column, const std::string& value)
    {
        switch (column.kind) {
        case ValueKind::Bool:
            return value == "true" ? "true" : "false";
        case ValueKind::Signed:
        case ValueKind::Unsigned:
            return value;
        case ValueKind::Real:
            // JSON has no NaN or infinity: those travel as strings.
            if (value.find_first_of("0123456789") == std::string::npos || value.find("inf") != std::string::npos) {
                return JsonString(value);
            }
            return value;
        case ValueKind::Text:
            return JsonString(value);
        }
        return JsonString(value);
    }

    std::ostream& out;
    std::vector<TraceColumn> columns;
};

/// A value change dump for waveform viewers: integers as bit vectors, reals as real variables,
/// texts and qualities as string variables. Only changes are written.
class VcdWriter : public TraceWriter {
public:
    explicit VcdWriter(std::ostream& out) : out(out) {}

    void Begin(const std::vector<TraceColumn>& traced) override
    {
        columns = traced;
        out << "$date varnix-sim $end\n$version varnix-sim $end\n$timescale 1us $end\n";
        out << "$scope module program $end\n";
        std::size_t id = 0;
        for (const auto& column : columns) {
            valueIds.push_back(Identifier(id++));
            out << "$var " << VarType(column) << ' ' << VarWidth(column) << ' ' << valueIds.back() << ' '
                << Sanitize(column.name) << " $end\n";
            if (column.hasQuality) {
                qualityIds.push_back(Identifier(id++));
                out << "$var string 1 " << qualityIds.back() << ' ' << Sanitize(column.name) << ".quality $end\n";
            } else {
                qualityIds.push_back(std::string());
            }
        }
        out << "$upscope $end\n$enddefinitions $end\n";
        lastValues.assign(columns.size(), std::string());
        lastQualities.assign(columns.size(), std::string());
        started = false;
    }

    void Cycle(std::uint64_t, std::int64_t time, const std::vector<TraceSample>& samples) override
    {
        if (!started) {
            origin = time;
        }
        out << '#' << (time - origin) << '\n';
        for (std::size_t i = 0; i < columns.size() && i < samples.size(); ++i) {
            if (!started || samples[i].value != lastValues[i]) {
                out << Change(columns[i], samples[i].value, valueIds[i]) << '\n';
                lastValues[i] = samples[i].value;
            }
            if (columns[i].hasQuality && (!started || samples[i].quality != lastQualities[i])) {
                out << 's' << Sanitize(samples[i].quality) << ' ' << qualityIds[i] << '\n';
                lastQualities[i] = samples[i].quality;
            }
        }
        started = true;
    }

    void End() override { out.flush(); }

private:
    static std::string Identifier(std::size_t index)
    {
        // Printable ASCII from '!' to '~', as many characters as needed.
        std::string id;
        do {
            id += static_cast<char>('!' + index % 94);
            index /= 94;
        } while (index > 0);
        return id;
    }

    static std::string Sanitize(const std::string& text)
    {
        std::string out = text.empty() ? std::string("-") : text;
        for (char& c : out) {
            if (c == ' ' || c == '\t' || c == '\n' || c == '\r') {
                c = '_';
            }
        }
        return out;
    }

    static const char* VarType(const TraceColumn& column)
    {
        switch (column.kind) {
        case ValueKind::Bool: return "wire";
        case ValueKind::Signed:
        case ValueKind::Unsigned: return "integer";
        case ValueKind::Real: return "real";
        case ValueKind::Text: return "string";
        }
        return "wire";
    }

    static unsigned VarWidth(const TraceColumn& column)
    {
        switch (column.kind) {
        case ValueKind::Bool: return 1;
        case ValueKind::Real: return 64;
        case ValueKind::Text: return 1;
        default: return column.bits;
        }
    }

    static std::string Change(const TraceColumn& column, const std::string& value, const std::string& id)
    {
        switch (column.kind) {
        case ValueKind::Bool:
            return fmt::format("{}{}", value == "true" ? '1' : '0', id);
        case ValueKind::Signed:
        case ValueKind::Unsigned: {
            unsigned long long bits = 0;
            try {
                bits = column.kind == ValueKind::Signed ? static_cast<unsigned long long>(std::stoll(value))
                                                        : std::stoull(value);
            } catch (...) {
                return "bx " + id;
            }
            if (column.bits < 64) {
                bits &= (1ull << column.bits) - 1;
            }
            std::string binary;
            for (int bit = static_cast<int>(column.bits) - 1; bit >= 0; --bit) {
                if (!binary.empty() || ((bits >> bit) & 1) != 0 || bit == 0) {
                    binary += ((bits >> bit) & 1) != 0 ? '1' : '0';
                }
            }
            return fmt::format("b{} {}", binary, id);
        }
        case ValueKind::Real:
            return fmt::format("r{} {}", value, id);
        case ValueKind::Text:
            return fmt::format("s{} {}", Sanitize(value), id);
        }
        return fmt::format("x{}", id);
    }

    std::ostream& out;
    std::vector<TraceColumn> columns;
    std::vector<std::string> valueIds;
    std::vector<std::string> qualityIds;
    std::vector<std::string> lastValues;
    std::vector<std::string> lastQualities;
    std::int64_t origin = 0;
    bool started = false;
};

} // namespace

bool TryParseTraceFormat(const std::string& text, TraceFormat& format)
{
    if (text == "table") {
        format = TraceFormat::Table;
    } else if (text == "csv") {
        format = TraceFormat::Csv;
    } else if (text == "jsonl") {
        format = TraceFormat::Jsonl;
    } else if (text == "vcd") {
        format = TraceFormat::Vcd;
    } else if (text == "html") {
        format = TraceFormat::Html;
    } else {
        return false;
    }
    return true;
}

std::unique_ptr<TraceWriter> MakeTraceWriter(TraceFormat format, std::ostream& out)
{
    switch (format) {
    case TraceFormat::Table: return std::make_unique<TableWriter>(out);
    case TraceFormat::Csv: return std::make_unique<CsvWriter>(out);
    case TraceFormat::Jsonl: return std::make_unique<JsonlWriter>(out);
    case TraceFormat::Vcd: return std::make_unique<VcdWriter>(out);
    case TraceFormat::Html: return MakeHtmlTraceWriter(out);
    }
    return nullptr;
}

} // namespace VarnixBase::Sim
