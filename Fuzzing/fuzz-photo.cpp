// Whole files of any format, decoded as the application does. The last byte, which counts for nothing after the end of a
// picture, says at which size.
#include "Fuzzing/MemoryFile.h"
#include "Platform/ImageDecoder/ImageDecoder.h"
#include "Platform/ImageDecoder/JpegDecompressor.h"
#include "Platform/ImageDecoder/OtherFormat.h"
#include "Platform/ImageDecoder/PhotoRendering.h"

#include <QBuffer>
#include <QImageReader>

#include <algorithm>
#include <cstdlib>

using namespace Platform;

namespace {

/// The size that a file says to have; empty for none.
QSize statedSize(const MemoryFile& file, QByteArray content) {
    if (content.startsWith("\xff\xd8")) {
        Result<ReadOnlyFile> opened = ReadOnlyFile::open(file.url());
        JpegDecompressor jpeg(*opened, Task());
        return jpeg.readHeader() ? jpeg.size() : QSize();
    }
    QBuffer buffer(&content);
    const QByteArray format =
        otherFormat(content.first(std::min<qsizetype>(content.size(), otherFormatBytes)));
    return format.isEmpty() ? QSize() : QImageReader(&buffer, format).size();
}

/// More pixels take too long to learn anything new from, but where they are so many that they are refused.
bool isWorthwhile(QSize size) {
    constexpr qint64 mostPixels = 1 << 20;
    return static_cast<qint64>(size.width()) * size.height() <= mostPixels || isTooLarge(size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const quint8* bytes, std::size_t size) {
    const MemoryFile file(bytes, size);
    const QByteArray content(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    if (size == 0 || !isWorthwhile(statedSize(file, content))) {
        return 0;
    }
    constexpr int sizes[] = {0, 8, 50, 200};
    const int maxPixelSize = sizes[bytes[size - 1] % 4];
    const auto image = decodeImage(file.url(), maxPixelSize);
    if (!image) {
        return 0;
    }
    const QImage& pixels = image->pixels();
    const bool isTooLong = maxPixelSize > 0 && std::max(pixels.width(), pixels.height()) > maxPixelSize;
    if (pixels.isNull() || pixels.format() != QImage::Format_RGB32 || isTooLong) {
        std::abort();
    }
    return 0;
}
