#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/BlockScanner.h"
#include "Platform/ImageDecoder/ReducedJpeg/CoefficientDecoder.h"
#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"
#include "Platform/ImageDecoder/ReducedJpeg/McuCodes.h"
#include "Platform/ImageDecoder/ReducedJpeg/ScanData.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Task.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace Platform {

/// Decodes the coefficients of a scan that a small picture needs, on all threads of a team at once: a window of the data
/// is cut into segments, in each of which blocks are looked for, then what was found is joined, and then the values of
/// the blocks are decoded. Used by one thread.
class EntropyDecoder {
public:
    /// How the work is cut; what comes out does not depend on it.
    struct Cut {
        std::size_t windowBytes = std::size_t{512} * 1024; ///< of data read on at a time
        std::size_t segmentBytes = std::size_t{8} * 1024;
        int valuesPerBand = 256 * 1024; ///< more only where a row of MCUs has more
    };

    static constexpr std::size_t readableBeyond = 8; ///< values behind those of a band

    /// Rows of MCUs with their coefficients.
    struct Band {
        int mcuRows = 0;

        /// CoefficientDecoder::valuesPerMcu() of them for each MCU, DC coefficients included; readableBeyond more can be
        /// read. Valid until the next band.
        std::span<const qint16> values;
    };

    /// @param codes  those of the frame
    /// @param read   gives the data of its scan
    EntropyDecoder(const JpegFrame& frame, const McuCodes& codes, ScanData::Read read, ThreadTeam& team,
        const Task& task, const Cut& cut);

    const CoefficientDecoder& coefficients() const { return m_coefficients; }

    /// The next rows from the top; of 0 rows after the last, once the task is cancelled, or where the data are not what
    /// they should be.
    Band next();

    /// Whether all rows came, and the data ended with them.
    bool isFinished() const { return m_mcusTaken == m_mcus && !m_hasFailed; }

private:
    /// What comes of going on to the next MCU.
    enum class Outcome {
        Done,
        NeedsData, // the window ends too early
        Invalid,
    };

    // Finding blocks.
    bool findRows();
    void cutWindow();
    void cutInterval(quint64 begin, quint64 end);
    void scanWindow();
    bool joinSegments();
    Outcome goOn();
    Outcome moveToRestart();
    bool takeFromSegments();
    Outcome passMcu();
    bool endsWithData();
    int mcusToRestart() const;
    quint64 windowBits() const { return m_data.window().size() * 8; }

    // Decoding them.
    void decodeValues(int mcus);
    void sumUpDc(std::size_t run);
    void addDcBefore(std::size_t run);
    void carryDcOver();

    /// DC coefficients of a run, which are sums of differences from one MCU to the next.
    struct RunDc {
        int mcusToRestart = 0;          ///< from its first MCU; there the sum begins anew
        std::array<qint64, 3> before{}; ///< of each component, at its start
        std::array<qint64, 3> sum{};    ///< since its start or its last restart
    };

    const JpegFrame m_frame;
    const std::vector<int> m_blocks; // the component of each block of an MCU
    const int m_mcusPerRow;
    const int m_mcus;
    const Cut m_cut;
    const BlockScanner m_scanner;
    const CoefficientDecoder m_coefficients;
    ScanData m_data;
    ThreadTeam& m_team;
    const Task m_task;

    std::size_t m_toStage; // bytes
    std::vector<ScanSegment> m_segments;
    std::size_t m_segment = 0; // the first that may hold the next MCU
    std::size_t m_block = 0;   // and where in it
    quint64 m_position = 0;    // in bits of the window: where the MCUs found so far end
    std::vector<quint32>
        m_starts; // of the blocks of the MCUs from m_firstMcu up to m_mcusFound, and their end
    int m_firstMcu = 0;
    int m_mcusFound = 0;
    int m_mcusTaken = 0; // and returned
    bool m_hasFailed = false;

    std::vector<CoefficientDecoder::Run> m_runs;
    std::vector<RunDc> m_runDc;
    std::array<qint64, 3> m_dc{}; // at the end of the latest run
    std::vector<qint16> m_values;
};

} // namespace Platform
