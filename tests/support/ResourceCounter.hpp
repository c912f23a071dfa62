#pragma once

#include <cstddef>

namespace VarnixTest {

/// Counts heap allocations (operator new, malloc) and lock acquisitions (pthread mutexes and
/// read-write locks) made by the current thread while a scope is open. The test executable
/// replaces the global operator new and interposes the pthread lock functions for this.
class ResourceCounter {
public:
    ResourceCounter() noexcept;
    ~ResourceCounter();
    ResourceCounter(const ResourceCounter&) = delete;
    ResourceCounter& operator=(const ResourceCounter&) = delete;

    std::size_t Allocations() const noexcept;
    std::size_t Locks() const noexcept;
};

} // namespace VarnixTest
