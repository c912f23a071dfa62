#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "VarnixBase/Core/Os/Threading/ThreadPool.hpp"
#include "Zon/Exception.hpp"
#include "Zon/Host/Runtime.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogSink.hpp"
#include "support/HostFixture.hpp"
#include "support/ProcessProbe.hpp"

using VarnixBase::Core::Os::Threading::MAX_THREADS;
using VarnixBase::Core::Os::Threading::ThreadPool;
using Zon::System::Commons::Diagnostics::Logging::LogLevel;
using Zon::System::Commons::Threading::ThreadSettings;

namespace {

constexpr auto Limit = std::chrono::seconds(60);

/// A gate that jobs wait at until the test opens it.
class Gate {
public:
    void Open()
    {
        std::lock_guard<std::mutex> lock(mutex);
        open = true;
        condition.notify_all();
    }
    bool Wait()
    {
        std::unique_lock<std::mutex> lock(mutex);
        return condition.wait_for(lock, Limit, [&] { return open; });
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    bool open = false;
};

/// Counts arrivals; `ArriveAndWait` returns once `expected` have arrived (or the limit passed).
class Meeting {
public:
    explicit Meeting(int expected) : expected(expected) {}
    bool ArriveAndWait()
    {
        std::unique_lock<std::mutex> lock(mutex);
        ++arrived;
        condition.notify_all();
        return condition.wait_for(lock, Limit, [&] { return arrived >= expected; });
    }

private:
    std::mutex mutex;
    std::condition_variable condition;
    int expected;
    int arrived = 0;
};

pid_t OwnThreadId()
{
    return static_cast<pid_t>(::syscall(SYS_gettid));
}

std::string OwnThreadName()
{
    char buffer[32] = {};
    pthread_getname_np(pthread_self(), buffer, sizeof(buffer));
    return buffer;
}

} // namespace

class ThreadPoolTest : public VarnixTest::HostTest {
protected:
    /// True once some pool's destructor has set its stop mark and begun to join its workers.
    bool WaitForJoining(const char* name = "worker")
    {
        std::string message = std::string("Joining thread '") + name + "'";
        return VarnixTest::WaitUntil([&] { return Capture().Count(LogLevel::Trace, message) > 0; }, Limit);
    }
};

TEST_F(ThreadPoolTest, TheDefaultPoolHasOneWorker)
{
    ThreadPool pool;
    EXPECT_EQ(pool.GetThreadCount(), 1u);
}

TEST_F(ThreadPoolTest, APoolWithoutWorkersHasNoneAndItsDestructorReturnsAtOnce)
{
    VarnixTest::ThreadCensus threads;
    auto pool = std::make_unique<ThreadPool>(0, 0, 0, 0);
    EXPECT_EQ(pool->GetThreadCount(), 0u);
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
    pool.reset();
    EXPECT_EQ(Capture().CountContaining(LogLevel::Trace, "Joining"), 0u);
}

TEST_F(ThreadPoolTest, JobsQueuedOnAPoolWithoutWorkersNeverRun)
{
    auto token = std::make_shared<int>(1);
    std::weak_ptr<int> watch = token;
    bool ran = false;
    {
        ThreadPool pool(0, 0, 0, 0);
        pool.Enqueue([&ran, token] { ran = true; });
        token.reset();
        EXPECT_FALSE(watch.expired());
    }
    EXPECT_FALSE(ran);
    EXPECT_TRUE(watch.expired());
}

TEST(ThreadPoolWithoutRuntime, APoolWithoutWorkersNeedsNoDomain)
{
    ThreadPool pool(0, 0, 0, 0);
    EXPECT_EQ(pool.GetThreadCount(), 0u);
}

TEST(ThreadPoolWithoutRuntime, AWorkerCannotBeCreatedWithoutADomain)
{
    try {
        ThreadPool pool;
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(), "Singleton instance of type 'Zon.AppDomain' was not created yet!");
    }
}

