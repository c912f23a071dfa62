#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "VarnixBase/Core/Os/Command.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "support/HostFixture.hpp"
#include "support/ProcessProbe.hpp"

using VarnixBase::Core::Os::Command;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;
using namespace std::chrono_literals;

namespace {

constexpr auto Limit = std::chrono::seconds(60);

/// Text of `size` bytes that shows where each byte belongs: "0123456789abcdefghij..." repeated.
std::string Pattern(std::size_t size)
{
    static const char digits[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        text += digits[i % (sizeof(digits) - 1)];
    }
    return text;
}

/// The message of the `std::runtime_error` that `call` throws, or "no exception".
template <class Call>
std::string RuntimeErrorOf(Call&& call)
{
    try {
        call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no exception";
}

/// Kills a process whose id a command wrote to a file, if it still runs at the end of the test.
class KillAtEnd {
public:
    ~KillAtEnd()
    {
        if (pid > 0 && VarnixTest::ProcessState(pid) != '\0' && VarnixTest::ProcessState(pid) != 'Z') {
            ::kill(pid, SIGKILL);
        }
    }
    pid_t pid = 0;
};

} // namespace

class CommandTest : public VarnixTest::HostTest {
protected:
    std::string PidFile() const { return (root.Path() / "command.pid").string(); }

    /// The process id that a command wrote to `PidFile()`, once it is there.
    pid_t WaitForPid() const
    {
        std::string line = VarnixTest::WaitForLine(PidFile(), Limit);
        return line.empty() ? 0 : static_cast<pid_t>(std::stol(line));
    }
};

TEST_F(CommandTest, ALineThatExitsWithThreeReturnsThreeWithoutThrowing)
{
    Command command;
    int result = -1;
    EXPECT_NO_THROW(result = command.Execute("exit 3"));
    EXPECT_EQ(result, 3);
}

TEST_F(CommandTest, ACommandTheShellCannotFindReturnsItsCodeAndLeavesTheOutputAsItWas)
{
    Command command;
    EXPECT_EQ(command.Execute("printf before"), 0);
    int result = command.Execute("varnix-no-such-command-here");
    EXPECT_NE(result, 0);
    EXPECT_EQ(result, 127);
    EXPECT_EQ(command.GetStdOut(), "before");
}

TEST_F(CommandTest, TwoCallsOnOneObjectLeaveTheOutputsConcatenated)
{
    Command command;
    command.Execute("printf 'first '");
    command.Execute("printf second");
    EXPECT_EQ(command.GetStdOut(), "first second");
}

TEST_F(CommandTest, OutputOfEverySizeAroundTheFortyBytePiecesArrivesWhole)
{
    for (std::size_t size : {0u, 1u, 39u, 40u, 41u, 79u, 80u, 81u, 4096u, 65537u}) {
        Command command;
        std::string expected = Pattern(size);
        EXPECT_EQ(command.Execute("printf '%s' '" + expected + "'"), 0) << size;
        EXPECT_EQ(command.GetStdOut(), expected) << size;
    }
}

TEST_F(CommandTest, SeveralMebibytesOfOutputArriveWhole)
{
    std::string expected;
    for (int i = 1; i <= 800000; ++i) {
        expected += std::to_string(i);
        expected += '\n';
    }
    ASSERT_GT(expected.size(), 5u * 1024u * 1024u);
    Command command;
    EXPECT_EQ(command.Execute("seq 1 800000"), 0);
    EXPECT_EQ(command.GetStdOut().size(), expected.size());
    EXPECT_TRUE(command.GetStdOut() == expected);
}

TEST_F(CommandTest, OutputOnStandardErrorIsNotCollected)
{
    Command command;
    EXPECT_EQ(command.Execute("printf out; printf err 1>&2; exit 2"), 2);
    EXPECT_EQ(command.GetStdOut(), "out");
}

TEST_F(CommandTest, ACommandKilledByASignalGivesZero)
{
    Command command;
    EXPECT_EQ(command.Execute("printf partial; kill -9 $$"), 0);
    EXPECT_EQ(command.GetStdOut(), "partial");
}

TEST_F(CommandTest, MoreOnStandardErrorThanAPipeHoldsBlocksExecute)
{
    KillAtEnd guard;
    Command command;
    std::atomic<bool> returned{false};
    int result = -1;
    std::thread runner([&] {
        result = command.Execute("echo $$ > '" + PidFile() + "'; exec head -c 4000000 /dev/zero 1>&2");
        returned = true;
    });
    guard.pid = WaitForPid();
    ASSERT_NE(guard.pid, 0);
    // Nobody drains standard error: the writer, and Execute with it, stay where they are.
    std::this_thread::sleep_for(300ms);
    EXPECT_FALSE(returned.load());
    char state = VarnixTest::ProcessState(guard.pid);
    EXPECT_TRUE(state != '\0' && state != 'Z') << state;
    ::kill(guard.pid, SIGKILL);
    runner.join();
    EXPECT_TRUE(returned.load());
    EXPECT_EQ(result, 0);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, ACommandThatReadsItsInputToTheEndBlocksExecute)
{
    KillAtEnd guard;
    Command command;
    std::atomic<bool> returned{false};
    int result = -1;
    std::thread runner([&] {
        result = command.Execute("echo $$ > '" + PidFile() + "'; exec cat");
        returned = true;
    });
    guard.pid = WaitForPid();
    ASSERT_NE(guard.pid, 0);
    std::this_thread::sleep_for(300ms);
    EXPECT_FALSE(returned.load());
    ::kill(guard.pid, SIGKILL);
    runner.join();
    EXPECT_TRUE(returned.load());
    EXPECT_EQ(result, 0);
}

TEST_F(CommandTest, OnlyTheTimeLimitGetsOutOfACommandThatReadsItsInput)
{
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    VarnixTest::ThreadCensus threads;
    Command command;
    EXPECT_EQ(RuntimeErrorOf([&] { command.Execute("exec cat", 500ms); }), "Timeout");
    EXPECT_FALSE(command.HasCommandThread());
    // The ended command thread closed the pipes, which ended cat, and waited for it.
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
    EXPECT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore);
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
}

