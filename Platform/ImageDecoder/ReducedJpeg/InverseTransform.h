#pragma once

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
    static constexpr int readableBeyond = 3;

    /// @param isLarge  as the coefficients were decoded: JpegFrame::isLarge()
    InverseTransform(const JpegComponent& component, bool isLarge);

    /// @param values        of a block: KeptCoefficients
    /// @param pixels        scaledBlockSize rows of as many bytes
    /// @param bytesPerLine  from one of these rows to the next
    void apply(const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const {
        (this->*m_apply)(values, pixels, bytesPerLine);
    }

private:
    using Vector [[gnu::vector_size(4 * sizeof(float))]] = float;
    using Apply = void (InverseTransform::*)(const qint16*, uchar*, std::ptrdiff_t) const;

    template <bool IsLarge>
    static Apply implementation(int size);
    void applyToOne(const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const;
    template <bool IsLarge>
    void applyToTwo(const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const;
    template <int Size, bool IsLarge>
    void applyToMore(const qint16* values, uchar* pixels, std::ptrdiff_t bytesPerLine) const;

    Apply m_apply;

    // What each coefficient kept contributes: to the only pixel, to all four, or to the pixels across of its row of
    // coefficients, four in a vector.
    std::vector<Vector> m_weights;
    std::array<std::array<float, dctSize>, dctSize> m_down; // of pixels: what each row of coefficients contributes
};

} // namespace Platform
