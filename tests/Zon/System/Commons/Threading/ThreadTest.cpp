#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Zon/Host/Runtime.hpp"
#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"
#include "Zon/System/Commons/Threading/Thread.hpp"
#include "support/HostFixture.hpp"
#include "support/ProcessProbe.hpp"

using Zon::System::Commons::ArgumentException;
using Zon::System::Commons::InvalidOperationException;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;
using Zon::System::Commons::Threading::Thread;
using Zon::System::Commons::Threading::ThreadSettings;

namespace {

/// A pipe that nobody writes to: reading it blocks in a cancellation point.
class SilentPipe {
public:
    SilentPipe()
    {
        if (::pipe(ends) != 0) {
            throw std::runtime_error("pipe");
        }
    }
    ~SilentPipe()
    {
        ::close(ends[0]);
        ::close(ends[1]);
    }
    void BlockOnRead() const
    {
        char byte = 0;
        [[maybe_unused]] ssize_t count = ::read(ends[0], &byte, 1);
    }

private:
    int ends[2];
};

/// Records what a thread saw of itself.
struct Probe {
    void Record(void* argument)
    {
        receivedArgument = argument;
        char buffer[32] = {};
        pthread_getname_np(pthread_self(), buffer, sizeof(buffer));
        name = buffer;
        pthread_attr_t attributes;
        if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
            pthread_attr_getstacksize(&attributes, &stackSize);
            pthread_attr_destroy(&attributes);
        }
        cpu_set_t processors;
        CPU_ZERO(&processors);
        if (pthread_getaffinity_np(pthread_self(), sizeof(processors), &processors) == 0) {
            for (int processor = 0; processor < 64; ++processor) {
                if (CPU_ISSET(processor, &processors)) {
                    affinity |= std::uint64_t{1} << processor;
                }
            }
        }
        sched_param parameter{};
        pthread_getschedparam(pthread_self(), &policy, &parameter);
        priority = parameter.sched_priority;
        ++calls;
    }

    void BlockUntilEnded(void* argument)
    {
        struct Unwound {
            std::atomic<bool>& flag;
            ~Unwound() { flag = true; }
        } unwound{stackUnwound};
        entered = true;
        static_cast<SilentPipe*>(argument)->BlockOnRead();
        returnedNormally = true;
    }

    void CatchAllAroundBlocking(void* argument)
    {
        entered = true;
        try {
            static_cast<SilentPipe*>(argument)->BlockOnRead();
        } catch (...) {
            sawForcedUnwinding = Thread::IsForcedUnwinding();
            throw;
        }
    }

    void Throw(void*) { throw std::runtime_error("pump failed"); }
    void ThrowInteger(void*) { throw 42; }

    void SpinAsynchronouslyCancelable(void*)
    {
        Thread::SetAsynchronousCancelability(true);
        entered = true;
        while (!release.load(std::memory_order_relaxed)) {
        }
        returnedNormally = true;
    }

    std::atomic<int> calls{0};
    void* receivedArgument = nullptr;
    std::string name;
    std::size_t stackSize = 0;
    std::uint64_t affinity = 0;
    int policy = -1;
    int priority = -1;
    std::atomic<bool> entered{false};
    std::atomic<bool> stackUnwound{false};
    std::atomic<bool> returnedNormally{false};
    std::atomic<bool> sawForcedUnwinding{false};
    std::atomic<bool> release{false};
};

/// Processors this process may run on, as a mask of the first 64.
std::uint64_t AllowedProcessors()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    sched_getaffinity(0, sizeof(processors), &processors);
    std::uint64_t mask = 0;
    for (int processor = 0; processor < 64; ++processor) {
        if (CPU_ISSET(processor, &processors)) {
            mask |= std::uint64_t{1} << processor;
        }
    }
    return mask;
}

bool WaitFor(const std::atomic<bool>& flag)
{
    for (int i = 0; i < 6000 && !flag.load(); ++i) {
        ::usleep(5000);
    }
    return flag.load();
}

} // namespace

class ThreadTest : public VarnixTest::HostTest {};

