#include "Platform/ImageDecoder/OtherPhoto.h"

#include "Platform/ImageDecoder/AbandonableThread.h"
#include "Platform/ImageDecoder/OtherFormat.h"
#include "Platform/ImageDecoder/PhotoRendering.h"

#include <QColorSpace>
#include <QIODevice>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace Platform {

namespace {

/// The most that a plugin may take for its picture, which it gives whole: 268 megapixels of 4 bytes.
constexpr qint64 maximumPictureBytes = qint64{1} << 30;

/// Far more than the largest allowed picture takes on a slow machine.
constexpr std::chrono::seconds maximumProcessorTime{20};

/// A file for Qt to read from. Not a QFile, which a plugin would map into memory; and it ends once the task
/// is cancelled, so that the plugin ends as well. It reads in larger pieces than a plugin asks for: on some disks each piece
/// takes its time, however small.
class FileDevice final : public QIODevice {
public:
    FileDevice(ReadOnlyFile& file, const Task& task) : m_file(file), m_task(task) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    qint64 size() const override { return m_file.size(); }
    bool seek(qint64 position) override {
        const qint64 place = position - m_start;
        if (place >= 0 && place <= m_filled) {
            m_next = place;
            return QIODevice::seek(position);
        }
        m_start = position;
        m_filled = m_next = 0;
        return QIODevice::seek(position) && m_file.seek(position);
    }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        qint64 read = 0;
        while (read < maxSize && !m_task.isCancelled() && (m_next < m_filled || fillBuffer())) {
            const qint64 count = std::min(m_filled - m_next, maxSize - read);
            std::copy_n(m_buffer.data() + m_next, count, data + read);
            m_next += count;
            read += count;
        }
        return m_task.isCancelled() ? -1 : read;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    bool fillBuffer() {
        if (m_start + m_filled >= m_file.size()) {
            return false; // to read on would make the file count as one that ends too early
        }
        m_start += m_filled;
        m_filled = static_cast<qint64>(m_file.read(m_buffer.data(), m_buffer.size()));
        m_next = 0;
        return m_filled > 0;
    }

    ReadOnlyFile& m_file;
    const Task m_task;
    std::vector<char> m_buffer = std::vector<char>(std::size_t{512} * 1024);
    qint64 m_start = -1; ///< of the buffer, in the file; there is none before the first seek
    qint64 m_filled = 0; ///< bytes in the buffer
    qint64 m_next = 0;   ///< of them, the first that was not asked for yet
};

/// What a plugin has read.
struct PluginPicture {
    QImage image;        ///< as stored; null where there is none
    int orientation = 1; ///< 1 to 8, as EXIF numbers them
};

/// A picture in QImage::Format_RGB32, transparent parts over black.
QImage opaque(QImage image) {
    if (image.hasAlphaChannel()) {
        image.convertTo(QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOver);
        painter.fillRect(image.rect(), Qt::black);
    }
    image.convertTo(QImage::Format_RGB32);
    return image;
}

/// The rows of a picture that is already in memory, made opaque as they are asked for.
class ImageRows final : public RowSource {
public:
    ImageRows(const QImage& image, const Task& task) : m_image(image), m_task(task) {}

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override {
        int read = 0;
        while (read < count) {
            const int more = readBand(rows + read * bytesPerLine, bytesPerLine, count - read);
            if (more == 0) {
                break;
            }
            read += more;
        }
        return read;
    }

private:
    /// Few rows, since those of a palette take many times their memory.
    int readBand(uchar* rows, qsizetype bytesPerLine, int count) {
        constexpr int mostRows = 32;
        count = m_task.isCancelled() ? 0 : std::min({count, mostRows, m_image.height() - m_next});
        const QImage band = opaque(m_image.copy(0, m_next, m_image.width(), count));
        if (count == 0 || band.isNull()) { // null: of too little memory
            return 0;
        }
        const auto length = static_cast<std::size_t>(m_image.width()) * bytesPerPixel;
        for (int row = 0; row < count; ++row) {
            std::memcpy(rows + row * bytesPerLine, band.constScanLine(row), length);
        }
        m_next += count;
        return count;
    }

