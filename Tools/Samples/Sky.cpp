#include "Tools/Samples/Sky.h"

#include <cmath>

Colour Sky::haze(float azimuth, float elevation) const {
    const float up = std::max(elevation, 0.0F);
    const Colour dome = mix(m_look.horizon, m_look.zenith, 1 - std::exp(-up * 3.6F));
    const float across = (azimuth - m_look.sunAzimuth) * 0.62F;
    const float above = (up - std::max(m_look.sunElevation, 0.0F)) * 1.5F;
    const float distance = std::sqrt(across * across + above * above);
    return dome + m_look.glow * (0.75F * std::exp(-distance * 4.2F) + 0.35F * std::exp(-distance * 15.0F));
}

Sky::Cloud Sky::cloud(float azimuth, float elevation) const {
    const float distance = 1 / (elevation + 0.09F); // to a flat layer, the earth's curve allowed for
    const float scale = 0.55F * m_look.cloudScale;
    const float x = azimuth * distance * scale / m_look.cloudStretch + 31.7F;
    const float y = distance * scale * 1.6F + 11.2F;
    const float bendX = m_noise.fractal(x * 0.7F + 3, y * 0.7F, 3) - 0.5F;
    const float bendY = m_noise.fractal(x * 0.7F, y * 0.7F + 9, 3) - 0.5F;
    const float wispX = x + 1.1F * bendX;
    const float wispY = y + 1.1F * bendY;
    const int octaves = elevation > 0.03F ? 7 : 5;
    const float here = m_noise.fractal(wispX, wispY, octaves);
    const float edge = mix(0.72F, 0.30F, m_look.cover);
    const float density = smoothstep(edge, edge + 0.2F, here);
    if (density <= 0) {
        return {0, 0};
    }
    const float towards = std::clamp((m_look.sunAzimuth - azimuth) * 0.6F, -0.16F, 0.16F);
    const float nearer = m_noise.fractal(wispX + towards, wispY - 0.1F, 4);
    const float lit = std::clamp(0.62F + (here - nearer) * 2.6F - (density - 0.5F) * 0.5F, 0.0F, 1.0F);
    return {density * smoothstep(0.0F, 0.035F, elevation) * 0.96F, lit};
}

Colour Sky::at(float azimuth, float elevation) const {
    Colour light = haze(azimuth, elevation);
    const float across = azimuth - m_look.sunAzimuth;
    const float above = elevation - m_look.sunElevation;
    const float fromSun = std::sqrt(across * across + above * above);
    light += m_look.sun * (smoothstep(0.0115F, 0.0095F, fromSun) + 0.10F * std::exp(-fromSun * 60.0F) +
                              0.030F * std::exp(-fromSun * 12.0F));
    if (m_look.cover <= 0 || elevation <= 0) {
        return light;
    }
    const Cloud cloud = this->cloud(azimuth, elevation);
    const float silver = std::exp(-fromSun * 5.0F) * (1 - cloud.density); // thin edges near the sun shine
    const Colour body = mix(m_look.cloudShade, m_look.cloudLit, cloud.lit) + m_look.glow * (0.35F * silver);
    const float haziness = std::exp(-elevation * 9.0F) * 0.55F;
    return mix(light, mix(body, haze(azimuth, elevation), haziness), cloud.density);
}
