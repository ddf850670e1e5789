#include "app/panel/own_window.h"

#include "views/components/window_system.h"

#include <QWindow>

namespace tovel {

OwnWindow ownWindow(const QWindow &window)
{
    OwnWindow own{.title = window.title()};
    // Wayland gives windows no number, and the toolkit's counter may be that of anybody's window.
    if (!isOnWayland())
        own.windowNumber = static_cast<std::uint32_t>(window.winId());
    return own;
}

} // namespace tovel
