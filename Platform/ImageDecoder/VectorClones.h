#pragma once

// Before a function whose loops the compiler turns into vector instructions: it is compiled twice, for every x86-64 processor
// and for those with AVX2, and the loader takes the one that fits. clang, which the builds with sanitizers use, cannot do it.
#if defined(__x86_64__) && defined(__linux__) && defined(__GNUC__) && !defined(__clang__)
#define VANTREL_VECTOR_CLONES [[gnu::target_clones("avx2", "default")]]
#else
#define VANTREL_VECTOR_CLONES
#endif
