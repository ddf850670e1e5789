#include "views/components/surface.h"

#include "views/components/button_look.h"
#include "views/components/continuous_corners.h"
#include "views/theme.h"

#include <QPainter>

namespace tovel {

Surface::Surface(QWidget *parent)
    : PaintedButton(parent)
{ }

void Surface::setRadius(double radius)
{
    m_radius = radius;
    update();
}

void Surface::setHighlighted(bool highlighted)
{
    if (highlighted == m_highlighted)
        return;
    m_highlighted = highlighted;
    update();
}

void Surface::setDimsWhenDisabled(bool dims)
{
    if (dims == m_dims)
        return;
    m_dims = dims;
    update();
}

void Surface::paintContent(QPainter &, const QRectF &) { }

bool Surface::hitButton(const QPoint &position) const
{
    return continuousRoundedRect(rect(), m_radius).contains(QPointF(position) + QPointF(0.5, 0.5));
}

void Surface::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor accent = TovelTheme::accent(palette());
    const QColor fill = m_highlighted ? withOpacity(accent, 0.09) : controlBackground(palette());
    const QColor border
        = m_highlighted ? withOpacity(accent, 0.6) : withOpacity(secondary(palette()), 0.15);
    const QRectF shape = rect();
    paintContinuousRoundedRect(painter, shape, m_radius, fill, {});
    paintContinuousRoundedRect(painter, shape, m_radius,
                               stateTint(palette(), isHovered(), isPressed()), border);
    if (showsFocus())
        paintFocusRing(painter, palette(), shape, m_radius);
    if (m_dims && !isActionable())
        painter.setOpacity(disabledOpacity);
    paintContent(painter, shape);
}

} // namespace tovel