TEST_F(CommandTest, ATimeLimitOfZeroReportsTimeout)
{
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    Command command;
    EXPECT_EQ(RuntimeErrorOf([&] { command.Execute("true", 0ms); }), "Timeout");
    EXPECT_FALSE(command.HasCommandThread());
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
    EXPECT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore);
}

TEST_F(CommandTest, ANegativeTimeLimitReportsTimeout)
{
    Command command;
    EXPECT_EQ(RuntimeErrorOf([&] { command.Execute("true", -5ms); }), "Timeout");
    EXPECT_EQ(RuntimeErrorOf([&] { command.Execute("true", std::chrono::milliseconds::min()); }), "Timeout");
    EXPECT_FALSE(command.HasCommandThread());
}

TEST_F(CommandTest, ACommandThatOutlastsItsLimitReportsTimeoutAndLeavesNoThread)
{
    VarnixTest::ThreadCensus threads;
    Command command;
    EXPECT_EQ(RuntimeErrorOf([&] { command.Execute("sleep 2; printf late", 200ms); }), "Timeout");
    EXPECT_FALSE(command.HasCommandThread());
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
    EXPECT_EQ(command.GetStdOut(), "");
}

TEST_F(CommandTest, CancelOnANewCommandDoesNothing)
{
    Command command;
    EXPECT_NO_THROW(command.Cancel());
    EXPECT_NO_THROW(command.Cancel());
    EXPECT_FALSE(command.HasCommandThread());
    EXPECT_EQ(command.GetStdOut(), "");
}

TEST_F(CommandTest, WithinItsLimitTheCommandGivesItsCodeAndOutput)
{
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    Command command;
    // The pause lets the caller reach its wait long before the command ends.
    EXPECT_EQ(command.Execute("sleep 1; printf hello; exit 3", 60s), 3);
    EXPECT_EQ(command.GetStdOut(), "hello");
    EXPECT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, AFinishedCommandThreadIsKeptUntilCancel)
{
    Command command;
    EXPECT_EQ(command.Execute("sleep 1; exit 4", 60s), 4);
    EXPECT_TRUE(command.HasCommandThread());
    EXPECT_EQ(command.Execute("sleep 1; exit 5", 60s), 5);
    EXPECT_TRUE(command.HasCommandThread());
    command.Cancel();
    EXPECT_FALSE(command.HasCommandThread());
    command.Cancel();
    EXPECT_FALSE(command.HasCommandThread());
}

TEST_F(CommandTest, TheLongestTimeLimitDoesNotRunOver)
{
    Command command;
    EXPECT_EQ(command.Execute("sleep 1; exit 6", std::chrono::milliseconds::max()), 6);
}

TEST_F(CommandTest, TheCommandThreadIsNamedCommand)
{
    Command command;
    EXPECT_EQ(command.Execute("sleep 1; cat /proc/$PPID/task/*/comm", 60s), 0);
    EXPECT_NE(command.GetStdOut().find("Command\n"), std::string::npos) << command.GetStdOut();
}

TEST_F(CommandTest, TheTimeLimitedExecuteLeavesItsCallerAsynchronouslyCancelable)
{
    int typeAfterwards = -1;
    int typeBefore = -1;
    std::string outcome;
    std::thread caller([&] {
        pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &typeBefore);
        Command command;
        outcome = RuntimeErrorOf([&] { command.Execute("sleep 1", 60s); });
        pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &typeAfterwards);
    });
    caller.join();
    EXPECT_EQ(outcome, "no exception");
    EXPECT_EQ(typeBefore, PTHREAD_CANCEL_DEFERRED);
    EXPECT_EQ(typeAfterwards, PTHREAD_CANCEL_ASYNCHRONOUS);
    int own = -1;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &own);
    EXPECT_EQ(own, PTHREAD_CANCEL_DEFERRED);
}