    const QImage m_image;
    const Task m_task;
    int m_next = 0;
};

/// Qt's own limit is for the whole process and does for pictures whose size cannot be told before they are decoded.
void setAllocationLimit() {
    static const bool isSet = [] {
        QImageReader::setAllocationLimit(static_cast<int>(maximumPictureBytes >> 20));
        return true;
    }();
    Q_UNUSED(isSet);
}

bool isTooLarge(const QImageReader& reader) {
    constexpr int usualDepth = 32; // of the formats that do not say
    const QSize size = reader.size();
    const QImage::Format format = reader.imageFormat();
    const int depth =
        format == QImage::Format_Invalid ? usualDepth : QImage::toPixelFormat(format).bitsPerPixel();
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    return Platform::isTooLarge(size) || pixels * depth / 8 > maximumPictureBytes;
}

int exifOrientation(QImageIOHandler::Transformations transformation) {
    // As EXIF numbers them, what is to be done to the stored picture.
    constexpr std::array<int, 8> transformations{QImageIOHandler::TransformationNone,
        QImageIOHandler::TransformationMirror, QImageIOHandler::TransformationRotate180,
        QImageIOHandler::TransformationFlip, QImageIOHandler::TransformationFlipAndRotate90,
        QImageIOHandler::TransformationRotate90, QImageIOHandler::TransformationMirrorAndRotate90,
        QImageIOHandler::TransformationRotate270};
    const auto found = std::ranges::find(transformations, transformation.toInt());
    return found == transformations.end() ? 1 : 1 + static_cast<int>(found - transformations.begin());
}

/// By the plugin for the format that the content is in; no other gets to see it.
Result<PluginPicture> readByPlugin(ReadOnlyFile& file, const Task& task) {
    FileDevice device(file, task);
    const QByteArray format = device.seek(0) ? otherFormat(device.peek(otherFormatBytes)) : QByteArray();
    if (format.isEmpty()) {
        return PluginPicture();
    }
    QImageReader reader(&device, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(false);
    if (isTooLarge(reader)) {
        return tooLargeError(file.name());
    }
    PluginPicture picture;
    picture.orientation = exifOrientation(reader.transformation());
    picture.image = reader.read();
    return picture;
}

} // namespace

Result<QImage> decodeOther(
    const std::shared_ptr<ReadOnlyFile>& file, int maxPixelSize, const Task& task, ThreadTeam& team) {
    if (file->size() > ReadOnlyFile::maximumBytes) { // some plugins want all of it
        return QImage();
    }
    setAllocationLimit();
    const auto result = std::make_shared<std::optional<Result<PluginPicture>>>();
    const auto read = [file, result](const Task& own) {
        try {
            result->emplace(readByPlugin(*file, own));
        } catch (const std::bad_alloc&) {
            result->emplace(tooLittleMemoryError(file->name()));
        } catch (...) { // of foreign code
            result->emplace(PluginPicture());
        }
    };
    if (!runAbandonably(read, task, maximumProcessorTime)) {
        if (task.isCancelled()) {
            return QImage();
        }
        return Error(QStringLiteral("“%1” takes too long to be decoded.").arg(displayText(file->name())));
    }
    const Result<PluginPicture>& picture = **result;
    if (!picture) {
        return picture.error();
    }
    const QImage& image = picture->image;
    if (image.isNull()) {
        return QImage();
    }
    if (Platform::isTooLarge(image.size())) { // of a format that does not say before
        return tooLargeError(file->name());
    }
    ImageRows rows(image, task);
    const ColorTransform colors(ColorTransform::Pixels::Rgb, image.colorSpace().iccProfile());
    const StoredPicture stored{rows, image.size(), QSizeF(image.size()), picture->orientation};
    return render(stored, fittedSize(image.size(), maxPixelSize), colors, file->name(), task, team);
}

} // namespace Platform
