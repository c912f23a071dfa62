#include "VarnixBase/Core/Os/Process.hpp"

#include <pthread.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"

namespace VarnixBase::Core::Os {

namespace {

using Zon::System::Commons::Diagnostics::Logging::LoggerBase;
using Zon::System::Commons::Diagnostics::Logging::LogManager;

/// Sets up the class logger: it needs the domain's log manager, and fails as the platform does
/// without it.
void SetupLogger()
{
    LogManager::GetInstance();
    static LoggerBase& logger = Zon::System::Commons::Diagnostics::Logging::GetLogger(Zon::CommonTypeName<Process>());
    static_cast<void>(logger);
}

/// Keeps the calling thread from being cancelled while the pipes are made and the child is
/// forked. A thread that is ended there would otherwise leave pipe ends open in this process, and
/// its forked copy would unwind the caller's stack instead of running the command. A cancellation
/// asked for meanwhile takes effect at the next cancellation point after `Start`.
class CancellationPause {
public:
    CancellationPause() noexcept { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &previous); }
    ~CancellationPause() { pthread_setcancelstate(previous, nullptr); }
    CancellationPause(const CancellationPause&) = delete;
    CancellationPause& operator=(const CancellationPause&) = delete;

private:
    int previous = PTHREAD_CANCEL_ENABLE;
};

/// One system call moves at most what the count can hold.
std::size_t CountableSize(std::size_t size)
{
    return size > static_cast<std::size_t>(INT_MAX) ? static_cast<std::size_t>(INT_MAX) : size;
}

/// Closes a descriptor that this object owns and marks it closed, so that a second `Terminate`
/// cannot close a descriptor that has been handed out again in the meantime.
void CloseOwned(int& descriptor)
{
    close(descriptor);
    descriptor = -1;
}

/// The results of `close` and `dup` in the child are not looked at.
void Unchecked(int) noexcept
{
}

} // namespace

struct Process::Impl {
    std::int32_t pid = 0;
    /// [0] the child's read end, [1] this side's write end.
    int stdInPipe[2] = {0, 0};
    /// [0] this side's read end, [1] the child's write end.
    int stdOutPipe[2] = {0, 0};
    /// [0] this side's read end, [1] the child's write end.
    int stdErrPipe[2] = {0, 0};
};

Process::Process()
{
    SetupLogger();
    impl = std::make_shared<Impl>();
}

Process::~Process()
{
    if (IsRunning()) {
        Terminate();
    }
}

void Process::Start(const std::string& command)
{
    // The directory is copied into a string and the buffer that get_current_dir_name allocated is
    // freed at once: starting a command takes no memory that outlives the call.
    std::unique_ptr<char, void (*)(void*)> directory(get_current_dir_name(), &std::free);
    if (directory == nullptr) {
        throw std::logic_error("basic_string: construction from null is not valid");
    }
    std::string path(directory.get());
    directory.reset();
    Start(command, path);
}

void Process::Start(const std::string& command, const std::string& workingDirectory)
{
    CancellationPause pause;
    Impl& self = *impl;

    if (pipe(self.stdInPipe) != 0) {
        throw std::runtime_error("Failed to open StdIn");
    }
    if (pipe(self.stdOutPipe) != 0) {
        close(self.stdInPipe[0]);
        close(self.stdInPipe[1]);
        throw std::runtime_error("Failed to open StdOut");
    }
    if (pipe(self.stdErrPipe) != 0) {
        close(self.stdInPipe[0]);
        close(self.stdInPipe[1]);
        close(self.stdOutPipe[0]);
        close(self.stdOutPipe[1]);
        throw std::runtime_error("Failed to open StdError");
    }

    self.pid = fork();
    if (self.pid > 0) {
        close(self.stdInPipe[0]);
        close(self.stdOutPipe[1]);
        close(self.stdErrPipe[1]);
        return;
    }
    if (self.pid < 0) {
        throw std::runtime_error("Failed to launch child process");
    }

    // The child: the pipes become descriptors 0, 1 and 2, each taking the lowest free number.
    close(self.stdInPipe[1]);
    close(self.stdOutPipe[0]);
    close(self.stdErrPipe[0]);
    close(0);
    Unchecked(dup(self.stdInPipe[0]));
    close(1);
    Unchecked(dup(self.stdOutPipe[1]));
    close(2);
    Unchecked(dup(self.stdErrPipe[1]));
    if (chdir(workingDirectory.c_str()) != 0) {
        throw std::invalid_argument("Invalid working directory");
    }
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    throw std::runtime_error("Failed to start process");
}

bool Process::IsRunning() const
{
    return impl->pid > 0;
}

int Process::Terminate()
{
    Impl& self = *impl;
    CloseOwned(self.stdInPipe[1]);
    CloseOwned(self.stdOutPipe[0]);
    CloseOwned(self.stdErrPipe[0]);
    int status = 0;
    waitpid(self.pid, &status, 0);
    self.pid = 0;
    return status;
}

void Process::Kill()
{
    if (!IsRunning()) {
        return;
    }
    if (kill(impl->pid, SIGKILL) != 0) {
        throw std::runtime_error("Failed to kill process");
    }
    impl->pid = 0;
}

int Process::WriteStdIn(void* data, std::size_t size)
{
    int count = static_cast<int>(write(impl->stdInPipe[1], data, CountableSize(size)));
    if (count == -1) {
        throw std::runtime_error("Failed to write to StdIn");
    }
    return count;
}

int Process::ReadStdOut(void* data, std::size_t size)
{
    int count = static_cast<int>(read(impl->stdOutPipe[0], data, CountableSize(size)));
    if (count == -1) {
        throw std::runtime_error("Failed to read from StdOut");
    }
    return count;
}

int Process::ReadErrOut(void* data, std::size_t size)
{
    int count = static_cast<int>(read(impl->stdErrPipe[0], data, CountableSize(size)));
    if (count == -1) {
        throw std::runtime_error("Failed to read from ErrOut");
    }
    return count;
}

} // namespace VarnixBase::Core::Os
