#pragma once

#include <QByteArray>
#include <QImage>

#include <vector>

/// How a photo of the tests is written; the defaults are those of a plain camera photo without metadata.
struct JpegOptions {
    enum class Colors { Grey, YCbCr, Rgb, Cmyk };

    /// How many blocks of a component there are in an MCU.
    struct Factors {
        int horizontal;
        int vertical;
    };

    Colors colors =
        Colors::YCbCr; ///< Cmyk: inks as Adobe stores them, with as much black as the picture's colours allow
    bool isSubsampled = true;     ///< colour at half the resolution both ways (4:2:0)
    std::vector<Factors> factors; ///< of the components, which counts more; empty: as isSubsampled says
    int restartInterval = 0;      ///< in MCUs; 0: none
    bool hasOptimisedCodes = false;
    bool hasLongCodes = false;       ///< Huffman codes of 16 bits, but for one symbol of each table
    bool hasLargeQuantisers = false; ///< of 16 bits, where the quality is so low as to ask for them
    bool isProgressive = false;
    bool isArithmetic = false;
    int quality = 95;
    int orientation = 0;     ///< 1 to 8, or any other number to be written; 0: no such tag
    bool isAdobeRgb = false; ///< EXIF interoperability index R03
    QByteArray preview;      ///< a JPEG file, embedded in the EXIF data
    QByteArray iccProfile;
};

/// The bytes of a JPEG file of the picture.
QByteArray jpegFile(const QImage& picture, const JpegOptions& options = {});

/// The same file with other dimensions in its header.
QByteArray withSize(QByteArray jpeg, quint16 width, quint16 height);
