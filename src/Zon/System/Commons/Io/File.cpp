#include "Zon/System/Commons/Io/File.hpp"

#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <sys/time.h>

#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"

namespace Zon::System::Commons::Io {

namespace fs = std::filesystem;

bool File::Exists(const String& path)
{
    std::error_code error;
    return fs::is_regular_file(Host::FileSystemRoot::Map(path), error);
}

bool File::Copy(const String& source, const String& destination, bool overwrite, bool createDirectories)
{
    if (!Exists(source)) {
        throw NotExistException("File `{0}` not found.", source);
    }
    fs::path target = Host::FileSystemRoot::Map(destination);
    std::error_code error;
    if (createDirectories && target.has_parent_path()) {
        fs::create_directories(target.parent_path(), error);
    }
    auto options = overwrite ? fs::copy_options::overwrite_existing : fs::copy_options::none;
    return fs::copy_file(Host::FileSystemRoot::Map(source), target, options, error) && !error;
}

bool File::Delete(const String& path)
{
    std::error_code error;
    return fs::remove(Host::FileSystemRoot::Map(path), error);
}

DateTime FileSystemInfo::GetLastWriteTime(const String& path)
{
    struct stat info {};
    if (::stat(Host::FileSystemRoot::Map(path).c_str(), &info) != 0) {
        throw NotExistException("File `{0}` not found.", path);
    }
    std::int64_t micros = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000;
    return DateTime::FromUnixTimeMicroseconds(micros);
}

void FileSystemInfo::SetLastWriteTime(const String& path, DateTime time)
{
    std::string machinePath = Host::FileSystemRoot::Map(path);
    struct stat info {};
    if (::stat(machinePath.c_str(), &info) != 0) {
        throw NotExistException("File `{0}` not found.", path);
    }
    std::int64_t micros = time.ToUnixTimeMicroseconds();
    struct timeval times[2];
    times[0].tv_sec = info.st_atim.tv_sec;
    times[0].tv_usec = info.st_atim.tv_nsec / 1000;
    std::int64_t seconds = micros / 1000000;
    std::int64_t rest = micros % 1000000;
    if (rest < 0) {
        rest += 1000000;
        seconds -= 1;
    }
    times[1].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_usec = static_cast<suseconds_t>(rest);
    ::utimes(machinePath.c_str(), times);
}

} // namespace Zon::System::Commons::Io
