#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace VarnixBase::Sim {

/// What a traced port holds, for writers that care (the waveform writer needs widths and kinds).
enum class ValueKind { Bool, Signed, Unsigned, Real, Text };

/// One traced port.
struct TraceColumn {
    std::string name;
    ValueKind kind = ValueKind::Signed;
    unsigned bits = 32;
    /// The port carries a quality and a time stamp of its own (qualified and device ports).
    bool hasQuality = false;
    /// The port carries a time stamp (qualified ports).
    bool hasTimestamp = false;
};

/// One port's state after a cycle.
struct TraceSample {
    /// The value as text: "true"/"false", a decimal number, a real in shortest round-trip form, or
    /// the text of a string port.
    std::string value;
    /// State and flags by name, e.g. "Good" or "Bad Overrange"; empty without a quality.
    std::string quality;
    /// Microseconds since the Unix epoch; 0 without a time stamp.
    std::int64_t timestamp = 0;
};

/// Receives the trace as the run goes; nothing is held beyond one cycle.
class TraceWriter {
public:
    virtual ~TraceWriter() = default;
    virtual void Begin(const std::vector<TraceColumn>& columns) = 0;
    /// `time` is the controller time of the cycle in microseconds since the Unix epoch.
    virtual void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) = 0;
    virtual void End() = 0;
};

enum class TraceFormat { Table, Csv, Jsonl, Vcd, Html };

/// "table", "csv", "jsonl", "vcd", "html"; false for anything else.
bool TryParseTraceFormat(const std::string& text, TraceFormat& format);

/// A writer of `format` on `out`, which must outlive the writer.
std::unique_ptr<TraceWriter> MakeTraceWriter(TraceFormat format, std::ostream& out);

} // namespace VarnixBase::Sim
