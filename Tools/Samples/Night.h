#pragma once

#include "Tools/Samples/Conifers.h"
#include "Tools/Samples/Scene.h"
#include "Tools/Samples/Skyline.h"

/// What distinguishes one picture of a night from another.
struct NightLook {
    Colour zenith = {0.006F, 0.011F, 0.030F};
    Colour horizon = {0.05F, 0.07F, 0.10F};
    Colour afterglow = {0.35F, 0.14F, 0.04F}; ///< along the horizon, where the sun went down
    float afterglowAzimuth = -0.3F;
    Colour milkyWay = {0.20F, 0.19F, 0.23F}; ///< black: none
    float milkyWaySlant = 0.55F;
    float milkyWayAzimuth = 0.1F;
    Colour aurora = {0, 0, 0}; ///< black: none
    float starDensity = 1;
    float focal = 1.1F;
    float skyline = 0.16F; ///< height of the hills in the picture
    float trees = 0.11F;   ///< height of the firs on them
};

/// A starry sky over dark hills. Any thread.
class Night : public Scene {
public:
    Night(const NightLook& look, const Frame& frame, std::uint32_t seed);

    Colour at(float x, float y) const override;

private:
    Colour skyAt(float x, float y) const;
    Colour starsAt(float x, float y, float cellsPerUnit, float brightest) const;
    Colour milkyWayAt(float azimuth, float elevation) const;
    Colour auroraAt(float azimuth, float elevation) const;

    NightLook m_look;
    float m_pixel;
    Noise m_noise;
    Skyline m_farHills;
    Skyline m_nearHills;
    Conifers m_trees;
};
