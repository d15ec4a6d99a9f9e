#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Four values side by side in a register, for sums that become levels of a picture. What compilers make of vector types by
// themselves is good but for the conversions, which they take apart; so those are spelt out where they matter.

namespace Platform {

using FourFloats [[gnu::vector_size(4 * sizeof(float))]] = float;

/// Four numbers from memory.
[[gnu::always_inline]] inline FourFloats loadFour(const float* values) {
    FourFloats four;
    std::memcpy(&four, values, sizeof four);
    return four;
}

[[gnu::always_inline]] inline FourFloats loadFour(const qint16* values) {
#if defined(__SSE2__)
    const __m128i shorts = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(values));
    return _mm_cvtepi32_ps(_mm_srai_epi32(_mm_unpacklo_epi16(shorts, shorts), 16));
#else
    return FourFloats{static_cast<float>(values[0]), static_cast<float>(values[1]),
        static_cast<float>(values[2]), static_cast<float>(values[3])};
#endif
}

/// Their whole parts, at least 0 and at most 255.
[[gnu::always_inline]] inline quint32 levelsOf(FourFloats values) {
#if defined(__SSE2__)
    const __m128i integers = _mm_cvttps_epi32(_mm_min_ps(values, _mm_set1_ps(255.0F)));
    const __m128i shorts = _mm_packs_epi32(integers, integers);
    return static_cast<quint32>(_mm_cvtsi128_si32(_mm_packus_epi16(shorts, shorts)));
#else
    quint32 levels = 0;
    for (int i = 3; i >= 0; --i) {
        levels = levels << 8 | static_cast<quint32>(std::min(std::max(values[i], 0.0F), 255.0F));
    }
    return levels;
#endif
}

/// Writes these levels, one in a byte.
[[gnu::always_inline]] inline void storeLevels(FourFloats values, uchar* bytes) {
    const quint32 levels = levelsOf(values);
    std::memcpy(bytes, &levels, sizeof levels);
}

} // namespace Platform
