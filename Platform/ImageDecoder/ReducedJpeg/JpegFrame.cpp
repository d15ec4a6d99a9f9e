#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <algorithm>

namespace Platform {

namespace {

int blocks(int pixels, int factor) {
    const int mcu = dctSize * factor;
    return (pixels + mcu - 1) / mcu;
}

} // namespace

bool JpegFrame::isLarge() const {
    constexpr qint64 pixels = 4'000'000;
    return static_cast<qint64>(size.width()) * size.height() > pixels;
}

int JpegFrame::maximumHorizontalFactor() const {
    return std::ranges::max(components, {}, &JpegComponent::horizontalFactor).horizontalFactor;
}

int JpegFrame::maximumVerticalFactor() const {
    return std::ranges::max(components, {}, &JpegComponent::verticalFactor).verticalFactor;
}

int JpegFrame::mcusPerRow() const {
    return blocks(size.width(), maximumHorizontalFactor());
}

int JpegFrame::mcuRows() const {
    return blocks(size.height(), maximumVerticalFactor());
}

int JpegFrame::blocksPerMcu() const {
    int count = 0;
    for (const JpegComponent& component : components) {
        count += component.horizontalFactor * component.verticalFactor;
    }
    return count;
}

bool JpegFrame::isDecodable() const {
    return blocksPerMcu() <= mostBlocksPerMcu && hasWholeRatios();
}

bool JpegFrame::hasWholeRatios() const {
    const int across = maximumHorizontalFactor() * scaledBlockSize;
    const int down = maximumVerticalFactor() * scaledBlockSize;
    return std::ranges::all_of(components, [&](const JpegComponent& component) {
        return across % (component.horizontalFactor * component.scaledBlockSize) == 0 &&
               down % (component.verticalFactor * component.scaledBlockSize) == 0;
    });
}

} // namespace Platform
