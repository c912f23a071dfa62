#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/Event.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityProvider.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::String;

/// The active link between two ports: once per cycle it reads at one place, writes at another
/// and raises `changed`. It is a source of quality and takes quality from others.
class IConnector : public Commons::IExecutable,
                   public QualitySystem::IQualityProvider,
                   public QualitySystem::IQualityConsumer {
public:
    ~IConnector() override = default;
    /// The connector's name, fixed at construction.
    virtual const String& GetName() const = 0;
    /// The connector's parameters.
    virtual ParameterProvider& GetParameterProvider() = 0;

    /// Raised with the connector itself at the end of every `Execute`, whether or not the value
    /// changed. Starts with no subscribers; the end port's `OnChange` subscribes here.
    Zon::event<IConnector&> changed;
};

} // namespace VarnixBase::Core::PortSystem
