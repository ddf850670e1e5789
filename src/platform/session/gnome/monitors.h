#pragma once

#include "platform/session/gnome/picture.h"

#include <QDBusArgument>
#include <QList>

namespace tovel::gnome {

class ShellBus;

// The screens by org.gnome.Mutter.DisplayConfig; none where there is no answer, or another one.
QList<NamedMonitor> askForMonitors(ShellBus &bus);

} // namespace tovel::gnome
