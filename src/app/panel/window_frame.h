#pragma once

#include <QList>
#include <QRect>
#include <QString>

#include <optional>

namespace tovel {

// Where a window stands, as it is kept from one run to the next. The origin is the corner of the
// manager's frame and the size that of the content: the frame's own size is not known before a
// manager has put one around the window. Device-independent pixels of the whole desktop.
struct WindowFrame
{
    QRect frame{};
    QRect screen{}; // the one it stood on

    bool operator==(const WindowFrame &) const = default;
};

// "x y width height", of the window and of its screen: eight integers.
QString frameText(const WindowFrame &frame);

// Nothing for a text of another form, an empty size, or numbers that no desktop has.
std::optional<WindowFrame> parseFrame(const QString &text);

// Where a window goes that would stand at the frame: there, when its upper edge can be reached and
// it is no larger than the screen that shows most of it, or when the screens together show all of
// it; else as wholeFrame().
QRect fittedFrame(const QRect &frame, const QList<QRect> &screens);

// There when the screens together show all of it. Else wholly onto the screen that shows most of
// it, or the nearest one, shrunk if need be. The primary screen comes first; without screens the
// frame stays as it is.
QRect wholeFrame(const QRect &frame, const QList<QRect> &screens);

// In the middle of the screen, shrunk if need be.
QRect centeredFrame(QSize size, const QRect &screen);

} // namespace tovel
