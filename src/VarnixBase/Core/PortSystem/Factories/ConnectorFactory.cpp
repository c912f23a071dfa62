#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"

#include <functional>
#include <map>
#include <utility>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidConfigException.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"
#include "VarnixBase/Core/PortSystem/Factories/OrderedArrayMap.hpp"
#include "VarnixBase/Core/PortSystem/GetCommonTypeName.hpp"

namespace VarnixBase::Core::PortSystem {

using Logger = Zon::System::Commons::Diagnostics::Logging::Loggable<ConnectorFactory>;

struct ConnectorFactory::Impl {
    /// Creators by connector type name, then by pair of value types. The pairs are kept in the
    /// order of `MapTypeInfo`, which is no strict weak order: an `OrderedArrayMap` stays well
    /// defined under it (an ordered tree of the standard library need not).
    std::map<String, OrderedArrayMap<MapTypeInfo, FactoryMethod>> factories;
};

ConnectorFactory& ConnectorFactory::GetInstance()
{
    static ConnectorFactory instance;
    return instance;
}

ConnectorFactory::ConnectorFactory() : impl(std::make_unique<Impl>())
{
    AddCopyConnectors();
    AddScaleConnectors();
}

ConnectorFactory::~ConnectorFactory() = default;

std::shared_ptr<IConnector> ConnectorFactory::Create(const String& type, const String& name, const String& startPort,
                                                     const String& endPort)
{
    Logger::GetLogger().Debug("Create connector: type={}, startPort={}, endPort={}", type, startPort, endPort);
    auto& browser = Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser();
    const auto startInfo = browser.GetDataInfo(startPort);
    const auto endInfo = browser.GetDataInfo(endPort);
    const String inputType = GetCommonTypeName(startInfo);
    const String outputType = GetCommonTypeName(endInfo);

    auto entry = impl->factories.find(type);
    if (entry != impl->factories.end()) {
        // A walk, not the map's search: under the key order the search can miss a present pair.
        for (const auto& [key, factory] : entry->second) {
            if (key.inputType == inputType && key.outputType == outputType) {
                if (factory == nullptr) {
                    throw std::bad_function_call();
                }
                auto connector = (*factory)(name, startPort, endPort);
                if (connector != nullptr) {
                    return connector;
                }
                break;
            }
        }
    }
    throw Zon::System::Commons::InvalidConfigException("Connector type `{}` not available: inputType=`{}` outputType=`{}`",
                                                       type, inputType, outputType);
}

bool ConnectorFactory::TryAddFactoryMethod(const String& type, const String& inputType, const String& outputType,
                                           FactoryMethod factory)
{
    auto& pairs = impl->factories[type];
    MapTypeInfo key{inputType, outputType};
    if (pairs.Find(key) != pairs.end()) {
        return false;
    }
    if (!pairs.Insert(std::move(key), std::move(factory))) {
        return false;
    }
    Logger::GetLogger().Debug("Connector factory added: type=`{}`, inputType=`{}`, outputType=`{}`", type, inputType,
                              outputType);
    return true;
}

void ConnectorFactory::AddFactoryMethod(const String& type, const String& inputType, const String& outputType,
                                        FactoryMethod factory)
{
    if (!TryAddFactoryMethod(type, inputType, outputType, std::move(factory))) {
        throw Zon::System::Commons::ArgumentException("Unable to add connector {}: inputType={}, outputType={}", type,
                                                      inputType, outputType);
    }
}

void ConnectorFactory::RemoveFactoryMethod(const String& type)
{
    auto entry = impl->factories.find(type);
    if (entry == impl->factories.end()) {
        return;
    }
    Logger::GetLogger().Trace("Remove connector type `{}`", type);
    impl->factories.erase(entry);
}

void ConnectorFactory::ClearFactoryMethods()
{
    impl->factories.clear();
}

std::vector<ConnectorFactory::TypePair> ConnectorFactory::GetTypePairs() const
{
    std::vector<TypePair> pairs;
    for (const auto& [type, creators] : impl->factories) {
        for (const auto& [key, creator] : creators) {
            pairs.push_back(TypePair{type, key.inputType, key.outputType});
        }
    }
    return pairs;
}

} // namespace VarnixBase::Core::PortSystem
