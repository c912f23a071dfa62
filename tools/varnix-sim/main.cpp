// varnix-sim: plays the controller for a configurable program on a PC.
//   varnix-sim run DOCUMENT      build the program and run task cycles, tracing its ports
//   varnix-sim test DOCUMENT SCENARIO...  run scenarios and check their expectations
//   varnix-sim check DOCUMENT    build the program and report every problem with its line, and
//                                every deviation from the document schema
//   varnix-sim graph DOCUMENT    draw the program as a Graphviz graph
//   varnix-sim map DOCUMENT      print the Modbus address map of the program's ports
//   varnix-sim types             list the registered port types and connector type pairs
#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "ModbusCommand.hpp"
#include "VarnixBase/Sim/Check.hpp"
#include "VarnixBase/Sim/Graph.hpp"
#include "VarnixBase/Sim/HtmlReport.hpp"
#include "VarnixBase/Sim/Scenario.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "Schema.hpp"
#include "VarnixSimBuildInfo.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/HeapPages.hpp"
#include "Zon/Host/Runtime.hpp"

using namespace VarnixBase::Sim;
using namespace VarnixSimCli;
namespace Modbus = VarnixSim::Modbus;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;

namespace {

constexpr int ExitValid = 0;
constexpr int ExitProblems = 1;
constexpr int ExitUsage = 2;

/// Set by SIGINT and SIGTERM: the run ends after the current cycle and prints its summary.
std::atomic<bool> stopRequested{false};

void RequestStop(int)
{
    stopRequested.store(true, std::memory_order_relaxed);
}

/// A cycle time: digits, optionally a point and more digits, then "us", "ms" or "s".
std::chrono::microseconds ParseDuration(const std::string& text)
{
    std::size_t end = 0;
    auto digits = [&] {
        const std::size_t start = end;
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') {
            ++end;
        }
        return end > start;
    };
    bool wellFormed = digits();
    if (wellFormed && end < text.size() && text[end] == '.') {
        ++end;
        wellFormed = digits();
    }
    const std::string_view unit = std::string_view(text).substr(end);
    double value = 0;
    if (!wellFormed || (unit != "us" && unit != "ms" && unit != "s") ||
        std::from_chars(text.data(), text.data() + end, value).ec != std::errc()) {
        throw UsageError(fmt::format("--cycle-time {}: expected a duration such as 10ms, 500us or 1s", text));
    }
    const double factor = unit == "us" ? 1.0 : unit == "ms" ? 1e3 : 1e6;
    // Beyond what microseconds in 64 bits hold, the conversion below would be undefined.
    if (value * factor >= 9.2e18) {
        throw UsageError(fmt::format("--cycle-time {}: too long for a cycle time", text));
    }
    auto micros = static_cast<long long>(value * factor);
    if (micros <= 0) {
        throw UsageError(fmt::format("--cycle-time {}: must be at least 1us", text));
    }
    return std::chrono::microseconds(micros);
}

LogLevel ParseLogLevel(const std::string& text)
{
    LogLevel level = LogLevel::Warning;
    if (!Zon::System::Commons::Diagnostics::Logging::TryParseLogLevel(text, level)) {
        throw UsageError(fmt::format("--log-level {}: expected error, warning, info, debug or trace", text));
    }
    return level;
}

TraceFormat FormatFor(const std::string& format, const std::string& traceFile)
{
    TraceFormat result = TraceFormat::Table;
    if (!format.empty()) {
        if (!TryParseTraceFormat(format, result)) {
            throw UsageError(fmt::format("--format {}: expected table, csv, jsonl, vcd or html", format));
        }
        return result;
    }
    auto endsWith = [&](const char* suffix) {
        std::string s(suffix);
        return traceFile.size() >= s.size() && traceFile.compare(traceFile.size() - s.size(), s.size(), s) == 0;
    };
    if (endsWith(".csv")) {
        return TraceFormat::Csv;
    }
    if (endsWith(".jsonl") || endsWith(".json")) {
        return TraceFormat::Jsonl;
    }
    if (endsWith(".vcd")) {
        return TraceFormat::Vcd;
    }
    if (endsWith(".html") || endsWith(".htm")) {
        return TraceFormat::Html;
    }
    return TraceFormat::Table;
}

