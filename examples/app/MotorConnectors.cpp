// The application's two connector types. Their start is a `MotorStatus`, a structure of the
// application: the library's typed handles cover its own value types, so the connectors resolve
// the start path themselves, the same way, through the meta data's data browser.
#include <cmath>

#include "MotorRunningConnector.hpp"
#include "MotorSpeedConnector.hpp"
#include "VarnixBase/Commons/Meta/MetaInfoProvider.hpp"

namespace MotorApp {

namespace {

const MotorStatus* ResolveStatus(const Zon::String& path)
{
    auto info = VarnixBase::Commons::Meta::MetaInfoProvider::GetInstance().GetDataBrowser().GetDataInfo(path);
    return static_cast<const MotorStatus*>(info.address);
}

} // namespace

MotorSpeedConnector::MotorSpeedConnector(const Zon::String& name, const Zon::String& startPath,
                                         const Zon::String& endPath)
    : ConnectorBaseImpl(name),
      source(ResolveStatus(startPath)),
      destination(endPath),
      ratio(GetParameterProvider().AddParameter<double>(Zon::String("ratio"), 1.0))
{
    CheckDataAddress(source, startPath);
    CheckDataAddress(destination.GetDataPointer(), endPath);
}

void MotorSpeedConnector::Execute()
{
    const double divisor = ratio.GetValue();
    *destination.GetDataPointer() = divisor != 0.0 ? static_cast<double>(source->speed) / divisor : 0.0;
    changed(*this);
}

MotorRunningConnector::MotorRunningConnector(const Zon::String& name, const Zon::String& startPath,
                                             const Zon::String& endPath)
    : ConnectorBaseImpl(name),
      source(ResolveStatus(startPath)),
      destination(endPath),
      threshold(GetParameterProvider().AddParameter<double>(Zon::String("threshold"), 1.0))
{
    CheckDataAddress(source, startPath);
    CheckDataAddress(destination.GetDataPointer(), endPath);
}

void MotorRunningConnector::Execute()
{
    const MotorStatus& status = *source;
    *destination.GetDataPointer() =
        status.enabled && !status.fault && std::fabs(static_cast<double>(status.speed)) >= threshold.GetValue();
    changed(*this);
}

} // namespace MotorApp
