#include "VarnixBase/Sim/SvgPlot.hpp"

#include <algorithm>
#include <cmath>
#include <map>

#include <fmt/format.h>

namespace VarnixBase::Sim {

namespace {

constexpr double Left = 80;
constexpr double Width = PlotLaneWidth;
constexpr double Right = 40;
constexpr double MarkTop = 2;    // stimulus and failure marks
constexpr double LaneTop = 14;   // value lane
constexpr double NumberLaneHeight = 90;
constexpr double TextLaneHeight = 26;
constexpr double QualityGap = 4;
constexpr double QualityHeight = 12;
constexpr double AxisHeight = 34;

/// One drawn column: a stretch of cycles with what the recording kept of them.
struct PlotColumn {
    std::uint64_t from = 0; // first cycle
    std::uint64_t to = 0;   // one past the last cycle
    RunRecording::Bin bin;
};

const char* QualityClass(QualityLevel level)
{
    switch (level) {
    case QualityLevel::Good: return "q-good";
    case QualityLevel::Questionable: return "q-questionable";
    case QualityLevel::Invalid: return "q-invalid";
    case QualityLevel::Bad: return "q-bad";
    case QualityLevel::None: break;
    }
    return "q-none";
}

std::string Number(double value)
{
    return fmt::format("{:.2f}", value);
}

std::string CycleRange(std::uint64_t from, std::uint64_t to)
{
    return to - from <= 1 ? fmt::format("cycle {}", from) : fmt::format("cycles {}\xE2\x80\x93{}", from, to - 1);
}

/// Columns of a plot with more cycles than the recording keeps one by one: two per plot unit, so
/// that the envelope still has detail at twice the zoom.
constexpr std::size_t EnvelopeColumns = 2 * static_cast<std::size_t>(Width);

/// The columns to draw: every cycle while each has a bin of its own, else the bins folded into
/// `EnvelopeColumns` columns (minimum of minima, maximum of maxima, worst quality).
std::vector<PlotColumn> Columns(const RunRecording& run, std::size_t column)
{
    const auto& bins = run.Bins(column);
    std::uint64_t perBin = run.CyclesPerBin();
    std::uint64_t first = run.FirstCycle();
    std::uint64_t end = first + run.CycleCount();
    std::vector<PlotColumn> result;
    std::size_t count = bins.size();
    std::size_t wanted = perBin == 1 ? count : std::min(count, EnvelopeColumns);
    result.reserve(wanted);
    for (std::size_t c = 0; c < wanted; ++c) {
        std::size_t fromBin = c * count / wanted;
        std::size_t toBin = (c + 1) * count / wanted;
        PlotColumn out;
        out.from = first + fromBin * perBin;
        out.to = std::min<std::uint64_t>(end, first + toBin * perBin);
        out.bin = bins[fromBin];
        for (std::size_t b = fromBin + 1; b < toBin; ++b) {
            run.Fold(out.bin, bins[b]);
        }
        result.push_back(std::move(out));
    }
    return result;
}

/// Ticks at 1, 2 or 5 times a power of ten, about eight over the run.
std::uint64_t TickStep(std::uint64_t cycles)
{
    std::uint64_t step = 1;
    while (true) {
        for (std::uint64_t factor : {1, 2, 5}) {
            if (cycles / (step * factor) <= 8) {
                return step * factor;
            }
        }
        step *= 10;
    }
}

class Plot {
public:
    Plot(const RunRecording& run, std::size_t column)
        : run(run), info(run.Columns().at(column)), columns(Columns(run, column)),
          first(run.FirstCycle()), count(std::max<std::uint64_t>(run.CycleCount(), 1)),
          envelope(run.CyclesPerBin() > 1)
    {
        laneHeight = info.kind == ValueKind::Text ? TextLaneHeight : NumberLaneHeight;
        qualityTop = LaneTop + laneHeight + QualityGap;
        axisTop = qualityTop + (info.hasQuality ? QualityHeight : 0);
    }

