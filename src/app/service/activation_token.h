#pragma once

#include <QVariantMap>

// The right to take the keyboard that whoever starts a program, or calls one that runs, hands on to
// it: the platform data of the Desktop Entry Specification ("D-Bus Activation"), which are tokens
// of the Wayland protocol xdg-activation and identifiers of the Startup Notification Protocol.
namespace tovel {

// What this process was given at its start, for the one that runs.
QVariantMap ownPlatformData();

// Has the toolkit use what another process handed on when it next asks for the keyboard, and
// nothing older. What is too long for a token, or has other characters than such texts have, counts
// as none.
void takeUpPlatformData(const QVariantMap &platformData);

} // namespace tovel