struct RunArguments {
    std::string document;
    std::string type;
    std::string instance = "App/Main";
    std::uint64_t cycles = 20;
    std::string cycleTime = "10ms";
    std::vector<std::string> sets;
    std::string stimulus;
    std::string trace;
    std::string format;
    std::string logLevel = "warning";
    bool realTime = false;
    bool profile = false;
    bool force = false;
    bool noTrace = false;
    Modbus::ServeArguments modbus;
};

int Run(const RunArguments& arguments)
{
    SimulationOptions options;
    options.document = arguments.document;
    options.type = arguments.type;
    options.instance = arguments.instance;
    options.consoleLevel = ParseLogLevel(arguments.logLevel);
    options.realTime = arguments.realTime;
    auto cycleTime = ParseDuration(arguments.cycleTime);
    std::vector<StimulusEntry> stimuli;
    if (!arguments.stimulus.empty()) {
        stimuli = LoadStimulusFile(arguments.stimulus);
    }
    for (const auto& set : arguments.sets) {
        stimuli.push_back(ParseSetOption(set));
    }

    // A run reads nothing back from the library's log, so the library formats only what the
    // console shows.
    options.captureLog = false;
    Simulation simulation(options);
    if (!arguments.force) {
        // The builder's verdict is taken as `check` takes it (it logs the program's totals).
        simulation.Complete();
        auto cycles = QualityCycleProblems(simulation.GetProgramOutline());
        if (!cycles.empty()) {
            const auto& problem = cycles.front();
            std::cerr << fmt::format("{}:{}: error: {}\n", arguments.document, problem.line, problem.message)
                      << "varnix-sim: not running a program whose qualities recurse; --force runs it anyway\n";
            return ExitProblems;
        }
    }
    simulation.AddStimuli(stimuli);
    std::unique_ptr<Modbus::ServedRun> served;
    if (!arguments.modbus.endpoint.empty()) {
        served = std::make_unique<Modbus::ServedRun>(simulation, arguments.modbus);
    }

    std::ofstream file;
    std::ostream* out = &std::cout;
    if (!arguments.trace.empty()) {
        file.open(arguments.trace, std::ios::binary | std::ios::trunc);
        if (!file) {
            throw UsageError(fmt::format("--trace {}: cannot write the file", arguments.trace));
        }
        out = &file;
    }
    if (arguments.noTrace && !arguments.trace.empty()) {
        throw UsageError("--no-trace and --trace exclude each other");
    }
    std::unique_ptr<TraceWriter> writer;
    // A page also shows the program's graph, the stimuli and the summary, which a trace writer
    // does not see: it is recorded here and written after the run.
    std::unique_ptr<HtmlReport> page;
    RunRecording* recording = nullptr;
    if (!arguments.noTrace && FormatFor(arguments.format, arguments.trace) == TraceFormat::Html) {
        page = std::make_unique<HtmlReport>(
            HtmlReportInfo{simulation.GetType(), arguments.document, arguments.instance, cycleTime});
        page->SetProgram(simulation.GetProgramOutline());
        recording = &page->AddRun();
        recording->AddStimuli(stimuli);
    } else if (!arguments.noTrace) {
        writer = MakeTraceWriter(FormatFor(arguments.format, arguments.trace), *out);
    }
    Simulation::RunOptions run;
    run.cycles = arguments.cycles;
    run.cycleTime = cycleTime;
    run.trace = recording != nullptr ? recording : writer.get();
    run.profile = arguments.profile;
    run.progress = ::isatty(STDERR_FILENO) != 0 ? &std::cerr : nullptr;
    if (arguments.cycles == 0 || served) {
        struct sigaction action {};
        action.sa_handler = RequestStop;
        sigemptyset(&action.sa_mask);
        ::sigaction(SIGINT, &action, nullptr);
        ::sigaction(SIGTERM, &action, nullptr);
        run.stop = &stopRequested;
    }
    if (served) {
        served->Start(std::cerr);
        served->Attach(run);
    }
    auto summary = simulation.Run(run);
    if (page) {
        recording->SetSummary(summary);
        page->Write(*out);
        if (!*out) {
            throw UsageError(fmt::format("--trace {}: cannot write the page (is the disk full?)", arguments.trace));
        }
    }
    std::ostringstream text;
    WriteSummary(text, summary);
    if (served) {
        served->Finish(text);
    }
    std::cerr << text.str();
    return ExitValid;
}

