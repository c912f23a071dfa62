#pragma once

#include <string>
#include <vector>

#include "VarnixBase/Sim/Check.hpp"

/// What the simulator's command line adds to the simulation engine.
namespace VarnixSimCli {

using VarnixBase::Sim::Problem;

/// One place where a document departs from the schema of `.prog.config` documents.
struct Deviation {
    Problem problem; ///< always a warning, at the line of the element concerned
    /// What a problem of the library names (between backticks) when it reports the same thing at
    /// the same line: "`colour`" for an unknown attribute, "`value` or `ref`" for a parameter
    /// without exactly one of them; empty when the library has no account of this deviation.
    std::string subject;
};

/// The schema of `.prog.config` documents: beside an installed varnix-sim, in the data directory
/// (share/varnixbase/prog-config.xsd), else in the source tree this build was made from. Empty
/// when neither is there.
std::string FindSchema();

/// Validates `document` against the schema in the file `schema` and returns each deviation. The
/// library reads documents more forgivingly than the schema describes them, so every deviation is
/// a warning. Throws `UsageError` when the schema cannot be read or the document is not XML.
std::vector<Deviation> ValidateAgainstSchema(const std::string& document, const std::string& schema);

/// Adds the deviations to `problems` as warnings, in line order, leaving out those the library has
/// already reported at the same line, so that no finding shows twice.
void MergeDeviations(std::vector<Problem>& problems, const std::vector<Deviation>& deviations);

} // namespace VarnixSimCli
