#pragma once

#include "Platform/Task.h"

#include <QImage>
#include <QObject>
#include <QSizeF>

#include <memory>
#include <vector>

namespace Platform {

/// A decoded picture that never changes, shared by all who hold it, or no picture. Two images are equal when they
/// are the same object: equal pixels of two decodes are two images. Any thread may hold and read it.
///
/// A large picture brings its halves along, so that it can be drawn small without aliasing; they add a third to its
/// memory (more for one that is a few pixels wide).
class Image {
    Q_GADGET

public:
    /// How much of its photo a picture is.
    struct Origin {
        bool isReduced = false; ///< the photo may have more pixels
        bool isPartial = false; ///< the photo's data end before its last row
    };

    /// No picture.
    Image() = default;

    /// A picture whose size in points is its size in pixels. Null pixels give no picture. Halving large pixels takes
    /// a while (under 1 ns for each); a cancelled task ends it early, with fewer levels.
    explicit Image(const QImage& pixels) : Image(pixels, Origin{}) {}
    Image(const QImage& pixels, Origin origin, const Task& task = {});

    /// The same pixels at another size in points, so that a decode with more pixels can stand in for one with fewer
    /// without moving anything on screen.
    Image withSize(QSizeF size) const;

    bool isNull() const { return !m_data; }

    /// The pixels, sRGB, upright; a null QImage for no picture.
    const QImage& pixels() const;

    /// The pixels, and after them each time those of half the size (halved()), down to a longer side of at most 256.
    /// Empty for no picture.
    const std::vector<QImage>& levels() const;

    /// Size in points; 0 x 0 for no picture.
    QSizeF size() const;

    /// How much of its photo it is.
    Origin origin() const;

    friend bool operator==(const Image& a, const Image& b) { return a.m_data == b.m_data; }

private:
    struct Data {
        std::vector<QImage> levels; // at least one
        QSizeF size;
        Origin origin;
    };
    std::shared_ptr<const Data> m_data;
};

} // namespace Platform
