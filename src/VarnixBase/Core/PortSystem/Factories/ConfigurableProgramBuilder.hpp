#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ParameterBinding.hpp"
#include "VarnixBase/Core/PortSystem/Factories/QualityBinding.hpp"

namespace VarnixBase::Core::PortSystem {

class ConfigurableProgramBaseImpl;

/// The road from a program's `.prog.config` document to its object graph. One builder belongs
/// to one program, which calls it in two phases: `LoadConfiguration` and `AddPorts` while the
/// program is constructed, then `AddConnectors`, `AddParameters`, `AddQualityProviders` and
/// `ClearConfiguration` once the ports are published and the controller raises its event.
/// Whatever refers to something that resolves only after publishing (a parameter bound by
/// `ref`, a quality provider) waits in one of two pending lists until the second phase.
///
/// One bad item never stops the build: its failure (a `Zon::Exception`) is logged at error level
/// with the exception's message, the builder remembers that something failed, and it goes on
/// with the next item. Nothing is rolled back: a program whose document was partly bad runs with
/// the good part. `Complete` then throws. Exceptions of other kinds (a standard
/// bad-function-call from an empty creator, say) are not caught and go to the caller.
///
/// Guards, and where they resume:
/// - around one parameter given by `value` (`GetParameter`, `SetValueByString`): with the next
///   parameter; the port or connector is built and added all the same;
/// - around one port: with the next port; the failed port is not added;
/// - around one connector: with the next connector; the failed connector is not added, but what
///   was done for it stays done (it takes its start port's quality, its end port takes its
///   quality and keeps it alive, its end port's `OnChange` listens to it);
/// - around one pending parameter, and one pending quality reference: with the next entry.
///
/// Port references of a connector (`startPort`, `endPort`) are cut at their first "." or "[":
/// the text before names a port of the program, and the path is the instance path, ".", the
/// port name, then "." and the port's relative data path if it has one, then the rest of the
/// reference. So "level.raw[2]" on a qualified port of "App/Main" is
/// "App/Main.level.Value.raw[2]". A parameter's `ref` instead keeps the whole reference in front
/// and puts the relative data path behind it: "level.raw" gives "App/Main.level.raw.Value".
///
/// A pending parameter keeps the port or connector it belongs to alive (`ParameterBinding::owner`),
/// also when that object was refused after its bindings were appended (at a duplicate name): the
/// binding is then resolved against the refused object, which is part of no provider, and no
/// freed memory is touched. The refusal itself has been logged and counts as a failure.
///
/// No lock: the two phases run one after the other, on the thread that constructs the program
/// and on the thread that raises the controller's event.
class ConfigurableProgramBuilder
    : public Zon::System::Commons::Diagnostics::Logging::Loggable<ConfigurableProgramBuilder> {
public:
    /// Creates the builder's record. Reads nothing from `program` yet.
    explicit ConfigurableProgramBuilder(ConfigurableProgramBaseImpl& program);
    virtual ~ConfigurableProgramBuilder();
    ConfigurableProgramBuilder(const ConfigurableProgramBuilder&) = delete;
    ConfigurableProgramBuilder& operator=(const ConfigurableProgramBuilder&) = delete;

    /// Finds and reads the document "<type name>.prog.config": from
    /// "/opt/varnix/projects/VarnixBase/Config/Types" if it exists there (logging the warning
    /// "Loading program configuration from legacy path `{}`."), else from "Core/PortSystem" under
    /// the library's data directory (logging the info "Loading program configuration `{}`").
    /// A missing or broken document is logged as the error "Load configuration for `{}` failed:
    /// {}" with the file name and the reason; the program then simply has no ports and no
    /// connectors, and this does not count as a failure for `Complete`. Never throws a
    /// `Zon::Exception`.
    void LoadConfiguration();

    /// Creates the ports of every `Program` entry whose type is the program's type name, in
    /// document order, through the port factory: adds their attributes, sets parameters given by
    /// `value` at once, keeps parameters given by `ref` and quality references for later, and
    /// adds each port to the program. Logs "Add {} ports to `{}`" (info) per entry that has
    /// ports, and "Add port `{}`, type: `{}`, attributes: `{}` to `{}`" (debug) per port.
    void AddPorts();

    /// Creates the connectors of every matching `Program` entry, in document order. Each is named
    /// "<startPort>:<endPort>" as the document writes the two references, created through the
    /// connector factory from the two variable paths, given its start port as quality provider,
    /// and made the end port's quality provider, with the end port's `OnChange` subscribed to its
    /// change event. Then its parameters and quality references are handled as for ports, and
    /// it is added to the program. Logs "Add {} connectors inside `{}`" (info) per entry that has
    /// connectors, "{} from {} to {}" and "Add `{}` connector `{}` to `{}`" (debug) per connector.
    void AddConnectors();

    /// Resolves the pending parameters in order: finds the parameter, then binds it to the
    /// variable that its `ref` names (or, for an entry without `ref`, sets its `value`). Logs
    /// "Bind {} parameters in `{}`" (info) when there are any and "Bind parameter `{}` to
    /// reference `{}` in `{}`." (debug) per binding. Failures: "Parameter `{}` does not exist in
    /// `{}`.", "Parameter `{}` has invalid configuration in `{}`", a failed port look-up by the
    /// look-up's own message, and "Unable to bind parameter `{}` to reference `{}` in `{}`." (the
    /// one logged failure that does not count for `Complete`).
    void AddParameters();

    /// Resolves the pending quality references in order: a port of that name, else a connector of
    /// that name, becomes a quality provider of the waiting port or connector ("Add quality
    /// provider {} to `{}`", debug). Otherwise the error "Quality provider reference `{}` does not
    /// exist in `{}`". Logs "Bind {} quality providers in `{}`" (info) when there are any.
    void AddQualityProviders();

    /// Throws `Zon::System::Commons::InvalidConfigException` "Configuration of configurable
    /// program type `{}` is invalid." if anything failed so far; otherwise logs the info "Total {}
    /// ports and {} connections in `{}`.". The library does not call it: it is offered to the
    /// application, after the second phase.
    void Complete();

    /// Drops the parsed document and both pending lists. The object graph stays, and so does the
    /// memory of failures. After it, the second phase finds nothing to do and logs nothing.
    void ClearConfiguration();

    /// Appends a pending parameter of the application's own, resolved by the next
    /// `AddParameters` like those of the document. An entry without `ref` is set from its
    /// `value` there. An entry without parameter provider throws
    /// `Zon::System::Commons::ArgumentException`.
    void AddParameterBinding(ParameterBinding binding);

    /// Appends a pending quality reference of the application's own, resolved by the next
    /// `AddQualityProviders`. An entry without consumer throws
    /// `Zon::System::Commons::ArgumentException`.
    void AddQualityBinding(QualityBinding binding);

private:
    struct Impl;
    std::shared_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
