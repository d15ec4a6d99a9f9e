#include "Platform/Heaps.h"

#include <cstdlib> // tells which library it is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Platform {

void shareHeaps() {
#ifdef __GLIBC__
    constexpr int heaps = 4;
    mallopt(M_ARENA_MAX, heaps);
#endif
}

void trimHeaps() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

} // namespace Platform
