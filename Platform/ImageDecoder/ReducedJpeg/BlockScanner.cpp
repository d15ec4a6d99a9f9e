#include "Platform/ImageDecoder/ReducedJpeg/BlockScanner.h"

#include "Platform/ImageDecoder/ReducedJpeg/BitWindow.h"
#include "Platform/ImageDecoder/ReducedJpeg/ScanData.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace Platform {

namespace {

constexpr int windowBits = HuffmanCode::windowBits;

// The lowest eight bits of Walk::state count the coefficients of the block, 0 to 63; the code that ends a block early sets the
// highest of these bits.
constexpr int endOfBlock = 0x80;
constexpr quint64 countMask = 0xff;
constexpr quint64 hasEndedShift = 7;

// This bit comes about where the codes reach the last coefficient or go on beyond it: some may be of the next block.
constexpr quint64 lookAtEachCode = 0x40;

// In what was found, these lowest bits mark a place where a walk began anew.
constexpr quint64 brokenHere = 0xff;

// What a table says where it cannot tell.
constexpr int unknown = blockCoefficients;

// A code and its value bits.
constexpr quint64 mostBitsPerStep = HuffmanCode::longestCode + 15;

quint32 positionOf(quint64 state) {
    return static_cast<quint32>(state >> 8);
}

bool isBreak(quint64 state) {
    return (state & countMask) == brokenHere;
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
            const int count = isDc ? 1 : (code.symbol >> 4) + 1;
            const bool isEnd = !isDc && endsBlock(code.symbol);
            if (code.length == 0 || length + code.length > windowBits ||
                (!isEnd && coefficients + count >= blockCoefficients)) {
                break;
            }
            // The value bits of the last code may lie beyond the window.
            length += code.length + (isEnd ? 0 : code.symbol & 0xf);
            coefficients += isEnd ? 0 : count;
            hasEnded = isEnd;
        }
        const int counted = length == 0 ? unknown : coefficients + (hasEnded ? endOfBlock : 0);
        entries[window] = static_cast<quint16>(length << 8 | counted);
    }
    return entries;
}

/// Components of the same codes have one table: the fewer there are, the nearer to the processor they stay.
const quint16* BlockScanner::shared(const Table& table) {
    const auto same = std::ranges::find(m_tables, table);
    return (same != m_tables.end() ? *same : m_tables.emplace_back(table)).data();
}

BlockScanner::BlockScanner(const McuCodes& codes, int restartInterval) : m_restartInterval(restartInterval) {
    const std::size_t blocks = codes.blocks().size();
    m_tables.reserve(2 * codes.components().size());
    m_codes.reserve(2 * codes.components().size());
    std::vector<const quint16*> tables;
    for (const McuCodes::Component& component : codes.components()) {
        tables.push_back(shared(table(&component.dc, component.ac)));
        tables.push_back(shared(table(nullptr, component.ac)));
        m_codes.push_back(component.dc);
        m_codes.push_back(component.ac);
    }
    m_places.resize(2 * blocks);
    for (std::size_t block = 0; block < blocks; ++block) {
        Place* const within = &m_places[2 * block + 1];
        const Place* const following = &m_places[2 * ((block + 1) % blocks)];
        for (const std::size_t part : {std::size_t{0}, std::size_t{1}}) {
            const std::size_t index = 2 * static_cast<std::size_t>(codes.blocks()[block]) + part;
            m_places[2 * block + part] = {tables[index], {within, following}, &m_codes[index]};
        }
    }
}

/// A walk at a place that may be the beginning of an MCU.
BlockScanner::Walk BlockScanner::beginAt(quint64 position, quint64* starts, const Place* firstPlace) {
    *starts = position << 8;
    return {position << 8, firstPlace, starts + 1, starts, firstPlace};
}

// The way of a block must not be a matter of branches: each would be foreseen wrongly once a block, which costs more than
// the block itself. Only what is rare is branched to.
[[gnu::always_inline]] inline void BlockScanner::step(Walk& walk, const uchar* data) {
    const quint64 next = walk.state + walk.place->table[bitsAt(data, walk.position()) >> (64 - windowBits)];
    if (next & lookAtEachCode) [[unlikely]] {
        walk = passCodes(walk, data);
        return;
    }
    const quint64 hasEnded = next >> hasEndedShift & 1;
    const quint64 whereEnded = 0 - hasEnded; // all bits or none: compilers make a branch of a condition
    *walk.starts = next;
    walk.starts += hasEnded;
    walk.place = walk.place->next[hasEnded];
    walk.state = next - (next & countMask & whereEnded);
}

