#pragma once

#include <QGuiApplication>

namespace tovel {

// Whether this program's windows are Wayland's: they have no place on the screen and no number that
// others know, always blend with what is below them, and a press elsewhere is told of only while
// the pointer is over them.
inline bool isOnWayland()
{
    return QGuiApplication::platformName().startsWith(QLatin1StringView("wayland"));
}

} // namespace tovel
