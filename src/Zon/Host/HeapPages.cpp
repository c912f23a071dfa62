#include "Zon/Host/HeapPages.hpp"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#include <sys/mman.h>
#include <unistd.h>

namespace Zon::Host {

namespace {

constexpr std::uintptr_t LargePage = std::uintptr_t{2} << 20;

/// The C library's blocks: a block's data starts 16 bytes after the block, the block for n bytes
/// is n + 8 rounded up to 16 long, and what follows starts right after it. The block of
/// `first - data + 8` bytes whose data is at `data` therefore ends exactly at `first`: the next
/// block, header and data, lies at or above it.
constexpr std::uintptr_t BlockSizeField = 8;

/// The block that keeps the heap's first small pages unused (see PrepareHeapForLargePrograms).
void*& HeldGap()
{
    static void* gap = nullptr;
    return gap;
}

} // namespace

bool PrepareHeapForLargePrograms(std::size_t reserve) noexcept
{
#if defined(__GLIBC__)
    if (reserve < LargePage || reserve > static_cast<std::size_t>(INT_MAX) / 2) {
        return false;
    }
    const int step = static_cast<int>(reserve);
    // Each growth of the heap adds `reserve` beyond what the request needs; a free at the top
    // gives memory back only beyond twice that, so the advised span is not returned and taken
    // again in small pages; blocks below `reserve` come from the heap, not from a mapping of
    // their own.
    //
    // Small blocks are merged with their free neighbours when they are freed, not kept in fast
    // bins to be merged in bulk when a large block is asked for: building a program frees tens of
    // thousands of small blocks between large requests, and the bulk merge walked them all again,
    // out of cache.
    if (mallopt(M_TOP_PAD, step) != 1 || mallopt(M_TRIM_THRESHOLD, 2 * step) != 1 ||
        mallopt(M_MMAP_THRESHOLD, step) != 1 || mallopt(M_MXFAST, 0) != 1) {
        return false;
    }
    // A block of half the step makes the heap grow now, by the block and the step, so that the
    // span exists to be advised. Its pages are not touched.
    void* probe = std::malloc(reserve / 2);
    if (probe == nullptr) {
        return false;
    }
    const auto begin = reinterpret_cast<std::uintptr_t>(probe);
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    bool advised = false;
    // Under a sanitizer or valgrind the block is not on the brk heap: it lies elsewhere, so the
    // span from it to the break is no span of the heap, and nothing is advised.
    if (begin < end && end - begin <= 4 * static_cast<std::uintptr_t>(reserve)) {
        const std::uintptr_t first = (begin + LargePage - 1) & ~(LargePage - 1);
        const std::uintptr_t last = end & ~(LargePage - 1);
        if (first < last) {
            advised = madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE) == 0;
        }
        if (advised && first > begin) {
            // The block starts where the next allocations would, below the first large page: the
            // heap rarely starts on a large page's boundary, and up to 2 MiB there would be taken
            // in small pages (about 500 faults, the most of a small program's). The block keeps
            // that gap: shrunk in place to end at the boundary, so that what follows starts in
            // the advised span, and held for the process's life. Its pages are not touched.
            void* gap = std::realloc(probe, first - begin + BlockSizeField);
            if (gap == probe) {
                HeldGap() = gap;
                return advised;
            }
            // Moved elsewhere it keeps nothing (and a failed realloc leaves the block as it was).
            if (gap != nullptr) {
                probe = gap;
            }
        }
    }
    std::free(probe);
    return advised;
#else
    (void)reserve;
    return false;
#endif
}

bool HeapIsAdvisedForLargePages()
{
    // The advised span ends at the break, rounded down to a large page.
    const auto brk = reinterpret_cast<std::uintptr_t>(sbrk(0));
    return IsAdvisedForLargePages(reinterpret_cast<const void*>((brk & ~(LargePage - 1)) - 1));
}

bool IsAdvisedForLargePages(const void* address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    std::ifstream smaps("/proc/self/smaps");
    std::string line;
    bool inMapping = false;
    while (std::getline(smaps, line)) {
        // A mapping's first line: "start-end perms offset dev inode [path]".
        std::uintptr_t start = 0;
        std::uintptr_t stop = 0;
        char dash = 0;
        std::istringstream head(line);
        if (head >> std::hex >> start >> dash >> stop && dash == '-') {
            inMapping = start <= wanted && wanted < stop;
            continue;
        }
        if (inMapping && line.rfind("VmFlags:", 0) == 0) {
            std::istringstream flags(line.substr(8));
            std::string flag;
            while (flags >> flag) {
                if (flag == "hg") {
                    return true;
                }
            }
            return false;
        }
    }
    return false;
}

} // namespace Zon::Host
