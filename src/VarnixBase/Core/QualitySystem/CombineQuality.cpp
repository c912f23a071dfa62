#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"

namespace VarnixBase::Core::QualitySystem {

Quality CombineQuality(const QualityProviderList& providers)
{
    Quality result;
    for (const auto& entry : providers) {
        std::shared_ptr<IQualityProvider> provider = entry;
        result = CombineQuality(result, provider->GetQuality());
    }
    return result;
}

} // namespace VarnixBase::Core::QualitySystem
