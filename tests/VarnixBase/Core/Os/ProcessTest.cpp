#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__x86_64__)
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/Os/Process.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Runtime.hpp"
#include "support/LeakCheck.hpp"
#include "support/HostFixture.hpp"
#include "support/ProcessProbe.hpp"

using VarnixBase::Core::Os::Process;

namespace {

constexpr auto Limit = std::chrono::seconds(60);

/// Exit code of a forked copy of this test that caught the exception it was meant to see.
constexpr int CopyCaught = 42;
/// Exit code of a forked copy that caught something else.
constexpr int CopyCaughtOther = 43;

/// Starts `command` where the forked copy of this test is expected to throw (a failing `chdir` or
/// `execl`). In that copy the exception is caught here: its kind and text go to descriptor 2, which
/// is then the child's standard-error pipe, and the copy leaves with `_exit` so that it never
/// returns into the test runner. In this process the call returns as `Start` does.
void StartWithFailureInTheCopy(Process& process, const std::string& command, const std::string& directory)
{
    const pid_t test = ::getpid();
    try {
        process.Start(command, directory);
    } catch (const std::exception& error) {
        if (::getpid() == test) {
            throw;
        }
        std::string text = dynamic_cast<const std::invalid_argument*>(&error) != nullptr ? "invalid_argument: "
                           : dynamic_cast<const std::runtime_error*>(&error) != nullptr ? "runtime_error: "
                                                                                        : "other: ";
        text += error.what();
        [[maybe_unused]] ssize_t written = ::write(2, text.data(), text.size());
        ::_exit(CopyCaught);
    } catch (...) {
        if (::getpid() == test) {
            throw;
        }
        ::_exit(CopyCaughtOther);
    }
}

std::string ReadAllStdOut(Process& process)
{
    std::string text;
    char buffer[256];
    int count = 0;
    while ((count = process.ReadStdOut(buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

std::string ReadAllErrOut(Process& process)
{
    std::string text;
    char buffer[256];
    int count = 0;
    while ((count = process.ReadErrOut(buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return text;
}

/// Reads standard output up to the first newline: the process id that "echo $$" printed.
pid_t ReadPid(Process& process)
{
    std::string line;
    char byte = 0;
    while (process.ReadStdOut(&byte, 1) == 1 && byte != '\n') {
        line += byte;
    }
    return static_cast<pid_t>(std::stol(line));
}

std::set<int> Added(const std::set<int>& before, const std::set<int>& after)
{
    std::set<int> added;
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::inserter(added, added.end()));
    return added;
}

/// Kills and reaps a child at the end of a test that did not get that far itself.
class ChildCleanup {
public:
    explicit ChildCleanup(pid_t pid = 0) : pid(pid) {}
    ~ChildCleanup()
    {
        if (pid > 0 && VarnixTest::ProcessState(pid) != '\0') {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }
    ChildCleanup(const ChildCleanup&) = delete;
    ChildCleanup& operator=(const ChildCleanup&) = delete;
    void Set(pid_t child) { pid = child; }

private:
    pid_t pid;
};

/// Keeps a copy of descriptor 0 and puts it back at the end.
class KeepDescriptorZero {
public:
    KeepDescriptorZero()
    {
        if (::fcntl(0, F_GETFD) == -1) {
            int null = ::open("/dev/null", O_RDONLY);
            if (null > 0) {
                ::dup2(null, 0);
                ::close(null);
            }
        }
        saved = ::fcntl(0, F_DUPFD_CLOEXEC, 10);
    }
    ~KeepDescriptorZero()
    {
        ::dup2(saved, 0);
        ::close(saved);
    }
    KeepDescriptorZero(const KeepDescriptorZero&) = delete;
    KeepDescriptorZero& operator=(const KeepDescriptorZero&) = delete;

private:
    int saved = -1;
};

/// The message with which `Start` fails when only `freeDescriptors` descriptor numbers are left.
/// The exception is looked at only after the limit is lifted again.
std::string StartFailure(int freeDescriptors)
{
    Process process;
    std::exception_ptr failure;
    {
        VarnixTest::DescriptorLimit limit(freeDescriptors);
        try {
            process.Start("true", "/");
        } catch (...) {
            failure = std::current_exception();
        }
    }
    if (!failure) {
        return "no failure";
    }
    try {
        std::rethrow_exception(failure);
    } catch (const std::runtime_error& error) {
        return error.what();
    } catch (...) {
    }
    return "another failure";
}

} // namespace

class ProcessTest : public VarnixTest::HostTest {};

TEST_F(ProcessTest, ANewProcessIsNotRunningAndKillDoesNothing)
{
    Process process;
    EXPECT_FALSE(process.IsRunning());
    EXPECT_NO_THROW(process.Kill());
    EXPECT_FALSE(process.IsRunning());
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(ProcessTest, IsRunningStaysTrueAfterTheChildHasExitedUntilTerminate)
{
    Process process;
    process.Start("echo $$");
    pid_t child = ReadPid(process);
    ChildCleanup cleanup(child);
    EXPECT_EQ(ReadAllStdOut(process), "");
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return VarnixTest::ProcessState(child) == 'Z'; }, Limit));
    EXPECT_TRUE(process.IsRunning());
    EXPECT_EQ(process.Terminate(), 0);
    EXPECT_FALSE(process.IsRunning());
    EXPECT_EQ(VarnixTest::ProcessState(child), '\0');
}

TEST_F(ProcessTest, ExitCodeThreeSitsInBitsEightToFifteenOfTheRawStatus)
{
    Process process;
    process.Start("exit 3");
    int status = process.Terminate();
    EXPECT_EQ(status, 3 << 8);
    EXPECT_EQ((status >> 8) & 0xff, 3);
    EXPECT_TRUE(WIFEXITED(status));
}

TEST_F(ProcessTest, ACommandThatDoesNotExistStartsAndTheShellReportsOnStandardError)
{
    Process process;
    EXPECT_NO_THROW(process.Start("varnix-no-such-command-here"));
    EXPECT_TRUE(process.IsRunning());
    EXPECT_EQ(ReadAllStdOut(process), "");
    std::string error = ReadAllErrOut(process);
    EXPECT_NE(error.find("varnix-no-such-command-here"), std::string::npos) << error;
    int status = process.Terminate();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), 0);
    EXPECT_EQ(WEXITSTATUS(status), 127);
}

TEST_F(ProcessTest, ReadStdOutReturnsZeroOnceTheChildHasClosedItsOutput)
{
    Process process;
    process.Start("printf abc; exec 1>&-; exec 2>&-; sleep 0");
    char buffer[16];
    std::string text;
    int count = 0;
    while ((count = process.ReadStdOut(buffer, sizeof(buffer))) > 0) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(count, 0);
    EXPECT_EQ(text, "abc");
    EXPECT_EQ(process.ReadStdOut(buffer, sizeof(buffer)), 0);
    EXPECT_EQ(process.ReadErrOut(buffer, sizeof(buffer)), 0);
    EXPECT_EQ(process.Terminate(), 0);
}

TEST_F(ProcessTest, AfterKillIsRunningIsFalseAndTheDestructorDoesNotWait)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    pid_t child = 0;
    ChildCleanup cleanup;
    {
        Process process;
        process.Start("echo $$; exec sleep 600");
        child = ReadPid(process);
        cleanup.Set(child);
        process.Kill();
        EXPECT_FALSE(process.IsRunning());
    }
    // Nobody has waited for the killed child: it stays a zombie, and its pipes stay open here.
    EXPECT_TRUE(VarnixTest::WaitUntil([&] { return VarnixTest::ProcessState(child) == 'Z'; }, Limit));
    std::set<int> leaked = Added(before, VarnixTest::OpenDescriptors());
    EXPECT_EQ(leaked.size(), 3u);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    for (int descriptor : leaked) {
        ::close(descriptor);
    }
}

TEST_F(ProcessTest, TheDestructorBlocksWhileTheChildIgnoresItsPipes)
{
    auto process = std::make_unique<Process>();
    process->Start("echo $$; exec sleep 600");
    pid_t child = ReadPid(*process);
    ChildCleanup cleanup(child);
    std::atomic<bool> returned{false};
    std::thread destroyer([&] {
        process.reset();
        returned = true;
    });
    // However long we look, the destructor waits for a child that does not care about its pipes.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(returned.load());
    EXPECT_NE(VarnixTest::ProcessState(child), 'Z');
    ::kill(child, SIGKILL);
    destroyer.join();
    EXPECT_TRUE(returned.load());
    EXPECT_EQ(VarnixTest::ProcessState(child), '\0');
}

TEST_F(ProcessTest, TerminateOnAProcessNeverStartedClosesDescriptorZeroOfTheCaller)
{
    KeepDescriptorZero keep;
    ASSERT_NE(::fcntl(0, F_GETFD), -1);
    Process process;
    int status = process.Terminate();
    errno = 0;
    EXPECT_EQ(::fcntl(0, F_GETFD), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(status, 0);
    EXPECT_FALSE(process.IsRunning());
}

TEST_F(ProcessTest, TerminateWithoutAChildWaitsForAnyChildOfTheCallersProcessGroup)
{
    KeepDescriptorZero keep;
    pid_t other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        ::_exit(7);
    }
    ChildCleanup cleanup(other);
    Process process;
    int status = process.Terminate();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_EQ(VarnixTest::ProcessState(other), '\0');
}

TEST_F(ProcessTest, AWorkingDirectoryThatDoesNotExistFailsOnlyInTheChildCopy)
{
    Process process;
    EXPECT_NO_THROW(StartWithFailureInTheCopy(process, "echo never", "/varnix/no/such/directory"));
    EXPECT_TRUE(process.IsRunning());
    EXPECT_EQ(ReadAllStdOut(process), "");
    EXPECT_EQ(ReadAllErrOut(process), "invalid_argument: Invalid working directory");
    int status = process.Terminate();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), CopyCaught);
}

