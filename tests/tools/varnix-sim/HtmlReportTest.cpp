#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "VarnixBase/Sim/GraphSvg.hpp"
#include "VarnixBase/Sim/HtmlReport.hpp"
#include "VarnixBase/Sim/RunRecording.hpp"
#include "VarnixBase/Sim/SvgPlot.hpp"

using namespace VarnixBase::Sim;

namespace {

constexpr std::int64_t Start = 1'000'000;
constexpr std::int64_t Step = 10'000;

std::vector<TraceColumn> TankColumns()
{
    return {
        {"raw", ValueKind::Unsigned, 16, true, false},
        {"level", ValueKind::Real, 64, true, true},
        {"on", ValueKind::Bool, 1, false, false},
        {"text", ValueKind::Text, 8, false, false},
    };
}

/// Cycle `cycle` of a run in which raw counts up and turns Bad from cycle 9 to 11, and the text
/// changes every fourth cycle.
std::vector<TraceSample> TankSamples(std::uint64_t cycle)
{
    bool bad = cycle >= 9 && cycle <= 11;
    std::string quality = bad ? "Bad Overrange" : "Good";
    return {{std::to_string(cycle * 10), quality, 0},
            {fmt::format("{}", static_cast<double>(cycle) / 2), quality, 0},
            {cycle % 2 == 0 ? "true" : "false", "", 0},
            {fmt::format("state {}", cycle / 4), "", 0}};
}

void Record(RunRecording& run, std::uint64_t cycles)
{
    run.Begin(TankColumns());
    for (std::uint64_t cycle = 1; cycle <= cycles; ++cycle) {
        run.Cycle(cycle, Start + static_cast<std::int64_t>(cycle - 1) * Step, TankSamples(cycle));
    }
    run.End();
}

std::size_t Count(const std::string& text, const std::string& what)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + what.size())) {
        ++count;
    }
    return count;
}

OutlineProgram TankProgram()
{
    OutlineProgram program;
    program.type = "TankProgram";
    program.ports = {{"raw", "AnalogIn", "", false, 7, {}, {}},
                     {"level", "qualified.float64", "", false, 8, {}, {}},
                     {"display", "int16", "", false, 9, {}, {}}};
    program.connectors = {{"raw", "level", "scale", 12, {}, {}}, {"level", "display", "copy", 16, {}, {}}};
    return program;
}

} // namespace

TEST(RunRecording, KeepsEveryCycleInABinOfItsOwnUpToTheLimit)
{
    RunRecording run;
    Record(run, 20);
    EXPECT_EQ(run.CycleCount(), 20u);
    EXPECT_EQ(run.BinCount(), 20u);
    EXPECT_EQ(run.CyclesPerBin(), 1u);
    const auto& raw = run.Bins(0);
    EXPECT_EQ(raw[8].last, 90);
    EXPECT_EQ(run.QualityTexts()[raw[8].quality], "Bad Overrange");
    EXPECT_EQ(run.QualityTexts()[raw[7].quality], "Good");
    EXPECT_EQ(run.Bins(2)[1].last, 1); // "true"
    EXPECT_EQ(run.Bins(3)[4].text, "state 1");
    EXPECT_FALSE(run.Bins(3)[4].textChanged);
    EXPECT_EQ(run.TimeOf(3), Start + 2 * Step);
    EXPECT_DOUBLE_EQ(run.MillisecondsAt(20), 190.0);
}

TEST(RunRecording, MergesNeighbouringBinsWhenTheyRunOutKeepingExtremesAndTheWorstQuality)
{
    RunRecording run;
    Record(run, RunRecording::MaxBins + 1);
    EXPECT_EQ(run.CyclesPerBin(), 2u);
    EXPECT_EQ(run.BinCount(), RunRecording::MaxBins / 2 + 1);
    const auto& raw = run.Bins(0);
    // Bin 4 holds cycles 9 and 10; bin 5 cycles 11 (Bad) and 12 (Good).
    EXPECT_EQ(raw[4].minimum, 90);
    EXPECT_EQ(raw[4].maximum, 100);
    EXPECT_EQ(raw[4].last, 100);
    EXPECT_EQ(run.QualityTexts()[raw[5].quality], "Bad Overrange");
    EXPECT_EQ(run.QualityTexts()[raw[6].quality], "Good");
    // The text changes between cycles 3 and 4, within bin 1.
    EXPECT_TRUE(run.Bins(3)[1].textChanged);
    EXPECT_FALSE(run.Bins(3)[2].textChanged);
    EXPECT_EQ(run.TimeOf(4), Start + 3 * Step);
    EXPECT_EQ(run.TimeOf(5), Start + 4 * Step);
}

