#include "VarnixBase/Sim/RunRecording.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace VarnixBase::Sim {

namespace {

/// Distinct quality texts kept; beyond, a quality is kept by its state word alone, so that a run
/// whose flags take ever new values cannot grow the list without bound.
constexpr std::size_t MaxQualityTexts = 256;

/// The number a sample stands for, or NaN when it has none (a text port, "?", a malformed text).
double NumberOf(const TraceColumn& column, const std::string& value)
{
    if (column.kind == ValueKind::Bool) {
        return value == "true" ? 1.0 : value == "false" ? 0.0 : std::nan("");
    }
    if (column.kind == ValueKind::Text || value.empty()) {
        return std::nan("");
    }
    char* end = nullptr;
    double number = std::strtod(value.c_str(), &end);
    return end != nullptr && *end == '\0' ? number : std::nan("");
}

void AddNumber(RunRecording::Bin& bin, double number)
{
    if (!std::isfinite(number)) {
        bin.hasGap = true;
        return;
    }
    if (!bin.hasNumber) {
        bin.minimum = bin.maximum = number;
        bin.hasNumber = true;
    } else {
        bin.minimum = std::min(bin.minimum, number);
        bin.maximum = std::max(bin.maximum, number);
    }
    bin.last = number;
}

std::string Truncated(const std::string& text)
{
    if (text.size() <= RunRecording::MaxTextBytes) {
        return text;
    }
    // Cut at a character boundary, then mark the cut.
    return text.substr(0, Utf8Prefix(text, RunRecording::MaxTextBytes)) + "\xE2\x80\xA6";
}

} // namespace

std::size_t Utf8Prefix(const std::string& text, std::size_t bytes)
{
    if (bytes >= text.size()) {
        return text.size();
    }
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) {
        --bytes;
    }
    return bytes;
}

QualityLevel QualityLevelOf(const std::string& quality)
{
    std::string state = quality.substr(0, quality.find(' '));
    if (state == "Good") {
        return QualityLevel::Good;
    }
    if (state == "Questionable") {
        return QualityLevel::Questionable;
    }
    if (state == "Invalid") {
        return QualityLevel::Invalid;
    }
    if (state == "Bad") {
        return QualityLevel::Bad;
    }
    return QualityLevel::None;
}

RunRecording::RunRecording() : qualityTexts{std::string()} {}

void RunRecording::Begin(const std::vector<TraceColumn>& traced)
{
    columns = traced;
    bins.assign(columns.size(), {});
    for (auto& list : bins) {
        list.reserve(MaxBins);
    }
    binTimes.clear();
    binTimes.reserve(MaxBins);
    binCount = 0;
    cyclesPerBin = 1;
    cycleCount = 0;
    firstCycle = 0;
}

void RunRecording::Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples)
{
    if (cycleCount == 0) {
        firstCycle = cycle;
    }
    std::uint64_t index = cycleCount / cyclesPerBin;
    if (index >= MaxBins) {
        MergePairs();
        index = cycleCount / cyclesPerBin;
    }
    bool fresh = index == binCount;
    if (fresh) {
        binTimes.push_back(time);
        ++binCount;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        auto& list = bins[i];
        if (fresh) {
            list.emplace_back();
        }
        Bin& bin = list[index];
        const TraceSample* sample = i < samples.size() ? &samples[i] : nullptr;
        if (sample == nullptr) {
            bin.hasGap = true;
            continue;
        }
        if (columns[i].kind == ValueKind::Text) {
            if (!fresh && bin.text != Truncated(sample->value)) {
                bin.textChanged = true;
            }
            bin.text = Truncated(sample->value);
        } else {
            AddNumber(bin, NumberOf(columns[i], sample->value));
        }
        if (columns[i].hasQuality) {
            std::uint32_t quality = QualityIndex(sample->quality);
            if (fresh || QualityLevelOf(qualityTexts[quality]) > QualityLevelOf(qualityTexts[bin.quality])) {
                bin.quality = quality;
            }
        }
    }
    lastTime = time;
    ++cycleCount;
}

void RunRecording::End() {}

void RunRecording::MergePairs()
{
    std::size_t half = binCount / 2;
    for (auto& list : bins) {
        for (std::size_t i = 0; i < half; ++i) {
            Bin merged = list[2 * i];
            Fold(merged, list[2 * i + 1]);
            list[i] = std::move(merged);
        }
        list.resize(half);
    }
    for (std::size_t i = 0; i < half; ++i) {
        binTimes[i] = binTimes[2 * i];
    }
    binTimes.resize(half);
    binCount = half;
    cyclesPerBin *= 2;
}

void RunRecording::Fold(Bin& bin, const Bin& next) const
{
    if (next.hasNumber) {
        AddNumber(bin, next.minimum);
        AddNumber(bin, next.maximum);
        bin.last = next.last;
    }
    bin.hasGap = bin.hasGap || next.hasGap;
    bin.textChanged = bin.textChanged || next.textChanged || bin.text != next.text;
    bin.text = next.text;
    if (QualityLevelOf(qualityTexts[next.quality]) > QualityLevelOf(qualityTexts[bin.quality])) {
        bin.quality = next.quality;
    }
}

std::uint32_t RunRecording::QualityIndex(const std::string& text)
{
    // Runs hold few distinct qualities, and the last one found is the likeliest.
    for (std::size_t i = qualityTexts.size(); i-- > 0;) {
        if (qualityTexts[i] == text) {
            return static_cast<std::uint32_t>(i);
        }
    }
    if (qualityTexts.size() >= MaxQualityTexts) {
        // Full: the state word alone stands for the quality, and a few of those still find room.
        std::size_t space = text.find(' ');
        if (space != std::string::npos) {
            return QualityIndex(text.substr(0, space));
        }
        if (qualityTexts.size() >= MaxQualityTexts + 8) {
            return 0;
        }
    }
    qualityTexts.push_back(text);
    return static_cast<std::uint32_t>(qualityTexts.size() - 1);
}

std::int64_t RunRecording::TimeOf(std::uint64_t cycle) const
{
    if (binCount == 0) {
        return 0;
    }
    std::uint64_t offset = cycle > firstCycle ? cycle - firstCycle : 0;
    std::uint64_t bin = std::min<std::uint64_t>(offset / cyclesPerBin, binCount - 1);
    std::uint64_t within = offset - bin * cyclesPerBin;
    double perCycle = 0;
    if (bin + 1 < binCount) {
        perCycle = static_cast<double>(binTimes[bin + 1] - binTimes[bin]) / static_cast<double>(cyclesPerBin);
    } else if (cycleCount > 1) {
        perCycle = static_cast<double>(lastTime - binTimes[0]) / static_cast<double>(cycleCount - 1);
    }
    return binTimes[bin] + static_cast<std::int64_t>(std::llround(perCycle * static_cast<double>(within)));
}

double RunRecording::MillisecondsAt(std::uint64_t cycle) const
{
    return binCount == 0 ? 0.0 : static_cast<double>(TimeOf(cycle) - binTimes[0]) / 1000.0;
}

void RunRecording::AddStimuli(const std::vector<StimulusEntry>& entries)
{
    stimuli.insert(stimuli.end(), entries.begin(), entries.end());
}

void RunRecording::SetSummary(const Simulation::Summary& runSummary)
{
    summary = runSummary;
}

void RunRecording::SetVerdict(const Verdict& runVerdict)
{
    verdict = runVerdict;
}

} // namespace VarnixBase::Sim
