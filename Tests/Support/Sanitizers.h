#pragma once

/// Which sanitizer the test is built with. Under each, the memory of a process holds other things than its own, and under that of
/// threads everything takes many times as long.
#if defined(__has_feature)
#define HAS_SANITIZER(name) __has_feature(name)
#else
#define HAS_SANITIZER(name) false
#endif

inline constexpr bool isAddressSanitized = HAS_SANITIZER(address_sanitizer);
inline constexpr bool isThreadSanitized = HAS_SANITIZER(thread_sanitizer);
inline constexpr bool isSanitized = isAddressSanitized || isThreadSanitized;

#undef HAS_SANITIZER
