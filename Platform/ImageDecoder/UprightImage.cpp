#include "Platform/ImageDecoder/UprightImage.h"

#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/PixelMemory.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace Platform {

namespace {

// Two cache lines of pixels: a turned picture is written in pieces that long.
constexpr int rowsPerBand = 32;

bool isTransposed(int orientation) {
    return orientation >= 5;
}

/// Whether the stored picture's left edge is on the upright one's right (or bottom, where it is transposed).
bool runsBackwardsAcross(int orientation) {
    return orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
}

/// Whether the stored picture's top edge is on the upright one's bottom (or right, where it is transposed).
bool runsBackwardsDown(int orientation) {
    return orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
}

} // namespace

UprightImage::UprightImage(QSize size, int orientation)
    : m_size(size), m_image(undefinedPicture(isTransposed(orientation) ? size.transposed() : size)) {
    if (isNull()) {
        return;
    }
    const qsizetype line = m_image.bytesPerLine() / bytesPerPixel;
    m_stepAcross = isTransposed(orientation) ? line : 1;
    m_stepDown = isTransposed(orientation) ? 1 : line;
    m_origin = reinterpret_cast<quint32*>(m_image.bits());
    if (runsBackwardsAcross(orientation)) {
        m_origin += m_stepAcross * (size.width() - 1);
        m_stepAcross = -m_stepAcross;
    }
    if (runsBackwardsDown(orientation)) {
        m_origin += m_stepDown * (size.height() - 1);
        m_stepDown = -m_stepDown;
    }
    if (m_stepAcross != 1) {
        m_rows.resize(static_cast<std::size_t>(size.width()) * rowsPerBand);
    }
}

UprightImage::Band UprightImage::band() {
    const int count = std::min(rowsPerBand, m_size.height() - m_firstRow);
    if (m_rows.empty()) {
        return {
            reinterpret_cast<uchar*>(m_origin + m_firstRow * m_stepDown), m_stepDown * bytesPerPixel, count};
    }
    return {reinterpret_cast<uchar*>(m_rows.data()), static_cast<qsizetype>(m_size.width()) * bytesPerPixel,
        count};
}

void UprightImage::finishBand(int count) {
    const qsizetype width = m_size.width();
    quint32* const corner = m_origin + m_firstRow * m_stepDown;
    if (!m_rows.empty() && std::abs(m_stepAcross) == 1) {
        for (qsizetype y = 0; y < count; ++y) {
            const quint32* const row = m_rows.data() + y * width;
            std::reverse_copy(row, row + width, corner + y * m_stepDown - (width - 1));
        }
    } else if (!m_rows.empty()) {
        for (qsizetype x = 0; x < width; ++x) {
            quint32* const to = corner + x * m_stepAcross;
            for (qsizetype y = 0; y < count; ++y) {
                to[y * m_stepDown] = m_rows[static_cast<std::size_t>(y * width + x)];
            }
        }
    }
    m_firstRow += count;
}

QImage UprightImage::take() {
    fillWithBlack();
    return std::exchange(m_image, QImage());
}

void UprightImage::fillWithBlack() {
    constexpr quint32 black = 0xff000000;
    while (true) {
        const Band rest = band();
        if (rest.count == 0) {
            return;
        }
        for (int row = 0; row < rest.count; ++row) {
            std::fill_n(
                reinterpret_cast<quint32*>(rest.rows + row * rest.bytesPerLine), m_size.width(), black);
        }
        finishBand(rest.count);
    }
}

} // namespace Platform
