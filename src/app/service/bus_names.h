#pragma once

#include <QString>

namespace tovel {

// What the program is called on the session bus. Name and path follow the identifier of its desktop
// entry, as D-Bus activation of the Desktop Entry Specification wants it.
namespace BusNames {
inline const QString Service = QStringLiteral("org.tovel.Tovel");
inline const QString Path = QStringLiteral("/org/tovel/Tovel");
inline const QString Interface = QStringLiteral("org.tovel.Tovel1");
inline const QString BusyError = QStringLiteral("org.tovel.Tovel1.Error.Busy");
} // namespace BusNames

// The X display of this process without its screen, ":0" for ":0.1"; empty when it has none. A user
// with one bus may have several displays.
QString ownDisplay();

// Whether a program on the one display can speak for one on the other: not when they differ. One
// without a display takes what there is.
bool isSameDisplay(const QString &one, const QString &other);

} // namespace tovel
