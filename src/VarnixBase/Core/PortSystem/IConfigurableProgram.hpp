#pragma once

#include "Zon/BasicString.hpp"
#include "VarnixBase/Commons/IExecutable.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::String;

/// One configurable program instance, as the controller's program class sees it.
class IConfigurableProgram : public Commons::IExecutable {
public:
    ~IConfigurableProgram() override = default;
    /// Runs one cycle of the program.
    void Execute() override = 0;
    /// The program's type name: the stem of its configuration file name.
    virtual const String& GetTypeName() const = 0;
    /// The program's instance path.
    virtual const String& GetInstancePath() const = 0;
    /// True once the second build phase has completed.
    virtual bool IsInitialized() const = 0;
};

} // namespace VarnixBase::Core::PortSystem
