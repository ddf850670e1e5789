#pragma once

#include <QString>
#include <QVariantMap>

#include <chrono>

namespace tovel::gnome {

class ShellBus;

// Why GNOME Shell has no extension of Tovel on the bus.
enum class Hindrance {
    NoShell,
    Silent,
    NotInstalled,
    NotLoaded, // it was installed after the Shell started
    Disabled,
    AllDisabled, // the user switched extensions off as a whole
    OutOfDate,
    Failed,
    Locked,
    Starting, // it is enabled; so it is about to be there, or ended just now
};

// From what the Shell knows of an extension (org.gnome.Shell.Extensions.GetExtensionInfo); nothing
// for one that it does not know.
Hindrance hindranceFrom(const QVariantMap &information);

// As of now.
Hindrance findHindrance(ShellBus &bus);

// What it means, and what its user can do about it, in a sentence.
QString sentenceFor(Hindrance hindrance);

// Enables the extension where that is all that it takes, and waits for so long at most until it is
// on the bus. Whether that is still to come.
bool enableExtension(ShellBus &bus, std::chrono::milliseconds patience);

} // namespace tovel::gnome
