#pragma once

#include "Tools/Samples/Colour.h"
#include "Tools/Samples/Noise.h"

/// The colours of a sky and what stands in it. Directions are angles in radians: azimuth to the right from
/// the middle of the picture, elevation up from the horizon.
struct SkyLook {
    Colour zenith;          ///< about 40 degrees up
    Colour horizon;         ///< the haze far from the sun
    Colour glow;            ///< added around the sun, widest along the horizon
    Colour sun = {0, 0, 0}; ///< of the disc itself; black: none to be seen
    float sunAzimuth = 0.2F;
    float sunElevation = 0.1F;
    float cover = 0;        ///< clouds: 0 none, 1 nearly all
    float cloudScale = 1;   ///< larger: finer clouds
    float cloudStretch = 1; ///< larger: drawn out along the horizon
    Colour cloudLit = {1, 1, 1};
    Colour cloudShade = {0.4F, 0.4F, 0.5F};
};

/// A sky by day, at dusk or at dawn. Any thread.
class Sky {
public:
    Sky(const SkyLook& look, std::uint32_t seed) : m_look(look), m_noise(seed) {}

    const SkyLook& look() const { return m_look; }

    /// The light from there, clouds and sun included; below the horizon that of the horizon.
    Colour at(float azimuth, float elevation) const;

    /// The same without clouds and the sun's disc: the colour of haze in that direction.
    Colour haze(float azimuth, float elevation) const;

private:
    struct Cloud {
        float density;
        float lit; ///< 0 in the shade, 1 in full sun
    };
    Cloud cloud(float azimuth, float elevation) const;

    SkyLook m_look;
    Noise m_noise;
};
