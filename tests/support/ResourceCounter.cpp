#include "support/ResourceCounter.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

#include <dlfcn.h>
#include <pthread.h>

namespace {

thread_local bool counting = false;
thread_local std::size_t allocationCount = 0;
thread_local std::size_t lockCount = 0;

void* Allocate(std::size_t size)
{
    if (counting) {
        ++allocationCount;
    }
    if (size == 0) {
        size = 1;
    }
    void* memory = std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* AllocateAligned(std::size_t size, std::size_t alignment)
{
    if (counting) {
        ++allocationCount;
    }
    if (size == 0) {
        size = 1;
    }
    std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* memory = std::aligned_alloc(alignment, rounded);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

template <class Function>
Function Next(const char* name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

using MutexFunction = int (*)(pthread_mutex_t*);
using RwFunction = int (*)(pthread_rwlock_t*);

std::atomic<MutexFunction> realMutexLock{nullptr};
std::atomic<MutexFunction> realMutexTryLock{nullptr};
std::atomic<RwFunction> realRdLock{nullptr};
std::atomic<RwFunction> realWrLock{nullptr};

template <class Function>
Function Resolve(std::atomic<Function>& slot, const char* name)
{
    Function function = slot.load(std::memory_order_acquire);
    if (function == nullptr) {
        function = Next<Function>(name);
        slot.store(function, std::memory_order_release);
    }
    return function;
}

} // namespace

namespace VarnixTest {

ResourceCounter::ResourceCounter() noexcept
{
    allocationCount = 0;
    lockCount = 0;
    counting = true;
}

ResourceCounter::~ResourceCounter()
{
    counting = false;
}

std::size_t ResourceCounter::Allocations() const noexcept
{
    return allocationCount;
}

std::size_t ResourceCounter::Locks() const noexcept
{
    return lockCount;
}

} // namespace VarnixTest

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return Allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return Allocate(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new(std::size_t size, std::align_val_t alignment) { return AllocateAligned(size, static_cast<std::size_t>(alignment)); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return AllocateAligned(size, static_cast<std::size_t>(alignment)); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    if (counting) {
        ++lockCount;
    }
    return Resolve(realMutexLock, "pthread_mutex_lock")(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    if (counting) {
        ++lockCount;
    }
    return Resolve(realMutexTryLock, "pthread_mutex_trylock")(mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* lock)
{
    if (counting) {
        ++lockCount;
    }
    return Resolve(realRdLock, "pthread_rwlock_rdlock")(lock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* lock)
{
    if (counting) {
        ++lockCount;
    }
    return Resolve(realWrLock, "pthread_rwlock_wrlock")(lock);
}

} // extern "C"
