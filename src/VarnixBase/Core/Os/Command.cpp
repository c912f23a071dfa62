#include "VarnixBase/Core/Os/Command.hpp"

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "VarnixBase/Core/Os/Process.hpp"
#include "Zon/CommonTypeName.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LogManager.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/LoggerBase.hpp"
#include "Zon/System/Commons/Threading/Thread.hpp"
#include "Zon/System/Commons/Threading/ThreadSettings.hpp"

namespace VarnixBase::Core::Os {

using Zon::System::Commons::Threading::Thread;
using Zon::System::Commons::Threading::ThreadSettings;

namespace {

using Clock = std::chrono::steady_clock;

/// What the command thread is given, as its `void*` argument.
struct CommandThreadRecord {
    std::condition_variable* condition = nullptr;
    /// The exit code goes here; the value starts at 0.
    int* result = nullptr;
    const std::string* command = nullptr;
};

/// The record with what it points to. It is kept beside the command thread, and released only
/// after that thread, rather than living on the stack of the waiting `Execute`: a wake-up before
/// the command has ended returns early, and the thread must then still find its record.
struct CommandThreadArgument {
    CommandThreadRecord record;
    int result = 0;
    std::string command;
};

void SetupLogger()
{
    Zon::System::Commons::Diagnostics::Logging::LogManager::GetInstance();
    static auto& logger = Zon::System::Commons::Diagnostics::Logging::GetLogger(Zon::CommonTypeName<Command>());
    static_cast<void>(logger);
}

/// `now` plus `timeout`, held at the ends of the clock's range instead of running over.
Clock::time_point Deadline(Clock::time_point now, std::chrono::milliseconds timeout)
{
    using Nanoseconds = std::chrono::nanoseconds;
    constexpr std::int64_t perMillisecond = 1000000;
    constexpr std::int64_t largest = std::numeric_limits<Nanoseconds::rep>::max() / perMillisecond;
    const std::int64_t milliseconds = timeout.count();
    const Nanoseconds span = milliseconds > largest    ? Nanoseconds::max()
                             : milliseconds < -largest ? Nanoseconds::min()
                                                       : Nanoseconds(milliseconds * perMillisecond);
    const Clock::duration since = now.time_since_epoch();
    if (span > Nanoseconds::zero() && since > Clock::duration::max() - span) {
        return Clock::time_point::max();
    }
    if (span < Nanoseconds::zero() && since < Clock::duration::min() - span) {
        return Clock::time_point::min();
    }
    return now + span;
}

/// The deadline as the absolute time that `pthread_cond_clockwait` takes (the steady clock is the
/// monotonic clock). A deadline before the clock's start is its start.
timespec ToTimespec(Clock::time_point deadline)
{
    std::int64_t nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(deadline.time_since_epoch()).count();
    if (nanoseconds < 0) {
        nanoseconds = 0;
    }
    timespec time{};
    time.tv_sec = static_cast<time_t>(nanoseconds / 1000000000);
    time.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    return time;
}

} // namespace

struct Command::Impl {
    std::condition_variable finished;
    std::mutex executeMutex;
    std::mutex threadMutex;
    /// The record of the latest command thread; declared before `thread` so that it goes after it.
    std::shared_ptr<CommandThreadArgument> argument;
    std::shared_ptr<Thread> thread;
};

Command::Command()
{
    SetupLogger();
    impl = std::make_shared<Impl>();
}

Command::~Command() = default;

int Command::Execute(const std::string& command)
{
    Process process;
    process.Start(command);
    int result = 0;
    if (process.IsRunning()) {
        char buffer[40];
        for (;;) {
            int count = process.ReadStdOut(buffer, sizeof(buffer));
            if (count <= 0) {
                break;
            }
            stdOut.append(buffer, static_cast<std::size_t>(count));
        }
        int status = process.Terminate();
        result = (status >> 8) & 0xff;
    }
    return result;
}

int Command::Execute(const std::string& command, std::chrono::milliseconds timeout)
{
    std::unique_lock<std::mutex> executeLock(impl->executeMutex);

    auto argument = std::make_shared<CommandThreadArgument>();
    argument->command = command;
    argument->record.condition = &impl->finished;
    argument->record.result = &argument->result;
    argument->record.command = &argument->command;

    auto thread = std::make_shared<Thread>(this, &Command::CommandThread, &argument->record);
    thread->CreateThreadInternal(ThreadSettings("Command", 0, 0, 0));
    {
        std::shared_ptr<Thread> previousThread;
        std::shared_ptr<CommandThreadArgument> previousArgument;
        {
            std::lock_guard<std::mutex> threadLock(impl->threadMutex);
            previousThread = std::exchange(impl->thread, thread);
            previousArgument = std::exchange(impl->argument, argument);
        }
        // The earlier thread goes without a join of ours, before the record it was given.
        previousThread.reset();
    }

    Thread::SetAsynchronousCancelability(true);
    {
        // `Cancel` on another thread asks the held thread whether it runs; the thread mutex orders
        // that question after what `Start` records.
        std::lock_guard<std::mutex> threadLock(impl->threadMutex);
        thread->Start();
    }

    const Clock::time_point deadline = Deadline(Clock::now(), timeout);
    const timespec until = ToTimespec(deadline);
    pthread_cond_clockwait(impl->finished.native_handle(), impl->executeMutex.native_handle(), CLOCK_MONOTONIC, &until);

    if (Clock::now() < deadline) {
        return std::atomic_ref<int>(argument->result).load(std::memory_order_acquire);
    }
    Cancel();
    throw std::runtime_error("Timeout");
}

void Command::CommandThread(void* arg)
{
    auto& record = *static_cast<CommandThreadRecord*>(arg);
    int result = Execute(*record.command);
    std::atomic_ref<int>(*record.result).store(result, std::memory_order_release);
    usleep(1);
    record.condition->notify_one();
}

void Command::Cancel()
{
    std::lock_guard<std::mutex> threadLock(impl->threadMutex);
    if (impl->thread) {
        impl->thread->Terminate();
        if (impl->thread->IsJoinable()) {
            impl->thread->Join();
        }
        impl->thread.reset();
        impl->argument.reset();
    }
}

const std::string& Command::GetStdOut() const noexcept
{
    return stdOut;
}

bool Command::HasCommandThread() const
{
    std::lock_guard<std::mutex> threadLock(impl->threadMutex);
    return impl->thread != nullptr;
}

} // namespace VarnixBase::Core::Os
