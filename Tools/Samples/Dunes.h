#pragma once

#include "Tools/Samples/Ground.h"
#include "Tools/Samples/Noise.h"
#include "Tools/Samples/Sky.h"

/// What distinguishes one picture of a sand desert from another. Lengths in km.
struct DuneLook {
    SkyLook sky;
    Viewpoint view = {1.9F, 0.66F, 0.05F}; ///< the eye over the sand on which the camera stands
    Colour sand = {0.62F, 0.38F, 0.19F};
    Colour sunlight = {2.6F, 1.9F, 1.2F};
    Colour skylight = {0.16F, 0.20F, 0.30F};
    float sunHeight = 0.22F; ///< tangent of the sun's elevation as it lights the ground
    float dustiness = 0.10F; ///< part of the view lost per km
};

/// Dunes of sand under a low sun. Any thread.
class Dunes : public Scene {
public:
    Dunes(const DuneLook& look, const Frame& frame, std::uint32_t seed);

    Colour at(float x, float y) const override;

private:
    Viewpoint standpoint() const;
    float height(float x, float z) const;
    float windRipples(float x, float z, float distance) const;

    DuneLook m_look;
    float m_pixelAngle;
    Noise m_noise;
    Sky m_sky;
    Ground m_ground;
};