TEST_F(ThreadTest, RunsTheMethodDelegateWithItsArgument)
{
    Probe probe;
    int token = 7;
    Thread thread(&probe, &Probe::Record, &token);
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.calls.load(), 1);
    EXPECT_EQ(probe.receivedArgument, &token);
}

TEST_F(ThreadTest, RunsADelegateMadeWithMakeDelegate)
{
    Probe probe;
    Thread thread(Zon::make_delegate(&probe, &Probe::Record), nullptr);
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.calls.load(), 1);
    EXPECT_EQ(probe.receivedArgument, nullptr);
}

TEST_F(ThreadTest, NothingRunsBeforeStart)
{
    Probe probe;
    {
        Thread thread(&probe, &Probe::Record, nullptr);
        thread.CreateThreadInternal(ThreadSettings("idle", 0, 0, 0));
        EXPECT_FALSE(thread.IsJoinable());
    }
    EXPECT_EQ(probe.calls.load(), 0);
}

TEST_F(ThreadTest, TheThreadBearsTheNameOfItsSettings)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("worker", 0, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.name, "worker");
    EXPECT_EQ(thread.GetSettings().name, "worker");
}

TEST_F(ThreadTest, ALongNameIsCutToFifteenBytes)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("AcquisitionWorkerNumberOne", 0, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.name, "AcquisitionWork");
    EXPECT_EQ(thread.GetSettings().name, "AcquisitionWorkerNumberOne");
}

TEST_F(ThreadTest, ZeroSettingsGiveTheDefaults)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("plain", 0, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.policy, SCHED_OTHER);
    EXPECT_EQ(probe.affinity, AllowedProcessors());
    EXPECT_GT(probe.stackSize, 0u);
}

TEST_F(ThreadTest, TheStackSizeOfTheSettingsIsHonoured)
{
    Probe plain;
    Thread first(&plain, &Probe::Record, nullptr);
    first.Start();
    first.Join();
    // More than the default, so that the thread cannot have been given a default stack.
    const std::uint64_t requested = plain.stackSize + 4u * 1024u * 1024u;
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("stack", 0, 0, requested));
    thread.Start();
    thread.Join();
    EXPECT_GE(probe.stackSize, requested);
}

TEST_F(ThreadTest, AStackSizeBelowTheMinimumIsRefused)
{
    Thread thread(Thread::Delegate([](void*) {}), nullptr);
    try {
        thread.CreateThreadInternal(ThreadSettings("tiny", 0, 0, 16));
        FAIL() << "no exception";
    } catch (const ArgumentException& error) {
        EXPECT_EQ(std::string(error.what()),
                  "Stack size 16 of thread 'tiny' is below the minimum of " + std::to_string(PTHREAD_STACK_MIN) +
                      " bytes.");
    }
    EXPECT_EQ(thread.GetSettings().name, "");
}

TEST_F(ThreadTest, AProcessorMaskKeepsTheThreadOnThoseProcessors)
{
    std::uint64_t allowed = AllowedProcessors();
    ASSERT_NE(allowed, 0u);
    std::uint64_t first = allowed & (~allowed + 1);
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("pinned", 0, first, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.affinity, first);
}

TEST_F(ThreadTest, AMaskWithoutAUsableProcessorMakesStartFail)
{
    if (::sysconf(_SC_NPROCESSORS_CONF) >= 64) {
        GTEST_SKIP() << "this machine has a processor 63";
    }
    const std::uint64_t unusable = std::uint64_t{1} << 63; // a processor that does not exist
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("nowhere", 0, unusable, 0));
    EXPECT_THROW(thread.Start(), Zon::Exception);
    EXPECT_FALSE(thread.IsJoinable());
    EXPECT_EQ(probe.calls.load(), 0);
}

TEST_F(ThreadTest, APriorityIsGrantedOrAWarningSaysItWasNot)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("urgent", 10, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(probe.calls.load(), 1);
    std::size_t warnings = Capture().CountContaining(LogLevel::Warning, "Thread 'urgent' runs without its real-time priority 10");
    if (warnings == 0) {
        EXPECT_EQ(probe.policy, SCHED_FIFO);
        EXPECT_EQ(probe.priority, 10);
    } else {
        EXPECT_EQ(warnings, 1u);
        EXPECT_EQ(probe.policy, SCHED_OTHER);
    }
}