TEST_F(CommandTest, CancelFromAnotherThreadEndsTheCommandButExecuteSleepsOutItsLimit)
{
    KillAtEnd guard;
    Command command;
    std::atomic<bool> executeReturned{false};
    bool childGoneAfterCancel = false;
    bool executeReturnedAtCancel = true;
    std::thread canceller([&] {
        guard.pid = WaitForPid();
        command.Cancel();
        childGoneAfterCancel = VarnixTest::ProcessState(guard.pid) == '\0';
        executeReturnedAtCancel = executeReturned.load();
    });
    std::string outcome = RuntimeErrorOf([&] { command.Execute("echo $$ > '" + PidFile() + "'; exec cat", 10s); });
    executeReturned = true;
    canceller.join();
    EXPECT_EQ(outcome, "Timeout");
    EXPECT_NE(guard.pid, 0);
    EXPECT_TRUE(childGoneAfterCancel);
    EXPECT_FALSE(executeReturnedAtCancel);
    EXPECT_FALSE(command.HasCommandThread());
}

TEST_F(CommandTest, AFailureOnTheCommandThreadRunsIntoTheLimit)
{
    // The command thread cannot name the current directory, so its Start fails.
    std::filesystem::path gone = root.Path() / "gone";
    std::filesystem::create_directory(gone);
    Command command;
    std::string outcome;
    {
        VarnixTest::CurrentDirectory change(gone);
        std::filesystem::remove(gone);
        outcome = RuntimeErrorOf([&] { command.Execute("printf never", 1s); });
    }
    EXPECT_EQ(outcome, "Timeout");
    EXPECT_EQ(Capture().Count(LogLevel::Error,
                              "Thread 'Command' ended by an exception: basic_string: construction from null is not valid"),
              1u);
    EXPECT_EQ(command.GetStdOut(), "");
    EXPECT_FALSE(command.HasCommandThread());
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, AFailingStartPassesItsExceptionThrough)
{
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    Command command;
    command.Execute("printf kept");
    std::exception_ptr failure;
    {
        // Room for the standard-input pipe only. The exception is looked at after the limit is
        // lifted again.
        VarnixTest::DescriptorLimit limit(3);
        try {
            command.Execute("printf never");
        } catch (...) {
            failure = std::current_exception();
        }
    }
    EXPECT_EQ(RuntimeErrorOf([&] {
                  if (failure) {
                      std::rethrow_exception(failure);
                  }
              }),
              "Failed to open StdOut");
    EXPECT_EQ(command.GetStdOut(), "kept");
    EXPECT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore);
}

TEST_F(CommandTest, ACurrentDirectoryThatIsGoneRaisesALogicError)
{
    std::filesystem::path gone = root.Path() / "gone";
    std::filesystem::create_directory(gone);
    VarnixTest::CurrentDirectory change(gone);
    std::filesystem::remove(gone);
    Command command;
    EXPECT_THROW(command.Execute("true"), std::logic_error);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, TheCommandRunsInTheCurrentDirectory)
{
    VarnixTest::TempDir directory;
    VarnixTest::CurrentDirectory change(directory.Path());
    Command command;
    EXPECT_EQ(command.Execute("pwd"), 0);
    EXPECT_EQ(command.GetStdOut(), std::filesystem::canonical(directory.Path()).string() + "\n");
}

TEST_F(CommandTest, ExecuteLeavesNoDescriptorAndNoChildBehind)
{
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    Command command;
    for (int i = 0; i < 20; ++i) {
        command.Execute("printf x; printf y 1>&2");
    }
    EXPECT_EQ(command.GetStdOut(), std::string(20, 'x'));
    EXPECT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, ManyShortTimeLimitsLeaveNoDescriptorAndNoChildBehind)
{
    // Limits from 0 to 3 ms end the command thread at every stage of a start: before the pipes,
    // between them and the fork, while the parent closes the child's ends, while it reads.
    std::set<int> descriptorsBefore = VarnixTest::OpenDescriptors();
    Command command;
    int timeouts = 0;
    int completed = 0;
    for (int i = 0; i < 260; ++i) {
        const auto limit = std::chrono::microseconds(250 * (i % 13));
        try {
            command.Execute("printf x", std::chrono::duration_cast<std::chrono::milliseconds>(limit));
            ++completed;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Timeout");
            ++timeouts;
        }
        ASSERT_EQ(VarnixTest::OpenDescriptors(), descriptorsBefore) << "after run " << i;
    }
    EXPECT_EQ(timeouts + completed, 260);
    EXPECT_GT(timeouts, 0);
    EXPECT_TRUE(VarnixTest::ChildProcesses().empty());
}

TEST_F(CommandTest, NothingIsWrittenToTheCommandLog)
{
    Command command;
    command.Execute("exit 1");
    command.Cancel();
    EXPECT_EQ(Capture().Size(), 0u);
}

TEST(CommandWithoutRuntime, ConstructionFailsWithoutAnApplicationDomain)
{
    try {
        Command command;
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
}

TEST(CommandWithoutRuntime, ConstructionFailsWithoutALogManager)
{
    Zon::Host::RuntimeOptions options;
    options.createLogManager = false;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    Zon::Host::Runtime runtime(options);
    try {
        Command command;
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(),
                     "AppDomain Singleton instance of type 'Zon.System.Commons.Diagnostics.Logging.LogManager' was not created yet!");
    }
}
