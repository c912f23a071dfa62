#include "VarnixBase/Sim/Scenario.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <unordered_map>

#include <fmt/format.h>

#include "VarnixBase/Commons/Iec61131/Convert.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"
#include "VarnixBase/Sim/Probe.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "Zon/EnumStrings.hpp"

namespace VarnixBase::Sim {

using VarnixBase::Commons::Iec61131::Convert;
using VarnixBase::Core::QualitySystem::Quality;
using VarnixBase::Core::QualitySystem::QualityFlags;
using VarnixBase::Core::QualitySystem::QualityState;

namespace {

/// How an expected time stamp was written, so that the actual one is shown alike.
enum class TimeForm { SinceStart, SinceEpoch };

/// One expectation, bound to its port's probe before the run, so that checking it parses, formats,
/// locks and allocates nothing. Expectations with the same text in the same column share one.
struct Check {
    std::size_t probe = 0; ///< index into the probes of the columns
    ExpectedField field = ExpectedField::Value;
    ValueKind kind = ValueKind::Signed;
    long double value = 0;
    long double tolerance = 0;
    Quality quality;
    TimeForm timeForm = TimeForm::SinceStart;
    /// The first expectation with this text in this column: what a failure says was expected.
    const Expectation* expectation = nullptr;
};

struct Compiled {
    /// Every port of the program, held for the run: the probes' plain readers need them alive.
    std::vector<std::shared_ptr<VarnixBase::Core::PortSystem::IPort>> ports;
    std::vector<PortProbe> probes; ///< one per column
    std::vector<Check> checks;     ///< one per distinct column and text
    /// Per column, the entries in `checks` of its expectations in order, as runs of one entry: a
    /// long scenario mostly expects again what it expected on the line before.
    struct Run {
        std::uint32_t check = 0;
        std::uint32_t count = 0;
    };
    std::vector<std::vector<Run>> runs;
    std::uint64_t cycles = 0;

    void Add(std::uint32_t column, std::uint32_t check)
    {
        auto& columnRuns = runs[column];
        if (!columnRuns.empty() && columnRuns.back().check == check &&
            columnRuns.back().count < std::numeric_limits<std::uint32_t>::max()) {
            ++columnRuns.back().count;
        } else {
            columnRuns.push_back({check, 1});
        }
    }
};

/// Walks the runs of `Compiled` column by column, in the order of the scenario's expectations.
class CheckCursor {
public:
    explicit CheckCursor(const Compiled& compiled) : compiled(compiled), positions(compiled.runs.size()) {}

