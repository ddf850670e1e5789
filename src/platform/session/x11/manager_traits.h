#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace tovel::x11 {

// The value of xfwm4's setting general/activate_action in one of its xfconf channel files; empty
// when the file does not have it or is not well-formed.
QString xfwmActivateAction(const QByteArray &channelXml);

// The same setting as this user has it: the user's channel file first, then the system's.
QString readXfwmActivateAction();

// Whether one of icewm's preferences files makes it bring a window to the shown desktop when it is
// focused (FocusCurrentWorkspace); nothing when the file does not say.
std::optional<bool> icewmBringsWindows(const QByteArray &preferences);

// The same preference as this user has it, by the files in the order in which icewm reads them.
bool readIcewmBringsWindows();

// What decides of the managers whose settings do.
struct ManagerSettings
{
    std::function<QString()> xfwmAction = readXfwmActivateAction;
    std::function<bool()> icewmBrings = readIcewmBringsWindows;
};

// Whether a window manager, known by the name it gives itself, shows the desktop of a window that
// is activated. A setting is asked for only where it decides.
bool activationShowsDesktop(const QString &managerName, const ManagerSettings &settings = {});

// Whether a window manager numbers its desktops anew whenever one of them comes or goes with its
// windows, so that a number does not stand for a desktop long enough to move a window there.
bool renumbersDesktops(const QString &managerName);

} // namespace tovel::x11
