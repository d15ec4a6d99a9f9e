#pragma once

#include "Platform/ImageDecoder/RowSource.h"
#include "Platform/ImageDecoder/ThreadTeam.h"

#include <QSize>
#include <QSizeF>

#include <vector>

namespace Platform {

/// Reduces a picture row by row, as its rows come in. Each direction is filtered by the Catmull-Rom cubic
/// (Keys, "Cubic Convolution Interpolation for Digital Image Processing", 1981, a = -1/2), stretched by the
/// ratio of the sizes so that nothing finer than the new pixels is left to alias. Used by one thread.
class RowResampler final : public RowSource {
public:
    /// @param source   rows of the picture; it outlives this object
    /// @param size     its size in pixels
    /// @param extent   the part of it, from the top left, that is the picture proper; at most a fraction of a
    ///                 pixel less than size where scaling while decoding left a part of a pixel at the edges
    /// @param reduced  the size to reduce to, in neither direction more than size
    /// @param team     shares the work; it outlives this object
    RowResampler(RowSource& source, QSize size, QSizeF extent, QSize reduced, ThreadTeam& team);

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override;

private:
    /// For each new pixel along one direction, which old ones it is made of and how much of each.
    struct Filter {
        Filter(int length, double extent, int reducedLength);

        int taps;                   ///< how many old pixels make a new one
        std::vector<int> first;     ///< for each new pixel, the first of them
        std::vector<float> weights; ///< for each new pixel, taps weights of sum 1
    };

    int rowsAtATime() const;
    int writeRows(uchar* rows, qsizetype bytesPerLine, int count);
    int readFor(int count);
    void filterColumns(int reducedRow, std::vector<float>& column) const;
    void filterRow(const std::vector<float>& column, uchar* row) const;

    RowSource& m_source;
    ThreadTeam& m_team;
    const int m_width;
    const Filter m_across;
    const Filter m_down;
    std::vector<uchar> m_rows; // of the source, from m_firstRow on up to m_rowsRead
    int m_firstRow = 0;
    int m_rowsRead = 0;
    int m_rowsWritten = 0;
    bool m_hasEnded = false;
};

} // namespace Platform
