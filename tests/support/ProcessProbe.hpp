#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace VarnixTest {

/// The descriptors open in this process now, as /proc/self/fd lists them (without the one used to
/// read the list).
std::set<int> OpenDescriptors();

/// The processes whose parent is this process, zombies included (read from /proc).
std::vector<pid_t> ChildProcesses();

/// The ids of the threads of this process now (entries of /proc/self/task).
std::set<pid_t> ThreadIds();

/// Tells which threads a test started and left behind. Make it before the test starts threads of
/// its own: it takes the threads that are there, after it has started and joined one thread of its
/// own first. A runtime that adds a thread of its own beside the first thread a process starts
/// (ThreadSanitizer's background thread) has done so by then, so such a thread is never taken for
/// one of the test's, and the same assertions hold in every build.
class ThreadCensus {
public:
    ThreadCensus();

    /// The threads there now that were not there when this census was made.
    std::set<pid_t> NewThreads() const;

private:
    std::set<pid_t> before;
};

/// The state letter of a process from /proc/<pid>/stat ('R', 'S', 'Z', ...), or 0 when there is
/// no such process.
char ProcessState(pid_t pid);

/// Polls `condition` every few milliseconds until it holds or `limit` has passed; the last answer.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);

/// Runs `body` in a forked copy of this process and returns the raw wait status of that copy. The
/// copy leaves with `_exit(body())`, or `_exit(125)` when `body` throws, so it never returns into
/// the test runner. A copy still alive after `limit` is killed (the status then says so).
int RunInChild(const std::function<int()>& body, std::chrono::milliseconds limit);

/// The whole content of a file, or an empty text when it cannot be read.
std::string ReadFileText(const std::string& path);

/// Polls until `path` holds a complete line (ending in a newline) or `limit` has passed; the line
/// without its newline, or an empty text.
std::string WaitForLine(const std::string& path, std::chrono::milliseconds limit);

/// Lowers the soft limit of open descriptors so that exactly `free` descriptor numbers are left
/// for new descriptors, and restores the limit when it goes.
class DescriptorLimit {
public:
    explicit DescriptorLimit(int free);
    ~DescriptorLimit();
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit original{};
};

/// Makes `directory` the current directory and goes back to the previous one when it goes.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const std::filesystem::path& directory);
    ~CurrentDirectory();
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;

private:
    std::filesystem::path previous;
};

} // namespace VarnixTest
