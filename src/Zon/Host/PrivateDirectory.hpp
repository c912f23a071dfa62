#pragma once

#include <filesystem>
#include <string_view>

namespace Zon::Host {

/// Where a run keeps its private directories (a simulated controller's file system, a test's files):
///
/// 1. the temporary directory that the environment names (`TMPDIR`, or `TMP`, `TEMP`, `TEMPDIR`),
///    when one is set: the user's choice stands, as it is (one that is not there shows when a
///    directory cannot be made in it);
/// 2. else the user's runtime directory (`XDG_RUNTIME_DIR`), when it is a writable directory;
/// 3. else `/dev/shm`, when it is a writable directory;
/// 4. else `/tmp`.
///
/// The runtime directory and `/dev/shm` are memory file systems on the systems that have them. A
/// run's directories are small and live no longer than the run; on a journalled disk file system
/// their creation and removal cost the simulator a few milliseconds of every start (each new
/// directory and file is a journal entry), in memory a fifth of that.
std::filesystem::path PrivateDirectoryBase();

/// A directory of the process's own, "<base>/<prefix>-XXXXXX" with a unique ending and mode 0700
/// (base: PrivateDirectoryBase()), removed with everything in it when the object goes.
class PrivateDirectory {
public:
    /// Throws std::system_error when the directory cannot be created ("cannot create a directory in
    /// BASE", and the reason).
    explicit PrivateDirectory(std::string_view prefix);
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    const std::filesystem::path& Path() const noexcept { return path; }

private:
    std::filesystem::path path;
};

} // namespace Zon::Host
