#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/KeptCoefficients.h"
#include "Platform/ImageDecoder/ReducedJpeg/McuCodes.h"

#include <QtGlobal>

#include <array>
#include <span>
#include <vector>

namespace Platform {

/// Decodes those coefficients of blocks that a small picture needs, where it is known where the blocks begin. DC
/// coefficients come as they are coded: as differences.
///
/// Immutable once made; any number of threads may use it.
class CoefficientDecoder {
public:
    CoefficientDecoder(const McuCodes& codes, const JpegFrame& frame);
    CoefficientDecoder(const CoefficientDecoder&) = delete;
    CoefficientDecoder& operator=(const CoefficientDecoder&) = delete;

    /// Values of an MCU: its blocks in the order of the scan, each in the order of its KeptCoefficients.
    int valuesPerMcu() const { return m_valuesPerMcu; }

    /// For each block of an MCU, where its values begin among those of the MCU.
    const std::vector<int>& blockOffsets() const { return m_blockOffsets; }

    /// MCUs that follow one another.
    struct Run {
        const quint32*
            starts; ///< of their blocks, and the end of the last: in bits from the start of the window
        int mcus;
        qint16* values; ///< valuesPerMcu() for each of them
    };

    /// Decodes a run.
    ///
    /// @param window  the data, which ScanData::padding follows; the blocks have been found in it by a BlockScanner
    void decode(std::span<const uchar> window, const Run& run) const;

private:
    /// For each window of bits, what the code is that it begins with.
    using Table = std::array<quint32, std::size_t{1} << HuffmanCode::windowBits>;

    struct Tables { // of a component
        Table dc;
        Table ac;
        KeptCoefficients kept;
    };

    static Table table(const HuffmanCode& code, bool isDc);

    void decodeDc(const uchar* data, const Run& run, std::size_t block) const;
    void decodeBlocks(const uchar* data, const Run& run, std::size_t block) const;

    const McuCodes m_codes;
    int m_valuesPerMcu = 0;
    std::vector<int> m_blockOffsets;
    std::vector<Tables> m_tables;
};

} // namespace Platform
