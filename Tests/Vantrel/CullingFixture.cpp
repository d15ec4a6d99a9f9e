#include "Tests/Vantrel/CullingFixture.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

using Platform::FileURL;
using Platform::Image;

OpenViewModel& CullingFixture::start(CullingViewModel::FeatureFlags features) {
    viewModel.reset();
    const auto chooser = [this](const QString& message, const FileURL&) {
        chooserMessage = message;
        return choice;
    };
    const CullingViewModel::Surroundings surroundings{scheduler, userDefaults, chooser};
    viewModel = std::make_unique<OpenViewModel>(surroundings, features);
    return *viewModel;
}

void CullingFixture::open(const FileURL& folder) {
    choice = folder;
    viewModel->openFolder();
}

QByteArray flatPhoto(const QColor& color, QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(color);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPG", 95);
    return bytes;
}

void writePhotos(const TemporaryFolder& folder, const std::vector<std::string>& names, QSize size) {
    for (int index = 0; index < std::ssize(names); ++index) {
        folder.write(names[index], flatPhoto(photoColor(index), size));
    }
}

QColor photoColor(int index) {
    // Steps of the golden angle keep neighbours far apart in hue.
    return QColor::fromHsv((index * 137) % 360, 200, 200);
}

bool shows(const Image& image, const QColor& color) {
    if (image.isNull()) {
        return false;
    }
    const QColor seen = image.pixels().pixelColor(image.pixels().rect().center());
    const auto near = [](int a, int b) { return std::abs(a - b) <= 4; };
    return near(seen.red(), color.red()) && near(seen.green(), color.green()) &&
           near(seen.blue(), color.blue());
}

std::vector<std::string> names(const CullingViewModel& viewModel) {
    std::vector<std::string> result;
    std::ranges::transform(viewModel.photoItems(), std::back_inserter(result), &PhotoItem::filename);
    return result;
}

int longSide(const Image& image) {
    return std::max(image.pixels().width(), image.pixels().height());
}
