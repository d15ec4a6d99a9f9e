#include "Tests/Support/Pictures.h"

#include <cmath>
#include <cstdlib>
#include <random>

QImage quadrants(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const bool isLeft = 2 * x < size.width();
            const bool isTop = 2 * y < size.height();
            picture.setPixel(
                x, y, isTop ? (isLeft ? 0xffff0000 : 0xff00ff00) : (isLeft ? 0xff0000ff : 0xffffffff));
        }
    }
    return picture;
}

QImage landscape(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        const double v = static_cast<double>(y) / size.height();
        for (int x = 0; x < size.width(); ++x) {
            const double u = static_cast<double>(x) / size.width();
            const double shape = std::sin(11 * u + 5 * v) * std::cos(7 * v - 3 * u);
            const double detail = 12 * std::sin(0.9 * x) * std::sin(0.7 * y);
            const auto level = [&](double base, double swing) {
                return static_cast<int>(std::lround(base + swing * shape + detail));
            };
            picture.setPixel(x, y, qRgb(level(140, 90), level(120, -70), level(100 + 60 * v, 50)));
        }
    }
    return picture;
}

QImage randomPixels(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    std::minstd_rand random; // gives the same numbers everywhere
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            picture.setPixel(x, y, 0xff000000 | static_cast<QRgb>(random() >> 5));
        }
    }
    return picture;
}

QImage blackAndWhiteBlocks(QSize size) {
    QImage picture(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            picture.setPixel(x, y, (x / 8 + y / 8) % 2 == 0 ? 0xff000000 : 0xffffffff);
        }
    }
    return picture;
}

QImage plain(QSize size, const QColor& color) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(color);
    return picture;
}

bool isNear(const QColor& a, const QColor& b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

double meanDifference(const QImage& a, const QImage& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum +=
                std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q));
        }
    }
    return sum / (3.0 * a.width() * a.height());
}