    /// The check of the next expectation in `column`.
    const Check& Next(std::uint32_t column)
    {
        auto& position = positions[column];
        const auto& run = compiled.runs[column][position.run];
        if (++position.used == run.count) {
            ++position.run;
            position.used = 0;
        }
        return compiled.checks[run.check];
    }

private:
    struct Position {
        std::size_t run = 0;
        std::uint32_t used = 0;
    };
    const Compiled& compiled;
    std::vector<Position> positions;
};

[[noreturn]] void Refuse(const Scenario& scenario, long line, const std::string& message)
{
    throw UsageError(fmt::format("{}:{}: {}", scenario.file, line, message));
}

/// Splits "VALUE~TOL"; `tolerance` is empty without one.
void SplitTolerance(const std::string& text, std::string& value, std::string& tolerance)
{
    std::size_t tilde = text.rfind('~');
    if (tilde == std::string::npos) {
        value = text;
        tolerance.clear();
    } else {
        value = text.substr(0, tilde);
        tolerance = text.substr(tilde + 1);
    }
}

bool ParseNumber(const std::string& text, ValueKind kind, unsigned bits, long double& result)
{
    Zon::String literal(text);
    if (kind == ValueKind::Bool) {
        bool value = false;
        if (!Convert::TryParse(literal, value)) {
            return false;
        }
        result = value ? 1 : 0;
        return true;
    }
    if (kind == ValueKind::Signed) {
        long value = 0;
        if (!Convert::TryParse(literal, value)) {
            return false;
        }
        if (bits < 64) {
            long limit = 1L << (bits - 1);
            if (value < -limit || value >= limit) {
                return false;
            }
        }
        result = static_cast<long double>(value);
        return true;
    }
    if (kind == ValueKind::Unsigned) {
        unsigned long value = 0;
        if (!Convert::TryParse(literal, value)) {
            return false;
        }
        if (bits < 64 && value >= (1UL << bits)) {
            return false;
        }
        result = static_cast<long double>(value);
        return true;
    }
    double real = 0;
    long whole = 0;
    if (Convert::TryParse(literal, real)) {
        result = real;
    } else if (Convert::TryParse(literal, whole)) {
        result = static_cast<long double>(whole);
    } else {
        return false;
    }
    return std::isfinite(real);
}

/// A tolerance: a non-negative real or integer literal.
bool ParseTolerance(const std::string& text, long double& result)
{
    return ParseNumber(text, ValueKind::Real, 64, result) && result >= 0;
}

/// "T#1s500ms", "TIME#20ms", "t#1.5s": microseconds. Units d, h, m, s, ms, us, ns; "_" between digits.
bool ParseDuration(const std::string& text, long double& micros)
{
    std::size_t hash = text.find('#');
    if (hash == std::string::npos) {
        return false;
    }
    std::string prefix = text.substr(0, hash);
    for (auto& c : prefix) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    if (prefix != "T" && prefix != "TIME") {
        return false;
    }
    std::size_t i = hash + 1;
    bool negative = i < text.size() && text[i] == '-';
    i += negative ? 1 : 0;
    long double total = 0;
    bool any = false;
    while (i < text.size()) {
        std::string digits;
        while (i < text.size() && (std::isdigit(static_cast<unsigned char>(text[i])) || text[i] == '.' || text[i] == '_')) {
            if (text[i] != '_') {
                digits += text[i];
            }
            ++i;
        }
        std::string unit;
        while (i < text.size() && std::isalpha(static_cast<unsigned char>(text[i]))) {
            unit += static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
            ++i;
        }
        if (digits.empty() || digits.front() == '.' || digits.back() == '.' ||
            digits.find('.') != digits.rfind('.')) {
            return false;
        }
        long double factor = 0;
        if (unit == "d") {
            factor = 86400e6L;
        } else if (unit == "h") {
            factor = 3600e6L;
        } else if (unit == "m") {
            factor = 60e6L;
        } else if (unit == "s") {
            factor = 1e6L;
        } else if (unit == "ms") {
            factor = 1e3L;
        } else if (unit == "us") {
            factor = 1;
        } else if (unit == "ns") {
            factor = 1e-3L;
        } else {
            return false;
        }
        total += std::strtold(digits.c_str(), nullptr) * factor;
        any = true;
        if (i < text.size() && text[i] == '_') {
            ++i;
        }
    }
    micros = negative ? -total : total;
    return any;
}

/// A time stamp: a duration since the run's start, or microseconds since the Unix epoch.
bool ParseTime(const std::string& text, long double& micros, TimeForm& form)
{
    if (ParseDuration(text, micros)) {
        form = TimeForm::SinceStart;
        return true;
    }
    if (text.empty() || text.size() > 19 ||
        !std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); })) {
        return false;
    }
    micros = static_cast<long double>(std::stoull(text));
    form = TimeForm::SinceEpoch;
    return true;
}

/// "Good", "Bad Overrange", "Invalid WireBreak|Failure", flags without a name as "0x40".
bool ParseQuality(const std::string& text, Quality& quality)
{
    std::size_t space = text.find(' ');
    std::string state = text.substr(0, space);
    std::string flags = space == std::string::npos ? std::string() : text.substr(space + 1);
    bool found = false;
    for (const auto& [value, name] : Zon::EnumStrings<QualityState>::Values) {
        if (state == name) {
            quality.state = value;
            found = true;
        }
    }
    if (!found) {
        return false;
    }
    std::uint32_t bits = 0;
    if (space != std::string::npos) {
        std::size_t start = 0;
        while (true) {
            std::size_t bar = flags.find('|', start);
            std::string word = flags.substr(start, bar == std::string::npos ? std::string::npos : bar - start);
            bool known = false;
            for (const auto& [value, name] : Zon::EnumStrings<QualityFlags>::Values) {
                if (word == name) {
                    bits |= static_cast<std::uint32_t>(value);
                    known = true;
                }
            }
            if (!known && word.size() > 2 && word.size() <= 10 && word.compare(0, 2, "0x") == 0 &&
                word.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos) {
                bits |= static_cast<std::uint32_t>(std::stoul(word.substr(2), nullptr, 16));
                known = true;
            }
            if (!known) {
                return false;
            }
            if (bar == std::string::npos) {
                break;
            }
            start = bar + 1;
        }
    }
    quality.flags = static_cast<QualityFlags>(bits);
    return true;
}

