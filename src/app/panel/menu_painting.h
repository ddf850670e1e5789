#pragma once

#include <QRect>
#include <QRegion>
#include <QSize>

class QPainter;
class QPalette;
class QStyleOptionMenuItem;
class QWidget;

namespace tovel {

// How menus look: rounded as popovers are, with marks, pictures and texts in columns.

constexpr int menuPictureSize = 20;
constexpr int menuPadding = 5; // between the menu's edge and its items

// Of an item whose text and picture need that much.
QSize menuItemSize(const QStyleOptionMenuItem &item, QSize content);

void paintMenuItem(QPainter &painter, const QStyleOptionMenuItem &item);

// The ground of a menu. One that is masked is not blended.
void paintMenuGround(QPainter &painter, const QPalette &palette, const QRect &menu, bool masked);

// The pixels that a menu that is not blended covers.
QRegion menuMask(const QSize &size);

} // namespace tovel
