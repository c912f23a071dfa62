#pragma once

#include <memory>

#include "Zon/Delegate.hpp"
#include "Zon/System/Commons/Diagnostics/Logging/Loggable.hpp"
#include "Zon/System/Commons/Threading/ThreadSettings.hpp"

namespace Zon::System::Commons::Threading {

/// One operating-system thread that runs a delegate with a `void*` argument.
///
/// Life of a thread: construct it with its delegate and argument, optionally hand it its settings
/// with `CreateThreadInternal`, then `Start` it. The delegate runs once; when it returns, the
/// thread has ended. `Join` waits for that end. A `Thread` is managed by one thread at a time:
/// its operations take no lock of their own.
///
/// Ending a thread from outside: `Terminate` asks the operating system to cancel the thread.
/// - By default the request is deferred: it takes effect when the thread next reaches a
///   cancellation point (a blocking call such as `read`, `write`, `waitpid`, `usleep`, waiting on a
///   condition variable, `Join`). A thread that never reaches one is not ended.
/// - A thread that called `SetAsynchronousCancelability(true)` for itself can be ended at any
///   instruction. Only code that holds no lock and allocates nothing is safe to end that way.
/// - The thread ends by unwinding its stack: the destructors of its objects run, as for an
///   exception. That unwinding is not a C++ exception, but a `catch (...)` does see it. A handler
///   that does not rethrow it makes the process abort, so every `catch (...)` on a thread that may
///   be ended this way must ask `IsForcedUnwinding()` and rethrow when it is true. While the stack
///   unwinds, cancellation points do not act again, so a destructor may block (for instance, in
///   `waitpid`) and the thread ends only when it returns.
///
/// An exception that leaves the delegate ends the thread and goes no further: it is logged as an
/// error by this class's logger.
///
/// The destructor of a thread that was started and not joined ends it as `Terminate` does and
/// then joins it, so a thread never outlives its `Thread` object and never runs on with a
/// delegate whose object is gone. It therefore blocks until the thread reaches a cancellation point
/// and has unwound (at once for a thread that has already ended).
///
/// The constructor sets up the class logger: without an application domain it throws
/// `Zon::Exception` "Singleton instance of type '{0}' was not created yet!", with a domain that has
/// no log manager "AppDomain Singleton instance of type '{0}' was not created yet!".
class Thread : public Diagnostics::Logging::Loggable<Thread> {
public:
    using Delegate = Zon::delegate<void(void*)>;

    /// A thread that will call `entry(argument)`. Nothing runs before `Start`.
    Thread(Delegate entry, void* argument);

    /// A thread that will call `(object->*method)(argument)`.
    template <class T>
    Thread(T* object, void (T::*method)(void*), void* argument) : Thread(Delegate(object, method), argument)
    {
    }

    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Takes the settings with which `Start` creates the thread (see `ThreadSettings`). Without
    /// this call a thread starts with default settings and no name of its own. Throws
    /// `ArgumentException` for a stack size below the system's minimum, and
    /// `InvalidOperationException` once the thread was started.
    void CreateThreadInternal(const ThreadSettings& settings);

    /// Creates the operating-system thread, which names itself, asks for its priority and runs the
    /// delegate. Throws `InvalidOperationException` when called a second time and `Zon::Exception`
    /// when the system refuses the thread (the object then stays unstarted).
    void Start();

    /// True when the thread was started and has not been joined yet, whether it still runs or not.
    bool IsJoinable() const noexcept;

    /// Waits until the thread has ended. Throws `InvalidOperationException` when the thread is not
    /// joinable and `Zon::Exception` when the system refuses (a thread joining itself).
    void Join();

    /// Asks the thread to end (see above) and returns without waiting; `Join` waits. Does nothing
    /// for a thread that is not joinable or has already ended.
    void Terminate();

    /// The settings given to `CreateThreadInternal` (default settings before).
    const ThreadSettings& GetSettings() const noexcept;

    /// Switches the calling thread between asynchronous (true) and deferred (false) cancellation:
    /// how `Terminate`, called on the calling thread's `Thread` from elsewhere, takes effect. New
    /// threads start deferred.
    static void SetAsynchronousCancelability(bool enable);

    /// Inside a `catch (...)` handler: true when what is being handled is the unwinding of a thread
    /// that is being ended (by `Terminate` or `pthread_exit`) rather than a C++ exception. Such a
    /// handler must rethrow it with `throw;`. Outside a handler the answer means nothing.
    static bool IsForcedUnwinding() noexcept;

private:
    struct Impl;
    static void* Run(void* impl);

    std::unique_ptr<Impl> impl;
};

} // namespace Zon::System::Commons::Threading
