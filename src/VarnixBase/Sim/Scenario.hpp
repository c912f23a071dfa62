#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Sim/Trace.hpp"

namespace VarnixBase::Sim {

/// What an `expect` column checks of its port after a cycle.
enum class ExpectedField {
    Value,   ///< "expect PORT": the value
    Quality, ///< "expect PORT.quality": state and flags, as the trace writes them ("Bad Overrange")
    Time     ///< "expect PORT.time": the time stamp
};

/// One `expect` column of a scenario.
struct ExpectColumn {
    std::string port;
    ExpectedField field = ExpectedField::Value;
    /// "level", "level.quality", "level.time": how messages name the column.
    std::string name;
};

/// One filled `expect` cell: the text as written ("25~0.001", "Bad Overrange", "T#20ms").
struct Expectation {
    std::uint32_t column = 0; ///< index into `Scenario::columns`
    std::string text;
};

/// The expectations of one line, checked after its cycle.
struct ExpectationRow {
    std::uint64_t cycle = 0;
    long line = 0;
    std::size_t first = 0; ///< index of the row's first entry in `Scenario::expectations`
    std::size_t count = 0;
};

/// A stimulus file with expectations beside the stimuli. The header names the columns after
/// "cycle": a port name for a stimulus, "expect PORT", "expect PORT.quality" or "expect PORT.time"
/// for an expectation. Each line after it is one cycle: the stimuli are written before the cycle,
/// the expectations are checked after it; empty cells do nothing. A file without `expect` columns
/// is a stimulus file, and a stimulus file is a scenario without expectations.
///
/// Expected values: an IEC 61131-3 literal for numbers and booleans ("16#8001", "TRUE", "12.5"),
/// with "~TOL" for an absolute tolerance ("25~0.001"); the text itself for string ports. Qualities:
/// the state and its flags by name ("Good", "Bad Overrange", "Invalid WireBreak|Failure"). Time
/// stamps: a duration since the run's start ("T#20ms", "T#1s500ms"), or microseconds since the Unix
/// epoch as the CSV trace writes them, each with an optional "~TOL" of the same form.
struct Scenario {
    std::string file;
    std::vector<StimulusEntry> stimuli;
    std::vector<ExpectColumn> columns;
    long headerLine = 0;
    std::vector<Expectation> expectations;
    std::vector<ExpectationRow> rows;
    /// The last cycle that has a stimulus or an expectation; 0 for an empty file.
    std::uint64_t lastCycle = 0;
};

/// Parses a scenario from `text`; `name` is used in messages. Cycles must rise from line to line,
/// each cycle appearing once. Throws `UsageError` naming the file and line for anything malformed.
Scenario ParseScenario(const std::string& text, const std::string& name);

/// Reads the scenario in the file at `path`.
Scenario LoadScenario(const std::string& path);

/// An expectation that did not hold.
struct ExpectationFailure {
    std::size_t row = 0; ///< index into `Scenario::rows`
    std::string column;  ///< "level.quality"
    std::string expected;
    std::string actual;
};

/// The verdict on one row of expectations.
struct RowResult {
    std::uint64_t cycle = 0;
    long line = 0;
    std::size_t expectations = 0;
    /// The row's first expectation: `ScenarioResult::rowColumns[first]`.
    std::size_t first = 0;
    /// The failures of this row: `ScenarioResult::failures[firstFailure, firstFailure + failureCount)`.
    std::size_t firstFailure = 0;
    std::size_t failureCount = 0;
    /// Wall time from the previous row's check (or the run's start) to this one's, in seconds.
    double seconds = 0;
};

struct ScenarioResult {
    std::string file;
    std::uint64_t cycles = 0;
    double seconds = 0;
    std::size_t expectations = 0;
    std::vector<RowResult> rows;
    std::vector<ExpectationFailure> failures;
    /// The names of the scenario's `expect` columns, and the column of each expectation in order.
    std::vector<std::string> columnNames;
    std::vector<std::uint32_t> rowColumns;
    /// The summary of the scenario's run, as `Simulation::Run` gave it.
    Simulation::Summary summary;

    bool Passed() const noexcept { return failures.empty(); }
};

struct ScenarioOptions {
    /// Cycles to run; 0: up to the scenario's last cycle. Fewer than that is refused.
    std::uint64_t cycles = 0;
    /// Receives the trace after every cycle; none when null.
    TraceWriter* trace = nullptr;
};

/// Checks `scenario` against the program of `simulation` without running anything: every port
/// exists, every stimulus fits its port, every expectation fits its column (a literal of the port's
/// type, a quality word the trace uses, a time stamp on a port that has one), and `options.cycles`
/// reaches the last cycle. Throws `UsageError` naming the file and line of the first problem.
void CheckScenario(const Simulation& simulation, const Scenario& scenario, const ScenarioOptions& options = {});

/// Runs `scenario` on `simulation`, whose cycles must not have passed the scenario's first one
/// (a fresh simulation runs it from its start), and checks every expectation after its cycle.
/// Throws `UsageError` as `CheckScenario` does, before the first cycle.
ScenarioResult RunScenario(Simulation& simulation, const Scenario& scenario, const ScenarioOptions& options = {});

/// The testcase name of a row: "line 4 (cycle 1): level, level.quality".
std::string RowName(const ScenarioResult& result, const RowResult& row);

/// One line per failed expectation: "FILE:LINE: cycle 9: level.quality: expected Bad Overrange, got Good".
void WriteFailures(std::ostream& out, const ScenarioResult& result);

/// JUnit XML, as CI servers read it: one `testsuite` per scenario, one `testcase` per row of
/// expectations, a `failure` for each expectation that did not hold, times and totals.
void WriteJUnit(std::ostream& out, const std::vector<ScenarioResult>& results);

} // namespace VarnixBase::Sim
