#include "Zon/System/Commons/Io/File.hpp"

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <system_error>

#include <sys/stat.h>
#include <sys/time.h>

#include "Zon/Host/FileSystemRoot.hpp"
#include "Zon/System/Commons/Io/FileSystemInfo.hpp"
#include "Zon/System/Commons/Io/NotExistException.hpp"

namespace Zon::System::Commons::Io {

namespace fs = std::filesystem;

namespace {

/// The kind of a modification time set through `SetLastWriteTime`, with the time as the file
/// system stored it. The file system keeps no kind of its own, so the host remembers the kind of
/// the last time set on a file and reports it back for as long as the file still carries that
/// time; any later write of the file changes the time and the file reads as UTC again.
struct SetTimeKind {
    DateTime::Kind kind = DateTime::Kind::Utc;
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
};

std::mutex& SetTimeKindsLock()
{
    static std::mutex lock;
    return lock;
}

std::map<std::string, SetTimeKind>& SetTimeKinds()
{
    static std::map<std::string, SetTimeKind> kinds;
    return kinds;
}

std::string KindKey(const std::string& machinePath)
{
    return fs::path(machinePath).lexically_normal().string();
}

DateTime::Kind KindOfStoredTime(const std::string& machinePath, const struct stat& info)
{
    std::lock_guard<std::mutex> guard(SetTimeKindsLock());
    auto found = SetTimeKinds().find(KindKey(machinePath));
    if (found == SetTimeKinds().end() || found->second.seconds != static_cast<std::int64_t>(info.st_mtim.tv_sec) ||
        found->second.nanoseconds != static_cast<std::int64_t>(info.st_mtim.tv_nsec)) {
        return DateTime::Kind::Utc;
    }
    return found->second.kind;
}

void RememberKind(const std::string& machinePath, DateTime::Kind kind)
{
    struct stat info {};
    std::lock_guard<std::mutex> guard(SetTimeKindsLock());
    std::string key = KindKey(machinePath);
    if (kind == DateTime::Kind::Utc || ::stat(machinePath.c_str(), &info) != 0) {
        SetTimeKinds().erase(key);
        return;
    }
    SetTimeKinds()[key] = SetTimeKind{kind, static_cast<std::int64_t>(info.st_mtim.tv_sec),
                                      static_cast<std::int64_t>(info.st_mtim.tv_nsec)};
}

} // namespace

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
    std::string machinePath = Host::FileSystemRoot::Map(path);
    struct stat info {};
    if (::stat(machinePath.c_str(), &info) != 0) {
        throw NotExistException("File `{0}` not found.", path);
    }
    std::int64_t micros = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000 + info.st_mtim.tv_nsec / 1000;
    return DateTime::FromUnixTimeMicroseconds(micros, KindOfStoredTime(machinePath, info));
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
    RememberKind(machinePath, time.GetKind());
}

} // namespace Zon::System::Commons::Io
