#include "Platform/ImageDecoder/ImageDecoder.h"

#include "Platform/ImageDecoder/JpegPhoto.h"
#include "Platform/ImageDecoder/OtherPhoto.h"
#include "Platform/ImageDecoder/PhotoRendering.h"
#include "Platform/ImageDecoder/ReadOnlyFile.h"
#include "Platform/ImageDecoder/ThreadTeam.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace Platform {

namespace {

/// Why there is no picture, where the decoders themselves have no more to say.
Error failure(const ReadOnlyFile& file, const Task& task) {
    if (task.isCancelled()) {
        return Error(QStringLiteral("The decoding of “%1” was cancelled.").arg(displayText(file.name())));
    }
    if (file.errorCode() != 0) {
        return Error::ofSystemCall(QStringLiteral("“%1” could not be read"), file.name(), file.errorCode());
    }
    return Error(QStringLiteral("“%1” is not a picture that can be read.").arg(displayText(file.name())));
}

/// A picture as long as the bound may be smaller than its photo; one at the end of whose file the decoder wanted more
/// may lack its last rows.
Image::Origin origin(const QImage& pixels, int maxPixelSize, const ReadOnlyFile& file) {
    const bool isReduced = std::max(pixels.width(), pixels.height()) == maxPixelSize;
    return {.isReduced = isReduced, .isPartial = file.isExhausted()};
}

/// All cores for one photo, but no more threads than have something to do.
int teamSize(qint64 fileSize) {
    constexpr qint64 bytesPerThread = qint64{256} * 1024;
    return static_cast<int>(std::min<qint64>(ThreadTeam::availableCores(), 1 + fileSize / bytesPerThread));
}

Result<Image> decode(const FileURL& url, int maxPixelSize, const Task& task) {
    Result<ReadOnlyFile> opened = ReadOnlyFile::open(url);
    if (!opened) {
        return opened.error();
    }
    const auto file = std::make_shared<ReadOnlyFile>(std::move(*opened));
    ThreadTeam team(teamSize(file->size()));
    Result<QImage> pixels = decodeJpeg(*file, maxPixelSize, task, team);
    if (pixels && pixels->isNull() && !task.isCancelled() && file->errorCode() == 0) {
        pixels = decodeOther(file, maxPixelSize, task, team);
    }
    if (!pixels) {
        return pixels.error();
    }
    if (pixels->isNull()) {
        return failure(*file, task);
    }
    return Image(*pixels, origin(*pixels, maxPixelSize, *file), task);
}

} // namespace

Result<Image> decodeImage(const FileURL& url, int maxPixelSize, const Task& task) {
    try {
        return decode(url, maxPixelSize, task);
    } catch (const std::bad_alloc&) {
        return tooLittleMemoryError(url.lastPathComponent());
    }
}

} // namespace Platform
