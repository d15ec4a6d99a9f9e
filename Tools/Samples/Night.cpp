#include "Tools/Samples/Night.h"

Night::Night(const NightLook& look, const Frame& frame, std::uint32_t seed)
    : m_look(look),
      m_pixel(frame.pixel),
      m_noise(seed),
      m_farHills({look.skyline, 0.20F, 1.7F}, frame, seed + 2),
      m_nearHills({look.skyline * 0.35F, 0.14F, 1.3F}, frame, seed + 3),
      m_trees(look.trees * 0.09F, look.trees, seed + 1) {}

Colour Night::at(float x, float y) const {
    const float far = m_farHills.height(x);
    const float near = m_nearHills.height(x);
    const Colour dark{0.0035F, 0.0045F, 0.0065F};
    if (y < near || m_trees.cover(x, y - near + 0.005F)) {
        return dark;
    }
    if (y < far) {
        const float texture = m_noise.fractal(x * 25, y * 40, 5);
        const Colour air = skyAt(x, m_look.skyline) * 0.2F;
        return mix(dark * (1 + 2 * texture), air, 0.35F + 0.25F * smoothstep(0.05F, 0, far - y) * texture);
    }
    return skyAt(x, y) + starsAt(x, y, 80 * m_look.starDensity, 0.9F) +
           starsAt(x, y, 22 * m_look.starDensity, 3.5F);
}

Colour Night::skyAt(float x, float y) const {
    const float azimuth = x / m_look.focal;
    const float elevation = std::max(y - m_look.skyline, 0.0F) / m_look.focal;
    const Colour dome = mix(m_look.horizon, m_look.zenith, 1 - std::exp(-elevation * 4.5F));
    const float aside = azimuth - m_look.afterglowAzimuth;
    const Colour glow = m_look.afterglow * (std::exp(-elevation * 9.0F) * std::exp(-aside * aside * 2.2F));
    return dome + glow + milkyWayAt(azimuth, elevation) + auroraAt(azimuth, elevation);
}

/// One star or none in each cell; its light falls off like that of a lens a little soft.
Colour Night::starsAt(float x, float y, float cellsPerUnit, float brightest) const {
    const int column = static_cast<int>(std::floor(x * cellsPerUnit));
    const int row = static_cast<int>(std::floor(y * cellsPerUnit));
    const int layer = static_cast<int>(cellsPerUnit) * 1000;
    const float starX =
        (static_cast<float>(column) + 0.15F + 0.7F * m_noise.cell(column, row + layer)) / cellsPerUnit;
    const float starY =
        (static_cast<float>(row) + 0.15F + 0.7F * m_noise.cell(column + 500, row + layer)) / cellsPerUnit;
    const float random = m_noise.cell(column + 1000, row + layer);
    const float brightness = brightest * std::pow(random, 8.0F);
    const float softness = std::max(m_pixel, 0.00085F) * (1 + 0.22F * brightness);
    const float distance2 = (x - starX) * (x - starX) + (y - starY) * (y - starY);
    const float light = brightness * std::exp(-distance2 / (softness * softness));
    const float warmth = m_noise.cell(column + 1500, row + layer);
    const Colour tint = mix({0.75F, 0.86F, 1.2F}, {1.2F, 0.95F, 0.72F}, warmth * warmth);
    return tint * (light * smoothstep(m_look.skyline, m_look.skyline + 0.12F, y));
}

Colour Night::milkyWayAt(float azimuth, float elevation) const {
    if (luminance(m_look.milkyWay) <= 0) {
        return {};
    }
    const float slant = m_look.milkyWaySlant;
    const float across =
        (azimuth - m_look.milkyWayAzimuth - slant * (elevation - 0.35F)) / std::sqrt(1 + slant * slant);
    const float along = (elevation + slant * azimuth) / std::sqrt(1 + slant * slant);
    const float clouds = m_noise.fractal(along * 5 + 8, across * 9, 7);
    const float wander = 0.05F * (m_noise.value(along * 3, 70) - 0.5F);
    const float width = 0.11F + 0.05F * m_noise.value(along * 2.5F, 33);
    const float place = (across + wander) / width;
    const float band = std::exp(-place * place) * (0.2F + 1.9F * clouds * clouds);
    const float knots = m_noise.fractal(along * 14 + 60, across * 26, 6);
    const float laneWidth = 0.42F * m_noise.fractal(along * 6 + 90, across * 4, 4);
    const float fork = std::abs(place + 1.5F * (knots - 0.5F));
    const float dust = smoothstep(0.2F + 1.6F * laneWidth, 0.05F, fork) *
                       smoothstep(0.25F, 0.75F, clouds * 0.5F + knots * 0.6F);
    const Colour core =
        mix(m_look.milkyWay, m_look.milkyWay * Colour{1.35F, 1.0F, 0.78F}, std::exp(-place * place * 4));
    return core * (band * (1 - 0.75F * dust) * smoothstep(0, 0.25F, elevation + 0.1F));
}

/// Two curtains of light, sharp below and fading upwards, drawn in rays.
Colour Night::auroraAt(float azimuth, float elevation) const {
    if (luminance(m_look.aurora) <= 0) {
        return {};
    }
    Colour sum;
    for (int curtain = 0; curtain < 2; ++curtain) {
        const auto shift = static_cast<float>(curtain);
        const float fold = m_noise.fractal(azimuth * 1.6F + 13 * shift, 5 + shift, 2);
        const float foot = 0.08F + 0.13F * shift + 0.5F * (fold - 0.4F);
        const float above = elevation - foot;
        const float rays = m_noise.fractal(azimuth * 38 + fold * 26, elevation * 1.2F + 7 * shift, 4);
        const float tall = 0.10F + 0.22F * m_noise.value(azimuth * 5 + 3 * shift, 11);
        const float light = smoothstep(-0.06F, 0.03F, above) * std::exp(-std::max(above, 0.0F) / tall) *
                            (0.25F + 1.3F * rays * rays) *
                            smoothstep(0.25F, 0.6F, m_noise.value(azimuth * 2.4F + 40 * shift, 2));
        const Colour tint =
            mix(m_look.aurora, {m_look.aurora.g * 0.55F, m_look.aurora.r * 0.6F, m_look.aurora.g * 0.75F},
                smoothstep(0.1F, 0.42F, above));
        sum += tint * light;
    }
    return sum;
}
