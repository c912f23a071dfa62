#include "VarnixBase/Core/Os/Threading/ThreadPool.hpp"

#include <thread>
#include <utility>

namespace VarnixBase::Core::Os::Threading {

using Zon::System::Commons::Threading::Thread;
using Zon::System::Commons::Threading::ThreadSettings;

std::size_t MAX_THREADS = std::thread::hardware_concurrency();

ThreadPool::ThreadPool() : ThreadPool(1, 0, 0, 0)
{
}

ThreadPool::ThreadPool(std::size_t threadCount, std::size_t priority, std::size_t cpuAffinity, std::size_t stackSize)
    : ThreadPool(threadCount, ThreadSettings("worker", priority, cpuAffinity, stackSize))
{
}

ThreadPool::ThreadPool(std::size_t threadCount, const ThreadSettings& settings)
{
    threads.reserve(threadCount);
    try {
        for (std::size_t i = 0; i < threadCount; ++i) {
            auto thread = std::make_shared<Thread>(this, &ThreadPool::ThreadWorker, nullptr);
            thread->CreateThreadInternal(settings);
            thread->Start();
            threads.push_back(std::move(thread));
        }
    } catch (...) {
        // The condition variable the running workers wait on goes before the thread list does.
        // Their Thread objects must end and join them while it still exists.
        threads.clear();
        throw;
    }
}

ThreadPool::~ThreadPool()
{
    {
        // Under the mutex: a worker is either before its test of `stop`, and sees it, or waiting,
        // and is woken. Without it, a worker between its test and its wait misses the wake-up and
        // the join below waits for ever.
        std::lock_guard<std::mutex> lock(jobsMutex);
        stop.store(true, std::memory_order_relaxed);
        jobsCondition.notify_all();
    }
    for (const auto& thread : threads) {
        if (thread->IsJoinable()) {
            thread->Join();
        }
    }
}

void ThreadPool::Enqueue(Job job)
{
    {
        std::lock_guard<std::mutex> lock(jobsMutex);
        jobs.push_back(std::move(job));
    }
    jobsCondition.notify_one();
}

std::size_t ThreadPool::GetThreadCount() const
{
    return threads.size();
}

void ThreadPool::ThreadWorker(void*)
{
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(jobsMutex);
            while (jobs.empty() && !stop.load(std::memory_order_relaxed)) {
                jobsCondition.wait(lock);
            }
            if (stop.load(std::memory_order_relaxed)) {
                return;
            }
            job = std::move(jobs.front());
            jobs.pop_front();
        }
        try {
            job();
        } catch (...) {
            // A worker that is being ended unwinds through here and must go on unwinding.
            if (Thread::IsForcedUnwinding()) {
                throw;
            }
        }
    }
}

} // namespace VarnixBase::Core::Os::Threading
