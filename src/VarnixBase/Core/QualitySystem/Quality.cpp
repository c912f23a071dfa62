#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::QualitySystem {

std::ostream& operator<<(std::ostream& stream, const Quality& quality)
{
    return stream << quality.state << '/' << quality.flags;
}

} // namespace VarnixBase::Core::QualitySystem
