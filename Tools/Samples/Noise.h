#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

/// Smooth random surfaces over the plane, the same for the same seed. Any thread.
///
/// Value noise: one random value in [0, 1] at each whole place, joined smoothly (quintic). All pictures are
/// made of it, and most of the time goes into it; so it stands here, where it can be inlined.
class Noise {
public:
    explicit Noise(std::uint32_t seed);

    /// The value at a place and its slopes.
    struct Sample {
        float value;
        float slopeX;
        float slopeY;
    };
    Sample sample(float x, float y) const;
    float value(float x, float y) const { return valueIn(squareAt(x, y)); }

    /// Fractal sum: each octave twice as fine as the one before and half as strong. About 0.5 in the mean, in
    /// [0, 1].
    float fractal(float x, float y, int octaves) const;

    /// One random value in [0, 1) of that cell of the plane, alike nothing around it.
    float cell(int x, int y) const;

private:
    /// A unit square of the plane: the place in it, and value = value + across u + down v + twist u v.
    struct Square {
        float u;
        float v;
        float value;
        float across;
        float down;
        float twist;
    };
    Square squareAt(float x, float y) const;
    static float valueIn(const Square& square);

    float at(unsigned column, unsigned row) const { return m_lattice[std::size_t{row} * side + column]; }

    static float eased(float t) { return t * t * t * (t * (t * 6 - 15) + 10); }
    static float slopeOfEased(float t) { return 30 * t * t * (t * (t - 2) + 1); }

    /// std::floor is a call on plain x86-64.
    static int roundedDown(float x) {
        const int towardsZero = static_cast<int>(x);
        return towardsZero - (x < static_cast<float>(towardsZero) ? 1 : 0);
    }

    static constexpr std::size_t side = 128; // the pattern repeats after so many units

    std::uint32_t m_seed;
    std::unique_ptr<float[]> m_lattice;
};

inline Noise::Square Noise::squareAt(float x, float y) const {
    const int left = roundedDown(x);
    const int top = roundedDown(y);
    constexpr unsigned mask = side - 1;
    const unsigned column = static_cast<unsigned>(left) & mask;
    const unsigned nextColumn = (column + 1) & mask;
    const unsigned row = static_cast<unsigned>(top) & mask;
    const unsigned nextRow = (row + 1) & mask;
    const float a = at(column, row);
    const float b = at(nextColumn, row);
    const float c = at(column, nextRow);
    const float d = at(nextColumn, nextRow);
    return {x - static_cast<float>(left), y - static_cast<float>(top), a, b - a, c - a, a - b - c + d};
}

inline float Noise::valueIn(const Square& square) {
    const float u = eased(square.u);
    const float v = eased(square.v);
    return square.value + square.across * u + square.down * v + square.twist * u * v;
}

inline Noise::Sample Noise::sample(float x, float y) const {
    const Square square = squareAt(x, y);
    const float slopeX = slopeOfEased(square.u) * (square.across + square.twist * eased(square.v));
    const float slopeY = slopeOfEased(square.v) * (square.down + square.twist * eased(square.u));
    return {valueIn(square), slopeX, slopeY};
}
