#pragma once

#include <cstdint>
#include <utility>

#include "Zon/BasicString.hpp"

namespace Zon::System::Commons::Threading {

/// How a thread is to be created: a name followed by three numbers. On the host they mean:
/// - `name`: the thread's name as the operating system shows it (ps, top, /proc/<pid>/task/*/comm).
///   It is cut to the first 15 bytes, which is all a Linux thread name holds. An empty name leaves
///   the new thread with the name of the thread that started it.
/// - `priority`: 0 keeps the default scheduling of the process. 1 to 99 asks for that real-time
///   priority (first-in-first-out scheduling, larger is more urgent; values above the system's
///   maximum are taken as the maximum). The thread asks for it itself before its work begins; when
///   the system does not grant it (no privilege), the thread runs with the default scheduling and
///   a warning is logged.
/// - `cpuAffinity`: 0 lets the thread run on every processor the process may use. Otherwise a bit
///   mask: bit n allows processor n (processors 0 to 63). A mask that allows no usable processor
///   makes `Thread::Start` fail.
/// - `stackSize`: 0 gives the system's default stack size. Otherwise the stack size in bytes; it
///   must be at least the system's minimum (`PTHREAD_STACK_MIN`), else `CreateThreadInternal` fails.
struct ThreadSettings {
    ThreadSettings() = default;
    ThreadSettings(String name, std::uint64_t priority, std::uint64_t cpuAffinity, std::uint64_t stackSize)
        : name(std::move(name)), priority(priority), cpuAffinity(cpuAffinity), stackSize(stackSize)
    {
    }

    String name;
    std::uint64_t priority = 0;
    std::uint64_t cpuAffinity = 0;
    std::uint64_t stackSize = 0;
};

} // namespace Zon::System::Commons::Threading
