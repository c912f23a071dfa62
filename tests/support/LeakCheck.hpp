#pragma once

// Leak checking under AddressSanitizer: GCC announces it with __SANITIZE_ADDRESS__, clang through
// __has_feature. With VARNIX_TEST_LEAK_CHECK defined a test may ask the leak checker directly
// (__lsan_do_recoverable_leak_check() gives 0 when nothing is lost).
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
