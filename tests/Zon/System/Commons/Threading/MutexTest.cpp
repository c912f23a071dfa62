#include <atomic>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "Zon/Exception.hpp"
#include "Zon/System/Commons/Threading/Mutex.hpp"

using Zon::System::Commons::Threading::Mutex;

TEST(MutexTest, LockAndUnlockOnOneThread)
{
    Mutex mutex;
    mutex.Lock();
    mutex.Unlock();
    EXPECT_TRUE(mutex.TryLock());
    mutex.Unlock();
}

TEST(MutexTest, TryLockFailsWhileAnotherThreadHoldsIt)
{
    Mutex mutex;
    mutex.Lock();
    bool taken = true;
    std::thread other([&] { taken = mutex.TryLock(); });
    other.join();
    EXPECT_FALSE(taken);
    mutex.Unlock();
    std::thread later([&] {
        taken = mutex.TryLock();
        if (taken) {
            mutex.Unlock();
        }
    });
    later.join();
    EXPECT_TRUE(taken);
}

TEST(MutexTest, LockingAgainOnTheHoldingThreadThrowsInsteadOfDeadlocking)
{
    Mutex mutex;
    mutex.Lock();
    try {
        mutex.Lock();
        FAIL() << "no exception";
    } catch (const Zon::Exception& error) {
        EXPECT_EQ(std::string(error.what()).rfind("Mutex lock failed: ", 0), 0u) << error.what();
    }
    EXPECT_FALSE(mutex.TryLock());
    mutex.Unlock();
}

TEST(MutexTest, UnlockingWithoutHoldingItThrows)
{
    Mutex mutex;
    EXPECT_THROW(mutex.Unlock(), Zon::Exception);
    mutex.Lock();
    bool failed = false;
    std::thread other([&] {
        try {
            mutex.Unlock();
        } catch (const Zon::Exception&) {
            failed = true;
        }
    });
    other.join();
    EXPECT_TRUE(failed);
    mutex.Unlock();
}

TEST(MutexTest, GuardsACounterWithStandardLockGuards)
{
    Mutex mutex;
    long counter = 0;
    auto add = [&] {
        for (int i = 0; i < 20000; ++i) {
            std::lock_guard<Mutex> guard(mutex);
            ++counter;
        }
    };
    std::thread a(add);
    std::thread b(add);
    a.join();
    b.join();
    EXPECT_EQ(counter, 40000);
    std::unique_lock<Mutex> lock(mutex, std::try_to_lock);
    EXPECT_TRUE(lock.owns_lock());
}
