#include "Tools/Samples/Sea.h"

Colour Sea::at(float x, float y) const {
    const float azimuth = m_look.view.azimuth(x);
    const float elevation = m_look.view.elevation(y);
    return elevation < 0 ? waterAt(azimuth, elevation) : m_sky.at(azimuth, elevation);
}

Colour Sea::waterAt(float azimuth, float elevation) const {
    const float distance = std::min(m_look.view.eye / -elevation, 3.0F);
    const float x = azimuth * distance;
    // Far away only the faces of waves are seen, each higher than its share of the plane: depth is drawn
    // together.
    const float z = std::pow(distance, 0.85F);
    const float swell = m_noise.fractal(x * 90, z * 260, 4) - 0.5F;
    const float chop = m_noise.fractal(x * 420 + swell * 2, z * 900 + swell * 4, 5) - 0.5F;
    const float across = m_noise.fractal(x * 520 + 70, z * 520, 4) - 0.5F;
    const float steady = smoothstep(0, 0.012F, -elevation); // towards the horizon waves melt together
    const float waves = m_look.waves * mix(0.35F, 1, steady);
    const float slope = waves * (1.1F * swell + 1.6F * chop);
    const float mirrored = std::abs(-elevation + 2 * slope) + 0.3F * waves;
    const float aside = azimuth + 2 * waves * across;
    Colour light = m_sky.at(aside, mirrored);
    const float facing = std::clamp(-elevation - 1.2F * slope, 0.0F, 1.0F);
    const float share =
        0.02F + 0.98F * std::pow(1 - facing, 6.0F); // Schlick's formula for Fresnel reflection
    light = mix(m_look.water * (1 + 2.5F * std::max(slope, 0.0F) / waves), light * 0.92F, share);
    const float sideways = (aside - m_look.sky.sunAzimuth) / (0.035F + 0.22F * waves);
    const float upward = (mirrored - m_look.sky.sunElevation) / (0.10F + 0.5F * waves);
    const float sparkle = std::exp(-sideways * sideways - upward * upward);
    const float crests = smoothstep(0.02F, 0.16F, chop + 0.4F * swell);
    light += m_look.glitter * (sparkle * mix(0.35F, 0.12F + crests, steady));
    return mix(light, m_sky.haze(azimuth, 0), std::exp(elevation * 160) * 0.55F);
}
