#include "Tools/Samples/Mountains.h"

namespace {

constexpr Ground::Range range{0.08F, 42, 640};

struct Slope {
    float x;
    float z;
};

Viewpoint mirrored(Viewpoint view) {
    view.eye = -view.eye;
    return view;
}

} // namespace

Mountains::Mountains(const MountainLook& look, const Frame& frame, std::uint32_t seed)
    : m_look(look),
      m_pixelAngle(frame.pixel / look.view.focal),
      m_noise(seed),
      m_detail(seed + 1),
      m_sky(look.sky, seed + 2),
      m_ground(relief(), look.view, frame, range, {look.sky.sunAzimuth, look.sunHeight}) {
    if (look.hasLake) {
        m_mirrored.emplace(
            relief(), mirrored(look.view), frame, range, SunPosition{look.sky.sunAzimuth, look.sunHeight});
    }
}

Relief Mountains::relief() const {
    return [this](float x, float z, float finest) { return height(x, z, finest); };
}

/// A fractal whose octaves fade where those before them are steep already: ridges stay sharp and slopes
/// smooth, as if washed by rain. (I. Quilez, "Value noise derivatives", 2008.)
float Mountains::height(float x, float z, float finest) const {
    float size = m_look.breadth;
    float u = x / size + 61.3F;
    float v = z / size + 23.9F;
    float sum = 0;
    float strength = 1;
    float slopeX = 0;
    float slopeZ = 0;
    for (int octave = 0; octave < 12 && (size > finest || octave < 3); ++octave) {
        const Noise::Sample sample = m_noise.sample(u, v);
        slopeX += sample.slopeX * 1.2F;
        slopeZ += sample.slopeY * 1.2F;
        sum += strength * sample.value / (1 + slopeX * slopeX + slopeZ * slopeZ);
        strength *= 0.5F;
        size *= 0.5F;
        const float turned = 1.6F * u - 1.2F * v;
        v = 1.2F * u + 1.6F * v;
        u = turned;
    }
    const float distance = std::sqrt(x * x + z * z);
    const float rise = smoothstep(m_look.firstSlope * 0.25F, m_look.firstSlope * 3.2F, distance);
    const float floor = m_look.hasLake ? 0.15F * (1 - rise) : 0.05F;
    const float foreground = m_look.hasLake ? 0.02F : 0.10F;
    return m_look.relief * sum * mix(foreground, 1, rise) - floor;
}

Colour Mountains::material(float x, float height, float z, float steepness, float finest) const {
    const int octaves = finest < 0.0012F ? 8 : finest < 0.004F ? 6 : 4;
    const float patches = m_detail.fractal(x * 3.1F, z * 3.1F, octaves);
    const float grains = m_detail.fractal(x * 24, z * 24 + height * 60, octaves);
    const float strata = m_detail.fractal(x * 2.0F, height * 26 + patches * 3, 3);
    Colour colour = m_look.rock * (0.45F + 0.65F * grains + 0.35F * strata);
    const float meadow =
        smoothstep(0.85F, 0.45F, steepness + 0.5F * (patches - 0.5F)) *
        smoothstep(m_look.treeLine * 1.5F, m_look.treeLine * 0.9F, height + 0.3F * (patches - 0.5F));
    colour = mix(colour, m_look.grass * (0.6F + 0.8F * grains), meadow);
    const float wooded =
        smoothstep(0.40F, 0.52F, patches) * smoothstep(1.4F, 0.9F, steepness) *
        smoothstep(m_look.treeLine, m_look.treeLine * 0.8F, height + 0.25F * (patches - 0.5F));
    const float crowns = m_detail.fractal(x * 90, z * 90, 3);
    colour = mix(colour, m_look.forest * (0.35F + 1.4F * crowns), wooded);
    const float snow =
        smoothstep(m_look.snowLine - 0.12F, m_look.snowLine + 0.25F, height + 0.45F * (patches - 0.5F)) *
        smoothstep(1.15F, 0.65F, steepness + 0.5F * (grains - 0.5F));
    return mix(colour, {0.86F, 0.88F, 0.93F}, snow);
}

