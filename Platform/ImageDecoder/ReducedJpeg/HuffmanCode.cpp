#include "Platform/ImageDecoder/ReducedJpeg/HuffmanCode.h"

#include <algorithm>
#include <numeric>

namespace Platform {

namespace {

/// Whether codes can be given to all symbols, none of them all ones (T.81, C.2 and annex K.2).
bool isPossible(const HuffmanSpecification& specification) {
    quint32 code = 0;
    int symbols = 0;
    for (int length = 1; length <= HuffmanCode::longestCode; ++length) {
        const int count = specification.counts[static_cast<std::size_t>(length - 1)];
        code += static_cast<quint32>(count);
        symbols += count;
        if (code >= 1U << length && count > 0) {
            return false;
        }
        code <<= 1;
    }
    return symbols <= 256;
}

} // namespace

std::optional<HuffmanCode> HuffmanCode::make(const HuffmanSpecification& specification, int largestSymbol) {
    if (!isPossible(specification)) {
        return std::nullopt;
    }
    const int count = std::accumulate(specification.counts.begin(), specification.counts.end(), 0);
    const auto end = specification.symbols.begin() + count;
    const bool isReadable = std::all_of(
        specification.symbols.begin(), end, [&](quint8 symbol) { return symbol <= largestSymbol; });
    return isReadable ? std::optional(HuffmanCode(specification)) : std::nullopt;
}

HuffmanCode::HuffmanCode(const HuffmanSpecification& specification)
    : m_symbols(specification.symbols), m_short(std::size_t{1} << windowBits) {
    quint32 code = 0;
    std::size_t symbol = 0;
    for (int length = 1; length <= longestCode; ++length) {
        const std::size_t count = specification.counts[static_cast<std::size_t>(length - 1)];
        m_lengths[static_cast<std::size_t>(length)].firstSymbol =
            static_cast<int>(symbol) - static_cast<int>(code);
        for (std::size_t i = 0; i < count && length <= windowBits; ++i) {
            const auto first = m_short.begin() + (static_cast<qsizetype>(code + static_cast<quint32>(i))
                                                     << (windowBits - length));
            std::fill_n(first, qsizetype{1} << (windowBits - length),
                Code{static_cast<quint8>(length), m_symbols[symbol + i]});
        }
        code += static_cast<quint32>(count);
        symbol += count;
        m_lengths[static_cast<std::size_t>(length)].end = code << (longestCode - length);
        code <<= 1;
    }
}

HuffmanCode::Code HuffmanCode::lookUpLong(quint32 next16) const {
    for (int length = windowBits + 1; length <= longestCode; ++length) {
        const Length& codes = m_lengths[static_cast<std::size_t>(length)];
        if (next16 < codes.end) {
            const int symbol = codes.firstSymbol + static_cast<int>(next16 >> (longestCode - length));
            return {static_cast<quint8>(length), m_symbols[static_cast<std::size_t>(symbol)]};
        }
    }
    return {};
}

} // namespace Platform
