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

namespace {

/// The analog input module's error codes and the quality each one means. Codes are compared for
/// equality, not as bits: any other value, from 0x8000 up too, is a reading and `Good`.
struct ErrorCode {
    unsigned short code;
    QualityState state;
    QualityFlags flags;
};

constexpr ErrorCode ErrorCodes[] = {
    {0x8001, QualityState::Bad, QualityFlags::Overrange},
    {0x8002, QualityState::Invalid, QualityFlags::WireBreak},
    {0x8004, QualityState::Invalid, QualityFlags::Failure},
    {0x8010, QualityState::Invalid, QualityFlags::Configuration},
    {0x8020, QualityState::Invalid, QualityFlags::PowerFailure},
    {0x8040, QualityState::Invalid, QualityFlags::DeviceDefect},
    {0x8080, QualityState::Bad, QualityFlags::Underrange},
};

} // namespace

void AnalogInPort::Execute()
{
    const unsigned short raw = value;
    Quality derived;
    for (const auto& row : ErrorCodes) {
        if (row.code == raw) {
            derived.state = row.state;
            derived.flags = row.flags;
            break;
        }
    }
    quality = derived;
}

} // namespace VarnixBase::Core::PortSystem
