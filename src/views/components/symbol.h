#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace tovel {

// Paints a drawing of the symbol set in one colour, fitted into the box and sharp on the painter's
// device. An unknown name paints nothing. In device-independent pixels.
void paintSymbol(QPainter &painter, const QString &name, const QRectF &box, const QColor &color);

// The same for any SVG file: only its alpha counts. A file that cannot be read paints nothing.
void paintTemplateImage(QPainter &painter, const QString &path, const QRectF &box,
                        const QColor &color);

} // namespace tovel