std::string QualityWords()
{
    std::string states;
    for (const auto& [value, name] : Zon::EnumStrings<QualityState>::Values) {
        states += (states.empty() ? "" : ", ") + std::string(name);
    }
    return states;
}

Compiled Compile(const Simulation& simulation, const Scenario& scenario, const ScenarioOptions& options)
{
    Compiled compiled;
    simulation.CheckStimuli(scenario.stimuli);
    compiled.ports = simulation.GetPorts();
    for (const auto& column : scenario.columns) {
        std::string origin = fmt::format("{}:{}", scenario.file, scenario.headerLine);
        compiled.probes.push_back(simulation.GetProbe(column.port, origin));
        const auto& probe = compiled.probes.back();
        if (column.field == ExpectedField::Quality && !probe.quality) {
            Refuse(scenario, scenario.headerLine,
                   fmt::format("\"expect {}\": port '{}' has no quality (only qualified and device ports have one)",
                               column.name, column.port));
        }
        if (column.field == ExpectedField::Time && !probe.column.hasTimestamp) {
            Refuse(scenario, scenario.headerLine,
                   fmt::format("\"expect {}\": port '{}' has no time stamp (only qualified ports have one)",
                               column.name, column.port));
        }
    }
    std::uint64_t first = simulation.GetCycle() + 1;
    // Literals are parsed once per column and text: a long scenario repeats its values, mostly
    // those of the line before, so the column's last check is tried before its table.
    std::vector<std::unordered_map<std::string, std::uint32_t>> parsed(scenario.columns.size());
    std::vector<std::uint32_t> lastCheck(scenario.columns.size(), std::numeric_limits<std::uint32_t>::max());
    compiled.runs.resize(scenario.columns.size());
    for (const auto& row : scenario.rows) {
        if (row.cycle < first) {
            Refuse(scenario, row.line,
                   fmt::format("cycle {} has already run (the simulation is at cycle {})", row.cycle, first - 1));
        }
        for (std::size_t i = row.first; i < row.first + row.count; ++i) {
            const auto& expectation = scenario.expectations[i];
            const auto& column = scenario.columns[expectation.column];
            const auto& probe = compiled.probes[expectation.column];
            std::uint32_t& last = lastCheck[expectation.column];
            if (last != std::numeric_limits<std::uint32_t>::max() &&
                compiled.checks[last].expectation->text == expectation.text) {
                compiled.Add(expectation.column, last);
                continue;
            }
            auto known = parsed[expectation.column].find(expectation.text);
            if (known != parsed[expectation.column].end()) {
                last = known->second;
                compiled.Add(expectation.column, last);
                continue;
            }
            Check check;
            check.probe = expectation.column;
            check.field = column.field;
            check.kind = probe.column.kind;
            check.expectation = &expectation;
            std::string value, tolerance;
            switch (column.field) {
            case ExpectedField::Value:
                if (check.kind == ValueKind::Text || !probe.number) {
                    break;
                }
                SplitTolerance(expectation.text, value, tolerance);
                if (!ParseNumber(value, check.kind, probe.column.bits, check.value)) {
                    Refuse(scenario, row.line,
                           fmt::format("\"expect {}\": '{}' is not a value of port '{}' ({}-bit {})", column.name, value,
                                       column.port, probe.column.bits,
                                       check.kind == ValueKind::Bool       ? "boolean"
                                       : check.kind == ValueKind::Signed   ? "signed integer"
                                       : check.kind == ValueKind::Unsigned ? "unsigned integer"
                                                                           : "real"));
                }
                if (!tolerance.empty() || value.size() != expectation.text.size()) {
                    if (!ParseTolerance(tolerance, check.tolerance)) {
                        Refuse(scenario, row.line,
                               fmt::format("\"expect {}\": tolerance '{}' is not a number of 0 or more", column.name,
                                           tolerance));
                    }
                }
                break;
            case ExpectedField::Quality:
                if (!ParseQuality(expectation.text, check.quality)) {
                    Refuse(scenario, row.line,
                           fmt::format("\"expect {}\": '{}' is not a quality: expected a state ({}) and optionally "
                                       "flags joined by '|', as the trace writes them (\"Bad Overrange\")",
                                       column.name, expectation.text, QualityWords()));
                }
                break;
            case ExpectedField::Time: {
                SplitTolerance(expectation.text, value, tolerance);
                TimeForm toleranceForm = TimeForm::SinceStart;
                bool hasTolerance = !tolerance.empty() || value.size() != expectation.text.size();
                if (!ParseTime(value, check.value, check.timeForm) ||
                    (hasTolerance && (!ParseTime(tolerance, check.tolerance, toleranceForm) || check.tolerance < 0))) {
                    Refuse(scenario, row.line,
                           fmt::format("\"expect {}\": '{}' is not a time stamp: expected a duration since the "
                                       "start such as T#20ms, or microseconds since 1970, each with an optional "
                                       "~TOL",
                                       column.name, expectation.text));
                }
                if (check.timeForm == TimeForm::SinceStart) {
                    check.value += static_cast<long double>(simulation.GetStartMicroseconds());
                }
                break;
            }
            }
            last = static_cast<std::uint32_t>(compiled.checks.size());
            compiled.checks.push_back(check);
            compiled.Add(expectation.column, last);
            parsed[expectation.column].emplace(expectation.text, last);
        }
    }
    std::uint64_t done = simulation.GetCycle();
    std::uint64_t last = std::max(scenario.lastCycle, done + 1);
    compiled.cycles = options.cycles == 0 ? last : options.cycles;
    if (compiled.cycles < scenario.lastCycle) {
        long line = scenario.rows.empty() ? scenario.headerLine : scenario.rows.back().line;
        for (const auto& stimulus : scenario.stimuli) {
            if (stimulus.cycle == scenario.lastCycle) {
                line = std::strtol(stimulus.origin.substr(stimulus.origin.rfind(':') + 1).c_str(), nullptr, 10);
            }
        }
        if (!scenario.rows.empty() && scenario.rows.back().cycle == scenario.lastCycle) {
            line = scenario.rows.back().line;
        }
        Refuse(scenario, line,
               fmt::format("cycle {} lies beyond the {} cycles to run; run at least {}", scenario.lastCycle,
                           compiled.cycles, scenario.lastCycle));
    }
    return compiled;
}

