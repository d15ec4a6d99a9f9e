#include "Platform/Heaps.h"

#include <cstdlib> // tells which library it is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Platform {

void limitHeaps() {
#ifdef __GLIBC__
    constexpr int heaps = 4;
    constexpr int large = 128 << 10; // bytes; as it begins, but for good
    mallopt(M_ARENA_MAX, heaps);
    mallopt(M_MMAP_THRESHOLD, large);
#endif
}

void trimHeaps() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace Platform