TEST_F(ThreadTest, IsJoinableFromStartUntilJoin)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    EXPECT_FALSE(thread.IsJoinable());
    thread.Start();
    EXPECT_TRUE(thread.IsJoinable());
    thread.Join();
    EXPECT_FALSE(thread.IsJoinable());
}

TEST_F(ThreadTest, JoinOfAThreadThatIsNotJoinableThrows)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    EXPECT_THROW(thread.Join(), InvalidOperationException);
    thread.Start();
    thread.Join();
    EXPECT_THROW(thread.Join(), InvalidOperationException);
}

TEST_F(ThreadTest, StartingTwiceOrChangingSettingsAfterStartThrows)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("once", 0, 0, 0));
    thread.Start();
    try {
        thread.Start();
        FAIL() << "no exception";
    } catch (const InvalidOperationException& error) {
        EXPECT_STREQ(error.what(), "Thread 'once' is already started.");
    }
    EXPECT_THROW(thread.CreateThreadInternal(ThreadSettings("twice", 0, 0, 0)), InvalidOperationException);
    thread.Join();
    EXPECT_EQ(probe.calls.load(), 1);
}

TEST_F(ThreadTest, StartAndJoinAreTracedByTheClassLogger)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.CreateThreadInternal(ThreadSettings("traced", 0, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Thread 'traced' started"), 1u);
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Joining thread 'traced'"), 1u);
    auto entries = Capture().GetEntries(LogLevel::Trace);
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries[0].loggerName, "Zon.System.Commons.Threading.Thread");
}

TEST_F(ThreadTest, TerminateEndsAThreadBlockedInACallAndUnwindsItsStack)
{
    SilentPipe pipe;
    Probe probe;
    Thread thread(&probe, &Probe::BlockUntilEnded, &pipe);
    thread.Start();
    ASSERT_TRUE(WaitFor(probe.entered));
    thread.Terminate();
    thread.Join();
    EXPECT_TRUE(probe.stackUnwound.load());
    EXPECT_FALSE(probe.returnedNormally.load());
    EXPECT_FALSE(thread.IsJoinable());
}

TEST_F(ThreadTest, ACatchAllThatRethrowsTheUnwindingLetsTheThreadEnd)
{
    SilentPipe pipe;
    Probe probe;
    Thread thread(&probe, &Probe::CatchAllAroundBlocking, &pipe);
    thread.Start();
    ASSERT_TRUE(WaitFor(probe.entered));
    thread.Terminate();
    thread.Join();
    EXPECT_TRUE(probe.sawForcedUnwinding.load());
    EXPECT_EQ(Capture().GetEntries(LogLevel::Error).size(), 0u);
}

TEST_F(ThreadTest, AnOrdinaryExceptionIsNoForcedUnwinding)
{
    bool forced = true;
    try {
        throw std::runtime_error("x");
    } catch (...) {
        forced = Thread::IsForcedUnwinding();
    }
    EXPECT_FALSE(forced);
    try {
        throw 3;
    } catch (...) {
        forced = Thread::IsForcedUnwinding();
    }
    EXPECT_FALSE(forced);
}

TEST_F(ThreadTest, TerminateDoesNothingForAThreadNotStartedOrJoined)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    EXPECT_NO_THROW(thread.Terminate());
    thread.Start();
    thread.Join();
    EXPECT_NO_THROW(thread.Terminate());
    EXPECT_EQ(probe.calls.load(), 1);
}

TEST_F(ThreadTest, TerminateOfAThreadThatHasEndedLeavesItJoinable)
{
    Probe probe;
    Thread thread(&probe, &Probe::Record, nullptr);
    thread.Start();
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return probe.calls.load() == 1; }, std::chrono::seconds(30)));
    thread.Terminate();
    EXPECT_TRUE(thread.IsJoinable());
    thread.Join();
    EXPECT_EQ(probe.calls.load(), 1);
}

