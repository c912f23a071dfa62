#include "Zon/System/Commons/Threading/Thread.hpp"

#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstring>
#include <cxxabi.h>
#include <limits>
#include <string>

#include "Zon/System/Commons/ArgumentException.hpp"
#include "Zon/System/Commons/InvalidOperationException.hpp"

namespace Zon::System::Commons::Threading {

namespace {

/// A Linux thread name holds 15 bytes and the terminating zero.
constexpr std::size_t MaxThreadNameLength = 15;

std::string ErrorText(int error)
{
    return std::strerror(error);
}

/// Releases thread attributes however `Start` leaves.
class ThreadAttributes {
public:
    ThreadAttributes()
    {
        int result = pthread_attr_init(&attributes);
        if (result != 0) {
            throw Exception("Thread attributes could not be prepared: {0}", ErrorText(result));
        }
    }
    ~ThreadAttributes() { pthread_attr_destroy(&attributes); }
    ThreadAttributes(const ThreadAttributes&) = delete;
    ThreadAttributes& operator=(const ThreadAttributes&) = delete;

    pthread_attr_t* Get() noexcept { return &attributes; }

private:
    pthread_attr_t attributes;
};

} // namespace

struct Thread::Impl {
    Delegate entry;
    void* argument = nullptr;
    ThreadSettings settings;
    pthread_t handle{};
    bool started = false;
    bool joined = false;
    /// Set by the thread itself as the very last thing it does, also when it is being ended.
    std::atomic<bool> finished{false};
};

Thread::Thread(Delegate entry, void* argument) : impl(std::make_unique<Impl>())
{
    impl->entry = std::move(entry);
    impl->argument = argument;
}

Thread::~Thread()
{
    if (!IsJoinable()) {
        return;
    }
    // Never leave a running thread behind: its delegate may point into objects that go with us.
    if (!impl->finished.load(std::memory_order_acquire)) {
        pthread_cancel(impl->handle);
    }
    pthread_join(impl->handle, nullptr);
    impl->joined = true;
}

void Thread::CreateThreadInternal(const ThreadSettings& settings)
{
    if (impl->started) {
        throw InvalidOperationException("Thread '{0}' is already started.", impl->settings.name);
    }
    if (settings.stackSize != 0 && settings.stackSize < static_cast<std::uint64_t>(PTHREAD_STACK_MIN)) {
        throw ArgumentException("Stack size {0} of thread '{1}' is below the minimum of {2} bytes.",
                                settings.stackSize, settings.name, static_cast<std::uint64_t>(PTHREAD_STACK_MIN));
    }
    impl->settings = settings;
}

void Thread::Start()
{
    if (impl->started) {
        throw InvalidOperationException("Thread '{0}' is already started.", impl->settings.name);
    }
    const ThreadSettings& settings = impl->settings;
    ThreadAttributes attributes;
    if (settings.stackSize != 0) {
        std::size_t size = settings.stackSize > std::numeric_limits<std::size_t>::max()
                               ? std::numeric_limits<std::size_t>::max()
                               : static_cast<std::size_t>(settings.stackSize);
        int result = pthread_attr_setstacksize(attributes.Get(), size);
        if (result != 0) {
            throw Exception("Thread '{0}' could not be started: stack size {1}: {2}", settings.name,
                            settings.stackSize, ErrorText(result));
        }
    }
    if (settings.cpuAffinity != 0) {
        cpu_set_t processors;
        CPU_ZERO(&processors);
        for (int processor = 0; processor < 64; ++processor) {
            if ((settings.cpuAffinity >> processor) & 1u) {
                CPU_SET(processor, &processors);
            }
        }
        int result = pthread_attr_setaffinity_np(attributes.Get(), sizeof(processors), &processors);
        if (result != 0) {
            throw Exception("Thread '{0}' could not be started: processor mask {1:#x}: {2}", settings.name,
                            settings.cpuAffinity, ErrorText(result));
        }
    }
    impl->finished.store(false, std::memory_order_relaxed);
    int result = pthread_create(&impl->handle, attributes.Get(), &Thread::Run, impl.get());
    if (result != 0) {
        throw Exception("Thread '{0}' could not be started: {1}", settings.name, ErrorText(result));
    }
    impl->started = true;
    impl->joined = false;
    GetLogger().Trace("Thread '{0}' started", settings.name);
}

bool Thread::IsJoinable() const noexcept
{
    return impl->started && !impl->joined;
}

void Thread::Join()
{
    if (!IsJoinable()) {
        throw InvalidOperationException("Thread '{0}' is not joinable.", impl->settings.name);
    }
    GetLogger().Trace("Joining thread '{0}'", impl->settings.name);
    int result = pthread_join(impl->handle, nullptr);
    if (result != 0) {
        throw Exception("Thread '{0}' could not be joined: {1}", impl->settings.name, ErrorText(result));
    }
    impl->joined = true;
}

void Thread::Terminate()
{
    if (!IsJoinable() || impl->finished.load(std::memory_order_acquire)) {
        return;
    }
    GetLogger().Debug("Cancelling thread '{0}'", impl->settings.name);
    // The only failure is a thread that has ended in the meantime, which is what was asked for.
    pthread_cancel(impl->handle);
}

const ThreadSettings& Thread::GetSettings() const noexcept
{
    return impl->settings;
}

void Thread::SetAsynchronousCancelability(bool enable)
{
    int previous = 0;
    int result = pthread_setcanceltype(enable ? PTHREAD_CANCEL_ASYNCHRONOUS : PTHREAD_CANCEL_DEFERRED, &previous);
    if (result != 0) {
        throw Exception("Cancelability could not be set: {0}", ErrorText(result));
    }
}

bool Thread::IsForcedUnwinding() noexcept
{
    // The unwinding of an ending thread is a foreign exception: it carries no C++ type. Outside a
    // handler there is no type either, hence the rule to ask only inside `catch (...)`.
    return abi::__cxa_current_exception_type() == nullptr;
}

void* Thread::Run(void* argument)
{
    Impl& self = *static_cast<Impl*>(argument);
    struct FinishedMark {
        std::atomic<bool>& finished;
        ~FinishedMark() { finished.store(true, std::memory_order_release); }
    } mark{self.finished};

    const ThreadSettings& settings = self.settings;
    if (!settings.name.IsEmpty()) {
        std::string name = settings.name.ToStdString().substr(0, MaxThreadNameLength);
        pthread_setname_np(pthread_self(), name.c_str());
    }
    if (settings.priority != 0) {
        int lowest = sched_get_priority_min(SCHED_FIFO);
        int highest = sched_get_priority_max(SCHED_FIFO);
        sched_param parameter{};
        parameter.sched_priority = static_cast<int>(
            std::clamp<std::uint64_t>(settings.priority, static_cast<std::uint64_t>(lowest),
                                      static_cast<std::uint64_t>(highest)));
        int result = pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameter);
        if (result != 0) {
            GetLogger().Warning("Thread '{0}' runs without its real-time priority {1}: {2}", settings.name,
                                settings.priority, ErrorText(result));
        }
    }

    try {
        self.entry(self.argument);
    } catch (const std::exception& error) {
        GetLogger().Error("Thread '{0}' ended by an exception: {1}", settings.name, error.what());
    } catch (...) {
        if (IsForcedUnwinding()) {
            throw;
        }
        GetLogger().Error("Thread '{0}' ended by an exception of unknown type", settings.name);
    }
    return nullptr;
}

} // namespace Zon::System::Commons::Threading
