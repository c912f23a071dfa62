#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
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
    std::size_t row = 0; ///< index into `Scenario::rows` and `ScenarioResult::rows`
    std::string column;  ///< "level.quality"
    std::string expected;
    std::string actual;
};

/// The verdict on one row of expectations.
struct RowResult {
    std::uint64_t cycle = 0;
    long line = 0;
    std::size_t expectations = 0;
    /// The row's first expectation: its index in `Scenario::expectations`.
    std::size_t first = 0;
    /// The columns of the row's expectations, in order: `ScenarioResult::columnSets[columnSet]`.
    std::uint32_t columnSet = 0;
    /// The failures of this row: `ScenarioResult::failures[firstFailure, firstFailure + failureCount)`.
    std::size_t firstFailure = 0;
    std::size_t failureCount = 0;
    /// Wall time from the previous row's check (or the run's start) to this one's, in seconds. The
    /// clock is read at a row 64 or more cycles after its previous reading, and at the last row;
    /// rows closer together share the time between two readings in proportion to their cycles.
    double seconds = 0;
};

/// The verdicts on the rows of a run, in the rows' order; each comes out as a `RowResult`. They are
/// kept in stretches, not row by row: rows that follow each other cycle by cycle and line by line
/// with the same columns and no failure make one stretch, and each reading of the clock one span.
/// So a run of a million rows that pass keeps a few records, not a million (fresh memory for one
/// record per row costs more than the run's cycles).
class RowResults {
public:
    std::size_t size() const noexcept { return count; }
    bool empty() const noexcept { return count == 0; }
    /// The verdict on row `index` (below `size()`).
    RowResult operator[](std::size_t index) const;
    RowResult back() const { return (*this)[count - 1]; }

    class const_iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = RowResult;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = RowResult;

        RowResult operator*() const { return (*rows)[index]; }
        const_iterator& operator++()
        {
            ++index;
            return *this;
        }
        bool operator==(const const_iterator& other) const noexcept { return index == other.index; }

    private:
        friend class RowResults;
        const_iterator(const RowResults* rows, std::size_t index) : rows(rows), index(index) {}
        const RowResults* rows = nullptr;
        std::size_t index = 0;
    };
    const_iterator begin() const noexcept { return {this, 0}; }
    const_iterator end() const noexcept { return {this, count}; }

    /// The cycle from which the first reading of the clock counts (the cycle before the run's first).
    void Start(std::uint64_t cycle) noexcept { spanStart = cycle; }
    /// Appends the verdict on the next row; its `seconds` come from the readings of the clock.
    void Append(const RowResult& row);
    /// A reading of the clock after the row of `cycle`: the rows appended since the previous reading
    /// took `seconds`, which they share in proportion to the cycles from each one's predecessor.
    void Time(std::uint64_t cycle, double seconds);
    /// Rows appended since the last reading of the clock.
    std::size_t Untimed() const noexcept { return count - (spans.empty() ? 0 : spans.back().endRow); }

private:
    /// Rows `firstRow` on, `rows` of them: the first as given, each further one a cycle, a line and
    /// a row's expectations after the one before, with no failure.
    struct Stretch {
        std::size_t firstRow = 0;
        std::size_t rows = 0;
        RowResult first;
    };
    /// The rows before `endRow` (and after the previous span's) ran from `startCycle` to `endCycle`.
    struct Span {
        std::size_t endRow = 0;
        std::uint64_t startCycle = 0;
        std::uint64_t endCycle = 0;
        double seconds = 0;
    };
    RowResult WithoutTime(std::size_t index) const;

    std::vector<Stretch> stretches;
    std::vector<Span> spans;
    std::size_t count = 0;
    std::uint64_t spanStart = 0;
};

struct ScenarioResult {
    std::string file;
    std::uint64_t cycles = 0;
    double seconds = 0;
    std::size_t expectations = 0;
    RowResults rows;
    std::vector<ExpectationFailure> failures;
    /// The names of the scenario's `expect` columns, and each distinct list of the columns that a
    /// row checks, by index into `columnNames`.
    std::vector<std::string> columnNames;
    std::vector<std::vector<std::uint32_t>> columnSets;
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
