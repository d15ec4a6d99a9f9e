#include "Tools/Samples/Skyline.h"

Skyline::Skyline(const Shape& shape, const Frame& frame, std::uint32_t seed)
    : m_left(-0.5F * frame.aspect - 2 * frame.pixel), m_step(frame.pixel * 0.5F) {
    const Noise noise(seed);
    const auto count = static_cast<std::size_t>((frame.aspect + 4 * frame.pixel) / m_step) + 2;
    m_heights.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const float x = m_left + m_step * static_cast<float>(i);
        const float rough = noise.fractal(x * shape.frequency + 13, 7, 10);
        m_heights.push_back(shape.base + shape.swing * (rough - 0.5F));
    }
}

float Skyline::height(float x) const {
    const float place = std::clamp((x - m_left) / m_step, 0.0F, static_cast<float>(m_heights.size()) - 1.01F);
    const auto index = static_cast<std::size_t>(place);
    return mix(m_heights[index], m_heights[index + 1], place - static_cast<float>(index));
}
