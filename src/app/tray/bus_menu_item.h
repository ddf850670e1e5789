#pragma once

#include <QVariantMap>

#include <functional>
#include <vector>

class QAction;
class QDBusArgument;
class QMenu;

namespace tovel {

// An item of a menu on the bus, with those below it: (ia{sv}av) of com.canonical.dbusmenu. Only
// properties that are not at their defaults are there. Identifiers count from 1; 0 is the menu.
struct BusMenuItem
{
    int id = 0;
    QVariantMap properties{};
    std::vector<BusMenuItem> children{};

    bool operator==(const BusMenuItem &) const = default;
};

// The menu with all that is below it. Each action gets the identifier that the function gives.
BusMenuItem busMenu(const QMenu &menu, const std::function<int(QAction *)> &identifier);

// The item of that identifier, at the top or below it; null when there is none.
const BusMenuItem *findItem(const BusMenuItem &top, int id);

// Without what is more than so many levels below it; a negative depth leaves everything.
BusMenuItem cut(BusMenuItem item, int depth);

QDBusArgument &operator<<(QDBusArgument &argument, const BusMenuItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, BusMenuItem &item);

} // namespace tovel
