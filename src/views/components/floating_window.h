#pragma once

#include <QPainterPath>
#include <QRegion>

class QPainter;
class QPalette;

namespace tovel {

// What popovers and menus have in common: windows of another form than a rectangle, above the
// panel.

// Whether what such a window leaves transparent shows what is below it: always on Wayland, under
// X11 while a compositing manager runs (EWMH). Asks the X server. Elsewhere a mask gives the window
// its form.
bool blendsWindows();

// The pixels of a window of that size that lie in the form with at least half of their area.
QRegion maskOf(const QPainterPath &form, const QSize &size);

// Paints the ground of the form, and what lies around its inside as its border.
void paintFloating(QPainter &painter, const QPalette &palette, const QPainterPath &form,
                   const QPainterPath &inside);

} // namespace tovel
