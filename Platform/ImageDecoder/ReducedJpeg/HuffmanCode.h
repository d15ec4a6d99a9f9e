#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"

#include <array>
#include <optional>
#include <vector>

namespace Platform {

/// Whether an AC symbol ends its block: it has no value bits, and is not the one for sixteen zeros (T.81, F.1.2.2).
constexpr bool endsBlock(quint8 symbol) {
    constexpr int sixteenZeros = 15;
    return (symbol & 0xf) == 0 && symbol >> 4 != sixteenZeros;
}

/// A Huffman code made ready for looking codes up. Immutable.
class HuffmanCode {
public:
    /// The bits that a table is indexed with: as many as leave four tables near enough to the processor.
    static constexpr int windowBits = 12;
    static constexpr int longestCode = 16;

    struct Code {
        quint8 length = 0; ///< in bits; 0: no code begins like that
        quint8 symbol = 0;
    };

    /// Nothing where the counts and the lengths do not fit together, or there is a symbol above the largest that
    /// has a meaning: 15 for DC, 255 for AC coefficients (T.81, F.1.2).
    static std::optional<HuffmanCode> make(const HuffmanSpecification& specification, int largestSymbol);

    /// The code that the next 16 bits begin with.
    Code lookUp(quint32 next16) const {
        const Code code = m_short[next16 >> (longestCode - windowBits)];
        return code.length != 0 ? code : lookUpLong(next16);
    }

    /// The code that the next windowBits bits begin with; length 0 also for longer ones.
    Code lookUpShort(quint32 next) const { return m_short[next]; }

private:
    explicit HuffmanCode(const HuffmanSpecification& specification);

    Code lookUpLong(quint32 next16) const;

    struct Length {
        quint32 end = 0;     // one past the last code of that length, followed by zeros to 16 bits
        int firstSymbol = 0; // of the codes of that length, minus the first code
    };

    std::array<quint8, 256> m_symbols;
    std::array<Length, longestCode + 1> m_lengths;
    std::vector<Code> m_short;
};

} // namespace Platform
