#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/DateTime.hpp"

namespace Zon::System::Commons::Io {

class FileSystemInfo {
public:
    /// The modification time of the file or directory as a UTC `DateTime`.
    /// Throws `Io::NotExistException` "File `{0}` not found." when it does not exist.
    static DateTime GetLastWriteTime(const String& path);
    /// Sets the modification time (to microsecond precision). Throws as above.
    static void SetLastWriteTime(const String& path, DateTime time);
};

} // namespace Zon::System::Commons::Io
