#pragma once

#include <string>

#include "VarnixBase/Sim/Outline.hpp"

namespace VarnixBase::Sim {

/// The program's graph (ports by kind, connectors with their type and value types, quality bindings
/// dashed) as an SVG element to put inline in a page, laid out by Graphviz's `dot`. Empty when `dot`
/// is not installed, fails or takes longer than a minute.
std::string DotGraphSvg(const OutlineProgram& program);

/// The same graph in a plain layout of our own: ports in columns by their distance from the ports
/// that no connector feeds, connectors as arrows between them. Never fails.
std::string PlainGraphSvg(const OutlineProgram& program);

/// `DotGraphSvg` where it gives a drawing, else `PlainGraphSvg`.
std::string GraphSvg(const OutlineProgram& program);

} // namespace VarnixBase::Sim
