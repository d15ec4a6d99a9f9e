#include "Platform/ImageDecoder/ReducedJpeg/McuCodes.h"

#include <utility>

namespace Platform {

namespace {

constexpr int largestDcSymbol = 15;
constexpr int largestAcSymbol = 255;

} // namespace

std::optional<McuCodes> McuCodes::make(const JpegFrame& frame) {
    McuCodes codes;
    for (const JpegComponent& component : frame.components) {
        std::optional<HuffmanCode> dc = HuffmanCode::make(component.dc, largestDcSymbol);
        std::optional<HuffmanCode> ac = HuffmanCode::make(component.ac, largestAcSymbol);
        if (!dc || !ac) {
            return std::nullopt;
        }
        const auto index = static_cast<int>(codes.m_components.size());
        const int blocks = component.horizontalFactor * component.verticalFactor;
        codes.m_blocks.insert(codes.m_blocks.end(), static_cast<std::size_t>(blocks), index);
        codes.m_components.push_back({std::move(*dc), std::move(*ac)});
    }
    return codes;
}

} // namespace Platform
