#include "Platform/ImageDecoder/ReducedJpeg/BlockScanner.h"

#include "Platform/ImageDecoder/ReducedJpeg/BitWindow.h"
#include "Platform/ImageDecoder/ReducedJpeg/ScanData.h"

#include <algorithm>
#include <limits>

namespace Platform {

namespace {

constexpr int windowBits = HuffmanCode::windowBits;

// The coefficients that a block still has are 64 at its beginning and then 63 to 1. Taking the coefficients away that codes
// stand for leaves 0 where they are the last. The code that ends a block early is taken for one of them, and adds this bit.
constexpr int endOfBlock = 0x80;

// This bit is there where the codes went beyond the end of the block: some were of the next.
constexpr quint64 tooFar = 0x40;

// Where the table cannot tell, it goes too far.
constexpr int unknown = blockCoefficients + 1;

// A code and its value bits.
constexpr quint64 mostBitsPerStep = HuffmanCode::longestCode + 15;

constexpr int zeroRun = 15; // with no value: sixteen zeros

bool endsBlock(quint8 symbol) {
    return (symbol & 0xf) == 0 && symbol >> 4 != zeroRun;
}

} // namespace

BlockScanner::Table BlockScanner::table(const HuffmanCode* dc, const HuffmanCode& ac) {
    Table entries;
    for (quint32 window = 0; window < entries.size(); ++window) {
        int length = 0;
        int coefficients = 0;
        bool hasEnded = false;
        while (length < windowBits && !hasEnded) {
            const bool isDc = dc && coefficients == 0;
            const quint32 rest = window << length & (entries.size() - 1);
            const HuffmanCode::Code code = (isDc ? *dc : ac).lookUpShort(rest);
            hasEnded = !isDc && endsBlock(code.symbol);
            const int count = isDc || hasEnded ? 1 : (code.symbol >> 4) + 1;
            if (code.length == 0 || length + code.length > windowBits ||
                (!hasEnded && coefficients + count >= blockCoefficients)) {
                hasEnded = false;
                break;
            }
            // The value bits of the last code may lie beyond the window.
            length += code.length + (hasEnded ? 0 : code.symbol & 0xf);
            coefficients += count;
        }
        const int taken = coefficients == 0 ? unknown : coefficients - (hasEnded ? endOfBlock : 0);
        entries[window] = static_cast<qint16>(length * 256 - taken);
    }
    return entries;
}

BlockScanner::BlockScanner(const McuCodes& codes, int restartInterval) : m_restartInterval(restartInterval) {
    const std::size_t blocks = codes.blocks().size();
    m_tables.reserve(2 * codes.components().size());
    m_codes.reserve(2 * codes.components().size());
    for (const McuCodes::Component& component : codes.components()) {
        m_tables.push_back(table(&component.dc, component.ac));
        m_tables.push_back(table(nullptr, component.ac));
        m_codes.push_back(component.dc);
        m_codes.push_back(component.ac);
    }
    m_places.resize(2 * blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        Place* const within = &m_places[2 * block + 1];
        const Place* const following = &m_places[2 * ((block + 1) % blocks)];
        for (const std::size_t part : {std::size_t{0}, std::size_t{1}}) {
            const std::size_t index = 2 * static_cast<std::size_t>(codes.blocks()[block]) + part;
            m_places[2 * block + part] = {m_tables[index].data(), {within, following}, &m_codes[index]};
        }
    }
}

/// A walk at a place that may be the beginning of an MCU.
BlockScanner::Walk BlockScanner::beginAt(quint64 position, quint32* starts, const Place* firstPlace) {
    *starts = static_cast<quint32>(position);
    return {position << 8 | blockCoefficients, firstPlace, starts + 1, starts, firstPlace};
}

// The way of a block must not be a matter of branches: each would be foreseen wrongly once a block, which costs more than
// the block itself. Only what is rare is branched to.
[[gnu::always_inline]] inline void BlockScanner::step(Walk& walk, const uchar* data) {
    const quint64 next =
        walk.state +
        static_cast<quint64>(qint64{walk.place->table[bitsAt(data, walk.position()) >> (64 - windowBits)]});
    if (next & tooFar) [[unlikely]] {
        walk = passOneCode(walk, data);
        return;
    }
    const quint64 left = next & 0xff;
    const quint64 hasEnded = (left | (left - 1)) >> 7 & 1;
    const quint64 whereEnded = 0 - hasEnded; // all bits or none: compilers make a branch of a condition
    *walk.starts = static_cast<quint32>(next >> 8);
    walk.starts += hasEnded;
    walk.place = walk.place->next[hasEnded];
    walk.state = next ^ ((left ^ blockCoefficients) & whereEnded);
}

/// Where there is no such code, the walk begins anew one bit further on, and what it found before does not count.
[[gnu::noinline]] BlockScanner::Walk BlockScanner::passOneCode(Walk walk, const uchar* data) {
    const bool isDc = walk.left() == blockCoefficients;
    const HuffmanCode::Code code =
        walk.place->code->lookUp(static_cast<quint32>(bitsAt(data, walk.position()) >> 48));
    const bool isEnd = !isDc && endsBlock(code.symbol);
    const quint32 coefficients = isDc ? 1 : (code.symbol >> 4) + 1U;
    if (code.length == 0 || (!isEnd && coefficients > walk.left())) {
        return beginAt(walk.position() + 1, walk.starts, walk.firstPlace);
    }
    const quint64 position = walk.position() + code.length + (isEnd ? 0 : code.symbol & 0xfU);
    const quint32 left = isEnd ? 0 : walk.left() - coefficients;
    const int hasEnded = left == 0 ? 1 : 0;
    if (hasEnded) {
        *walk.starts++ = static_cast<quint32>(position);
    }
    walk.state = position << 8 | (hasEnded ? blockCoefficients : left);
    walk.place = walk.place->next[hasEnded];
    return walk;
}

/// The searches that one thread makes side by side.
class BlockScanner::Lanes {
public:
    Lanes(const BlockScanner& scanner, std::span<const uchar> window, std::span<ScanSegment> segments,
        std::atomic<int>& next, const Task& task)
        : m_scanner(scanner),
          m_window(window),
          m_segments(segments),
          m_next(next),
          m_task(task),
          m_idlePlace{scanner.m_idle.data(), {&m_idlePlace, &m_idlePlace}, nullptr} {}

