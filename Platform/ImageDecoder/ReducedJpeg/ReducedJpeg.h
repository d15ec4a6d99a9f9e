#pragma once

#include "Platform/ImageDecoder/ReducedJpeg/EntropyDecoder.h"
#include "Platform/ImageDecoder/ReducedJpeg/InverseTransform.h"
#include "Platform/ImageDecoder/ReducedJpeg/JpegFrame.h"
#include "Platform/ImageDecoder/ReducedJpeg/PixelRows.h"
#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/ImageDecoder/ThreadTeam.h"
#include "Platform/Task.h"

#include <vector>

namespace Platform {

/// The pixels of a frame at its scaled size, decoded by all threads of a team with the least work that it takes. Used by
/// one thread.
///
/// It decodes valid data only: where anything is not as it should be, the rows end early and libjpeg is to be asked, which
/// makes of damaged data what can be made of them.
class ReducedJpeg final : public RowSource {
public:
    /// The read function and the team outlive this object.
    ReducedJpeg(const JpegFrame& frame, const McuCodes& codes, ScanData::Read read, ThreadTeam& team,
        const Task& task, const EntropyDecoder::Cut& cut = EntropyDecoder::Cut());

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override;

    /// Whether the data were valid up to their end. All rows have been read then.
    bool isFinished() const { return m_entropy.isFinished(); }

private:
    /// The rows of a component that are decoded and may still be needed.
    struct Plane {
        std::vector<uchar> pixels;
        std::ptrdiff_t bytesPerLine = 0;
        int rowsPerMcu = 0;
        int firstRow = 0;
        int rows = 0;
    };

    bool decodeBand();
    void makeRoom(Plane& plane, int rows);
    void transformMcuRow(const EntropyDecoder::Band& band, int row);
    int rowsReady() const;

    const JpegFrame m_frame;
    ThreadTeam& m_team;
    EntropyDecoder m_entropy;
    const PixelRows m_pixelRows;
    std::vector<InverseTransform> m_transforms; // one for each component
    std::vector<Plane> m_planes;                // likewise
    int m_mcuRows = 0;                          // decoded
    int m_rowsRead = 0;
};

} // namespace Platform
