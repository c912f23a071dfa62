#pragma once

#include <string>

#include "Zon/BasicString.hpp"

namespace Zon::Host {

/// The host file-system root. Every absolute path that the platform's file services get is taken
/// as relative to this directory, the way a chroot does: with the root "/tmp/r", the path
/// "/opt/varnix/data" is "/tmp/r/opt/varnix/data" on the machine. The default root is "/".
/// Relative paths are used as they stand.
class FileSystemRoot {
public:
    static void Set(const std::string& root);
    static std::string Get();
    /// The machine path of a platform path.
    static std::string Map(const String& path);
};

} // namespace Zon::Host
