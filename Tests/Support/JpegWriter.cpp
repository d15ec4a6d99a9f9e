#include "Tests/Support/JpegWriter.h"

#include <QDataStream>
#include <QIODevice>

#include <jpeglib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <vector>

namespace {

enum TagType : quint16 { Ascii = 2, Short = 3, Long = 4 };

struct Tag {
    quint16 number;
    TagType type;
    quint32 count;
    quint32 value; // or where it is
};

/// An image file directory; next is where the following one begins, 0 for none.
void writeDirectory(QDataStream& out, const std::vector<Tag>& tags, quint32 next) {
    out << static_cast<quint16>(tags.size());
    for (const Tag& tag : tags) {
        out << tag.number << static_cast<quint16>(tag.type) << tag.count;
        if (tag.type == Short) {
            out << static_cast<quint16>(tag.value) << quint16(0);
        } else {
            out << tag.value;
        }
    }
    out << next;
}

quint32 directoryLength(std::size_t tags) {
    return static_cast<quint32>(2 + 12 * tags + 4);
}

/// What an APP1 segment of EXIF data holds: the picture's tags, and where they are wanted the
/// interoperability directory (reached through the EXIF directory) and the preview's.
QByteArray exif(const JpegOptions& options) {
    constexpr quint32 start = 8;
    const quint32 exifDirectory = start + directoryLength(2);
    const quint32 interoperability = exifDirectory + directoryLength(1);
    const quint32 previewDirectory = interoperability + directoryLength(1);
    const quint32 preview = previewDirectory + directoryLength(2);
    const quint32 index = options.isAdobeRgb ? 0x00333052 : 0x00383952; // "R03" or "R98"

    QByteArray bytes("Exif\0\0", 6);
    QDataStream out(&bytes, QIODevice::Append);
    out.setByteOrder(QDataStream::LittleEndian);
    out << quint16(0x4949) << quint16(42) << start;
    writeDirectory(out,
        {{0x0112, Short, 1, static_cast<quint32>(options.orientation)}, {0x8769, Long, 1, exifDirectory}},
        options.preview.isEmpty() ? 0 : previewDirectory);
    writeDirectory(out, {{0xa005, Long, 1, interoperability}}, 0);
    writeDirectory(out, {{0x0001, Ascii, 4, index}}, 0);
    writeDirectory(out,
        {{0x0201, Long, 1, preview}, {0x0202, Long, 1, static_cast<quint32>(options.preview.size())}}, 0);
    return bytes + options.preview;
}

/// One row as libjpeg takes it in.
std::vector<JSAMPLE> samples(const QImage& picture, int y, JpegOptions::Colors colors) {
    std::vector<JSAMPLE> row;
    const auto append = [&row](int value) { row.push_back(static_cast<JSAMPLE>(value)); };
    for (int x = 0; x < picture.width(); ++x) {
        const QRgb pixel = picture.pixel(x, y);
        if (colors == JpegOptions::Colors::Grey) {
            append(qGray(pixel));
            continue;
        }
        const bool areInks = colors == JpegOptions::Colors::Cmyk;
        const int light =
            areInks ? std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}) : 255; // that black leaves
        for (const int channel : {qRed(pixel), qGreen(pixel), qBlue(pixel)}) {
            append(light == 0 ? 255 : channel * 255 / light);
        }
        if (areInks) {
            append(light);
        }
    }
    return row;
}

/// The same symbols, the first of them with a code of one bit and the others with codes of sixteen.
void lengthenCodes(JHUFF_TBL& table) {
    const int symbols = std::accumulate(std::begin(table.bits) + 1, std::end(table.bits), 0);
    std::fill(std::begin(table.bits), std::end(table.bits), UINT8{0});
    table.bits[1] = 1;
    table.bits[16] = static_cast<UINT8>(symbols - 1);
}

