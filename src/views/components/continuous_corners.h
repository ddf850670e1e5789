#pragma once

#include <QPainterPath>

class QColor;
class QPainter;

namespace tovel {

// A rounded rectangle whose curvature grows and falls without a jump: each corner is an arc between
// two easing curves, which run along the edges for more than the radius. In a rectangle too small
// for that the easing shortens first, then the radius; a capsule remains.
QPainterPath continuousRoundedRect(const QRectF &rect, double radius);

// The rectangle with half circles at its short ends.
QPainterPath capsule(const QRectF &rect);

// Paints such a rectangle with a border drawn inside of it, on whole pixels of the device. An
// invalid or transparent colour leaves its part out.
void paintContinuousRoundedRect(QPainter &painter, const QRectF &rect, double radius,
                                const QColor &fill, const QColor &border, double borderWidth = 1);

} // namespace tovel
