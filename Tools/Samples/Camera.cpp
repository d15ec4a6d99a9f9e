#include "Tools/Samples/Camera.h"

#include "Tools/Samples/Parallel.h"

#include <cmath>

namespace {

constexpr int chunkRows = 16; // developed in one go by one core
constexpr int chunksPerBand = 16;

/// A tone curve like that of film, for linear light: slopes gently into black and white.
/// Curve fitted by K. Narkowicz, "ACES Filmic Tone Mapping Curve", 2016.
float filmCurve(float x) {
    x *= 0.8F;
    return std::clamp((x * (2.51F * x + 0.03F)) / (x * (2.43F * x + 0.59F) + 0.14F), 0.0F, 1.0F);
}

/// The sRGB transfer curve, IEC 61966-2-1.
float encoded(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

/// Film curve and transfer curve in one table over the square root of the light, so that shadows get enough
/// steps.
class ToneTable {
public:
    ToneTable() {
        for (int i = 0; i <= steps; ++i) {
            const float root = static_cast<float>(i) * most / steps;
            m_values[i] = encoded(filmCurve(root * root));
        }
    }

    float operator()(float light) const {
        const float place = std::sqrt(std::clamp(light, 0.0F, most * most)) * (steps / most);
        const int index = std::min(static_cast<int>(place), steps - 1);
        const float rest = place - static_cast<float>(index);
        return mix(m_values[index], m_values[index + 1], rest);
    }

private:
    static constexpr int steps = 4096;
    static constexpr float most = 4; // the root of the brightest light that is told apart

    float m_values[steps + 1];
};

/// A little more colour than there is, as cameras like to show.
Colour vivid(const Colour& light) {
    const float grey = luminance(light);
    return mix({grey, grey, grey}, light, 1.18F);
}

std::uint32_t scrambled(std::uint32_t x) {
    x = (x ^ (x >> 16)) * 0x7feb352dU;
    x = (x ^ (x >> 15)) * 0x846ca68bU;
    return x ^ (x >> 16);
}

/// A random value of about normal distribution from one hash: the sum of its four bytes, mean 0, deviation 1.
float bell(std::uint32_t bits) {
    const std::uint32_t sum = (bits & 255) + (bits >> 8 & 255) + (bits >> 16 & 255) + (bits >> 24);
    return (static_cast<float>(sum) - 510.0F) / 147.8F;
}

float difference(const Colour& a, const Colour& b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

bool isLike(const Colour& a, const Colour& b) {
    return difference(a, b) < 0.065F;
}

bool isEdgeBetween(const Colour& a, const Colour& b) {
    return difference(a, b) > 0.15F;
}

PixelSize turned(PixelSize size, Orientation orientation) {
    return orientation == Orientation::Upright ? size : PixelSize{size.height, size.width};
}

} // namespace

Camera::Camera(const Scene& scene, PixelSize viewed, Orientation orientation, std::uint32_t seed)
    : m_scene(scene),
      m_viewed(viewed),
      m_stored(turned(viewed, orientation)),
      m_orientation(orientation),
      m_seed(seed),
      m_band(static_cast<std::size_t>(chunkRows) * chunksPerBand * m_stored.width * 3) {}

const std::uint8_t* Camera::row(int row) {
    constexpr int bandRows = chunkRows * chunksPerBand;
    const int bandStart = row - row % bandRows;
    if (bandStart != m_bandStart) {
        developBand(bandStart);
        m_bandStart = bandStart;
    }
    return m_band.data() + static_cast<std::size_t>(row - bandStart) * m_stored.width * 3;
}

void Camera::developBand(int firstRow) {
    inParallel(chunksPerBand, [&](int chunk) {
        const int from = firstRow + chunk * chunkRows;
        const int to = std::min(from + chunkRows, m_stored.height);
        developRows(
            from, to, m_band.data() + static_cast<std::size_t>(chunk) * chunkRows * m_stored.width * 3);
    });
}

/// Most of a picture is smooth: the scene is looked at in every second pixel of every second row, in the
/// others only where those around them differ, and several times within a pixel that lies on an edge.
void Camera::developRows(int firstRow, int lastRow, std::uint8_t* out) const {
    Line above(m_stored.width);
    Line line(m_stored.width);
    Line coarseAbove = coarseLine(firstRow);
    Line coarseBelow = coarseAbove;
    for (int row = firstRow; row < lastRow; ++row) {
        if (row % 2 != 0) {
            coarseBelow = coarseLine(row + 1);
        }
        fillLine(row, coarseAbove, coarseBelow, line);
        for (int column = 0; column < m_stored.width; ++column) {
            const Colour& colour = line[column];
            const bool isEdge = (row > firstRow && isEdgeBetween(colour, above[column])) ||
                                (column > 0 && isEdgeBetween(colour, line[column - 1])) ||
                                (column + 1 < m_stored.width && isEdgeBetween(colour, line[column + 1]));
            store(isEdge ? refined(column, row) : colour, column, row, out);
            out += 3;
        }
        if (row % 2 != 0) {
            std::swap(coarseAbove, coarseBelow);
        }
        std::swap(line, above);
    }
}

/// Every second pixel of a row, and one beyond its end.
Camera::Line Camera::coarseLine(int row) const {
    Line line(m_stored.width / 2 + 1);
    for (std::size_t i = 0; i < line.size(); ++i) {
        line[i] = tone(static_cast<float>(2 * i) + 0.5F, static_cast<float>(row) + 0.5F);
    }
    return line;
}

/// The whole row between two coarse ones (the same twice for a row that is coarsely known itself).
void Camera::fillLine(int row, const Line& coarseAbove, const Line& coarseBelow, Line& line) const {
    for (int column = 0; column < m_stored.width; ++column) {
        const int left = column / 2;
        const int right = (column + 1) / 2;
        const Colour& a = coarseAbove[left];
        const Colour& b = coarseAbove[right];
        const Colour& c = coarseBelow[left];
        const Colour& d = coarseBelow[right];
        const bool isSmooth = isLike(a, d) && isLike(b, c) && isLike(a, b);
        line[column] = isSmooth ? (a + b + c + d) * 0.25F
                                : tone(static_cast<float>(column) + 0.5F, static_cast<float>(row) + 0.5F);
    }
}

Colour Camera::refined(int column, int row) const {
    constexpr float offsets[4][2] = {{0.375F, 0.125F}, {0.875F, 0.375F}, {0.125F, 0.625F}, {0.625F, 0.875F}};
    Colour sum;
    for (const auto& offset : offsets) {
        sum += tone(static_cast<float>(column) + offset[0], static_cast<float>(row) + offset[1]);
    }
    return sum * 0.25F;
}

Camera::Place Camera::place(float column, float row) const {
    float x = column;
    float y = row;
    if (m_orientation == Orientation::TurnRight) {
        x = static_cast<float>(m_viewed.width) - row;
        y = column;
    } else if (m_orientation == Orientation::TurnLeft) {
        x = row;
        y = static_cast<float>(m_viewed.height) - column;
    }
    const auto height = static_cast<float>(m_viewed.height);
    return {(x - 0.5F * static_cast<float>(m_viewed.width)) / height, 1 - y / height};
}

/// The picture's colour at a point, encoded for the screen, in [0, 1].
Colour Camera::tone(float column, float row) const {
    static const ToneTable curve;
    const Place at = place(column, row);
    const Colour light = vivid(m_scene.at(at.x, at.y));
    const float aspect = static_cast<float>(m_viewed.width) / static_cast<float>(m_viewed.height);
    const float across = at.x * 2 / std::max(aspect, 1.0F);
    const float up = at.y * 2 - 1;
    const float fall = 1 - 0.13F * (across * across + up * up);
    const float exposure = std::max(fall, 0.5F);
    return {curve(light.r * exposure), curve(light.g * exposure), curve(light.b * exposure)};
}

void Camera::store(const Colour& colour, int column, int row, std::uint8_t* out) const {
    const std::uint32_t bits = scrambled(static_cast<std::uint32_t>(row) * 0x9e3779b9U ^
                                         scrambled(static_cast<std::uint32_t>(column) ^ m_seed));
    const float brightness = luminance(colour);
    const float strength = 255 * mix(0.012F, 0.006F, std::clamp(brightness, 0.0F, 1.0F));
    const float grain = strength * bell(bits);
    const float tint = 0.35F * strength;
    const auto byte = [](float value) {
        return static_cast<std::uint8_t>(std::clamp(value + 0.5F, 0.0F, 255.0F));
    };
    out[0] = byte(colour.r * 255 + grain + tint * bell(scrambled(bits + 1)));
    out[1] = byte(colour.g * 255 + grain);
    out[2] = byte(colour.b * 255 + grain + tint * bell(scrambled(bits + 2)));
}
