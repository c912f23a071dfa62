#pragma once

#include <memory>

#include "VarnixBase/Core/PortSystem/IPort.hpp"

namespace VarnixBase::Core::PortSystem {

/// What every port has regardless of its value type: name, dimension, attributes (starting at
/// zero), parameters and quality providers (both starting empty). `Publish` and `OnChange` do
/// nothing here, `GetRelativeDataPath` is empty, and `GetQuality` is the combination of the
/// quality providers.
class PortBaseImpl : public IPort {
public:
    PortBaseImpl(const String& name, unsigned long dimension);
    ~PortBaseImpl() override;
    PortBaseImpl(const PortBaseImpl&) = delete;
    PortBaseImpl& operator=(const PortBaseImpl&) = delete;

    QualitySystem::Quality GetQuality() override;
    const String& GetName() override;
    unsigned long GetDimension() override;
    void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) override;
    Zon::Plc::Commons::Meta::StandardAttribute GetAttributes() override;
    void AddAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) override;
    void RemoveAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) override;
    bool HasAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) override;
    ParameterProvider& GetParameterProvider() override;
    String GetRelativeDataPath() const override;
    void OnChange(IConnector& connector) override;
    void AddQualityProvider(std::shared_ptr<QualitySystem::IQualityProvider> provider) override;
    const QualitySystem::QualityProviderList& GetQualityProviders() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
