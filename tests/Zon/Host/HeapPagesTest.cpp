#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Zon/Host/HeapPages.hpp"

namespace {

constexpr std::uintptr_t LargePageSize = std::uintptr_t{2} << 20;

bool UnderASanitizerOrValgrind()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#else
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    return true;
#endif
#endif
    // valgrind runs its tools through a preloaded core; its environment names it.
    const char* preload = std::getenv("LD_PRELOAD");
    return preload != nullptr && std::strstr(preload, "valgrind") != nullptr;
#endif
}

/// Why this process's heap cannot be advised, or null when it can.
const char* WhyNoAdviceCanBeGiven()
{
    if (UnderASanitizerOrValgrind()) {
        return "the allocator of a sanitizer or valgrind keeps its blocks off the brk heap";
    }
    if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage/enabled")) {
        return "this kernel has no transparent huge pages (/sys/kernel/mm/transparent_hugepage)";
    }
    return nullptr;
}

TEST(HeapPagesTest, TheHeapAtTheBreakIsAdvisedExactlyWhenPreparingSaysSo)
{
    const bool advised = Zon::Host::PrepareHeapForLargePrograms();
    EXPECT_EQ(advised, Zon::Host::HeapIsAdvisedForLargePages());
}

TEST(HeapPagesTest, OnTheCLibrarysHeapTheAdviceIsGiven)
{
    if (const char* why = WhyNoAdviceCanBeGiven()) {
        GTEST_SKIP() << why;
    }
    ASSERT_TRUE(Zon::Host::PrepareHeapForLargePrograms());
    EXPECT_TRUE(Zon::Host::HeapIsAdvisedForLargePages());

    // The check sees the advice, not merely a heap: the last large page below the break taken
    // back to small pages reads as not advised, and advised again when given again.
    const auto last = (reinterpret_cast<std::uintptr_t>(sbrk(0)) & ~(LargePageSize - 1)) - LargePageSize;
    auto* page = reinterpret_cast<void*>(last);
    ASSERT_EQ(madvise(page, LargePageSize, MADV_NOHUGEPAGE), 0);
    EXPECT_FALSE(Zon::Host::HeapIsAdvisedForLargePages());
    ASSERT_EQ(madvise(page, LargePageSize, MADV_HUGEPAGE), 0);
    EXPECT_TRUE(Zon::Host::HeapIsAdvisedForLargePages());
}

TEST(HeapPagesTest, BlocksAllocatedAfterPreparingLieInTheAdvisedSpan)
{
    if (const char* why = WhyNoAdviceCanBeGiven()) {
        GTEST_SKIP() << why;
    }
    ASSERT_TRUE(Zon::Host::PrepareHeapForLargePrograms());
    // After: the next blocks taken from the heap's top, the first one included, lie in the span
    // that is advised, not in the stretch below its first large page.
    for (std::size_t size : {std::size_t{1} << 20, std::size_t{256} << 10, std::size_t{3} << 20}) {
        std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
        EXPECT_TRUE(Zon::Host::IsAdvisedForLargePages(block.get())) << size << " bytes";
    }
}

TEST(HeapPagesTest, AfterPreparingAllocationsBehaveAsBefore)
{
    Zon::Host::PrepareHeapForLargePrograms();
    // Small, middle and large blocks (the large ones now from the heap, no longer mapped alone)
    // hold what is written into them and are given back.
    for (std::size_t size : {std::size_t{16}, std::size_t{4096}, std::size_t{1} << 20, std::size_t{40} << 20}) {
        std::unique_ptr<unsigned char[]> block(new unsigned char[size]);
        std::memset(block.get(), 0x5a, size);
        EXPECT_EQ(block[0], 0x5a);
        EXPECT_EQ(block[size - 1], 0x5a);
    }
}

TEST(HeapPagesTest, AReserveSmallerThanALargePageOrBeyondTheAllocatorsRangeIsNotTaken)
{
    EXPECT_FALSE(Zon::Host::PrepareHeapForLargePrograms(4096));
    EXPECT_FALSE(Zon::Host::PrepareHeapForLargePrograms(std::size_t{4} << 30));
}

} // namespace
