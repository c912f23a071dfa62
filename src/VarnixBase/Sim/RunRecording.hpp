#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Sim/Trace.hpp"

namespace VarnixBase::Sim {

/// A failed expectation of a scenario: what a port should have held after a cycle, and what it held.
struct MarkedFailure {
    std::uint64_t cycle = 0;
    std::string port;
    std::string expected;
    std::string actual;
    /// Where the expectation was written, for the reader: "tank.scenario:12".
    std::string origin;
};

/// The outcome of one scenario run.
struct Verdict {
    std::string scenario;
    bool passed = true;
    std::size_t expectations = 0;
    std::vector<MarkedFailure> failures;
};

/// Quality states in the order of their badness, as the quality model numbers them.
enum class QualityLevel : std::uint8_t { None = 0, Good = 1, Questionable = 2, Invalid = 128, Bad = 255 };

/// The longest prefix of `text` of at most `bytes` bytes that does not end inside a UTF-8 character.
std::size_t Utf8Prefix(const std::string& text, std::size_t bytes);

/// The state at the start of a quality text ("Bad Overrange" -> Bad); None for an empty or unknown one.
QualityLevel QualityLevelOf(const std::string& quality);

/// Records one run for a picture of it: per port the values, qualities and times over the cycles,
/// folded into at most `MaxBins` bins while the run goes. Up to `MaxBins` cycles every cycle has a
/// bin of its own; beyond that, neighbouring bins are merged pairwise whenever the bins run out, so
/// that a bin covers a power of two of cycles and keeps their minimum, maximum and last value, the
/// worst quality and whether a text changed. Memory stays bounded whatever the number of cycles.
class RunRecording : public TraceWriter {
public:
    static constexpr std::size_t MaxBins = 4096;
    /// Text values are kept up to this many bytes (they label bands in the picture).
    static constexpr std::size_t MaxTextBytes = 64;

    struct Bin {
        double minimum = 0;
        double maximum = 0;
        double last = 0;
        /// At least one cycle of the bin had a finite number.
        bool hasNumber = false;
        /// At least one cycle of the bin had no finite number (NaN, infinity, an unreadable value).
        bool hasGap = false;
        /// Text ports: the last text of the bin, and whether it differed within the bin.
        std::string text;
        bool textChanged = false;
        /// The worst quality of the bin, as an index into `QualityTexts()`; 0 is "no quality".
        std::uint32_t quality = 0;
    };

    RunRecording();

    void Begin(const std::vector<TraceColumn>& columns) override;
    void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) override;
    void End() override;

    /// Folds `next`, the bin of the cycles that follow, into `bin`: minimum and maximum of both,
    /// the last value and text of `next`, whether the text changed, the worse quality.
    void Fold(Bin& bin, const Bin& next) const;

    /// The values written before cycles, marked on the plots of their ports.
    void AddStimuli(const std::vector<StimulusEntry>& entries);
    void SetSummary(const Simulation::Summary& summary);
    /// A scenario's verdict; each failed expectation is marked on its port's plot at its cycle.
    void SetVerdict(const Verdict& verdict);

    const std::vector<TraceColumn>& Columns() const noexcept { return columns; }
    /// The bins of port `column`, in cycle order.
    const std::vector<Bin>& Bins(std::size_t column) const { return bins.at(column); }
    std::size_t BinCount() const noexcept { return binCount; }
    /// Cycles one bin covers (a power of two, 1 while every cycle has its own bin).
    std::uint64_t CyclesPerBin() const noexcept { return cyclesPerBin; }
    std::uint64_t FirstCycle() const noexcept { return firstCycle; }
    std::uint64_t CycleCount() const noexcept { return cycleCount; }
    /// Controller time of a cycle in microseconds, exact for the first cycle of a bin and
    /// interpolated within one.
    std::int64_t TimeOf(std::uint64_t cycle) const;
    /// Milliseconds from the first cycle to `cycle`.
    double MillisecondsAt(std::uint64_t cycle) const;
    /// "" first (no quality), then each distinct quality text in the order of its first sighting.
    const std::vector<std::string>& QualityTexts() const noexcept { return qualityTexts; }
    const std::vector<StimulusEntry>& Stimuli() const noexcept { return stimuli; }
    const std::optional<Simulation::Summary>& GetSummary() const noexcept { return summary; }
    const std::optional<Verdict>& GetVerdict() const noexcept { return verdict; }

private:
    void MergePairs();
    std::uint32_t QualityIndex(const std::string& text);

    std::vector<TraceColumn> columns;
    /// One vector per port, each `binCount` long (reserved to `MaxBins`).
    std::vector<std::vector<Bin>> bins;
    /// The controller time of the first cycle of every bin.
    std::vector<std::int64_t> binTimes;
    std::size_t binCount = 0;
    std::uint64_t cyclesPerBin = 1;
    std::uint64_t firstCycle = 0;
    std::uint64_t cycleCount = 0;
    std::int64_t lastTime = 0;
    std::vector<std::string> qualityTexts;
    std::vector<StimulusEntry> stimuli;
    std::optional<Simulation::Summary> summary;
    std::optional<Verdict> verdict;
};

} // namespace VarnixBase::Sim
