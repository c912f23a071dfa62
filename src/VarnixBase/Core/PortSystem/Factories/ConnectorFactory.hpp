#pragma once

#include <functional>
#include <memory>

#include "Zon/BasicString.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "VarnixBase/Core/PortSystem/Factories/MapTypeInfo.hpp"
#include "VarnixBase/Core/PortSystem/IConnector.hpp"

namespace VarnixBase::Core::PortSystem {

/// Creates connectors from a connector type name and the two variable paths they join. A
/// connector is a template over its input and output value types, so the factory asks the meta
/// data for the types of both ends and takes the creator registered for that exact pair.
///
/// A process-wide object, built at the first `GetInstance()`, which registers the built-in pairs
/// in this order:
/// - "copy", `CopyConnector<In, Out>` for every pair of `bool`, `signed char`, `unsigned char`,
///   `short`, `unsigned short`, `int`, `unsigned int`, `long`, `unsigned long`, `float`, `double`
///   (input in the outer loop, output in the inner one): 121 pairs;
/// - "copy", narrow text to narrow text, then wide text to wide text (`StaticStringAdapter<char>`,
///   `StaticStringAdapter<char16_t>`): 2 pairs;
/// - "scale", `ScaleConnector<In, Out>` for every pair of the numeric types without `bool`, in the
///   same loops: 100 pairs.
/// Any other pair (no "scale" of `bool` or text, no text of one width to the other, no text to
/// number) is not available. Applications add pairs and remove whole connector types.
///
/// Creators are kept per connector type in an ordered map (`OrderedArrayMap`) whose key order
/// (`MapTypeInfo`) is no strict weak order, so `Create` walks the pairs instead of searching them. There is no lock:
/// registration must not overlap with creation.
class ConnectorFactory : private Zon::System::Commons::Diagnostics::Logging::Loggable<ConnectorFactory> {
public:
    /// A creator: constructs a connector named `name` from `startPort` to `endPort` (two variable
    /// paths), or answers null when it refuses.
    using FactoryFunction =
        std::function<std::shared_ptr<IConnector>(const String& name, const String& startPort, const String& endPort)>;
    using FactoryMethod = std::shared_ptr<FactoryFunction>;

    /// The one instance, created with the built-in pairs on the first call. Its creation sets up
    /// the class logger and so needs the platform's logging.
    static ConnectorFactory& GetInstance();

    ~ConnectorFactory();
    ConnectorFactory(const ConnectorFactory&) = delete;
    ConnectorFactory& operator=(const ConnectorFactory&) = delete;

    /// Creates a connector of type `type` from `startPort` to `endPort`:
    /// 1. logs "Create connector: type={}, startPort={}, endPort={}" at debug level;
    /// 2. resolves both paths with the data browser (a failure there passes through unchanged)
    ///    and derives their common type names;
    /// 3. walks the pairs of `type` from first to last for one equal in both names, and calls its
    ///    creator (an empty creator throws `std::bad_function_call`; a connector's constructor may
    ///    throw too).
    /// An unknown type, a pair without creator and a creator that answers null all throw
    /// `Zon::System::Commons::InvalidConfigException` "Connector type `{}` not available:
    /// inputType=`{}` outputType=`{}`" with the type and the two derived names.
    std::shared_ptr<IConnector> Create(const String& type, const String& name, const String& startPort,
                                       const String& endPort);

    /// Registers `factory` for the pair (`inputType`, `outputType`) of connector type `type`,
    /// creating the type's entry if needed (it stays even when the pair is refused). False,
    /// silently, when the map's own search finds the pair or the map inserts nothing; that search
    /// is only as good as the key order, so an existing pair is not reliably refused. Otherwise
    /// logs "Connector factory added: type=`{}`, inputType=`{}`, outputType=`{}`" at debug level.
    bool TryAddFactoryMethod(const String& type, const String& inputType, const String& outputType,
                             FactoryMethod factory);

    /// As `TryAddFactoryMethod`, but a refusal throws `Zon::System::Commons::ArgumentException`
    /// "Unable to add connector {}: inputType={}, outputType={}".
    void AddFactoryMethod(const String& type, const String& inputType, const String& outputType,
                          FactoryMethod factory);

    /// Registers `factory` for the pair of the common type names of `TIn` and `TOut`.
    template <class TIn, class TOut>
    void AddFactoryMethod(const String& type, FactoryMethod factory)
    {
        AddFactoryMethod(type, Zon::CommonTypeName<TIn>(), Zon::CommonTypeName<TOut>(), std::move(factory));
    }

    /// Registers a creator that constructs a `TConnector` from (`name`, `startPort`, `endPort`), for
    /// the pair of its value types (`TConnector::InputType`, `TConnector::OutputType`).
    template <class TConnector>
    void AddFactoryMethod(const String& type)
    {
        AddFactoryMethod<typename TConnector::InputType, typename TConnector::OutputType>(
            type, std::make_shared<FactoryFunction>(&Construct<TConnector>));
    }

    /// Removes the connector type `type` with all its pairs, logging "Remove connector type `{}`"
    /// at trace level. An unknown type is ignored silently.
    void RemoveFactoryMethod(const String& type);

    /// Removes everything, silently. The built-in pairs do not come back.
    void ClearFactoryMethods();

private:
    ConnectorFactory();

    template <class TConnector>
    static std::shared_ptr<IConnector> Construct(const String& name, const String& startPort, const String& endPort)
    {
        return std::make_shared<TConnector>(name, startPort, endPort);
    }

    /// Registers the built-in copy pairs (numbers, then texts) and scale pairs.
    void AddCopyConnectors();
    void AddScaleConnectors();

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace VarnixBase::Core::PortSystem
