#include "Tools/Samples/Ground.h"

#include "Tools/Samples/Parallel.h"

#include <limits>

namespace {

constexpr int mostColumns = 1600; // enough for what is told apart; wider pictures go between them

/// How much of the sun reaches a place: the ground towards it is felt for obstacles.
float sunlight(const Relief& relief, float x, float height, float z, SunPosition sun) {
    const float towardsX = std::sin(sun.azimuth);
    const float towardsZ = std::cos(sun.azimuth);
    float light = 1;
    float far = 0.03F;
    for (int i = 0; i < 10 && light > 0; ++i) {
        const float above =
            height + far * sun.elevation - relief(x + towardsX * far, z + towardsZ * far, 0.08F);
        light = std::min(light, 0.5F + above / (0.035F * far + 0.012F));
        far *= 1.65F;
    }
    return smoothstep(0, 1, light);
}

} // namespace

Ground::Ground(const Relief& relief, const Viewpoint& view, const Frame& frame, Range range, SunPosition sun)
    : m_eye(view.eye), m_range(range) {
    const int pixels = static_cast<int>(frame.aspect / frame.pixel) + 1;
    m_columns = std::clamp(pixels, 2, mostColumns);
    const float margin = 0.05F; // for reflections that waves turn aside
    const float halfWidth = view.azimuth(frame.aspect * 0.5F) + margin;
    m_firstAzimuth = -halfWidth;
    m_azimuthStep = 2 * halfWidth / static_cast<float>(m_columns - 1);
    m_steps.resize(static_cast<std::size_t>(m_columns) * range.steps);
    inParallel(m_columns, [&](int column) { lookAlong(column, relief, sun); });
}

float Ground::distanceOf(float step) const {
    return m_range.nearest *
           std::pow(m_range.farthest / m_range.nearest, step / static_cast<float>(m_range.steps - 1));
}

void Ground::lookAlong(int column, const Relief& relief, SunPosition sun) {
    const float azimuth = m_firstAzimuth + m_azimuthStep * static_cast<float>(column);
    const float towardsX = std::sin(azimuth);
    const float towardsZ = std::cos(azimuth);
    const float growth =
        std::pow(m_range.farthest / m_range.nearest, 1 / static_cast<float>(m_range.steps - 1));
    Step* steps = &m_steps[static_cast<std::size_t>(column) * m_range.steps];
    float blocked = -std::numeric_limits<float>::max();
    float sunlit = 1;
    float distance = m_range.nearest;
    for (int i = 0; i < m_range.steps; ++i, distance *= growth) {
        const float x = towardsX * distance;
        const float z = towardsZ * distance;
        const float height = relief(x, z, distance * m_azimuthStep);
        const float elevation = (height - m_eye) / distance;
        const bool isSeen = elevation > blocked && (m_eye >= 0 || height > 0);
        if (isSeen) {
            blocked = elevation;
            sunlit = sunlight(relief, x, height, z, sun);
        }
        steps[i] = {blocked, sunlit};
    }
}

std::optional<Ground::Hit> Ground::hit(float azimuth, float elevation) const {
    const float place =
        std::clamp((azimuth - m_firstAzimuth) / m_azimuthStep, 0.0F, static_cast<float>(m_columns) - 1.001F);
    const int column = static_cast<int>(place);
    const float right = place - static_cast<float>(column);
    const Step* a = &m_steps[static_cast<std::size_t>(column) * m_range.steps];
    const Step* b = a + m_range.steps;
    const auto blocked = [&](int i) { return mix(a[i].blocked, b[i].blocked, right); };
    const int last = m_range.steps - 1;
    if (blocked(last) < elevation) {
        return std::nullopt;
    }
    int low = 0; // the first step that blocks the look lies in [low, high]
    int high = last;
    while (low < high) {
        const int middle = (low + high) / 2;
        if (blocked(middle) < elevation) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const float sunlit = mix(a[low].sunlit, b[low].sunlit, right);
    if (low == 0) {
        return Hit{m_range.nearest, sunlit};
    }
    const float below = blocked(low - 1);
    const float part = std::clamp((elevation - below) / (blocked(low) - below), 0.0F, 1.0F);
    return Hit{distanceOf(static_cast<float>(low - 1) + part), sunlit};
}
