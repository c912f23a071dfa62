#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace VarnixBase::Sim {

/// A bad command line or input file: one clear line for the user, exit status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One value written into a port's published memory before a cycle, as the controller would.
struct StimulusEntry {
    /// Cycle before which the value is written; cycles count from 1.
    std::uint64_t cycle = 1;
    std::string port;
    /// An IEC 61131-3 literal for numbers and booleans, the text itself for string ports.
    std::string literal;
    /// Where the entry came from, for messages: "--set raw=16#8001@5" or "tank.csv:4".
    std::string origin;
};

/// Parses "PORT=LITERAL[@CYCLE]". The cycle is the decimal number after the last "@", when what
/// follows that "@" is all digits; otherwise the whole rest is the literal and the cycle is 1.
/// Throws `UsageError` for a missing "=", an empty port name or a cycle of 0.
StimulusEntry ParseSetOption(const std::string& text);

/// Reads a stimulus file: a header line "cycle,PORT,PORT,..." and one line per cycle with the values
/// to write before that cycle; an empty cell writes nothing. Blank lines and lines starting with "#"
/// are skipped. Fields may be quoted with double quotes ("" inside for one quote).
/// Throws `UsageError` naming the file and line for anything malformed.
std::vector<StimulusEntry> LoadStimulusFile(const std::string& path);

/// Parses the same format from a text; `name` is used in messages.
std::vector<StimulusEntry> ParseStimulus(const std::string& text, const std::string& name);

} // namespace VarnixBase::Sim