TEST(RunRecording, StaysWithinItsBinsForAMillionCycles)
{
    RunRecording run;
    run.Begin({{"n", ValueKind::Signed, 32, true, false}});
    std::vector<TraceSample> sample(1);
    for (std::uint64_t cycle = 1; cycle <= 1'000'000; ++cycle) {
        sample[0].value = std::to_string(static_cast<std::int64_t>(cycle % 1000) - 500);
        sample[0].quality = cycle == 777'777 ? "Invalid WireBreak" : "Good";
        run.Cycle(cycle, Start + static_cast<std::int64_t>(cycle - 1) * Step, sample);
    }
    EXPECT_LE(run.BinCount(), RunRecording::MaxBins);
    EXPECT_GT(run.BinCount(), RunRecording::MaxBins / 2);
    double minimum = 0, maximum = 0;
    std::size_t invalid = 0;
    for (const auto& bin : run.Bins(0)) {
        minimum = std::min(minimum, bin.minimum);
        maximum = std::max(maximum, bin.maximum);
        invalid += run.QualityTexts()[bin.quality] == "Invalid WireBreak" ? 1 : 0;
    }
    EXPECT_EQ(invalid, 1u);
    EXPECT_EQ(minimum, -500);
    EXPECT_EQ(maximum, 499);
    EXPECT_DOUBLE_EQ(run.MillisecondsAt(1'000'000), 999'999 * 10.0);
}

TEST(RunRecording, KeepsABoundedListOfQualityTexts)
{
    RunRecording run;
    run.Begin({{"n", ValueKind::Signed, 32, true, false}});
    std::vector<TraceSample> sample(1);
    for (std::uint64_t cycle = 1; cycle <= 1000; ++cycle) {
        sample[0].value = "1";
        sample[0].quality = fmt::format("Bad {:x}", cycle);
        run.Cycle(cycle, 0, sample);
    }
    EXPECT_LE(run.QualityTexts().size(), 256u + 8u);
    EXPECT_EQ(run.QualityTexts()[run.Bins(0).back().quality], "Bad");
}

TEST(RunRecording, KeepsLongTextsCutAtACharacterBoundary)
{
    RunRecording run;
    run.Begin({{"t", ValueKind::Text, 8, false, false}});
    std::string longText = "a";
    for (int i = 0; i < 100; ++i) {
        longText += "\xC3\xA4"; // a two-byte character
    }
    run.Cycle(1, 0, {{longText, "", 0}});
    const std::string& kept = run.Bins(0)[0].text;
    // 1 + 31 two-byte characters fit into 64 bytes; then the ellipsis.
    EXPECT_EQ(kept, longText.substr(0, 63) + "\xE2\x80\xA6");
}

TEST(RunRecording, OrdersQualityStatesByBadness)
{
    EXPECT_LT(QualityLevelOf("Good"), QualityLevelOf("Questionable"));
    EXPECT_LT(QualityLevelOf("Questionable FooFlag"), QualityLevelOf("Invalid WireBreak"));
    EXPECT_LT(QualityLevelOf("Invalid"), QualityLevelOf("Bad Overrange|Failure"));
    EXPECT_EQ(QualityLevelOf(""), QualityLevelOf("whatever"));
}

TEST(SvgPlot, DrawsIntegersAsStepsRealsAsLinesAndTextsAsLabelledBands)
{
    RunRecording run;
    Record(run, 20);
    std::string raw = PlotPort(run, 0);
    EXPECT_EQ(Count(raw, "class=\"value step\""), 1u);
    EXPECT_EQ(Count(raw, "class=\"value envelope\""), 0u);
    EXPECT_EQ(Count(PlotPort(run, 1), "class=\"value line\""), 1u);
    EXPECT_EQ(Count(PlotPort(run, 2), "class=\"value step\""), 1u);
    EXPECT_NE(PlotPort(run, 2).find(">true</text>"), std::string::npos);
    std::string text = PlotPort(run, 3);
    EXPECT_EQ(Count(text, "class=\"band\""), 6u); // states 0 to 5
    EXPECT_NE(text.find("<title>cycles 4\xE2\x80\x93" "7: \xE2\x80\x9Cstate 1\xE2\x80\x9D</title>"), std::string::npos);
    EXPECT_NE(text.find(">state 1</text>"), std::string::npos);
    EXPECT_EQ(Count(text, "class=\"quality "), 0u);
}

TEST(SvgPlot, DrawsTheQualityAsBandsWithTheirTextsAsTitles)
{
    RunRecording run;
    Record(run, 20);
    std::string raw = PlotPort(run, 0);
    EXPECT_EQ(Count(raw, "class=\"quality q-good\""), 2u);
    EXPECT_EQ(Count(raw, "class=\"quality q-bad\""), 1u);
    EXPECT_NE(raw.find("<title>cycles 9\xE2\x80\x93" "11: Bad Overrange</title>"), std::string::npos);
    EXPECT_NE(raw.find("<title>cycles 12\xE2\x80\x93" "20: Good</title>"), std::string::npos);
}

TEST(SvgPlot, LabelsTheAxisInCyclesAndMilliseconds)
{
    RunRecording run;
    Record(run, 20);
    std::string raw = PlotPort(run, 0);
    EXPECT_NE(raw.find(">cycle</text>"), std::string::npos);
    EXPECT_NE(raw.find(">ms</text>"), std::string::npos);
    // Ticks every 5 cycles: cycle 10 starts at 90 ms.
    EXPECT_TRUE(std::regex_search(raw, std::regex(">10</text><text class=\"xlabel\" x=\"[0-9.]+\" y=\"[0-9.]+\">90</text>")));
}

TEST(SvgPlot, WritesMillisecondsWithoutExponents)
{
    EXPECT_EQ(FormatMilliseconds(0), "0");
    EXPECT_EQ(FormatMilliseconds(0.5), "0.5");
    EXPECT_EQ(FormatMilliseconds(99999.5), "99999.5");
    EXPECT_EQ(FormatMilliseconds(1999990), "1999990");
}

TEST(SvgPlot, MarksStimuliAndFailedExpectationsAtTheirCycles)
{
    RunRecording run;
    run.AddStimuli({{9, "raw", "16#8001", "tank.csv:7"}, {3, "level", "1.5", "--set level=1.5@3"}});
    Record(run, 20);
    Verdict verdict;
    verdict.scenario = "overrange";
    verdict.passed = false;
    verdict.expectations = 4;
    verdict.failures = {{12, "raw", "Good", "Bad Overrange", "tank.scenario:5"}};
    run.SetVerdict(verdict);
    std::string raw = PlotPort(run, 0);
    EXPECT_EQ(Count(raw, "<g class=\"stimulus\">"), 1u);
    EXPECT_NE(raw.find("<title>before cycle 9: raw := 16#8001 (tank.csv:7)</title>"), std::string::npos);
    EXPECT_EQ(Count(raw, "<g class=\"failure\">"), 1u);
    EXPECT_NE(raw.find("<title>after cycle 12: raw expected Good, was Bad Overrange (tank.scenario:5)</title>"),
              std::string::npos);
    // The failure's mark sits in the middle of cycle 12: 80 + 11.5 * 1000 / 20 = 655.
    EXPECT_NE(raw.find("<line x1=\"655.50\""), std::string::npos);
    EXPECT_EQ(Count(PlotPort(run, 1), "<g class=\"stimulus\">"), 1u);
    EXPECT_EQ(Count(PlotPort(run, 1), "<g class=\"failure\">"), 0u);
}

TEST(SvgPlot, DrawsAnEnvelopeBeyondTheCyclesKeptOneByOne)
{
    RunRecording run;
    run.AddStimuli({{50'001, "raw", "1", "a"}, {50'002, "raw", "2", "b"}});
    Record(run, 100'000);
    std::string raw = PlotPort(run, 0);
    EXPECT_EQ(Count(raw, "class=\"value step\""), 0u);
    EXPECT_EQ(Count(raw, "class=\"value envelope\""), 1u);
    EXPECT_NE(raw.find("<title>cycles 1\xE2\x80\x93"), std::string::npos);
    EXPECT_NE(raw.find("worst Bad Overrange"), std::string::npos);
    // Two stimuli a cycle apart share one mark.
    EXPECT_EQ(Count(raw, "<g class=\"stimulus\">"), 1u);
    EXPECT_NE(raw.find("before cycle 50001: raw := 1 (a)\nbefore cycle 50002: raw := 2 (b)"), std::string::npos);
    EXPECT_LT(raw.size(), 200'000u);
}

TEST(SvgPlot, EscapesTextsForMarkup)
{
    EXPECT_EQ(EscapeXml("a<b>&\"c'\x01"), "a&lt;b&gt;&amp;&quot;c&#39;");
    RunRecording run;
    run.Begin({{"t", ValueKind::Text, 8, false, false}});
    run.Cycle(1, 0, {{"</svg><script>", "", 0}});
    std::string plot = PlotPort(run, 0);
    EXPECT_EQ(plot.find("<script>"), std::string::npos);
    EXPECT_NE(plot.find("&lt;/svg&gt;&lt;script&gt;"), std::string::npos);
}

TEST(SvgPlot, DrawsAPortWithoutCyclesOrNumbers)
{
    RunRecording empty;
    empty.Begin({{"n", ValueKind::Signed, 32, true, false}});
    EXPECT_NE(PlotPort(empty, 0).find("no numeric value"), std::string::npos);
    RunRecording unknown;
    unknown.Begin({{"n", ValueKind::Real, 64, false, false}});
    unknown.Cycle(1, 0, {{"?", "", 0}});
    unknown.Cycle(2, 0, {{"nan", "", 0}});
    EXPECT_NE(PlotPort(unknown, 0).find("no numeric value"), std::string::npos);
}

TEST(GraphSvg, PlainLayoutDrawsEveryPortAndConnector)
{
    std::string svg = PlainGraphSvg(TankProgram());
    EXPECT_EQ(svg.rfind("<svg class=\"graph plain\"", 0), 0u);
    EXPECT_EQ(Count(svg, "<g class=\"node "), 3u);
    EXPECT_NE(svg.find("<g class=\"node device\"><title>raw: AnalogIn</title>"), std::string::npos);
    EXPECT_NE(svg.find("<g class=\"node qualified\"><title>level: qualified.float64</title>"), std::string::npos);
    EXPECT_EQ(Count(svg, "<g class=\"edge\">"), 2u);
    EXPECT_NE(svg.find(">unsigned short -&gt; double</text>"), std::string::npos);
}

TEST(GraphSvg, PlainLayoutSurvivesLoopsAndBindings)
{
    auto program = TankProgram();
    program.connectors.push_back({"display", "raw", "copy", 20, {}, {}});
    program.ports[1].qualityProviders.push_back({"raw:level", 8});
    program.ports[2].qualityProviders.push_back({"nowhere", 9});
    std::string svg = PlainGraphSvg(program);
    EXPECT_EQ(Count(svg, "<g class=\"edge\">"), 3u);
    EXPECT_EQ(Count(svg, "<g class=\"binding\">"), 1u);
}

TEST(GraphSvg, DotLayoutIsInlineSvgWithoutProlog)
{
    if (std::system("command -v dot >/dev/null 2>&1") != 0) {
        GTEST_SKIP() << "Graphviz's dot is not installed (scripts/setup installs it); the plain layout is tested alone";
    }
    std::string svg = DotGraphSvg(TankProgram());
    ASSERT_FALSE(svg.empty());
    EXPECT_EQ(svg.rfind("<svg ", 0), 0u);
    EXPECT_NE(svg.find("class=\"graph dot\""), std::string::npos);
    EXPECT_EQ(svg.find("xmlns"), std::string::npos);
    EXPECT_EQ(svg.find("<?xml"), std::string::npos);
    EXPECT_NE(svg.find("qualified.float64"), std::string::npos);
    EXPECT_EQ(svg.substr(svg.size() - 6), "</svg>");
}

TEST(GraphSvg, FallsBackToThePlainLayoutWithoutDot)
{
    const char* saved = std::getenv("PATH");
    std::string path = saved != nullptr ? saved : "";
    auto empty = std::filesystem::temp_directory_path() / "varnix-sim-no-dot";
    std::filesystem::create_directories(empty);
    ::setenv("PATH", empty.c_str(), 1);
    std::string svg = GraphSvg(TankProgram());
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(svg.rfind("<svg class=\"graph plain\"", 0), 0u);
}

TEST(HtmlReport, WritesOneSelfContainedPageWithSummaryGraphAndAPlotPerPort)
{
    HtmlReport report({"TankProgram", "tank.prog.config", "App/Main", std::chrono::milliseconds(10)});
    report.SetProgram(TankProgram(), PlainGraphSvg(TankProgram()));
    auto& run = report.AddRun();
    Record(run, 20);
    Simulation::Summary summary;
    summary.cycles = 20;
    summary.ports = 4;
    summary.connectors = 2;
    summary.timings = {{"raw", 20, 0.1, 0.2, 0.3}};
    run.SetSummary(summary);
    std::ostringstream out;
    report.Write(out);
    std::string page = out.str();
    EXPECT_EQ(page.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_NE(page.find("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none';"), std::string::npos);
    EXPECT_EQ(page.find("http://"), std::string::npos);
    EXPECT_EQ(page.find("https://"), std::string::npos);
    EXPECT_EQ(page.find(" src="), std::string::npos);
    EXPECT_EQ(page.find("<link"), std::string::npos);
    EXPECT_NE(page.find("<section id=\"summary\">"), std::string::npos);
    EXPECT_NE(page.find("<section id=\"graph\">"), std::string::npos);
    EXPECT_EQ(page.find("<section id=\"verdicts\">"), std::string::npos);
    EXPECT_EQ(Count(page, "<svg class=\"plot\""), 4u);
    EXPECT_NE(page.find("<h3>raw <span class=\"kind\">AnalogIn: unsigned 16-bit, with quality</span></h3>"),
              std::string::npos);
    EXPECT_NE(page.find("<td>raw</td><td class=\"n\">0.100</td>"), std::string::npos);
    EXPECT_NE(page.find("<td class=\"n\">190 ms</td>"), std::string::npos);
    EXPECT_NE(page.find("<div id=\"zoom\" hidden>"), std::string::npos);
    EXPECT_EQ(page.substr(page.size() - 15), "</body></html>\n");
}

TEST(HtmlReport, ListsVerdictsAndLinksFailuresToTheirPlots)
{
    HtmlReport report({"TankProgram", "", "", std::chrono::milliseconds(10)});
    auto& passed = report.AddRun("normal readings");
    Record(passed, 5);
    passed.SetVerdict({"normal readings", true, 3, {}});
    auto& failed = report.AddRun("overrange");
    Record(failed, 20);
    failed.SetVerdict({"overrange", false, 2, {{10, "level", "50", "5", "t.scenario:3"}}});
    std::ostringstream out;
    report.Write(out);
    std::string page = out.str();
    EXPECT_NE(page.find("<section id=\"verdicts\">"), std::string::npos);
    EXPECT_NE(page.find("<td><a href=\"#run1\">normal readings</a></td><td class=\"pass\">passed</td>"),
              std::string::npos);
    EXPECT_NE(page.find("<td><a href=\"#run2\">overrange</a></td><td class=\"fail\">failed</td>"), std::string::npos);
    EXPECT_NE(page.find("<td class=\"n\">10</td><td><a href=\"#run2-port2\">level</a></td><td>50</td><td>5</td>"),
              std::string::npos);
    EXPECT_NE(page.find("<section class=\"port\" id=\"run2-port2\">"), std::string::npos);
    EXPECT_EQ(Count(page, "<g class=\"failure\">"), 1u);
    EXPECT_EQ(page.find("<section id=\"graph\">"), std::string::npos);
    EXPECT_EQ(Count(page, "<svg class=\"plot\""), 8u);
}

TEST(HtmlReport, KeepsAMillionCyclePageToAFewHundredKilobytes)
{
    HtmlReport report({"Big", "", "", std::chrono::milliseconds(1)});
    auto& run = report.AddRun();
    Record(run, 1'000'000);
    std::ostringstream out;
    report.Write(out);
    EXPECT_LT(out.str().size(), 1'000'000u);
    // raw, level and on as envelopes; the text as bands.
    EXPECT_EQ(Count(out.str(), "class=\"value envelope\""), 3u);
}

TEST(HtmlReport, TraceWriterWritesThePageAtTheEnd)
{
    std::ostringstream out;
    TraceFormat format = TraceFormat::Table;
    ASSERT_TRUE(TryParseTraceFormat("html", format));
    auto writer = MakeTraceWriter(format, out);
    writer->Begin(TankColumns());
    writer->Cycle(1, Start, TankSamples(1));
    EXPECT_TRUE(out.str().empty());
    writer->End();
    EXPECT_EQ(out.str().rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_EQ(Count(out.str(), "<svg class=\"plot\""), 4u);
}
