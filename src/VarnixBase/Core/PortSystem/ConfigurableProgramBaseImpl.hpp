#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorProvider.hpp"
#include "VarnixBase/Core/PortSystem/IConfigurableProgram.hpp"
#include "VarnixBase/Core/PortSystem/PortProvider.hpp"

namespace VarnixBase::Core::PortSystem {

class ConfigurableProgramBuilder;

/// One configurable program instance. It owns its builder, its ports and connectors (through its
/// two providers) and the list of executables that runs once per task cycle, in the order of
/// adding: executable ports as they are added, then connectors as they are added. There is no
/// sorting by data flow, and the list only grows.
///
/// A program comes up in two phases, because connectors resolve their ports by variable path and
/// ports resolve only once they are published:
/// 1. The constructor brings the configuration files up to date (`UpdateConfiguration`), reads
///    the document and creates the ports (`InitializePorts`).
/// 2. The application publishes the ports: `GetPortProvider().Publish(builder)` with the
///    `DynamicPortsBuilder` that the controller gives it.
/// 3. The controller raises the domain proxy's `PortsPublished` event, to which the constructor
///    subscribed `InitializeConnectors`: connectors, parameters bound by reference and quality
///    providers are built, and the program is initialised.
/// From then on every `Execute` runs the executable ports, then the connectors. There is no
/// reconfiguration at run time: a changed document takes effect when the program is constructed
/// anew.
class ConfigurableProgramBaseImpl : public IConfigurableProgram {
public:
    /// Builds the program's record (the two names, the type domain, stored and read by nobody,
    /// not initialised, builder and providers empty, no executables), then:
    /// - looks up the domain proxy: without an application domain it throws `Zon::Exception`
    ///   "Singleton instance of type '{0}' was not created yet!" (with the type name of
    ///   `Zon::AppDomain`), without a proxy in the domain "AppDomain Singleton instance of type
    ///   '{0}' was not created yet!" (with that of `PlcDomainProxy`);
    /// - subscribes `InitializeConnectors` on this object to the proxy's `PortsPublished`, as a
    ///   method delegate;
    /// - calls `UpdateConfiguration()` and `InitializePorts()`.
    /// When it returns, the ports exist and there are no connectors yet. If an exception leaves
    /// `UpdateConfiguration` or `InitializePorts`, the subscription is withdrawn again before the
    /// exception leaves the constructor, so that a later event never reaches an object that was
    /// never completed.
    ConfigurableProgramBaseImpl(const String& instancePath, const String& typeName,
                                Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain);
    /// Looks up the domain proxy as the constructor does and withdraws the subscription. If the
    /// domain or the proxy is gone by then, the failure cannot leave the destructor and the
    /// process ends.
    ~ConfigurableProgramBaseImpl() override;
    ConfigurableProgramBaseImpl(const ConfigurableProgramBaseImpl&) = delete;
    ConfigurableProgramBaseImpl& operator=(const ConfigurableProgramBaseImpl&) = delete;

    /// Runs one cycle: each executable in list order, holding a copy of its shared pointer for
    /// the call. Nothing else: no test of the state, no logging, no catching. An exception from
    /// an executable ends the cycle there and goes to the caller; the next cycle starts again at
    /// the front. It allocates nothing and takes no lock.
    void Execute() override;
    /// The second constructor argument.
    const String& GetTypeName() const override;
    /// The first constructor argument.
    const String& GetInstancePath() const override;
    bool IsInitialized() const override;

    /// Appends `executable` to the end of the list: no check for duplicates (one added twice
    /// runs twice per cycle) and none for an empty pointer. Must not overlap with `Execute`.
    void AddExecutable(std::shared_ptr<Commons::IExecutable> executable);

    PortProvider& GetPortProvider();
    ConnectorProvider& GetConnectorProvider();
    /// The program's builder: an application calls its `Complete` after the second phase to learn
    /// whether the whole document was good.
    ConfigurableProgramBuilder& GetBuilder();

    /// Brings the program's configuration file "<type name>.prog.config" up to date in its three
    /// places: the current project's delivery ("/opt/varnix/projects/current/Libs/VarnixBase"),
    /// the older delivery place ("/opt/varnix/projects/VarnixBase/Config/Types") and the
    /// library's working copy ("Core/PortSystem" under the data directory).
    /// - If the project file exists, it replaces the legacy file when that exists and is older
    ///   (the legacy place is refreshed, never created), and it replaces the working copy when
    ///   that is missing or older.
    /// - Then, if the legacy file exists, it replaces the working copy when that is missing or
    ///   older.
    /// Nothing is ever copied back from the working copy. "Newer" compares the raw values of the
    /// two modification times with their top two bits (the kind of time) masked off, as signed
    /// numbers, strictly: equal times never copy. Existence and times are asked anew for every
    /// comparison. Copies replace the destination and create its directories; their result is
    /// not looked at, only an exception stops the sequence. No lock, no logging; with none of the
    /// three files it does nothing, and the builder reports the missing document later.
    void UpdateConfiguration();
    /// First build phase: reads the document and creates the ports.
    void InitializePorts();
    /// Kept as a step of the program's life between the two phases; it does nothing, and the
    /// library does not call it.
    void ApplyPorts();
    /// Second build phase, the handler of the domain proxy's `PortsPublished`: creates the
    /// connectors, binds the pending parameters and quality providers, then `ApplyConfiguration`.
    /// Raised again, it finds the parsed settings cleared and only applies again. Must not
    /// overlap with `Execute`.
    void InitializeConnectors();
    /// Marks the program initialised and drops the parsed settings; the object graph stays.
    void ApplyConfiguration();

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