TEST_F(ProcessTest, AFailingExeclThrowsInTheChildCopy)
{
    // One argument longer than the system passes to a new program makes execl return.
    std::string command = "true " + std::string(300000, 'x');
    Process process;
    EXPECT_NO_THROW(StartWithFailureInTheCopy(process, command, "/"));
    EXPECT_EQ(ReadAllStdOut(process), "");
    EXPECT_EQ(ReadAllErrOut(process), "runtime_error: Failed to start process");
    int status = process.Terminate();
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), CopyCaught);
}

TEST_F(ProcessTest, TheChildRunsInTheGivenWorkingDirectory)
{
    VarnixTest::TempDir directory;
    Process process;
    process.Start("pwd", directory.Path().string());
    EXPECT_EQ(ReadAllStdOut(process), std::filesystem::canonical(directory.Path()).string() + "\n");
    EXPECT_EQ(process.Terminate(), 0);
}

TEST_F(ProcessTest, WithoutADirectoryTheChildRunsInTheCallersCurrentDirectory)
{
    VarnixTest::TempDir directory;
    VarnixTest::CurrentDirectory change(directory.Path());
    Process process;
    process.Start("pwd");
    EXPECT_EQ(ReadAllStdOut(process), std::filesystem::canonical(directory.Path()).string() + "\n");
    EXPECT_EQ(process.Terminate(), 0);
}

