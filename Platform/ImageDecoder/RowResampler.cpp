#include "Platform/ImageDecoder/RowResampler.h"

#include "Platform/ImageDecoder/Levels.h"
#include "Platform/ImageDecoder/VectorClones.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Platform {

namespace {

constexpr double kernelRadius = 2;

// Few enough for all threads to have some, and enough for the handing out not to count.
constexpr int rowsPerShare = 4;

/// Catmull-Rom cubic at a distance from its centre.
double kernel(double distance) {
    const double x = std::abs(distance);
    if (x < 1) {
        return (1.5 * x - 2.5) * x * x + 1;
    }
    return x < kernelRadius ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

// The sums below are most of the work. With a number of taps that the compiler knows they stay in registers.

template <int Taps>
[[gnu::always_inline]] inline void sumUpRowsOf(
    const uchar* __restrict rows, const float* weights, std::size_t length, float* __restrict sums) {
    for (std::size_t i = 0; i < length; ++i) {
        float sum = 0;
        for (int tap = 0; tap < Taps; ++tap) {
            sum += weights[tap] * static_cast<float>(rows[static_cast<std::size_t>(tap) * length + i]);
        }
        sums[i] = sum;
    }
}

/// Taps 0 stands for any number.
template <int Taps>
[[gnu::always_inline]] inline void sumUpPixelsOf(
    const float* pixels, const std::vector<int>& firsts, const float* weight, int taps, uchar* reduced) {
    for (const int first : firsts) {
        const float* pixel = pixels + static_cast<std::ptrdiff_t>(first) * bytesPerPixel;
        FourFloats sum = FourFloats{} + 0.5F; // a pixel
        for (int tap = 0; tap < (Taps == 0 ? taps : Taps); ++tap, ++weight, pixel += bytesPerPixel) {
            sum += *weight * loadFour(pixel);
        }
        storeLevels(sum, reduced);
        reduced += bytesPerPixel;
    }
}

/// Adds up rows of bytes, each times its weight.
VANTREL_VECTOR_CLONES
void sumUpRows(const uchar* rows, const float* weights, int taps, std::size_t length, float* sums) {
    switch (taps) {
    case 5:
        return sumUpRowsOf<5>(rows, weights, length, sums);
    case 6:
        return sumUpRowsOf<6>(rows, weights, length, sums);
    case 7:
        return sumUpRowsOf<7>(rows, weights, length, sums);
    case 8:
        return sumUpRowsOf<8>(rows, weights, length, sums);
    default:
        break;
    }
    // Small enough a piece for the sums to stay in the nearest cache.
    constexpr std::size_t piece = 512;
    for (std::size_t begin = 0; begin < length; begin += piece) {
        const std::size_t count = std::min(piece, length - begin);
        float* __restrict const part = sums + begin;
        std::fill_n(part, count, 0.0F);
        for (int tap = 0; tap < taps; ++tap) {
            const uchar* __restrict const values = rows + static_cast<std::size_t>(tap) * length + begin;
            const float weight = weights[tap];
            for (std::size_t i = 0; i < count; ++i) {
                part[i] += weight * static_cast<float>(values[i]);
            }
        }
    }
}

/// For each new pixel, adds up pixels from its first one on, each times its weight.
VANTREL_VECTOR_CLONES
void sumUpPixels(
    const float* pixels, const std::vector<int>& firsts, const float* weights, int taps, uchar* reduced) {
    switch (taps) {
    case 5:
        return sumUpPixelsOf<5>(pixels, firsts, weights, taps, reduced);
    case 6:
        return sumUpPixelsOf<6>(pixels, firsts, weights, taps, reduced);
    case 7:
        return sumUpPixelsOf<7>(pixels, firsts, weights, taps, reduced);
    case 8:
        return sumUpPixelsOf<8>(pixels, firsts, weights, taps, reduced);
    default:
        return sumUpPixelsOf<0>(pixels, firsts, weights, taps, reduced);
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

RowResampler::RowResampler(RowSource& source, QSize size, QSizeF extent, QSize reduced, ThreadTeam& team)
    : m_source(source),
      m_team(team),
      m_width(size.width()),
      m_across(size.width(), extent.width(), reduced.width()),
      m_down(size.height(), extent.height(), reduced.height()) {}

int RowResampler::readRows(uchar* rows, qsizetype bytesPerLine, int count) {
    int written = 0;
    while (written < count) {
        const int wanted = std::min(count - written, rowsAtATime());
        const int more = writeRows(rows + written * bytesPerLine, bytesPerLine, wanted);
        written += more;
        if (more < wanted) {
            break;
        }
    }
    return written;
}

/// As many as there is work to share in, but where they are made of very many old ones, fewer.
int RowResampler::rowsAtATime() const {
    constexpr qint64 bytes = qint64{4} << 20;
    const auto rows = static_cast<int>(m_down.first.size());
    const int pitch = m_down.first.back() / rows + 1; // old rows from one new row to the next
    return static_cast<int>(std::max<qint64>(bytes / (qint64{m_width} * bytesPerPixel * pitch), 1));
}

int RowResampler::writeRows(uchar* rows, qsizetype bytesPerLine, int count) {
    const int ready = readFor(std::min(count, static_cast<int>(m_down.first.size()) - m_rowsWritten));
    m_team.forEach((ready + rowsPerShare - 1) / rowsPerShare, [&](int share) {
        std::vector<float> column(static_cast<std::size_t>(m_width) * bytesPerPixel);
        const int begin = share * rowsPerShare;
        for (int row = begin; row < std::min(begin + rowsPerShare, ready); ++row) {
            filterColumns(m_rowsWritten + row, column);
            filterRow(column, rows + row * bytesPerLine);
        }
    });
    m_rowsWritten += ready;
    return ready;
}

/// Reads on so that the next rows can be written.
/// @return how many of them can
int RowResampler::readFor(int count) {
    if (count <= 0) {
        return 0;
    }
    const auto rowBytes = static_cast<std::ptrdiff_t>(m_width) * bytesPerPixel;
    const auto firstOf = [this](int row) { return m_down.first[static_cast<std::size_t>(row)]; };
    const int keptFrom = std::min(firstOf(m_rowsWritten), m_rowsRead);
    const auto kept = m_rows.begin() + (keptFrom - m_firstRow) * rowBytes;
    std::copy(kept, kept + (m_rowsRead - keptFrom) * rowBytes, m_rows.begin());
    m_firstRow = keptFrom;
    const int end = firstOf(m_rowsWritten + count - 1) + m_down.taps;
    const auto size = static_cast<std::size_t>((std::max(end, m_rowsRead) - m_firstRow) * rowBytes);
    m_rows.resize(std::max(m_rows.size(), size));
    if (m_rowsRead < end && !m_hasEnded) {
        const int wanted = end - m_rowsRead;
        const int read =
            m_source.readRows(m_rows.data() + (m_rowsRead - m_firstRow) * rowBytes, rowBytes, wanted);
        m_rowsRead += read;
        m_hasEnded = read < wanted;
    }
    int ready = count;
    while (ready > 0 && firstOf(m_rowsWritten + ready - 1) + m_down.taps > m_rowsRead) {
        --ready;
    }
    return ready;
}

void RowResampler::filterColumns(int reducedRow, std::vector<float>& column) const {
    const auto first =
        static_cast<std::size_t>(m_down.first[static_cast<std::size_t>(reducedRow)] - m_firstRow);
    const float* const weights = m_down.weights.data() + std::ptrdiff_t{reducedRow} * m_down.taps;
    sumUpRows(m_rows.data() + first * column.size(), weights, m_down.taps, column.size(), column.data());
}

void RowResampler::filterRow(const std::vector<float>& column, uchar* row) const {
    sumUpPixels(column.data(), m_across.first, m_across.weights.data(), m_across.taps, row);
}

} // namespace Platform
