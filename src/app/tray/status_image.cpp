#include "app/tray/status_image.h"

#include "settings/bundle.h"
#include "views/components/symbol.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPalette>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr QSizeF imageSize(21.93415061295972, 18);
constexpr qreal slotSize = 22; // of the tray, in which the image has that size
constexpr qreal rimWidth = 0.75;

// Trays have colours of their own and do not tell them: black on black keeps a light rim.
QColor rimColor(const QColor &color)
{
    QColor rim = color.lightnessF() < 0.5 ? Qt::white : Qt::black;
    rim.setAlphaF(0.8F);
    return rim;
}

} // namespace

QList<QImage> statusImages()
{
    QList<QImage> images;
    const auto path = mainBundle().pathForResource(u"TovelMenuAlt"_s, u"svg"_s);
    if (!path)
        return images;
    const QColor color = QGuiApplication::palette().color(QPalette::WindowText);
    for (const int size : {16, 22, 24, 32, 44, 48, 64}) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.scale(size / slotSize, size / slotSize);
        QRectF box(QPointF(), imageSize);
        box.moveCenter(QPointF(slotSize, slotSize) / 2);
        for (const QPointF &offset : {QPointF(-rimWidth, 0), QPointF(rimWidth, 0),
                                      QPointF(0, -rimWidth), QPointF(0, rimWidth)})
            paintTemplateImage(painter, *path, box.translated(offset), rimColor(color));
        paintTemplateImage(painter, *path, box, color);
        painter.end();
        images.append(image);
    }
    return images;
}

} // namespace tovel
