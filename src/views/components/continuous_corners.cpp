#include "views/components/continuous_corners.h"

#include "views/components/device_pixels.h"

#include <QCache>
#include <QImage>
#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tovel {

namespace {

// How much further than the radius the easing reaches along an edge, as a part of the radius.
constexpr double mostEasing = 0.6;

using std::numbers::pi;

// One corner: three cubic curves, each by its two controls and its end.
struct Corner
{
    QPointF start;
    std::array<QPointF, 9> points;
};

// The corner at the origin of a shape that extends to positive coordinates, from the edge on the
// y axis to that on the x axis.
Corner corner(double radius, double easing)
{
    const double turn = easing * pi / 4; // what each easing curve turns
    const double half = turn / 2;
    const double tangent = radius * std::tan(half);
    // The curve leaves the edge without curvature as its two controls lie on the edge; where it
    // meets the arc it has the arc's curvature by this distance of the two.
    const double apart = 0.75 * radius * std::sin(half) / std::pow(std::cos(half), 3);
    const double reach = (1 + easing) * radius;
    const double arc = pi / 2 - 2 * turn;
    const double arm = 4.0 / 3.0 * std::tan(arc / 4) * radius;

    const QPointF meeting(radius * (1 - std::cos(turn)), radius * (1 - std::sin(turn)));
    const QPointF direction(std::sin(turn), -std::cos(turn));
    const auto flipped = [](const QPointF &point) { return point.transposed(); };
    const QPointF far(0, radius - tangent + apart);
    const QPointF near(0, radius - tangent);
    return {{0, reach},
            {far,
             near,
             meeting,
             meeting + direction * arm,
             flipped(meeting + direction * arm),
             flipped(meeting),
             flipped(near),
             flipped(far),
             {reach, 0}}};
}

void addCorner(QPainterPath &path, const Corner &corner, const QTransform &place, bool backwards)
{
    const auto &points = corner.points;
    if (backwards) {
        path.lineTo(place.map(points[8]));
        path.cubicTo(place.map(points[7]), place.map(points[6]), place.map(points[5]));
        path.cubicTo(place.map(points[4]), place.map(points[3]), place.map(points[2]));
        path.cubicTo(place.map(points[1]), place.map(points[0]), place.map(corner.start));
        return;
    }
    path.lineTo(place.map(corner.start));
    for (std::size_t i = 0; i < points.size(); i += 3)
        path.cubicTo(place.map(points[i]), place.map(points[i + 1]), place.map(points[i + 2]));
}

// Curves are costly, and a panel paints few kinds of boxes many times.
constexpr int cacheKibibytes = 2048;

struct Box // in pixels
{
    QSize size;
    double radius = 0;
    QRgb fill = 0;
    QRgb border = 0;
    double borderWidth = 0;

    bool operator==(const Box &) const = default;
};

size_t qHash(const Box &box, size_t seed = 0)
{
    return qHashMulti(seed, box.size.width(), box.size.height(), box.radius, box.fill, box.border,
                      box.borderWidth);
}

QImage render(const Box &box)
{
    QImage image(box.size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outer = image.rect();
    if (qAlpha(box.fill) > 0)
        painter.fillPath(continuousRoundedRect(outer, box.radius), QColor::fromRgba(box.fill));
    if (qAlpha(box.border) > 0) {
        const double inset = box.borderWidth / 2;
        painter.setPen(QPen(QColor::fromRgba(box.border), box.borderWidth));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(continuousRoundedRect(outer.adjusted(inset, inset, -inset, -inset),
                                               std::max(0.0, box.radius - inset)));
    }
    return image;
}

} // namespace

QPainterPath continuousRoundedRect(const QRectF &rect, double radius)
{
    QPainterPath path;
    if (rect.isEmpty())
        return path;
    const double room = std::min(rect.width(), rect.height()) / 2;
    radius = std::min(radius, room);
    if (radius <= 0) {
        path.addRect(rect);
        return path;
    }
    const Corner one = corner(radius, std::clamp(room / radius - 1, 0.0, mostEasing));
    path.moveTo(rect.left(), rect.center().y());
    addCorner(path, one, QTransform(1, 0, 0, 1, rect.left(), rect.top()), false);
    addCorner(path, one, QTransform(-1, 0, 0, 1, rect.right(), rect.top()), true);
    addCorner(path, one, QTransform(-1, 0, 0, -1, rect.right(), rect.bottom()), false);
    addCorner(path, one, QTransform(1, 0, 0, -1, rect.left(), rect.bottom()), true);
    path.closeSubpath();
    return path;
}

QPainterPath capsule(const QRectF &rect)
{
    return continuousRoundedRect(rect, std::min(rect.width(), rect.height()) / 2);
}

void paintContinuousRoundedRect(QPainter &painter, const QRectF &rect, double radius,
                                const QColor &fill, const QColor &border, double borderWidth)
{
    static QCache<Box, QImage> cache(cacheKibibytes);
    const QTransform toDevice = painter.deviceTransform();
    const QRect pixels = toDevice.mapRect(insideDevicePixels(painter, rect)).toRect();
    if (pixels.isEmpty())
        return;
    const double scale = std::abs(toDevice.m11());
    const Box box{.size = pixels.size(),
                  .radius = radius * scale,
                  .fill = fill.isValid() ? fill.rgba() : 0,
                  .border = border.isValid() ? border.rgba() : 0,
                  .borderWidth = deviceLineWidth(painter, borderWidth) * scale};
    if (const QImage *cached = cache.object(box)) {
        paintDeviceImage(painter, pixels.topLeft(), *cached);
        return;
    }
    const QImage image = render(box);
    cache.insert(box, new QImage(image), 1 + image.sizeInBytes() / 1024);
    paintDeviceImage(painter, pixels.topLeft(), image);
}

} // namespace tovel
