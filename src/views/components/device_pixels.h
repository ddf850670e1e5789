#pragma once

#include <QRectF>

class QImage;
class QPainter;

namespace tovel {

// The box in whole pixels of the device painted on, so that an image made in that size is shown
// pixel by pixel. Empty for an empty box. Rotated and sheared painters are not provided for.
QRect devicePixels(const QPainter &painter, const QRectF &box);

// The largest rectangle of whole device pixels inside the box, in the painter's own coordinates.
QRectF insideDevicePixels(const QPainter &painter, const QRectF &box);

// The width of a line of whole device pixels, at least one, closest to that asked for; both in the
// painter's own coordinates.
double deviceLineWidth(const QPainter &painter, double width);

// Paints an image pixel by pixel with its corner at a pixel of the device.
void paintDeviceImage(QPainter &painter, const QPoint &corner, const QImage &image);

} // namespace tovel
