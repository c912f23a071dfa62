#include "VarnixBase/Core/PortSystem/PnDeviceStatePort.hpp"

#include <cstdint>

#include "VarnixBase/Core/QualitySystem/CombineQuality.hpp"

namespace VarnixBase::Core::PortSystem {

using QualitySystem::Quality;
using QualitySystem::QualityFlags;
using QualitySystem::QualityState;
using Types::PnDeviceState;

static_assert(sizeof(PnDeviceState) == sizeof(unsigned char), "the status bits are published as one byte");

PnDeviceStatePort::PnDeviceStatePort(const String& name, unsigned long dimension)
    : PortBase<PnDeviceState>(name, dimension)
{
}

PnDeviceStatePort::~PnDeviceStatePort() = default;

Quality PnDeviceStatePort::GetQuality()
{
    return QualitySystem::CombineQuality(PortBaseImpl::GetQuality(), quality);
}

unsigned long PnDeviceStatePort::GetDimension()
{
    return 1;
}

void PnDeviceStatePort::Publish(Zon::Plc::Commons::Meta::DynamicPortsBuilder& builder)
{
    GetLogger().Debug("Publish {}: address={}, attributes={}", GetName(),
                      static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(&value)), GetAttributes());
    String portName(GetName().CStr());
    // The controller sees the bits as a plain byte; a byte may stand for any object's memory.
    builder.AddPort<unsigned char>(portName, reinterpret_cast<unsigned char&>(value), GetAttributes());
}

void PnDeviceStatePort::SetValue(PnDeviceState)
{
}

void PnDeviceStatePort::SetValue(PnDeviceState, IConnector&)
{
}

PnDeviceState PnDeviceStatePort::GetValue() const
{
    return value;
}

void PnDeviceStatePort::Execute()
{
    const PnDeviceState bits = value;
    Quality derived;
    if (!Types::HasBits(bits, PnDeviceState::AR_VALID)) {
        derived.state = QualityState::Invalid;
        derived.flags = QualityFlags::Failure;
    } else if (!Types::HasBits(bits, PnDeviceState::PN_NO_DIAG)) {
        derived.state = QualityState::Questionable;
    }
    quality = derived;
}

} // namespace VarnixBase::Core::PortSystem
