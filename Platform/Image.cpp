#include "Platform/Image.h"

namespace Platform {

Image::Image(const QImage& pixels, QSizeF size) {
    if (!pixels.isNull()) {
        m_data = std::make_shared<const Data>(Data{pixels, size});
    }
}

const QImage& Image::pixels() const {
    static const QImage none;
    return m_data ? m_data->pixels : none;
}

QSizeF Image::size() const {
    return m_data ? m_data->size : QSizeF(0, 0);
}

} // namespace Platform
