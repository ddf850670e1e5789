#include "views/components/button_look.h"

#include "views/components/continuous_corners.h"
#include "views/theme.h"

#include <QPalette>

namespace tovel {

namespace {

constexpr double hoverOpacity = 0.06;
constexpr double pressOpacity = 0.14;
constexpr double ringWidth = 2;
constexpr double gapWidth = 1;

} // namespace

QColor stateTint(const QPalette &palette, bool hovered, bool pressed)
{
    if (!hovered && !pressed)
        return {};
    return withOpacity(TovelTheme::accent(palette), pressed ? pressOpacity : hoverOpacity);
}

void paintFocusRing(QPainter &painter, const QPalette &palette, const QRectF &shape, double radius)
{
    paintContinuousRoundedRect(painter, shape, radius, {}, windowBackground(palette),
                               ringWidth + gapWidth);
    paintContinuousRoundedRect(painter, shape, radius, {}, TovelTheme::accent(palette), ringWidth);
}

} // namespace tovel
