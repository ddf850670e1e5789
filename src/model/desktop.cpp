#include "model/desktop.h"

#include <algorithm>

namespace tovel {

const Desktop *desktopWithID(const QList<Desktop> &desktops, std::uint64_t id)
{
    const auto found = std::ranges::find(desktops, id, &Desktop::id);
    return found == desktops.end() ? nullptr : &*found;
}

QStringList displaysOf(const QList<Desktop> &desktops)
{
    QStringList displays;
    for (const Desktop &desktop : desktops) {
        if (!displays.contains(desktop.display))
            displays.append(desktop.display);
    }
    return displays;
}

} // namespace tovel
