#pragma once

#include <cstdint>

#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::QualitySystem {

/// The one way qualities combine: the larger of the two states, compared as unsigned 8-bit
/// numbers (larger is worse), and the bitwise or of the two flag sets.
constexpr Quality CombineQuality(Quality current, Quality other) noexcept
{
    Quality result;
    result.state = static_cast<std::uint8_t>(other.state) > static_cast<std::uint8_t>(current.state) ? other.state
                                                                                                    : current.state;
    result.flags = current.flags | other.flags;
    return result;
}

/// The aggregate quality of `providers`: starting from `Good`/`None`, each provider's
/// `GetQuality()` is combined in list order. An empty list gives `Good`/`None`. The walk holds a
/// copy of each provider's shared pointer during its call, allocates nothing and takes no lock;
/// an exception from a provider leaves it at once.
Quality CombineQuality(const QualityProviderList& providers);

} // namespace VarnixBase::Core::QualitySystem
