#pragma once

#include <QtGlobal>

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace Platform {

/// The entropy-coded data of a scan as one stream of bits, read on as it is used up: without the zeros that are stuffed
/// after each byte 0xff, and without the restart markers, whose places are noted. A window of it is in memory at a time. Used by one thread, but for stage().
class ScanData {
public:
    /// Reads on into the buffer; gives the number of bytes, 0 at the end of the file only.
    using Read = std::function<std::size_t(std::span<uchar> buffer)>;

    /// How far beyond the end of the window a decoder may read; it finds zeros there.
    static constexpr std::size_t padding = 512;

    explicit ScanData(Read read) : m_read(std::move(read)) {}

    /// Reads about that many bytes on, beside the window. Another thread may use the window meanwhile.
    void stage(std::size_t size);

    /// Drops the first bytes of the window and takes in what was staged.
    void advance(std::size_t consumed);

    /// The window. Valid until advance().
    std::span<const uchar> window() const { return {m_window.data() + m_begin, m_size}; }

    /// Where in the window restart intervals begin, in bytes, except the first of the scan.
    const std::vector<std::size_t>& restarts() const { return m_restarts; }

    /// How many restarts came before those.
    int restartsBefore() const { return m_restartsBefore; }

    /// Whether the window reaches to the end of the scan, and the end of the image follows. Known once it was tried to
    /// stage what follows.
    bool isComplete() const { return m_hasEnded && m_stagedSize == 0 && m_stagedRestarts.empty(); }

    /// The same, after reading on as far as it takes to know.
    bool endsWithWindow();

    /// Whether the file ends early, another marker follows than the end of the image, or restarts do not count up: not
    /// in what is staged, but in the window or where it ends.
    bool isBroken() const { return m_isBroken; }

private:
    void unstuff(std::span<const uchar> bytes);
    void meetMarker(uchar code);

    Read m_read;
    std::vector<uchar> m_window; // in it from m_begin on, and padding
    std::size_t m_begin = 0;
    std::size_t m_size = 0;
    std::vector<std::size_t> m_restarts;
    int m_restartsBefore = 0;
    bool m_isBroken = false;

    // What was staged and is not yet part of the window: behind room for what is kept of that.
    std::vector<uchar> m_raw;
    std::vector<uchar> m_staged;
    std::size_t m_stagedSize = 0;
    std::vector<std::size_t> m_stagedRestarts;
    bool m_isAfterFF = false; // the latest byte was 0xff, and what it means depends on the next
    bool m_hasEnded = false;
    bool m_hasBroken = false;
    int m_nextRestart = 0; // the number that the next restart marker carries
};

} // namespace Platform