TEST(ThreadPoolWithoutRuntime, AWorkerCannotBeCreatedWithoutALogManager)
{
    Zon::Host::RuntimeOptions options;
    options.createLogManager = false;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    Zon::Host::Runtime runtime(options);
    try {
        ThreadPool pool(2, 0, 0, 0);
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_STREQ(error.what(),
                     "AppDomain Singleton instance of type 'Zon.System.Commons.Diagnostics.Logging.LogManager' was not created yet!");
    }
}

TEST(ThreadPoolWithoutRuntime, ACountBeyondWhatTheListHoldsRaisesTheLengthError)
{
    try {
        ThreadPool pool(std::numeric_limits<std::size_t>::max(), 0, 0, 0);
        FAIL() << "no exception";
    } catch (const std::length_error& error) {
        EXPECT_STREQ(error.what(), "vector::reserve");
    }
}

TEST_F(ThreadPoolTest, MaxThreadsIsTheHardwareConcurrencyAndThePoolDoesNotClampToIt)
{
    EXPECT_EQ(MAX_THREADS, static_cast<std::size_t>(std::thread::hardware_concurrency()));
    ThreadPool pool(MAX_THREADS + 2, 0, 0, 0);
    EXPECT_EQ(pool.GetThreadCount(), MAX_THREADS + 2);
}

TEST_F(ThreadPoolTest, AJobThatThrowsDoesNotEndItsWorker)
{
    std::atomic<pid_t> throwingWorker{0};
    std::atomic<pid_t> nextWorker{0};
    std::atomic<bool> done{false};
    {
        ThreadPool pool;
        pool.Enqueue([&] {
            throwingWorker = OwnThreadId();
            throw std::runtime_error("job failed");
        });
        pool.Enqueue([&] { throw 17; });
        pool.Enqueue([&] {
            nextWorker = OwnThreadId();
            done = true;
        });
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return done.load(); }, Limit));
    }
    EXPECT_NE(throwingWorker.load(), 0);
    EXPECT_EQ(nextWorker.load(), throwingWorker.load());
    EXPECT_EQ(Capture().GetEntries(LogLevel::Error).size(), 0u);
}

TEST_F(ThreadPoolTest, AnEmptyJobIsDroppedAndTheNextJobRuns)
{
    std::atomic<bool> done{false};
    ThreadPool pool;
    pool.Enqueue(ThreadPool::Job());
    pool.Enqueue([&] { done = true; });
    EXPECT_TRUE(VarnixTest::WaitUntil([&] { return done.load(); }, Limit));
}

TEST_F(ThreadPoolTest, OneWorkerRunsTheJobsInTheOrderTheyWereQueued)
{
    std::vector<int> order;
    std::atomic<bool> done{false};
    {
        ThreadPool pool;
        for (int i = 0; i < 100; ++i) {
            pool.Enqueue([&order, i] { order.push_back(i); });
        }
        pool.Enqueue([&] { done = true; });
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return done.load(); }, Limit));
    }
    ASSERT_EQ(order.size(), 100u);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(order[i], i);
    }
}

TEST_F(ThreadPoolTest, SeveralWorkersRunEveryJob)
{
    std::atomic<int> count{0};
    ThreadPool pool(4, 0, 0, 0);
    for (int i = 0; i < 1000; ++i) {
        pool.Enqueue([&] { ++count; });
    }
    EXPECT_TRUE(VarnixTest::WaitUntil([&] { return count.load() == 1000; }, Limit));
}

TEST_F(ThreadPoolTest, AJobMayQueueAnotherJob)
{
    std::atomic<bool> inner{false};
    ThreadPool pool;
    pool.Enqueue([&] { pool.Enqueue([&] { inner = true; }); });
    EXPECT_TRUE(VarnixTest::WaitUntil([&] { return inner.load(); }, Limit));
}

