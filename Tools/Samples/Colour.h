#pragma once

#include <algorithm>
#include <cmath>

/// A colour or an amount of light in linear sRGB; 1 is about what white paper sends back.
struct Colour {
    float r = 0;
    float g = 0;
    float b = 0;

    Colour& operator+=(const Colour& other) { return *this = {r + other.r, g + other.g, b + other.b}; }
};

inline Colour operator+(Colour a, const Colour& b) {
    return a += b;
}

inline Colour operator*(const Colour& a, const Colour& b) {
    return {a.r * b.r, a.g * b.g, a.b * b.b};
}

inline Colour operator*(const Colour& a, float k) {
    return {a.r * k, a.g * k, a.b * k};
}

inline float luminance(const Colour& c) {
    return 0.2126F * c.r + 0.7152F * c.g + 0.0722F * c.b;
}

inline float mix(float a, float b, float t) {
    return a + (b - a) * t;
}

inline Colour mix(const Colour& a, const Colour& b, float t) {
    return {mix(a.r, b.r, t), mix(a.g, b.g, t), mix(a.b, b.b, t)};
}

/// 0 up to the first edge, 1 from the second, smooth between them.
inline float smoothstep(float from, float to, float x) {
    const float t = std::clamp((x - from) / (to - from), 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}