std::string TimeText(std::int64_t micros, TimeForm form, std::int64_t start)
{
    if (form == TimeForm::SinceEpoch) {
        return std::to_string(micros);
    }
    std::int64_t since = micros - start;
    return since % 1000 == 0 ? fmt::format("T#{}ms", since / 1000) : fmt::format("T#{}us", since);
}

/// Whether the port holds what `check` expects, through the probe's plain readers.
bool Holds(const Check& check, const PortProbe& probe, TraceSample& sample)
{
    switch (check.field) {
    case ExpectedField::Value:
        if (check.kind == ValueKind::Text || probe.numberOf == nullptr) {
            probe.read(sample);
            return sample.value == check.expectation->text;
        } else {
            long double actual = 0;
            return probe.numberOf(probe.object, actual) && std::fabs(actual - check.value) <= check.tolerance;
        }
    case ExpectedField::Quality: {
        Quality actual;
        return probe.qualityOf(probe.object, actual) && actual == check.quality;
    }
    case ExpectedField::Time:
        return std::fabs(static_cast<long double>(*probe.timestamp) - check.value) <= check.tolerance;
    }
    return false;
}

/// Appends what `check` expected and what the port holds instead.
void Fail(const Check& check, const PortProbe& probe, TraceSample& sample, std::int64_t start, std::size_t row,
          const Scenario& scenario, ScenarioResult& result)
{
    probe.read(sample);
    ExpectationFailure failure;
    failure.row = row;
    failure.column = scenario.columns[check.expectation->column].name;
    failure.expected = check.expectation->text;
    switch (check.field) {
    case ExpectedField::Value:
        failure.actual = sample.value;
        break;
    case ExpectedField::Quality:
        failure.actual = sample.quality;
        break;
    case ExpectedField::Time:
        failure.actual = TimeText(sample.timestamp, check.timeForm, start);
        break;
    }
    result.failures.push_back(std::move(failure));
}

