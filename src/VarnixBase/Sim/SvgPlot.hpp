#pragma once

#include <cstddef>
#include <string>

#include "VarnixBase/Sim/RunRecording.hpp"

namespace VarnixBase::Sim {

/// Text for XML and HTML content and attribute values: & < > " ' as entities, control characters
/// other than tab and line feed dropped.
std::string EscapeXml(const std::string& text);

/// Milliseconds for a reader: up to six significant digits, whole numbers from 100000 on (never
/// in exponent form).
std::string FormatMilliseconds(double milliseconds);

/// Plots taken this wide (in SVG units, one per pixel at zoom 1); the value lane is this many
/// units wide, so that one plot column is one pixel.
inline constexpr int PlotLaneWidth = 1000;

/// One port of a recorded run as an SVG element: its value over the cycles (a step line for
/// integers and booleans, a line for reals, labelled bands for texts; with more cycles than plot
/// columns a minimum/maximum envelope per column), its quality as a coloured band beneath with the
/// quality text of every stretch as an SVG title, the stimuli written to it and the failed
/// expectations about it marked at their cycles, and a time axis in cycles and milliseconds.
std::string PlotPort(const RunRecording& run, std::size_t column);

} // namespace VarnixBase::Sim
