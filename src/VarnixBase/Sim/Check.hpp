#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "VarnixBase/Sim/Outline.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogLevel.hpp"

namespace VarnixBase::Sim {

class Simulation;

/// One problem of a document, at the line of the element it concerns (0: the document as a whole).
struct Problem {
    std::string severity; ///< "error" or "warning"
    long line = 0;
    std::string message;
};

/// Every problem the build of `simulation`'s program met: each error and warning the library
/// logged, pointed at the element it concerns; the builder's verdict (`Complete`); and the
/// simulator's own checks, quality providers in a cycle and ports whose dimension is not 1.
std::vector<Problem> CollectProblems(Simulation& simulation);

/// The errors of quality providers that form a cycle in `program` (a reading of such a quality
/// would recurse without end), ordered by line as `CollectProblems` orders them. Needs no log.
std::vector<Problem> QualityCycleProblems(const OutlineProgram& program);

/// Points each logged message at the element it concerns. The builder works through the document
/// in order and logs what it does, so the log itself says which element a failure belongs to.
std::vector<Problem> AttributeLog(const DocumentOutline& outline, const OutlineProgram& program,
                                  const std::vector<Zon::System::Commons::Diagnostics::Logging::LogEntry>& log);

/// Texts between backticks longer than this are shown by their first `AbbreviatedLength` bytes
/// and their length, so that a problem report never repeats a huge value of the document.
constexpr std::size_t MaxQuotedLength = 64;
constexpr std::size_t AbbreviatedLength = 16;

/// `message` with every text between backticks longer than `MaxQuotedLength` abbreviated, as
/// "START...(N bytes)".
std::string AbbreviateQuoted(const std::string& message);

/// "FILE:LINE: SEVERITY: MESSAGE" (without ":LINE" for the document as a whole), one per line.
void WriteProblems(std::ostream& out, const std::string& file, const std::vector<Problem>& problems);

} // namespace VarnixBase::Sim
