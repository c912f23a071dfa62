#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"

#include <map>
#include <utility>

#include "Zon/Plc/Commons/Gds/StaticString.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"
#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"
#include "VarnixBase/Core/PortSystem/Port.hpp"
#include "VarnixBase/Core/PortSystem/QualifiedPort.hpp"

namespace VarnixBase::Core::PortSystem {

using Zon::Plc::Commons::Gds::StaticString;

struct PortFactory::Impl {
    std::map<String, FactoryMethodPtr> factories;
};

PortFactory& PortFactory::GetInstance()
{
    static PortFactory instance;
    return instance;
}

PortFactory::PortFactory() : impl(std::make_unique<Impl>())
{
    AddFactoryMethod<Port<bool>>("boolean");
    AddFactoryMethod<Port<signed char>>("int8");
    AddFactoryMethod<Port<unsigned char>>("uint8");
    AddFactoryMethod<Port<short>>("int16");
    AddFactoryMethod<Port<unsigned short>>("uint16");
    AddFactoryMethod<Port<int>>("int32");
    AddFactoryMethod<Port<unsigned int>>("uint32");
    AddFactoryMethod<Port<float>>("float32");
    AddFactoryMethod<Port<unsigned long>>("uint64");
    AddFactoryMethod<Port<long>>("int64");
    AddFactoryMethod<Port<double>>("float64");
    AddFactoryMethod<Port<StaticString<80, char>>>("string80");
    AddFactoryMethod<Port<StaticString<512, char>>>("string512");
    AddFactoryMethod<Port<StaticString<80, char16_t>>>("wstring80");
    AddFactoryMethod<Port<StaticString<512, char16_t>>>("wstring512");
    AddFactoryMethod<QualifiedPort<bool>>("qualified.boolean");
    AddFactoryMethod<QualifiedPort<signed char>>("qualified.int8");
    AddFactoryMethod<QualifiedPort<unsigned char>>("qualified.uint8");
    AddFactoryMethod<QualifiedPort<short>>("qualified.int16");
    AddFactoryMethod<QualifiedPort<unsigned short>>("qualified.uint16");
    AddFactoryMethod<QualifiedPort<int>>("qualified.int32");
    AddFactoryMethod<QualifiedPort<unsigned int>>("qualified.uint32");
    AddFactoryMethod<QualifiedPort<float>>("qualified.float32");
    AddFactoryMethod<QualifiedPort<unsigned long>>("qualified.uint64");
    AddFactoryMethod<QualifiedPort<long>>("qualified.int64");
    AddFactoryMethod<QualifiedPort<double>>("qualified.float64");
    AddFactoryMethod<QualifiedPort<StaticString<80, char>>>("qualified.string80");
    AddFactoryMethod<QualifiedPort<StaticString<512, char>>>("qualified.string512");
    AddFactoryMethod<QualifiedPort<StaticString<80, char16_t>>>("qualified.wstring80");
    AddFactoryMethod<QualifiedPort<StaticString<512, char16_t>>>("qualified.wstring512");
    AddFactoryMethod<PnDeviceStatePort>("PnDeviceState");
    AddFactoryMethod<AnalogInPort>("AnalogIn");
}

PortFactory::~PortFactory() = default;

std::shared_ptr<IPort> PortFactory::Create(const String& type, const String& name, std::uint64_t dimension)
{
    auto found = impl->factories.find(type);
    if (found == impl->factories.end()) {
        throw Zon::System::Commons::ArgumentException("Port `{}` has unsupported type `{}`", name, type);
    }
    // Hold the creator for the call, so that a creator that changes the registrations cannot pull
    // it away underneath.
    FactoryMethodPtr factory = found->second;
    if (!factory) {
        throw std::bad_function_call();
    }
    std::shared_ptr<IPort> port = (*factory)(name, dimension);
    GetLogger().Trace("Port created: name=`{}` type=`{}` dimension={}", port ? port->GetName() : String(), type,
                      dimension);
    return port;
}

bool PortFactory::HasType(const String& type)
{
    return impl->factories.find(type) != impl->factories.end();
}

bool PortFactory::AddFactoryMethod(const String& type, FactoryMethodPtr factory)
{
    if (HasType(type)) {
        return false;
    }
    impl->factories.emplace(type, std::move(factory));
    GetLogger().Debug("Add port factory `{}`", type);
    return true;
}

void PortFactory::RemoveFactoryMethod(const String& type)
{
    auto found = impl->factories.find(type);
    if (found == impl->factories.end()) {
        return;
    }
    GetLogger().Trace("Remove port type `{}`", type);
    impl->factories.erase(found);
}

void PortFactory::ClearFactoryMethods()
{
    impl->factories.clear();
}

std::vector<String> PortFactory::GetTypeNames() const
{
    std::vector<String> names;
    names.reserve(impl->factories.size());
    for (const auto& entry : impl->factories) {
        names.push_back(entry.first);
    }
    return names;
}

} // namespace VarnixBase::Core::PortSystem