void configureCoding(jpeg_compress_struct& jpeg, const JpegOptions& options) {
    jpeg_set_quality(&jpeg, options.quality, !options.hasLargeQuantisers);
    jpeg.arith_code = options.isArithmetic;
    jpeg.restart_interval = static_cast<unsigned>(options.restartInterval);
    jpeg.optimize_coding = options.hasOptimisedCodes;
    if (options.hasLongCodes) {
        for (const int table : {0, 1}) {
            lengthenCodes(*jpeg.dc_huff_tbl_ptrs[table]);
            lengthenCodes(*jpeg.ac_huff_tbl_ptrs[table]);
        }
    }
    if (options.colors == JpegOptions::Colors::YCbCr && !options.isSubsampled) {
        jpeg.comp_info[0].h_samp_factor = 1;
        jpeg.comp_info[0].v_samp_factor = 1;
    }
    for (std::size_t component = 0; component < options.factors.size(); ++component) {
        jpeg.comp_info[component].h_samp_factor = options.factors[component].horizontal;
        jpeg.comp_info[component].v_samp_factor = options.factors[component].vertical;
    }
}

void configure(jpeg_compress_struct& jpeg, const QImage& picture, const JpegOptions& options) {
    jpeg.image_width = static_cast<JDIMENSION>(picture.width());
    jpeg.image_height = static_cast<JDIMENSION>(picture.height());
    switch (options.colors) {
    case JpegOptions::Colors::Grey:
        jpeg.input_components = 1;
        jpeg.in_color_space = JCS_GRAYSCALE;
        break;
    case JpegOptions::Colors::YCbCr:
    case JpegOptions::Colors::Rgb:
        jpeg.input_components = 3;
        jpeg.in_color_space = JCS_RGB;
        break;
    case JpegOptions::Colors::Cmyk:
        jpeg.input_components = 4;
        jpeg.in_color_space = JCS_CMYK;
        break;
    }
    jpeg_set_defaults(&jpeg);
    if (options.colors == JpegOptions::Colors::Rgb) {
        jpeg_set_colorspace(&jpeg, JCS_RGB);
    }
    configureCoding(jpeg, options);
    if (options.isProgressive) {
        jpeg_simple_progression(&jpeg);
    }
}

void writeMetadata(jpeg_compress_struct& jpeg, const JpegOptions& options) {
    if (options.orientation != 0 || options.isAdobeRgb || !options.preview.isEmpty()) {
        const QByteArray segment = exif(options);
        jpeg_write_marker(&jpeg, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(segment.constData()),
            static_cast<unsigned>(segment.size()));
    }
    if (!options.iccProfile.isEmpty()) {
        jpeg_write_icc_profile(&jpeg, reinterpret_cast<const JOCTET*>(options.iccProfile.constData()),
            static_cast<unsigned>(options.iccProfile.size()));
    }
}

} // namespace

QByteArray jpegFile(const QImage& picture, const JpegOptions& options) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    unsigned char* content = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&jpeg, &content, &size);
    configure(jpeg, picture, options);
    jpeg_start_compress(&jpeg, TRUE);
    writeMetadata(jpeg, options);
    for (int y = 0; y < picture.height(); ++y) {
        std::vector<JSAMPLE> row = samples(picture, y, options.colors);
        JSAMPROW rows = row.data();
        jpeg_write_scanlines(&jpeg, &rows, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    QByteArray file(reinterpret_cast<const char*>(content), static_cast<qsizetype>(size));
    std::free(content);
    return file;
}

QByteArray withSize(QByteArray jpeg, quint16 width, quint16 height) {
    qsizetype marker = 2;
    const auto byte = [&jpeg](qsizetype at) { return static_cast<uchar>(jpeg.at(at)); };
    while (byte(marker + 1) < 0xc0 || byte(marker + 1) > 0xc2) {
        marker += 2 + byte(marker + 2) * 256 + byte(marker + 3);
    }
    for (const auto& [at, value] : {std::pair(marker + 5, height), std::pair(marker + 7, width)}) {
        jpeg[at] = static_cast<char>(value >> 8);
        jpeg[at + 1] = static_cast<char>(value & 0xff);
    }
    return jpeg;
}
