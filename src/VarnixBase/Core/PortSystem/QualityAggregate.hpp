#pragma once

#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::PortSystem {

/// The aggregate quality of the providers of a port or a connector: the same result, in the same
/// order of calls, as `QualitySystem::CombineQuality(providers)`, but without a copy of each
/// provider's shared pointer around its call. The list owns every provider for as long as the port
/// or connector lives, and nothing removes an entry from it while qualities are asked for (entries
/// are only appended, which leaves the walk's position valid), so each call reaches a live object.
/// This is asked for in every cycle (a scale connector at the start of its `Execute`, a qualified
/// port in its `OnChange`), where the two locked reference count operations per provider cost
/// more than the rest of the call.
inline QualitySystem::Quality AggregateQuality(const QualitySystem::QualityProviderList& providers)
{
    QualitySystem::Quality result;
    for (const auto& provider : providers) {
        result = QualitySystem::CombineQuality(result, provider->GetQuality());
    }
    return result;
}

} // namespace VarnixBase::Core::PortSystem