TEST_F(ThreadTest, TheDestructorEndsAndJoinsAThreadThatStillRuns)
{
    SilentPipe pipe;
    Probe probe;
    VarnixTest::ThreadCensus threads;
    {
        Thread thread(&probe, &Probe::BlockUntilEnded, &pipe);
        thread.Start();
        ASSERT_TRUE(WaitFor(probe.entered));
        // The census sees the running thread, so one that outlived its object would fail below.
        EXPECT_EQ(threads.NewThreads().size(), 1u);
    }
    EXPECT_TRUE(probe.stackUnwound.load());
    EXPECT_FALSE(probe.returnedNormally.load());
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
}

TEST_F(ThreadTest, TheDestructorJoinsAThreadThatHasEnded)
{
    Probe probe;
    VarnixTest::ThreadCensus threads;
    {
        Thread thread(&probe, &Probe::Record, nullptr);
        thread.Start();
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return probe.calls.load() == 1; }, std::chrono::seconds(30)));
    }
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
}

TEST_F(ThreadTest, AnExceptionLeavingTheDelegateIsLoggedAndEndsOnlyTheThread)
{
    Probe probe;
    Thread thread(&probe, &Probe::Throw, nullptr);
    thread.CreateThreadInternal(ThreadSettings("pump", 0, 0, 0));
    thread.Start();
    thread.Join();
    EXPECT_EQ(Capture().Count(LogLevel::Error, "Thread 'pump' ended by an exception: pump failed"), 1u);

    Thread other(&probe, &Probe::ThrowInteger, nullptr);
    other.CreateThreadInternal(ThreadSettings("odd", 0, 0, 0));
    other.Start();
    other.Join();
    EXPECT_EQ(Capture().Count(LogLevel::Error, "Thread 'odd' ended by an exception of unknown type"), 1u);
}

TEST_F(ThreadTest, SetAsynchronousCancelabilitySwitchesOnlyTheCallingThread)
{
    int typeAfterTrue = -1;
    int typeAfterFalse = -1;
    int typeOfNewThread = -1;
    Thread thread(Thread::Delegate([&](void*) {
                      Thread::SetAsynchronousCancelability(true);
                      int type = 0;
                      pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
                      typeAfterTrue = type;
                      Thread::SetAsynchronousCancelability(true);
                      Thread::SetAsynchronousCancelability(false);
                      pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
                      typeAfterFalse = type;
                      Thread::SetAsynchronousCancelability(true);
                  }),
                  nullptr);
    thread.Start();
    thread.Join();
    Thread fresh(Thread::Delegate([&](void*) {
                     int type = 0;
                     pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &type);
                     typeOfNewThread = type;
                 }),
                 nullptr);
    fresh.Start();
    fresh.Join();
    EXPECT_EQ(typeAfterTrue, PTHREAD_CANCEL_ASYNCHRONOUS);
    EXPECT_EQ(typeAfterFalse, PTHREAD_CANCEL_DEFERRED);
    EXPECT_EQ(typeOfNewThread, PTHREAD_CANCEL_DEFERRED);
    int own = 0;
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &own);
    EXPECT_EQ(own, PTHREAD_CANCEL_DEFERRED);
}

TEST_F(ThreadTest, AnAsynchronouslyCancelableThreadEndsWithoutACancellationPoint)
{
    Probe probe;
    Thread thread(&probe, &Probe::SpinAsynchronouslyCancelable, nullptr);
    thread.Start();
    ASSERT_TRUE(WaitFor(probe.entered));
    thread.Terminate();
    thread.Join();
    EXPECT_FALSE(probe.returnedNormally.load());
}

TEST(ThreadWithoutRuntime, ConstructionFailsWithoutAnApplicationDomain)
{
    try {
        Thread thread(Thread::Delegate([](void*) {}), nullptr);
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
}

TEST(ThreadWithoutRuntime, ConstructionFailsWithoutALogManager)
{
    Zon::Host::RuntimeOptions options;
    options.createLogManager = false;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    Zon::Host::Runtime runtime(options);
    try {
        Thread thread(Thread::Delegate([](void*) {}), nullptr);
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(),
                     "AppDomain Singleton instance of type 'Zon.System.Commons.Diagnostics.Logging.LogManager' was not created yet!");
    }
}
