#pragma once

#include <cstdint>
#include <type_traits>

#include "Zon/Plc/Commons/Meta/PortDataType.hpp"

namespace MotorApp {

/// What a drive reports about its motor once per cycle. The application publishes it as a port of
/// its own type, and describes it to the type library member by member, so that a variable path
/// such as "App/Main.motor.errorCode" reaches one field.
struct MotorStatus {
    /// The drive's power stage is switched on.
    bool enabled = false;
    /// The drive has tripped; `errorCode` says why.
    bool fault = false;
    /// The drive's last error or warning code; 0 when there is none.
    std::uint16_t errorCode = 0;
    /// Measured motor speed in revolutions per minute.
    float speed = 0.0F;
};

static_assert(std::is_standard_layout_v<MotorStatus> && std::is_trivially_copyable_v<MotorStatus>);

/// The drive as the application's component "Drive" holds it: the motor's status and the gear
/// between motor and machine (motor revolutions per revolution of the output shaft).
struct DriveAxis {
    MotorStatus status;
    double gearRatio = 1.0;
};

} // namespace MotorApp

/// A motor status is published as a whole structure: it carries the user-type code.
template <>
struct Zon::Plc::Commons::Meta::PortDataType<MotorApp::MotorStatus>
    : Zon::Plc::Commons::Meta::PortDataTypeCode<Zon::Plc::Commons::Meta::UserTypeCode> {};
