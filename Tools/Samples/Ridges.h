#pragma once

#include "Tools/Samples/Conifers.h"
#include "Tools/Samples/Scene.h"
#include "Tools/Samples/Sky.h"
#include "Tools/Samples/Skyline.h"

#include <vector>

/// What distinguishes one picture of ridge behind ridge from another. Lengths in units of the picture's
/// height.
struct RidgeLook {
    SkyLook sky;
    float focal = 1.6F;
    float horizon = 0.35F;
    Colour near = {0.012F, 0.016F, 0.020F}; ///< of the nearest ridge
    Colour far = {0.45F, 0.50F, 0.58F};     ///< of the farthest
    Colour mist = {0.8F, 0.72F, 0.66F};     ///< in the valleys
    int count = 7;
    float top = 0.62F;    ///< where the farthest ridge lies
    float bottom = 0.10F; ///< and the nearest
    float steepness = 1;
    float mistDepth = 0.12F; ///< over which a ridge sinks into the mist; larger: clearer
    float trees = 0.05F;     ///< height of firs on the nearest ridge
    float shrinking = 0.56F; ///< height of the trees on each ridge to those before it
    int wooded = 3;          ///< on so many of the nearest ridges firs are told apart
};

/// Ridge behind ridge, each paler than the one before it, mist in between. Any thread.
class Ridges : public Scene {
public:
    Ridges(const RidgeLook& look, const Frame& frame, std::uint32_t seed);

    Colour at(float x, float y) const override;

private:
    struct Ridge {
        Skyline crest;
        float offset;   ///< to its own part of the noise
        float nearness; ///< 0 the farthest, 1 the nearest
    };
    Colour on(const Ridge& ridge, float x, float y, float depth) const;

    RidgeLook m_look;
    Noise m_noise;
    Sky m_sky;
    std::vector<Ridge> m_ridges;   // the nearest first
    std::vector<Conifers> m_woods; // of the first of them
};
