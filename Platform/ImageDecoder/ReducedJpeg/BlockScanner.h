#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/McuCodes.h"
#include "Platform/Task.h"

#include <QtGlobal>

#include <array>
#include <atomic>
#include <memory>
#include <span>
#include <vector>

namespace Platform {

/// A piece of a scan in which MCUs are looked for. Positions are in bits from the start of the window.
struct ScanSegment {
    quint64 begin = 0; ///< where the search begins; the start of an MCU where that is known
    quint64 end = 0;   ///< it ends with the first MCU that begins here or later

    /// Where restart intervals begin in it, in bytes; empty where the MCUs up to there cannot be counted, since begin
    /// is not known to be one.
    std::span<const std::size_t> restarts;
    int mcusToRestart = 0; ///< from begin to the first of them

    std::vector<quint32> starts; ///< what was found: where each block begins, and where the last one ends
};

/// Finds where blocks begin in entropy-coded data, and decodes nothing: codes and their value bits are passed over
/// several at a time by table.
///
/// A search may begin anywhere. Huffman codes synchronise by themselves: after a few wrong blocks the search finds
/// right ones, which shows when it meets those that another search, from a known place, has found.
///
/// Immutable once made; any number of threads may use it.
class BlockScanner {
public:
    BlockScanner(const McuCodes& codes, int restartInterval);
    BlockScanner(const BlockScanner&) = delete;
    BlockScanner& operator=(const BlockScanner&) = delete;

    int blocksPerMcu() const { return static_cast<int>(m_places.size() / 2); }

    /// Finds the blocks of segments, taking one after the other as next counts up, four of them side by side: each
    /// look-up waits for the one before, so that one alone would leave most of a core idle. Takes no more of them once
    /// the task is cancelled.
    ///
    /// @param window  the data, which ScanData::padding follows
    void scan(std::span<const uchar> window, std::span<ScanSegment> segments, std::atomic<int>& next,
        const Task& task) const;

    /// Passes over the MCU at a position, and adds where its blocks begin.
    /// @return where it ends; 0 where it is not whole or not valid
    quint64 passMcu(std::span<const uchar> window, quint64 position, std::vector<quint32>& starts) const;

private:
    // For each window of bits, what the codes amount to that are in it from its first bit on: by how much they change
    // Walk::state.
    using Table = std::array<quint16, std::size_t{1} << HuffmanCode::windowBits>;

    // A place in the cycle of an MCU: the beginning of a block, or within it.
    struct Place {
        const quint16* table = nullptr;
        const Place* next[2] = {nullptr, nullptr}; // as long as the block goes on, and when it has ended
        const HuffmanCode* code = nullptr;
    };

    // A search under way: few and small variables, since four of them are to fit into the registers of a processor.
    struct Walk {
        quint64 state; // the position, and in the lowest eight bits how many coefficients have come
        const Place* place;
        quint64* starts;     // where the state at the beginning of the next block is to be written
        quint64* firstStart; // the first that counts
        const Place* firstPlace;

        quint64 position() const { return state >> 8; }
        quint32 count() const { return state & 0xff; }
    };
    class Lanes;

    static Table table(const HuffmanCode* dc, const HuffmanCode& ac);
    const quint16* shared(const Table& table);

    static void step(Walk& walk, const uchar* data);
    static Walk passCodes(Walk walk, const uchar* data);
    static Walk beginAt(quint64 position, quint64* starts, const Place* firstPlace);

    const int m_restartInterval; // in MCUs
    std::vector<Table> m_tables;
    std::vector<HuffmanCode> m_codes;
    std::vector<Place> m_places; // two for each block of an MCU
    Table m_idle{};              // passes over nothing
};

} // namespace Platform
