#include "views/theme.h"

#include <QPalette>

namespace tovel {

bool isDark(const QPalette &palette)
{
    return palette.color(QPalette::Active, QPalette::Window).lightnessF()
        < palette.color(QPalette::Active, QPalette::WindowText).lightnessF();
}

QColor TovelTheme::accent(const QPalette &palette)
{
    return isDark(palette) ? QColor::fromRgbF(0.74F, 0.71F, 1.0F) : QColor(27, 20, 100);
}

QColor TovelTheme::orange() { return QColor(247, 147, 30); }

QColor TovelTheme::chromeColor(const QPalette &palette)
{
    return isDark(palette) ? QColor::fromRgbF(0.16F, 0.14F, 0.23F) : QColor(243, 240, 248);
}

QColor TovelTheme::chrome(const QPalette &palette) { return chromeColor(palette); }

QColor TovelTheme::separator(const QPalette &palette) { return withOpacity(accent(palette), 0.12); }

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(static_cast<float>(color.alphaF() * opacity));
    return color;
}

QColor windowBackground(const QPalette &palette)
{
    return palette.color(QPalette::Active, QPalette::Window);
}

QColor controlBackground(const QPalette &palette)
{
    return palette.color(QPalette::Active, QPalette::Base);
}

QColor secondary(const QPalette &palette)
{
    return withOpacity(palette.color(QPalette::Active, QPalette::WindowText), 0.66);
}

QColor systemOrange(const QPalette &palette)
{
    return isDark(palette) ? QColor(255, 159, 10) : QColor(168, 74, 0);
}

} // namespace tovel
