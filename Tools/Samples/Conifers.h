#pragma once

#include "Tools/Samples/Noise.h"

/// A row of firs on a line, as a shape. Any thread.
class Conifers {
public:
    /// @param spacing  from tree to tree, in the mean
    /// @param height   of the tallest
    Conifers(float spacing, float height, std::uint32_t seed)
        : m_spacing(spacing), m_height(height), m_noise(seed) {}

    /// Whether a tree stands at x, `above` over the foot of the row.
    bool cover(float x, float above) const;

private:
    bool treeCovers(int tree, float x, float above) const;

    float m_spacing;
    float m_height;
    Noise m_noise;
};
