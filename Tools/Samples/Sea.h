#pragma once

#include "Tools/Samples/Ground.h"
#include "Tools/Samples/Noise.h"
#include "Tools/Samples/Sky.h"

/// What distinguishes one picture of the open sea from another.
struct SeaLook {
    SkyLook sky;
    Viewpoint view = {1.5F, 0.40F, 0.006F};
    Colour water = {0.010F, 0.035F, 0.050F}; ///< what comes up from below
    Colour glitter = {6, 4, 2};              ///< of the sun on the waves
    float waves = 0.10F;                     ///< their slope
};

/// The sea to the horizon, the sky and the sun on it. Any thread.
class Sea : public Scene {
public:
    Sea(const SeaLook& look, std::uint32_t seed) : m_look(look), m_noise(seed), m_sky(look.sky, seed + 1) {}

    Colour at(float x, float y) const override;

private:
    Colour waterAt(float azimuth, float elevation) const;

    SeaLook m_look;
    Noise m_noise;
    Sky m_sky;
};
