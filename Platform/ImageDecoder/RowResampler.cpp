#include "Platform/ImageDecoder/RowResampler.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace Platform {

namespace {

constexpr double kernelRadius = 2;

/// Catmull-Rom cubic at a distance from its centre.
double kernel(double distance) {
    const double x = std::abs(distance);
    if (x < 1) {
        return (1.5 * x - 2.5) * x * x + 1;
    }
    return x < kernelRadius ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

// The four bytes of a pixel as floats in one register.
using Pixel [[gnu::vector_size(4 * sizeof(float))]] = float;

Pixel load(const float* values) {
    Pixel pixel;
    std::memcpy(&pixel, values, sizeof pixel);
    return pixel;
}

/// To the nearest whole number that a byte holds.
void round(const float* __restrict values, uchar* __restrict bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<uchar>(static_cast<int>(std::min(std::max(values[i] + 0.5F, 0.0F), 255.0F)));
    }
}

} // namespace

RowResampler::Filter::Filter(int length, double extent, int reducedLength)
    : first(static_cast<std::size_t>(reducedLength)) {
    const double ratio = extent / reducedLength;
    // Below 1 where a picture is thinner than a pixel of the new size.
    const double stretch = std::max(ratio, 1.0);
    const double radius = kernelRadius * stretch;
    taps = std::min(static_cast<int>(std::ceil(2 * radius)), length);
    weights.resize(static_cast<std::size_t>(reducedLength) * static_cast<std::size_t>(taps));
    std::vector<double> values(static_cast<std::size_t>(taps));
    auto weight = weights.begin();
    for (int i = 0; i < reducedLength; ++i) {
        const double center = (i + 0.5) * ratio - 0.5;
        int& start = first[static_cast<std::size_t>(i)];
        start = std::clamp(static_cast<int>(std::floor(center - radius)) + 1, 0, length - taps);
        for (int tap = 0; tap < taps; ++tap) {
            values[static_cast<std::size_t>(tap)] = kernel((start + tap - center) / stretch);
        }
        const double sum = std::accumulate(values.begin(), values.end(), 0.0);
        weight = std::ranges::transform(values, weight, [sum](double value) {
            return static_cast<float>(value / sum);
        }).out;
    }
}

RowResampler::RowResampler(RowSource& source, QSize size, QSizeF extent, QSize reduced)
    : m_source(source),
      m_width(size.width()),
      m_across(size.width(), extent.width(), reduced.width()),
      m_down(size.height(), extent.height(), reduced.height()),
      m_rows(static_cast<std::size_t>(m_down.taps) * static_cast<std::size_t>(m_width) * bytesPerPixel),
      m_column(static_cast<std::size_t>(m_width) * bytesPerPixel),
      m_reduced(static_cast<std::size_t>(reduced.width()) * bytesPerPixel) {}

int RowResampler::readRows(uchar* rows, qsizetype bytesPerLine, int count) {
    for (int row = 0; row < count; ++row, ++m_rowsWritten) {
        const auto next = static_cast<std::size_t>(m_rowsWritten);
        if (next == m_down.first.size() || !readUpTo(m_down.first[next] + m_down.taps)) {
            return row;
        }
        filterColumns(m_rowsWritten);
        filterRow(rows + row * bytesPerLine);
    }
    return count;
}

bool RowResampler::readUpTo(int row) {
    const qsizetype bytesPerLine = static_cast<qsizetype>(m_width) * bytesPerPixel;
    for (; m_rowsRead < row; ++m_rowsRead) {
        uchar* const place = m_rows.data() + (m_rowsRead % m_down.taps) * bytesPerLine;
        if (m_source.readRows(place, bytesPerLine, 1) != 1) {
            return false;
        }
    }
    return true;
}

void RowResampler::filterColumns(int reducedRow) {
    // Small enough a piece for the sums to stay in the nearest cache.
    constexpr std::size_t piece = 512;
    const auto taps = static_cast<std::size_t>(m_down.taps);
    const auto first = static_cast<std::size_t>(m_down.first[static_cast<std::size_t>(reducedRow)]);
    const float* const weights = m_down.weights.data() + static_cast<std::size_t>(reducedRow) * taps;
    const std::size_t length = m_column.size();
    for (std::size_t begin = 0; begin < length; begin += piece) {
        const std::size_t count = std::min(piece, length - begin);
        float* __restrict const sums = m_column.data() + begin;
        std::fill_n(sums, count, 0.0F);
        for (std::size_t tap = 0; tap < taps; ++tap) {
            const uchar* __restrict const values = m_rows.data() + (first + tap) % taps * length + begin;
            const float weight = weights[tap];
            for (std::size_t i = 0; i < count; ++i) {
                sums[i] += weight * static_cast<float>(values[i]);
            }
        }
    }
}

void RowResampler::filterRow(uchar* row) {
    const auto taps = static_cast<std::size_t>(m_across.taps);
    const float* weight = m_across.weights.data();
    float* reduced = m_reduced.data();
    for (const int first : m_across.first) {
        const float* pixels = m_column.data() + static_cast<std::size_t>(first) * bytesPerPixel;
        Pixel sum{};
        for (std::size_t tap = 0; tap < taps; ++tap, ++weight, pixels += bytesPerPixel) {
            sum += *weight * load(pixels);
        }
        std::memcpy(reduced, &sum, sizeof sum);
        reduced += bytesPerPixel;
    }
    round(m_reduced.data(), row, m_reduced.size());
}

} // namespace Platform