    std::string Render()
    {
        double height = axisTop + AxisHeight;
        out += fmt::format("<svg class=\"plot\" viewBox=\"0 0 {} {}\" role=\"img\" aria-label=\"{}\" data-port=\"{}\">",
                           Left + Width + Right, height, EscapeXml(info.name + " over the cycles"),
                           EscapeXml(info.name));
        out += fmt::format("<rect class=\"lane\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\"/>", Left, LaneTop, Width,
                           laneHeight);
        if (info.kind == ValueKind::Text) {
            TextBands();
        } else {
            NumberLine();
        }
        if (info.hasQuality) {
            QualityBands();
        }
        Axis();
        Stimuli();
        Failures();
        out += "</svg>";
        return std::move(out);
    }

private:
    double X(std::uint64_t cycle) const
    {
        return Left + static_cast<double>(cycle - first) * Width / static_cast<double>(count);
    }

    double Y(double value) const
    {
        return LaneTop + 4 + (high - value) / (high - low) * (laneHeight - 8);
    }

    void NumberLine()
    {
        bool any = false;
        for (const auto& column : columns) {
            if (column.bin.hasNumber) {
                low = any ? std::min(low, column.bin.minimum) : column.bin.minimum;
                high = any ? std::max(high, column.bin.maximum) : column.bin.maximum;
                any = true;
            }
        }
        if (info.kind == ValueKind::Bool) {
            low = 0;
            high = 1;
        } else if (!any) {
            low = 0;
            high = 1;
        } else if (low == high) {
            low -= 1;
            high += 1;
        }
        std::string highLabel = info.kind == ValueKind::Bool ? "true" : fmt::format("{:.6g}", high);
        std::string lowLabel = info.kind == ValueKind::Bool ? "false" : fmt::format("{:.6g}", low);
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">{}</text>", Left - 6, Number(Y(high) + 4),
                           EscapeXml(highLabel));
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">{}</text>", Left - 6, Number(Y(low) + 4),
                           EscapeXml(lowLabel));
        if (!any) {
            out += fmt::format("<text class=\"note\" x=\"{}\" y=\"{}\">no numeric value</text>", Left + 8,
                               LaneTop + laneHeight / 2);
            return;
        }
        if (envelope) {
            Envelope();
        } else {
            Path(info.kind != ValueKind::Real);
        }
    }

    /// Integers and booleans hold their value for the whole cycle: horizontal, then vertical.
    /// Reals as a line through the middle of every cycle.
    void Path(bool steps)
    {
        std::string path;
        bool open = false;
        for (const auto& column : columns) {
            if (!column.bin.hasNumber) {
                open = false;
                continue;
            }
            std::string y = Number(Y(column.bin.last));
            if (steps) {
                path += open ? fmt::format("V{}", y) : fmt::format("M{} {}", Number(X(column.from)), y);
                path += fmt::format("H{}", Number(X(column.to)));
            } else {
                path += fmt::format("{}{} {}", open ? "L" : "M", Number((X(column.from) + X(column.to)) / 2), y);
            }
            open = true;
        }
        out += fmt::format("<path class=\"value {}\" d=\"{}\"/>", steps ? "step" : "line", path);
    }

    /// Many cycles per column: the band between the smallest and the largest value of each column.
    void Envelope()
    {
        std::size_t start = 0;
        while (start < columns.size()) {
            if (!columns[start].bin.hasNumber) {
                ++start;
                continue;
            }
            std::size_t stop = start;
            while (stop < columns.size() && columns[stop].bin.hasNumber) {
                ++stop;
            }
            std::string path = fmt::format("M{} {}", Number(X(columns[start].from)), Number(Y(columns[start].bin.maximum)));
            for (std::size_t i = start; i < stop; ++i) {
                path += fmt::format("V{}H{}", Number(Y(columns[i].bin.maximum)), Number(X(columns[i].to)));
            }
            for (std::size_t i = stop; i-- > start;) {
                path += fmt::format("V{}H{}", Number(Y(columns[i].bin.minimum)), Number(X(columns[i].from)));
            }
            out += fmt::format("<path class=\"value envelope\" d=\"{}Z\"/>", path);
            start = stop;
        }
    }

