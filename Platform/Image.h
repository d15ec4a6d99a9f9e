#pragma once

#include <QImage>
#include <QObject>
#include <QSizeF>

#include <memory>

namespace Platform {

/// A decoded picture that never changes, shared by all who hold it, or no picture. Two images are equal when they
/// are the same object: equal pixels of two decodes are two images. Any thread may hold and read it.
class Image {
    Q_GADGET

public:
    /// No picture.
    Image() = default;

    /// A picture whose size in points is its size in pixels. Null pixels give no picture.
    explicit Image(const QImage& pixels) : Image(pixels, pixels.size()) {}

    /// A picture with a size in points of its own, so that a decode with more pixels can stand in for one with
    /// fewer without moving anything on screen.
    Image(const QImage& pixels, QSizeF size);

    bool isNull() const { return !m_data; }

    /// The pixels, sRGB, upright; a null QImage for no picture.
    const QImage& pixels() const;

    /// Size in points; 0 x 0 for no picture.
    QSizeF size() const;

    friend bool operator==(const Image& a, const Image& b) { return a.m_data == b.m_data; }

private:
    struct Data {
        QImage pixels;
        QSizeF size;
    };
    std::shared_ptr<const Data> m_data;
};

} // namespace Platform