/// Passes over one code, and where that is not the end of the block but near it, over those up to there. Where there is no such
/// code, the walk begins anew one bit further on, and what it found before does not count.
[[gnu::noinline]] BlockScanner::Walk BlockScanner::passCodes(Walk walk, const uchar* data) {
    while (true) {
        const quint64 bits = bitsAt(data, walk.position());
        const bool isLong = (walk.place->table[bits >> (64 - windowBits)] & countMask) == unknown;
        const bool isDc = walk.count() == 0;
        const HuffmanCode::Code code = walk.place->code->lookUp(static_cast<quint32>(bits >> 48));
        const bool isEnd = !isDc && endsBlock(code.symbol);
        const quint32 count = isEnd ? blockCoefficients : walk.count() + (isDc ? 1 : (code.symbol >> 4) + 1U);
        if (code.length == 0 || count > blockCoefficients) {
            const Walk anew = beginAt(walk.position() + 1, walk.starts, walk.firstPlace);
            *anew.firstStart |= brokenHere;
            return anew;
        }
        const bool hasEnded = count == blockCoefficients;
        const quint64 position = walk.position() + code.length + (isEnd ? 0 : code.symbol & 0xfU);
        walk.state = position << 8 | (hasEnded ? 0 : count);
        walk.place = walk.place->next[hasEnded ? 1 : 0];
        if (hasEnded) {
            *walk.starts++ = walk.state;
        }
        if (hasEnded || isLong) {
            return walk;
        }
    }
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
        std::ptrdiff_t blocksVerified = 0;                   // likewise, up to the restart before
        std::unique_ptr<quint64[]> starts = std::make_unique<quint64[]>(1);
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
        return {0, &m_idlePlace, search.starts.get(), search.starts.get(), &m_idlePlace};
    }
    ++m_active;
    ScanSegment& segment = m_segments[index];
    search.segment = &segment;
    search.restart = 0;
    search.limit = limit(search);
    search.blocksToRestart = std::ptrdiff_t{segment.mcusToRestart} * m_scanner.blocksPerMcu();
    search.blocksVerified = 0;
    // Each start is a bit further on at least.
    const std::size_t capacity = segment.end - segment.begin + stepsBetweenLooks * mostBitsPerStep + 2;
    if (search.capacity < capacity) {
        search.starts = std::make_unique_for_overwrite<quint64[]>(capacity);
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

/// The walk has come to where a restart is near, and most likely beyond: then it goes back to that. What it found beyond does
/// not count, and nor does what it found before where that does not end with the restart.
BlockScanner::Walk BlockScanner::Lanes::lookForRestart(const Walk& walk, std::size_t lane) {
    Search& search = m_searches[lane];
    quint64* const first = search.starts.get();
    const quint64 restart = search.segment->restarts[search.restart] * 8;
    const bool areEnough = walk.starts - first > search.blocksToRestart;
    if (!areEnough && walk.position() <= restart) {
        return walk;
    }
    Walk verified = walk;
    verified.firstStart = first;
    verified.starts = first + search.blocksVerified + 1;
    quint64* const end = first + search.blocksToRestart;
    const bool isBroken =
        !areEnough || (walk.firstStart != first && std::any_of(verified.starts, end + 1, &isBreak));
    if (isBroken || positionOf(*end) > restart || positionOf(*end) + 8 <= restart) {
        return finish(verified, lane);
    }
    Walk next = beginAt(restart, end, m_scanner.m_places.data());
    next.firstStart = first;
    ++search.restart;
    search.blocksVerified = search.blocksToRestart;
    search.blocksToRestart += std::ptrdiff_t{m_scanner.m_restartInterval} * m_scanner.blocksPerMcu();
    search.limit = limit(search);
    return next.position() >= search.segment->end ? finish(next, lane) : next;
}

BlockScanner::Walk BlockScanner::Lanes::finish(const Walk& walk, std::size_t lane) {
    std::vector<quint32>& starts = m_searches[lane].segment->starts;
    starts.resize(static_cast<std::size_t>(walk.starts - walk.firstStart));
    std::transform(walk.firstStart, walk.starts, starts.begin(), &positionOf);
    --m_active;
    return begin(lane);
}

void BlockScanner::scan(std::span<const uchar> window, std::span<ScanSegment> segments,
    std::atomic<int>& next, const Task& task) const {
    Lanes(*this, window, segments, next, task).run();
}

quint64 BlockScanner::passMcu(
    std::span<const uchar> window, quint64 position, std::vector<quint32>& starts) const {
    std::array<quint64, mostBlocksPerMcu + 2> found;
    Walk walk = beginAt(position, found.data(), m_places.data());
    const quint64* const end = found.data() + blocksPerMcu() + 1;
    while (walk.starts != end) {
        step(walk, window.data());
        if (walk.position() > window.size() * 8 || walk.firstStart != found.data()) {
            return 0;
        }
    }
    std::transform(found.data(), found.data() + blocksPerMcu(), std::back_inserter(starts), &positionOf);
    return walk.position();
}

} // namespace Platform
