#pragma once

#include <QSize>
#include <QtGlobal>

#include <array>
#include <vector>

// What the header of a JPEG file says about its entropy-coded data, as far as decoding them takes it. The terms are those
// of ITU-T T.81.

namespace Platform {

inline constexpr int dctSize = 8; ///< rows and columns of a block
inline constexpr int blockCoefficients = 64;

/// The most blocks that an MCU may have (T.81, B.2.3).
inline constexpr int mostBlocksPerMcu = 10;

/// A Huffman code, as a DHT segment gives it (T.81, B.2.4.2).
struct HuffmanSpecification {
    std::array<quint8, 16> counts{};   ///< how many codes there are of each length from 1 to 16 bits
    std::array<quint8, 256> symbols{}; ///< in the order of their codes
};

struct JpegComponent {
    int horizontalFactor = 1;                            ///< blocks across in an MCU
    int verticalFactor = 1;                              ///< blocks down in an MCU
    std::array<quint16, blockCoefficients> quantisers{}; ///< row by row
    HuffmanSpecification dc;
    HuffmanSpecification ac;

    int scaledBlockSize = 1; ///< pixels each way that a block becomes: 1, 2, 4 or 8
    QSize scaledSize;        ///< of the component, in pixels
};

/// A baseline or extended Huffman frame of 8 bits with one component or three, all in one scan.
struct JpegFrame {
    enum class Colors { Grey, YCbCr, Rgb };

    QSize size;
    Colors colors = Colors::Grey;
    std::vector<JpegComponent> components;
    int restartInterval = 0; ///< in MCUs; 0: none

    int scaledBlockSize = 1; ///< of the component with the most blocks: eighths of the size that come out
    QSize scaledSize;

    /// Whether it has so many pixels that decoding it takes noticeable time.
    bool isLarge() const;

    int maximumHorizontalFactor() const;
    int maximumVerticalFactor() const;
    int mcusPerRow() const;
    int mcuRows() const;

    /// What libjpeg asks for only when it begins to decode: that an MCU has no more blocks than it may, and that each pixel
    /// of a component stands for a whole number of the picture's, across and down.
    bool isDecodable() const;

private:
    int blocksPerMcu() const;
    bool hasWholeRatios() const;
};

} // namespace Platform