    void TextBands()
    {
        std::size_t start = 0;
        while (start < columns.size()) {
            const auto& bin = columns[start].bin;
            std::size_t stop = start + 1;
            if (!bin.textChanged) {
                while (stop < columns.size() && !columns[stop].bin.textChanged && columns[stop].bin.text == bin.text) {
                    ++stop;
                }
            }
            double x = X(columns[start].from);
            double width = X(columns[stop - 1].to) - x;
            std::string range = CycleRange(columns[start].from, columns[stop - 1].to);
            if (bin.textChanged) {
                out += fmt::format("<rect class=\"band mixed\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\">"
                                   "<title>{}: several values</title></rect>",
                                   Number(x), LaneTop, Number(width), laneHeight, range);
            } else {
                std::size_t hue = std::hash<std::string>{}(bin.text) % 360;
                out += fmt::format("<rect class=\"band\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" "
                                   "style=\"fill:hsl({},55%,85%)\"><title>{}: \u201c{}\u201d</title></rect>",
                                   Number(x), LaneTop, Number(width), laneHeight, hue, range, EscapeXml(bin.text));
                // A label where it fits (about 6.5 units per character at the band's font size).
                std::size_t fits = static_cast<std::size_t>(std::max(0.0, (width - 6) / 6.5));
                if (fits >= 1) {
                    std::string label = bin.text.empty() ? std::string("\u2205") : bin.text;
                    label = label.substr(0, Utf8Prefix(label, fits));
                    out += fmt::format("<text class=\"bandlabel\" x=\"{}\" y=\"{}\">{}</text>", Number(x + 3),
                                       LaneTop + laneHeight / 2 + 4, EscapeXml(label));
                }
            }
            start = stop;
        }
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">text</text>", Left - 6, LaneTop + laneHeight / 2 + 4);
    }

    void QualityBands()
    {
        const auto& texts = run.QualityTexts();
        std::size_t start = 0;
        while (start < columns.size()) {
            std::uint32_t quality = columns[start].bin.quality;
            std::size_t stop = start + 1;
            while (stop < columns.size() && columns[stop].bin.quality == quality) {
                ++stop;
            }
            double x = X(columns[start].from);
            std::string text = texts[quality].empty() ? std::string("no quality") : texts[quality];
            out += fmt::format("<rect class=\"quality {}\" x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\">"
                               "<title>{}: {}{}</title></rect>",
                               QualityClass(QualityLevelOf(texts[quality])), Number(x), qualityTop,
                               Number(X(columns[stop - 1].to) - x), QualityHeight,
                               CycleRange(columns[start].from, columns[stop - 1].to), envelope ? "worst " : "",
                               EscapeXml(text));
            start = stop;
        }
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">quality</text>", Left - 6,
                           qualityTop + QualityHeight - 2);
    }

    void Axis()
    {
        std::uint64_t step = TickStep(count);
        double top = axisTop + 2;
        out += fmt::format("<line class=\"axis\" x1=\"{}\" y1=\"{}\" x2=\"{}\" y2=\"{}\"/>", Left, top, Left + Width, top);
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">cycle</text>", Left - 6, top + 13);
        out += fmt::format("<text class=\"ylabel\" x=\"{}\" y=\"{}\">ms</text>", Left - 6, top + 27);
        std::uint64_t tick = (first + step - 1) / step * step;
        if (tick < first) {
            tick = first;
        }
        for (; tick < first + count; tick += step) {
            double x = X(tick);
            out += fmt::format("<line class=\"tick\" x1=\"{0}\" y1=\"{1}\" x2=\"{0}\" y2=\"{2}\"/>", Number(x), top, top + 4);
            out += fmt::format("<text class=\"xlabel\" x=\"{}\" y=\"{}\">{}</text>", Number(x), top + 13, tick);
            out += fmt::format("<text class=\"xlabel\" x=\"{}\" y=\"{}\">{}</text>", Number(x), top + 27,
                               FormatMilliseconds(run.MillisecondsAt(tick)));
        }
    }

    /// Marks grouped by plot unit, so that a long run with many stimuli draws at most one mark per
    /// unit; the title lists the first few.
    void Marks(const std::map<long, std::vector<std::string>>& byUnit, const char* cssClass, bool line)
    {
        for (const auto& [unit, texts] : byUnit) {
            std::string title;
            for (std::size_t i = 0; i < texts.size() && i < 5; ++i) {
                title += (i > 0 ? "\n" : "") + texts[i];
            }
            if (texts.size() > 5) {
                title += fmt::format("\nand {} more", texts.size() - 5);
            }
            double x = static_cast<double>(unit) + 0.5;
            out += fmt::format("<g class=\"{}\">", cssClass);
            if (line) {
                out += fmt::format("<line x1=\"{0}\" y1=\"{1}\" x2=\"{0}\" y2=\"{2}\"/>", Number(x), LaneTop,
                                   LaneTop + laneHeight);
            }
            out += fmt::format("<path d=\"M{} {}l-5 -9h10z\"/><title>{}</title></g>", Number(x), LaneTop + 1,
                               EscapeXml(title));
        }
    }

    void Stimuli()
    {
        std::map<long, std::vector<std::string>> byUnit;
        for (const auto& stimulus : run.Stimuli()) {
            if (stimulus.port != info.name || stimulus.cycle < first || stimulus.cycle >= first + count) {
                continue;
            }
            byUnit[std::lround(std::floor(X(stimulus.cycle)))].push_back(fmt::format(
                "before cycle {}: {} := {} ({})", stimulus.cycle, stimulus.port, stimulus.literal, stimulus.origin));
        }
        Marks(byUnit, "stimulus", false);
    }

    void Failures()
    {
        if (!run.GetVerdict()) {
            return;
        }
        std::map<long, std::vector<std::string>> byUnit;
        for (const auto& failure : run.GetVerdict()->failures) {
            if (failure.port != info.name || failure.cycle < first || failure.cycle >= first + count) {
                continue;
            }
            double middle = (X(failure.cycle) + X(failure.cycle + 1)) / 2;
            std::string text = fmt::format("after cycle {}: {} expected {}, was {}", failure.cycle, failure.port,
                                           failure.expected, failure.actual);
            if (!failure.origin.empty()) {
                text += fmt::format(" ({})", failure.origin);
            }
            byUnit[std::lround(std::floor(middle))].push_back(text);
        }
        Marks(byUnit, "failure", true);
    }

    const RunRecording& run;
    const TraceColumn& info;
    std::vector<PlotColumn> columns;
    std::uint64_t first;
    std::uint64_t count;
    bool envelope;
    double laneHeight = NumberLaneHeight;
    double qualityTop = 0;
    double axisTop = 0;
    double low = 0;
    double high = 1;
    std::string out;
};

} // namespace

std::string FormatMilliseconds(double milliseconds)
{
    return std::abs(milliseconds) >= 100000 ? fmt::format("{:.0f}", milliseconds) : fmt::format("{:g}", milliseconds);
}

std::string EscapeXml(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\'': out += "&#39;"; break;
        default:
            if (static_cast<unsigned char>(c) >= 0x20 || c == '\n' || c == '\t') {
                out += c;
            }
        }
    }
    return out;
}

std::string PlotPort(const RunRecording& run, std::size_t column)
{
    return Plot(run, column).Render();
}

} // namespace VarnixBase::Sim
