#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Zon/System/Commons/Threading/Thread.hpp"
#include "Zon/System/Commons/Threading/ThreadSettings.hpp"

namespace VarnixBase::Core::Os::Threading {

/// The number of hardware threads of the machine, set once when the library is loaded. Callers may
/// size a pool with it; the pool itself never reads it.
extern std::size_t MAX_THREADS;

/// A fixed set of worker threads that take jobs from one shared first-in-first-out queue. A job is
/// a function without arguments or result; a worker runs one job at a time, without the queue's
/// lock. There is no growth, no priority between jobs, no result and no waiting for idle.
///
/// Jobs and failures: whatever a job throws is dropped, and the worker goes on with the next job.
///
/// Ending: the destructor sets the stop mark, wakes all workers and joins them in order of
/// creation. A worker that is running a job finishes it first, so the destructor blocks for as long
/// as a job runs. Jobs still queued are not run: they are destroyed with the queue, and what they
/// captured is released then. The mark is set and the workers are woken without the queue's lock,
/// so a worker that has just found the queue empty and is about to wait can miss the wake-up.
class ThreadPool {
public:
    using Job = std::function<void()>;

    /// One worker, as `ThreadPool(1, 0, 0, 0)`.
    ThreadPool();

    /// `threadCount` workers with the settings "worker" and the three numbers in this order
    /// (priority, processor mask, stack size; see `ThreadSettings`).
    ThreadPool(std::size_t threadCount, std::size_t priority, std::size_t cpuAffinity, std::size_t stackSize);

    /// `threadCount` workers, all with the same settings (and so the same name). Each worker is
    /// started before the next one is created. A count of 0 makes a pool whose jobs never run.
    /// Creating a worker needs the application domain with its log manager (see `Thread`); a
    /// failure to create or start one reaches the caller, after the workers already running have
    /// been ended and joined by their `Thread` objects.
    ThreadPool(std::size_t threadCount, const Zon::System::Commons::Threading::ThreadSettings& settings);

    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Appends a job at the back of the queue and wakes one waiting worker.
    void Enqueue(Job job);

    /// The number of workers created, whether they still run or not.
    std::size_t GetThreadCount() const;

    /// The body of every worker; `arg` is null and ignored. Public so that a delegate can name it.
    void ThreadWorker(void* arg);

private:
    std::mutex jobsMutex;
    std::deque<Job> jobs;
    std::vector<std::shared_ptr<Zon::System::Commons::Threading::Thread>> threads;
    std::condition_variable jobsCondition;
    /// Set once, by the destructor, without the lock; read by the workers under the lock. A one-byte
    /// atomic, so that the unlocked write is well defined.
    std::atomic<bool> stop{false};
};

} // namespace VarnixBase::Core::Os::Threading
