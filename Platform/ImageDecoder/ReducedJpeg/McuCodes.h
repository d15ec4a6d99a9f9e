#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/HuffmanCode.h"
#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <optional>
#include <vector>

namespace Platform {

/// What the blocks of an MCU are coded with, in the order of the scan. Immutable; any thread.
class McuCodes {
public:
    struct Component {
        HuffmanCode dc;
        HuffmanCode ac;
    };

    /// Nothing where a code is not one.
    static std::optional<McuCodes> make(const JpegFrame& frame);

    const std::vector<Component>& components() const { return m_components; }

    /// For each block of an MCU its component.
    const std::vector<int>& blocks() const { return m_blocks; }

private:
    McuCodes() = default;

    std::vector<Component> m_components;
    std::vector<int> m_blocks;
};

} // namespace Platform