TEST_F(ProcessTest, WithoutADirectoryACurrentDirectoryThatIsGoneRaisesALogicError)
{
    VarnixTest::TempDir directory;
    std::filesystem::path gone = directory.Path() / "gone";
    std::filesystem::create_directory(gone);
    VarnixTest::CurrentDirectory change(gone);
    std::filesystem::remove(gone);
    std::set<int> before = VarnixTest::OpenDescriptors();
    Process process;
    try {
        process.Start("true");
        FAIL() << "no exception";
    } catch (const std::logic_error& error) {
        EXPECT_STREQ(error.what(), "basic_string: construction from null is not valid");
    }
    EXPECT_FALSE(process.IsRunning());
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
}

TEST_F(ProcessTest, TheShellInterpretsQuotingAndRedirection)
{
    Process process;
    process.Start("echo 'two  spaces' 1>&2; echo \"$((6 * 7))\"");
    EXPECT_EQ(ReadAllStdOut(process), "42\n");
    EXPECT_EQ(ReadAllErrOut(process), "two  spaces\n");
    EXPECT_EQ(process.Terminate(), 0);
}

TEST_F(ProcessTest, WhatIsWrittenToStandardInputReachesTheChild)
{
    Process process;
    process.Start("exec cat");
    char text[] = "hello";
    EXPECT_EQ(process.WriteStdIn(text, 5), 5);
    std::string echoed;
    char buffer[16];
    while (echoed.size() < 5) {
        int count = process.ReadStdOut(buffer, sizeof(buffer));
        ASSERT_GT(count, 0);
        echoed.append(buffer, static_cast<std::size_t>(count));
    }
    EXPECT_EQ(echoed, "hello");
    // Closing our end of its input ends cat.
    EXPECT_EQ(process.Terminate(), 0);
}

