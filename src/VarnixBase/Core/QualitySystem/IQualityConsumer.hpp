#pragma once

#include <list>
#include <memory>

#include "VarnixBase/Core/QualitySystem/IQualityProvider.hpp"

namespace VarnixBase::Core::QualitySystem {

/// The providers of a consumer, in order of adding.
using QualityProviderList = std::list<std::shared_ptr<IQualityProvider>>;

/// Something that takes quality from providers: ports and connectors are both.
class IQualityConsumer {
public:
    virtual ~IQualityConsumer() = default;
    /// Appends a provider. No check for duplicates or an empty pointer.
    virtual void AddQualityProvider(std::shared_ptr<IQualityProvider> provider) = 0;
    /// The providers, in order of adding.
    virtual const QualityProviderList& GetQualityProviders() const = 0;
};

} // namespace VarnixBase::Core::QualitySystem
