#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/Host/Component.hpp"
#include "Zon/Host/PortPublisher.hpp"
#include "Zon/Plc/Commons/Esm/ProgramBase.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "VarnixBase/Core/PortSystem/ConfigurableProgramBaseImpl.hpp"

namespace VarnixBase::Core::PortSystem {

/// A controller program that is one configurable program: the pattern an application follows,
/// here for the host, where `Zon::Host::PortPublisher` plays the controller's variable system.
///
/// Its life is the program's:
/// 1. Construction constructs the `ConfigurableProgramBaseImpl` (configuration files brought up
///    to date, document read, ports created, subscription to the domain proxy's event).
/// 2. `Publish(publisher)` hands the ports to the controller: they go into a
///    `DynamicPortsBuilder`, the publisher enters them as the root variable of the instance path,
///    and the component is announced to the meta data (`MetaInfoProvider::Add`, which takes a
///    component only once), so that "App/Main.level.Value" resolves.
/// 3. The host raises the domain proxy's event (`Zon::Host::Runtime::RaisePortsPublished`), and
///    the program builds its connectors.
/// 4. Each task cycle calls `Execute`, which runs the program once.
///
/// The destructor withdraws the published ports from the publisher, so that nothing resolves to
/// the ports' memory after they are gone; the publisher must therefore outlive the program (or
/// the program withdraw first, with `Withdraw`). The component stays announced: it belongs to
/// the host, which removes it from the meta data before the publisher goes.
class HostedProgram : public Zon::Plc::Commons::Esm::ProgramBase {
public:
    /// A program named by its instance path ("COMPONENT/PROGRAM"), configured by the document of
    /// `typeName`. Fails as `ConfigurableProgramBaseImpl`'s constructor does.
    HostedProgram(const Zon::String& instancePath, const Zon::String& typeName,
                  Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain);
    ~HostedProgram() override;

    /// Publishes the program's ports under its instance path and announces the component to the
    /// meta data. Returns the component. Fails as `PortPublisher::Publish` does, for instance when
    /// the instance path has been published already.
    Zon::Host::Component& Publish(Zon::Host::PortPublisher& publisher);

    /// Takes the published ports back from the publisher; nothing if they are not published.
    void Withdraw();

    /// Runs one cycle of the configurable program.
    void Execute() override;

    ConfigurableProgramBaseImpl& GetProgram() noexcept { return program; }

private:
    ConfigurableProgramBaseImpl program;
    Zon::Host::PortPublisher* publisher = nullptr;
};

} // namespace VarnixBase::Core::PortSystem
