#pragma once

#include <cstddef>

namespace Zon::Host {

/// Prepares the process heap for building a large program: the heap grows in steps of `reserve`
/// bytes, and the kernel is asked to back that span with large pages (2 MiB where the kernel has
/// transparent huge pages in the "madvise" mode).
///
/// Building a program of 10,000 ports and connectors touches some 50 MB of heap. In pages of
/// 4 KiB that is about 12,700 page faults, and on a virtual machine each costs microseconds: on
/// the machine of docs/benchmarks.md they took more time than the build itself. With large
/// pages the same build takes about a thousand.
///
/// Small blocks are also merged with their free neighbours as they are freed (no fast bins), which
/// spares the allocator a walk over all of them at each later large request.
///
/// The heap's first blocks come from the advised span too: the stretch below its first large page
/// boundary (the heap rarely starts on one) is kept by a block that is never used, so that a small
/// program does not take its first megabytes in small pages.
///
/// Only memory and time change: allocations, their contents and their addresses' validity are
/// the allocator's as before. Pages of the span are taken from the system only when first touched,
/// in blocks of the large page size, so a small program's resident memory grows by at most a few
/// large pages.
///
/// Returns whether the advice was given. It is not given (and nothing is changed but the growth
/// step) when the allocator is not the C library's main arena on a `brk` heap, as under a
/// sanitizer or valgrind, whose allocators place blocks elsewhere; or when the kernel refuses.
/// Call it once, early in a tool's `main`, before threads start.
bool PrepareHeapForLargePrograms(std::size_t reserve = std::size_t{64} << 20) noexcept;

/// Whether the heap's span at the current program break is advised for large pages (reads
/// /proc/self/smaps; for tests and diagnostics).
bool HeapIsAdvisedForLargePages();

/// Whether the mapping that holds `address` is advised for large pages (reads /proc/self/smaps;
/// for tests and diagnostics).
bool IsAdvisedForLargePages(const void* address);

} // namespace Zon::Host
