// A colour profile, applied to a few pixels. The first byte of the input says what kind of pixels.
#include "Platform/ImageDecoder/ColorTransform.h"
#include "Platform/ImageDecoder/RowSource.h"

#include <array>

using Platform::bytesPerPixel;
using Platform::ColorTransform;

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const auto kind = static_cast<ColorTransform::Pixels>(bytes[0] % 3);
    const QByteArray profile(reinterpret_cast<const char*>(bytes) + 1, static_cast<qsizetype>(size) - 1);
    const ColorTransform transform(kind, profile);
    constexpr std::size_t count = 64;
    std::array<uchar, count * bytesPerPixel> pixels{};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<uchar>(i * 37);
    }
    transform.apply(pixels.data(), static_cast<int>(count));
    return 0;
}
