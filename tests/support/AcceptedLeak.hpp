#pragma once

// Leak checking under AddressSanitizer: GCC announces it with __SANITIZE_ADDRESS__, clang through
// __has_feature.
#if defined(__SANITIZE_ADDRESS__)
#define VARNIX_TEST_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VARNIX_TEST_LEAK_CHECK 1
#endif
#endif
#if defined(VARNIX_TEST_LEAK_CHECK)
#include <sanitizer/lsan_interface.h>
#endif

namespace VarnixTest {

/// While an object of this class lives, the leak checker ignores what the current thread
/// allocates. For tests that exercise a leak the library accepts by design, such as the libxml2
/// tree that a `.prog.config` load keeps when a `Parameter` fails: put one around exactly that
/// call. A suppression file cannot single such a leak out, because the allocation stacks end
/// inside libxml2 (built without frame pointers) and never reach the library's own frames.
/// Without AddressSanitizer the class does nothing.
class AcceptedLeak {
public:
#if defined(VARNIX_TEST_LEAK_CHECK)
    AcceptedLeak() { __lsan_disable(); }
    ~AcceptedLeak() { __lsan_enable(); }
#else
    AcceptedLeak() {}
    ~AcceptedLeak() {}
#endif
    AcceptedLeak(const AcceptedLeak&) = delete;
    AcceptedLeak& operator=(const AcceptedLeak&) = delete;
};

} // namespace VarnixTest
