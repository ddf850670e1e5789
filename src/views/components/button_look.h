#pragma once

class QColor;
class QPainter;
class QPalette;
class QRectF;

namespace tovel {

// How the states of painted buttons look.

constexpr double disabledOpacity = 0.45;

// Laid over the fill of a button under the mouse or held down; invalid for one at rest.
QColor stateTint(const QPalette &palette, bool hovered, bool pressed);

// The mark of the keyboard focus: a ring inside the shape, set off by the window's background, so
// that it shows beside a border of the same colour.
void paintFocusRing(QPainter &painter, const QPalette &palette, const QRectF &shape, double radius);

} // namespace tovel
