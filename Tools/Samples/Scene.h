#pragma once

#include "Tools/Samples/Colour.h"

/// What the camera looks at. Places are in units of the picture's height: x to the right from the middle of
/// the picture, y up from its lower edge (so 0 to 1).
class Scene {
public:
    virtual ~Scene() = default;

    /// The light that comes from there. Any thread.
    virtual Colour at(float x, float y) const = 0;
};

/// The part of the scene that a picture of that shape shows, and how fine.
struct Frame {
    float aspect; ///< width / height
    float pixel;  ///< height of a pixel in units of the picture's height
};
