#include "Tools/Samples/Conifers.h"

#include <cmath>

bool Conifers::cover(float x, float above) const {
    if (above > m_height) {
        return false;
    }
    constexpr float widest = 0.2F; // half the width of a fir to its height
    const int reach = static_cast<int>(m_height * widest / m_spacing) + 1;
    const int nearest = static_cast<int>(std::floor(x / m_spacing));
    for (int tree = nearest - reach; tree <= nearest + reach; ++tree) {
        if (treeCovers(tree, x, above)) {
            return true;
        }
    }
    return false;
}

bool Conifers::treeCovers(int tree, float x, float above) const {
    const float gaps = m_noise.value(static_cast<float>(tree) * 0.11F, 0.5F); // clearings
    if (m_noise.cell(tree, 3) > 1.5F * gaps + 0.1F) {
        return false;
    }
    const float young = m_noise.cell(tree, 1);
    const float height = m_height * (1 - 0.62F * young * young - 0.15F * m_noise.cell(tree, 6));
    const float up = above / height;
    if (up >= 1) {
        return false;
    }
    const float middle = (static_cast<float>(tree) + 0.15F + 0.7F * m_noise.cell(tree, 2)) * m_spacing;
    const float lean = (m_noise.cell(tree, 5) - 0.5F) * 0.04F * above;
    const float fromTrunk = std::abs(x - middle - lean);
    const float slender = 0.11F + 0.07F * m_noise.cell(tree, 4);
    const float outline = height * slender * std::pow(std::max(1 - up, 0.0F), 0.8F);
    if (fromTrunk > outline) {
        return false;
    }
    const float side = x > middle + lean ? 37.0F : 11.0F;
    const float branches = 13 + 8 * m_noise.cell(tree, 7);
    const float drooping =
        up * branches + 0.5F * fromTrunk / outline + m_noise.value(up * 9 + side, static_cast<float>(tree));
    const float whorl = drooping - std::floor(drooping);
    const float twigs = m_noise.fractal(x / height * 60 + side, up * 70 + static_cast<float>(tree), 2);
    const float reach = outline * (0.28F + 0.62F * (1 - whorl) + 0.55F * (twigs - 0.5F));
    return fromTrunk < std::max(reach, height * 0.006F * (1 - up));
}