/// The clock is read at a row when this many cycles or more ran since its last reading, and at the
/// last row; the rows in between share the time of the span by their cycles. A reading costs about
/// as much as a small program's cycle, and JUnit's time of one row of one cycle says little.
constexpr std::uint64_t CyclesPerClockReading = 64;

} // namespace

void CheckScenario(const Simulation& simulation, const Scenario& scenario, const ScenarioOptions& options)
{
    Compile(simulation, scenario, options);
}

ScenarioResult RunScenario(Simulation& simulation, const Scenario& scenario, const ScenarioOptions& options)
{
    Compiled compiled = Compile(simulation, scenario, options);
    simulation.AddStimuli(scenario.stimuli);

    ScenarioResult result;
    result.file = scenario.file;
    for (const auto& column : scenario.columns) {
        result.columnNames.push_back(column.name);
    }
    const std::int64_t start = simulation.GetStartMicroseconds();
    TraceSample sample;
    CheckCursor cursor(compiled);
    std::size_t next = 0;
    using Clock = std::chrono::steady_clock;
    auto last = Clock::now();
    std::uint64_t lastReading = simulation.GetCycle();
    result.rows.Start(lastReading);
    auto readClock = [&](std::uint64_t cycle) {
        auto now = Clock::now();
        result.rows.Time(cycle, std::chrono::duration<double>(now - last).count());
        lastReading = cycle;
        last = now;
    };
    // The columns a row checks, as an entry of `result.columnSets`: the previous row's when they
    // are the same (a new list is the only thing a row may allocate).
    auto columnSetOf = [&](const ExpectationRow& row, std::uint32_t previous) -> std::uint32_t {
        auto matches = [&](const std::vector<std::uint32_t>& set) {
            if (set.size() != row.count) {
                return false;
            }
            for (std::size_t k = 0; k < row.count; ++k) {
                if (set[k] != scenario.expectations[row.first + k].column) {
                    return false;
                }
            }
            return true;
        };
        if (previous < result.columnSets.size() && matches(result.columnSets[previous])) {
            return previous;
        }
        for (std::size_t set = 0; set < result.columnSets.size(); ++set) {
            if (matches(result.columnSets[set])) {
                return static_cast<std::uint32_t>(set);
            }
        }
        auto& added = result.columnSets.emplace_back();
        for (std::size_t k = 0; k < row.count; ++k) {
            added.push_back(scenario.expectations[row.first + k].column);
        }
        return static_cast<std::uint32_t>(result.columnSets.size() - 1);
    };
    std::uint32_t columnSet = std::numeric_limits<std::uint32_t>::max();

    Simulation::RunOptions run;
    run.cycles = compiled.cycles - simulation.GetCycle();
    run.trace = options.trace;
    if (!scenario.rows.empty()) {
        run.afterCycle = [&](std::uint64_t cycle) {
            if (next >= scenario.rows.size() || scenario.rows[next].cycle != cycle) {
                return;
            }
            const auto& row = scenario.rows[next];
            RowResult verdict;
            verdict.cycle = row.cycle;
            verdict.line = row.line;
            verdict.expectations = row.count;
            verdict.first = row.first;
            verdict.firstFailure = result.failures.size();
            for (std::size_t i = row.first; i < row.first + row.count; ++i) {
                const auto& check = cursor.Next(scenario.expectations[i].column);
                const auto& probe = compiled.probes[check.probe];
                if (!Holds(check, probe, sample)) {
                    Fail(check, probe, sample, start, next, scenario, result);
                }
            }
            verdict.failureCount = result.failures.size() - verdict.firstFailure;
            columnSet = columnSetOf(row, columnSet);
            verdict.columnSet = columnSet;
            result.rows.Append(verdict);
            ++next;
            if (cycle - lastReading >= CyclesPerClockReading || next == scenario.rows.size()) {
                readClock(cycle);
            }
        };
    }
    result.summary = simulation.Run(run);
    if (result.rows.Untimed() > 0) {
        readClock(result.rows.back().cycle);
    }
    result.cycles = simulation.GetCycle();
    result.seconds = result.summary.wallSeconds;
    result.expectations = scenario.expectations.size();
    return result;
}

