#include "Platform/ImageDecoder/ReducedJpeg/EntropyDecoder.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <utility>

namespace Platform {

namespace {

constexpr int mcusPerRun = 64;

// A row of MCUs that needs more is left to others. Those of photos need some hundreds of kilobytes at the most; and each byte may
// take sixteen times its size, for the places where blocks begin.
constexpr std::size_t maximumWindow = std::size_t{2} << 20;

// Codes and values of the largest MCU that there can be.
constexpr quint64 mostBitsPerMcu =
    quint64{mostBlocksPerMcu} * blockCoefficients * (HuffmanCode::longestCode + 15);

// libjpeg gives up on more.
constexpr qint64 largestDc = std::numeric_limits<qint32>::max();

} // namespace

EntropyDecoder::EntropyDecoder(const JpegFrame& frame, const McuCodes& codes, ScanData::Read read,
    ThreadTeam& team, const Task& task, const Cut& cut)
    : m_frame(frame),
      m_blocks(codes.blocks()),
      m_mcusPerRow(frame.mcusPerRow()),
      m_mcus(frame.mcusPerRow() * frame.mcuRows()),
      m_cut(cut),
      m_scanner(codes, frame.restartInterval),
      m_coefficients(codes, frame),
      m_data(std::move(read)),
      m_team(team),
      m_task(task),
      m_toStage(cut.windowBytes) {
    m_data.stage(m_toStage);
}

EntropyDecoder::Band EntropyDecoder::next() {
    const auto rowsFound = [this] { return (m_mcusFound - m_mcusTaken) / m_mcusPerRow; };
    if (m_hasFailed || m_mcusTaken == m_mcus || (rowsFound() == 0 && !findRows())) {
        return {};
    }
    const int valuesPerRow = m_mcusPerRow * m_coefficients.valuesPerMcu();
    const int rows = std::clamp(m_cut.valuesPerBand / valuesPerRow, 1, rowsFound());
    decodeValues(rows * m_mcusPerRow);
    if (m_hasFailed || m_task.isCancelled()) {
        return {};
    }
    m_mcusTaken += rows * m_mcusPerRow;
    const auto count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(valuesPerRow);
    return {rows, std::span<const qint16>(m_values).first(count)};
}

/// Reads on until at least one more row of MCUs has been found whole. What was found of it before is found once more.
bool EntropyDecoder::findRows() {
    if (!m_starts.empty()) {
        m_position = m_starts[static_cast<std::size_t>(m_mcusTaken - m_firstMcu) * m_blocks.size()];
    }
    do {
        m_data.advance(static_cast<std::size_t>(m_position >> 3));
        m_position &= 7;
        m_firstMcu = m_mcusFound = m_mcusTaken;
        m_starts.clear();
        m_hasFailed = m_data.isBroken() || m_data.window().size() > maximumWindow || !joinSegments();
        if (m_hasFailed || m_task.isCancelled()) {
            return false;
        }
        m_starts.push_back(static_cast<quint32>(m_position));
        m_position = m_starts.front();
    } while (m_mcusFound - m_mcusTaken < m_mcusPerRow);
    return true;
}

int EntropyDecoder::mcusToRestart() const {
    return m_frame.restartInterval - m_mcusFound % m_frame.restartInterval;
}

/// Cuts the window from the present position on into segments.
void EntropyDecoder::cutWindow() {
    m_segment = 0;
    m_block = 0;
    quint64 begin = m_position;
    if (m_frame.restartInterval != 0) {
        const std::span<const std::size_t> restarts = m_data.restarts();
        const quint64 length = m_cut.segmentBytes * 8;
        int mcus = mcusToRestart();
        auto next = static_cast<std::size_t>(m_mcusFound / m_frame.restartInterval - m_data.restartsBefore());
        // One that comes too early ends what can be found.
        for (; next < restarts.size() && restarts[next] * 8 > begin; mcus = m_frame.restartInterval) {
            std::size_t end = next + 1;
            while (end < restarts.size() && restarts[end] * 8 <= begin + length) {
                ++end;
            }
            // To search even a long interval from its known beginning saves the joining.
            if (restarts[next] * 8 > begin + 6 * length) {
                cutInterval(begin, restarts[next] * 8);
            } else {
                m_segments.push_back(
                    {begin, restarts[end - 1] * 8, restarts.subspan(next, end - next), mcus, {}});
            }
            begin = m_segments.back().end;
            next = restarts[next] * 8 == begin ? next + 1 : end;
        }
    }
    cutInterval(begin, windowBits());
}

/// Cuts data without restarts. A segment goes on a little beyond where the next begins: there most searches have come
/// to the right way, which costs less to find by searching on than by passing over MCUs one by one in the end.
void EntropyDecoder::cutInterval(quint64 begin, quint64 end) {
    const quint64 overlap = m_cut.segmentBytes * 8 / 32;
    while (begin < end) {
        const quint64 next = std::min<quint64>((begin / 8 + m_cut.segmentBytes) * 8, end);
        m_segments.push_back({begin, std::min(next + overlap, end), {}, 0, {}});
        begin = next;
    }
}

/// Looks for blocks in all segments, and reads on meanwhile.
void EntropyDecoder::scanWindow() {
    std::atomic<int> next = 0;
    std::atomic_flag isReading;
    m_team.run([&] {
        if (!isReading.test_and_set()) {
            m_data.stage(m_toStage);
        }
        m_scanner.scan(m_data.window(), m_segments, next, m_task);
    });
}

/// Finds the MCUs of the window from the present position on: each in the segments where a search came upon the place
/// where the one before ends, else by passing over it here.
/// @return whether the data are valid
bool EntropyDecoder::joinSegments() {
    Outcome outcome = moveToRestart();
    m_segments.clear();
    if (outcome == Outcome::Done) {
        cutWindow();
    }
    scanWindow();
    while (outcome == Outcome::Done && m_mcusFound < m_mcus && !m_task.isCancelled()) {
        outcome = goOn();
    }
    if (m_mcusFound == m_mcus) {
        return endsWithData();
    }
    m_toStage = m_mcusFound - m_mcusTaken < m_mcusPerRow ? m_toStage * 2 : m_cut.windowBytes;
    return outcome == Outcome::NeedsData && !m_data.isComplete();
}

EntropyDecoder::Outcome EntropyDecoder::goOn() {
    const Outcome outcome = moveToRestart();
    if (outcome != Outcome::Done) {
        return outcome;
    }
    return takeFromSegments() ? Outcome::Done : passMcu();
}

/// Where a restart interval ends, goes on to the next.
EntropyDecoder::Outcome EntropyDecoder::moveToRestart() {
    const int interval = m_frame.restartInterval;
    if (interval == 0 || m_mcusFound == 0 || m_mcusFound % interval != 0) {
        return Outcome::Done;
    }
    const auto index = static_cast<std::size_t>(m_mcusFound / interval - 1 - m_data.restartsBefore());
    if (index >= m_data.restarts().size()) {
        return Outcome::NeedsData;
    }
    const quint64 restart = m_data.restarts()[index] * 8;
    if (m_position > restart || m_position + 8 <= restart) {
        return Outcome::Invalid;
    }
    m_position = restart;
    return Outcome::Done;
}

/// Takes over the MCUs that a search found from the present position on. False where none did.
bool EntropyDecoder::takeFromSegments() {
    const std::size_t blocks = m_blocks.size();
    for (; m_segment < m_segments.size(); ++m_segment, m_block = 0) {
        const std::vector<quint32>& starts = m_segments[m_segment].starts;
        while (m_block < starts.size() && starts[m_block] < m_position) {
            m_block += blocks;
        }
        if (m_block + blocks >= starts.size()) {
            continue; // not a whole MCU is left there
        }
        if (starts[m_block] != m_position) {
            return false;
        }
        auto mcus = static_cast<int>((starts.size() - 1 - m_block) / blocks);
        while (mcus > 0 && starts[m_block + static_cast<std::size_t>(mcus) * blocks] > windowBits()) {
            --mcus;
        }
        mcus = std::min(mcus, m_mcus - m_mcusFound);
        if (m_frame.restartInterval != 0 && m_segments[m_segment].restarts.empty()) {
            mcus = std::min(mcus, mcusToRestart());
        }
        const auto first = starts.begin() + static_cast<std::ptrdiff_t>(m_block);
        const std::ptrdiff_t count = mcus * std::ssize(m_blocks);
        m_starts.insert(m_starts.end(), first, first + count);
        m_position = first[count];
        m_mcusFound += mcus;
        m_block += static_cast<std::size_t>(count);
        return mcus > 0;
    }
    return false;
}

EntropyDecoder::Outcome EntropyDecoder::passMcu() {
    const quint64 end = m_scanner.passMcu(m_data.window(), m_position, m_starts);
    if (end == 0) {
        const bool mayBeCutOff = m_position + mostBitsPerMcu > windowBits() && !m_data.isComplete();
        return mayBeCutOff ? Outcome::NeedsData : Outcome::Invalid;
    }
    m_position = end;
    ++m_mcusFound;
    return Outcome::Done;
}

/// Whether nothing follows but the bits that fill the last byte.
bool EntropyDecoder::endsWithData() {
    const int interval = m_frame.restartInterval;
    const int restarts = m_data.restartsBefore() + static_cast<int>(m_data.restarts().size());
    return m_data.endsWithWindow() && m_position + 8 > windowBits() &&
           restarts == (interval == 0 ? 0 : (m_mcus - 1) / interval);
}

/// Decodes that many of the MCUs found that are not yet taken.
void EntropyDecoder::decodeValues(int mcus) {
    const int valuesPerMcu = m_coefficients.valuesPerMcu();
    m_values.resize(std::max(m_values.size(),
        static_cast<std::size_t>(mcus) * static_cast<std::size_t>(valuesPerMcu) + readableBeyond));
    m_runs.clear();
    m_runDc.clear();
    for (int mcu = 0; mcu < mcus; mcu += mcusPerRun) {
        const int before = m_mcusTaken + mcu;
        const quint32* const starts = m_starts.data() + (before - m_firstMcu) * std::ssize(m_blocks);
        m_runs.push_back({starts, std::min(mcusPerRun, mcus - mcu),
            m_values.data() + static_cast<std::ptrdiff_t>(mcu) * valuesPerMcu});
        const int interval = m_frame.restartInterval;
        m_runDc.push_back({interval == 0 ? m_mcus : (interval - before % interval) % interval, {}, {}});
    }
    const auto runs = static_cast<int>(m_runs.size());
    m_team.forEach(runs, [this](int run) {
        if (!m_task.isCancelled()) {
            m_coefficients.decode(m_data.window(), m_runs[static_cast<std::size_t>(run)]);
            sumUpDc(static_cast<std::size_t>(run));
        }
    });
    carryDcOver();
    m_team.forEach(runs, [this](int run) { addDcBefore(static_cast<std::size_t>(run)); });
}

/// Sums up the differences from the run's start, and anew from each restart.
void EntropyDecoder::sumUpDc(std::size_t run) {
    RunDc& dc = m_runDc[run];
    qint16* values = m_runs[run].values;
    int toRestart = dc.mcusToRestart;
    for (int mcu = 0; mcu < m_runs[run].mcus; ++mcu, --toRestart) {
        if (toRestart == 0) {
            dc.sum = {};
            toRestart = m_frame.restartInterval;
        }
        for (std::size_t block = 0; block < m_blocks.size(); ++block) {
            qint16& value = values[m_coefficients.blockOffsets()[block]];
            value = static_cast<qint16>(dc.sum[static_cast<std::size_t>(m_blocks[block])] += value);
        }
        values += m_coefficients.valuesPerMcu();
    }
}

/// Hands the sums on from run to run.
void EntropyDecoder::carryDcOver() {
    for (std::size_t run = 0; run < m_runs.size(); ++run) {
        RunDc& dc = m_runDc[run];
        const bool beginsAnew = dc.mcusToRestart < m_runs[run].mcus;
        for (std::size_t component = 0; component < m_dc.size(); ++component) {
            dc.before[component] = m_dc[component];
            m_dc[component] = dc.sum[component] + (beginsAnew ? 0 : m_dc[component]);
            m_hasFailed = m_hasFailed || std::abs(m_dc[component]) > largestDc;
        }
    }
}

void EntropyDecoder::addDcBefore(std::size_t run) {
    const RunDc& dc = m_runDc[run];
    qint16* values = m_runs[run].values;
    const int mcus = std::min(m_runs[run].mcus, dc.mcusToRestart);
    for (int mcu = 0; mcu < mcus; ++mcu) {
        for (std::size_t block = 0; block < m_blocks.size(); ++block) {
            qint16& value = values[m_coefficients.blockOffsets()[block]];
            value = static_cast<qint16>(value + dc.before[static_cast<std::size_t>(m_blocks[block])]);
        }
        values += m_coefficients.valuesPerMcu();
    }
}

} // namespace Platform
