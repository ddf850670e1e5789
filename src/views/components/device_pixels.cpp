#include "views/components/device_pixels.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace tovel {

namespace {

// What floating-point noise may add to an edge that stands on a pixel.
constexpr double noise = 1e-3;

} // namespace

QRect devicePixels(const QPainter &painter, const QRectF &box)
{
    const QRectF device = painter.deviceTransform().mapRect(box);
    return {qRound(device.left()), qRound(device.top()), qRound(device.width()),
            qRound(device.height())};
}

QRectF insideDevicePixels(const QPainter &painter, const QRectF &box)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF device = toDevice.mapRect(box);
    const QPointF topLeft(std::ceil(device.left() - noise), std::ceil(device.top() - noise));
    const QPointF bottomRight(std::floor(device.right() + noise),
                              std::floor(device.bottom() + noise));
    return toDevice.inverted().mapRect(QRectF(topLeft, bottomRight));
}

double deviceLineWidth(const QPainter &painter, double width)
{
    const double scale = std::abs(painter.deviceTransform().m11());
    return scale > 0 ? std::max(1.0, std::floor(width * scale + noise)) / scale : width;
}

void paintDeviceImage(QPainter &painter, const QPoint &corner, const QImage &image)
{
    painter.save();
    painter.setTransform(painter.deviceTransform().inverted() * painter.transform());
    painter.drawImage(corner, image);
    painter.restore();
}

} // namespace tovel