RowResult RowResults::WithoutTime(std::size_t index) const
{
    auto stretch = std::upper_bound(stretches.begin(), stretches.end(), index,
                                    [](std::size_t row, const Stretch& s) { return row < s.firstRow; });
    const Stretch& found = *(stretch - 1);
    const std::size_t offset = index - found.firstRow;
    RowResult row = found.first;
    row.cycle += offset;
    row.line += static_cast<long>(offset);
    row.first += offset * row.expectations;
    return row;
}

RowResult RowResults::operator[](std::size_t index) const
{
    RowResult row = WithoutTime(index);
    auto span = std::upper_bound(spans.begin(), spans.end(), index,
                                 [](std::size_t r, const Span& s) { return r < s.endRow; });
    if (span == spans.end()) {
        return row; // not timed yet
    }
    const std::size_t spanFirst = span == spans.begin() ? 0 : (span - 1)->endRow;
    const std::uint64_t previous = index == spanFirst ? span->startCycle : WithoutTime(index - 1).cycle;
    row.seconds = span->seconds * (static_cast<double>(row.cycle - previous) /
                                   static_cast<double>(span->endCycle - span->startCycle));
    return row;
}

void RowResults::Append(const RowResult& row)
{
    if (!stretches.empty()) {
        Stretch& last = stretches.back();
        const std::size_t offset = last.rows;
        if (last.first.failureCount == 0 && row.failureCount == 0 && row.cycle == last.first.cycle + offset &&
            row.line == last.first.line + static_cast<long>(offset) && row.expectations == last.first.expectations &&
            row.first == last.first.first + offset * last.first.expectations &&
            row.columnSet == last.first.columnSet && row.firstFailure == last.first.firstFailure) {
            ++last.rows;
            ++count;
            return;
        }
    }
    Stretch stretch;
    stretch.firstRow = count;
    stretch.rows = 1;
    stretch.first = row;
    stretch.first.seconds = 0;
    stretches.push_back(stretch);
    ++count;
}

void RowResults::Time(std::uint64_t cycle, double seconds)
{
    if (Untimed() == 0) {
        return;
    }
    Span span;
    span.endRow = count;
    span.startCycle = spans.empty() ? spanStart : spans.back().endCycle;
    span.endCycle = cycle;
    span.seconds = seconds;
    spans.push_back(span);
}

std::string RowName(const ScenarioResult& result, const RowResult& row)
{
    std::string name = fmt::format("line {} (cycle {}):", row.line, row.cycle);
    if (row.columnSet < result.columnSets.size()) {
        const auto& columns = result.columnSets[row.columnSet];
        for (std::size_t k = 0; k < columns.size(); ++k) {
            name += (k == 0 ? " " : ", ") + result.columnNames[columns[k]];
        }
    }
    return name;
}

void WriteFailures(std::ostream& out, const ScenarioResult& result)
{
    for (const auto& failure : result.failures) {
        const auto& row = result.rows[failure.row];
        out << fmt::format("{}:{}: cycle {}: {}: expected {}, got {}\n", result.file, row.line, row.cycle,
                           failure.column, failure.expected, failure.actual);
    }
}

