#include "Platform/ImageDecoder/ReducedJpeg/InverseTransform.h"

#include "Platform/ImageDecoder/ReducedJpeg/KeptCoefficients.h"
#include "Platform/ImageDecoder/VectorClones.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <utility>

namespace Platform {

namespace {

// Samples are stored around zero (T.81, A.3.1); the half rounds.
constexpr float zeroLevel = 128.5F;

/// The mean, over the samples that a pixel stands for, of the wave of that frequency along one direction (T.81, A.3.3).
double meanWave(int size, int pixel, int frequency) {
    const int samples = dctSize / size;
    double sum = 0;
    for (int sample = pixel * samples; sample < (pixel + 1) * samples; ++sample) {
        sum += std::cos((2 * sample + 1) * frequency * std::numbers::pi / (2 * dctSize));
    }
    const double norm = frequency == 0 ? std::numbers::sqrt2 / 4 : 0.5;
    return norm * sum / samples;
}

uchar level(float value) {
    return static_cast<uchar>(static_cast<int>(std::min(std::max(value, 0.0F), 255.0F)));
}

/// The elements of a vector in another order.
template <typename Order>
[[gnu::always_inline]] inline FourFloats shuffled(FourFloats vector, Order order) {
#if defined(__clang__)
    return FourFloats{vector[order[0]], vector[order[1]], vector[order[2]], vector[order[3]]};
#else
    return __builtin_shuffle(vector, order);
#endif
}

/// Adds a coefficient to its row, times its weights.
template <int Size, bool IsLarge, std::size_t Place>
[[gnu::always_inline]] inline void addAcross(
    FourFloats four, const FourFloats* weights, FourFloats (&rows)[dctSize][Size / 4]) {
    constexpr std::size_t vectors = Size / 4;
    constexpr std::size_t row = keptCoefficients(Size, IsLarge).positions[Place] / dctSize;
    for (std::size_t i = 0; i < vectors; ++i) {
        rows[row][i] += four[Place % 4] * weights[Place * vectors + i];
    }
}

/// Sums up the pixels across of each row of coefficients.
template <int Size, bool IsLarge, std::size_t... Place>
[[gnu::always_inline]] inline void sumUpAcross(const qint16* values, const FourFloats* weights,
    FourFloats (&rows)[dctSize][Size / 4], std::index_sequence<Place...>) {
    FourFloats four{};
    ((four = Place % 4 == 0 ? loadFour(values + Place) : four,
         addAcross<Size, IsLarge, Place>(four, weights, rows)),
        ...);
}

} // namespace

InverseTransform::InverseTransform(const JpegComponent& component, bool isLarge)
    : m_size(component.scaledBlockSize), m_isLarge(isLarge) {
    const int size = m_size;
    const KeptCoefficients kept = keptCoefficients(size, isLarge);
    const auto wave = [size](int pixel, int frequency) { return meanWave(size, pixel, frequency); };
    // What a coefficient contributes to a pixel of the first row, or where that is all, of its row of coefficients.
    const auto weight = [&](int place, int pixel) {
        const int position = kept.positions[static_cast<std::size_t>(place)];
        if (position == KeptCoefficients::none) {
            return 0.0F;
        }
        const double across = wave(pixel, position % dctSize);
        const double down = size > 2 ? 1 : wave(0, position / dctSize);
        return static_cast<float>(component.quantisers[static_cast<std::size_t>(position)] * across * down);
    };
    if (size <= 2) {
        for (int place = 0; place < kept.kept; place += 4) {
            m_weights.push_back(FourFloats{
                weight(place, 0), weight(place + 1, 0), weight(place + 2, 0), weight(place + 3, 0)});
        }
    } else {
        for (int place = 0; place < kept.kept; ++place) {
            for (int pixel = 0; pixel < size; pixel += 4) {
                m_weights.push_back(FourFloats{weight(place, pixel), weight(place, pixel + 1),
                    weight(place, pixel + 2), weight(place, pixel + 3)});
            }
        }
    }
    for (int pixel = 0; pixel < size; ++pixel) {
        for (int frequency = 0; frequency < dctSize; ++frequency) {
            m_down[static_cast<std::size_t>(pixel)][static_cast<std::size_t>(frequency)] =
                static_cast<float>(wave(pixel, frequency));
        }
    }
}

// More than two pixels each way: one direction after the other, first the pixels across of each row of coefficients, then
// down. All loops are of known length, so that nothing but sums is left of them.
template <int Size, bool IsLarge>
[[gnu::always_inline]] inline void InverseTransform::transform(
    const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const {
    if constexpr (Size == 1) {
        *pixels = level(static_cast<float>(*values) * m_weights[0][0] + zeroLevel);
    } else if constexpr (Size == 2) {
        // The sums of the waves that are even or odd across and down; each pixel is all four, of one sign or the other.
        constexpr std::size_t kept = keptCoefficients(2, IsLarge).kept;
        FourFloats kinds{zeroLevel, 0, 0, 0};
        for (std::size_t i = 0; i < kept; i += 4) {
            kinds += loadFour(values + i) * m_weights[i / 4];
        }
        using Order [[gnu::vector_size(4 * sizeof(int))]] = int;
        const FourFloats across = shuffled(kinds, Order{0, 0, 2, 2}) +
                                  shuffled(kinds, Order{1, 1, 3, 3}) * FourFloats{1, -1, 1, -1};
        const FourFloats sum = shuffled(across, Order{0, 1, 0, 1}) +
                               shuffled(across, Order{2, 3, 2, 3}) * FourFloats{1, 1, -1, -1};
        const quint32 levels = levelsOf(sum);
        const auto upper = static_cast<quint16>(levels);
        const auto lower = static_cast<quint16>(levels >> 16);
        std::memcpy(pixels, &upper, sizeof upper);
        std::memcpy(pixels + bytesPerLine, &lower, sizeof lower);
    } else {
        constexpr std::size_t vectors = Size / 4;
        FourFloats rows[dctSize][vectors] = {};
        constexpr std::size_t kept = keptCoefficients(Size, IsLarge).kept;
        sumUpAcross<Size, IsLarge>(values, m_weights.data(), rows, std::make_index_sequence<kept>());
        // The waves of even frequency are the same in the lower half turned upside down, the others negative.
        for (std::size_t y = 0; y < Size / 2; ++y) {
            for (std::size_t i = 0; i < vectors; ++i) {
                FourFloats even = FourFloats{} + zeroLevel;
                FourFloats odd{};
                for (std::size_t row = 0; row < dctSize; row += 2) {
                    even += m_down[y][row] * rows[row][i];
                    odd += m_down[y][row + 1] * rows[row + 1][i];
                }
                const auto upper = static_cast<std::ptrdiff_t>(y);
                storeLevels(even + odd, pixels + upper * bytesPerLine + 4 * i);
                storeLevels(even - odd, pixels + (Size - 1 - upper) * bytesPerLine + 4 * i);
            }
        }
    }
}

template <int Size, bool IsLarge>
[[gnu::always_inline]] inline void InverseTransform::applyToAllOf(const Blocks& blocks) const {
    const qint16* values = blocks.values;
    uchar* pixels = blocks.pixels;
    for (std::ptrdiff_t block = 0; block < blocks.count; ++block) {
        transform<Size, IsLarge>(values, pixels, blocks.bytesPerLine);
        values += blocks.valuesStep;
        pixels += blocks.pixelsStep;
    }
}

template <bool IsLarge>
[[gnu::always_inline]] inline void InverseTransform::applyToAll(const Blocks& blocks) const {
    switch (m_size) {
    case 1:
        return applyToAllOf<1, IsLarge>(blocks);
    case 2:
        return applyToAllOf<2, IsLarge>(blocks);
    case 4:
        return applyToAllOf<4, IsLarge>(blocks);
    default:
        return applyToAllOf<8, IsLarge>(blocks);
    }
}

VANTREL_VECTOR_CLONES
void InverseTransform::apply(const Blocks& blocks) const {
    return m_isLarge ? applyToAll<true>(blocks) : applyToAll<false>(blocks);
}

} // namespace Platform
