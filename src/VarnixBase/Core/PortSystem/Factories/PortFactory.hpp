#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Zon/BasicString.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/IPort.hpp"

namespace VarnixBase::Core::PortSystem {

/// Turns a port type name, as a `Port` element of a program's configuration names it, into a new
/// port object. One factory serves the whole process: it maps type names to creator functions.
///
/// The factory starts with every built-in port class, each under two names: the common type name
/// of its class first ("VarnixBase.Core.PortSystem.Port<int>"), then its short name ("int32").
/// The short names are "boolean", "int8", "uint8", "int16", "uint16", "int32", "uint32",
/// "float32", "uint64", "int64", "float64", "string80", "string512", "wstring80", "wstring512",
/// each also with the prefix "qualified." for the port that carries a quality, and the two device
/// ports "PnDeviceState" and "AnalogIn" (which exist only in their plain form). Names match
/// exactly and case-sensitively; there are no aliases.
///
/// Applications add their own creators and may remove or clear any, built-ins included; what is
/// removed stays removed. No lock is taken: registering must not overlap with `Create` or
/// `HasType`.
class PortFactory : public Zon::System::Commons::Diagnostics::Logging::Loggable<PortFactory> {
public:
    /// Makes a new port with the given name and dimension.
    using FactoryMethod = std::function<std::shared_ptr<IPort>(const String& name, std::uint64_t dimension)>;
    using FactoryMethodPtr = std::shared_ptr<FactoryMethod>;

    /// The one instance, filled with the built-in port classes on the first call and kept until
    /// the process ends. Its creation sets up the class logger and so needs the platform's
    /// application domain with its log manager; if that fails, the next call tries again.
    static PortFactory& GetInstance();

    ~PortFactory();
    PortFactory(const PortFactory&) = delete;
    PortFactory& operator=(const PortFactory&) = delete;

    /// A new port of `type` named `name`, with `dimension` passed on unchecked. Logs at trace
    /// level "Port created: name=`{name}` type=`{type}` dimension={dimension}" with the name that
    /// the new port reports (empty if a creator gave no port, which is then returned as it is).
    /// An unknown `type` throws `ArgumentException` "Port `{name}` has unsupported type `{type}`"
    /// and changes nothing; a creator without a function throws `std::bad_function_call`;
    /// exceptions of a port's constructor pass through.
    std::shared_ptr<IPort> Create(const String& type, const String& name, std::uint64_t dimension);

    /// True if a creator is registered under `type`.
    bool HasType(const String& type);

    /// Registers `factory` under `type` and logs at debug level "Add port factory `{type}`".
    /// False, with no message and the existing creator left in place, if the name is taken.
    bool AddFactoryMethod(const String& type, FactoryMethodPtr factory);

    /// Registers one creator of `T` (constructed from the port name and the dimension) under the
    /// common type name of `T`, then, if `type` differs from that, under `type` too: the two names
    /// share the creator but are removed separately. The result is that of the last registration
    /// made (so a taken short name gives false although the long name may have been added).
    template <class T>
    bool AddFactoryMethod(const String& type)
    {
        auto factory = std::make_shared<FactoryMethod>(
            [](const String& name, std::uint64_t dimension) -> std::shared_ptr<IPort> {
                return std::make_shared<T>(name, dimension);
            });
        String commonTypeName = Zon::CommonTypeName<T>();
        bool added = AddFactoryMethod(commonTypeName, factory);
        if (commonTypeName != type) {
            added = AddFactoryMethod(type, factory);
        }
        return added;
    }

    /// Takes the creator of `type` away, logging at trace level "Remove port type `{type}`". An
    /// unknown name is ignored silently.
    void RemoveFactoryMethod(const String& type);

    /// Takes every creator away, silently. The built-ins do not come back.
    void ClearFactoryMethods();

    /// The registered type names, in ascending byte order (each class under its short name and its
    /// common type name). For tools that list what a document may name.
    std::vector<String> GetTypeNames() const;

private:
    PortFactory();

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
