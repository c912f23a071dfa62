#include "VarnixBase/Sim/HtmlReport.hpp"

#include <fmt/format.h>

#include "VarnixBase/Sim/GraphSvg.hpp"
#include "VarnixBase/Sim/SvgPlot.hpp"

namespace VarnixBase::Sim {

namespace {

// Nothing may be fetched: no script, style, font, frame or picture from anywhere; the page's own
// style and script run inline.
constexpr const char* ContentPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; img-src data:";

constexpr const char* Style = R"css(
body{font:14px/1.4 system-ui,sans-serif;margin:0 auto;max-width:1200px;padding:0 16px 32px;color:#222;background:#fff}
h1{font-size:22px;margin:18px 0 2px}h2{font-size:18px;border-bottom:1px solid #ccc;margin-top:26px}
h3{font-size:15px;margin:16px 0 4px}h3 .kind{font-weight:normal;color:#555;font-size:13px}
.sub{color:#555;margin:0}nav a{margin-right:12px}
table{border-collapse:collapse;margin:6px 0}td,th{border:1px solid #ddd;padding:3px 8px;text-align:left}
td.n{text-align:right;font-variant-numeric:tabular-nums}
.pass{color:#1b5e20;font-weight:bold}.fail{color:#b71c1c;font-weight:bold}
.legend span{display:inline-block;margin-right:14px}.legend i{display:inline-block;width:14px;height:10px;margin-right:4px;vertical-align:middle}
.plot-box{overflow-x:auto}
svg.plot{display:block;width:calc(100% * var(--zoom, 1));min-width:760px;height:auto}
svg.plot text{font:11px sans-serif;fill:#333}
.ylabel{text-anchor:end}.xlabel{text-anchor:middle}.note{fill:#777}
.lane{fill:#fafafa;stroke:#ddd}
.value{fill:none;stroke:#1565c0;stroke-width:1.5;vector-effect:non-scaling-stroke}
.value.envelope{fill:#90caf9;stroke-width:.7}
.band{stroke:#fff;stroke-width:.5}.band.mixed{fill:#cfcfcf}.bandlabel{font-size:11px}
.q-good,i.q-good{fill:#43a047;background:#43a047}.q-questionable,i.q-questionable{fill:#fdd835;background:#fdd835}
.q-invalid,i.q-invalid{fill:#fb8c00;background:#fb8c00}.q-bad,i.q-bad{fill:#e53935;background:#e53935}
.q-none,i.q-none{fill:#bdbdbd;background:#bdbdbd}
.stimulus path{fill:#6a1b9a}.failure path{fill:#d50000}.failure line{stroke:#d50000;stroke-dasharray:3 2}
.axis,.tick{stroke:#777}
svg.graph{max-width:100%;height:auto}
svg.graph.plain text{font:11px sans-serif;text-anchor:middle;fill:#222}svg.graph.plain .name{font-weight:bold}
svg.graph.plain .node rect{fill:#eef3fb;stroke:#345}svg.graph.plain .edge path{fill:none;stroke:#333}
svg.graph.plain .binding path{fill:none;stroke:#666;stroke-dasharray:5 3}svg.graph.plain marker path{fill:#333}
#zoom{position:sticky;top:0;background:#fff;padding:4px 0;z-index:1}#zoom button{margin-right:4px}
)css";

// Buttons that widen every plot alike, and plots that scroll together. The page is whole without.
constexpr const char* Script = R"js(
(function(){
  var bar=document.getElementById('zoom'); if(!bar) return; bar.hidden=false;
  var level=1, shown=document.getElementById('zoom-level');
  function set(v){level=Math.max(1,Math.min(64,v));document.documentElement.style.setProperty('--zoom',level);shown.textContent=level+'\u00d7';}
  bar.querySelector('[data-zoom=in]').onclick=function(){set(level*2);};
  bar.querySelector('[data-zoom=out]').onclick=function(){set(level/2);};
  bar.querySelector('[data-zoom=reset]').onclick=function(){set(1);};
  var boxes=document.querySelectorAll('.plot-box');
  boxes.forEach(function(box){box.addEventListener('scroll',function(){
    boxes.forEach(function(other){if(other!==box&&other.scrollLeft!==box.scrollLeft)other.scrollLeft=box.scrollLeft;});
  });});
})();
)js";

std::string KindText(const TraceColumn& column)
{
    std::string kind;
    switch (column.kind) {
    case ValueKind::Bool: kind = "boolean"; break;
    case ValueKind::Signed: kind = fmt::format("signed {}-bit", column.bits); break;
    case ValueKind::Unsigned: kind = fmt::format("unsigned {}-bit", column.bits); break;
    case ValueKind::Real: kind = fmt::format("real {}-bit", column.bits); break;
    case ValueKind::Text: kind = "text"; break;
    }
    if (column.hasQuality) {
        kind += ", with quality";
    }
    if (column.hasTimestamp) {
        kind += " and time stamp";
    }
    return kind;
}

struct Run {
    std::string heading;
    std::unique_ptr<RunRecording> recording;
};

} // namespace

struct HtmlReport::Impl {
    HtmlReportInfo info;
    std::optional<OutlineProgram> program;
    std::string graph;
    std::vector<Run> runs;

    std::string PortType(const std::string& name) const
    {
        if (program) {
            for (const auto& port : program->ports) {
                if (port.name == name) {
                    return port.type;
                }
            }
        }
        return std::string();
    }

    std::string PortAnchor(std::size_t run, std::size_t column) const
    {
        return fmt::format("run{}-port{}", run + 1, column + 1);
    }

    std::string RunName(std::size_t index) const
    {
        return runs[index].heading.empty() ? fmt::format("run {}", index + 1) : runs[index].heading;
    }

    void Summary(std::string& out) const
    {
        out += "<section id=\"summary\"><h2>Summary</h2>";
        out += "<table><tr><th>run</th><th>cycles</th><th>cycle time</th><th>virtual time</th><th>ports</th>"
               "<th>connectors</th><th>stimuli</th><th>wall time</th><th>program per cycle</th><th>plotted</th></tr>";
        for (std::size_t r = 0; r < runs.size(); ++r) {
            const auto& run = *runs[r].recording;
            const auto& summary = run.GetSummary();
            std::uint64_t cycles = run.CycleCount();
            double span = cycles > 0 ? run.MillisecondsAt(run.FirstCycle() + cycles - 1) : 0;
            std::string plotted = run.CyclesPerBin() == 1
                                      ? std::string("every cycle")
                                      : fmt::format("minimum and maximum of {} cycles per bin", run.CyclesPerBin());
            out += fmt::format("<tr><td>{}</td><td class=\"n\">{}</td><td class=\"n\">{}</td><td class=\"n\">{} ms</td>"
                               "<td class=\"n\">{}</td><td class=\"n\">{}</td><td class=\"n\">{}</td>",
                               EscapeXml(RunName(r)), cycles,
                               info.cycleTime.count() > 0 ? fmt::format("{:g} ms", static_cast<double>(info.cycleTime.count()) / 1000)
                                                          : std::string("-"),
                               FormatMilliseconds(span), run.Columns().size(), summary ? std::to_string(summary->connectors) : "-",
                               run.Stimuli().size());
            if (summary) {
                out += fmt::format("<td class=\"n\">{:.3f} s</td><td class=\"n\">{:.3f} \u00b5s</td>", summary->wallSeconds,
                                   summary->meanCycleMicroseconds);
            } else {
                out += "<td>-</td><td>-</td>";
            }
            out += fmt::format("<td>{}</td></tr>", plotted);
        }
        out += "</table>";
        for (std::size_t r = 0; r < runs.size(); ++r) {
            const auto& summary = runs[r].recording->GetSummary();
            if (!summary || summary->timings.empty()) {
                continue;
            }
            out += fmt::format("<h3>Executables of {}</h3><table><tr><th>executable</th><th>min \u00b5s</th>"
                               "<th>mean \u00b5s</th><th>max \u00b5s</th></tr>",
                               EscapeXml(RunName(r)));
            for (const auto& timing : summary->timings) {
                out += fmt::format("<tr><td>{}</td><td class=\"n\">{:.3f}</td><td class=\"n\">{:.3f}</td>"
                                   "<td class=\"n\">{:.3f}</td></tr>",
                                   EscapeXml(timing.name), timing.minimum, timing.mean, timing.maximum);
            }
            out += "</table>";
        }
        out += "</section>";
    }

    void Verdicts(std::string& out) const
    {
        bool any = false;
        for (const auto& run : runs) {
            any = any || run.recording->GetVerdict().has_value();
        }
        if (!any) {
            return;
        }
        out += "<section id=\"verdicts\"><h2>Verdicts</h2><table><tr><th>scenario</th><th>result</th>"
               "<th>expectations</th><th>failed</th></tr>";
        for (std::size_t r = 0; r < runs.size(); ++r) {
            const auto& verdict = runs[r].recording->GetVerdict();
            if (!verdict) {
                continue;
            }
            out += fmt::format("<tr><td><a href=\"#run{}\">{}</a></td><td class=\"{}\">{}</td><td class=\"n\">{}</td>"
                               "<td class=\"n\">{}</td></tr>",
                               r + 1, EscapeXml(verdict->scenario.empty() ? RunName(r) : verdict->scenario),
                               verdict->passed ? "pass" : "fail", verdict->passed ? "passed" : "failed",
                               verdict->expectations, verdict->failures.size());
        }
        out += "</table>";
        for (std::size_t r = 0; r < runs.size(); ++r) {
            const auto& run = *runs[r].recording;
            const auto& verdict = run.GetVerdict();
            if (!verdict || verdict->failures.empty()) {
                continue;
            }
            out += fmt::format("<h3>Failed expectations of {}</h3><table class=\"failures\"><tr><th>cycle</th><th>port</th>"
                               "<th>expected</th><th>actual</th><th>where</th></tr>",
                               EscapeXml(verdict->scenario.empty() ? RunName(r) : verdict->scenario));
            for (const auto& failure : verdict->failures) {
                std::string port = EscapeXml(failure.port);
                for (std::size_t c = 0; c < run.Columns().size(); ++c) {
                    if (run.Columns()[c].name == failure.port) {
                        port = fmt::format("<a href=\"#{}\">{}</a>", PortAnchor(r, c), port);
                        break;
                    }
                }
                out += fmt::format("<tr><td class=\"n\">{}</td><td>{}</td><td>{}</td><td>{}</td><td>{}</td></tr>",
                                   failure.cycle, port, EscapeXml(failure.expected), EscapeXml(failure.actual),
                                   EscapeXml(failure.origin));
            }
            out += "</table>";
        }
        out += "</section>";
    }

    void Ports(std::string& out) const
    {
        out += "<section id=\"ports\"><h2>Ports</h2>"
               "<p class=\"legend\">Quality: <span><i class=\"q-good\"></i>Good</span>"
               "<span><i class=\"q-questionable\"></i>Questionable</span><span><i class=\"q-invalid\"></i>Invalid</span>"
               "<span><i class=\"q-bad\"></i>Bad</span><span><i class=\"q-none\"></i>none</span>"
               "<span><b style=\"color:#6a1b9a\">\u25bc</b> stimulus written before the cycle</span>"
               "<span><b style=\"color:#d50000\">\u25bc</b> failed expectation</span>"
               "Hover a band or a mark for its text.</p>"
               "<div id=\"zoom\" hidden>Zoom: <button type=\"button\" data-zoom=\"out\">\u2212</button>"
               "<button type=\"button\" data-zoom=\"in\">+</button><button type=\"button\" data-zoom=\"reset\">1\u00d7</button>"
               "<span id=\"zoom-level\">1\u00d7</span></div>";
        for (std::size_t r = 0; r < runs.size(); ++r) {
            const auto& run = *runs[r].recording;
            out += fmt::format("<section class=\"run\" id=\"run{}\">", r + 1);
            if (runs.size() > 1 || !runs[r].heading.empty()) {
                out += fmt::format("<h2>{}</h2>", EscapeXml(RunName(r)));
            }
            for (std::size_t c = 0; c < run.Columns().size(); ++c) {
                const auto& column = run.Columns()[c];
                std::string type = PortType(column.name);
                out += fmt::format("<section class=\"port\" id=\"{}\"><h3>{} <span class=\"kind\">{}{}</span></h3>"
                                   "<div class=\"plot-box\">{}</div></section>",
                                   PortAnchor(r, c), EscapeXml(column.name),
                                   type.empty() ? std::string() : EscapeXml(type) + ": ", KindText(column),
                                   PlotPort(run, c));
            }
            out += "</section>";
        }
        out += "</section>";
    }
};

HtmlReport::HtmlReport(HtmlReportInfo info) : impl(std::make_unique<Impl>())
{
    impl->info = std::move(info);
}

HtmlReport::~HtmlReport() = default;

void HtmlReport::SetProgram(const OutlineProgram& program)
{
    SetProgram(program, GraphSvg(program));
}

void HtmlReport::SetProgram(const OutlineProgram& program, std::string graphSvg)
{
    impl->program = program;
    impl->graph = std::move(graphSvg);
}

RunRecording& HtmlReport::AddRun(const std::string& heading)
{
    impl->runs.push_back({heading, std::make_unique<RunRecording>()});
    return *impl->runs.back().recording;
}

void HtmlReport::Write(std::ostream& stream) const
{
    std::string title = impl->info.title.empty() ? std::string("run") : impl->info.title;
    std::string out;
    out += fmt::format("<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
                       "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">"
                       "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
                       "<title>{} \u2013 varnix-sim</title><style>{}</style></head>\n<body>",
                       ContentPolicy, EscapeXml(title), Style);
    out += fmt::format("<header><h1>{}</h1>", EscapeXml(title));
    std::string sub;
    if (!impl->info.document.empty()) {
        sub += EscapeXml(impl->info.document);
    }
    if (!impl->info.instance.empty()) {
        sub += (sub.empty() ? "" : " \u00b7 instance ") + EscapeXml(impl->info.instance);
    }
    if (!sub.empty()) {
        out += fmt::format("<p class=\"sub\">{}</p>", sub);
    }
    out += "<nav><a href=\"#summary\">Summary</a>";
    bool verdicts = false;
    for (const auto& run : impl->runs) {
        verdicts = verdicts || run.recording->GetVerdict().has_value();
    }
    if (verdicts) {
        out += "<a href=\"#verdicts\">Verdicts</a>";
    }
    if (!impl->graph.empty()) {
        out += "<a href=\"#graph\">Program graph</a>";
    }
    out += "<a href=\"#ports\">Ports</a></nav></header>\n";
    impl->Summary(out);
    out += '\n';
    impl->Verdicts(out);
    if (!impl->graph.empty()) {
        out += "<section id=\"graph\"><h2>Program graph</h2>" + impl->graph + "</section>\n";
    }
    impl->Ports(out);
    out += fmt::format("\n<script>{}</script>\n</body></html>\n", Script);
    stream << out;
    stream.flush();
}

namespace {

class HtmlTraceWriter : public TraceWriter {
public:
    explicit HtmlTraceWriter(std::ostream& out) : out(out), report(HtmlReportInfo{}), run(report.AddRun()) {}

    void Begin(const std::vector<TraceColumn>& columns) override { run.Begin(columns); }
    void Cycle(std::uint64_t cycle, std::int64_t time, const std::vector<TraceSample>& samples) override
    {
        run.Cycle(cycle, time, samples);
    }
    void End() override
    {
        run.End();
        report.Write(out);
    }

private:
    std::ostream& out;
    HtmlReport report;
    RunRecording& run;
};

} // namespace

std::unique_ptr<TraceWriter> MakeHtmlTraceWriter(std::ostream& out)
{
    return std::make_unique<HtmlTraceWriter>(out);
}

} // namespace VarnixBase::Sim