struct TestArguments {
    std::string document;
    std::vector<std::string> scenarios;
    std::string type;
    std::string junit;
    std::string html;
    std::uint64_t cycles = 0;
};

/// The verdict of a scenario as the page shows it: each failed expectation on its port at its
/// cycle; a quality or time stamp expectation says which of the two it checked.
Verdict VerdictOf(const Scenario& scenario, const ScenarioResult& result)
{
    Verdict verdict{scenario.file, result.Passed(), result.expectations, {}};
    for (const auto& failure : result.failures) {
        MarkedFailure marked;
        marked.cycle = result.rows[failure.row].cycle;
        marked.port = failure.column;
        marked.expected = failure.expected;
        marked.actual = failure.actual;
        for (const auto& column : scenario.columns) {
            if (column.name == failure.column && column.field != ExpectedField::Value) {
                const char* field = column.field == ExpectedField::Quality ? "quality " : "time ";
                marked.port = column.port;
                marked.expected = field + marked.expected;
                marked.actual = field + marked.actual;
                break;
            }
        }
        marked.origin = fmt::format("{}:{}", scenario.file, result.rows[failure.row].line);
        verdict.failures.push_back(std::move(marked));
    }
    return verdict;
}

/// Every scenario is read and checked against the program before any runs, so that a bad one
/// stops everything with its file and line; then each runs from a fresh start of the program.
int Test(const TestArguments& arguments)
{
    std::vector<Scenario> scenarios;
    for (const auto& file : arguments.scenarios) {
        scenarios.push_back(LoadScenario(file));
    }
    ScenarioOptions scenarioOptions;
    scenarioOptions.cycles = arguments.cycles;
    SimulationOptions options;
    options.document = arguments.document;
    options.type = arguments.type;
    options.captureLog = false;
    {
        Simulation simulation(options);
        for (const auto& scenario : scenarios) {
            CheckScenario(simulation, scenario, scenarioOptions);
        }
    }
    // The library's warnings were shown by the first build; the fresh builds would repeat them.
    options.consoleLevel.reset();

    std::ofstream junit;
    if (!arguments.junit.empty()) {
        junit.open(arguments.junit, std::ios::binary | std::ios::trunc);
        if (!junit) {
            throw UsageError(fmt::format("--junit {}: cannot write the file", arguments.junit));
        }
    }
    std::ofstream htmlFile;
    std::unique_ptr<HtmlReport> page;
    if (!arguments.html.empty()) {
        htmlFile.open(arguments.html, std::ios::binary | std::ios::trunc);
        if (!htmlFile) {
            throw UsageError(fmt::format("--html {}: cannot write the file", arguments.html));
        }
    }
    std::vector<ScenarioResult> results;
    std::size_t expectations = 0, failed = 0, failedScenarios = 0;
    for (const auto& scenario : scenarios) {
        Simulation simulation(options);
        RunRecording* recording = nullptr;
        if (htmlFile.is_open()) {
            if (!page) {
                page = std::make_unique<HtmlReport>(HtmlReportInfo{simulation.GetType(), arguments.document,
                                                                   options.instance, Simulation::RunOptions{}.cycleTime});
                page->SetProgram(simulation.GetProgramOutline());
            }
            recording = &page->AddRun(scenario.file);
            recording->AddStimuli(scenario.stimuli);
        }
        scenarioOptions.trace = recording;
        results.push_back(RunScenario(simulation, scenario, scenarioOptions));
        if (recording != nullptr) {
            recording->SetSummary(results.back().summary);
            recording->SetVerdict(VerdictOf(scenario, results.back()));
        }
        WriteFailures(std::cout, results.back());
        expectations += results.back().expectations;
        failed += results.back().failures.size();
        failedScenarios += results.back().Passed() ? 0 : 1;
    }
    std::cout << fmt::format("{} scenario{}, {} expectation{}: {} passed, {} failed; {}\n", scenarios.size(),
                             scenarios.size() == 1 ? "" : "s", expectations, expectations == 1 ? "" : "s",
                             expectations - failed, failed,
                             failedScenarios == 0 ? std::string("PASSED")
                                                  : fmt::format("FAILED ({} of {} scenarios)", failedScenarios,
                                                                scenarios.size()));
    if (junit.is_open()) {
        WriteJUnit(junit, results);
        if (!junit.flush()) {
            throw UsageError(fmt::format("--junit {}: cannot write the file", arguments.junit));
        }
    }
    if (page) {
        page->Write(htmlFile);
        if (!htmlFile.flush()) {
            throw UsageError(fmt::format("--html {}: cannot write the page (is the disk full?)", arguments.html));
        }
    }
    return failedScenarios == 0 ? ExitValid : ExitProblems;
}

