#pragma once

// The simulation engine: every public header, so that an application can start with one include.
// Written by scripts/umbrella.

#include "VarnixBase/Sim/Analysis.hpp"
#include "VarnixBase/Sim/Check.hpp"
#include "VarnixBase/Sim/Graph.hpp"
#include "VarnixBase/Sim/GraphSvg.hpp"
#include "VarnixBase/Sim/HtmlReport.hpp"
#include "VarnixBase/Sim/Inject.hpp"
#include "VarnixBase/Sim/Outline.hpp"
#include "VarnixBase/Sim/Probe.hpp"
#include "VarnixBase/Sim/RealTimePacer.hpp"
#include "VarnixBase/Sim/RunRecording.hpp"
#include "VarnixBase/Sim/Scenario.hpp"
#include "VarnixBase/Sim/Simulation.hpp"
#include "VarnixBase/Sim/Stimulus.hpp"
#include "VarnixBase/Sim/SvgPlot.hpp"
#include "VarnixBase/Sim/Trace.hpp"
