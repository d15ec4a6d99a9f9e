#include "Platform/ImageDecoder/ReducedJpeg/ScanData.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace Platform {

namespace {

constexpr uchar markerPrefix = 0xff;
constexpr uchar firstRestart = 0xd0;
constexpr int restartNumbers = 8;
constexpr uchar endOfImage = 0xd9;

// Before what is staged, for what is kept of the window: the beginning of a row of MCUs most often.
constexpr std::size_t room = std::size_t{64} * 1024;

} // namespace

void ScanData::stage(std::size_t size) {
    if (m_hasEnded || m_hasBroken) {
        return;
    }
    m_raw.resize(size);
    m_staged.resize(std::max(m_staged.size(), room + m_stagedSize + size + 1 + padding));
    const std::size_t count = m_read(m_raw);
    unstuff(std::span(m_raw).first(count));
    m_hasBroken = m_hasBroken || (!m_hasEnded && count == 0);
}

bool ScanData::endsWithWindow() {
    constexpr std::size_t aMarker = 4096;
    while (!m_hasEnded && !m_hasBroken && m_stagedSize == 0 && m_stagedRestarts.empty()) {
        stage(aMarker);
    }
    return isComplete();
}

void ScanData::unstuff(std::span<const uchar> bytes) {
    const uchar* from = bytes.data();
    const uchar* const end = from + bytes.size();
    while (from != end && !m_hasEnded && !m_hasBroken) {
        if (m_isAfterFF) {
            const uchar code = *from++;
            m_isAfterFF = code == markerPrefix; // may be repeated
            if (code == 0) {
                m_staged[room + m_stagedSize++] = markerPrefix;
            } else if (code != markerPrefix) {
                meetMarker(code);
            }
            continue;
        }
        const auto left = static_cast<std::size_t>(end - from);
        const auto* const prefix = static_cast<const uchar*>(std::memchr(from, markerPrefix, left));
        const std::size_t count = prefix ? static_cast<std::size_t>(prefix - from) : left;
        std::memcpy(m_staged.data() + room + m_stagedSize, from, count);
        m_stagedSize += count;
        from += count;
        if (prefix) {
            ++from;
            m_isAfterFF = true;
        }
    }
}

void ScanData::meetMarker(uchar code) {
    if (code == endOfImage) {
        m_hasEnded = true;
    } else if (code == firstRestart + m_nextRestart) {
        m_nextRestart = (m_nextRestart + 1) % restartNumbers;
        m_stagedRestarts.push_back(m_stagedSize);
    } else {
        m_hasBroken = true;
    }
}

void ScanData::advance(std::size_t consumed) {
    const std::size_t kept = m_size - consumed;
    if (kept > room) {
        m_staged.insert(m_staged.begin(), kept - room, 0);
    }
    m_staged.resize(std::max(m_staged.size(), std::max(room, kept) + m_stagedSize + padding));
    const std::size_t begin = std::max(room, kept) - kept;
    std::copy_n(m_window.begin() + static_cast<std::ptrdiff_t>(m_begin + consumed), kept,
        m_staged.begin() + static_cast<std::ptrdiff_t>(begin));
    std::swap(m_window, m_staged);
    m_begin = begin;
    m_size = kept + m_stagedSize;
    std::memset(m_window.data() + m_begin + m_size, 0, padding);

    const auto firstKept = std::ranges::lower_bound(m_restarts, consumed);
    m_restartsBefore += static_cast<int>(firstKept - m_restarts.begin());
    m_restarts.erase(m_restarts.begin(), firstKept);
    for (std::size_t& restart : m_restarts) {
        restart -= consumed;
    }
    for (const std::size_t restart : m_stagedRestarts) {
        m_restarts.push_back(kept + restart);
    }
    m_stagedSize = 0;
    m_stagedRestarts.clear();
    m_isBroken = m_hasBroken;
}

} // namespace Platform
