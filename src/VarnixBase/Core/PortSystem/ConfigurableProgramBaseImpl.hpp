#pragma once

#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/Plc/Commons/Meta/TypeSystem/TypeDomain.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"
#include "VarnixBase/Core/PortSystem/ConnectorProvider.hpp"
#include "VarnixBase/Core/PortSystem/IConfigurableProgram.hpp"
#include "VarnixBase/Core/PortSystem/PortProvider.hpp"

namespace VarnixBase::Core::PortSystem {

/// One configurable program instance. It owns its ports and connectors (through its two
/// providers) and the list of executables that runs once per task cycle, in the order of adding:
/// executable ports as they are added, then connectors as they are added. There is no sorting
/// by data flow, and the list only grows.
class ConfigurableProgramBaseImpl : public IConfigurableProgram {
public:
    /// Builds the program's record: the two names, the type domain (stored, read by nobody), not
    /// initialised, both providers empty, no executables.
    ConfigurableProgramBaseImpl(const String& instancePath, const String& typeName,
                                Zon::Plc::Commons::Meta::TypeSystem::TypeDomain& typeDomain);
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

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
