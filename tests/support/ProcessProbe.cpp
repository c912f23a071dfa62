#include "support/ProcessProbe.hpp"

#include <dirent.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

// Unwinding a thread that is being ended skips frames whose stack poison stays behind. The
// runtime's own stack clean-up, which runs on that path, asks for the alternate signal stack
// through its sigaltstack interceptor, and that interceptor can then find the stale poison and
// report an error that is not one. Only that interceptor's reports are suppressed.
extern "C" const char* __asan_default_suppressions()
{
    return "interceptor_name:sigaltstack\n";
}

namespace VarnixTest {

namespace {

std::vector<std::string> DirectoryNames(const char* path, int* usedDescriptor)
{
    std::vector<std::string> names;
    DIR* directory = ::opendir(path);
    if (directory == nullptr) {
        return names;
    }
    if (usedDescriptor != nullptr) {
        *usedDescriptor = ::dirfd(directory);
    }
    while (dirent* entry = ::readdir(directory)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    ::closedir(directory);
    return names;
}

bool IsNumber(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Fields of /proc/<pid>/stat after the command name, which may itself hold spaces and parentheses.
std::vector<std::string> StatFields(pid_t pid)
{
    std::string text = ReadFileText("/proc/" + std::to_string(pid) + "/stat");
    std::vector<std::string> fields;
    std::size_t close = text.rfind(')');
    if (close == std::string::npos) {
        return fields;
    }
    std::istringstream rest(text.substr(close + 1));
    std::string field;
    while (rest >> field) {
        fields.push_back(field);
    }
    return fields;
}

} // namespace

std::set<int> OpenDescriptors()
{
    int used = -1;
    std::set<int> descriptors;
    for (const std::string& name : DirectoryNames("/proc/self/fd", &used)) {
        if (IsNumber(name)) {
            descriptors.insert(std::atoi(name.c_str()));
        }
    }
    descriptors.erase(used);
    return descriptors;
}

std::vector<pid_t> ChildProcesses()
{
    std::vector<pid_t> children;
    const std::string self = std::to_string(::getpid());
    for (const std::string& name : DirectoryNames("/proc", nullptr)) {
        if (!IsNumber(name)) {
            continue;
        }
        pid_t pid = static_cast<pid_t>(std::atoi(name.c_str()));
        std::vector<std::string> fields = StatFields(pid);
        // Field 0 is the state, field 1 the parent.
        if (fields.size() > 1 && fields[1] == self) {
            children.push_back(pid);
        }
    }
    return children;
}

std::set<pid_t> ThreadIds()
{
    std::set<pid_t> ids;
    for (const std::string& name : DirectoryNames("/proc/self/task", nullptr)) {
        if (IsNumber(name)) {
            ids.insert(static_cast<pid_t>(std::atoi(name.c_str())));
        }
    }
    return ids;
}

ThreadCensus::ThreadCensus()
{
    std::thread([] {}).join();
    before = ThreadIds();
}

std::set<pid_t> ThreadCensus::NewThreads() const
{
    std::set<pid_t> added;
    for (pid_t id : ThreadIds()) {
        if (before.count(id) == 0) {
            added.insert(id);
        }
    }
    return added;
}

char ProcessState(pid_t pid)
{
    std::vector<std::string> fields = StatFields(pid);
    return fields.empty() || fields[0].empty() ? '\0' : fields[0][0];
}

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit)
{
    auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return condition();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

int RunInChild(const std::function<int()>& body, std::chrono::milliseconds limit)
{
    pid_t child = ::fork();
    if (child < 0) {
        return -1;
    }
    if (child == 0) {
        int code = 125;
        try {
            code = body();
        } catch (...) {
            code = 125;
        }
        ::_exit(code);
    }
    int status = 0;
    bool ended = WaitUntil([&] { return ::waitpid(child, &status, WNOHANG) == child; }, limit);
    if (!ended) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    return status;
}

std::string ReadFileText(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

std::string WaitForLine(const std::string& path, std::chrono::milliseconds limit)
{
    std::string text;
    WaitUntil([&] {
        text = ReadFileText(path);
        return text.find('\n') != std::string::npos;
    }, limit);
    std::size_t end = text.find('\n');
    return end == std::string::npos ? std::string() : text.substr(0, end);
}

DescriptorLimit::DescriptorLimit(int free)
{
    ::getrlimit(RLIMIT_NOFILE, &original);
    std::set<int> open = OpenDescriptors();
    rlim_t limit = 0;
    int unused = 0;
    while (unused < free) {
        if (open.count(static_cast<int>(limit)) == 0) {
            ++unused;
        }
        ++limit;
    }
    rlimit lowered = original;
    lowered.rlim_cur = limit;
    ::setrlimit(RLIMIT_NOFILE, &lowered);
}

DescriptorLimit::~DescriptorLimit()
{
    ::setrlimit(RLIMIT_NOFILE, &original);
}

CurrentDirectory::CurrentDirectory(const std::filesystem::path& directory) : previous(std::filesystem::current_path())
{
    std::filesystem::current_path(directory);
}

CurrentDirectory::~CurrentDirectory()
{
    std::error_code error;
    std::filesystem::current_path(previous, error);
}

} // namespace VarnixTest
