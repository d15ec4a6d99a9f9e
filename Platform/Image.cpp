#include "Platform/Image.h"

#include "Platform/Halving.h"

#include <algorithm>

namespace Platform {

namespace {

/// Pictures up to this long are not halved: they fit into one texture, and nobody sees them alias.
constexpr int leastLevelSide = 256;

std::vector<QImage> halves(const QImage& pixels, const Task& task) {
    std::vector<QImage> levels{pixels};
    while (std::max(levels.back().width(), levels.back().height()) > leastLevelSide) {
        QImage next = halved(levels.back(), task);
        if (next.isNull()) {
            break;
        }
        levels.push_back(std::move(next));
    }
    return levels;
}

} // namespace

Image::Image(const QImage& pixels, Origin origin, const Task& task) {
    if (!pixels.isNull()) {
        m_data = std::make_shared<const Data>(Data{halves(pixels, task), pixels.size(), origin});
    }
}

Image Image::withSize(QSizeF size) const {
    Image image;
    if (m_data) {
        image.m_data = std::make_shared<const Data>(Data{m_data->levels, size, m_data->origin});
    }
    return image;
}

const QImage& Image::pixels() const {
    static const QImage none;
    return m_data ? m_data->levels.front() : none;
}

const std::vector<QImage>& Image::levels() const {
    static const std::vector<QImage> none;
    return m_data ? m_data->levels : none;
}

QSizeF Image::size() const {
    return m_data ? m_data->size : QSizeF(0, 0);
}

Image::Origin Image::origin() const {
    return m_data ? m_data->origin : Origin{};
}

} // namespace Platform
