#include "Zon/BasicVersion.hpp"

namespace Zon {

std::ostream& operator<<(std::ostream& stream, const BasicVersion& version)
{
    stream << version.GetName() << ' ' << static_cast<unsigned>(version.GetMajor()) << '.'
           << static_cast<unsigned>(version.GetMinor()) << '.' << static_cast<unsigned>(version.GetPatch()) << '.'
           << version.GetBuild();
    if (!version.GetState().IsEmpty()) {
        stream << '-' << version.GetState();
    }
    return stream;
}

} // namespace Zon
