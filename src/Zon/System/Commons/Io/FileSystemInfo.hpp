#pragma once

#include "Zon/BasicString.hpp"
#include "Zon/DateTime.hpp"

namespace Zon::System::Commons::Io {

class FileSystemInfo {
public:
    /// The modification time of the file or directory as a `DateTime`, of kind UTC unless the
    /// time was set through `SetLastWriteTime` with another kind and the file has not been
    /// written since. Throws `Io::NotExistException` "File `{0}` not found." when it does not
    /// exist.
    static DateTime GetLastWriteTime(const String& path);
    /// Sets the modification time (to microsecond precision). The file system stores no kind, so
    /// the host remembers the kind of `time` and `GetLastWriteTime` reports it back until the
    /// file's time changes again: that is how two times whose raw values differ in their kind
    /// bits alone come about on the host. Throws as above.
    static void SetLastWriteTime(const String& path, DateTime time);
};

} // namespace Zon::System::Commons::Io
