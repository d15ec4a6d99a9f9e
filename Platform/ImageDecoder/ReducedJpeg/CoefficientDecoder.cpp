#include "Platform/ImageDecoder/ReducedJpeg/CoefficientDecoder.h"

#include "Platform/ImageDecoder/ReducedJpeg/BitWindow.h"

#include <algorithm>
#include <array>

namespace Platform {

namespace {

constexpr int windowBits = HuffmanCode::windowBits;

// What a table says of a code:
//   bits 0 to 5      its length
//   bits 6 to 11     how far the bits after it are to be shifted down, but for one, to have its value
//   from bit 12 on   what it adds to Block::state
// 0: it is longer than the window.
constexpr quint32 shiftMask = 0x3f;
constexpr int shiftShift = 6;
constexpr int stepShift = 12;

// In Block::state, the coefficients that have come are counted below the position. A block that has ended goes on counting.
constexpr int positionShift = 13;
constexpr quint64 countMask = (1 << positionShift) - 1;

constexpr quint32 endOfBlock = blockCoefficients; // zeros, so that all have come

quint32 entry(HuffmanCode::Code code, bool isDc) {
    const quint32 size = code.symbol & 0xf;
    const quint32 zeros = code.symbol >> 4;
    const bool isEnd = !isDc && endsBlock(code.symbol);
    const quint32 coefficients = (isDc ? 0 : isEnd ? endOfBlock : zeros) + 1;
    const quint32 step = (code.length + size) << positionShift | coefficients;
    return code.length | (63 - size) << shiftShift | step << stepShift;
}

} // namespace

CoefficientDecoder::Table CoefficientDecoder::table(const HuffmanCode& code, bool isDc) {
    Table entries;
    for (quint32 window = 0; window < entries.size(); ++window) {
        const HuffmanCode::Code found = code.lookUpShort(window);
        entries[window] = found.length != 0 ? entry(found, isDc) : 0;
    }
    return entries;
}

CoefficientDecoder::CoefficientDecoder(const McuCodes& codes, const JpegFrame& frame) : m_codes(codes) {
    for (std::size_t index = 0; index < frame.components.size(); ++index) {
        const McuCodes::Component& component = codes.components()[index];
        m_tables.push_back({table(component.dc, true), table(component.ac, false),
            keptCoefficients(frame.components[index].scaledBlockSize, frame.isLarge())});
    }
    for (const int component : codes.blocks()) {
        m_blockOffsets.push_back(m_valuesPerMcu);
        m_valuesPerMcu += m_tables[static_cast<std::size_t>(component)].kept.values;
    }
}

namespace {

/// The value of the first bits of these, all but shift + 1 (T.81, F.2.2.1: those that begin with a zero are the complement of
/// a negative value).
[[gnu::always_inline]] inline qint16 valueOf(quint64 bits, quint32 shift) {
    const quint64 isNegative = ~static_cast<quint64>(static_cast<qint64>(bits) >> 63); // all bits or none
    const quint64 magnitude = ((bits ^ isNegative) >> 1) >> shift;
    return static_cast<qint16>((magnitude ^ isNegative) - isNegative);
}

/// A block under way: in few variables, since four of them are to fit into the registers of a processor.
struct Block {
    quint64 state; // the position, and in the lowest bits how many coefficients have come
    qint16* values;

    quint64 count() const { return state & countMask; }
};

/// One after the other, the codes of blocks of one component.
class CodeReader {
public:
    CodeReader(
        const uchar* data, const quint32* table, const HuffmanCode& code, bool isDc, const quint8* places)
        : m_data(data), m_table(table), m_code(code), m_isDc(isDc), m_places(places) {}

    /// Decodes the next code. A block that has ended stores what follows where it does no harm.
    [[gnu::always_inline]] void step(Block& block) const {
        const quint64 bits = bitsAt(m_data, block.state >> positionShift);
        quint32 code = m_table[bits >> (64 - windowBits)];
        if (code == 0) [[unlikely]] {
            code = entry(m_code.lookUp(static_cast<quint32>(bits >> 48)), m_isDc);
        }
        block.state += code >> stepShift;
        block.values[m_places[block.count()]] =
            valueOf(bits << (code & shiftMask), code >> shiftShift & shiftMask);
    }

private:
    const uchar* const m_data;
    const quint32* const m_table;
    const HuffmanCode& m_code;
    const bool m_isDc;
    const quint8* const m_places;
};

} // namespace

void CoefficientDecoder::decodeDc(const uchar* data, const Run& run, std::size_t block) const {
    const auto component = static_cast<std::size_t>(m_codes.blocks()[block]);
    const Tables& tables = m_tables[component];
    const CodeReader dc(
        data, tables.dc.data(), m_codes.components()[component].dc, true, tables.kept.places.data());
    const quint32* start = run.starts + block;
    qint16* values = run.values + m_blockOffsets[block];
    for (int mcu = 0; mcu < run.mcus; ++mcu) {
        Block only{quint64{*start} << positionShift, values};
        dc.step(only);
        start += m_blockOffsets.size();
        values += m_valuesPerMcu;
    }
}

// Each look-up waits for the one before: so four blocks are decoded side by side. How many codes a block has cannot be
// foreseen; a group goes on until the longest of the four has ended.
void CoefficientDecoder::decodeBlocks(const uchar* data, const Run& run, std::size_t block) const {
    const auto component = static_cast<std::size_t>(m_codes.blocks()[block]);
    const Tables& tables = m_tables[component];
    const quint8* const places = tables.kept.places.data();
    const CodeReader dc(data, tables.dc.data(), m_codes.components()[component].dc, true, places);
    const CodeReader ac(data, tables.ac.data(), m_codes.components()[component].ac, false, places);
    const auto last = static_cast<quint64>(tables.kept.last);
    std::array<qint16, blockCoefficients + 1> spare; // for blocks that fill up the last group
    const auto begin = [&](int mcu) {
        const bool isSpare = mcu >= run.mcus;
        const std::ptrdiff_t index = isSpare ? run.mcus - 1 : mcu;
        qint16* const values = run.values + index * m_valuesPerMcu + m_blockOffsets[block];
        const quint64 start =
            run.starts[index * std::ssize(m_blockOffsets) + static_cast<std::ptrdiff_t>(block)];
        return Block{start << positionShift, isSpare ? spare.data() : values};
    };
    for (int mcu = 0; mcu < run.mcus; mcu += 4) {
        Block a = begin(mcu);
        Block b = begin(mcu + 1);
        Block c = begin(mcu + 2);
        Block d = begin(mcu + 3);
        dc.step(a);
        dc.step(b);
        dc.step(c);
        dc.step(d);
        while (std::min({a.count(), b.count(), c.count(), d.count()}) <= last) {
            ac.step(a);
            ac.step(b);
            ac.step(c);
            ac.step(d);
        }
    }
}

void CoefficientDecoder::decode(std::span<const uchar> window, const Run& run) const {
    std::fill_n(run.values, std::ptrdiff_t{run.mcus} * m_valuesPerMcu, qint16{0});
    for (std::size_t block = 0; block < m_blockOffsets.size(); ++block) {
        const auto component = static_cast<std::size_t>(m_codes.blocks()[block]);
        if (m_tables[component].kept.last == 0) {
            decodeDc(window.data(), run, block);
        } else {
            decodeBlocks(window.data(), run, block);
        }
    }
}

} // namespace Platform
