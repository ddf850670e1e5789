#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace tovel::x11 {

// The value of xfwm4's setting general/activate_action in one of its xfconf channel files; empty
// when the file does not have it or is not well-formed.
QString xfwmActivateAction(const QByteArray &channelXml);

// The same setting as this user has it: the user's channel file first, then the system's.
QString readXfwmActivateAction();

// Whether a window manager, known by the name it gives itself, shows the desktop of a window that
// is activated. The action is asked for only where it decides.
bool activationShowsDesktop(const QString &managerName, const std::function<QString()> &xfwmAction);

} // namespace tovel::x11
