#include "Tools/Samples/Dunes.h"

namespace {

constexpr Ground::Range range{0.03F, 14, 1000};

} // namespace

Dunes::Dunes(const DuneLook& look, const Frame& frame, std::uint32_t seed)
    : m_look(look),
      m_pixelAngle(frame.pixel / look.view.focal),
      m_noise(seed),
      m_sky(look.sky, seed + 1),
      m_ground([this](float x, float z, float) { return height(x, z); }, standpoint(), frame, range,
          {look.sky.sunAzimuth, look.sunHeight}) {}

Viewpoint Dunes::standpoint() const {
    Viewpoint view = m_look.view;
    view.eye += height(0, 0);
    return view;
}

/// Crests run where the noise crosses its middle; each leans away from the wind.
float Dunes::height(float x, float z) const {
    const float bend = m_noise.fractal(x * 1.6F + 7, z * 1.6F, 3) - 0.5F;
    const auto crest = [&](float across, float along, float lean) {
        const float n = m_noise.value(across + 1.3F * bend, along + lean);
        return 1 - std::sqrt((2 * n - 1) * (2 * n - 1) + 0.0012F); // rounded a little, as sand is
    };
    const float blunt = crest(x * 2.1F + 40, z * 3.3F + 13, 0);
    const float large = crest(x * 2.1F + 40, z * 3.3F + 13, -0.16F * blunt);
    const float small = crest(x * 5.3F - 11, z * 8.1F + 5, 0);
    const float swell = m_noise.value(x * 0.35F + 3, z * 0.35F + 90);
    const float growth = 0.25F + 0.75F * smoothstep(0.02F, 0.7F, std::sqrt(x * x + z * z)); // a free view
    return growth * (0.11F * large * std::sqrt(std::max(large, 0.0F)) +
                        0.020F * small * small * (0.3F + large) + 0.10F * swell);
}

/// Slope of the small ripples that the wind draws, fading with the distance before they get too fine to see.
float Dunes::windRipples(float x, float z, float distance) const {
    const float strength = smoothstep(0.6F, 0.05F, distance);
    if (strength <= 0) {
        return 0;
    }
    const float bend = m_noise.fractal(x * 22, z * 22, 3);
    const float phase = (z * 0.85F + x * 0.5F) * 2600 + bend * 34;
    return strength * 0.17F * std::sin(phase) * (0.4F + 0.6F * m_noise.value(x * 40, z * 40));
}

Colour Dunes::at(float x, float y) const {
    const float azimuth = m_look.view.azimuth(x);
    const float elevation = m_look.view.elevation(y);
    const auto hit = m_ground.hit(azimuth, elevation);
    if (!hit) {
        return m_sky.at(azimuth, elevation);
    }
    const float placeX = std::sin(azimuth) * hit->distance;
    const float placeZ = std::cos(azimuth) * hit->distance;
    const float step = std::max(1.5F * hit->distance * m_pixelAngle, 0.0004F);
    const float here = height(placeX, placeZ);
    const float ripples = windRipples(placeX, placeZ, hit->distance);
    const float slopeX = (height(placeX + step, placeZ) - here) / step + 0.5F * ripples;
    const float slopeZ = (height(placeX, placeZ + step) - here) / step + ripples;
    const float length = std::sqrt(1 + slopeX * slopeX + slopeZ * slopeZ);
    const float sunLength = std::sqrt(1 + m_look.sunHeight * m_look.sunHeight);
    const float towardsX = std::sin(m_look.sky.sunAzimuth);
    const float towardsZ = std::cos(m_look.sky.sunAzimuth);
    const float facing = (m_look.sunHeight - slopeX * towardsX - slopeZ * towardsZ) / (length * sunLength);
    const float grains = 0.86F + 0.28F * m_noise.fractal(placeX * 900, placeZ * 900, 3);
    const Colour light = m_look.sunlight * (std::max(facing, 0.0F) * hit->sunlit) +
                         m_look.skylight * (0.55F + 0.45F / length) + m_look.sunlight * m_look.sand * 0.05F;
    const Colour seen = m_look.sand * light * grains;
    return mix(seen, m_sky.haze(azimuth, 0.01F), 1 - std::exp(-hit->distance * m_look.dustiness));
}
