// Thread pool throughput beside a plain worker pool written here, and the latency of a shell
// command beside spawning /bin/true directly.
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

#include "VarnixBase/Core/Os/Command.hpp"
#include "VarnixBase/Core/Os/Threading/ThreadPool.hpp"
#include "Zon/Host/Runtime.hpp"

extern char** environ;

namespace {

constexpr int JobsPerIteration = 1000;

std::unique_ptr<Zon::Host::Runtime> QuietRuntime()
{
    Zon::Host::RuntimeOptions options;
    options.consoleLevel.reset();
    options.captureLevel.reset();
    return std::make_unique<Zon::Host::Runtime>(options);
}

/// Counts finished jobs and wakes the producer when a batch is done.
struct Batch {
    std::mutex mutex;
    std::condition_variable done;
    int remaining = 0;

    void Finish()
    {
        std::lock_guard guard(mutex);
        if (--remaining == 0) {
            done.notify_one();
        }
    }
    void Wait()
    {
        std::unique_lock guard(mutex);
        done.wait(guard, [this] { return remaining == 0; });
    }
};

void BM_ThreadPoolJobs(benchmark::State& state)
{
    auto runtime = QuietRuntime();
    VarnixBase::Core::Os::Threading::ThreadPool pool(static_cast<std::size_t>(state.range(0)), 0, 0, 0);
    Batch batch;
    for (auto _ : state) {
        batch.remaining = JobsPerIteration;
        for (int i = 0; i < JobsPerIteration; ++i) {
            pool.Enqueue([&batch] { batch.Finish(); });
        }
        batch.Wait();
    }
    state.SetItemsProcessed(state.iterations() * JobsPerIteration);
}
BENCHMARK(BM_ThreadPoolJobs)->Arg(1)->Arg(2)->Arg(4)->UseRealTime();

/// The same job queue, written plainly: std::thread workers over a deque and a condition variable.
class PlainPool {
public:
    explicit PlainPool(int count)
    {
        for (int i = 0; i < count; ++i) {
            workers.emplace_back([this] { Work(); });
        }
    }
    ~PlainPool()
    {
        {
            std::lock_guard guard(mutex);
            stop = true;
        }
        ready.notify_all();
        for (auto& worker : workers) {
            worker.join();
        }
    }
    void Enqueue(std::function<void()> job)
    {
        {
            std::lock_guard guard(mutex);
            jobs.push_back(std::move(job));
        }
        ready.notify_one();
    }

private:
    void Work()
    {
        for (;;) {
            std::function<void()> job;
            {
                std::unique_lock guard(mutex);
                ready.wait(guard, [this] { return stop || !jobs.empty(); });
                if (stop) {
                    return;
                }
                job = std::move(jobs.front());
                jobs.pop_front();
            }
            job();
        }
    }

    std::mutex mutex;
    std::condition_variable ready;
    std::deque<std::function<void()>> jobs;
    std::vector<std::thread> workers;
    bool stop = false;
};

void BM_ThreadPoolJobs_Baseline(benchmark::State& state)
{
    PlainPool pool(static_cast<int>(state.range(0)));
    Batch batch;
    for (auto _ : state) {
        batch.remaining = JobsPerIteration;
        for (int i = 0; i < JobsPerIteration; ++i) {
            pool.Enqueue([&batch] { batch.Finish(); });
        }
        batch.Wait();
    }
    state.SetItemsProcessed(state.iterations() * JobsPerIteration);
}
BENCHMARK(BM_ThreadPoolJobs_Baseline)->Arg(1)->Arg(2)->Arg(4)->UseRealTime();

void BM_CommandTrue(benchmark::State& state)
{
    auto runtime = QuietRuntime();
    for (auto _ : state) {
        VarnixBase::Core::Os::Command command;
        benchmark::DoNotOptimize(command.Execute("true"));
    }
}
BENCHMARK(BM_CommandTrue)->UseRealTime()->Unit(benchmark::kMicrosecond);

void BM_CommandTrue_Baseline(benchmark::State& state)
{
    char program[] = "/bin/true";
    char* arguments[] = {program, nullptr};
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, program, nullptr, nullptr, arguments, environ) != 0) {
            state.SkipWithError("posix_spawn failed");
            break;
        }
        int status = 0;
        waitpid(pid, &status, 0);
        benchmark::DoNotOptimize(status);
    }
}
BENCHMARK(BM_CommandTrue_Baseline)->UseRealTime()->Unit(benchmark::kMicrosecond);

} // namespace
