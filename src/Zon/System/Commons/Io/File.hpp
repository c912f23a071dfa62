#pragma once

#include "Zon/BasicString.hpp"

namespace Zon::System::Commons::Io {

/// File services. Absolute paths resolve under the host file-system root (`Zon::Host::FileSystemRoot`).
class File {
public:
    /// True when `path` names a regular file (following links). A directory is no file.
    static bool Exists(const String& path);

    /// Copies `source` to `destination`. `overwrite`: an existing destination is replaced (else the
    /// call fails when it exists). `createDirectories`: missing directories of the destination are
    /// created first. Returns true on success and false when the copy could not be made; it throws
    /// `Io::NotExistException` "File `{0}` not found." when the source does not exist.
    static bool Copy(const String& source, const String& destination, bool overwrite, bool createDirectories);

    /// Removes a file; false when there was none.
    static bool Delete(const String& path);
};

} // namespace Zon::System::Commons::Io