TEST_F(ThreadPoolTest, AllWorkersBearTheNameWorker)
{
    constexpr int count = 3;
    Meeting meeting(count);
    std::mutex mutex;
    std::vector<std::string> names;
    std::set<pid_t> workers;
    std::atomic<int> met{0};
    {
        ThreadPool pool(count, 0, 0, 0);
        for (int i = 0; i < count; ++i) {
            pool.Enqueue([&] {
                {
                    std::lock_guard<std::mutex> lock(mutex);
                    names.push_back(OwnThreadName());
                    workers.insert(OwnThreadId());
                }
                // Each job keeps its worker until all have arrived, so every worker takes one.
                if (meeting.ArriveAndWait()) {
                    ++met;
                }
            });
        }
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return met.load() == count; }, Limit));
    }
    EXPECT_EQ(workers.size(), static_cast<std::size_t>(count));
    ASSERT_EQ(names.size(), static_cast<std::size_t>(count));
    for (const std::string& name : names) {
        EXPECT_EQ(name, "worker");
    }
}

TEST_F(ThreadPoolTest, EveryWorkerGetsTheSameSettings)
{
    constexpr int count = 2;
    Meeting meeting(count);
    std::mutex mutex;
    std::vector<std::string> names;
    std::vector<std::size_t> stackSizes;
    std::atomic<int> met{0};
    {
        ThreadPool pool(count, ThreadSettings("acquire", 0, 0, 2u * 1024u * 1024u));
        for (int i = 0; i < count; ++i) {
            pool.Enqueue([&] {
                std::size_t size = 0;
                pthread_attr_t attributes;
                if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
                    pthread_attr_getstacksize(&attributes, &size);
                    pthread_attr_destroy(&attributes);
                }
                {
                    std::lock_guard<std::mutex> lock(mutex);
                    names.push_back(OwnThreadName());
                    stackSizes.push_back(size);
                }
                if (meeting.ArriveAndWait()) {
                    ++met;
                }
            });
        }
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return met.load() == count; }, Limit));
    }
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0], "acquire");
    EXPECT_EQ(names[1], "acquire");
    EXPECT_GE(stackSizes[0], 2u * 1024u * 1024u);
    EXPECT_GE(stackSizes[1], 2u * 1024u * 1024u);
}

TEST_F(ThreadPoolTest, AWorkerThatCannotBeStartedFailsTheConstruction)
{
    if (::sysconf(_SC_NPROCESSORS_CONF) >= 64) {
        GTEST_SKIP() << "this machine has a processor 63";
    }
    VarnixTest::ThreadCensus threads;
    EXPECT_THROW(ThreadPool(3, ThreadSettings("worker", 0, std::uint64_t{1} << 63, 0)), Zon::Exception);
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
}

TEST_F(ThreadPoolTest, JobsStillQueuedWhenTheDestructorRunsAreDestroyedWithoutRunning)
{
    Gate gate;
    std::atomic<bool> busy{false};
    std::atomic<bool> queuedJobRan{false};
    auto token = std::make_shared<int>(5);
    std::weak_ptr<int> watch = token;

    auto pool = std::make_unique<ThreadPool>();
    pool->Enqueue([&] {
        busy = true;
        gate.Wait();
    });
    pool->Enqueue([&queuedJobRan, token] { queuedJobRan = true; });
    token.reset();
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return busy.load(); }, Limit));

    std::thread destroyer([&] { pool.reset(); });
    // The destructor has set its stop mark once it begins to join.
    bool joining = WaitForJoining();
    EXPECT_FALSE(watch.expired());
    gate.Open();
    destroyer.join();
    EXPECT_TRUE(joining);
    EXPECT_FALSE(queuedJobRan.load());
    EXPECT_TRUE(watch.expired());
}