namespace {

/// Text for an XML attribute or element: markup characters escaped; characters XML does not allow
/// (control characters, malformed UTF-8) replaced by U+FFFD, so that any port text gives a
/// well-formed document.
std::string XmlText(const std::string& text)
{
    static const char* const Replacement = "\xEF\xBF\xBD";
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x80) {
            switch (byte) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            case '\'': out += "&apos;"; break;
            case '\t': out += "&#9;"; break;
            case '\n': out += "&#10;"; break;
            case '\r': out += "&#13;"; break;
            default:
                if (byte < 0x20 || byte == 0x7F) {
                    out += Replacement;
                } else {
                    out += static_cast<char>(byte);
                }
            }
            ++i;
            continue;
        }
        std::size_t length = byte >= 0xF0 && byte <= 0xF4 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 && byte < 0xE0 ? 2 : 0;
        bool valid = length != 0 && i + length <= text.size();
        std::uint32_t code = length == 2 ? byte & 0x1F : length == 3 ? byte & 0x0F : byte & 0x07;
        for (std::size_t k = 1; valid && k < length; ++k) {
            auto next = static_cast<unsigned char>(text[i + k]);
            valid = (next & 0xC0) == 0x80;
            code = (code << 6) | (next & 0x3F);
        }
        valid = valid && !(length == 3 && (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF) || code >= 0xFFFE)) &&
                !(length == 4 && (code < 0x10000 || code > 0x10FFFF));
        if (valid) {
            out.append(text, i, length);
            i += length;
        } else {
            out += Replacement;
            ++i;
        }
    }
    return out;
}

std::string ClassName(const std::string& file)
{
    std::string stem = std::filesystem::path(file).filename().string();
    std::size_t dot = stem.rfind('.');
    return dot == std::string::npos || dot == 0 ? stem : stem.substr(0, dot);
}

} // namespace

void WriteJUnit(std::ostream& out, const std::vector<ScenarioResult>& results)
{
    std::size_t tests = 0, failures = 0;
    double seconds = 0;
    // Failures come in the order of their rows.
    auto failedRows = [](const ScenarioResult& result) {
        std::size_t count = 0;
        for (std::size_t f = 0; f < result.failures.size(); ++f) {
            count += f == 0 || result.failures[f].row != result.failures[f - 1].row ? 1 : 0;
        }
        return count;
    };
    for (const auto& result : results) {
        tests += result.rows.size();
        failures += failedRows(result);
        seconds += result.seconds;
    }
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    out << fmt::format("<testsuites name=\"varnix-sim test\" tests=\"{}\" failures=\"{}\" errors=\"0\" "
                       "time=\"{:.6f}\">\n",
                       tests, failures, seconds);
    for (const auto& result : results) {
        std::string classname = XmlText(ClassName(result.file));
        out << fmt::format("  <testsuite name=\"{}\" tests=\"{}\" failures=\"{}\" errors=\"0\" skipped=\"0\" "
                           "time=\"{:.6f}\">\n",
                           XmlText(result.file), result.rows.size(), failedRows(result), result.seconds);
        out << fmt::format("    <properties>\n      <property name=\"cycles\" value=\"{}\"/>\n"
                           "      <property name=\"expectations\" value=\"{}\"/>\n    </properties>\n",
                           result.cycles, result.expectations);
        for (const RowResult row : result.rows) {
            std::string name = RowName(result, row);
            out << fmt::format("    <testcase classname=\"{}\" name=\"{}\" time=\"{:.6f}\"", classname, XmlText(name),
                               row.seconds);
            if (row.failureCount == 0) {
                out << "/>\n";
                continue;
            }
            out << ">\n";
            for (std::size_t f = row.firstFailure; f < row.firstFailure + row.failureCount; ++f) {
                const auto& failure = result.failures[f];
                std::string message = fmt::format("cycle {}: {}: expected {}, got {}", row.cycle, failure.column,
                                                  failure.expected, failure.actual);
                out << fmt::format("      <failure type=\"expectation\" message=\"{}\">{}:{}: {}&#10;expected: "
                                   "{}&#10;actual: {}</failure>\n",
                                   XmlText(message), XmlText(result.file), row.line, XmlText(message),
                                   XmlText(failure.expected), XmlText(failure.actual));
            }
            out << "    </testcase>\n";
        }
        out << "  </testsuite>\n";
    }
    out << "</testsuites>\n";
}

} // namespace VarnixBase::Sim
