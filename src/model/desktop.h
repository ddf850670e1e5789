#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace tovel {

// One regular desktop of one display.
struct Desktop
{
    std::uint64_t id = 0; // the window server's space; the identity
    QString uuid; // the space's own identifier, else the decimal text of id
    QString sessionName; // that its user chose in the session itself; may be empty
    QString display; // the display as the window server names it
    std::uint32_t displayID = 0; // number of the display's screen; 0 when it has none
    std::int64_t index = 0; // from 1, over the regular desktops of all displays
    std::int64_t missionIndex = 0; // from 0, among all spaces of the display
    bool current = false; // shown on its display now

    // What a name given to the desktop is stored under. Stays the same when desktops are
    // renumbered.
    QString key() const { return display + QLatin1Char('/') + uuid; }

    bool operator==(const Desktop &) const = default;
};

// Null when none of them has the id. Into the list, as long as that is there.
const Desktop *desktopWithID(const QList<Desktop> &desktops, std::uint64_t id);

// The displays that the desktops are on, in the order of their first one.
QStringList displaysOf(const QList<Desktop> &desktops);

} // namespace tovel
