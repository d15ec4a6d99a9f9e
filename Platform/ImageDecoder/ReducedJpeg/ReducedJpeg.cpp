#include "Platform/ImageDecoder/ReducedJpeg/ReducedJpeg.h"

#include <algorithm>
#include <utility>

namespace Platform {

namespace {

// Few enough for all threads to have some, and enough for the handing out not to count.
constexpr int rowsPerShare = 4;

static_assert(InverseTransform::readableBeyond <= EntropyDecoder::readableBeyond);

} // namespace

ReducedJpeg::ReducedJpeg(const JpegFrame& frame, const McuCodes& codes, ScanData::Read read, ThreadTeam& team,
    const Task& task, const EntropyDecoder::Cut& cut)
    : m_frame(frame),
      m_team(team),
      m_entropy(frame, codes, std::move(read), team, task, cut),
      m_pixelRows(frame) {
    for (const JpegComponent& component : frame.components) {
        m_transforms.emplace_back(component, frame.isLarge());
        Plane plane;
        plane.bytesPerLine =
            std::ptrdiff_t{frame.mcusPerRow()} * component.horizontalFactor * component.scaledBlockSize;
        plane.rowsPerMcu = component.verticalFactor * component.scaledBlockSize;
        m_planes.push_back(std::move(plane));
    }
}

int ReducedJpeg::readRows(uchar* rows, qsizetype bytesPerLine, int count) {
    const int first = m_rowsRead;
    const int end = std::min(first + count, m_frame.scaledSize.height());
    while (m_rowsRead < end) {
        const int ready = std::min(rowsReady(), end);
        if (ready == m_rowsRead) {
            if (!decodeBand()) {
                break;
            }
            continue;
        }
        const int from = m_rowsRead;
        const auto componentRow = [this](std::size_t component, int row) {
            const Plane& plane = m_planes[component];
            return plane.pixels.data() + (row - plane.firstRow) * plane.bytesPerLine;
        };
        m_team.forEach((ready - from + rowsPerShare - 1) / rowsPerShare, [&](int share) {
            const int begin = from + share * rowsPerShare;
            for (int row = begin; row < std::min(begin + rowsPerShare, ready); ++row) {
                m_pixelRows.write(
                    row, componentRow, reinterpret_cast<quint32*>(rows + (row - first) * bytesPerLine));
            }
        });
        m_rowsRead = ready;
    }
    return m_rowsRead - first;
}

/// The end of the rows for which all component rows are there.
int ReducedJpeg::rowsReady() const {
    if (m_mcuRows == m_frame.mcuRows()) {
        return m_frame.scaledSize.height();
    }
    const int rows = m_mcuRows * m_frame.maximumVerticalFactor() * m_frame.scaledBlockSize;
    return std::max(rows - (m_pixelRows.needsNeighbours() ? 1 : 0), 0);
}

bool ReducedJpeg::decodeBand() {
    const EntropyDecoder::Band band = m_entropy.next();
    if (band.mcuRows == 0) {
        return false;
    }
    for (Plane& plane : m_planes) {
        makeRoom(plane, band.mcuRows * plane.rowsPerMcu);
    }
    m_team.forEach(band.mcuRows, [&](int row) { transformMcuRow(band, row); });
    m_mcuRows += band.mcuRows;
    return true;
}

/// For so many more rows, after those that the next rows of pixels may still take.
void ReducedJpeg::makeRoom(Plane& plane, int rows) {
    const int kept = m_pixelRows.needsNeighbours() ? std::min(plane.rows, 2) : 0;
    const std::ptrdiff_t dropped = (plane.rows - kept) * plane.bytesPerLine;
    std::copy(plane.pixels.begin() + dropped, plane.pixels.begin() + dropped + kept * plane.bytesPerLine,
        plane.pixels.begin());
    plane.firstRow += plane.rows - kept;
    plane.rows = kept + rows;
    plane.pixels.resize(
        std::max(plane.pixels.size(), static_cast<std::size_t>(plane.rows * plane.bytesPerLine)));
}

void ReducedJpeg::transformMcuRow(const EntropyDecoder::Band& band, int row) {
    const CoefficientDecoder& coefficients = m_entropy.coefficients();
    const std::ptrdiff_t mcus = m_frame.mcusPerRow();
    std::size_t block = 0;
    for (std::size_t index = 0; index < m_planes.size(); ++index) {
        const JpegComponent& component = m_frame.components[index];
        const std::ptrdiff_t size = component.scaledBlockSize;
        Plane& plane = m_planes[index];
        const std::ptrdiff_t firstRow = plane.rows - std::ptrdiff_t{band.mcuRows - row} * plane.rowsPerMcu;
        for (int y = 0; y < component.verticalFactor; ++y) {
            for (int x = 0; x < component.horizontalFactor; ++x, ++block) {
                m_transforms[index].apply({
                    .values = band.values.data() + row * mcus * coefficients.valuesPerMcu() +
                              coefficients.blockOffsets()[block],
                    .valuesStep = coefficients.valuesPerMcu(),
                    .pixels = plane.pixels.data() + (firstRow + y * size) * plane.bytesPerLine + x * size,
                    .pixelsStep = component.horizontalFactor * size,
                    .bytesPerLine = plane.bytesPerLine,
                    .count = mcus,
                });
            }
        }
    }
}

} // namespace Platform
