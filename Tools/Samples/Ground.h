#pragma once

#include "Tools/Samples/Scene.h"

#include <functional>
#include <optional>
#include <vector>

/// Height of the ground over a place of the map, in km; details finer than `finest` km may be left out. The
/// camera stands over (0, 0) and looks along z.
using Relief = std::function<float(float x, float z, float finest)>;

/// Where the camera stands and looks. Directions are given by azimuth (radians to the right) and elevation
/// (the tangent of the angle up from the horizon).
struct Viewpoint {
    float focal = 1.6F;    ///< focal length in units of the picture's height
    float horizon = 0.45F; ///< where in the picture the horizon lies
    float eye =
        0.2F; ///< height of the camera in km; negative: the mirror image as a lake at height 0 shows it

    float azimuth(float x) const { return x / focal; }
    float elevation(float y) const { return (y - horizon) / focal; }
};

/// From where the sun shines: azimuth, and elevation as a tangent.
struct SunPosition {
    float azimuth;
    float elevation;
};

/// The ground that is seen from a point, with its shadows. For each of many directions to the side it keeps
/// how high the view is blocked up to each of many distances; a look then finds its distance in there. Any
/// thread.
class Ground {
public:
    struct Range {
        float nearest;  ///< km
        float farthest; ///< km
        int steps;
    };

    Ground(const Relief& relief, const Viewpoint& view, const Frame& frame, Range range, SunPosition sun);

    /// What a look in that direction meets first; nothing: the sky.
    struct Hit {
        float distance; ///< km
        float sunlit;   ///< 0 in the shadow of other ground, 1 in the sun
    };
    std::optional<Hit> hit(float azimuth, float elevation) const;

private:
    struct Step {
        float blocked; ///< the highest elevation up to here
        float sunlit;
    };
    void lookAlong(int column, const Relief& relief, SunPosition sun);
    float distanceOf(float step) const;

    float m_eye;
    Range m_range;
    float m_firstAzimuth;
    float m_azimuthStep;
    int m_columns;
    std::vector<Step> m_steps; // columns of m_range.steps
};