    void run() {
        Walk a = begin(0);
        Walk b = begin(1);
        Walk c = begin(2);
        Walk d = begin(3);
        const uchar* const data = m_window.data();
        while (m_active > 0) {
            for (int i = 0; i < stepsBetweenLooks; ++i) {
                step(a, data);
                step(b, data);
                step(c, data);
                step(d, data);
            }
            look(a, 0);
            look(b, 1);
            look(c, 2);
            look(d, 3);
        }
    }

private:
    static constexpr int stepsBetweenLooks = 16;

    struct Search {
        ScanSegment* segment = nullptr;
        quint64 limit = std::numeric_limits<quint64>::max(); // where the walk is to be looked at more closely
        std::size_t restart = 0;                             // the next of the segment's
        std::ptrdiff_t blocksToRestart = 0;                  // from the first
        std::unique_ptr<quint32[]> starts = std::make_unique<quint32[]>(1);
        std::size_t capacity = 1;
    };

    [[gnu::always_inline]] void look(Walk& walk, std::size_t lane) {
        if (walk.position() >= m_searches[lane].limit) [[unlikely]] {
            walk = lookClosely(walk, lane);
        }
    }

    Walk begin(std::size_t lane);
    [[gnu::noinline]] Walk lookClosely(const Walk& walk, std::size_t lane);
    Walk lookForRestart(const Walk& walk, std::size_t lane);
    Walk finish(const Walk& walk, std::size_t lane);
    quint64 limit(const Search& search) const;

