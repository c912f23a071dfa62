#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/BasicVersion.hpp"

namespace VarnixBase::Core {

/// The application's identity and its directories on the controller. Every answer is assembled
/// from constants on each call; nothing is read from the environment and no directory is created
/// or tested.
class Info {
public:
    static Zon::String GetAppId();
    static Zon::String GetAppName();
    /// "/opt/varnix/apps/<id>"
    static Zon::String GetAppDirectory();
    /// "/opt/varnix/appshome/data/<id>"
    static Zon::String GetAppDataDirectory();
    /// "/opt/varnix/projects/<name>"
    static Zon::String GetProjectDirectory();
    /// "/opt/varnix/data/<name>"
    static Zon::String GetDataDirectory();
    /// "/var/tmp/varnixapp/<id>"
    static Zon::String GetTempDirectory();
    /// "VarnixBase.Core" 1.7.1.1 with an empty state.
    static Zon::BasicVersion GetVersion();
};

} // namespace VarnixBase::Core
