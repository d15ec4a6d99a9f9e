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

/// Four coefficients.
template <typename Vector>
Vector load(const qint16* values) {
    using Shorts [[gnu::vector_size(4 * sizeof(qint16))]] = qint16;
    Shorts shorts;
    std::memcpy(&shorts, values, sizeof shorts);
    return __builtin_convertvector(shorts, Vector);
}

/// Writes four levels.
template <typename Vector>
void store(Vector values, uchar* pixels) {
    using Ints [[gnu::vector_size(4 * sizeof(int))]] = int;
    using Bytes [[gnu::vector_size(4)]] = uchar;
    const Vector none{};
    const Vector most = none + 255.0F;
    values = values > none ? values : none;
    values = values < most ? values : most;
    const Bytes bytes = __builtin_convertvector(__builtin_convertvector(values, Ints), Bytes);
    std::memcpy(pixels, &bytes, sizeof bytes);
}

} // namespace

InverseTransform::InverseTransform(const JpegComponent& component, bool isLarge)
    : m_size(component.scaledBlockSize), m_isLarge(isLarge) {
    const int size = m_size;
    const KeptCoefficients kept = keptCoefficients(size, isLarge);
    const auto wave = [size](int pixel, int frequency) { return meanWave(size, pixel, frequency); };
    for (int i = 0; i < kept.kept; ++i) {
        const int position = kept.positions[static_cast<std::size_t>(i)];
        const int across = position % dctSize;
        const int down = position / dctSize;
        const double quantiser = component.quantisers[static_cast<std::size_t>(position)];
        for (int first = 0; first < std::max(size, 4); first += 4) {
            Vector weights{};
            for (int lane = 0; lane < 4; ++lane) {
                const int pixel = first + lane;
                const double value = size == 1   ? wave(0, 0) * wave(0, 0)
                                     : size == 2 ? wave(pixel % 2, across) * wave(pixel / 2, down)
                                                 : wave(pixel, across);
                weights[lane] = static_cast<float>(quantiser * value);
            }
            m_weights.push_back(weights);
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
        constexpr std::size_t kept = keptCoefficients(2, IsLarge).kept;
        Vector sum = Vector{} + zeroLevel;
        for (std::size_t i = 0; i < kept; i += 4) {
            const Vector four = load<Vector>(values + i);
            for (std::size_t lane = 0; lane < std::min<std::size_t>(4, kept - i); ++lane) {
                sum += four[lane] * m_weights[i + lane];
            }
        }
        uchar levels[4];
        store(sum, levels);
        std::memcpy(pixels, levels, 2);
        std::memcpy(pixels + bytesPerLine, levels + 2, 2);
    } else {
        static constexpr KeptCoefficients kept = keptCoefficients(Size, IsLarge);
        constexpr std::size_t vectors = Size / 4;
        Vector rows[dctSize][vectors] = {};
        Vector four{};
        const auto addToRow = [&]<std::size_t I>(std::integral_constant<std::size_t, I>) {
            if constexpr (I % 4 == 0) {
                four = load<Vector>(values + I);
            }
            for (std::size_t i = 0; i < vectors; ++i) {
                rows[kept.positions[I] / dctSize][i] += four[I % 4] * m_weights[I * vectors + i];
            }
        };
        [&]<std::size_t... I>(std::index_sequence<I...>) {
            (addToRow(std::integral_constant<std::size_t, I>()), ...);
        }
        (std::make_index_sequence<kept.kept>());
        // The waves of even frequency are the same in the lower half turned upside down, the others negative.
        for (std::size_t y = 0; y < Size / 2; ++y) {
            for (std::size_t i = 0; i < vectors; ++i) {
                Vector even = Vector{} + zeroLevel;
                Vector odd{};
                for (std::size_t row = 0; row < dctSize; row += 2) {
                    even += m_down[y][row] * rows[row][i];
                    odd += m_down[y][row + 1] * rows[row + 1][i];
                }
                const auto upper = static_cast<std::ptrdiff_t>(y);
                store(even + odd, pixels + upper * bytesPerLine + 4 * i);
                store(even - odd, pixels + (Size - 1 - upper) * bytesPerLine + 4 * i);
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