    const BlockScanner& m_scanner;
    const std::span<const uchar> m_window;
    const std::span<ScanSegment> m_segments;
    std::atomic<int>& m_next;
    const Task& m_task;
    const Place m_idlePlace; // where a walk does not move
    std::array<Search, 4> m_searches;
    int m_active = 0;
};

BlockScanner::Walk BlockScanner::Lanes::begin(std::size_t lane) {
    Search& search = m_searches[lane];
    const auto index = static_cast<std::size_t>(m_next++);
    if (index >= m_segments.size() || m_task.isCancelled()) {
        search.limit = std::numeric_limits<quint64>::max();
        return {1, &m_idlePlace, search.starts.get(), search.starts.get(), &m_idlePlace};
    }
    ++m_active;
    ScanSegment& segment = m_segments[index];
    search.segment = &segment;
    search.restart = 0;
    search.limit = limit(search);
    search.blocksToRestart = std::ptrdiff_t{segment.mcusToRestart} * m_scanner.blocksPerMcu();
    // Each start is a bit further on at least.
    const std::size_t capacity = segment.end - segment.begin + stepsBetweenLooks * mostBitsPerStep + 2;
    if (search.capacity < capacity) {
        search.starts = std::make_unique_for_overwrite<quint32[]>(capacity);
        search.capacity = capacity;
    }
    return beginAt(segment.begin, search.starts.get(), m_scanner.m_places.data());
}

quint64 BlockScanner::Lanes::limit(const Search& search) const {
    const std::span<const std::size_t> restarts = search.segment->restarts;
    // The last MCU before a restart ends within the last byte.
    return search.restart < restarts.size() ? restarts[search.restart] * 8 - 7 : search.segment->end;
}

BlockScanner::Walk BlockScanner::Lanes::lookClosely(const Walk& walk, std::size_t lane) {
    const Search& search = m_searches[lane];
    return search.restart < search.segment->restarts.size() ? lookForRestart(walk, lane) : finish(walk, lane);
}

/// The walk has come to where a restart is near, and most likely beyond: then it goes back to that.
BlockScanner::Walk BlockScanner::Lanes::lookForRestart(const Walk& walk, std::size_t lane) {
    Search& search = m_searches[lane];
    const quint64 restart = search.segment->restarts[search.restart] * 8;
    const std::ptrdiff_t blocks = walk.starts - walk.firstStart - 1;
    const bool isBroken = walk.firstStart != search.starts.get();
    if (!isBroken && blocks < search.blocksToRestart && walk.position() <= restart) {
        return walk;
    }
    const quint64 end = blocks < search.blocksToRestart ? 0 : walk.firstStart[search.blocksToRestart];
    if (isBroken || end > restart || end + 8 <= restart) {
        return finish(walk, lane);
    }
    Walk next = beginAt(restart, walk.firstStart + search.blocksToRestart, m_scanner.m_places.data());
    next.firstStart = walk.firstStart;
    ++search.restart;
    search.blocksToRestart += std::ptrdiff_t{m_scanner.m_restartInterval} * m_scanner.blocksPerMcu();
    search.limit = limit(search);
    return next.position() >= search.segment->end ? finish(next, lane) : next;
}

BlockScanner::Walk BlockScanner::Lanes::finish(const Walk& walk, std::size_t lane) {
    m_searches[lane].segment->starts.assign(walk.firstStart, walk.starts);
    --m_active;
    return begin(lane);
}

void BlockScanner::scan(std::span<const uchar> window, std::span<ScanSegment> segments,
    std::atomic<int>& next, const Task& task) const {
    Lanes(*this, window, segments, next, task).run();
}

quint64 BlockScanner::passMcu(
    std::span<const uchar> window, quint64 position, std::vector<quint32>& starts) const {
    std::array<quint32, mostBlocksPerMcu + 2> found;
    Walk walk = beginAt(position, found.data(), m_places.data());
    const quint32* const end = found.data() + blocksPerMcu() + 1;
    while (walk.starts != end) {
        step(walk, window.data());
        if (walk.position() > window.size() * 8 || walk.firstStart != found.data()) {
            return 0;
        }
    }
    starts.insert(starts.end(), found.data(), found.data() + blocksPerMcu());
    return walk.position();
}

} // namespace Platform