TEST_F(ProcessTest, AChildKilledByASignalGivesASignalStatus)
{
    Process process;
    process.Start("kill -9 $$");
    int status = process.Terminate();
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    EXPECT_EQ((status >> 8) & 0xff, 0);
}

TEST_F(ProcessTest, TerminateLeavesNoDescriptorAndNoChildBehind)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    Process process;
    process.Start("printf out; printf err 1>&2; exit 1");
    EXPECT_EQ(VarnixTest::OpenDescriptors().size(), before.size() + 3);
    EXPECT_EQ(ReadAllStdOut(process), "out");
    EXPECT_EQ(ReadAllErrOut(process), "err");
    EXPECT_EQ(process.Terminate(), 1 << 8);
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(ProcessTest, TheDestructorTerminatesARunningChildAndLeavesNothingBehind)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    {
        Process process;
        process.Start("exec cat");
    }
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(ProcessTest, ACopySharesTheChild)
{
    Process original;
    original.Start("exit 5");
    Process copy = original;
    EXPECT_TRUE(copy.IsRunning());
    int status = copy.Terminate();
    EXPECT_EQ(WEXITSTATUS(status), 5);
    EXPECT_FALSE(original.IsRunning());
}

TEST_F(ProcessTest, DestroyingACopyWaitsForTheSharedChild)
{
    Process original;
    original.Start("exec cat");
    {
        Process copy(original);
    }
    EXPECT_FALSE(original.IsRunning());
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(ProcessTest, ASecondStartForgetsTheFirstChildAndItsDescriptors)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    Process process;
    process.Start("echo $$; exec cat");
    pid_t first = ReadPid(process);
    ChildCleanup firstCleanup(first);
    process.Start("echo $$; exec cat");
    pid_t second = ReadPid(process);
    ChildCleanup secondCleanup(second);
    EXPECT_NE(first, second);

    EXPECT_EQ(process.Terminate(), 0);
    EXPECT_EQ(VarnixTest::ProcessState(second), '\0');
    // The first cat still waits for input whose write end is still open here.
    char state = VarnixTest::ProcessState(first);
    EXPECT_TRUE(state != '\0' && state != 'Z') << state;
    std::set<int> leaked = Added(before, VarnixTest::OpenDescriptors());
    EXPECT_EQ(leaked.size(), 3u);
    for (int descriptor : leaked) {
        ::close(descriptor);
    }
    int status = -1;
    EXPECT_EQ(::waitpid(first, &status, 0), first);
    EXPECT_TRUE(WIFEXITED(status));
}

TEST_F(ProcessTest, AStandardInputPipeThatCannotBeMadeFailsWithNothingLeftOpen)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    EXPECT_EQ(StartFailure(1), "Failed to open StdIn");
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
}

TEST_F(ProcessTest, AStandardOutputPipeThatCannotBeMadeClosesTheInputPipe)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    EXPECT_EQ(StartFailure(3), "Failed to open StdOut");
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
}

TEST_F(ProcessTest, AStandardErrorPipeThatCannotBeMadeClosesTheOtherPipes)
{
    std::set<int> before = VarnixTest::OpenDescriptors();
    EXPECT_EQ(StartFailure(5), "Failed to open StdError");
    EXPECT_EQ(VarnixTest::OpenDescriptors(), before);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

#if defined(__x86_64__)
TEST_F(ProcessTest, AFailedForkThrowsAndLeavesTheSixPipeEndsOpen)
{
    // In a copy of this test, the system is told to refuse every new process.
    int status = VarnixTest::RunInChild(
        [] {
            Process process;
            std::set<int> before = VarnixTest::OpenDescriptors();
            sock_filter filter[] = {
                BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
                BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_clone, 4, 0),
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 435 /* clone3 */, 3, 0),
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_fork, 2, 0),
                BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_vfork, 1, 0),
                BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
            };
            sock_fprog program{static_cast<unsigned short>(std::size(filter)), filter};
            if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
                ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0) {
                return 20;
            }
            try {
                process.Start("true", "/");
                return 21;
            } catch (const std::runtime_error& error) {
                if (std::string(error.what()) != "Failed to launch child process") {
                    return 22;
                }
            }
            if (process.IsRunning()) {
                return 23;
            }
            if (VarnixTest::OpenDescriptors().size() != before.size() + 6) {
                return 24;
            }
            process.Kill();
            return 0;
        },
        Limit);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
}
#endif

