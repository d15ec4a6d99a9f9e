#pragma once

#include "Platform/ImageDecoder/Levels.h"
#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <QtGlobal>

#include <array>
#include <vector>

namespace Platform {

/// Turns the coefficients of a component's blocks into pixels, each the mean of those that it stands for in the full
/// picture. Immutable; any thread.
class InverseTransform {
public:
    /// Values are read four at a time: so many more must be readable after the last block's.
    static constexpr std::size_t readableBeyond = 3;

    /// @param isLarge  as the coefficients were decoded: JpegFrame::isLarge()
    InverseTransform(const JpegComponent& component, bool isLarge);

    /// Blocks of a component side by side.
    struct Blocks {
        const qint16* values;      ///< of the first block: KeptCoefficients
        std::ptrdiff_t valuesStep; ///< values from one block's to the next one's
        uchar* pixels;             ///< of the first block: scaledBlockSize rows of as many bytes
        std::ptrdiff_t pixelsStep; ///< bytes from one block's to the next one's in the same row
        std::ptrdiff_t bytesPerLine;
        std::ptrdiff_t count; ///< of the blocks
    };

    void apply(const Blocks& blocks) const;

private:
    template <bool IsLarge>
    void applyToAll(const Blocks& blocks) const;
    template <int Size, bool IsLarge>
    void applyToAllOf(const Blocks& blocks) const;

    template <int Size, bool IsLarge>
    void transform(const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const;

    const int m_size;
    const bool m_isLarge;

    // What each coefficient kept contributes: to the first pixel, one for each value of a block; or where there are more than
    // two pixels each way, to those across of its row of coefficients, four in a vector.
    std::vector<FourFloats> m_weights;
    std::array<std::array<float, dctSize>, dctSize>
        m_down; // of pixels: what each row of coefficients contributes
};

} // namespace Platform
