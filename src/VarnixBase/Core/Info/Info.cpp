#include "VarnixBase/Core/Info/Info.hpp"

#include "Zon/System/Commons/Io/Path.hpp"

namespace VarnixBase::Core {

using Zon::System::Commons::Io::Path;

Zon::String Info::GetAppId()
{
    return "60002172000495";
}

Zon::String Info::GetAppName()
{
    return "VarnixBase";
}

Zon::String Info::GetAppDirectory()
{
    return Path::Combine("/opt/varnix/apps", GetAppId());
}

Zon::String Info::GetAppDataDirectory()
{
    return Path::Combine("/opt/varnix/appshome/data", GetAppId());
}

Zon::String Info::GetProjectDirectory()
{
    return Path::Combine("/opt/varnix/projects", GetAppName());
}

Zon::String Info::GetDataDirectory()
{
    return Path::Combine("/opt/varnix/data", GetAppName());
}

Zon::String Info::GetTempDirectory()
{
    return Path::Combine("/var/tmp/varnixapp", GetAppId());
}

Zon::BasicVersion Info::GetVersion()
{
    return Zon::BasicVersion("VarnixBase.Core", 1, 7, 1, 1, Zon::String());
}

} // namespace VarnixBase::Core
