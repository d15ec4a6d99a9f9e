#include "Tools/Samples/Ridges.h"

Ridges::Ridges(const RidgeLook& look, const Frame& frame, std::uint32_t seed)
    : m_look(look), m_noise(seed), m_sky(look.sky, seed + 1) {
    for (int i = 0; i < look.count; ++i) {
        const auto order = static_cast<std::uint32_t>(i);
        const float nearness = 1 - static_cast<float>(i) / static_cast<float>(std::max(look.count - 1, 1));
        const Skyline::Shape shape{mix(look.top, look.bottom, std::pow(nearness, 0.8F)),
            look.steepness * mix(0.21F, 0.42F, nearness), mix(3.4F, 1.5F, nearness)};
        m_ridges.push_back(
            {Skyline(shape, frame, seed + 40 + order), 31.0F * static_cast<float>(i), nearness});
        if (i < look.wooded) {
            const float height = look.trees * std::pow(look.shrinking, static_cast<float>(i));
            m_woods.emplace_back(height * 0.085F, height, seed + 10 + order);
        }
    }
}

/// @param depth  how far below the crest
Colour Ridges::on(const Ridge& ridge, float x, float y, float depth) const {
    const float paleness = std::pow(1 - ridge.nearness, 0.85F);
    const float texture = m_noise.fractal(x * 30 + ridge.offset, y * 42, 5);
    const float azimuth = x / m_look.focal;
    const Colour towardsSun = m_sky.haze(azimuth, 0.02F);
    const Colour distant = mix(m_look.far, towardsSun, 0.55F);
    const Colour body = mix(m_look.near, distant, paleness) * mix(0.75F + 0.5F * texture, 1, paleness);
    const float drifts = 0.35F + 1.3F * m_noise.fractal(x * 2.6F + ridge.offset, y * 6, 4);
    const float sunk = 1 - std::exp(-depth * drifts /
                                    (m_look.mistDepth * mix(0.55F, 3.0F, ridge.nearness * ridge.nearness)));
    const Colour mist = mix(m_look.mist, towardsSun, 0.5F * paleness + 0.2F);
    return mix(body, mist, sunk * mix(0.9F, 0.12F, ridge.nearness * ridge.nearness * ridge.nearness));
}

Colour Ridges::at(float x, float y) const {
    for (std::size_t i = 0; i < m_ridges.size(); ++i) {
        const Ridge& ridge = m_ridges[i];
        const float top = ridge.crest.height(x);
        if (y < top) {
            return on(ridge, x, y, top - y);
        }
        if (i < m_woods.size() && m_woods[i].cover(x, y - top + 0.004F)) {
            return on(ridge, x, y, 0);
        }
    }
    return m_sky.at(x / m_look.focal, (y - m_look.horizon) / m_look.focal);
}
