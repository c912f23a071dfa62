// The application's types as the library and the controller's meta data get to know them: the
// motor app and its tests register them alike.
#include "MotorTypes.hpp"

#include "MotorRunningConnector.hpp"
#include "MotorSpeedConnector.hpp"
#include "MotorStatus.hpp"
#include "MotorStatusPort.hpp"
#include "VarnixBase/Core/PortSystem/Factories/ConnectorFactory.hpp"
#include "VarnixBase/Core/PortSystem/Factories/PortFactory.hpp"
#include "Zon/Host/TypeLibrary.hpp"

namespace MotorApp {

void AddMotorTypes()
{
    // The factories live as long as the process; a connector pair registered twice may be refused
    // with an exception, so the registration happens once.
    static const bool added = [] {
        using VarnixBase::Core::PortSystem::ConnectorFactory;
        using VarnixBase::Core::PortSystem::PortFactory;
        PortFactory::GetInstance().AddFactoryMethod<MotorStatusPort>("motorStatus");
        ConnectorFactory::GetInstance().AddFactoryMethod<MotorSpeedConnector>("motorSpeed");
        ConnectorFactory::GetInstance().AddFactoryMethod<MotorRunningConnector>("motorRunning");
        return true;
    }();
    (void)added;
}

void DescribeMotorTypes(Zon::Host::TypeLibrary& library)
{
    library.AddStruct<MotorStatus>()
        .Member("enabled", &MotorStatus::enabled)
        .Member("fault", &MotorStatus::fault)
        .Member("errorCode", &MotorStatus::errorCode)
        .Member("speed", &MotorStatus::speed);
    library.AddStruct<DriveAxis>().Member("status", &DriveAxis::status).Member("gearRatio", &DriveAxis::gearRatio);
}

} // namespace MotorApp
