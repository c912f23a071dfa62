#include "VarnixBase/Core/PortSystem/PortBaseImpl.hpp"

#include <utility>

#include "VarnixBase/Core/PortSystem/QualityAggregate.hpp"


namespace VarnixBase::Core::PortSystem {

using Zon::Plc::Commons::Meta::StandardAttribute;

struct PortBaseImpl::Impl {
    Impl(const String& name, unsigned long dimension) : name(name), dimension(dimension) {}

    String name;
    unsigned long dimension;
    StandardAttribute attributes = StandardAttribute::None;
    ParameterProvider parameterProvider;
    QualitySystem::QualityProviderList qualityProviders;
};

PortBaseImpl::PortBaseImpl(const String& name, unsigned long dimension)
    : impl(std::make_unique<Impl>(name, dimension))
{
}

PortBaseImpl::~PortBaseImpl() = default;

QualitySystem::Quality PortBaseImpl::GetQuality()
{
    return AggregateQuality(impl->qualityProviders);
}

const String& PortBaseImpl::GetName()
{
    return impl->name;
}

unsigned long PortBaseImpl::GetDimension()
{
    return impl->dimension;
}

void PortBaseImpl::Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder&)
{
}

StandardAttribute PortBaseImpl::GetAttributes()
{
    return impl->attributes;
}

void PortBaseImpl::AddAttributes(StandardAttribute attributes)
{
    impl->attributes |= attributes;
}

void PortBaseImpl::RemoveAttributes(StandardAttribute attributes)
{
    impl->attributes &= ~attributes;
}

bool PortBaseImpl::HasAttributes(StandardAttribute attributes)
{
    return (impl->attributes & attributes) == attributes;
}

ParameterProvider& PortBaseImpl::GetParameterProvider()
{
    return impl->parameterProvider;
}

String PortBaseImpl::GetRelativeDataPath() const
{
    return String();
}

void PortBaseImpl::OnChange(IConnector&)
{
}

void PortBaseImpl::AddQualityProvider(std::shared_ptr<QualitySystem::IQualityProvider> provider)
{
    impl->qualityProviders.push_back(std::move(provider));
}

const QualitySystem::QualityProviderList& PortBaseImpl::GetQualityProviders() const
{
    return impl->qualityProviders;
}

} // namespace VarnixBase::Core::PortSystem
