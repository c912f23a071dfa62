#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"
#include "VarnixBase/Core/PortSystem/ParameterProvider.hpp"
#include "VarnixBase/Core/QualitySystem/IQualityConsumer.hpp"
#include "VarnixBase/Core/QualitySystem/Quality.hpp"

namespace VarnixBase::Core::PortSystem {

/// What every connector has regardless of its value types: its name, its parameters (starting
/// empty) and its quality providers (starting empty). `Execute` stays pure.
///
/// The connector's quality is the aggregate of its providers, computed anew at every call: the
/// worst state (larger is worse, never better than `Good`) and all flags. It does not read the
/// data of the ports it connects; a start port counts only if it was added as a provider.
class ConnectorBaseImpl : public IConnector {
public:
    explicit ConnectorBaseImpl(const String& name);
    ~ConnectorBaseImpl() override;
    ConnectorBaseImpl(const ConnectorBaseImpl&) = delete;
    ConnectorBaseImpl& operator=(const ConnectorBaseImpl&) = delete;

    const String& GetName() const override;
    ParameterProvider& GetParameterProvider() override;
    /// The aggregate of the quality providers, in list order; an exception of a provider passes.
    QualitySystem::Quality GetQuality() override;
    /// Appends `provider`. No check for duplicates or an empty pointer.
    void AddQualityProvider(std::shared_ptr<QualitySystem::IQualityProvider> provider) override;
    const QualitySystem::QualityProviderList& GetQualityProviders() const override;

    /// Lets go of every quality provider. The program calls it for its connectors when it goes:
    /// a connector holds its start port, the end port holds the connector, so two connectors in
    /// opposite directions between the same ports would otherwise keep each other alive for ever.
    void ReleaseQualityProviders() noexcept;

protected:
    /// Refuses a data handle that resolved to no address: throws
    /// `Zon::System::Commons::InvalidOperationException` "Connector `{0}`: variable `{1}` has no
    /// address" with the connector's name and the path, so that no cycle touches a null address.
    void CheckDataAddress(const void* address, const String& variablePath) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
