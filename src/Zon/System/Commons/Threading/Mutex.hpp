#pragma once

#include <pthread.h>

namespace Zon::System::Commons::Threading {

/// A non-recursive mutex that checks its use: locking it again on the thread that holds it, or
/// unlocking it on a thread that does not hold it, throws `Zon::Exception` instead of deadlocking
/// or corrupting the lock. The lower-case `lock`, `try_lock` and `unlock` let it work with
/// `std::lock_guard` and `std::unique_lock`.
class Mutex {
public:
    Mutex();
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    /// Waits until the mutex is free and takes it.
    void Lock();
    /// Takes the mutex when it is free; false when another thread holds it.
    bool TryLock();
    /// Releases the mutex, which the calling thread must hold.
    void Unlock();

    void lock() { Lock(); }
    bool try_lock() { return TryLock(); }
    void unlock() { Unlock(); }

private:
    pthread_mutex_t mutex;
};

} // namespace Zon::System::Commons::Threading
