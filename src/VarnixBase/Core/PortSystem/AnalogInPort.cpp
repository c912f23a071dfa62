#include "VarnixBase/Core/PortSystem/AnalogInPort.hpp"

#include <cstdint>

#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"

namespace VarnixBase::Core::PortSystem {

using QualitySystem::Quality;
using QualitySystem::QualityFlags;
using QualitySystem::QualityState;

AnalogInPort::AnalogInPort(const String& name, unsigned long dimension) : PortBase<unsigned short>(name, dimension) {}

AnalogInPort::~AnalogInPort() = default;

Quality AnalogInPort::GetQuality()
{
    return QualitySystem::CombineQuality(PortBaseImpl::GetQuality(), quality);
}

unsigned long AnalogInPort::GetDimension()
{
    return 1;
}

void AnalogInPort::Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder)
{
    GetLogger().Debug("Publish {}: address={}, attributes={}", GetName(),
                      static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&value)), GetAttributes());
    String portName(GetName().CStr());
    builder.AddPort<unsigned short>(portName, value, GetAttributes());
}

void AnalogInPort::SetValue(unsigned short)
{
}

void AnalogInPort::SetValue(unsigned short, IConnector&)
{
}

unsigned short AnalogInPort::GetValue() const
{
    return value;
}

void AnalogInPort::Execute()
{
    const unsigned short raw = value;
    Quality derived;
    switch (raw) {
    case 0x8001:
        derived.state = QualityState::Bad;
        derived.flags = QualityFlags::Overrange;
        break;
    case 0x8002:
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::WireBreak;
        break;
    case 0x8004:
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::Failure;
        break;
    case 0x8010:
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::Configuration;
        break;
    case 0x8020:
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::PowerFailure;
        break;
    case 0x8040:
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::DeviceDefect;
        break;
    case 0x8080:
        derived.state = QualityState::Bad;
        derived.flags = QualityFlags::Underrange;
        break;
    default:
        break;
    }
    quality = derived;
}

} // namespace VarnixBase::Core::PortSystem
