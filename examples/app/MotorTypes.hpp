#pragma once

namespace Zon::Host {
class TypeLibrary;
}

namespace MotorApp {

/// Adds the application's port type "motorStatus" and its connector types "motorSpeed" and
/// "motorRunning" to the library's factories, under the names its documents use. The factories are
/// the process's: the first call registers, later ones do nothing. Call it while the host runtime
/// is up (the factories log), before the program is built.
void AddMotorTypes();

/// Describes the application's structures (`MotorStatus`, `DriveAxis`) to `library` member by
/// member, so that variable paths walk into them ("App/Main.motor.errorCode").
void DescribeMotorTypes(Zon::Host::TypeLibrary& library);

} // namespace MotorApp
