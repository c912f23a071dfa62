#pragma once

#include <string>

#include "Zon/Plc/Commons/Meta/DataInfo.hpp"

namespace VarnixBase::Sim {

/// Writes `literal` into the memory that `variable` (a resolved variable path) describes, as the
/// controller writes a port's published memory:
/// - `bool`: an IEC 61131-3 boolean literal ("TRUE", "0", "bool#1");
/// - integers: an IEC 61131-3 integer literal ("100", "16#8001", "2#1010", "int#-5"); a value
///   outside the variable's type is refused rather than cut;
/// - `float`, `double`: an IEC 61131-3 real literal ("12.5", "lreal#1.5e3") or an integer literal;
/// - fixed strings: the text itself (UTF-8; for 16-bit strings converted to UTF-16), cut to the
///   string's capacity.
/// Throws `UsageError` naming `origin` for a literal that does not fit the variable's type.
void WriteLiteral(const Zon::Plc::Commons::Meta::DataInfo& variable, const std::string& literal,
                  const std::string& origin);

} // namespace VarnixBase::Sim
