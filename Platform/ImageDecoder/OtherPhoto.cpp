#include "Platform/ImageDecoder/OtherPhoto.h"

#include "Platform/ImageDecoder/PhotoRendering.h"

#include <QColorSpace>
#include <QIODevice>
#include <QImageReader>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cstring>

namespace Platform {

namespace {

/// A file for Qt to read from. Not a QFile, which a plugin would map into memory; and it ends once the task
/// is cancelled, so that the plugin ends as well.
class FileDevice final : public QIODevice {
public:
    FileDevice(ReadOnlyFile& file, const Task& task) : m_file(file), m_task(task) {
        open(QIODevice::ReadOnly);
    }

    qint64 size() const override { return m_file.size(); }
    bool seek(qint64 position) override { return QIODevice::seek(position) && m_file.seek(position); }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        return m_task.isCancelled()
                   ? -1
                   : static_cast<qint64>(m_file.read(data, static_cast<std::size_t>(maxSize)));
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    ReadOnlyFile& m_file;
    const Task m_task;
};

/// The rows of a picture that is already in memory.
class ImageRows final : public RowSource {
public:
    ImageRows(const QImage& image, const Task& task) : m_image(image), m_task(task) {}

    int readRows(uchar* rows, qsizetype bytesPerLine, int count) override {
        const auto length = static_cast<std::size_t>(m_image.width()) * bytesPerPixel;
        int row = 0;
        for (; row < count && m_next < m_image.height() && !m_task.isCancelled(); ++row, ++m_next) {
            std::memcpy(rows + row * bytesPerLine, m_image.constScanLine(m_next), length);
        }
        return row;
    }

private:
    const QImage m_image;
    const Task m_task;
    int m_next = 0;
};

/// Qt refuses pictures of more than 128 MiB unless told otherwise, for the whole process. Here isTooLarge()
/// is asked first; what is left to Qt's own limit is a picture whose size it cannot tell before decoding.
void liftAllocationLimit() {
    constexpr int mostBytesPerPixel = 8;
    static const bool isLifted = [] {
        QImageReader::setAllocationLimit(static_cast<int>(maximumPixels * mostBytesPerPixel >> 20));
        return true;
    }();
    Q_UNUSED(isLifted);
}

/// Qt's JPEG plugin stands on the library that has already failed. Drawings and documents are no photos, and
/// how long they take is told by neither their size nor the file's.
bool isWanted(const QByteArray& format) {
    constexpr std::array<const char*, 5> unwanted{"jpeg", "jpg", "svg", "svgz", "pdf"};
    return std::ranges::none_of(unwanted, [&](const char* name) { return format == name; });
}

/// In QImage::Format_RGB32, transparent parts over black.
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

} // namespace

Result<QImage> decodeOther(ReadOnlyFile& file, int maxPixelSize, const Task& task, ThreadTeam& team) {
    liftAllocationLimit();
    FileDevice device(file, task);
    QImageReader reader(&device);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!device.seek(0) || !isWanted(reader.format())) {
        return QImage();
    }
    if (isTooLarge(reader.size())) {
        return tooLargeError(file.name());
    }
    QImage image = reader.read();
    const ColorTransform colors(ColorTransform::Pixels::Rgb, image.colorSpace().iccProfile());
    image = opaque(std::move(image));
    if (image.isNull() || task.isCancelled()) {
        return QImage();
    }
    ImageRows rows(image, task);
    const StoredPicture picture{rows, image.size(), QSizeF(image.size()), 1};
    return render(picture, fittedSize(image.size(), maxPixelSize), colors, file.name(), task, team);
}

} // namespace Platform
