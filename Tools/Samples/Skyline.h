#pragma once

#include "Tools/Samples/Noise.h"
#include "Tools/Samples/Scene.h"

#include <vector>

/// The crest of hills across the picture, in units of the picture's height. Any thread.
class Skyline {
public:
    struct Shape {
        float base;      ///< its mean height
        float swing;     ///< how far it rises and falls
        float frequency; ///< how many hills in a width of 1
    };

    Skyline(const Shape& shape, const Frame& frame, std::uint32_t seed);

    float height(float x) const;

private:
    float m_left;
    float m_step;
    std::vector<float> m_heights;
};
