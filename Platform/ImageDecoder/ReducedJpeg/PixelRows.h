#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <QtGlobal>

#include <array>
#include <functional>
#include <vector>

namespace Platform {

/// Puts rows of pixels together from the rows of a frame's components: upsamples those that are stored at half the
/// resolution or less as libjpeg does, and converts colours. Immutable; any thread.
class PixelRows {
public:
    /// Gives a row of a component, which is in it.
    using ComponentRow = std::function<const uchar*(std::size_t component, int row)>;

    explicit PixelRows(const JpegFrame& frame);

    /// Whether a row takes not only the component rows that it lies in, but also those above or below.
    bool needsNeighbours() const;

    /// Writes a row, as QImage::Format_RGB32 has it.
    void write(int row, const ComponentRow& componentRow, quint32* pixels) const;

private:
    struct Component {
        int across = 1; ///< pixels that stand for one of its own
        int down = 1;
        bool isSmoothAcross = false; ///< whether those are interpolated
        bool isSmoothDown = false;
        QSize size;
    };

    const uchar* upsampled(
        std::size_t index, int row, const ComponentRow& componentRow, std::vector<uchar>& buffer) const;

    const JpegFrame::Colors m_colors;
    const int m_width;
    std::vector<Component> m_components;
};

} // namespace Platform
