#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "VarnixBase/Sim/Outline.hpp"
#include "VarnixBase/Sim/RunRecording.hpp"
#include "VarnixBase/Sim/Trace.hpp"

namespace VarnixBase::Sim {

struct HtmlReportInfo {
    /// The page's heading, usually the program type.
    std::string title;
    /// The `.prog.config` the program came from, as the user named it.
    std::string document;
    std::string instance;
    std::chrono::microseconds cycleTime{0};
};

/// A self-contained page about one or more runs of a program: no script, style or picture from
/// elsewhere (a content security policy forbids loading anything), every plot inline SVG. Sections:
/// the summary of every run, the verdicts of the scenarios where there are any, the program's graph,
/// and per run a plot of every port. It reads without scripting; a small inline script adds buttons
/// that widen every plot alike.
class HtmlReport {
public:
    explicit HtmlReport(HtmlReportInfo info);
    ~HtmlReport();
    HtmlReport(const HtmlReport&) = delete;
    HtmlReport& operator=(const HtmlReport&) = delete;

    /// The program drawn in the graph section (laid out by Graphviz's `dot` where it is installed,
    /// else by our own plain layout) and whose port types label the plots.
    void SetProgram(const OutlineProgram& program);
    /// The program, with a graph drawn by the caller (an SVG element, or empty for no graph section).
    void SetProgram(const OutlineProgram& program, std::string graphSvg);

    /// A new run on the page, to be passed to `Simulation::Run` as its trace. `heading` names the run
    /// where the page holds several (a scenario's name); the reference stays valid as long as the page.
    RunRecording& AddRun(const std::string& heading = std::string());

    void Write(std::ostream& out) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

/// A trace writer that records the run and writes it as a page at its end: the ports' plots only,
/// without the program's graph and summary that `HtmlReport` adds when given them.
std::unique_ptr<TraceWriter> MakeHtmlTraceWriter(std::ostream& out);

} // namespace VarnixBase::Sim
