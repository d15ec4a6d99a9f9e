#pragma once

#include <QImage>
#include <QSize>

#include <vector>

namespace Platform {

/// A picture that is filled from the top row of the stored picture down, in bands of rows, and turned upright
/// on the way, so that there is never a second copy of it. Used by one thread.
class UprightImage {
public:
    /// Where the rows of a band are to be written.
    struct Band {
        uchar* rows;
        qsizetype bytesPerLine; ///< may be negative
        int count;
    };

    /// @param size         of the stored picture, in pixels
    /// @param orientation  how it is turned: 1 to 8 as EXIF numbers them
    UprightImage(QSize size, int orientation);

    /// Whether there was too little memory; nothing else may be called then.
    bool isNull() const { return m_image.isNull(); }

    /// The next rows, of count 0 after the last. Their pixels are undefined until they are written.
    Band band();

    /// Takes over the first rows of the latest band, count of them; the next band begins after these.
    void finishBand(int count);

    /// The upright picture, in QImage::Format_RGB32. Rows that were not filled are black.
    QImage take();

private:
    void fillWithBlack();

    const QSize m_size;
    QImage m_image;
    quint32* m_origin = nullptr; // where the stored picture's first pixel is in the upright one
    qsizetype m_stepAcross = 0;  // from there to the next in its row, in pixels
    qsizetype m_stepDown = 0;    // and to the first of its next row
    std::vector<quint32> m_rows; // a band still to be turned; empty where rows go straight into the picture
    int m_firstRow = 0;
};

} // namespace Platform