Colour Mountains::groundAt(float azimuth, const Ground::Hit& hit) const {
    const float x = std::sin(azimuth) * hit.distance;
    const float z = std::cos(azimuth) * hit.distance;
    const float finest = std::max(1.8F * hit.distance * m_pixelAngle, 0.0004F);
    const float step = finest;
    const float height = this->height(x, z, finest);
    const Slope slope{(this->height(x + step, z, finest) - height) / step,
        (this->height(x, z + step, finest) - height) / step};
    const float steepness = std::sqrt(slope.x * slope.x + slope.z * slope.z);
    const float length = std::sqrt(1 + steepness * steepness);
    const float sunX = std::sin(m_look.sky.sunAzimuth);
    const float sunZ = std::cos(m_look.sky.sunAzimuth);
    const float sunLength = std::sqrt(1 + m_look.sunHeight * m_look.sunHeight);
    const float facing = (m_look.sunHeight - slope.x * sunX - slope.z * sunZ) / (length * sunLength);
    const float open = 0.5F + 0.5F / length; // the steep see less of the sky
    const Colour light = m_look.sunlight * (std::max(facing, 0.0F) * hit.sunlit) + m_look.skylight * open;
    const Colour seen = material(x, height, z, steepness, finest) * light;
    return throughAir(seen, azimuth, (height - m_look.view.eye) / hit.distance, hit.distance, height);
}

/// Haze grows with the distance; mist with the part of the way that lies low.
Colour Mountains::throughAir(
    const Colour& light, float azimuth, float elevation, float distance, float height) const {
    const float eye = std::max(m_look.view.eye, 0.0F);
    const float scale = m_look.mistHeight;
    const float drop = (height - eye) / scale;
    const float dense = std::abs(drop) < 1e-3F ? std::exp(-eye / scale)
                                               : std::exp(-eye / scale) * (1 - std::exp(-drop)) / drop;
    const float x = std::sin(azimuth) * distance;
    const float z = std::cos(azimuth) * distance;
    const float drifts = m_look.mist > 0 ? 0.35F + 1.3F * m_detail.fractal(x * 0.45F, z * 0.45F, 4) : 0;
    const float lost = distance * m_look.haze + std::min(distance, 30.0F) * m_look.mist * drifts * dense;
    const Colour haze = m_sky.haze(azimuth, std::max(elevation, 0.0F) * 0.5F);
    return mix(light, haze, 1 - std::exp(-lost));
}

Colour Mountains::look(const Ground& ground, float azimuth, float elevation, float nearest) const {
    const auto hit = ground.hit(azimuth, elevation);
    if (hit && hit->distance > nearest) {
        return groundAt(azimuth, *hit);
    }
    return m_sky.at(azimuth, elevation);
}

Colour Mountains::lakeAt(float azimuth, float elevation, float distance) const {
    const float x = std::sin(azimuth) * distance;
    const float z = std::cos(azimuth) * distance;
    const float calm = smoothstep(0.35F, 0.75F, m_detail.fractal(x * 1.3F, z * 0.5F, 4));
    const float fading = 1 / (1 + distance * 1.5F);
    const float waves = m_look.ripples * (0.25F + calm);
    const float bob = (m_detail.fractal(x * 150, z * 60, 3) - 0.5F) * waves * (0.4F + fading);
    const float sway = (m_detail.fractal(x * 60 + 40, z * 60, 2) - 0.5F) * waves * 0.35F;
    const float mirroredElevation = std::max(-elevation + 4 * bob, 0.0004F);
    const Colour mirror = look(*m_mirrored, azimuth + sway, mirroredElevation, 0);
    const float grazing = std::clamp(1 + elevation * 1.3F, 0.0F, 1.0F);
    const float share = 0.30F + 0.62F * grazing * grazing * grazing;
    const Colour depth = m_look.skylight * Colour{0.05F, 0.10F, 0.11F};
    return throughAir(mirror * share + depth, azimuth, 0, distance, 0);
}

Colour Mountains::at(float x, float y) const {
    const float azimuth = m_look.view.azimuth(x);
    const float elevation = m_look.view.elevation(y);
    const auto hit = m_ground.hit(azimuth, elevation);
    if (m_look.hasLake && elevation < 0) {
        const float distance = m_look.view.eye / -elevation;
        if (!hit || hit->distance > distance) {
            return lakeAt(azimuth, elevation, distance);
        }
    }
    return hit ? groundAt(azimuth, *hit) : m_sky.at(azimuth, elevation);
}
