#include "Zon/Host/PrivateDirectory.hpp"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

#include <unistd.h>

namespace Zon::Host {

namespace {

bool IsWritableDirectory(const char* path)
{
    std::error_code error;
    return path != nullptr && *path == '/' && std::filesystem::is_directory(path, error) &&
           ::access(path, W_OK | X_OK) == 0;
}

} // namespace

std::filesystem::path PrivateDirectoryBase()
{
    // The variables that the system's temporary directory follows, in its order; a directory that
    // is not there is reported when the directory cannot be made in it.
    for (const char* name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return value;
        }
    }
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); IsWritableDirectory(runtime)) {
        return runtime;
    }
    if (IsWritableDirectory("/dev/shm")) {
        return "/dev/shm";
    }
    return "/tmp";
}

PrivateDirectory::PrivateDirectory(std::string_view prefix)
{
    const std::filesystem::path base = PrivateDirectoryBase();
    std::string pattern = (base / (std::string(prefix) + "-XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot create a directory in " + base.string());
    }
    path = pattern;
}

PrivateDirectory::~PrivateDirectory()
{
    std::error_code error;
    std::filesystem::remove_all(path, error);
}

} // namespace Zon::Host
