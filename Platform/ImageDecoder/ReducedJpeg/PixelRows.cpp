#include "Platform/ImageDecoder/ReducedJpeg/PixelRows.h"

#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/ImageDecoder/VectorClones.h"

#include <algorithm>

namespace Platform {

namespace {

// Each pixel is three quarters of the sample that it lies in and a quarter of the nearest other one. The rounding goes up
// and down by turns, as libjpeg's does.

VANTREL_VECTOR_CLONES
void interpolateAcross(const uchar* samples, std::ptrdiff_t count, uchar* pixels) {
    pixels[0] = samples[0];
    pixels[1] = static_cast<uchar>((samples[0] * 3 + samples[1] + 2) >> 2);
    for (std::ptrdiff_t i = 1; i < count - 1; ++i) {
        pixels[2 * i] = static_cast<uchar>((samples[i] * 3 + samples[i - 1] + 1) >> 2);
        pixels[2 * i + 1] = static_cast<uchar>((samples[i] * 3 + samples[i + 1] + 2) >> 2);
    }
    const std::ptrdiff_t last = count - 1;
    pixels[2 * last] = static_cast<uchar>((samples[last] * 3 + samples[last - 1] + 1) >> 2);
    pixels[2 * last + 1] = samples[last];
}

VANTREL_VECTOR_CLONES
void interpolateDown(const uchar* samples, const uchar* neighbours, int bias, int count, uchar* pixels) {
    for (int i = 0; i < count; ++i) {
        pixels[i] = static_cast<uchar>((samples[i] * 3 + neighbours[i] + bias) >> 2);
    }
}

VANTREL_VECTOR_CLONES
void repeatTwice(const uchar* __restrict samples, std::ptrdiff_t count, uchar* __restrict pixels) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        pixels[2 * i] = samples[i];
        pixels[2 * i + 1] = samples[i];
    }
}

void repeat(const uchar* samples, int times, int count, uchar* pixels) {
    for (int i = 0; i < count; ++i) {
        pixels = std::fill_n(pixels, times, samples[i]);
    }
}

quint32 level(int value) {
    return static_cast<quint32>(std::min(std::max(value, 0), 255));
}

quint32 pixel(quint32 red, quint32 green, quint32 blue) {
    return 0xff000000 | red << 16 | green << 8 | blue;
}

/// ITU-T T.871, clause 7.
VANTREL_VECTOR_CLONES
void convertYCbCr(const uchar* __restrict luma, const uchar* __restrict blue, const uchar* __restrict red,
    int width, quint32* __restrict pixels) {
    for (int x = 0; x < width; ++x) {
        const int y = luma[x];
        const int cb = blue[x] - 128;
        const int cr = red[x] - 128;
        pixels[x] = pixel(level(y + ((cr * 91881 + 32768) >> 16)),
            level(y + ((cb * -22554 + cr * -46802 + 32768) >> 16)), level(y + ((cb * 116130 + 32768) >> 16)));
    }
}

VANTREL_VECTOR_CLONES
void interleave(const uchar* __restrict red, const uchar* __restrict green, const uchar* __restrict blue,
    int width, quint32* __restrict pixels) {
    for (int x = 0; x < width; ++x) {
        pixels[x] = pixel(red[x], green[x], blue[x]);
    }
}

} // namespace

PixelRows::PixelRows(const JpegFrame& frame) : m_colors(frame.colors), m_width(frame.scaledSize.width()) {
    for (const JpegComponent& component : frame.components) {
        const auto ratio = [&](int most, int factor) {
            return most * frame.scaledBlockSize / (factor * component.scaledBlockSize);
        };
        Component result;
        result.across = ratio(frame.maximumHorizontalFactor(), component.horizontalFactor);
        result.down = ratio(frame.maximumVerticalFactor(), component.verticalFactor);
        result.size = component.scaledSize;
        const bool isSmooth = frame.scaledBlockSize > 1;
        result.isSmoothAcross = isSmooth && result.across == 2 && result.down == 1 && result.size.width() > 2;
        result.isSmoothDown = isSmooth && result.across == 1 && result.down == 2;
        m_components.push_back(result);
    }
}

bool PixelRows::needsNeighbours() const {
    return std::ranges::any_of(m_components, &Component::isSmoothDown);
}

const uchar* PixelRows::upsampled(
    std::size_t index, int row, const ComponentRow& componentRow, std::vector<uchar>& buffer) const {
    const Component& component = m_components[index];
    const int nearest = std::min(row / component.down, component.size.height() - 1);
    const uchar* const samples = componentRow(index, nearest);
    if (component.across == 1 && !component.isSmoothDown) {
        return samples;
    }
    buffer.resize(static_cast<std::size_t>(std::max(m_width, component.across * component.size.width())));
    if (component.isSmoothDown) {
        const bool isUpper = row % 2 == 0;
        const int other = std::clamp(nearest + (isUpper ? -1 : 1), 0, component.size.height() - 1);
        interpolateDown(samples, componentRow(index, other), isUpper ? 1 : 2, m_width, buffer.data());
    } else if (component.isSmoothAcross) {
        interpolateAcross(samples, component.size.width(), buffer.data());
    } else if (component.across == 2) {
        repeatTwice(samples, component.size.width(), buffer.data());
    } else {
        repeat(samples, component.across, component.size.width(), buffer.data());
    }
    return buffer.data();
}

void PixelRows::write(int row, const ComponentRow& componentRow, quint32* pixels) const {
    std::array<std::vector<uchar>, 3> buffers;
    std::array<const uchar*, 3> samples{};
    for (std::size_t component = 0; component < m_components.size(); ++component) {
        samples[component] = upsampled(component, row, componentRow, buffers[component]);
    }
    switch (m_colors) {
    case JpegFrame::Colors::Grey:
        interleave(samples[0], samples[0], samples[0], m_width, pixels);
        break;
    case JpegFrame::Colors::YCbCr:
        convertYCbCr(samples[0], samples[1], samples[2], m_width, pixels);
        break;
    case JpegFrame::Colors::Rgb:
        interleave(samples[0], samples[1], samples[2], m_width, pixels);
        break;
    }
}

} // namespace Platform
