#include "Tests/EndToEnd/ScreenReading.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <optional>
#include <span>
#include <vector>

namespace {

struct Verdict {
    const char* name;
    QColor color;
    double slope; ///< of the label's line; positive falls to the right
};
const Verdict approved{"approved", QColor(0x30, 0xd1, 0x58), std::tan(-15 * M_PI / 180)};
const Verdict rejected{"rejected", QColor(0xff, 0x5a, 0x50), std::tan(15 * M_PI / 180)};
const QColor alertFill(0x26, 0x26, 0x28);

/// A column of the window that no panel covers, at the top or at the bottom.
int clearColumn(const QImage& window) {
    return window.width() * 36 / 100;
}

bool isNear(const QColor& a, const QColor& b) {
    constexpr int tolerance = 6;
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

QColor mixed(const QColor& over, const QColor& under, double opacity) {
    const auto mix = [&](int a, int b) {
        return static_cast<int>(std::lround(a * opacity + b * (1 - opacity)));
    };
    return {mix(over.red(), under.red()), mix(over.green(), under.green()), mix(over.blue(), under.blue())};
}

QRect centralRect(QSize whole, QSize part) {
    return {QPoint((whole.width() - part.width()) / 2, (whole.height() - part.height()) / 2), part};
}

/// The pixels of an area whose colour passes.
template <typename Passes>
std::vector<QPoint> pixelsIn(const QImage& window, const QRect& area, Passes passes) {
    std::vector<QPoint> found;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (passes(window.pixelColor(x, y))) {
                found.emplace_back(x, y);
            }
        }
    }
    return found;
}

/// Where a fitted and centred photo lies.
QRect photoRect(const QImage& window) {
    return centralRect(window.size(), readablePhotoSize.scaled(window.size(), Qt::KeepAspectRatio));
}

/// Whether the photo of that colour fills its place, and black what is above and below it.
bool showsPhoto(const QImage& window, const QColor& color) {
    constexpr int inset = 2; // the edge itself may be smoothed
    const QRect photo = photoRect(window);
    const QRect inner = photo.adjusted(inset, inset, -inset, -inset);
    const int column = clearColumn(window);
    const int row = photo.center().y();
    const auto isPhoto = [&](int x, int y) { return isNear(window.pixelColor(x, y), color); };
    const auto isBlack = [&](int x, int y) { return isNear(window.pixelColor(x, y), Qt::black); };
    return isPhoto(column, window.height() / 4) && isPhoto(inner.left(), row) &&
           isPhoto(inner.right(), row) && isPhoto(column, inner.top()) && isPhoto(column, inner.bottom()) &&
           isBlack(column, photo.top() - inset) && isBlack(column, photo.bottom() + inset);
}

std::optional<int> photoIn(const QImage& window) {
    for (int index = 0; index < readablePhotoCount; ++index) {
        if (showsPhoto(window, readablePhotoColor(index))) {
            return index;
        }
    }
    return std::nullopt;
}

/// The colours in the middle of the stamp's border, left and right over the photo, above and below over
/// black.
bool hasBorder(const QImage& window, const QColor& overPhoto, const QColor& overBlack) {
    constexpr int inset = 8;
    const int right = window.width() - 1 - inset;
    const int bottom = window.height() - 1 - inset;
    const int row = window.height() / 2;
    const int column = clearColumn(window);
    return isNear(window.pixelColor(inset, row), overPhoto) &&
           isNear(window.pixelColor(right, row), overPhoto) &&
           isNear(window.pixelColor(column, inset), overBlack) &&
           isNear(window.pixelColor(column, bottom), overBlack);
}

/// The slope of the line along which the points lie, by least squares.
double slopeOf(const std::vector<QPoint>& points) {
    QPointF mean;
    for (const QPoint point : points) {
        mean += QPointF(point) / double(points.size());
    }
    double xx = 0;
    double xy = 0;
    for (const QPoint point : points) {
        const QPointF offset = point - mean;
        xx += offset.x() * offset.x();
        xy += offset.x() * offset.y();
    }
    return xy / xx;
}

bool hasLabel(const QImage& window, const Verdict& verdict, const QColor& photo) {
    constexpr QSize place(400, 200);
    constexpr std::size_t leastInk = 1500; // pixels
    const QColor ink = mixed(verdict.color, photo, 0.5);
    const auto label = pixelsIn(
        window, centralRect(window.size(), place), [&](const QColor& color) { return isNear(color, ink); });
    return label.size() > leastInk && std::abs(slopeOf(label) - verdict.slope) < 0.08;
}

bool hasStamp(const QImage& window, const Verdict& verdict, const QColor& photo) {
    return hasBorder(window, mixed(verdict.color, photo, 0.6), mixed(verdict.color, Qt::black, 0.6)) &&
           hasLabel(window, verdict, photo);
}

QString photoInWords(const QImage& window, int index) {
    QString name = QStringLiteral("photo %1").arg(index);
    const QColor color = readablePhotoColor(index);
    if (hasBorder(window, color, Qt::black) && isNear(window.pixelColor(window.rect().center()), color)) {
        return name;
    }
    for (const Verdict& verdict : {approved, rejected}) {
        if (hasStamp(window, verdict, color)) {
            return name + QStringLiteral(", ") + QLatin1String(verdict.name);
        }
    }
    return name + QStringLiteral(", unclear");
}

