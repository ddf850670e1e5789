#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

namespace tovel {

// Contrast ratio of the Web Content Accessibility Guidelines, of opaque colours.
inline double contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](double part) {
            return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

} // namespace tovel
