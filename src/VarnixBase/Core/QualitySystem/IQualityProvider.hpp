#pragma once

#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::QualitySystem {

/// A source of quality: ports and connectors are both.
class IQualityProvider {
public:
    virtual ~IQualityProvider() = default;
    /// The provider's quality now. Computed anew at every call where the provider aggregates.
    virtual Quality GetQuality() = 0;
};

} // namespace VarnixBase::Core::QualitySystem
