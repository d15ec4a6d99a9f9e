#include "Tests/Soak/SoakPhotos.h"

#include "Benchmarks/DrawnPhotos.h"
#include "Benchmarks/PhotoFolder.h"
#include "Tests/EndToEnd/ScreenReading.h"
#include "Tests/Support/Pictures.h"

#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <array>
#include <filesystem>

namespace {

static_assert(SoakPhotos::different <= readablePhotoCount);

bool isPortrait(int photo) {
    return photo % SoakPhotos::different % 5 == 3;
}

/// All of one shape, and none smaller than the application's larger pictures: so these take the same memory whichever
/// photos they are of.
QSize sizeOf(int photo) {
    constexpr std::array widths = {6000, 1500, 2400, 3000, 1800, 3600, 1200};
    const int width = widths[static_cast<std::size_t>(photo) % widths.size()];
    return {width, width * 2 / 3};
}

QImage drawn(int photo, const QImage& photograph) {
    QImage picture = photograph.scaled(sizeOf(photo), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (isPortrait(photo)) {
        picture = picture.transformed(QTransform().rotate(90));
    }
    QPainter painter(&picture);
    painter.fillRect(QRect(0, picture.height() / 4, picture.width(), picture.height() / 10), // the stripe
        readablePhotoColor(photo));
    return picture;
}

std::unique_ptr<PhotoFolder> makeFolder(int count) {
    const QTemporaryDir originals;
    const QImage photograph = drawPhotograph(1);
    std::vector<std::filesystem::path> files;
    for (int photo = 0; photo < SoakPhotos::different; ++photo) {
        files.push_back(originals.filePath(QString::number(photo)).toStdString());
        writePhoto(files.back(), drawn(photo, photograph), cameraFormat());
    }
    return std::make_unique<PhotoFolder>(files, count);
}

/// The colour of the stamp's border over another.
QColor stamped(const QColor& under, Verdict verdict) {
    constexpr double opacity = 0.6;
    const QColor stamp = verdict == Verdict::Approved ? QColor(0x30, 0xd1, 0x58) : QColor(0xff, 0x5a, 0x50);
    const auto mix = [&](int over, int below) { return qRound(over * opacity + below * (1 - opacity)); };
    return verdict == Verdict::None ? under
                                    : QColor(mix(stamp.red(), under.red()), mix(stamp.green(), under.green()),
                                          mix(stamp.blue(), under.blue()));
}

} // namespace

SoakPhotos::SoakPhotos(int count) : m_count(count), m_folder(makeFolder(count)) {}

SoakPhotos::~SoakPhotos() = default;

Platform::FileURL SoakPhotos::folder() const {
    return m_folder->url();
}

std::string SoakPhotos::name(int photo) const {
    return m_folder->path(photo).filename();
}

void SoakPhotos::putBack(const std::string& subfolder) const {
    const std::filesystem::path folder = m_folder->url().path();
    for (const auto& entry : std::filesystem::directory_iterator(folder / subfolder)) {
        std::filesystem::rename(entry.path(), folder / entry.path().filename());
    }
}

/// From the middle of the stamp's border to the middle of the photo, at a height where the stripe of every photo is, and
/// neither a panel nor the stamp's word.
QRect SoakPhotos::readPart(QSize window) {
    constexpr int border = 8;
    return {border, window.height() * 31 / 100, window.width() / 2 - border, 1};
}

bool SoakPhotos::shows(const QImage& part, int photo, Verdict verdict) {
    const QColor color = readablePhotoColor(photo % different);
    const QColor edge = isPortrait(photo) ? QColor(Qt::black) : color;
    return isNear(part.pixelColor(part.width() - 1, 0), color) &&
           isNear(part.pixelColor(0, 0), stamped(edge, verdict));
}