int Check(const std::string& document, const std::string& type)
{
    SimulationOptions options;
    options.document = document;
    options.type = type;
    options.consoleLevel.reset();
    Simulation simulation(options);
    auto problems = CollectProblems(simulation);
    auto schema = FindSchema();
    if (schema.empty()) {
        std::cerr << "varnix-sim: note: prog-config.xsd is neither in share/varnixbase beside varnix-sim nor in the "
                     "source tree; checked without the schema (reinstall varnix-sim to have it)\n";
    } else {
        MergeDeviations(problems, ValidateAgainstSchema(document, schema));
    }
    WriteProblems(std::cout, document, problems);
    std::size_t errors = 0;
    for (const auto& problem : problems) {
        errors += problem.severity == "error" ? 1 : 0;
    }
    std::cout << fmt::format("{}: program type `{}`: {} ports, {} connectors, {} errors, {} warnings: {}\n", document,
                             simulation.GetType(), simulation.GetPortCount(), simulation.GetConnectorCount(), errors,
                             problems.size() - errors, problems.empty() ? "valid" : "has problems");
    return problems.empty() ? ExitValid : ExitProblems;
}

int Graph(const std::string& document, const std::string& type, const std::string& output)
{
    auto outline = ReadOutline(document);
    std::string chosen = type;
    if (chosen.empty()) {
        auto types = outline.ProgramTypes();
        if (types.size() != 1) {
            throw UsageError(fmt::format("{}: the document has {} program types: choose one with --type", document,
                                         types.size()));
        }
        chosen = types.front();
    } else if (outline.Merged(chosen).line == 0) {
        throw UsageError(fmt::format("{}: no Program of type '{}'", document, chosen));
    }
    std::ostringstream dot;
    WriteDot(dot, outline.Merged(chosen));
    bool svg = output.size() > 4 && output.compare(output.size() - 4, 4, ".svg") == 0;
    if (!svg) {
        if (output.empty()) {
            std::cout << dot.str();
            return ExitValid;
        }
        std::ofstream file(output, std::ios::binary | std::ios::trunc);
        if (!(file << dot.str())) {
            throw UsageError(fmt::format("--output {}: cannot write the file", output));
        }
        return ExitValid;
    }
    if (std::system("command -v dot >/dev/null 2>&1") != 0) {
        throw UsageError(fmt::format("--output {}: SVG needs Graphviz's dot, which is not installed "
                                     "(apt-get install graphviz); write a .dot file instead",
                                     output));
    }
    std::string command = fmt::format("dot -Tsvg -o '{}'", std::regex_replace(output, std::regex("'"), "'\\''"));
    FILE* pipe = ::popen(command.c_str(), "w");
    if (pipe == nullptr) {
        throw UsageError("cannot start Graphviz's dot");
    }
    std::fwrite(dot.str().data(), 1, dot.str().size(), pipe);
    if (::pclose(pipe) != 0) {
        throw UsageError(fmt::format("--output {}: Graphviz's dot failed", output));
    }
    return ExitValid;
}

