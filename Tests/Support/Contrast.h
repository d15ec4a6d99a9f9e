#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

/// Relative luminance by WCAG 2.1, of 0 to 1.
inline double luminance(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Contrast ratio by WCAG 2.1, of 1 to 21. Text of ordinary size is legible from 4.5.
inline double contrast(const QColor& a, const QColor& b) {
    const double ratio = (luminance(a) + 0.05) / (luminance(b) + 0.05);
    return std::max(ratio, 1 / ratio);
}