bool showsAlert(const QImage& window) {
    const QRect place = centralRect(window.size(), {420, 80});
    const auto fill = pixelsIn(window, place, [](const QColor& color) { return isNear(color, alertFill); });
    return std::ssize(fill) * 2 > std::ptrdiff_t{place.width()} * place.height();
}

bool isLit(const QColor& color) {
    return !isNear(color, Qt::black);
}

/// The height of what stands in the middle of an otherwise black window; 0 where nothing does.
int messageHeight(const QImage& window) {
    const auto lit = pixelsIn(window, centralRect(window.size(), window.size() / 2), isLit);
    return lit.empty() ? 0 : lit.back().y() - lit.front().y() + 1;
}

bool hasPanelsBelow(const QImage& window) {
    const QRect bottomLeft(20, window.height() - 14, 1, 1);
    return !pixelsIn(window, bottomLeft, isLit).empty();
}

QString messageInWords(const QImage& window) {
    const int height = messageHeight(window);
    if (height > 85 && height < 130 && !hasPanelsBelow(window)) { // a symbol and two lines
        return QStringLiteral("open a folder");
    }
    if (height > 40 && height < 75) { // a symbol and one line
        return hasPanelsBelow(window) ? QStringLiteral("no images, panels below")
                                      : QStringLiteral("no images");
    }
    return QStringLiteral("something else");
}

/// The text as the status bar writes it, white on black, with the empty space on both sides.
QImage resolutionPattern(const QString& text) {
    constexpr int gap = 5;
    QFont font(QStringLiteral("monospace"));
    font.setPixelSize(11);
    const QFontMetrics metrics(font);
    QImage pattern(metrics.horizontalAdvance(text) + 2 * gap, metrics.height(), QImage::Format_Grayscale8);
    pattern.fill(Qt::black);
    QPainter painter(&pattern);
    painter.setFont(font);
    painter.setPen(Qt::white);
    painter.drawText(gap, metrics.ascent(), text);
    return pattern;
}

/// The end of the status bar, behind the file's name, without what shines through the panel.
QImage resolutionPlace(const QImage& window) {
    constexpr uchar brightestPanel = 70;
    QImage place = window.copy(228, window.height() - 50, 100, 42).convertToFormat(QImage::Format_Grayscale8);
    for (int y = 0; y < place.height(); ++y) {
        const std::span line(place.scanLine(y), static_cast<std::size_t>(place.width()));
        for (uchar& pixel : line) {
            pixel = std::max(pixel, brightestPanel);
        }
    }
    return place;
}

/// How alike the pattern and the part of the picture there are, whatever their brightness and contrast: 1 is the same.
double correlation(const QImage& picture, QPoint place, const QImage& pattern) {
    double sumA = 0;
    double sumB = 0;
    double sumAA = 0;
    double sumBB = 0;
    double sumAB = 0;
    for (int y = 0; y < pattern.height(); ++y) {
        for (int x = 0; x < pattern.width(); ++x) {
            const double a = picture.constScanLine(place.y() + y)[place.x() + x];
            const double b = pattern.constScanLine(y)[x];
            sumA += a;
            sumB += b;
            sumAA += a * a;
            sumBB += b * b;
            sumAB += a * b;
        }
    }
    const double count = double(pattern.width()) * pattern.height();
    const double spread = (sumAA - sumA * sumA / count) * (sumBB - sumB * sumB / count);
    return spread > 0 ? (sumAB - sumA * sumB / count) / std::sqrt(spread) : 0;
}

/// The same for the part of the picture that is most like the pattern.
double bestCorrelation(const QImage& picture, const QImage& pattern) {
    double best = 0;
    for (int y = 0; y + pattern.height() <= picture.height(); ++y) {
        for (int x = 0; x + pattern.width() <= picture.width(); ++x) {
            best = std::max(best, correlation(picture, {x, y}, pattern));
        }
    }
    return best;
}

} // namespace

QColor readablePhotoColor(int index) {
    // Steps of the golden angle keep neighbours far apart in hue.
    return QColor::fromHsv((index * 137) % 360, 120, 140);
}

QString resolutionIn(const QImage& window) {
    constexpr double leastCorrelation = 0.7;
    const QImage place = resolutionPlace(window);
    QString read = QStringLiteral("nothing readable");
    double best = leastCorrelation;
    for (const char* label : {"1.6K", "2.4K", "4K", "Full"}) {
        const QString text = QString::fromLatin1(label);
        const double likeness = bestCorrelation(place, resolutionPattern(text));
        if (likeness > best) {
            best = likeness;
            read = text;
        }
    }
    return read;
}

QString seenIn(const QImage& window) {
    if (window.isNull()) {
        return QStringLiteral("something else");
    }
    if (showsAlert(window)) {
        return QStringLiteral("an alert");
    }
    if (const auto photo = photoIn(window)) {
        return photoInWords(window, *photo);
    }
    return messageInWords(window);
}
