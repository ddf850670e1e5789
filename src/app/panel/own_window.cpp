#include "app/panel/own_window.h"

#include <QGuiApplication>
#include <QWindow>

namespace tovel {

OwnWindow ownWindow(const QWindow &window)
{
    OwnWindow own{.title = window.title()};
    // Wayland gives windows no number, and the toolkit's counter may be that of anybody's window.
    if (!QGuiApplication::platformName().startsWith(QLatin1StringView("wayland")))
        own.windowNumber = static_cast<std::uint32_t>(window.winId());
    return own;
}

} // namespace tovel
