#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/DynamicPortsBuilder.hpp"
#include "Zon/Plc/Commons/Meta/StandardAttribute.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityProvider.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::String;

class IConnector;

/// A named, typed data end point of a configurable program. It owns the memory of its value and
/// hands that memory's address to the controller when it is published. Every port is a source of
/// quality and takes quality from others.
class IPort : public QualitySystem::IQualityProvider, public QualitySystem::IQualityConsumer {
public:
    ~IPort() override = default;
    /// The port's quality now.
    QualitySystem::Quality GetQuality() override = 0;
    /// The port's name, fixed at construction.
    virtual const String& GetName() = 0;
    /// The dimension given at construction.
    virtual unsigned long GetDimension() = 0;
    /// Enters the port's value into the controller's variable system.
    virtual void Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder) = 0;
    /// The port's attributes.
    virtual Zon::Plc::Commons::Meta::StandardAttribute GetAttributes() = 0;
    /// Sets the bits of `attributes`.
    virtual void AddAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) = 0;
    /// Clears the bits of `attributes`.
    virtual void RemoveAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) = 0;
    /// True when every bit of `attributes` is set.
    virtual bool HasAttributes(Zon::Plc::Commons::Meta::StandardAttribute attributes) = 0;
    /// The port's parameters.
    virtual ParameterProvider& GetParameterProvider() = 0;
    /// What a variable path to the port must append to reach its payload ("" or "Value").
    virtual String GetRelativeDataPath() const = 0;
    /// Called after `connector` has written through the port's address.
    virtual void OnChange(IConnector& connector) = 0;
    /// Appends a quality provider.
    void AddQualityProvider(std::shared_ptr<QualitySystem::IQualityProvider> provider) override = 0;
    /// The quality providers, in order of adding.
    const QualitySystem::QualityProviderList& GetQualityProviders() const override = 0;
};

} // namespace VarnixBase::Core::PortSystem