TEST_F(ThreadPoolTest, AJobRunningWhenTheDestructorStartsRunsToItsEnd)
{
    Gate gate;
    std::atomic<bool> busy{false};
    std::atomic<bool> jobFinished{false};
    std::atomic<bool> destructorReturned{false};
    bool finishedWhenDestructorReturned = false;

    auto pool = std::make_unique<ThreadPool>(2, 0, 0, 0);
    pool->Enqueue([&] {
        busy = true;
        gate.Wait();
        jobFinished = true;
    });
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return busy.load(); }, Limit));

    std::thread destroyer([&] {
        pool.reset();
        finishedWhenDestructorReturned = jobFinished.load();
        destructorReturned = true;
    });
    bool joining = WaitForJoining();
    EXPECT_FALSE(destructorReturned.load());
    gate.Open();
    destroyer.join();
    EXPECT_TRUE(joining);
    EXPECT_TRUE(finishedWhenDestructorReturned);
}

TEST_F(ThreadPoolTest, GetThreadCountDoesNotFallWhenAThreadEnds)
{
    std::atomic<pid_t> endedWorker{0};
    std::atomic<bool> laterJobRan{false};
    ThreadPool pool(2, 0, 0, 0);
    pool.Enqueue([&] {
        endedWorker = OwnThreadId();
        pthread_exit(nullptr);
    });
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return endedWorker.load() != 0; }, Limit));
    std::string task = "/proc/self/task/" + std::to_string(endedWorker.load());
    ASSERT_TRUE(VarnixTest::WaitUntil([&] { return ::access(task.c_str(), F_OK) != 0; }, Limit));
    EXPECT_EQ(pool.GetThreadCount(), 2u);
    pool.Enqueue([&] { laterJobRan = true; });
    EXPECT_TRUE(VarnixTest::WaitUntil([&] { return laterJobRan.load(); }, Limit));
    EXPECT_EQ(pool.GetThreadCount(), 2u);
}

TEST_F(ThreadPoolTest, TheDestructorLeavesNoWorkerBehind)
{
    VarnixTest::ThreadCensus threads;
    {
        ThreadPool pool(3, 0, 0, 0);
        std::atomic<int> count{0};
        for (int i = 0; i < 10; ++i) {
            pool.Enqueue([&] { ++count; });
        }
        ASSERT_TRUE(VarnixTest::WaitUntil([&] { return count.load() == 10; }, Limit));
        EXPECT_EQ(threads.NewThreads().size(), 3u);
    }
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Joining thread 'worker'"), 3u);
}

// A worker that has just tested the stop mark and not yet begun to wait must not miss the
// destructor's wake-up: the destructor sets the mark and wakes the workers under the pool's mutex.
// A missed wake-up leaves the destructor joining for ever, which CTest's time limit turns into a
// failure of these tests.
TEST_F(ThreadPoolTest, ThousandPoolsDestroyedRightAfterConstructionAllEnd)
{
    VarnixTest::ThreadCensus threads;
    for (int i = 0; i < 1000; ++i) {
        ThreadPool pool(2, 0, 0, 0);
    }
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
    EXPECT_EQ(Capture().Count(LogLevel::Trace, "Joining thread 'worker'"), 2000u);
}

TEST_F(ThreadPoolTest, ThreeHundredPoolsDestroyedWithAJobInFlightAllEndAfterTheirJob)
{
    VarnixTest::ThreadCensus threads;
    int finished = 0;
    for (int i = 0; i < 300; ++i) {
        std::atomic<bool> started{false};
        std::atomic<bool> done{false};
        {
            ThreadPool pool(2, 0, 0, 0);
            pool.Enqueue([&] {
                started = true;
                std::this_thread::sleep_for(std::chrono::microseconds(200));
                done = true;
            });
            ASSERT_TRUE(VarnixTest::WaitUntil([&] { return started.load(); }, Limit));
        }
        finished += done.load() ? 1 : 0;
    }
    EXPECT_EQ(finished, 300);
    EXPECT_EQ(threads.NewThreads(), std::set<pid_t>{});
}
