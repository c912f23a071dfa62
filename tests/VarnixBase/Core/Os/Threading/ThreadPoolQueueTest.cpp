// Handing a job to the pool: a job whose captures fit the small buffer of `std::function` (up to
// two pointers that copy trivially) is queued without a heap block of its own. The queue takes a
// block for many jobs at a time, so the count of allocations stays far below one per job.
#include <atomic>
#include <cstddef>

#include <gtest/gtest.h>

#include "VarnixBase/Core/Os/Threading/ThreadPool.hpp"
#include "support/HostFixture.hpp"
#include "support/ResourceCounter.hpp"

using VarnixBase::Core::Os::Threading::ThreadPool;

namespace {

class ThreadPoolQueueTest : public VarnixTest::HostTest {};

constexpr std::size_t JobCount = 1600;

} // namespace

TEST_F(ThreadPoolQueueTest, QueueingSmallJobsTakesNoAllocationPerJob)
{
    std::atomic<int> runs{0};
    ThreadPool pool(0, 0, 0, 0);
    std::size_t allocations = 0;
    {
        VarnixTest::ResourceCounter counter;
        for (std::size_t i = 0; i < JobCount; ++i) {
            pool.Enqueue([&runs] { ++runs; });
        }
        allocations = counter.Allocations();
    }
    // One block of the queue holds many jobs; one allocation per job would count 1600.
    EXPECT_LT(allocations, JobCount / 8);
    EXPECT_EQ(runs.load(), 0);
}

TEST_F(ThreadPoolQueueTest, AJobThatCapturesMoreThanTheSmallBufferTakesAHeapBlock)
{
    // The counterpart, so that the test above would see a per-job allocation if there were one.
    ThreadPool pool(0, 0, 0, 0);
    std::size_t allocations = 0;
    {
        VarnixTest::ResourceCounter counter;
        for (std::size_t i = 0; i < JobCount; ++i) {
            double a = 1, b = 2, c = 3;
            pool.Enqueue([a, b, c] { (void)(a + b + c); });
        }
        allocations = counter.Allocations();
    }
    EXPECT_GE(allocations, JobCount);
}
