#pragma once

#include "Zon/BasicString.hpp"

namespace Zon::System::Commons::Io {

class Path {
public:
    /// Joins two path parts with exactly one "/" between them: separators at the end of `a` and
    /// at the start of `b` are folded into one. An empty part gives the other one unchanged.
    static String Combine(const String& a, const String& b);
};

} // namespace Zon::System::Commons::Io
