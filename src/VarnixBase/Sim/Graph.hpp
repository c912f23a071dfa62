#pragma once

#include <ostream>

#include "VarnixBase/Sim/Outline.hpp"

namespace VarnixBase::Sim {

/// Writes the program as a Graphviz graph: ports as nodes by kind (plain: box, qualified: rounded
/// box, device: double octagon), connectors as edges from start to end port labelled with their type
/// and value types, quality bindings as dashed edges from the provider to the consumer (a binding
/// to a connector ends at the middle of the connector's edge, drawn as a small point).
void WriteDot(std::ostream& out, const OutlineProgram& program);

} // namespace VarnixBase::Sim
