#pragma once

#include "Tools/Samples/Ground.h"
#include "Tools/Samples/Noise.h"
#include "Tools/Samples/Sky.h"

#include <optional>

/// What distinguishes one mountain picture from another. Lengths in km.
struct MountainLook {
    SkyLook sky;
    Viewpoint view;
    Colour sunlight = {2.4F, 1.9F, 1.4F};
    Colour skylight = {0.25F, 0.32F, 0.45F};
    Colour rock = {0.30F, 0.27F, 0.25F};
    Colour grass = {0.16F, 0.19F, 0.06F};
    Colour forest = {0.025F, 0.045F, 0.022F};
    float snowLine = 1.0F;   ///< above it snow lies on all but the steep
    float treeLine = 0.6F;   ///< below it woods stand in patches
    float relief = 1.8F;     ///< height of the mountains
    float breadth = 3.2F;    ///< of the largest forms
    float firstSlope = 2.2F; ///< where the valley floor ends
    float haze = 0.024F;     ///< part of the view lost per km
    float mist = 0;          ///< the same down in the valley
    float mistHeight = 0.12F;
    float sunHeight = 0.35F; ///< tangent of the sun's elevation as it lights the ground
    bool hasLake = false;    ///< the valley floor is under water
    float ripples = 0.004F;  ///< slope of the lake's waves
};

/// Mountains over a valley or a lake. Any thread.
class Mountains : public Scene {
public:
    Mountains(const MountainLook& look, const Frame& frame, std::uint32_t seed);

    Colour at(float x, float y) const override;

private:
    float height(float x, float z, float finest) const;
    Relief relief() const;
    Colour look(const Ground& ground, float azimuth, float elevation, float nearest) const;
    Colour groundAt(float azimuth, const Ground::Hit& hit) const;
    Colour material(float x, float height, float z, float steepness, float finest) const;
    Colour throughAir(
        const Colour& light, float azimuth, float elevation, float distance, float height) const;
    Colour lakeAt(float azimuth, float elevation, float distance) const;

    MountainLook m_look;
    float m_pixelAngle;
    Noise m_noise;
    Noise m_detail;
    Sky m_sky;
    Ground m_ground;
    std::optional<Ground> m_mirrored;
};
