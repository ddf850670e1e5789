#pragma once

#include <QRectF>
#include <QWidget>

namespace tovel {

// A box laid out from left to right in the widget, as it lies in the widget's own direction.
inline QRectF mirrored(QRectF box, const QWidget &widget)
{
    if (widget.isRightToLeft())
        box.moveLeft(widget.width() - box.right());
    return box;
}

} // namespace tovel