int Map(const std::string& document, const std::string& type, const std::string& format)
{
    SimulationOptions options;
    options.document = document;
    options.type = type;
    options.consoleLevel.reset();
    Simulation simulation(options);
    Modbus::PrintMap(simulation, format, std::cout, std::cerr);
    return ExitValid;
}

int Types()
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    Zon::Host::Runtime runtime(options);
    std::cout << "Port types:\n";
    for (const auto& name : Simulation::PortTypes()) {
        std::cout << "  " << name << '\n';
    }
    std::cout << "Connector types (type: input -> output):\n";
    for (const auto& pair : Simulation::ConnectorTypes()) {
        std::cout << "  " << pair << '\n';
    }
    return ExitValid;
}

} // namespace

int main(int argc, char** argv)
{
    // Building a program of thousands of ports and connectors touches tens of megabytes; in large
    // pages that costs a few hundred page faults instead of over ten thousand (docs/benchmarks.md).
    Zon::Host::PrepareHeapForLargePrograms();
    CLI::App app{"varnix-sim: plays the controller for a configurable program on a PC"};
    app.footer("Environment: the simulated controller's file system is a private directory in TMPDIR when it\n"
               "is set, else in XDG_RUNTIME_DIR or /dev/shm (memory), else in /tmp; it is removed at the end.");
    app.require_subcommand(1);
    app.set_help_all_flag("--help-all", "Help for every command");
    app.set_version_flag("--version", fmt::format("varnix-sim {}", BuildInfo::Version), "Print the version and exit");

    RunArguments runArguments;
    auto* run = app.add_subcommand("run", "Build the program from DOCUMENT and run task cycles, tracing its ports");
    run->add_option("document", runArguments.document, "The .prog.config")->required();
    run->add_option("--type", runArguments.type, "Program type (needed when the document has several)");
    run->add_option("--instance", runArguments.instance, "Instance path COMPONENT/PROGRAM (default App/Main)");
    run->add_option("--cycles", runArguments.cycles, "Task cycles to run (default 20; 0: until Ctrl-C or SIGTERM)");
    run->add_option("--cycle-time", runArguments.cycleTime, "Cycle time, such as 10ms, 500us, 1s (default 10ms)");
    run->add_option("--set", runArguments.sets, "PORT=LITERAL[@CYCLE]: write a value before a cycle (default 1)");
    run->add_option("--stimulus", runArguments.stimulus,
                    "CSV file: cycle,PORT,... with values to write (a scenario's expect columns are ignored)");
    run->add_option("--trace", runArguments.trace, "Write the trace to this file instead of standard output");
    run->add_option("--format", runArguments.format, "table, csv, jsonl, vcd or html (default: by --trace's ending, else table); html: a self-contained page with a plot of every port, its quality, the program's graph and the summary");
    run->add_option("--log-level", runArguments.logLevel, "error, warning, info, debug or trace (default warning)");
    run->add_flag("--real-time", runArguments.realTime,
                  "Run cycles on absolute deadlines of the real clock; the summary adds overruns and lateness");
    run->add_flag("--profile", runArguments.profile, "Time every executable: minimum, mean, maximum");
    run->add_flag("--force", runArguments.force, "Run even when quality providers form a cycle");
    run->add_flag("--no-trace", runArguments.noTrace, "Run without a trace (for long runs); only the summary");
    run->add_option("--modbus", runArguments.modbus.endpoint,
                    "[HOST:]PORT: serve the ports to Modbus TCP clients while running (HOST default 127.0.0.1, "
                    "PORT 0: any free one)");
    run->add_option("--unit-id", runArguments.modbus.unitId, "Modbus unit id to answer as, 1 to 255 (default 1)");
    run->add_option("--word-order", runArguments.modbus.wordOrder,
                    "big or little: the order of the registers of 32- and 64-bit values (default big)");

    std::string mapDocument, mapType, mapFormat = "table";
    auto* map = app.add_subcommand("map", "Print the Modbus address map of the ports of DOCUMENT, without running");
    map->add_option("document", mapDocument, "The .prog.config")->required();
    map->add_option("--type", mapType, "Program type (needed when the document has several)");
    map->add_option("--format", mapFormat, "table or csv (default table)");

    TestArguments testArguments;
    auto* test = app.add_subcommand(
        "test", "Run each SCENARIO on a fresh start of the program from DOCUMENT and check its expectations");
    test->footer(
        "A scenario is a stimulus file with expectation columns beside the stimuli:\n"
        "  cycle,raw,expect level,expect level.quality,expect level.time,expect display\n"
        "  1,0,0,Good,T#0ms,0\n"
        "  3,2500,25~0.001,Good,,25\n"
        "  9,16#8001,,Bad Overrange,,\n"
        "Stimuli are written before their cycle, expectations are checked after it; empty cells do\n"
        "nothing. Values are IEC 61131-3 literals (texts for string ports), VALUE~TOL allows an absolute\n"
        "tolerance; qualities are written as the trace writes them; time stamps as T#... since the start\n"
        "or microseconds since 1970. Cycles rise from line to line, each once.\n"
        "Prints FILE:LINE: cycle N: PORT: expected X, got Y for each failed expectation and a summary.\n"
        "Exit status: 0 all passed, 1 an expectation failed, 2 usage or file error (nothing is run).");
    test->add_option("document", testArguments.document, "The .prog.config")->required();
    test->add_option("scenario", testArguments.scenarios, "Scenario files (CSV)")->required();
    test->add_option("--type", testArguments.type, "Program type (needed when the document has several)");
    test->add_option("--junit", testArguments.junit, "Write the verdicts as JUnit XML to this file");
    test->add_option("--html", testArguments.html,
                     "Write a self-contained page to this file: each scenario's run plotted, its verdict, and "
                     "each failed expectation marked on its port's plot at its cycle");
    test->add_option("--cycles", testArguments.cycles,
                     "Task cycles to run (default: up to each scenario's last cycle)");

    std::string checkDocument, checkType;
    auto* check = app.add_subcommand("check", "Build the program from DOCUMENT and report every problem with its line, "
                                              "and each deviation from the document schema as a warning; "
                                              "long values are shortened");
    check->add_option("document", checkDocument, "The .prog.config")->required();
    check->add_option("--type", checkType, "Program type (needed when the document has several)");

    std::string graphDocument, graphType, graphOutput;
    auto* graph = app.add_subcommand("graph", "Draw the program of DOCUMENT as a Graphviz graph");
    graph->add_option("document", graphDocument, "The .prog.config")->required();
    graph->add_option("--type", graphType, "Program type (needed when the document has several)");
    graph->add_option("--output", graphOutput, "FILE.dot or FILE.svg (default: dot text on standard output)");

    auto* types = app.add_subcommand("types", "List the registered port types and connector type pairs");

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return ExitValid;
    } catch (const CLI::CallForAllHelp&) {
        std::cout << app.help("", CLI::AppFormatMode::All);
        return ExitValid;
    } catch (const CLI::CallForVersion& version) {
        std::cout << version.what() << '\n';
        return ExitValid;
    } catch (const CLI::ParseError& error) {
        std::cerr << "varnix-sim: " << error.what() << " (see varnix-sim --help)\n";
        return ExitUsage;
    }

    try {
        if (*run) {
            return Run(runArguments);
        }
        if (*test) {
            return Test(testArguments);
        }
        if (*check) {
            return Check(checkDocument, checkType);
        }
        if (*graph) {
            return Graph(graphDocument, graphType, graphOutput);
        }
        if (*map) {
            return Map(mapDocument, mapType, mapFormat);
        }
        if (*types) {
            return Types();
        }
    } catch (const UsageError& error) {
        std::cerr << "varnix-sim: " << error.what() << '\n';
        return ExitUsage;
    } catch (const Zon::Exception& error) {
        std::cerr << "varnix-sim: " << error.what() << '\n';
        return ExitProblems;
    } catch (const std::exception& error) {
        std::cerr << "varnix-sim: " << error.what() << '\n';
        return ExitProblems;
    }
    return ExitUsage;
}