TEST_F(ProcessTest, KillOfAChildReapedElsewhereThrowsAndTheChildStillCounts)
{
    Process process;
    process.Start("echo $$");
    pid_t child = ReadPid(process);
    EXPECT_EQ(ReadAllStdOut(process), "");
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    try {
        process.Kill();
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to kill process");
    }
    EXPECT_TRUE(process.IsRunning());
    EXPECT_EQ(process.Terminate(), 0);
    EXPECT_FALSE(process.IsRunning());
}

TEST_F(ProcessTest, ReadsAndWritesAfterTerminateFail)
{
    Process process;
    process.Start("true");
    process.Terminate();
    char buffer[4] = {'a', 'b', 'c', 'd'};
    try {
        process.ReadStdOut(buffer, sizeof(buffer));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to read from StdOut");
    }
    try {
        process.ReadErrOut(buffer, sizeof(buffer));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to read from ErrOut");
    }
    try {
        process.WriteStdIn(buffer, sizeof(buffer));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to write to StdIn");
    }
}

TEST_F(ProcessTest, WritingToAChildThatHasEndedFailsWhenBrokenPipesAreIgnored)
{
    struct sigaction ignore{};
    struct sigaction previous{};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, &previous);
    Process process;
    process.Start("echo $$");
    pid_t child = ReadPid(process);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    char byte = 'x';
    try {
        process.WriteStdIn(&byte, 1);
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Failed to write to StdIn");
    }
    ::sigaction(SIGPIPE, &previous, nullptr);
    process.Terminate();
}

TEST_F(ProcessTest, WritingToAChildThatHasEndedRaisesBrokenPipeInTheCaller)
{
    int status = VarnixTest::RunInChild(
        [] {
            ::signal(SIGPIPE, SIG_DFL);
            Process process;
            process.Start("echo $$");
            pid_t child = ReadPid(process);
            if (::waitpid(child, nullptr, 0) != child) {
                return 30;
            }
            char byte = 'x';
            process.WriteStdIn(&byte, 1);
            return 31;
        },
        Limit);
    EXPECT_TRUE(WIFSIGNALED(status)) << status;
    EXPECT_EQ(WTERMSIG(status), SIGPIPE);
}

TEST(ProcessWithoutRuntime, ConstructionFailsWithoutAnApplicationDomain)
{
    try {
        Process process;
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
}

TEST(ProcessWithoutRuntime, ConstructionFailsWithoutALogManager)
{
    Zon::Host::RuntimeOptions options;
    options.createLogManager = false;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    Zon::Host::Runtime runtime(options);
    try {
        Process process;
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(),
                     "AppDomain Singleton instance of type 'Zon.System.Commons.Diagnostics.Logging.LogManager' was not created yet!");
    }
}

TEST_F(ProcessTest, NothingIsWrittenToTheLog)
{
    Process process;
    process.Start("exit 2");
    process.Terminate();
    process.Kill();
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST_F(ProcessTest, StartingInTheCurrentDirectoryKeepsNoMemory)
{
#if defined(VARNIX_TEST_LEAK_CHECK)
    // The directory's buffer from get_current_dir_name is freed in the call: a leak check right
    // after a hundred starts finds nothing.
    for (int i = 0; i < 100; ++i) {
        Process process;
        process.Start("exit 0");
        EXPECT_EQ(process.Terminate(), 0);
    }
    EXPECT_EQ(__lsan_do_recoverable_leak_check(), 0);
#else
    GTEST_SKIP() << "needs the leak checker of the sanitized build (scripts/test --sanitize); valgrind's memcheck "
                    "(scripts/test --valgrind) checks the same";
#endif
}
