#include "VarnixBase/Core/PortSystem/ConnectorBaseImpl.hpp"

#include <utility>

#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "VarnixBase/Core/PortSystem/QualityAggregate.hpp"

namespace VarnixBase::Core::PortSystem {

struct ConnectorBaseImpl::Impl {
    explicit Impl(const String& name) : name(name) {}

    String name;
    ParameterProvider parameterProvider;
    QualitySystem::QualityProviderList qualityProviders;
};

ConnectorBaseImpl::ConnectorBaseImpl(const String& name) : impl(std::make_unique<Impl>(name))
{
}

ConnectorBaseImpl::~ConnectorBaseImpl() = default;

const String& ConnectorBaseImpl::GetName() const
{
    return impl->name;
}

ParameterProvider& ConnectorBaseImpl::GetParameterProvider()
{
    return impl->parameterProvider;
}

QualitySystem::Quality ConnectorBaseImpl::GetQuality()
{
    return AggregateQuality(impl->qualityProviders);
}

void ConnectorBaseImpl::AddQualityProvider(std::shared_ptr<QualitySystem::IQualityProvider> provider)
{
    impl->qualityProviders.push_back(std::move(provider));
}

const QualitySystem::QualityProviderList& ConnectorBaseImpl::GetQualityProviders() const
{
    return impl->qualityProviders;
}

void ConnectorBaseImpl::ReleaseQualityProviders() noexcept
{
    impl->qualityProviders.clear();
}

void ConnectorBaseImpl::CheckDataAddress(const void* address, const String& variablePath) const
{
    if (address == nullptr) {
        throw Zon::System::Commons::InvalidOperationException("Connector `{0}`: variable `{1}` has no address",
                                                              GetName(), variablePath);
    }
}

} // namespace VarnixBase::Core::PortSystem
