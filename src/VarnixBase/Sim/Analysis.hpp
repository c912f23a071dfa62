#pragma once

#include <string>
#include <vector>

#include "VarnixBase/Sim/Outline.hpp"

namespace VarnixBase::Sim {

/// A cycle among quality providers: reading the quality of any member recurses without end.
struct QualityCycle {
    /// Port and connector names along the cycle, starting at the first one in document order.
    std::vector<std::string> members;
    long line = 0; ///< line of the first member's element
};

/// Finds the cycles among quality providers that would recurse when a quality is read. Only
/// connectors and device ports ask their providers; plain and qualified ports answer from their own
/// state, so a cycle through one of them is harmless and not reported. A connector's providers are
/// its start port and its `QualityProvider` references; a device port's are its references and the
/// connectors that end in it. References resolve among ports first, then connectors, by whole name.
std::vector<QualityCycle> FindQualityCycles(const OutlineProgram& program);

/// A port whose `dimensions` is not 1 (read as the library reads it: a decimal number with leading
/// white space, what follows ignored, 0 and empty meaning 1).
struct DimensionProblem {
    std::string port;
    long dimensions = 1;
    long line = 0;
};

std::vector<DimensionProblem> FindDimensionProblems(const OutlineProgram& program);

} // namespace VarnixBase::Sim
