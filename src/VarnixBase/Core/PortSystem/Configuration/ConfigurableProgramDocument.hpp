#pragma once

#include <vector>

#include "VarnixBase/Core/PortSystem/Configuration/ConfigurableProgramSettings.hpp"
#include "Zon/BasicString.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"

namespace VarnixBase::Core::PortSystem::Configuration {

/// A `.prog.config` document read into settings records. The document is read-only for this
/// library: it can be loaded, not written.
///
/// The format: a root element of any name whose `Program` children each configure one program
/// type (`type`). A `Program` holds `Ports` and `Connectors` elements in any number and order;
/// `Ports` holds `Port` elements (`name`, `type`, `attributes`, `dimensions`), `Connectors` holds
/// `Connector` elements (`startPort`, `endPort`, `type`). A `Port` or `Connector` holds
/// `QualityProvider` (`ref`) and `Parameter` (`name` and exactly one of `value` and `ref`)
/// elements in any order. Names are matched exactly on their local name.
///
/// Constructing a document needs the log manager of the application domain (its class logger).
class ConfigurableProgramDocument : public Zon::System::Commons::Diagnostics::Logging::Loggable<ConfigurableProgramDocument> {
public:
    ConfigurableProgramDocument() = default;
    ConfigurableProgramDocument(const ConfigurableProgramDocument&) = default;
    ConfigurableProgramDocument& operator=(const ConfigurableProgramDocument&) = default;
    virtual ~ConfigurableProgramDocument();

    /// Reads the file at the platform path `path` and replaces the programs with its content.
    /// - No such file (or not a regular file): `Zon::System::Commons::Io::NotExistException`
    ///   "File `{0}` not found.", the programs stay as they were.
    /// - Not well-formed XML (also an empty file): `Zon::System::Commons::InvalidConfigException`
    ///   "Invalid XML `{0}`", the programs stay as they were.
    /// - A `Parameter` without exactly one of `value` and `ref`: `InvalidConfigException`
    ///   "Parameter must contain exactly one attribute of `value` or `ref`". The programs then
    ///   hold the `Program` entries finished before the failing one. The parsed XML tree is
    ///   released on this path as on every other.
    /// The XML parser neither uses the network nor loads external entities or DTDs, and its own
    /// error output is silenced; its diagnosis shows up only as the exceptions above.
    void Load(const Zon::String& path);
    /// `Load`, answering true when it returned and false when any exception left it. Logs nothing.
    bool TryLoad(const Zon::String& path);

    /// Throws `Zon::System::Commons::NotImplementedException`
    /// "ConfigurableProgramDocument::Save is not implemented yet".
    void Save();
    /// Throws `Zon::System::Commons::NotImplementedException`
    /// "ConfigurableProgramDocument::Save is not implemented yet".
    void Save(const Zon::String& path);

    /// The `Program` entries of the last load, in document order; empty after construction.
    const std::vector<ConfigurableProgramSettings>& GetPrograms() const noexcept { return programs; }
    std::vector<ConfigurableProgramSettings>& GetPrograms() noexcept { return programs; }

private:
    std::vector<ConfigurableProgramSettings> programs;
};

} // namespace VarnixBase::Core::PortSystem::Configuration
