#pragma once

#include <atomic>
#include <utility>

namespace Zon {

/// A process-wide object that somebody creates explicitly and that others look up.
/// `GetInstance()` gives the object, or null when it has not been created (or was disposed).
/// Creating and disposing are the owner's business (the firmware, or the host runtime here).
template <class T>
class Singleton {
public:
    static T* GetInstance() noexcept { return instance.load(std::memory_order_acquire); }
    static bool IsCreated() noexcept { return GetInstance() != nullptr; }

    /// Creates the instance; returns the existing one if there is one.
    template <class... Args>
    static T& CreateInstance(Args&&... args)
    {
        if (T* existing = GetInstance()) {
            return *existing;
        }
        T* created = new T(std::forward<Args>(args)...);
        instance.store(created, std::memory_order_release);
        return *created;
    }

    static void DisposeInstance() noexcept { delete instance.exchange(nullptr, std::memory_order_acq_rel); }

private:
    static inline std::atomic<T*> instance{nullptr};
};

} // namespace Zon
