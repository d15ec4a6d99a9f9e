#include "Tools/Samples/Noise.h"

namespace {

/// A well mixed 32-bit value of three integers (the finaliser of MurmurHash3 over their combination).
std::uint32_t mixed(std::uint32_t x, std::uint32_t y, std::uint32_t seed) {
    std::uint32_t h = x * 0x8da6b343U ^ y * 0xd8163841U ^ seed * 0xcb1ab31fU;
    h = (h ^ (h >> 16)) * 0x85ebca6bU;
    h = (h ^ (h >> 13)) * 0xc2b2ae35U;
    return h ^ (h >> 16);
}

float unit(std::uint32_t bits) {
    return static_cast<float>(bits >> 8) * (1.0F / 16777216.0F);
}

} // namespace

Noise::Noise(std::uint32_t seed) : m_seed(seed), m_lattice(std::make_unique<float[]>(side * side)) {
    for (std::uint32_t i = 0; i < side * side; ++i) {
        m_lattice[i] = unit(mixed(i, 0x51ed27U, seed));
    }
}

float Noise::fractal(float x, float y, int octaves) const {
    float sum = 0;
    float strength = 0.5F;
    float total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += strength * valueIn(squareAt(x, y));
        total += strength;
        strength *= 0.5F;
        const float turnedX = 1.6F * x + 1.2F * y + 17.3F; // twice as fine and turned, so that no grid shows
        y = -1.2F * x + 1.6F * y + 5.1F;
        x = turnedX;
    }
    return total > 0 ? sum / total : 0.5F;
}

float Noise::cell(int x, int y) const {
    return unit(mixed(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y), m_seed));
}
